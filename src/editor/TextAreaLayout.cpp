#include "editor/TextAreaLayout.h"

#include <QTextLine>

#include <algorithm>
#include <cmath>

TextAreaLayout::TextAreaLayout()
{
    _cache.setLaidOutCallback([this](qsizetype line) {
        // A laid-out line corrects its estimate, and so the scroll units.
        if (_cache.style().wrap) {
            _heights.setRows(line, _cache.rowsOfLine(line));
        }
    });
    resetHeights();
}

void TextAreaLayout::resetHeights()
{
    _lastPageKnown = false;
    if (_cache.style().wrap) {
        _heights.reset(_cache.text(),
                       [this](qsizetype length) { return _cache.estimatedRows(length); });
    } else {
        _heights.reset(_cache.text());
    }
}

void TextAreaLayout::setText(const TextSnapshot& text)
{
    _cache.setText(text);
    _cache.resetWidestLine();
    resetHeights();
    _anchor = {};
    _hOffset = 0;
}

void TextAreaLayout::textChanged(const TextChange& change, const TextSnapshot& text)
{
    _cache.textChanged(change, text);
    _heights.textChanged(change, text);
    _lastPageKnown = false;
    const qsizetype lastOld = change.firstLine + change.linesRemoved;
    if (_anchor.line > lastOld) {
        _anchor.line += change.linesAdded - change.linesRemoved;
    } else if (_anchor.line > change.firstLine + change.linesAdded) {
        _anchor = {change.firstLine + change.linesAdded, 0, 0};
    }
    _anchor = normalized(_anchor);
}

void TextAreaLayout::setStyle(const TextLayoutCache::Style& wanted)
{
    TextLayoutCache::Style style = wanted;
    // Rows wrap at the viewport's width; unwrapped layouts do not depend on it.
    style.wrapWidth = style.wrap ? std::max<qreal>(_cache.averageCharWidth() * 4,
                                                   _viewport.width() - _padLeft - _padRight)
                                 : 0;
    if (style == _cache.style()) {
        return;
    }
    const qsizetype top = text().isEmpty() ? 0 : rowRange(_anchor).location;
    const bool heightsChange = style.wrap != _cache.style().wrap ||
                               (style.wrap && (style.wrapWidth != _cache.style().wrapWidth ||
                                               style.font != _cache.style().font));
    _cache.setStyle(style);
    if (heightsChange) {
        resetHeights();
    }
    _lastPageKnown = false;
    if (style.wrap) {
        _hOffset = 0;
    }
    _anchor = {};
    _anchor = normalized(rowOf(top));
}

void TextAreaLayout::setViewportSize(QSizeF size)
{
    if (size == _viewport) {
        return;
    }
    _viewport = size;
    _lastPageKnown = false;
    setStyle(_cache.style());
    _anchor = std::min(_anchor, lastPageAnchor());
    setHorizontalOffset(_hOffset);
}

void TextAreaLayout::setPadding(qreal left, qreal top, qreal right)
{
    _padLeft = left;
    _padTop = top;
    _padRight = right;
    _lastPageKnown = false;
    setStyle(_cache.style());
}

// Rows ---------------------------------------------------------------------------------------

TextAreaLayout::RowRef TextAreaLayout::rowOf(qsizetype position)
{
    const TextSnapshot& text = _cache.text();
    position = std::clamp<qsizetype>(position, 0, text.length());
    const qsizetype line = text.lineAt(position);
    if (!_cache.style().wrap) {
        return {line, 0, 0};
    }
    const qsizetype column = position - text.lineStart(line);
    const int piece = _cache.pieceAt(line, column);
    const TextLayoutCache::Entry& entry = _cache.layout(line, piece);
    const QTextLine row = entry.layout.lineForTextPosition(entry.toLayout(column - entry.start));
    return {line, piece, row.isValid() ? row.lineNumber() : entry.rows - 1};
}

bool TextAreaLayout::nextRow(RowRef& row)
{
    if (_cache.style().wrap) {
        if (row.row + 1 < _cache.layout(row.line, row.piece).rows) {
            ++row.row;
            return true;
        }
        if (row.piece + 1 < _cache.pieceCount(row.line)) {
            row = {row.line, row.piece + 1, 0};
            return true;
        }
    }
    if (row.line + 1 >= text().lineCount()) {
        return false;
    }
    row = {row.line + 1, 0, 0};
    return true;
}

