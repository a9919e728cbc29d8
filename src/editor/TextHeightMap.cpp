#include "editor/TextHeightMap.h"

#include "document/TextChunkIterator.h"

#include <algorithm>

namespace {

// A change that brings more than this many units leaves its new lines to measure(), so that a
// large paste or load costs no pass over the text at once.
constexpr qsizetype kMeasureAtOnce = qsizetype(4) << 20;

} // namespace

template <typename F>
void TextHeightMap::forEachLineLength(qsizetype firstLine, qsizetype count, F f) const
{
    qsizetype offset = 0;
    qsizetype length = 0;
    for (TextChunkIterator chunks(_text, _text.lineStart(firstLine));
         !chunks.atEnd() && offset < count; chunks.next()) {
        const QStringView chunk = chunks.chunk();
        qsizetype from = 0;
        while (offset < count) {
            const qsizetype feed = chunk.indexOf(u'\n', from);
            if (feed < 0) {
                length += chunk.size() - from;
                break;
            }
            length += feed - from;
            if (!f(offset, length)) {
                return;
            }
            ++offset;
            length = 0;
            from = feed + 1;
        }
    }
    // The last line of the text has no line feed.
    if (offset < count) {
        f(offset, length);
    }
}

void TextHeightMap::reset(const TextSnapshot& text, Estimate estimate)
{
    _text = text;
    _estimate = std::move(estimate);
    _segments.clear();
    _totalRows = 0;
    _unmeasured = 0;
    const qsizetype lines = text.lineCount();
    _segments.reserve(size_t(lines / segmentLines + 1));
    for (qsizetype first = 0; first < lines; first += segmentLines) {
        Segment segment;
        segment.lines = std::min(segmentLines, lines - first);
        if (_estimate) {
            segment.rows = guessRows(first, segment.lines);
            ++_unmeasured;
        } else {
            segment.rows = segment.lines;
            segment.measured = true;
        }
        _totalRows += segment.rows;
        _segments.push_back(std::move(segment));
    }
}

qsizetype TextHeightMap::guessRows(qsizetype firstLine, qsizetype lines) const
{
    const qsizetype end = firstLine + lines < _text.lineCount() ? _text.lineStart(firstLine + lines)
                                                                : _text.length() + 1;
    const qsizetype units = end - _text.lineStart(firstLine) - lines;
    return std::max(lines, _estimate(units));
}

std::pair<size_t, qsizetype> TextHeightMap::segmentOf(qsizetype line) const
{
    qsizetype first = 0;
    for (size_t i = 0; i < _segments.size(); ++i) {
        if (line < first + _segments[i].lines || i + 1 == _segments.size()) {
            return {i, first};
        }
        first += _segments[i].lines;
    }
    return {0, 0};
}

void TextHeightMap::measureSegment(Segment& segment, qsizetype firstLine)
{
    qsizetype rows = 0;
    size_t next = 0;
    forEachLineLength(firstLine, segment.lines, [&](qsizetype offset, qsizetype length) {
        if (next < segment.actual.size() && segment.actual[next].first == offset) {
            rows += segment.actual[next++].second;
        } else {
            rows += _estimate(length);
        }
        return true;
    });
    _totalRows += rows - segment.rows;
    segment.rows = rows;
    if (!segment.measured) {
        segment.measured = true;
        --_unmeasured;
    }
}

qsizetype TextHeightMap::rowsBefore(qsizetype line)
{
    if (!_estimate) {
        return std::clamp<qsizetype>(line, 0, lineCount());
    }
    if (line >= lineCount()) {
        return _totalRows;
    }
    qsizetype rows = 0;
    qsizetype first = 0;
    for (Segment& segment : _segments) {
        if (line < first + segment.lines) {
            if (!segment.measured) {
                measureSegment(segment, first);
            }
            size_t next = 0;
            forEachLineLength(first, line - first, [&](qsizetype offset, qsizetype length) {
                while (next < segment.actual.size() && segment.actual[next].first < offset) {
                    ++next;
                }
                const bool corrected =
                    next < segment.actual.size() && segment.actual[next].first == offset;
                rows += corrected ? segment.actual[next].second : _estimate(length);
                return true;
            });
            return rows;
        }
        rows += segment.rows;
        first += segment.lines;
    }
    return rows;
}

qsizetype TextHeightMap::rowsOf(qsizetype line)
{
    if (!_estimate) {
        return 1;
    }
    const auto [index, first] = segmentOf(line);
    const Segment& segment = _segments[index];
    const auto it = std::lower_bound(segment.actual.begin(), segment.actual.end(),
                                     std::pair<qsizetype, qsizetype>(line - first, 0));
    if (it != segment.actual.end() && it->first == line - first) {
        return it->second;
    }
    return _estimate(_text.lineLength(line));
}

