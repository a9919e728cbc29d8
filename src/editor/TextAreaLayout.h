#pragma once

#include "editor/TextHeightMap.h"
#include "editor/TextLayoutCache.h"
#include "platform/Range.h"

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

/// The geometry of a text area without the widget: which rows of the text a viewport of a
/// given size shows, where a position is drawn and which position lies under a point, and
/// the moves by visual rows. Built on the layout cache (the lines shown) and the height map
/// (the rows of the others, estimated).
///
/// The scroll position is anchored to a row of the text, (line, piece, row): scrolling lays
/// out the rows scrolled over when they are a few pages at most, and jumps through the
/// height map otherwise, so reaching the end of a wrapped 100 MB text lays out its last page
/// only. The vertical scroll value is counted in rows, estimated for the lines not laid out;
/// the last page is found from the end, so the largest value shows the last row exactly.
class TextAreaLayout
{
public:
    /// A visual row. Unwrapped, a line is one row (piece and row 0).
    struct RowRef {
        qsizetype line = 0;
        int piece = 0;
        int row = 0;
        auto operator<=>(const RowRef&) const = default;
    };
    /// A piece of a line on screen and which of its rows meet the area asked for.
    struct ShownPiece {
        TextLayoutCache::Entry* entry = nullptr;
        /// Where the layout's origin stands, in viewport coordinates.
        QPointF origin;
        int firstRow = 0;
        int lastRow = 0;
    };
    /// A line on screen.
    struct ShownLine {
        qsizetype line = 0;
        /// Where the line starts in the text.
        qsizetype position = 0;
        /// The top of its first row on screen and the bottom of its last, in viewport
        /// coordinates.
        qreal top = 0;
        qreal bottom = 0;
        /// Its first row is above the viewport (the screen starts inside the line).
        bool startsAbove = false;
    };

    TextAreaLayout();

    TextLayoutCache& cache() { return _cache; }
    TextHeightMap& heightMap() { return _heights; }
    const TextSnapshot& text() const { return _cache.text(); }

    void setText(const TextSnapshot& text);
    void textChanged(const TextChange& change, const TextSnapshot& text);
    /// Keeps the row at the top of the screen in sight (wrapping on and off included).
    void setStyle(const TextLayoutCache::Style& style);
    const TextLayoutCache::Style& style() const { return _cache.style(); }
    /// The viewport's size; when wrapping, the width of the rows follows it.
    void setViewportSize(QSizeF size);
    QSizeF viewportSize() const { return _viewport; }
    /// Room left of and above the text inside the viewport; `right` also keeps the caret in
    /// sight at the end of a wrapped row.
    void setPadding(qreal left, qreal top, qreal right);
    qreal leftPadding() const { return _padLeft; }
    qreal topPadding() const { return _padTop; }
    qreal rowHeight() const { return _cache.style().rowHeight; }

    // Scrolling.
    RowRef anchor() const { return _anchor; }
    void setAnchor(RowRef anchor);
    void scrollRows(qsizetype rows);
    /// Rows fully shown.
    int pageRows() const;
    qsizetype scrollValue();
    qsizetype scrollMaximum();
    void setScrollValue(qsizetype value);
    qreal horizontalOffset() const { return _hOffset; }
    void setHorizontalOffset(qreal offset);
    qreal horizontalMaximum() const;
    /// Scrolls as little as needed to show `position`, or puts it in the middle of the screen
    /// when it is far away.
    void scrollToShow(qsizetype position);

    // Rows.
    RowRef rowOf(qsizetype position);
    bool nextRow(RowRef& row);
    bool previousRow(RowRef& row);
    /// The positions a row covers.
    Range rowRange(RowRef row);
    /// The position nearest to `x` (content coordinates) in `row`; at the end of a wrapped
    /// row, before its last character, so that the position stays in that row.
    qsizetype positionInRow(RowRef row, qreal x);
    /// Where `position` is drawn, from the left of the text (the pieces before it included);
    /// `preeditOffset` moves it into the input method's pre-edit text standing there.
    qreal contentX(qsizetype position, int preeditOffset = 0);
    /// The row's place in the scroll units (rows from the top, estimated above the screen).
    qsizetype rowValue(RowRef row);

    // The screen.
    /// The pieces with rows between `top` and `bottom` (viewport coordinates). The entries
    /// stay valid until the next call that changes or scrolls the layout.
    QList<ShownPiece> shownPieces(qreal top, qreal bottom);
    QList<ShownLine> shownLines();
    /// The rows on screen of the lines that `range` meets (its ends included), from the
    /// viewport's left to `right`; empty when none of them is shown.
    QRect rowsOf(Range range, int right);
    /// What a change inside the lines `range` meets repaints: their rows on screen, and when
    /// wrapping (their rows may come or go) every row below them.
    QRect rowsMovedByChange(Range range);
    /// The caret's rectangle for `position` (width 0) in viewport coordinates: exact on
    /// screen, estimated elsewhere.
    QRectF caretRect(qsizetype position, int preeditOffset = 0);
    qsizetype positionAt(QPointF point);
    /// From the first to the last character of the rows on screen, partly shown ones
    /// included.
    Range visibleRange();

private:
    RowRef lastRow();
    RowRef lastPageAnchor();
    RowRef normalized(RowRef row);
    RowRef back(RowRef row, qsizetype rows);
    void resetHeights();

    TextLayoutCache _cache;
    TextHeightMap _heights;
    RowRef _anchor;
    QSizeF _viewport{400, 300};
    qreal _padLeft = 4;
    qreal _padTop = 2;
    qreal _padRight = 4;
    qreal _hOffset = 0;
    bool _lastPageKnown = false;
    RowRef _lastPage;
};
