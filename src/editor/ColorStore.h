#pragma once

#include "platform/Range.h"

#include <QColor>

#include <vector>

/// Colour runs laid over a text without being part of it (syntax colours, search
/// highlights). Runs never overlap: setting a colour replaces whatever lay under its range.
/// The store follows edits of the text (`contentsChange`), so a run keeps covering the
/// same characters while text is inserted or removed around it.
///
/// Runs are held in a gap layout: those before the last edited position by their start,
/// those after it by their distance from the end of the text. An edit changes neither
/// kind of key, so typing costs only the few runs at the edit, not a pass over every run
/// of a fully coloured 20 MB text.
class ColorStore
{
public:
    struct Run {
        qsizetype location = 0;
        qsizetype length = 0;
        QRgb color = 0;
        bool operator==(const Run&) const = default;
    };

    explicit ColorStore(qsizetype textLength = 0);

    qsizetype textLength() const { return _length; }
    /// Drops every run and takes a new text length.
    void reset(qsizetype textLength);
    bool isEmpty() const { return _head.empty() && _tail.empty(); }
    size_t count() const { return _head.size() + _tail.size(); }

    /// Colours `range` (clipped to the text) with `color`, replacing what was there.
    void setColor(QRgb color, Range range);
    /// Replaces the colours inside `range` by `runs` in one step (what a colouring pass over
    /// a range produces). Runs are clipped to the range; a run starting before the end of
    /// the one before it is laid over it, as `setColor` would.
    void replaceColors(Range range, const std::vector<Run>& runs);
    /// Uncolours `range` (clipped to the text).
    void removeColor(Range range);
    /// Follows an edit: `removed` code units at `position` were replaced by `added`. Text
    /// inserted strictly inside a run takes its colour; text inserted at a run's edge does not.
    void contentsChange(qsizetype position, qsizetype removed, qsizetype added);

    /// The runs meeting [from, to), clipped to it, in text order.
    std::vector<Run> runs(qsizetype from, qsizetype to) const;

private:
    // `key` is the start for runs before the gap, the distance from the text's end after it.
    // 32 bits hold positions up to 2^31 units (a 4 GB text) and keep a fully coloured 20 MB
    // text at 12 bytes a run.
    struct Entry {
        Entry(qsizetype key, qsizetype length, QRgb color)
            : key(qint32(key))
            , length(qint32(length))
            , color(color)
        {}
        qint32 key;
        qint32 length;
        QRgb color;
    };

    void moveGapTo(qsizetype position);
    qsizetype tailStart(const Entry& entry) const { return _length - entry.key; }

    std::vector<Entry> _head; // starts before the gap, ascending
    std::vector<Entry> _tail; // starts at or after the gap, descending; back() is nearest
    qsizetype _length = 0;
};
