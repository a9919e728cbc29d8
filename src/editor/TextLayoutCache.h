#pragma once

#include "document/TextChange.h"
#include "document/TextSnapshot.h"

#include <QFont>
#include <QHash>
#include <QList>
#include <QString>
#include <QTextLayout>

#include <functional>
#include <memory>

/// The laid-out lines of a text view, for the lines it shows only: one QTextLayout per line
/// of the text (a line is one paragraph), made when a line is first needed and kept in a
/// bounded cache keyed by line. A change of the text drops exactly the layouts of the lines
/// it touched; the others move with their lines.
///
/// A line longer than pieceLength is laid out in pieces of about that many units, each with
/// a layout of its own: scrolling to or typing in a 1 MB line then lays out a few thousand
/// units, not the whole line. A piece's edge falls just after a blank near its nominal
/// place, so a wrapped piece ends its last row between words; without wrapping, the pieces
/// of a line stand side by side.
///
/// Every row has the same height and every baseline the same place in its row, whatever
/// fallback fonts a line needs, so the geometry of a screen is rows × rowHeight.
class TextLayoutCache
{
public:
    static constexpr qsizetype pieceLength = 4096;
    /// How far past its nominal place a piece's edge looks for a blank.
    static constexpr qsizetype pieceSlack = 64;

    struct Style {
        QFont font;
        qreal tabStopDistance = 32;
        bool wrap = false;
        /// The width rows wrap at, when wrapping.
        qreal wrapWidth = 400;
        qreal rowHeight = 16;
        /// From the top of a row to its baseline.
        qreal baseline = 12;
        /// Format and control characters get room of their own, for their marks.
        bool showInvisibles = false;

        bool operator==(const Style&) const = default;
    };

    /// Text shown in the line but not part of the text: what an input method is composing,
    /// or the rest of a word that completion proposes.
    struct Preedit {
        qsizetype line = -1;
        qsizetype column = 0;
        QString text;
        /// Relative to the pre-edit text.
        QList<QTextLayout::FormatRange> formats;
        /// Composition is underlined; a proposal shows through its formats alone.
        bool underlined = true;

        bool isActive() const { return line >= 0 && !text.isEmpty(); }
    };

    /// One laid-out piece of a line.
    struct Entry {
        qsizetype line = 0;
        int piece = 0;
        /// The piece's columns within its line.
        qsizetype start = 0;
        qsizetype length = 0;
        QTextLayout layout;
        int rows = 1;
        /// The widest row.
        qreal width = 0;
        /// The foreground formats it was laid out with, relative to the piece.
        QList<QTextLayout::FormatRange> formats;
        /// Characters shown as a blank in the layout (their marks need the originals):
        /// (column in the piece, character).
        QList<std::pair<qsizetype, QChar>> replaced;
        /// Where a pre-edit stands in the layout (relative to the piece), and its length.
        qsizetype preeditColumn = -1;
        qsizetype preeditLength = 0;
        quint64 used = 0;

        /// The layout position of a column of the piece (pre-edit text pushes the rest).
        int toLayout(qsizetype column) const
        {
            return int(preeditLength > 0 && column > preeditColumn ? column + preeditLength
                                                                   : column);
        }
        /// The column of the piece at a layout position (inside pre-edit text: its start).
        qsizetype fromLayout(int position) const
        {
            if (preeditLength == 0 || position <= preeditColumn) {
                return position;
            }
            return position <= preeditColumn + preeditLength ? preeditColumn
                                                             : position - preeditLength;
        }
    };

    struct PieceColumns {
        qsizetype start = 0;
        qsizetype length = 0;
        qsizetype end() const { return start + length; }
    };

    TextLayoutCache();
    ~TextLayoutCache();
    TextLayoutCache(const TextLayoutCache&) = delete;
    TextLayoutCache& operator=(const TextLayoutCache&) = delete;

    /// Takes a new text and drops every layout.
    void setText(const TextSnapshot& text);
    const TextSnapshot& text() const { return _text; }
    /// Follows one change of the text, already made in `text`: drops the layouts of the
    /// changed lines (of a long line, the pieces from the change on) and renumbers the rest.
    void textChanged(const TextChange& change, const TextSnapshot& text);

