#pragma once

#include <QStringView>

/// A text that need not lie in one piece. Engines that read around an edit (colouring,
/// the word index) ask for the stretch they need; a store kept in pieces then moves only
/// that stretch together, never the whole text.
class TextSource
{
public:
    virtual ~TextSource() = default;

    virtual qsizetype size() const = 0;

    /// The characters from `from` up to `to`, in one piece. Valid until the next call of
    /// view() or the next change of the text.
    virtual QStringView view(qsizetype from, qsizetype to) = 0;

    QChar at(qsizetype position) { return view(position, position + 1).front(); }
};
