#include "editor/TextLayoutCache.h"

#include <QFontMetricsF>
#include <QTextOption>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// Lines are one paragraph each: the separators that would start a new paragraph or row
// inside a layout are shown as a blank (and a mark), as are, when marks are shown, the
// characters that have no width of their own.
bool needsRoom(QChar c, bool showInvisibles)
{
    const char16_t u = c.unicode();
    if (u == 0x2028 || u == 0x2029) {
        return true;
    }
    if (!showInvisibles || u == u'\t') {
        return false;
    }
    const QChar::Category category = c.category();
    return category == QChar::Other_Control || category == QChar::Other_Format;
}

QList<QTextLayout::FormatRange> clipped(const QList<QTextLayout::FormatRange>& formats,
                                        qsizetype start, qsizetype length)
{
    QList<QTextLayout::FormatRange> result;
    const qsizetype end = start + length;
    for (const QTextLayout::FormatRange& range : formats) {
        const qsizetype from = std::max<qsizetype>(range.start, start);
        const qsizetype to = std::min<qsizetype>(qsizetype(range.start) + range.length, end);
        if (from < to) {
            result.append({int(from - start), int(to - from), range.format});
        }
    }
    return result;
}

} // namespace

TextLayoutCache::TextLayoutCache()
{
    setStyle(Style());
}

TextLayoutCache::~TextLayoutCache() = default;

void TextLayoutCache::setText(const TextSnapshot& text)
{
    _text = text;
    clear();
}

void TextLayoutCache::clear()
{
    _entries.clear();
    _units = 0;
}

void TextLayoutCache::setStyle(const Style& style)
{
    if (style == _style && _charWidth > 0) {
        return;
    }
    _style = style;
    const QFontMetricsF metrics(style.font);
    // An average over letters: the width that lengths turn into for estimates.
    _charWidth = metrics.horizontalAdvance(QStringLiteral("abcdefghijklmnopqrstuvwxyz")) / 26.0;
    if (_charWidth <= 0) {
        _charWidth = std::max<qreal>(1, metrics.averageCharWidth());
    }
    _widest = 0;
    clear();
}

void TextLayoutCache::setPreedit(const Preedit& preedit)
{
    if (_preedit.isActive()) {
        invalidateLines(_preedit.line, _preedit.line);
    }
    _preedit = preedit;
    if (_preedit.isActive()) {
        invalidateLines(_preedit.line, _preedit.line);
    }
}

qsizetype TextLayoutCache::boundary(qsizetype lineStart, qsizetype lineLength, int k) const
{
    const qsizetype nominal = qsizetype(k) * pieceLength;
    const qsizetype reach = std::min(pieceSlack, lineLength - nominal);
    if (reach <= 0) {
        return nominal;
    }
    const QString around = _text.text(Range(lineStart + nominal - 1, reach + 1));
    // Just after a blank: a wrapped piece then ends its last row between two words.
    for (qsizetype i = 0; i < reach; ++i) {
        if (around[i] == u' ' || around[i] == u'\t') {
            return nominal + i;
        }
    }
    // Never between the halves of a pair or before a combining mark.
    qsizetype i = 0;
    while (i < reach && (around[i + 1].isLowSurrogate() || around[i + 1].isMark())) {
        ++i;
    }
    return nominal + i;
}

int TextLayoutCache::pieceCount(qsizetype line) const
{
    // Every nominal edge before the end has a real one before the end too.
    const qsizetype length = _text.lineLength(line);
    return length <= pieceLength ? 1 : int(1 + (length - 1) / pieceLength);
}

TextLayoutCache::PieceColumns TextLayoutCache::pieceColumns(qsizetype line, int piece) const
{
    const qsizetype length = _text.lineLength(line);
    if (length <= pieceLength) {
        return {0, length};
    }
    const qsizetype lineStart = _text.lineStart(line);
    const int count = pieceCount(line);
    piece = std::clamp(piece, 0, count - 1);
    const qsizetype start = piece == 0 ? 0 : boundary(lineStart, length, piece);
    const qsizetype end = piece == count - 1 ? length : boundary(lineStart, length, piece + 1);
    return {start, end - start};
}

int TextLayoutCache::pieceAt(qsizetype line, qsizetype column) const
{
    const qsizetype length = _text.lineLength(line);
    if (length <= pieceLength) {
        return 0;
    }
    const int count = pieceCount(line);
    int k = int(std::min<qsizetype>(std::max<qsizetype>(column, 0) / pieceLength, count - 1));
    if (k > 0 && column < boundary(_text.lineStart(line), length, k)) {
        --k;
    }
    return k;
}

