#include "syntax/SyntaxColoringEngine.h"

#include "platform/Scanner.h"
#include "platform/StringTextSource.h"

#include <algorithm>
#include <functional>

namespace {

using Category = SyntaxColoring::Category;

constexpr quint8 None = 0xFF;

// A set of UTF-16 units.
using UnitSet = std::vector<quint64>;

UnitSet makeUnitSet()
{
    return UnitSet(65536 / 64, 0);
}
bool contains(const UnitSet& set, char16_t c)
{
    return (set[c >> 6] >> (c & 63)) & 1;
}
void insert(UnitSet& set, char16_t c)
{
    set[c >> 6] |= quint64(1) << (c & 63);
}

bool isSpace(char16_t c)
{
    return Scanner::isWhitespaceOrNewline(QChar(c));
}

// The case folding the scanner's comparisons use, one BMP unit at a time.
const std::vector<char16_t>& foldTable()
{
    static const std::vector<char16_t> table = [] {
        std::vector<char16_t> t(65536);
        for (char32_t c = 0; c < 65536; ++c) {
            const char32_t folded = QChar::isSurrogate(c) ? c : QChar::toCaseFolded(c);
            t[c] = folded > 0xFFFF ? char16_t(c) : char16_t(folded);
        }
        return t;
    }();
    return table;
}

quint64 hashUnits(QStringView units, bool fold)
{
    const std::vector<char16_t>& table = foldTable();
    quint64 h = 1469598103934665603ull;
    for (QChar c : units) {
        h ^= fold ? table[c.unicode()] : c.unicode();
        h *= 1099511628211ull;
    }
    return h;
}

bool hasSurrogate(QStringView text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.isSurrogate(); });
}

qsizetype skipSpaces(QStringView text, qsizetype i)
{
    const qsizetype n = text.size();
    while (i < n && isSpace(text[i].unicode())) {
        ++i;
    }
    return i;
}

// The categories whose entries take the pattern pass, and those that also take the block
// pass over the whole text.
bool hasPatternPass(int category)
{
    return category == Category::Blockwords || category >= Category::Numbers;
}
bool hasBlockPass(int category)
{
    return category == Category::Blockwords || category == Category::Comments;
}
bool isWordCategory(int category)
{
    return category >= Category::Keywords && category <= Category::Values;
}

} // namespace

struct SyntaxColoringEngine::Definition {
    // "CharacterSet" as given, and the same without white space: a character of the second
    // set glues an occurrence to a longer word.
    bool hasCharacterSet = false;
    UnitSet characterSet = makeUnitSet();
    UnitSet wordCharacters = makeUnitSet();
    bool caseInsensitive = false;
    // An error outside the category passes ends the whole pass before this category.
    int stopAt = SyntaxColoring::CategoryCount;
    std::array<PatternList, SyntaxColoring::CategoryCount> patterns;
    std::array<WordList, SyntaxColoring::CategoryCount> words;
    std::array<BlockList, SyntaxColoring::CategoryCount> blocks;
};

SyntaxColoringEngine::SyntaxColoringEngine()
    : _definition(std::make_unique<Definition>())
{}

SyntaxColoringEngine::SyntaxColoringEngine(const QVariantMap& syntaxDictionary)
    : SyntaxColoringEngine()
{
    setSyntaxDictionary(syntaxDictionary);
}

SyntaxColoringEngine::~SyntaxColoringEngine() = default;

void SyntaxColoringEngine::setSyntaxDictionary(const QVariantMap& syntaxDictionary)
{
    _syntaxDictionary = syntaxDictionary;
    compile();
    invalidate();
}

void SyntaxColoringEngine::invalidate()
{
    for (BlockList& list : _definition->blocks) {
        for (BlockEntry& entry : list.entries) {
            entry.valid = false;
            entry.turns.reset();
        }
    }
    _cachedLength = -1;
    _hasPendingEdit = false;
}

