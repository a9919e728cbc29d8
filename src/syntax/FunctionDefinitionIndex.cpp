#include "syntax/FunctionDefinitionIndex.h"

#include <algorithm>

namespace {

// Escapes whose matches never hold a line break, outside a character class.
bool isLineEscape(QChar c)
{
    static const QString safe = QStringLiteral("tfeawdSbBAzZGhiKQE0123456789");
    return safe.contains(c) || (c.unicode() < 0x80 && !c.isLetterOrNumber());
}

} // namespace

bool FunctionDefinitionIndex::matchesWithinLines(const QString& pattern)
{
    // A character that is or may stand for a line break, a negated class that does not
    // leave out "\n", an inline "s" flag: the pattern may cross lines.
    const qsizetype n = pattern.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = pattern[i];
        if (c == u'\n' || c == u'\r' || c == QChar(0x85) || c == QChar(0x2028) ||
            c == QChar(0x2029) || c == QChar(0x0B) || c == QChar(0x0C)) {
            return false;
        }
        if (c == u'\\') {
            if (i + 1 >= n || !isLineEscape(pattern[i + 1]) || pattern[i + 1] == u'Q') {
                return false;
            }
            ++i;
            continue;
        }
        if (c == u'(' && i + 1 < n && pattern[i + 1] == u'?') {
            // Inline flags up to ":" or ")": "s" lets "." match line breaks, "x" makes
            // white space (a line break) part of the syntax.
            for (qsizetype k = i + 2; k < n && pattern[k] != u':' && pattern[k] != u')'; ++k) {
                if (pattern[k] == u's' || pattern[k] == u'x') {
                    return false;
                }
                if (!pattern[k].isLetter() && pattern[k] != u'-') {
                    break;
                }
            }
            continue;
        }
        if (c != u'[') {
            continue;
        }
        // A class: positive ones of plain characters and line-safe escapes; a negated one
        // only when it leaves out "\n" itself.
        qsizetype k = i + 1;
        const bool negated = k < n && pattern[k] == u'^';
        if (negated) {
            ++k;
        }
        bool excludesLineFeed = false;
        bool first = true;
        for (; k < n && (first || pattern[k] != u']'); ++k) {
            first = false;
            const QChar d = pattern[k];
            if (d == u'[' || d == u'&') {
                return false;
            }
            if (d == u'\\') {
                if (k + 1 >= n) {
                    return false;
                }
                const QChar e = pattern[k + 1];
                if (e == u'n' || e == u's') {
                    excludesLineFeed = true;
                } else if (!isLineEscape(e) || e == u'Q' || e == u'E' || e == u'b' || e == u'B') {
                    return false;
                }
                ++k;
                continue;
            }
            // A range starting below the space may take in the line feed.
            if (d == u'-' && k > i + 1 && k + 1 < n && pattern[k + 1] != u']' &&
                pattern[k - 1].unicode() <= 0x0D) {
                return false;
            }
        }
        if (k >= n || (negated && !excludesLineFeed) ||
            (!negated && excludesLineFeed &&
             pattern.mid(i, k - i).contains(QStringLiteral("\\s")))) {
            return false;
        }
        i = k;
    }
    return true;
}

FunctionDefinitionIndex::FunctionDefinitionIndex(const QVariantMap& syntaxDictionary)
{
    const QVariant definitions = syntaxDictionary.value(QStringLiteral("FunctionDefinition"));
    if (!definitions.isValid() || definitions.typeId() != QMetaType::QVariantList) {
        return;
    }
    bool inChunks = true;
    for (const QVariant& value : definitions.toList()) {
        if (value.typeId() != QMetaType::QVariantMap) {
            return;
        }
        const QVariantMap item = value.toMap();
        const QVariant pattern = item.value(QStringLiteral("regexPattern"));
        if (pattern.typeId() != QMetaType::QString) {
            return;
        }
        Entry entry;
        // The function list ignores case whatever the definition says about its words.
        entry.regex = Regex(pattern.toString(), Regex::CaseInsensitive | Regex::AnchorsMatchLines);
        entry.allMatching = item.value(QStringLiteral("AllMatching")).toBool();
        entry.bold = item.value(QStringLiteral("BoldType")).toBool();
        entry.hasKeyType = item.contains(QStringLiteral("KeyType"));
        entry.keyType = item.value(QStringLiteral("KeyType"));
        entry.indentationLevel = item.value(QStringLiteral("IndentationLevel"));
        inChunks = inChunks && matchesWithinLines(pattern.toString());
        _entries.push_back(std::move(entry));
    }
    _valid = true;
    _inChunks = inChunks;
    _chunks.emplace_back();
}

