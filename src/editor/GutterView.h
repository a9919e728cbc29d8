#pragma once

#include "editor/LineNumberPainter.h"

#include <QColor>
#include <QList>
#include <QPointer>
#include <QRectF>
#include <QTextCharFormat>
#include <QWidget>

struct EditorSettings;
class QTextDocument;
class TextView;

/// The line-number gutter of a pane: a widget in its text view's left viewport margin that
/// numbers every logical line (QTextBlock) on the line's first row.
///
/// There is no table of line starts of our own: QTextDocument's block structure is that
/// table, kept up to date by the document at every edit, and `findBlock` is a binary search
/// over it. Copying every line start after each keystroke would cost a pass over a 20 MB
/// text for nothing.
class GutterView : public QWidget
{
    Q_OBJECT

public:
    using Label = LineNumberPainter::Label;

    /// Numbers `clientView`'s lines in the colours of its settings.
    explicit GutterView(TextView* clientView);
    ~GutterView() override;

    /// Takes up the gutter's colours from `settings`.
    void updatePreferences(const EditorSettings& settings);

    TextView* clientView() const { return _clientView; }
    /// Numbers `clientView`'s lines and follows its scrolling and edits.
    void setClientView(TextView* clientView);

    qreal requiredThickness() const { return 50.0; }

    /// The 0-based number of the line that holds `index` (the last line for an index past
    /// the text).
    static qint64 lineNumberForCharacterIndex(qint64 index, const QTextDocument* inText);

    /// The labels meeting `rect`, from the first visible line to the rectangle's bottom.
    QList<Label> labelsInRect(const QRectF& rect) const;

    const QTextCharFormat& textAttributes() const { return _look.textAttributes(); }
    const QColor& gutterTextColor() const { return _look.textColor(); }
    const QColor& gutterBorderColor() const { return _look.borderColor(); }
    const QColor& gutterBackgroundColor() const { return _look.backgroundColor(); }
    /// How the numbers are drawn, for a view of another kind to number its lines alike.
    const LineNumberPainter& look() const { return _look; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void drawHashMarksAndLabelsInRect(QPainter& painter, const QRect& rect) const;
    void updateGutter(const QRect& rect, int dy);

    QPointer<TextView> _clientView;
    QMetaObject::Connection _updateConnection;
    LineNumberPainter _look;
};
