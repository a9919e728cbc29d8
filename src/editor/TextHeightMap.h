#pragma once

#include "document/TextChange.h"
#include "document/TextSnapshot.h"

#include <functional>
#include <utility>
#include <vector>

/// How many rows the lines of a text take, for a vertical scroll bar over a wrapped text that
/// is never laid out as a whole. Each line's rows are estimated from its length; a line that
/// was laid out counts with its real rows. The lines are kept in segments of about
/// segmentLines lines, each with the sum of its rows, so that the rows before a line, and
/// the line at a row, cost one walk over the segments plus one segment's line lengths.
///
/// A segment is measured (its lines' lengths read) when first asked about or by measure(),
/// which a view runs in slices while it is idle; until then its rows are guessed from its
/// length alone. Without an estimate every line is one row and nothing is ever read.
class TextHeightMap
{
public:
    /// Rows of a line of the given length.
    using Estimate = std::function<qsizetype(qsizetype length)>;
    static constexpr qsizetype segmentLines = 1024;

    struct Place {
        qsizetype line = 0;
        /// The row within the line.
        qsizetype row = 0;
    };

    TextHeightMap() = default;

    /// Starts over on `text`, every segment unmeasured.
    void reset(const TextSnapshot& text, Estimate estimate = {});
    /// Follows one change of the text, already made in `text`: the segments it touched are
    /// measured again (when a paste brought very many lines, the new ones wait for measure()).
    void textChanged(const TextChange& change, const TextSnapshot& text);

    qsizetype totalRows() const { return _totalRows; }
    qsizetype lineCount() const { return _text.lineCount(); }
    /// The rows of the lines before `line`.
    qsizetype rowsBefore(qsizetype line);
    /// The rows `line` counts for: its real rows when they were given, else the estimate.
    qsizetype rowsOf(qsizetype line);
    /// The line holding `row` (counted from the top of the text) and the row within it; past
    /// the end, the last row.
    Place lineAtRow(qsizetype row);
    /// The real rows of a laid-out line.
    void setRows(qsizetype line, qsizetype rows);

    /// Measures unmeasured segments until about `budget` units were read. True when every
    /// segment is measured.
    bool measure(qsizetype budget);
    bool isMeasured() const { return _unmeasured == 0; }
    int segmentCount() const { return int(_segments.size()); }

private:
    struct Segment {
        qsizetype lines = 0;
        qsizetype rows = 0;
        bool measured = false;
        /// Lines whose real rows differ from their estimate: (offset in the segment, rows).
        std::vector<std::pair<qsizetype, qsizetype>> actual;
    };

    /// The segment holding `line` and the first line of that segment.
    std::pair<size_t, qsizetype> segmentOf(qsizetype line) const;
    void measureSegment(Segment& segment, qsizetype firstLine);
    qsizetype guessRows(qsizetype firstLine, qsizetype lines) const;
    /// Calls `f(offset, length)` for `count` lines from `firstLine`, reading the text once.
    template <typename F> void forEachLineLength(qsizetype firstLine, qsizetype count, F f) const;

    TextSnapshot _text;
    Estimate _estimate;
    std::vector<Segment> _segments;
    qsizetype _totalRows = 1;
    qsizetype _unmeasured = 0;
};