TextLayoutCache::Entry* TextLayoutCache::find(qsizetype line, int piece) const
{
    const auto it = _entries.constFind(key(line, piece));
    return it == _entries.constEnd() ? nullptr : it->get();
}

TextLayoutCache::Entry& TextLayoutCache::layout(qsizetype line, int piece)
{
    if (Entry* entry = find(line, piece)) {
        entry->used = ++_clock;
        return *entry;
    }
    auto entry = std::make_shared<Entry>();
    const PieceColumns columns = pieceColumns(line, piece);
    entry->line = line;
    entry->piece = piece;
    entry->start = columns.start;
    entry->length = columns.length;
    entry->used = ++_clock;
    if (_preedit.isActive() && _preedit.line == line) {
        const qsizetype column = _preedit.column - columns.start;
        const bool lastPiece = columns.end() == _text.lineLength(line);
        if (column >= 0 && (column < columns.length || (lastPiece && column == columns.length))) {
            entry->preeditColumn = column;
            entry->preeditLength = _preedit.text.size();
        }
    }
    if (_foregroundOfLine) {
        entry->formats = clipped(_foregroundOfLine(line), columns.start, columns.length);
    }
    build(*entry);
    _units += columns.length;
    Entry& made = *entry;
    _entries.insert(key(line, piece), std::move(entry));
    if (!_style.wrap) {
        _widest = std::max(_widest, pieceX(line, piece) + made.width);
    }
    if (_laidOut) {
        _laidOut(line);
    }
    return made;
}

void TextLayoutCache::updateFormats(Entry& entry,
                                    const QList<QTextLayout::FormatRange>& lineForeground)
{
    QList<QTextLayout::FormatRange> formats = clipped(lineForeground, entry.start, entry.length);
    if (formats == entry.formats) {
        return;
    }
    entry.formats = std::move(formats);
    build(entry);
    if (_laidOut) {
        _laidOut(entry.line);
    }
}

QString TextLayoutCache::layoutText(Entry& entry) const
{
    QString text = _text.text(Range(_text.lineStart(entry.line) + entry.start, entry.length));
    entry.replaced.clear();
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (needsRoom(text[i], _style.showInvisibles)) {
            entry.replaced.append({i, text[i]});
            text[i] = QLatin1Char(' ');
        }
    }
    if (entry.preeditLength > 0) {
        text.insert(entry.preeditColumn, _preedit.text);
    }
    return text;
}

void TextLayoutCache::build(Entry& entry)
{
    ++_layoutsMade;
    QList<QTextLayout::FormatRange> formats;
    formats.reserve(entry.formats.size() + _preedit.formats.size() + 1);
    for (const QTextLayout::FormatRange& range : entry.formats) {
        const int from = entry.toLayout(range.start);
        const int to = entry.toLayout(qsizetype(range.start) + range.length);
        formats.append({from, to - from, range.format});
    }
    if (entry.preeditLength > 0) {
        const int at = entry.toLayout(entry.preeditColumn);
        if (_preedit.underlined) {
            QTextCharFormat underline;
            underline.setFontUnderline(true);
            formats.append({at, int(entry.preeditLength), underline});
        }
        for (const QTextLayout::FormatRange& range : _preedit.formats) {
            formats.append({at + range.start, range.length, range.format});
        }
    }

    QTextLayout& layout = entry.layout;
    layout.setText(layoutText(entry));
    layout.setFont(_style.font);
    QTextOption option;
    option.setWrapMode(_style.wrap ? QTextOption::WrapAtWordBoundaryOrAnywhere
                                   : QTextOption::NoWrap);
    option.setTabStopDistance(_style.tabStopDistance);
    layout.setTextOption(option);
    layout.setFormats(formats);
    layout.setCacheEnabled(true);
    layout.beginLayout();
    int row = 0;
    qreal width = 0;
    for (;;) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) {
            break;
        }
        line.setLineWidth(_style.wrap ? _style.wrapWidth : 1e7);
        // The same baseline in every row, whatever fonts the row's characters need.
        line.setPosition(QPointF(0, row * _style.rowHeight + _style.baseline - line.ascent()));
        width = std::max(width, line.naturalTextWidth());
        ++row;
    }
    layout.endLayout();
    entry.rows = std::max(row, 1);
    entry.width = width;
}