void SyntaxColoringEngine::compile()
{
    auto definition = std::make_unique<Definition>();
    const QVariantMap& dictionary = _syntaxDictionary;

    const QVariant characterSet = dictionary.value(QStringLiteral("CharacterSet"));
    if (characterSet.isValid()) {
        if (characterSet.typeId() != QMetaType::QString) {
            // Nothing can be coloured without knowing what a word is made of.
            definition->stopAt = 0;
        } else {
            definition->hasCharacterSet = true;
            for (QChar c : characterSet.toString()) {
                insert(definition->characterSet, c.unicode());
                if (!isSpace(c.unicode())) {
                    insert(definition->wordCharacters, c.unicode());
                }
            }
        }
    }
    definition->caseInsensitive = dictionary.value(QStringLiteral("CaseInsensitive")).toBool();
    const bool ci = definition->caseInsensitive;

    for (int c = 0; c < SyntaxColoring::CategoryCount && c < definition->stopAt; ++c) {
        const QVariant value = dictionary.value(SyntaxColoring::keyForCategory(Category(c)));
        if (!value.isValid()) {
            continue;
        }
        const bool isList = value.typeId() == QMetaType::QVariantList;
        if (isWordCategory(c)) {
            if (!isList) {
                definition->stopAt = c;
                break;
            }
            WordList& words = definition->words[size_t(c)];
            for (const QVariant& item : value.toList()) {
                if (item.typeId() != QMetaType::QString) {
                    continue;
                }
                const QString word = item.toString();
                if (word.isEmpty() || isSpace(word.front().unicode())) {
                    // The scanner skips white space before it compares: such a word is
                    // never found.
                    continue;
                }
                const bool plain = definition->hasCharacterSet && !(ci && hasSurrogate(word)) &&
                                   std::all_of(word.begin(), word.end(), [&](QChar ch) {
                                       return contains(definition->wordCharacters, ch.unicode());
                                   });
                if (plain) {
                    words.plainByHash[hashUnits(word, ci)].push_back(int(words.plainWords.size()));
                    words.plainLengths |= quint64(1) << std::min<qsizetype>(word.size(), 63);
                    words.plainWords.push_back(word);
                } else {
                    words.otherWords.push_back(word);
                }
            }
            if (ci && !words.plainWords.empty()) {
                const std::vector<char16_t>& table = foldTable();
                UnitSet folds = makeUnitSet();
                for (const QString& word : words.plainWords) {
                    for (QChar ch : word) {
                        insert(folds, table[ch.unicode()]);
                    }
                }
                words.foldsIntoWords = makeUnitSet();
                for (char32_t u = 0; u < 65536; ++u) {
                    if (!contains(definition->wordCharacters, char16_t(u)) &&
                        contains(folds, table[u])) {
                        insert(words.foldsIntoWords, char16_t(u));
                    }
                }
            }
            continue;
        }
        if (!isList) {
            // Both passes fail on their first step; the other categories go on.
            continue;
        }
        const QVariantList entries = value.toList();
        if (hasPatternPass(c)) {
            const unsigned options =
                Regex::AnchorsMatchLines | (ci ? unsigned(Regex::CaseInsensitive) : 0u);
            PatternList& list = definition->patterns[size_t(c)];
            for (const QVariant& item : entries) {
                if (item.typeId() != QMetaType::QVariantMap) {
                    break;
                }
                const QVariantMap entry = item.toMap();
                if (!entry.contains(QStringLiteral("regularExpression"))) {
                    continue;
                }
                const QVariant pattern = entry.value(QStringLiteral("regexPattern"));
                if (pattern.typeId() != QMetaType::QString) {
                    break;
                }
                Regex regex(pattern.toString(), options);
                if (regex.isValid()) {
                    list.entries.push_back({std::move(regex)});
                }
            }
        }
        if (hasBlockPass(c)) {
            BlockList& list = definition->blocks[size_t(c)];
            for (const QVariant& item : entries) {
                if (item.typeId() != QMetaType::QVariantMap) {
                    break;
                }
                const QVariantMap entry = item.toMap();
                if (entry.contains(QStringLiteral("regularExpression"))) {
                    continue;
                }
                const QVariant start = entry.value(QStringLiteral("startStr"));
                const QVariant end = entry.value(QStringLiteral("endStr"));
                if (!start.isValid() && !end.isValid()) {
                    continue;
                }
                if (start.typeId() != QMetaType::QString) {
                    break;
                }
                if (end.typeId() != QMetaType::QString) {
                    // The scan up to the start string still takes place, but paints nothing
                    // before the pass fails.
                    break;
                }
                list.entries.push_back({start.toString(), end.toString(), nullptr, false});
            }
        }
    }
    _definition = std::move(definition);
}

