#include "editor/LineNumberPainter.h"

#include "editor/TextArea.h"
#include "platform/EditorSettings.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>

LineNumberPainter::LineNumberPainter()
{
    updatePreferences(EditorSettings());
}

void LineNumberPainter::updatePreferences(const EditorSettings& settings)
{
    _textColor = settings.gutterTextColor;
    _borderColor = settings.gutterBorderColor;
    _backgroundColor = settings.gutterBackgroundColor;
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(9); // points are device-independent pixels
    _textAttributes = QTextCharFormat();
    _textAttributes.setFont(font);
    _textAttributes.setForeground(_textColor);
}

LineNumberPainter::Label LineNumberPainter::label(qint64 number, qreal rowTop, qreal rowHeight,
                                                  qreal width) const
{
    const QFontMetricsF metrics(_textAttributes.font());
    Label label;
    label.number = number;
    label.text = QString::number(number);
    // Right-aligned 5 points from the edge; the top a fifth of the free height down the row.
    const qreal labelWidth = metrics.horizontalAdvance(label.text);
    label.rect = QRectF(width - labelWidth - 5, rowTop + (rowHeight - metrics.height()) / 5,
                        width - 10, rowHeight);
    return label;
}

void LineNumberPainter::paint(QPainter& painter, const QRect& rect, int width,
                              const QList<Label>& labels) const
{
    painter.fillRect(rect, _backgroundColor);
    // The border runs along the edge next to the text.
    painter.fillRect(QRect(width - 1, rect.top(), 1, rect.height()), _borderColor);
    painter.setFont(_textAttributes.font());
    painter.setPen(_textColor);
    for (const Label& label : labels) {
        painter.drawText(label.rect, Qt::AlignLeft | Qt::AlignTop | Qt::TextDontClip, label.text);
    }
}

QList<LineNumberPainter::Label> LineNumberPainter::labels(const QList<TextArea::ShownLine>& lines,
                                                          qreal rowHeight, qreal width) const
{
    QList<Label> labels;
    labels.reserve(lines.size());
    for (const TextArea::ShownLine& line : lines) {
        if (!line.startsAbove) {
            labels.append(label(line.line + 1, line.top, rowHeight, width));
        }
    }
    return labels;
}

void LineNumberPainter::numberLinesOf(TextArea& area, int width) const
{
    area.setGutter(width, [look = *this, &area](QPainter& painter, const QRect& rect,
                                                const QList<TextArea::ShownLine>& lines) {
        const int gutterWidth = area.gutterWidth();
        look.paint(painter, rect, gutterWidth,
                   look.labels(lines, area.textLayout().rowHeight(), gutterWidth));
    });
}
