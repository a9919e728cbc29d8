#include "editor/TextAreaPainter.h"

#include "editor/TextFormatProvider.h"

#include <QHash>
#include <QPainter>
#include <QTextLine>

#include <algorithm>

namespace {

struct PieceGeometry {
    const TextLayoutCache::Entry& entry;
    QPointF origin;
    qreal rowHeight;
    /// Whether the piece ends its line, and that line ends with a line feed.
    bool endsLine;
    bool hasFeed;
    qreal endWidth;
    qreal wrapWidth;
};

// Fills the part of row `row` between the piece's columns `from` and `to`; with `onward`,
// also what follows the row's last character (a selected line feed, or the rest of a
// wrapped row).
void fillColumns(QPainter& painter, const PieceGeometry& piece, int row, qsizetype from,
                 qsizetype to, bool onward, const QBrush& brush)
{
    const TextLayoutCache::Entry& entry = piece.entry;
    const QTextLine line = entry.layout.lineAt(row);
    const qsizetype rowFrom = entry.fromLayout(line.textStart());
    const qsizetype rowTo = entry.fromLayout(line.textStart() + line.textLength());
    const bool lastRow = row == entry.rows - 1;
    from = std::max(from, rowFrom);
    // A wrapped row's last character (the blank it wrapped at) counts as its end.
    onward = onward && to > rowTo - (lastRow ? 0 : 1);
    to = std::min(to, rowTo);
    if (from > to || (from == to && !onward)) {
        return;
    }
    qreal left = line.cursorToX(entry.toLayout(from));
    qreal right = line.cursorToX(entry.toLayout(to));
    if (left > right) {
        std::swap(left, right);
    }
    if (onward) {
        right = lastRow ? (piece.endsLine ? right + piece.endWidth : right)
                        : std::max(right, piece.wrapWidth);
    }
    const qreal top = piece.origin.y() + row * piece.rowHeight;
    painter.fillRect(QRectF(piece.origin.x() + left, top, right - left, piece.rowHeight), brush);
}

} // namespace

void TextAreaPainter::paint(QPainter& painter, const QRect& rect, TextAreaLayout& layout,
                            TextFormatProvider* provider, const Colors& colors,
                            const InvisibleCharacterPainter& marks, const Frame& frame)
{
    painter.fillRect(rect, colors.background);
    const TextSnapshot& text = layout.text();
    TextLayoutCache& cache = layout.cache();
    const qreal rowHeight = layout.rowHeight();

    QHash<qsizetype, TextFormatProvider::LineFormats> formats;
    const auto formatsOf = [&](qsizetype line) -> const TextFormatProvider::LineFormats& {
        auto it = formats.find(line);
        if (it == formats.end()) {
            const qsizetype start = text.lineStart(line);
            it = formats.insert(line, provider->formatsForLine(line, start, text.lineLength(line)));
        }
        return *it;
    };

    QList<TextAreaLayout::ShownPiece> pieces = layout.shownPieces(rect.top(), rect.bottom());
    if (provider) {
        // Colours that changed lay their pieces out again, which may move the rows below.
        const qint64 made = cache.layoutsMade();
        for (const TextAreaLayout::ShownPiece& piece : pieces) {
            cache.updateFormats(*piece.entry, formatsOf(piece.entry->line).foreground);
        }
        if (cache.layoutsMade() != made) {
            pieces = layout.shownPieces(rect.top(), rect.bottom());
        }
    }

    const qreal endWidth = cache.averageCharWidth();
    const qreal wrapWidth = cache.style().wrapWidth;
    QList<PieceGeometry> geometry;
    geometry.reserve(pieces.size());
    for (const TextAreaLayout::ShownPiece& shown : pieces) {
        const TextLayoutCache::Entry& entry = *shown.entry;
        const bool endsLine = entry.start + entry.length == text.lineLength(entry.line);
        geometry.append({entry, shown.origin, rowHeight, endsLine,
                         entry.line + 1 < text.lineCount(), endWidth, wrapWidth});
    }

    // Highlights and selections.
    for (qsizetype i = 0; i < pieces.size(); ++i) {
        const PieceGeometry& piece = geometry[i];
        const TextLayoutCache::Entry& entry = piece.entry;
        const qsizetype lineStart = text.lineStart(entry.line);
        const qsizetype base = lineStart + entry.start;
        const qsizetype lineEnd = lineStart + text.lineLength(entry.line);
        for (int row = pieces[i].firstRow; row <= pieces[i].lastRow; ++row) {
            if (provider) {
                for (const QTextLayout::FormatRange& range : formatsOf(entry.line).background) {
                    if (range.format.hasProperty(QTextFormat::BackgroundBrush)) {
                        const qsizetype from = range.start - entry.start;
                        fillColumns(painter, piece, row, from, from + range.length, false,
                                    range.format.background());
                    }
                }
            }
            for (const Range& selection : frame.selections) {
                if (selection.length == 0) {
                    continue;
                }
                fillColumns(painter, piece, row, selection.location - base, selection.max() - base,
                            selection.max() > lineEnd || selection.max() > base + entry.length,
                            colors.selection);
            }
        }
    }

    if (frame.showInvisibles) {
        for (qsizetype i = 0; i < pieces.size(); ++i) {
            const PieceGeometry& piece = geometry[i];
            marks.draw(painter, piece.entry, piece.origin, rowHeight, pieces[i].firstRow,
                       pieces[i].lastRow, rect.left(), rect.right(),
                       piece.endsLine && piece.hasFeed);
        }
    }

    painter.setPen(colors.text);
    for (const TextAreaLayout::ShownPiece& piece : pieces) {
        for (int row = piece.firstRow; row <= piece.lastRow; ++row) {
            piece.entry->layout.lineAt(row).draw(&painter, piece.origin);
        }
    }

    const auto drawCaret = [&](qsizetype position, qsizetype offset, const QColor& color) {
        const QRectF at = layout.caretRect(position, int(offset));
        const QRectF caret(at.x() - frame.caretWidth / 2, at.y(), frame.caretWidth, at.height());
        if (caret.intersects(rect)) {
            painter.fillRect(caret, color);
        }
    };
    if (frame.caret >= 0) {
        drawCaret(frame.caret, std::max<qsizetype>(frame.preeditCursor, 0), colors.caret);
    }
    if (frame.dropCaret >= 0) {
        drawCaret(frame.dropCaret, 0, colors.text);
    }
}