void TextLayoutCache::textChanged(const TextChange& change, const TextSnapshot& text)
{
    _text = text;
    if (_entries.isEmpty()) {
        return;
    }
    const qsizetype first = change.firstLine;
    const qsizetype lastOld = first + change.linesRemoved;
    const qsizetype shift = change.linesAdded - change.linesRemoved;
    const qsizetype column = change.position - text.lineStart(first);
    QHash<quint64, std::shared_ptr<Entry>> kept;
    kept.reserve(_entries.size());
    for (auto it = _entries.begin(); it != _entries.end(); ++it) {
        Entry& entry = **it;
        bool keep = entry.line < first;
        if (entry.line > lastOld) {
            entry.line += shift;
            keep = true;
        } else if (entry.line == first) {
            // A piece before the change whose edges do not depend on what changed.
            keep = entry.start + entry.length < column &&
                   qsizetype(entry.piece + 1) * pieceLength + pieceSlack <= column;
        }
        if (keep) {
            kept.insert(key(entry.line, entry.piece), *it);
        } else {
            _units -= entry.length;
        }
    }
    _entries = std::move(kept);
}

void TextLayoutCache::invalidateLines(qsizetype first, qsizetype last)
{
    for (auto it = _entries.begin(); it != _entries.end();) {
        if ((*it)->line >= first && (*it)->line <= last) {
            _units -= (*it)->length;
            it = _entries.erase(it);
        } else {
            ++it;
        }
    }
}

qsizetype TextLayoutCache::estimatedRows(qsizetype length) const
{
    if (!_style.wrap) {
        return 1;
    }
    const qreal width = std::max<qreal>(_style.wrapWidth, _charWidth);
    const auto rowsFor = [&](qsizetype units) {
        return std::max<qsizetype>(1, qsizetype(std::ceil(qreal(units) * _charWidth / width)));
    };
    if (length <= pieceLength) {
        return rowsFor(length);
    }
    const qsizetype full = length / pieceLength;
    const qsizetype rest = length % pieceLength;
    return full * rowsFor(pieceLength) + (rest > 0 ? rowsFor(rest) : 0);
}

qsizetype TextLayoutCache::nominalLength(qsizetype lineLength, int piece) const
{
    // Estimates need no exact edges: a piece is pieceLength long give or take pieceSlack.
    const qsizetype start = qsizetype(piece) * pieceLength;
    return std::clamp<qsizetype>(lineLength - start, 0, pieceLength);
}

int TextLayoutCache::rows(qsizetype line, int piece) const
{
    if (!_style.wrap) {
        return 1;
    }
    if (const Entry* entry = find(line, piece)) {
        return entry->rows;
    }
    const qsizetype length = _text.lineLength(line);
    const qsizetype units =
        piece == pieceCount(line) - 1 ? length - qsizetype(piece) * pieceLength : pieceLength;
    return int(std::min<qsizetype>(estimatedRows(std::max<qsizetype>(units, 0)), 1 << 24));
}

qsizetype TextLayoutCache::rowsOfLine(qsizetype line) const
{
    if (!_style.wrap) {
        return 1;
    }
    const qsizetype length = _text.lineLength(line);
    const int count = length <= pieceLength ? 1 : int(1 + (length - 1) / pieceLength);
    if (count == 1) {
        const Entry* entry = find(line, 0);
        return entry ? entry->rows : estimatedRows(length);
    }
    qsizetype total = 0;
    for (int k = 0; k < count; ++k) {
        const Entry* entry = find(line, k);
        total += entry ? entry->rows
                       : estimatedRows(k == count - 1 ? length - qsizetype(k) * pieceLength
                                                      : pieceLength);
    }
    return total;
}

qreal TextLayoutCache::pieceWidth(qsizetype line, int piece) const
{
    const Entry* entry = find(line, piece);
    return entry ? entry->width : estimatedWidth(nominalLength(_text.lineLength(line), piece));
}

qreal TextLayoutCache::pieceX(qsizetype line, int piece) const
{
    const qsizetype length = piece > 0 ? _text.lineLength(line) : 0;
    qreal x = 0;
    for (int k = 0; k < piece; ++k) {
        const Entry* entry = find(line, k);
        x += entry ? entry->width : estimatedWidth(nominalLength(length, k));
    }
    return x;
}

void TextLayoutCache::trim()
{
    if (_entries.size() <= _maxEntries && _units <= _maxUnits) {
        return;
    }
    std::vector<std::pair<quint64, quint64>> byUse;
    byUse.reserve(size_t(_entries.size()));
    for (auto it = _entries.cbegin(); it != _entries.cend(); ++it) {
        byUse.emplace_back((*it)->used, it.key());
    }
    std::sort(byUse.begin(), byUse.end());
    for (const auto& [used, k] : byUse) {
        if (_entries.size() <= _maxEntries && _units <= _maxUnits) {
            break;
        }
        const auto it = _entries.find(k);
        _units -= (*it)->length;
        _entries.erase(it);
    }
}

QList<qsizetype> TextLayoutCache::cachedLines() const
{
    QList<qsizetype> lines;
    for (const auto& entry : _entries) {
        lines.append(entry->line);
    }
    std::sort(lines.begin(), lines.end());
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    return lines;
}
