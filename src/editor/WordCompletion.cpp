#include "editor/WordCompletion.h"

#include "platform/TextSource.h"
#include "syntax/CompletionWordScanner.h"

#include <algorithm>

namespace {

// How much of the line before the insertion point one look reads.
constexpr qsizetype kStretch = 128;

} // namespace

Range WordCompletion::partialWordRange(TextSource& text, Range selection)
{
    const qsizetype end = std::min(selection.location, text.size());
    qsizetype start = end;
    // A word of any length stops at the line's start, so the look ends at a line break too.
    while (start > 0) {
        const qsizetype from = std::max<qsizetype>(0, start - kStretch);
        const QStringView stretch = text.view(from, start);
        qsizetype i = stretch.size();
        while (i > 0 && CompletionWordScanner::isPlainWordCharacter(stretch[i - 1])) {
            --i;
        }
        start = from + i;
        if (i > 0) {
            break;
        }
    }
    if (start == end) {
        return Range::notFound();
    }
    return {start, end - start};
}

std::optional<TextEdit> WordCompletion::acceptEdit(TextSource& text, Range partial,
                                                   const QString& word)
{
    const QString typed = text.view(partial.location, partial.max()).toString();
    if (typed == word) {
        return std::nullopt;
    }
    const Range selection(partial.location + word.size(), 0);
    if (word.startsWith(typed)) {
        return TextEdit{Range(partial.max(), 0), word.mid(typed.size()), selection};
    }
    return TextEdit{partial, word, selection};
}

WordCompletion::WordCompletion(View view)
    : _view(std::move(view))
{}

Range WordCompletion::partialWordRange() const
{
    return partialWordRange(_view.text(), _view.selection());
}

QString WordCompletion::textIn(Range range) const
{
    return _view.text().view(range.location, range.max()).toString();
}

void WordCompletion::propose(const QString& word, Range partial)
{
    if (_view.selection() != Range(partial.max(), 0)) {
        _view.select({partial.max(), 0});
    }
    _proposed = word.mid(partial.length);
    _view.showProposal(partial.max(), _proposed);
}

void WordCompletion::withdraw()
{
    _proposed.clear();
    _view.showProposal(-1, QString());
}

void WordCompletion::accept(const QString& word, Range partial)
{
    withdraw();
    if (const std::optional<TextEdit> edit = acceptEdit(_view.text(), partial, word)) {
        _view.applyEdit(*edit);
    } else {
        _view.select({partial.location + word.size(), 0});
    }
}