void SyntaxColoringEngine::textDidChange(qsizetype location, qsizetype removed, qsizetype added)
{
    if (_cachedLength < 0) {
        return;
    }
    location = std::max(qsizetype(0), location);
    removed = std::max(qsizetype(0), removed);
    added = std::max(qsizetype(0), added);
    if (!_hasPendingEdit) {
        _hasPendingEdit = true;
        _editLocation = location;
        _editRemoved = removed;
        _editAdded = added;
        return;
    }
    // Fold the new edit into the pending one: the union of both changed spans, in the
    // cached text's positions and in the current text's positions.
    const qsizetype start = std::min(_editLocation, location);
    const qsizetype currentEnd = std::max(_editLocation + _editAdded, location + removed);
    const qsizetype cachedEnd = currentEnd - (_editAdded - _editRemoved);
    const qsizetype newEnd = currentEnd + added - removed;
    _editLocation = start;
    _editRemoved = cachedEnd - start;
    _editAdded = newEnd - start;
}

void SyntaxColoringEngine::applyPendingEdit(TextSource& text)
{
    if (_cachedLength < 0) {
        return;
    }
    if (_hasPendingEdit && (_editLocation + _editRemoved > _cachedLength ||
                            _cachedLength - _editRemoved + _editAdded != text.size())) {
        invalidate();
        return;
    }
    if (!_hasPendingEdit) {
        if (_cachedLength != text.size()) {
            invalidate();
        }
        return;
    }
    for (BlockList& list : _definition->blocks) {
        for (BlockEntry& entry : list.entries) {
            if (entry.valid) {
                SyntaxBlockTurns::textDidChange(entry.turns, text, _editLocation, _editRemoved,
                                                _editAdded);
            }
        }
    }
    _hasPendingEdit = false;
    _cachedLength = text.size();
}

bool SyntaxColoringEngine::canColorByRuns(const WordList& words, QStringView text,
                                          qsizetype start) const
{
    if (words.plainWords.empty()) {
        return false;
    }
    // A character outside the word characters that matches one of theirs when case is
    // ignored breaks the rule that an occurrence is a whole run of word characters.
    return !_definition->caseInsensitive ||
           !std::any_of(text.begin() + start, text.end(),
                        [&](QChar c) { return contains(words.foldsIntoWords, c.unicode()); });
}

void SyntaxColoringEngine::colorPlainWordsByRuns(const std::array<const WordList*, 3>& lists,
                                                 QStringView text, qsizetype start,
                                                 std::vector<quint8>& paint) const
{
    const Definition& definition = *_definition;
    const UnitSet& wordCharacters = definition.wordCharacters;
    const bool ci = definition.caseInsensitive;
    const Qt::CaseSensitivity cs = ci ? Qt::CaseInsensitive : Qt::CaseSensitive;
    const qsizetype n = text.size();
    quint64 lengths = 0;
    for (const WordList* words : lists) {
        lengths |= words ? words->plainLengths : 0;
    }
    // A plain word stands alone exactly when it is a whole run of word characters, and
    // every run begins at or after the start position (its first character is one). The
    // three lists share one walk; where two lists hold a run, the later one's colour wins.
    qsizetype i = start;
    while (i < n) {
        if (!contains(wordCharacters, text[i].unicode())) {
            ++i;
            continue;
        }
        qsizetype j = i + 1;
        while (j < n && contains(wordCharacters, text[j].unicode())) {
            ++j;
        }
        if (!((lengths >> std::min<qsizetype>(j - i, 63)) & 1)) {
            i = j;
            continue;
        }
        const QStringView run = text.mid(i, j - i);
        const quint64 hash = hashUnits(run, ci);
        int winner = -1;
        for (int list = 0; list < int(lists.size()); ++list) {
            const WordList* words = lists[size_t(list)];
            if (!words) {
                continue;
            }
            auto it = words->plainByHash.find(hash);
            if (it == words->plainByHash.end()) {
                continue;
            }
            for (int index : it->second) {
                if (run.compare(words->plainWords[size_t(index)], cs) == 0) {
                    winner = list;
                    break;
                }
            }
        }
        if (winner >= 0) {
            const quint8 category = quint8(Category::Keywords + winner);
            for (qsizetype k = i; k < j; ++k) {
                quint8& cell = paint[size_t(k)];
                if (cell == None || cell < category) {
                    cell = category;
                }
            }
        }
        i = j;
    }
}