bool TextAreaLayout::previousRow(RowRef& row)
{
    const bool wrap = _cache.style().wrap;
    if (wrap && row.row > 0) {
        --row.row;
        return true;
    }
    if (wrap && row.piece > 0) {
        row = {row.line, row.piece - 1, _cache.layout(row.line, row.piece - 1).rows - 1};
        return true;
    }
    if (row.line == 0) {
        return false;
    }
    row = {row.line - 1, 0, 0};
    if (wrap) {
        row.piece = _cache.pieceCount(row.line) - 1;
        row.row = _cache.layout(row.line, row.piece).rows - 1;
    }
    return true;
}

Range TextAreaLayout::rowRange(RowRef row)
{
    const TextSnapshot& text = _cache.text();
    const qsizetype lineStart = text.lineStart(row.line);
    if (!_cache.style().wrap) {
        return {lineStart, text.lineLength(row.line)};
    }
    const TextLayoutCache::Entry& entry = _cache.layout(row.line, row.piece);
    const QTextLine line = entry.layout.lineAt(std::clamp(row.row, 0, entry.rows - 1));
    const qsizetype base = lineStart + entry.start;
    const qsizetype from = base + entry.fromLayout(line.textStart());
    const qsizetype to = base + entry.fromLayout(line.textStart() + line.textLength());
    return {from, to - from};
}

qsizetype TextAreaLayout::positionInRow(RowRef row, qreal x)
{
    const TextSnapshot& text = _cache.text();
    const qsizetype lineStart = text.lineStart(row.line);
    int piece = row.piece;
    if (!_cache.style().wrap) {
        // The piece under x, from the widths of the pieces before it.
        const int count = _cache.pieceCount(row.line);
        qreal left = 0;
        piece = 0;
        for (; piece + 1 < count; ++piece) {
            const qreal width = _cache.pieceWidth(row.line, piece);
            if (x < left + width) {
                break;
            }
            left += width;
        }
        x -= left;
    }
    const TextLayoutCache::Entry& entry = _cache.layout(row.line, piece);
    const int index = _cache.style().wrap ? std::clamp(row.row, 0, entry.rows - 1) : 0;
    const QTextLine line = entry.layout.lineAt(index);
    const int at = line.xToCursor(x);
    qsizetype column = entry.start + entry.fromLayout(at);
    const bool wrappedRow =
        index + 1 < entry.rows && at >= line.textStart() + line.textLength() && column > 0;
    if (wrappedRow) {
        --column;
    }
    return lineStart + column;
}

qreal TextAreaLayout::contentX(qsizetype position, int preeditOffset)
{
    const TextSnapshot& text = _cache.text();
    position = std::clamp<qsizetype>(position, 0, text.length());
    const qsizetype line = text.lineAt(position);
    const qsizetype column = position - text.lineStart(line);
    const int piece = _cache.pieceAt(line, column);
    const TextLayoutCache::Entry& entry = _cache.layout(line, piece);
    const int at = entry.toLayout(column - entry.start) + preeditOffset;
    const QTextLine row = entry.layout.lineForTextPosition(at);
    const qreal x = row.isValid() ? row.cursorToX(at) : 0;
    return _cache.style().wrap ? x : _cache.pieceX(line, piece) + x;
}

qsizetype TextAreaLayout::rowValue(RowRef row)
{
    if (!_cache.style().wrap) {
        return row.line;
    }
    qsizetype value = _heights.rowsBefore(row.line);
    for (int k = 0; k < row.piece; ++k) {
        value += _cache.rows(row.line, k);
    }
    return value + row.row;
}

TextAreaLayout::RowRef TextAreaLayout::normalized(RowRef row)
{
    const qsizetype lines = text().lineCount();
    row.line = std::clamp<qsizetype>(row.line, 0, lines - 1);
    if (!_cache.style().wrap) {
        return {row.line, 0, 0};
    }
    row.piece = std::clamp(row.piece, 0, _cache.pieceCount(row.line) - 1);
    row.row = std::clamp(row.row, 0, _cache.layout(row.line, row.piece).rows - 1);
    return row;
}

// Scrolling ----------------------------------------------------------------------------------

int TextAreaLayout::pageRows() const
{
    return std::max(1, int((_viewport.height() - _padTop) / rowHeight()));
}

