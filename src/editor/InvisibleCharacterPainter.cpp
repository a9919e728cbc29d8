#include "editor/InvisibleCharacterPainter.h"

#include <QFontDatabase>
#include <QPainter>
#include <QTextLine>

#include <algorithm>

InvisibleCharacterPainter::InvisibleCharacterPainter()
{
    setMarks(Marks());
}

void InvisibleCharacterPainter::setMarks(const Marks& marks)
{
    _marks = marks;
    if (_marks.font == QFont()) {
        _marks.font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        _marks.font.setPixelSize(10); // points are device-independent pixels
    }
    for (Kind kind : {Kind::NewLine, Kind::Tab, Kind::Space, Kind::FullwidthSpace, Kind::Other}) {
        QStaticText& text = _prepared[int(kind)];
        text.setText(markOf(kind));
        text.setTextFormat(Qt::PlainText);
        text.prepare(QTransform(), _marks.font);
    }
}

const QString& InvisibleCharacterPainter::markOf(Kind kind) const
{
    switch (kind) {
    case Kind::NewLine:
        return _marks.newLine;
    case Kind::Tab:
        return _marks.tab;
    case Kind::Space:
        return _marks.space;
    case Kind::FullwidthSpace:
        return _marks.fullwidthSpace;
    case Kind::Other:
        break;
    }
    return _marks.other;
}

std::optional<InvisibleCharacterPainter::Kind> InvisibleCharacterPainter::kindOf(QChar c)
{
    switch (c.unicode()) {
    case u'\n':
    case u'\r':
    case 0x2029:
        return Kind::NewLine;
    case u'\t':
        return Kind::Tab;
    case u' ':
    case 0x00A0:
        return Kind::Space;
    case 0x3000:
        return Kind::FullwidthSpace;
    default:
        break;
    }
    const QChar::Category category = c.category();
    if (category == QChar::Other_Control || category == QChar::Other_Format ||
        c.unicode() == 0x2028) {
        return Kind::Other;
    }
    return std::nullopt;
}

void InvisibleCharacterPainter::draw(QPainter& painter, const TextLayoutCache::Entry& entry,
                                     QPointF origin, qreal rowHeight, int firstRow, int lastRow,
                                     qreal left, qreal right, bool lineEnd) const
{
    const QString text = entry.layout.text();
    painter.save();
    painter.setFont(_marks.font);
    painter.setPen(_marks.color);
    const auto drawMark = [&](Kind kind, qreal x, qreal top) {
        painter.drawStaticText(QPointF(x, top), _prepared[int(kind)]);
    };
    const qsizetype preeditEnd = entry.preeditColumn + entry.preeditLength;
    for (int index = firstRow; index <= lastRow && index < entry.layout.lineCount(); ++index) {
        const QTextLine line = entry.layout.lineAt(index);
        const qreal rowTop = origin.y() + index * rowHeight;
        // Only the characters under the area: an unwrapped piece may be wide.
        const int from = std::max(line.textStart(), line.xToCursor(left - origin.x()) - 1);
        const int to =
            std::min(line.textStart() + line.textLength(), line.xToCursor(right - origin.x()) + 1);
        for (int at = from; at < to; ++at) {
            if (entry.preeditLength > 0 && at >= entry.preeditColumn && at < preeditEnd) {
                continue;
            }
            const qsizetype column = entry.fromLayout(at);
            QChar c = text[at];
            // In column order: a binary file may have a blank for every other character.
            const auto replaced = std::lower_bound(
                entry.replaced.begin(), entry.replaced.end(), column,
                [](const std::pair<qsizetype, QChar>& r, qsizetype at) { return r.first < at; });
            if (replaced != entry.replaced.end() && replaced->first == column) {
                c = replaced->second;
            }
            const std::optional<Kind> kind = kindOf(c);
            if (kind) {
                const qreal nudge = *kind == Kind::Space ? 1 : 0;
                drawMark(*kind, origin.x() + line.cursorToX(at) + nudge, rowTop);
            }
        }
        if (lineEnd && index == entry.layout.lineCount() - 1) {
            drawMark(Kind::NewLine,
                     origin.x() + line.cursorToX(line.textStart() + line.textLength()), rowTop);
        }
    }
    painter.restore();
}
