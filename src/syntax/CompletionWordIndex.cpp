#include "syntax/CompletionWordIndex.h"

#include "platform/StringTextSource.h"
#include "syntax/CompletionCandidates.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

CompletionWordIndex::CompletionWordIndex(Kind kind)
    : _kind(kind)
{
    _chunks.emplace_back();
}

CompletionWordIndex::CompletionWordIndex(CompletionWordIndex&&) noexcept = default;
CompletionWordIndex& CompletionWordIndex::operator=(CompletionWordIndex&&) noexcept = default;
CompletionWordIndex::~CompletionWordIndex() = default;

namespace {

// Room between the orders of neighbouring chunks, for the chunks a change cuts one into.
constexpr quint64 kOrderStep = quint64(1) << 24;

} // namespace

bool CompletionWordIndex::orderChunks(size_t from, size_t to)
{
    const quint64 low = from == 0 ? 0 : _chunks[from - 1].order;
    const quint64 high = to < _chunks.size() ? _chunks[to].order
                                             : std::max(low, _chunks[to - 1].order) +
                                                   kOrderStep * quint64(to - from + 1);
    const quint64 step = (high - low) / quint64(to - from + 1);
    if (step > 0) {
        for (size_t i = from; i < to; ++i) {
            _chunks[i].order = low + step * quint64(i - from + 1);
        }
        return true;
    }
    // No room left: every chunk is ordered anew, and what was known by the old orders goes.
    for (size_t i = 0; i < _chunks.size(); ++i) {
        _chunks[i].order = kOrderStep * quint64(i + 1);
    }
    _firstSeen.clear();
    for (const auto& [key, group] : _groups) {
        group.ordered = false;
    }
    return false;
}

void CompletionWordIndex::noteFirstAppearances(size_t from, size_t to, quint64 first, quint64 end,
                                               const std::vector<std::vector<Occurrence>>& before)
{
    if (_firstSeen.size() < _words.size()) {
        _firstSeen.resize(_words.size());
    }
    const quint64 stretch = ++_stretches;
    // A word the stretch holds now first appears in it, unless it appears before it; a
    // word made by this reading appears nowhere else.
    for (size_t c = from; c < to; ++c) {
        const Chunk& chunk = _chunks[c];
        for (const Occurrence& occurrence : chunk.words) {
            FirstSeen& seen = _firstSeen[occurrence.word];
            if (seen.stretch == stretch) {
                continue;
            }
            seen.stretch = stretch;
            if (Group* group = _words[occurrence.word].group) {
                group->ordered = false;
            }
            if ((seen.known && seen.order >= first) || seen.fresh) {
                seen.order = chunk.order;
                seen.ordinal = occurrence.first;
                seen.known = true;
                seen.fresh = false;
            }
        }
    }
    // A word that first appeared in the stretch and is gone from it appears further on.
    for (const std::vector<Occurrence>& occurrences : before) {
        for (const Occurrence& occurrence : occurrences) {
            FirstSeen& seen = _firstSeen[occurrence.word];
            if (Group* group = _words[occurrence.word].group) {
                group->ordered = false;
            }
            if (seen.stretch != stretch && seen.known && seen.order >= first && seen.order < end) {
                seen.known = false;
            }
        }
    }
}

void CompletionWordIndex::build(QStringView text)
{
    _chunks.clear();
    _words.clear();
    _freeWords.clear();
    _numbers.clear();
    _groups.clear();
    _firstSeen.clear();
    _chunks = readChunks(text);
    orderChunks(0, _chunks.size());
    noteFirstAppearances(0, _chunks.size(), 0, std::numeric_limits<quint64>::max(), {});
    for (const Chunk& chunk : _chunks) {
        count(chunk.words, 1);
    }
}

quint32 CompletionWordIndex::wordNumber(QStringView text)
{
    const auto found = _numbers.find(text);
    if (found != _numbers.end()) {
        return found->second;
    }
    quint32 number;
    if (!_freeWords.empty()) {
        number = _freeWords.back();
        _freeWords.pop_back();
    } else {
        number = quint32(_words.size());
        _words.emplace_back();
    }
    if (_firstSeen.size() <= number) {
        _firstSeen.resize(number + 1);
    }
    _firstSeen[number] = FirstSeen();
    _firstSeen[number].fresh = true;
    Word& word = _words[number];
    word.text = text.toString();
    word.count = 0;
    _numbers.emplace(word.text, number);
    Group& group = _groups[word.text];
    group.members.push_back(number);
    group.ordered = false;
    word.group = &group;
    return number;
}