FunctionDefinitionIndex::Chunk FunctionDefinitionIndex::readChunk(QStringView text, qsizetype start,
                                                                  qsizetype end)
{
    _scanned += end - start;
    Chunk chunk;
    chunk.length = end - start;
    for (size_t e = 0; e < _entries.size() && !chunk.failed; ++e) {
        const Entry& entry = _entries[e];
        if (!entry.regex.isValid()) {
            continue;
        }
        const auto visit = [&](const Regex::Match& match) {
            // A match at the very end belongs to the next chunk, which finds it at its start.
            if (match.range().location >= end && end < text.size()) {
                return true;
            }
            if (!entry.allMatching && match.groups.size() < 2) {
                chunk.failed = true;
                return false;
            }
            const Range range = entry.allMatching ? match.groups[0] : match.groups[1];
            const qsizetype location =
                range.location == NSNotFound ? NSNotFound : range.location - start;
            chunk.found.push_back({location, range.length, int(e)});
            return true;
        };
        const Regex::Status status =
            _inChunks ? entry.regex.forEachMatchInLines(text, {start, end - start}, visit)
                      : entry.regex.forEachMatch(text, visit);
        if (status != Regex::Status::Ok) {
            chunk.failed = true;
        }
    }
    return chunk;
}

std::vector<FunctionDefinitionIndex::Chunk>
FunctionDefinitionIndex::readChunks(QStringView text, qsizetype start, qsizetype end)
{
    std::vector<Chunk> chunks;
    if (!_inChunks) {
        chunks.push_back(readChunk(text, 0, text.size()));
        return chunks;
    }
    while (start < end || chunks.empty()) {
        qsizetype cut = std::min(end, start + _chunkSize);
        if (cut < end) {
            const qsizetype lineEnd = text.indexOf(u'\n', cut);
            cut = lineEnd < 0 || lineEnd >= end ? end : lineEnd + 1;
        }
        chunks.push_back(readChunk(text, start, cut));
        start = cut;
    }
    return chunks;
}

void FunctionDefinitionIndex::build(QStringView text)
{
    if (!_valid) {
        return;
    }
    _chunks = readChunks(text, 0, text.size());
}

size_t FunctionDefinitionIndex::chunkAt(qsizetype position) const
{
    qsizetype start = 0;
    for (size_t i = 0; i + 1 < _chunks.size(); ++i) {
        if (position < start + _chunks[i].length) {
            return i;
        }
        start += _chunks[i].length;
    }
    return _chunks.size() - 1;
}

void FunctionDefinitionIndex::textDidChange(qsizetype location, qsizetype removed, qsizetype added)
{
    if (!_valid) {
        return;
    }
    const size_t first = chunkAt(location);
    const size_t last = removed > 0 ? chunkAt(location + removed - 1) : first;
    Chunk merged;
    merged.dirty = true;
    for (size_t i = first; i <= last; ++i) {
        merged.length += _chunks[i].length;
    }
    merged.length += added - removed;
    _chunks.erase(_chunks.begin() + qsizetype(first) + 1, _chunks.begin() + qsizetype(last) + 1);
    _chunks[first] = std::move(merged);
}

qsizetype FunctionDefinitionIndex::pendingCharacters() const
{
    qsizetype pending = 0;
    for (const Chunk& chunk : _chunks) {
        pending += chunk.dirty ? chunk.length : 0;
    }
    return pending;
}

bool FunctionDefinitionIndex::isUpToDate(qsizetype length) const
{
    return !_valid ||
           (textLength() == length && std::none_of(_chunks.begin(), _chunks.end(),
                                                   [](const Chunk& chunk) { return chunk.dirty; }));
}

