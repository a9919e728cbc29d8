#pragma once

#include <QStringView>

/// A text that need not lie in one piece. Engines that read around an edit (colouring,
/// the word index) ask for the stretch they need; a store kept in pieces then moves only
/// that stretch together, never the whole text.
class TextSource
{
public:
    /// Work over a whole text longer than this (colouring it all, reading its words or its
    /// definitions) waits until the user asks for its result, instead of starting when the
    /// text opens: on a large file it would keep both cores busy for seconds.
    static constexpr qsizetype eagerWorkLimit = 4 * 1024 * 1024;

    virtual ~TextSource() = default;

    virtual qsizetype size() const = 0;

    /// The characters from `from` up to `to`, in one piece. Valid until the next call of
    /// view() or the next change of the text.
    virtual QStringView view(qsizetype from, qsizetype to) = 0;

    /// The characters from `from` on, towards `to`, as far as they lie together where the
    /// text is kept: never a copy, and never empty when from < to. A reader walking a long
    /// stretch reads it piece after piece this way. Valid as a view is.
    virtual QStringView piece(qsizetype from, qsizetype to) { return view(from, to); }

    QChar at(qsizetype position) { return view(position, position + 1).front(); }

    /// Where the line holding `position` starts. Reads back a stretch at a time, so a long
    /// text is not read whole for a short line.
    qsizetype lineStart(qsizetype position)
    {
        constexpr qsizetype stretch = 256;
        while (position > 0) {
            const qsizetype from = position > stretch ? position - stretch : 0;
            const qsizetype found = view(from, position).lastIndexOf(u'\n');
            if (found >= 0) {
                return from + found + 1;
            }
            position = from;
        }
        return 0;
    }

    /// Just after the first line break at or after `position`; the end of the text when
    /// there is none. Reads piece by piece: a long line is not copied to be searched.
    qsizetype lineEnd(qsizetype position)
    {
        const qsizetype end = size();
        while (position < end) {
            const QStringView rest = piece(position, end);
            const qsizetype found = rest.indexOf(u'\n');
            if (found >= 0) {
                return position + found + 1;
            }
            position += rest.size();
        }
        return end;
    }
};