std::vector<CompletionWordIndex::Occurrence> CompletionWordIndex::readWords(QStringView text)
{
    _scannedCharacters += text.size();
    std::vector<Occurrence> sequence;
    CompletionWordScanner::forEachWord(text, _kind, [&](qsizetype start, qsizetype length) {
        sequence.push_back({wordNumber(text.mid(start, length)), 1, quint32(sequence.size())});
    });
    // One entry per word, by number, with its count and first appearance.
    std::sort(sequence.begin(), sequence.end(), [](const Occurrence& a, const Occurrence& b) {
        return a.word != b.word ? a.word < b.word : a.first < b.first;
    });
    std::vector<Occurrence> words;
    for (const Occurrence& occurrence : sequence) {
        if (!words.empty() && words.back().word == occurrence.word) {
            ++words.back().count;
        } else {
            words.push_back(occurrence);
        }
    }
    return words;
}

std::vector<CompletionWordIndex::Chunk> CompletionWordIndex::readChunks(QStringView text)
{
    std::vector<Chunk> chunks;
    qsizetype start = 0;
    while (start < text.size() || chunks.empty()) {
        qsizetype end = std::min(text.size(), start + _chunkSize);
        if (end < text.size()) {
            // Cut after a line break, else after any boundary; a text with neither near
            // goes on in one chunk.
            const qsizetype lineEnd = text.indexOf(u'\n', end);
            const qsizetype far = std::min(text.size(), end + 4 * _chunkSize);
            if (lineEnd >= 0 && lineEnd < far) {
                end = lineEnd + 1;
            } else {
                while (end < text.size() && !CompletionWordScanner::isBoundary(text[end], _kind)) {
                    ++end;
                }
                end = std::min(text.size(), end + 1);
            }
        }
        Chunk chunk;
        chunk.length = end - start;
        chunk.words = readWords(text.sliced(start, end - start));
        chunks.push_back(std::move(chunk));
        start = end;
    }
    return chunks;
}

void CompletionWordIndex::count(const std::vector<Occurrence>& occurrences, int sign)
{
    for (const Occurrence& occurrence : occurrences) {
        _words[occurrence.word].count += sign * qint64(occurrence.count);
    }
}

void CompletionWordIndex::dropUnusedWords(const std::vector<Occurrence>& occurrences)
{
    for (const Occurrence& occurrence : occurrences) {
        Word& word = _words[occurrence.word];
        if (word.count != 0 || word.text.isNull()) {
            continue;
        }
        const auto group = _groups.find(word.text);
        if (group != _groups.end()) {
            std::vector<quint32>& members = group->second.members;
            members.erase(std::remove(members.begin(), members.end(), occurrence.word),
                          members.end());
            group->second.ordered = false;
            if (members.empty()) {
                _groups.erase(group);
            }
        }
        _numbers.erase(word.text);
        word.text = QString();
        word.group = nullptr;
        _freeWords.push_back(occurrence.word);
    }
}

size_t CompletionWordIndex::chunkAt(qsizetype position, qsizetype* start) const
{
    qsizetype chunkStart = 0;
    for (size_t i = 0; i + 1 < _chunks.size(); ++i) {
        if (position < chunkStart + _chunks[i].length) {
            *start = chunkStart;
            return i;
        }
        chunkStart += _chunks[i].length;
    }
    *start = chunkStart;
    return _chunks.size() - 1;
}

void CompletionWordIndex::textDidChange(qsizetype location, qsizetype removed, qsizetype added)
{
    qsizetype firstStart = 0;
    const size_t first = chunkAt(location, &firstStart);
    qsizetype lastStart = firstStart;
    const size_t last = removed > 0 ? chunkAt(location + removed - 1, &lastStart) : first;
    // The touched chunks become one, read again by the next update(); what they counted is
    // kept to be taken off then.
    Chunk merged;
    merged.dirty = true;
    for (size_t i = first; i <= last; ++i) {
        Chunk& chunk = _chunks[i];
        merged.length += chunk.length;
        if (chunk.dirty) {
            std::move(chunk.counted.begin(), chunk.counted.end(),
                      std::back_inserter(merged.counted));
        } else if (!chunk.words.empty()) {
            merged.counted.push_back(std::move(chunk.words));
        }
    }
    merged.length += added - removed;
    merged.order = _chunks[first].order;
    _chunks.erase(_chunks.begin() + qsizetype(first) + 1, _chunks.begin() + qsizetype(last) + 1);
    _chunks[first] = std::move(merged);
}

qsizetype CompletionWordIndex::pendingCharacters() const
{
    qsizetype pending = 0;
    for (const Chunk& chunk : _chunks) {
        if (chunk.dirty) {
            pending += chunk.length;
        }
    }
    return pending;
}

qsizetype CompletionWordIndex::textLength() const
{
    qsizetype length = 0;
    for (const Chunk& chunk : _chunks) {
        length += chunk.length;
    }
    return length;
}