void SyntaxColoringEngine::syntaxWordColoring(
    const WordList& words, QStringView text, qsizetype start, bool byRuns,
    const std::function<void(qsizetype, qsizetype)>& paint) const
{
    const Definition& definition = *_definition;
    const UnitSet& wordCharacters = definition.wordCharacters;
    const bool ci = definition.caseInsensitive;
    const Qt::CaseSensitivity cs = ci ? Qt::CaseInsensitive : Qt::CaseSensitive;
    const qsizetype n = text.size();

    auto gluedToWord = [&](qsizetype i) {
        return definition.hasCharacterSet && contains(wordCharacters, text[i].unicode());
    };
    // The scanner's walk for one word: an occurrence glued to a longer word is stepped
    // over whole, a coloured one by one character.
    auto walk = [&](const QString& word) {
        const qsizetype length = word.size();
        qsizetype location = start;
        while (true) {
            const qsizetype from = skipSpaces(text, location);
            if (from >= n) {
                return;
            }
            const qsizetype found = text.indexOf(word, from, cs);
            if (found < 0) {
                return;
            }
            const bool before = found > 0 && gluedToWord(found - 1);
            const bool after = found + length < n && gluedToWord(found + length);
            if (before || after) {
                location = found + length;
            } else {
                paint(found, length);
                location = found + 1;
            }
        }
    };

    std::vector<const QString*> scanned;
    if (!byRuns) {
        for (const QString& word : words.plainWords) {
            scanned.push_back(&word);
        }
    }
    for (const QString& word : words.otherWords) {
        if (ci && hasSurrogate(word)) {
            // Ignoring case, the scanner folds a surrogate pair as one character; only its own
            // search is sure to agree with it. Text surrogates never match other characters.
            walk(word);
        } else {
            scanned.push_back(&word);
        }
    }
    if (scanned.empty()) {
        return;
    }

    // The other words: every occurrence of every word in one pass over the text, found by
    // their first (up to four) characters, then each word's walk replayed over its
    // occurrences.
    constexpr int PrefixLength = 4;
    const std::vector<char16_t>& table = foldTable();
    auto unit = [&](QChar c) { return quint64(ci ? table[c.unicode()] : c.unicode()); };
    UnitSet firstUnits = makeUnitSet();
    std::array<std::unordered_map<quint64, std::vector<int>>, PrefixLength + 1> byPrefix;
    for (size_t w = 0; w < scanned.size(); ++w) {
        const QString& word = *scanned[w];
        const int length = int(std::min<qsizetype>(word.size(), PrefixLength));
        quint64 key = 0;
        for (int k = 0; k < length; ++k) {
            key = key << 16 | unit(word[k]);
        }
        insert(firstUnits, char16_t(unit(word[0])));
        byPrefix[size_t(length)][key].push_back(int(w));
    }
    std::vector<std::vector<qsizetype>> occurrences(scanned.size());
    for (qsizetype i = start; i < n; ++i) {
        if (!contains(firstUnits, char16_t(unit(text[i])))) {
            continue;
        }
        quint64 key = 0;
        for (int length = 1; length <= PrefixLength && i + length <= n; ++length) {
            key = key << 16 | unit(text[i + length - 1]);
            const auto& map = byPrefix[size_t(length)];
            if (map.empty()) {
                continue;
            }
            auto it = map.find(key);
            if (it == map.end()) {
                continue;
            }
            for (int w : it->second) {
                const QString& word = *scanned[size_t(w)];
                if (i + word.size() <= n && (word.size() <= PrefixLength ||
                                             text.mid(i, word.size()).compare(word, cs) == 0)) {
                    occurrences[size_t(w)].push_back(i);
                }
            }
        }
    }
    for (size_t w = 0; w < scanned.size(); ++w) {
        const qsizetype length = scanned[w]->size();
        qsizetype location = start;
        for (qsizetype found : occurrences[w]) {
            if (found < location) {
                continue;
            }
            const bool before = found > 0 && gluedToWord(found - 1);
            const bool after = found + length < n && gluedToWord(found + length);
            if (before || after) {
                location = found + length;
            } else {
                paint(found, length);
                location = found + 1;
            }
        }
    }
}

bool SyntaxColoringEngine::syntaxRegularExpressionColoring(
    const PatternList& patterns, QStringView text,
    const std::function<void(qsizetype, qsizetype)>& paint) const
{
    for (const PatternEntry& entry : patterns.entries) {
        const Regex::Status status = entry.regex.forEachMatch(text, [&](const Regex::Match& m) {
            paint(m.range().location, m.range().length);
            return true;
        });
        if (status == Regex::Status::TimeLimit || status == Regex::Status::Error) {
            return false;
        }
    }
    return true;
}

