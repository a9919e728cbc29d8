#pragma once

#include "editor/LineNumberPainter.h"

#include <QColor>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTextCharFormat>

struct EditorSettings;
class TextStore;
class TextView;

/// The line-number gutter of a pane: it numbers every logical line of its text view on the
/// line's first row, in the view's left margin. The view lays out and paints only the lines
/// it shows, and the gutter numbers those, so nothing is counted beyond the screen.
class GutterView : public QObject
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
    /// Shows or hides the gutter (the text then takes its room).
    void setVisible(bool visible);
    bool isVisible() const { return _visible; }

    /// The 0-based number of the line that holds `index` (the last line for an index past
    /// the text).
    static qint64 lineNumberForCharacterIndex(qint64 index, const TextStore* inText);
    /// The labels of the lines shown now, in the gutter's coordinates.
    QList<Label> labelsInRect() const;

    const QTextCharFormat& textAttributes() const { return _look.textAttributes(); }
    const QColor& gutterTextColor() const { return _look.textColor(); }
    const QColor& gutterBorderColor() const { return _look.borderColor(); }
    const QColor& gutterBackgroundColor() const { return _look.backgroundColor(); }
    /// How the numbers are drawn.
    const LineNumberPainter& look() const { return _look; }

private:
    /// Hands the view the gutter as it should be now.
    void apply();

    QPointer<TextView> _clientView;
    LineNumberPainter _look;
    bool _visible = true;
};