bool CompletionWordIndex::update(QStringView text)
{
    StringTextSource source(text);
    return update(source);
}

bool CompletionWordIndex::update(TextSource& text)
{
    if (textLength() != text.size()) {
        return false;
    }
    // What the changed stretches counted before is taken off only once every stretch has
    // been read: a word dropped earlier would hand its number to a new word still counted
    // in another stretch's list.
    std::vector<std::vector<Occurrence>> counted;
    qsizetype start = 0;
    for (size_t i = 0; i < _chunks.size(); ++i) {
        if (!_chunks[i].dirty) {
            start += _chunks[i].length;
            continue;
        }
        // The stretch must end where a scan can start afresh: take in the following chunks
        // until it does.
        while (i + 1 < _chunks.size()) {
            const qsizetype end = start + _chunks[i].length;
            if (_chunks[i].length > 0 &&
                CompletionWordScanner::isBoundary(text.at(end - 1), _kind)) {
                break;
            }
            Chunk& next = _chunks[i + 1];
            _chunks[i].length += next.length;
            if (next.dirty) {
                std::move(next.counted.begin(), next.counted.end(),
                          std::back_inserter(_chunks[i].counted));
            } else if (!next.words.empty()) {
                _chunks[i].counted.push_back(std::move(next.words));
            }
            _chunks.erase(_chunks.begin() + qsizetype(i) + 1);
        }
        std::vector<std::vector<Occurrence>> before = std::move(_chunks[i].counted);
        const quint64 first = _chunks[i].order;
        const quint64 end =
            i + 1 < _chunks.size() ? _chunks[i + 1].order : std::numeric_limits<quint64>::max();
        std::vector<Chunk> read = readChunks(text.view(start, start + _chunks[i].length));
        for (const Chunk& chunk : read) {
            count(chunk.words, 1);
            start += chunk.length;
        }
        const size_t made = read.size();
        read.front().order = first;
        _chunks[i] = std::move(read.front());
        _chunks.insert(_chunks.begin() + qsizetype(i) + 1,
                       std::make_move_iterator(read.begin() + 1),
                       std::make_move_iterator(read.end()));
        if (made == 1 || orderChunks(i + 1, i + made)) {
            noteFirstAppearances(i, i + made, first, end, before);
        }
        std::move(before.begin(), before.end(), std::back_inserter(counted));
        i += made - 1;
    }
    for (const std::vector<Occurrence>& before : counted) {
        count(before, -1);
    }
    for (const std::vector<Occurrence>& before : counted) {
        dropUnusedWords(before);
    }
    return true;
}

QStringList CompletionWordIndex::wordsForPartialWord(const QString& partialWord) const
{
    QStringList found;
    if (partialWord.isEmpty()) {
        return found;
    }
    for (auto entry = _groups.lower_bound(QStringView(partialWord));
         entry != _groups.end() &&
         CompletionCandidates::startsWithIgnoringCase(entry->first, partialWord);
         ++entry) {
        // Words equal but for case have one length.
        if (entry->first.size() <= partialWord.size()) {
            continue;
        }
        const Group& group = entry->second;
        if (group.members.size() == 1) {
            found.append(_words[group.members.front()].text);
            continue;
        }
        // Equal but for case: in the order of their first appearance, which stays until a
        // chunk holding one of them is read again.
        if (!group.ordered) {
            std::vector<std::pair<std::pair<quint64, quint32>, quint32>> seen;
            seen.reserve(group.members.size());
            for (const quint32 member : group.members) {
                seen.push_back({firstAppearance(member), member});
            }
            std::stable_sort(seen.begin(), seen.end(),
                             [](const auto& a, const auto& b) { return a.first < b.first; });
            group.inOrder.clear();
            for (const auto& [where, member] : seen) {
                group.inOrder.push_back(member);
            }
            group.ordered = true;
        }
        for (const quint32 member : group.inOrder) {
            found.append(_words[member].text);
        }
    }
    return found;
}

std::pair<quint64, quint32> CompletionWordIndex::firstAppearance(quint32 word) const
{
    if (_firstSeen.size() < _words.size()) {
        _firstSeen.resize(_words.size());
    }
    FirstSeen& seen = _firstSeen[word];
    if (seen.known) {
        return {seen.order, seen.ordinal};
    }
    for (const Chunk& chunk : _chunks) {
        const std::vector<Occurrence>& words = chunk.words;
        const auto at = std::lower_bound(
            words.begin(), words.end(), word,
            [](const Occurrence& occurrence, quint32 number) { return occurrence.word < number; });
        if (at != words.end() && at->word == word) {
            seen = {chunk.order, at->first, true};
            return {seen.order, seen.ordinal};
        }
    }
    return {std::numeric_limits<quint64>::max(), 0};
}
