#include "syntax/SyntaxColoring.h"

#include "syntax/SyntaxBlockTurns.h"

#include <algorithm>

namespace {

constexpr quint8 None = 0xFF;

const char* const CategoryKeys[SyntaxColoring::CategoryCount] = {
    "Blockwords", "Keywords",   "Commands",     "Values",   "Numbers",
    "Strings",    "Characters", "Preprocessor", "Comments",
};

} // namespace

QString SyntaxColoring::keyForCategory(Category category)
{
    return QString::fromLatin1(CategoryKeys[category]);
}

SyntaxColoring::SyntaxColoring(Range range, qsizetype textLength, std::vector<Run> rangeRuns,
                               std::vector<BlockLayer> blocks, quint16 interruptedCategories)
    : _range(range)
    , _textLength(textLength)
    , _rangeRuns(std::move(rangeRuns))
    , _blocks(std::move(blocks))
    , _interrupted(interruptedCategories)
{}

SyntaxColoring SyntaxColoring::removingAllColors(qsizetype textLength)
{
    return SyntaxColoring(Range(0, textLength), textLength, {}, {});
}

std::vector<SyntaxColoring::Run> SyntaxColoring::runsInRange(Range window) const
{
    const qsizetype from = qBound(qsizetype(0), window.location, _textLength);
    const qsizetype to = qBound(from, window.max(), _textLength);
    std::vector<quint8> paint(size_t(to - from), None);
    auto fill = [&](qsizetype start, qsizetype end, quint8 category) {
        start = std::max(start, from);
        end = std::min(end, to);
        if (start < end) {
            std::fill(paint.begin() + (start - from), paint.begin() + (end - from), category);
        }
    };

    for (const BlockLayer& layer : _blocks) {
        const SyntaxBlockTurns& turns = *layer.turns;
        // Ends never decrease, so the first block reaching into the window is found by
        // bisection and the walk stops at the first one starting after it.
        for (size_t i = turns.firstEndingAfter(from - layer.endLength); i < turns.size(); ++i) {
            const qsizetype start = turns.start(i);
            if (start >= to) {
                break;
            }
            fill(start, std::min(_textLength, turns.end(i) + layer.endLength), layer.category);
        }
    }
    // The recoloured range was cleared before anything was painted, and what was painted
    // into it is already resolved.
    fill(_range.location, _range.max(), None);
    for (const Run& run : _rangeRuns) {
        fill(run.location, run.max(), run.category);
    }

    std::vector<Run> result;
    for (qsizetype i = 0; i < qsizetype(paint.size());) {
        const quint8 category = paint[size_t(i)];
        qsizetype j = i + 1;
        while (j < qsizetype(paint.size()) && paint[size_t(j)] == category) {
            ++j;
        }
        if (category != None) {
            result.push_back({from + i, j - i, Category(category)});
        }
        i = j;
    }
    return result;
}
