#pragma once

#include "editor/TextAreaLayout.h"

#include <QColor>
#include <QList>
#include <QRectF>
#include <QString>
#include <QTextCharFormat>

struct EditorSettings;
class QPainter;
class TextArea;

/// How a line-number gutter looks, whichever view it numbers: its background, a border along
/// the side next to the text, and the number of each logical line on the line's first row,
/// right-aligned in a small system font. The views only say where their lines' first rows
/// stand.
class LineNumberPainter
{
public:
    /// A number as it is drawn, in the gutter's coordinates.
    struct Label {
        qint64 number = 0;
        QString text;
        QRectF rect;
    };

    LineNumberPainter();

    /// Takes up the gutter's colours from `settings`.
    void updatePreferences(const EditorSettings& settings);

    /// The label font and the label colour.
    const QTextCharFormat& textAttributes() const { return _textAttributes; }
    const QColor& textColor() const { return _textColor; }
    const QColor& borderColor() const { return _borderColor; }
    const QColor& backgroundColor() const { return _backgroundColor; }

    /// The label of line `number` (counted from 1) in a gutter `width` wide, for a first row
    /// at `rowTop`, `rowHeight` tall.
    Label label(qint64 number, qreal rowTop, qreal rowHeight, qreal width) const;
    /// Paints `rect` of a gutter `width` wide, with `labels` over it.
    void paint(QPainter& painter, const QRect& rect, int width, const QList<Label>& labels) const;

    /// The labels of a TextArea's shown lines, rows `rowHeight` tall: a line whose first row
    /// is scrolled off has none.
    QList<Label> labels(const QList<TextAreaLayout::ShownLine>& lines, qreal rowHeight,
                        qreal width) const;
    /// Gives `area` a gutter `width` wide numbered in this look (taken as it is now: call
    /// again after a change of preferences).
    void numberLinesOf(TextArea& area, int width) const;

private:
    QTextCharFormat _textAttributes;
    QColor _textColor;
    QColor _borderColor;
    QColor _backgroundColor;
};