TextAreaLayout::RowRef TextAreaLayout::lastRow()
{
    const qsizetype line = text().lineCount() - 1;
    if (!_cache.style().wrap) {
        return {line, 0, 0};
    }
    const int piece = _cache.pieceCount(line) - 1;
    return {line, piece, _cache.layout(line, piece).rows - 1};
}

TextAreaLayout::RowRef TextAreaLayout::back(RowRef row, qsizetype rows)
{
    if (!_cache.style().wrap) {
        row.line = std::max<qsizetype>(0, row.line - rows);
        return row;
    }
    for (qsizetype i = 0; i < rows && previousRow(row); ++i) {
    }
    return row;
}

TextAreaLayout::RowRef TextAreaLayout::lastPageAnchor()
{
    if (!_lastPageKnown) {
        _lastPage = back(lastRow(), pageRows() - 1);
        _lastPageKnown = true;
    }
    return _lastPage;
}

void TextAreaLayout::setAnchor(RowRef anchor)
{
    anchor = normalized(anchor);
    _anchor = std::min(anchor, lastPageAnchor());
}

void TextAreaLayout::scrollRows(qsizetype rows)
{
    _cache.trim();
    const qsizetype page = pageRows();
    if (!_cache.style().wrap || std::abs(rows) > 4 * page) {
        setScrollValue(scrollValue() + rows);
        return;
    }
    RowRef row = _anchor;
    const RowRef last = lastPageAnchor();
    for (qsizetype i = 0; i < rows && row < last && nextRow(row); ++i) {
    }
    row = back(row, -rows);
    setAnchor(row);
}

qsizetype TextAreaLayout::scrollValue()
{
    return rowValue(_anchor);
}

qsizetype TextAreaLayout::scrollMaximum()
{
    return rowValue(lastPageAnchor());
}

void TextAreaLayout::setScrollValue(qsizetype value)
{
    _cache.trim();
    if (value >= scrollMaximum()) {
        _anchor = lastPageAnchor();
        return;
    }
    const TextHeightMap::Place place = _heights.lineAtRow(std::max<qsizetype>(0, value));
    RowRef row{place.line, 0, 0};
    if (_cache.style().wrap) {
        // The pieces before the row, estimated where they are not laid out.
        qsizetype rest = place.row;
        const int count = _cache.pieceCount(row.line);
        while (row.piece + 1 < count && rest >= _cache.rows(row.line, row.piece)) {
            rest -= _cache.rows(row.line, row.piece);
            ++row.piece;
        }
        row.row = int(std::min<qsizetype>(rest, _cache.layout(row.line, row.piece).rows - 1));
    }
    setAnchor(row);
}

void TextAreaLayout::setHorizontalOffset(qreal offset)
{
    _hOffset = std::clamp<qreal>(offset, 0, std::max<qreal>(0, horizontalMaximum()));
}

qreal TextAreaLayout::horizontalMaximum() const
{
    if (_cache.style().wrap) {
        return 0;
    }
    return std::max<qreal>(0, _cache.widestLine() + _padLeft + _padRight - _viewport.width());
}

void TextAreaLayout::scrollToShow(qsizetype position)
{
    _cache.trim();
    const RowRef row = rowOf(position);
    const qsizetype page = pageRows();
    const qsizetype distance = rowValue(row) - rowValue(_anchor);
    if (row < _anchor) {
        setAnchor(distance >= -page ? row : back(row, page / 2));
    } else if (distance >= page) {
        setAnchor(back(row, distance < 2 * page ? page - 1 : page / 2));
    }
    if (!_cache.style().wrap) {
        const qreal x = contentX(position);
        const qreal width = _viewport.width() - _padLeft - _padRight;
        if (x < _hOffset) {
            setHorizontalOffset(x - width / 4);
        } else if (x > _hOffset + width) {
            setHorizontalOffset(x - width * 3 / 4);
        }
    }
}

// The screen ---------------------------------------------------------------------------------