void SyntaxColoringEngine::syntaxBlockColoring(BlockList& blocks, TextSource& text, Range range,
                                               SyntaxColoring::Category category,
                                               std::vector<quint8>& paint,
                                               std::vector<SyntaxColoring::BlockLayer>& layers)
{
    const qsizetype from = range.location;
    const qsizetype to = range.max();
    for (BlockEntry& entry : blocks.entries) {
        if (!entry.valid) {
            entry.turns =
                std::make_shared<SyntaxBlockTurns>(text, entry.startString, entry.endString);
            entry.valid = true;
        }
        const SyntaxBlockTurns& turns = *entry.turns;
        const qsizetype endLength = entry.endString.size();
        for (size_t i = turns.firstEndingAfter(from - endLength); i < turns.size(); ++i) {
            const qsizetype start = std::max(turns.start(i), from);
            if (start >= to) {
                break;
            }
            const qsizetype end = std::min(turns.end(i) + endLength, to);
            if (start < end) {
                std::fill(paint.begin() + (start - from), paint.begin() + (end - from), category);
            }
        }
        layers.push_back({category, endLength, entry.turns});
        if (turns.stalled()) {
            // A block whose end stands where it starts would be found again forever: its
            // one block is painted and the category's block pass ends there, later entries
            // unused, as when a pass fails.
            break;
        }
    }
}

SyntaxColoring SyntaxColoringEngine::coloringRange(const QString& text, Range range)
{
    StringTextSource source(text);
    return coloringRange(source, range);
}

SyntaxColoring SyntaxColoringEngine::coloringRange(TextSource& text, Range range)
{
    const qsizetype n = text.size();
    const qsizetype from = qBound(qsizetype(0), range.location, n);
    const qsizetype to = qBound(from, range.max(), n);
    if (from == to) {
        return {};
    }
    const Definition& definition = *_definition;
    applyPendingEdit(text);

    // A copy: the block passes below may ask the source for other stretches, which can
    // move what a view of it shows.
    const QString partText = text.view(from, to).toString();
    const QStringView part(partText);
    std::vector<quint8> paint(size_t(to - from), None);
    quint8 category = None;
    auto paintInPart = [&](qsizetype location, qsizetype length) {
        const qsizetype end = std::min(location + length, part.size());
        if (location < end) {
            std::fill(paint.begin() + location, paint.begin() + end, category);
        }
    };

    std::vector<SyntaxColoring::BlockLayer> layers;
    quint16 interrupted = 0;
    qsizetype wordStart = part.size();
    if (!definition.hasCharacterSet) {
        wordStart = 0;
    } else {
        for (qsizetype i = 0; i < part.size(); ++i) {
            if (contains(definition.characterSet, part[i].unicode())) {
                wordStart = i;
                break;
            }
        }
    }

    for (int c = 0; c < definition.stopAt; ++c) {
        category = quint8(c);
        if (isWordCategory(c)) {
            // All three word lists at once. Only block keywords are painted before them, so
            // painting each cell with the highest word category that reaches it is the same
            // as painting the lists one after the other.
            const int end = std::min(definition.stopAt, int(Category::Values) + 1);
            std::array<const WordList*, 3> byRuns{};
            for (int w = c; w < end; ++w) {
                const WordList& words = definition.words[size_t(w)];
                if (canColorByRuns(words, part, wordStart)) {
                    byRuns[size_t(w - Category::Keywords)] = &words;
                }
            }
            colorPlainWordsByRuns(byRuns, part, wordStart, paint);
            for (int w = c; w < end; ++w) {
                const quint8 wordCategory = quint8(w);
                syntaxWordColoring(definition.words[size_t(w)], part, wordStart,
                                   byRuns[size_t(w - Category::Keywords)] != nullptr,
                                   [&](qsizetype location, qsizetype length) {
                                       for (qsizetype k = location; k < location + length; ++k) {
                                           quint8& cell = paint[size_t(k)];
                                           if (cell == None || cell < wordCategory) {
                                               cell = wordCategory;
                                           }
                                       }
                                   });
            }
            c = end - 1;
            continue;
        }
        if (!syntaxRegularExpressionColoring(definition.patterns[size_t(c)], part, paintInPart)) {
            interrupted |= quint16(1u << c);
        }
        if (hasBlockPass(c)) {
            syntaxBlockColoring(_definition->blocks[size_t(c)], text, Range(from, to - from),
                                Category(c), paint, layers);
        }
    }
    _cachedLength = n;

    std::vector<SyntaxColoring::Run> runs;
    for (qsizetype i = 0; i < qsizetype(paint.size());) {
        const quint8 value = paint[size_t(i)];
        qsizetype j = i + 1;
        while (j < qsizetype(paint.size()) && paint[size_t(j)] == value) {
            ++j;
        }
        if (value != None) {
            runs.push_back({from + i, j - i, Category(value)});
        }
        i = j;
    }
    return SyntaxColoring(Range(from, to - from), n, std::move(runs), std::move(layers),
                          interrupted);
}
