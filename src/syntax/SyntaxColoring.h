#pragma once

#include "platform/Range.h"

#include <QString>

#include <memory>
#include <vector>

class SyntaxBlockTurns;

/// What one colouring call lays over a text: the range it recoloured (its colours are
/// removed first) and the colours painted afterwards, already resolved in painting order
/// so that a later category wins where two overlap.
///
/// Inside range() every painted position is reported; a position of range() that no run
/// covers has no colour. The block passes run over the whole text, so positions outside
/// range() can be painted too (block comments, block keywords); positions outside range()
/// that no run covers keep whatever colour they had.
///
/// The block part is shared with the engine's cache and costs nothing to copy, so a colour
/// store can ask only for the blocks it is about to show (runsInRange()).
class SyntaxColoring
{
public:
    /// The nine categories, in painting order.
    enum Category : quint8 {
        Blockwords,
        Keywords,
        Commands,
        Values,
        Numbers,
        Strings,
        Characters,
        Preprocessor,
        Comments,
    };
    static constexpr int CategoryCount = 9;

    /// The definition key of a category ("Keywords").
    static QString keyForCategory(Category category);

    struct Run {
        qsizetype location = 0;
        qsizetype length = 0;
        Category category = Blockwords;

        qsizetype max() const { return location + length; }
        bool operator==(const Run&) const = default;
    };

    /// The blocks one block entry found over the whole text, painted in `category`.
    struct BlockLayer {
        Category category = Comments;
        qsizetype endLength = 0;
        std::shared_ptr<const SyntaxBlockTurns> turns;
    };

    SyntaxColoring() = default;
    SyntaxColoring(Range range, qsizetype textLength, std::vector<Run> rangeRuns,
                   std::vector<BlockLayer> blocks, quint16 interruptedCategories = 0);

    /// What dropping the definition does: every colour of the text removed, none painted.
    static SyntaxColoring removingAllColors(qsizetype textLength);

    /// The recoloured range; empty when nothing was done.
    Range range() const { return _range; }
    qsizetype textLength() const { return _textLength; }
    /// The resolved runs inside range(), sorted and disjoint.
    const std::vector<Run>& rangeRuns() const { return _rangeRuns; }
    /// The block layers over the whole text, in painting order.
    const std::vector<BlockLayer>& blockLayers() const { return _blocks; }

    /// Whether the pattern pass of `category` stopped early (a match ran into the regular
    /// expression time limit, or the engine failed), leaving its later entries unused.
    bool wasInterrupted(Category category) const { return (_interrupted >> category) & 1; }
    bool wasInterrupted() const { return _interrupted != 0; }

    /// Everything this colouring paints within `window`, resolved, sorted and disjoint.
    std::vector<Run> runsInRange(Range window) const;
    /// Everything this colouring paints over the whole text.
    std::vector<Run> runs() const { return runsInRange({0, _textLength}); }

private:
    Range _range{0, 0};
    qsizetype _textLength = 0;
    std::vector<Run> _rangeRuns;
    std::vector<BlockLayer> _blocks;
    quint16 _interrupted = 0;
};
