#include "syntax/CompletionWordIndex.h"

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

void CompletionWordIndex::noteChangeFrom(size_t chunk)
{
    const qint64 number = _changeCount;
    ++_changeCount;
    // Only the changes whose chunk is less than every later one's are kept (no more than
    // there are chunks): the least chunk changed since any change is then a search away.
    while (!_changes.empty() && _changes.back().chunk >= chunk) {
        _changes.pop_back();
    }
    _changes.push_back({number, chunk});
}

void CompletionWordIndex::build(QStringView text)
{
    noteChangeFrom(0);
    _chunks.clear();
    _words.clear();
    _freeWords.clear();
    _numbers.clear();
    _groups.clear();
    _chunks = readChunks(text);
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
    if (number < _firstSeen.size()) {
        _firstSeen[number] = FirstSeen();
    }
    Word& word = _words[number];
    word.text = text.toString();
    word.count = 0;
    _numbers.emplace(word.text, number);
    _groups[word.text].push_back(number);
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
            std::vector<quint32>& members = group->second;
            members.erase(std::remove(members.begin(), members.end(), occurrence.word),
                          members.end());
            if (members.empty()) {
                _groups.erase(group);
            }
        }
        _numbers.erase(word.text);
        word.text = QString();
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
    noteChangeFrom(first);
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
            if (_chunks[i].length > 0 && CompletionWordScanner::isBoundary(text[end - 1], _kind)) {
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
        std::move(_chunks[i].counted.begin(), _chunks[i].counted.end(),
                  std::back_inserter(counted));
        std::vector<Chunk> read = readChunks(text.sliced(start, _chunks[i].length));
        for (const Chunk& chunk : read) {
            count(chunk.words, 1);
            start += chunk.length;
        }
        const size_t made = read.size();
        _chunks[i] = std::move(read.front());
        _chunks.insert(_chunks.begin() + qsizetype(i) + 1,
                       std::make_move_iterator(read.begin() + 1),
                       std::make_move_iterator(read.end()));
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
    std::vector<quint32> tied;
    for (auto group = _groups.lower_bound(QStringView(partialWord));
         group != _groups.end() &&
         CompletionCandidates::startsWithIgnoringCase(group->first, partialWord);
         ++group) {
        // Words equal but for case have one length.
        if (group->first.size() <= partialWord.size()) {
            continue;
        }
        const std::vector<quint32>& members = group->second;
        if (members.size() == 1) {
            found.append(_words[members.front()].text);
            continue;
        }
        // Equal but for case: in the order of their first appearance.
        tied = members;
        std::vector<std::pair<size_t, quint32>> firstSeen(tied.size());
        for (size_t k = 0; k < tied.size(); ++k) {
            firstSeen[k] = firstAppearance(tied[k]);
        }
        std::vector<size_t> order(tied.size());
        for (size_t k = 0; k < order.size(); ++k) {
            order[k] = k;
        }
        std::sort(order.begin(), order.end(),
                  [&](size_t a, size_t b) { return firstSeen[a] < firstSeen[b]; });
        for (size_t k : order) {
            found.append(_words[tied[k]].text);
        }
    }
    return found;
}

std::pair<size_t, quint32> CompletionWordIndex::firstAppearance(quint32 word) const
{
    // Remembered from an earlier request while no chunk at or before it has changed since;
    // else found by walking the chunks from the first that may hold it.
    if (_firstSeen.size() < _words.size()) {
        _firstSeen.resize(_words.size());
    }
    FirstSeen& seen = _firstSeen[word];
    size_t from = 0;
    if (seen.change >= 0) {
        // The least chunk changed by the changes made after it was found.
        const auto since = std::lower_bound(
            _changes.begin(), _changes.end(), seen.change,
            [](const Change& change, qint64 number) { return change.number < number; });
        const size_t changedFrom =
            since == _changes.end() ? std::numeric_limits<size_t>::max() : since->chunk;
        if (seen.chunk < changedFrom) {
            return {seen.chunk, seen.ordinal};
        }
        // Not in the chunks before the first change: they are as they were.
        from = changedFrom;
    }
    for (size_t c = from; c < _chunks.size(); ++c) {
        const std::vector<Occurrence>& words = _chunks[c].words;
        const auto at = std::lower_bound(
            words.begin(), words.end(), word,
            [](const Occurrence& occurrence, quint32 number) { return occurrence.word < number; });
        if (at != words.end() && at->word == word) {
            seen = {c, at->first, _changeCount};
            return {c, at->first};
        }
    }
    return {std::numeric_limits<size_t>::max(), 0};
}