qsizetype FunctionDefinitionIndex::textLength() const
{
    qsizetype length = 0;
    for (const Chunk& chunk : _chunks) {
        length += chunk.length;
    }
    return length;
}

bool FunctionDefinitionIndex::update(QStringView text)
{
    if (!_valid) {
        return true;
    }
    if (textLength() != text.size()) {
        return false;
    }
    qsizetype start = 0;
    for (size_t i = 0; i < _chunks.size(); ++i) {
        if (!_chunks[i].dirty) {
            start += _chunks[i].length;
            continue;
        }
        // Whole lines: take in the following chunks until the stretch ends a line.
        while (i + 1 < _chunks.size() &&
               (_chunks[i].length == 0 || text[start + _chunks[i].length - 1] != u'\n')) {
            _chunks[i].length += _chunks[i + 1].length;
            _chunks.erase(_chunks.begin() + qsizetype(i) + 1);
        }
        std::vector<Chunk> read = readChunks(text, start, start + _chunks[i].length);
        for (const Chunk& chunk : read) {
            start += chunk.length;
        }
        const size_t made = read.size();
        _chunks[i] = std::move(read.front());
        _chunks.insert(_chunks.begin() + qsizetype(i) + 1,
                       std::make_move_iterator(read.begin() + 1),
                       std::make_move_iterator(read.end()));
        i += made - 1;
    }
    return true;
}

std::optional<std::vector<FunctionDefinitionIndex::Placed>> FunctionDefinitionIndex::placed() const
{
    if (!_valid) {
        return std::nullopt;
    }
    // As the whole text's search lists them: each entry's matches in text order, the
    // entries one after another, then sorted by start, keeping that order among equals.
    std::vector<std::vector<Placed>> byEntry(_entries.size());
    qsizetype start = 0;
    for (const Chunk& chunk : _chunks) {
        if (chunk.failed || chunk.dirty) {
            return std::nullopt;
        }
        for (const Found& found : chunk.found) {
            const qsizetype location =
                found.location == NSNotFound ? NSNotFound : found.location + start;
            byEntry[size_t(found.entry)].push_back({location, found.length, found.entry});
        }
        start += chunk.length;
    }
    std::vector<Placed> all;
    for (const std::vector<Placed>& entry : byEntry) {
        all.insert(all.end(), entry.begin(), entry.end());
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Placed& a, const Placed& b) { return a.location < b.location; });
    return all;
}

std::optional<std::vector<FunctionMenu::Definition>> FunctionDefinitionIndex::definitions() const
{
    const std::optional<std::vector<Placed>> all = placed();
    if (!all) {
        return std::nullopt;
    }
    std::vector<FunctionMenu::Definition> definitions;
    definitions.reserve(all->size());
    for (const Placed& found : *all) {
        const Entry& entry = _entries[size_t(found.entry)];
        FunctionMenu::Definition definition;
        definition.range = {found.location, found.length};
        definition.bold = entry.bold;
        if (entry.hasKeyType) {
            definition.hasKind = true;
            definition.kind = FunctionMenu::kindForName(entry.keyType.toString());
            definition.indentationLevel = FunctionMenu::indentationLevelOf(entry.indentationLevel);
        }
        definitions.push_back(definition);
    }
    return definitions;
}

std::optional<QVariantList> FunctionDefinitionIndex::definitionItems() const
{
    const std::optional<std::vector<Placed>> all = placed();
    if (!all) {
        return std::nullopt;
    }
    QVariantList items;
    items.reserve(qsizetype(all->size()));
    for (const Placed& found : *all) {
        const Entry& entry = _entries[size_t(found.entry)];
        const Range range(found.location, found.length);
        QVariantMap item{
            {QStringLiteral("RangeLocation"), qint64(range.location)},
            {QStringLiteral("RangeString"), NSStringFromRange(range)},
            {QStringLiteral("BoldType"), entry.bold},
        };
        if (entry.hasKeyType) {
            item.insert(QStringLiteral("KeyType"), entry.keyType);
            item.insert(QStringLiteral("IndentationLevel"), entry.indentationLevel);
        }
        items.append(item);
    }
    return items;
}