QList<TextAreaLayout::ShownPiece> TextAreaLayout::shownPieces(qreal top, qreal bottom)
{
    _cache.trim();
    QList<ShownPiece> shown;
    const qreal height = rowHeight();
    bottom = std::min<qreal>(bottom, _viewport.height());
    qreal y = _padTop;
    if (_cache.style().wrap) {
        RowRef row = _anchor;
        while (y < bottom) {
            TextLayoutCache::Entry& entry = _cache.layout(row.line, row.piece);
            const int first = row.row;
            const qreal pieceTop = y - first * height;
            const int from = std::max(first, int(std::floor((top - pieceTop) / height)));
            const int to =
                std::min(entry.rows - 1, int(std::ceil((bottom - pieceTop) / height)) - 1);
            if (from <= to) {
                shown.append({&entry, QPointF(_padLeft - _hOffset, pieceTop), from, to});
            }
            y += (entry.rows - first) * height;
            row.row = entry.rows - 1;
            if (!nextRow(row)) {
                break;
            }
        }
        return shown;
    }
    const qreal left = _hOffset;
    const qreal right = _hOffset + _viewport.width();
    const qsizetype lines = text().lineCount();
    for (qsizetype line = _anchor.line; line < lines && y < bottom; ++line, y += height) {
        if (y + height <= top) {
            continue;
        }
        const int count = _cache.pieceCount(line);
        qreal x = 0;
        for (int piece = 0; piece < count && x < right; ++piece) {
            const qreal estimate = _cache.pieceWidth(line, piece);
            if (count > 1 && x + estimate < left) {
                x += estimate;
                continue;
            }
            TextLayoutCache::Entry& entry = _cache.layout(line, piece);
            shown.append({&entry, QPointF(_padLeft - _hOffset + x, y), 0, 0});
            x += entry.width;
        }
    }
    return shown;
}

QList<TextAreaLayout::ShownLine> TextAreaLayout::shownLines()
{
    QList<ShownLine> lines;
    const qreal height = rowHeight();
    RowRef row = _anchor;
    qreal y = _padTop;
    const TextSnapshot& text = _cache.text();
    while (y < _viewport.height()) {
        if (lines.isEmpty() || lines.last().line != row.line) {
            lines.append({row.line, text.lineStart(row.line), y, y + height,
                          lines.isEmpty() && (row.piece > 0 || row.row > 0)});
        } else {
            lines.last().bottom = y + height;
        }
        y += height;
        if (!nextRow(row)) {
            break;
        }
    }
    return lines;
}

QRect TextAreaLayout::rowsOf(Range range, int right)
{
    QRectF rows;
    const TextSnapshot& text = _cache.text();
    for (const ShownLine& line : shownLines()) {
        if (line.position <= range.max() &&
            line.position + text.lineLength(line.line) >= range.location) {
            rows |= QRectF(0, line.top, right, line.bottom - line.top);
        }
    }
    return rows.toAlignedRect();
}

QRect TextAreaLayout::rowsMovedByChange(Range range)
{
    QRect rows = rowsOf(range, int(std::ceil(_viewport.width())));
    if (style().wrap && !rows.isEmpty()) {
        rows.setBottom(int(std::ceil(_viewport.height())));
    }
    return rows;
}

QRectF TextAreaLayout::caretRect(qsizetype position, int preeditOffset)
{
    RowRef row = rowOf(position);
    if (preeditOffset > 0 && _cache.style().wrap) {
        // Pre-edit text may wrap onto a row of its own.
        const TextLayoutCache::Entry& entry = _cache.layout(row.line, row.piece);
        const qsizetype column = position - text().lineStart(row.line) - entry.start;
        const QTextLine line =
            entry.layout.lineForTextPosition(entry.toLayout(column) + preeditOffset);
        row.row = line.isValid() ? line.lineNumber() : row.row;
    }
    const qreal y = _padTop + qreal(rowValue(row) - rowValue(_anchor)) * rowHeight();
    return {_padLeft - _hOffset + contentX(position, preeditOffset), y, 0, rowHeight()};
}

qsizetype TextAreaLayout::positionAt(QPointF point)
{
    RowRef row = _anchor;
    const qsizetype rows = qsizetype(std::floor((point.y() - _padTop) / rowHeight()));
    for (qsizetype i = 0; i < rows && nextRow(row); ++i) {
    }
    return positionInRow(row, point.x() - _padLeft + _hOffset);
}

Range TextAreaLayout::visibleRange()
{
    RowRef row = _anchor;
    const qsizetype from = rowRange(row).location;
    for (qsizetype i = 1; i * rowHeight() + _padTop < _viewport.height() && nextRow(row); ++i) {
    }
    const qsizetype to = rowRange(row).max();
    return {from, to - from};
}