TextHeightMap::Place TextHeightMap::lineAtRow(qsizetype row)
{
    const qsizetype lastLine = lineCount() - 1;
    if (!_estimate) {
        return {std::clamp<qsizetype>(row, 0, lastLine), 0};
    }
    if (row >= _totalRows) {
        return {lastLine, std::max<qsizetype>(0, rowsOf(lastLine) - 1)};
    }
    row = std::max<qsizetype>(row, 0);
    for (;;) {
        qsizetype before = 0;
        qsizetype first = 0;
        size_t i = 0;
        while (i + 1 < _segments.size() && row >= before + _segments[i].rows) {
            before += _segments[i].rows;
            first += _segments[i].lines;
            ++i;
        }
        Segment& segment = _segments[i];
        if (!segment.measured) {
            // Measuring changes the segment's rows: look again.
            measureSegment(segment, first);
            continue;
        }
        Place place{first + segment.lines - 1, 0};
        size_t next = 0;
        qsizetype at = before;
        forEachLineLength(first, segment.lines, [&](qsizetype offset, qsizetype length) {
            while (next < segment.actual.size() && segment.actual[next].first < offset) {
                ++next;
            }
            const bool corrected =
                next < segment.actual.size() && segment.actual[next].first == offset;
            const qsizetype rows = corrected ? segment.actual[next].second : _estimate(length);
            if (row < at + rows) {
                place = {first + offset, row - at};
                return false;
            }
            at += rows;
            return true;
        });
        return place;
    }
}

void TextHeightMap::setRows(qsizetype line, qsizetype rows)
{
    if (!_estimate || line < 0 || line >= lineCount()) {
        return;
    }
    const auto [index, first] = segmentOf(line);
    Segment& segment = _segments[index];
    if (!segment.measured) {
        measureSegment(segment, first);
    }
    const qsizetype offset = line - first;
    const qsizetype estimate = _estimate(_text.lineLength(line));
    auto it = std::lower_bound(segment.actual.begin(), segment.actual.end(),
                               std::pair<qsizetype, qsizetype>(offset, 0));
    const bool known = it != segment.actual.end() && it->first == offset;
    const qsizetype old = known ? it->second : estimate;
    if (rows == estimate) {
        if (known) {
            segment.actual.erase(it);
        }
    } else if (known) {
        it->second = rows;
    } else {
        segment.actual.insert(it, {offset, rows});
    }
    segment.rows += rows - old;
    _totalRows += rows - old;
}

void TextHeightMap::textChanged(const TextChange& change, const TextSnapshot& text)
{
    const qsizetype oldLength = _text.length();
    _text = text;
    if (_segments.empty() || (change.position == 0 && change.charsRemoved == oldLength)) {
        reset(text, _estimate);
        return;
    }
    const qsizetype changed = change.firstLine;
    const qsizetype lastOld = changed + change.linesRemoved;
    const qsizetype shift = change.linesAdded - change.linesRemoved;

    auto [i0, first0] = segmentOf(changed);
    size_t i1 = i0;
    qsizetype first1 = first0;
    while (i1 + 1 < _segments.size() && lastOld >= first1 + _segments[i1].lines) {
        first1 += _segments[i1].lines;
        ++i1;
    }
    // Too small a segment joins its neighbour, so that the segments stay few.
    qsizetype lines = first1 + _segments[i1].lines - first0 + shift;
    if (lines < segmentLines / 2 && i1 + 1 < _segments.size()) {
        lines += _segments[++i1].lines;
    } else if (lines < segmentLines / 2 && i0 > 0) {
        first0 -= _segments[--i0].lines;
        lines += _segments[i0].lines;
    }

    std::vector<std::pair<qsizetype, qsizetype>> actual;
    qsizetype base = first0;
    for (size_t i = i0; i <= i1; ++i) {
        const Segment& segment = _segments[i];
        for (const auto& [offset, rows] : segment.actual) {
            const qsizetype line = base + offset;
            if (line < changed) {
                actual.emplace_back(line - first0, rows);
            } else if (line > lastOld) {
                actual.emplace_back(line + shift - first0, rows);
            }
        }
        base += segment.lines;
        _totalRows -= segment.rows;
        _unmeasured -= segment.measured ? 0 : 1;
    }
    _segments.erase(_segments.begin() + qsizetype(i0), _segments.begin() + qsizetype(i1) + 1);

    const qsizetype parts = std::max<qsizetype>(1, lines / segmentLines);
    const qsizetype end =
        first0 + lines < _text.lineCount() ? _text.lineStart(first0 + lines) : _text.length();
    const bool measureNow = !_estimate || end - _text.lineStart(first0) <= kMeasureAtOnce;
    std::vector<Segment> made(static_cast<size_t>(parts));
    qsizetype first = first0;
    size_t next = 0;
    for (qsizetype p = 0; p < parts; ++p) {
        Segment& segment = made[size_t(p)];
        segment.lines = p + 1 < parts ? segmentLines : first0 + lines - first;
        while (next < actual.size() && actual[next].first < first + segment.lines - first0) {
            segment.actual.emplace_back(actual[next].first - (first - first0), actual[next].second);
            ++next;
        }
        if (!_estimate) {
            segment.rows = segment.lines;
            segment.measured = true;
            _totalRows += segment.rows;
        } else if (measureNow) {
            ++_unmeasured;
            measureSegment(segment, first);
        } else {
            segment.rows = guessRows(first, segment.lines);
            ++_unmeasured;
            _totalRows += segment.rows;
        }
        first += segment.lines;
    }
    _segments.insert(_segments.begin() + qsizetype(i0), std::make_move_iterator(made.begin()),
                     std::make_move_iterator(made.end()));
}

bool TextHeightMap::measure(qsizetype budget)
{
    qsizetype first = 0;
    for (Segment& segment : _segments) {
        if (_unmeasured == 0 || budget <= 0) {
            break;
        }
        if (!segment.measured) {
            const qsizetype end = first + segment.lines < lineCount()
                                      ? _text.lineStart(first + segment.lines)
                                      : _text.length();
            budget -= end - _text.lineStart(first) + 1;
            measureSegment(segment, first);
        }
        first += segment.lines;
    }
    return _unmeasured == 0;
}