    /// Drops every layout when the style differs.
    void setStyle(const Style& style);
    const Style& style() const { return _style; }
    void setPreedit(const Preedit& preedit);
    const Preedit& preedit() const { return _preedit; }
    /// The foreground formats of a line, asked for when the line is laid out.
    void
    setFormatSource(std::function<QList<QTextLayout::FormatRange>(qsizetype line)> foregroundOfLine)
    {
        _foregroundOfLine = std::move(foregroundOfLine);
    }

    int pieceCount(qsizetype line) const;
    PieceColumns pieceColumns(qsizetype line, int piece) const;
    /// The piece holding `column` (the line's end belongs to the last piece).
    int pieceAt(qsizetype line, qsizetype column) const;

    /// The layout of a piece, made now when it is not in the cache. The reference stays
    /// valid until the next trim(), change or style.
    Entry& layout(qsizetype line, int piece);
    Entry* find(qsizetype line, int piece) const;
    /// Lays the piece out again when `lineForeground` (the line's foreground formats) gives
    /// it other formats than it has.
    void updateFormats(Entry& entry, const QList<QTextLayout::FormatRange>& lineForeground);
    /// Drops the layouts of lines first … last (their formats changed, say).
    void invalidateLines(qsizetype first, qsizetype last);

    /// Rows of a piece as laid out, or as estimated from its length when it is not.
    int rows(qsizetype line, int piece) const;
    /// Rows of a line: laid-out pieces counted, the others estimated.
    qsizetype rowsOfLine(qsizetype line) const;
    /// Rows a line of `length` units is expected to take: from the average character width.
    qsizetype estimatedRows(qsizetype length) const;
    qreal estimatedWidth(qsizetype length) const { return qreal(length) * _charWidth; }
    qreal averageCharWidth() const { return _charWidth; }
    /// Unwrapped: a piece's width, laid out or estimated.
    qreal pieceWidth(qsizetype line, int piece) const;
    /// Unwrapped: where a piece starts, from the widths of the pieces before it (laid out or
    /// estimated).
    qreal pieceX(qsizetype line, int piece) const;

    /// Called after a piece is laid out.
    void setLaidOutCallback(std::function<void(qsizetype line)> callback)
    {
        _laidOut = std::move(callback);
    }
    /// The widest line laid out so far (unwrapped: the pieces before it included).
    qreal widestLine() const { return _widest; }
    void resetWidestLine() { _widest = 0; }

    /// Drops the layouts used least recently beyond the capacity.
    void trim();
    void setCapacity(int entries, qsizetype units)
    {
        _maxEntries = entries;
        _maxUnits = units;
    }
    int size() const { return int(_entries.size()); }
    /// How many layouts were made since the cache was created: a handle for tests and
    /// benchmarks on how much work a scroll or an edit did.
    qint64 layoutsMade() const { return _layoutsMade; }
    /// The lines that have a layout in the cache, in order.
    QList<qsizetype> cachedLines() const;
    void clear();

private:
    static quint64 key(qsizetype line, int piece) { return (quint64(line) << 20) | quint64(piece); }
    qsizetype boundary(qsizetype lineStart, qsizetype lineLength, int k) const;
    qsizetype nominalLength(qsizetype lineLength, int piece) const;
    void build(Entry& entry);
    QString layoutText(Entry& entry) const;

    TextSnapshot _text;
    Style _style;
    Preedit _preedit;
    qreal _charWidth = 0;
    QHash<quint64, std::shared_ptr<Entry>> _entries;
    std::function<QList<QTextLayout::FormatRange>(qsizetype line)> _foregroundOfLine;
    std::function<void(qsizetype line)> _laidOut;
    quint64 _clock = 0;
    qint64 _layoutsMade = 0;
    qsizetype _units = 0;
    int _maxEntries = 600;
    qsizetype _maxUnits = qsizetype(4) << 20;
    qreal _widest = 0;
};
