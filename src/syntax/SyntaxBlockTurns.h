#pragma once

#include "platform/TextSource.h"

#include <QString>

#include <memory>
#include <vector>

/// The blocks one block entry (a start and an end string) finds over a whole text: the turns
/// of the block loop, turn i painting [start(i), min(textLength(), end(i) + end string's
/// length)). Both starts and ends never decrease.
///
/// An edit leaves the turns before it as they were and, once the loop meets an old turn's
/// end again behind the edit, those after it shifted by the edit's length. Keeping every
/// position absolute would make each keystroke rewrite all the turns after it; instead the
/// turns after the last edited place are kept by their distance from the end of the text,
/// which an edit before them does not change (a gap, as in a gap buffer). Typing at one
/// place then costs only the turns the loop reads again.
class SyntaxBlockTurns
{
public:
    /// The block loop over the whole of `text`.
    SyntaxBlockTurns(TextSource& text, const QString& startString, const QString& endString);

    size_t size() const { return _starts.size(); }
    qsizetype start(size_t i) const { return i < _split ? _starts[i] : _length - _starts[i]; }
    qsizetype end(size_t i) const { return i < _split ? _ends[i] : _length - _ends[i]; }
    /// The length of the text the turns were found in.
    qsizetype textLength() const { return _length; }
    /// The last turn could only have repeated itself, which ended its category's pass.
    bool stalled() const { return _stalled; }
    /// The first turn whose end lies after `position` (size() when none does).
    size_t firstEndingAfter(qsizetype position) const;

    /// Follows an edit of the text the turns were found in: `removed` units at `location`
    /// were replaced by `added`, and `text` is the text after it. Turns shared with a
    /// colouring handed out earlier are not touched: `turns` is then replaced by a changed
    /// copy, so what was handed out stays as it was.
    static void textDidChange(std::shared_ptr<SyntaxBlockTurns>& turns, TextSource& text,
                              qsizetype location, qsizetype removed, qsizetype added);

private:
    struct Turn {
        qsizetype start;
        qsizetype end;
    };

    /// Makes the turns before `index` absolute and those from it on relative to the end.
    void moveSplit(size_t index);
    void update(TextSource& text, qsizetype location, qsizetype removed, qsizetype added);
    /// Runs the loop from `location` over `text`, handing each turn to `sink`, until it ends
    /// or `converged` accepts where a turn ended; true when it ended on a turn that could
    /// only have repeated itself.
    template <typename Sink, typename Converged>
    bool runTurns(TextSource& text, qsizetype location, Sink sink, Converged converged) const;

    QString _startString;
    QString _endString;
    // Turns before _split hold their positions; the others hold _length minus them.
    std::vector<qsizetype> _starts;
    std::vector<qsizetype> _ends;
    size_t _split = 0;
    qsizetype _length = 0;
    bool _stalled = false;
};
