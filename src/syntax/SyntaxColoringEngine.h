#pragma once

#include "platform/Range.h"
#include "platform/Regex.h"
#include "platform/TextSource.h"
#include "syntax/SyntaxBlockTurns.h"
#include "syntax/SyntaxColoring.h"

#include <QString>
#include <QVariantMap>

#include <array>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

/// Colours a text with one syntax definition, without any widget. One engine belongs to
/// one text (a text view): it compiles the definition once and keeps what the whole-text
/// block passes found, so that recolouring the visible lines after an edit only rescans
/// the blocks the edit can have changed. Tell it about every edit (textDidChange) before
/// asking for colours again; a text whose length does not fit the edits it was told about
/// is rescanned in full.
///
/// A text view wires it up like this: each change of the text store (position, removed,
/// added) goes to textDidChange (reports that cover more than what changed only cost a
/// longer rescan); after each change the visible range of the text is coloured with
/// coloringRange and handed to the pane's colour store, which clears range() and paints
/// runsInRange() of the lines it lays out. Loading a definition colours the whole text
/// once. An engine is not shared between threads; the whole-text colouring may run on a
/// worker over a copy of the text as long as nothing else uses the engine meanwhile.
class SyntaxColoringEngine
{
public:
    SyntaxColoringEngine();
    explicit SyntaxColoringEngine(const QVariantMap& syntaxDictionary);
    ~SyntaxColoringEngine();
    SyntaxColoringEngine(const SyntaxColoringEngine&) = delete;
    SyntaxColoringEngine& operator=(const SyntaxColoringEngine&) = delete;

    const QVariantMap& syntaxDictionary() const { return _syntaxDictionary; }
    /// Takes up another definition and forgets everything found with the old one.
    void setSyntaxDictionary(const QVariantMap& syntaxDictionary);

    /// `removed` units at `location` were replaced by `added` units.
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);
    /// Forgets the block caches, for a text replaced as a whole.
    void invalidate();

    /// The colours of `range` of `text` (clamped to the text); an empty result for an empty
    /// range.
    SyntaxColoring coloringRange(TextSource& text, Range range);
    SyntaxColoring coloringRange(const QString& text, Range range);

private:
    struct PatternEntry {
        Regex regex;
    };
    struct PatternList {
        std::vector<PatternEntry> entries;
    };
    struct BlockEntry {
        QString startString;
        QString endString;
        std::shared_ptr<SyntaxBlockTurns> turns;
        bool valid = false;
    };
    struct BlockList {
        std::vector<BlockEntry> entries;
    };
    struct WordList {
        // Words made of word characters only: found by one walk over the word runs.
        std::vector<QString> plainWords;
        std::unordered_map<quint64, std::vector<int>> plainByHash;
        quint64 plainLengths = 0; // bit k: a plain word of k units (63: longer)
        // Everything else is walked word by word, exactly as the scanner would.
        std::vector<QString> otherWords;
        // Characters that are not word characters but match a plain word's character when
        // case is ignored; a text holding one is walked word by word.
        std::vector<quint64> foldsIntoWords;
    };

    struct Definition;

    void compile();
    void applyPendingEdit(TextSource& text);
    /// The pattern pass; false when it ended early (time limit or failure).
    bool
    syntaxRegularExpressionColoring(const PatternList& patterns, QStringView text,
                                    const std::function<void(qsizetype, qsizetype)>& paint) const;
    /// The block pass over the whole text, painting what falls into `range`.
    void syntaxBlockColoring(BlockList& blocks, TextSource& text, Range range,
                             SyntaxColoring::Category category, std::vector<quint8>& paint,
                             std::vector<SyntaxColoring::BlockLayer>& layers);
    /// Whether the plain words of `words` can be found as whole runs of word characters in
    /// `text` (case-blind matching can make that rule fail).
    bool canColorByRuns(const WordList& words, QStringView text, qsizetype start) const;
    /// The plain words of the given lists (Keywords, Commands, Values; none where the list
    /// cannot be found by runs) in one walk over the word runs.
    void colorPlainWordsByRuns(const std::array<const WordList*, 3>& lists, QStringView text,
                               qsizetype start, std::vector<quint8>& paint) const;
    /// The word pass of one word list, except its plain words when they were found by runs.
    void syntaxWordColoring(const WordList& words, QStringView text, qsizetype start, bool byRuns,
                            const std::function<void(qsizetype, qsizetype)>& paint) const;

    QVariantMap _syntaxDictionary;
    std::unique_ptr<Definition> _definition;

    // The block caches describe a text of this length; the pending edit (one edit covering
    // every edit told since the last colouring) maps that text onto the current one.
    qsizetype _cachedLength = -1;
    bool _hasPendingEdit = false;
    qsizetype _editLocation = 0;
    qsizetype _editRemoved = 0;
    qsizetype _editAdded = 0;
};
