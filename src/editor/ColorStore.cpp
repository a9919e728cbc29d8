#include "editor/ColorStore.h"

#include <algorithm>

namespace {

// Room for `more` entries without giving up geometric growth: reserving the exact size at
// every small move would copy the whole vector each time.
template <class Vector> void makeRoom(Vector& entries, size_t more)
{
    const size_t needed = entries.size() + more;
    if (needed > entries.capacity()) {
        entries.reserve(std::max(needed, entries.capacity() * 2));
    }
}

} // namespace

ColorStore::ColorStore(qsizetype textLength)
    : _length(std::max<qsizetype>(0, textLength))
{}

void ColorStore::reset(qsizetype textLength)
{
    _head.clear();
    _tail.clear();
    _length = std::max<qsizetype>(0, textLength);
}

void ColorStore::moveGapTo(qsizetype position)
{
    if ((_head.empty() || _head.back().key < position) &&
        (_tail.empty() || tailStart(_tail.back()) >= position)) {
        return; // typing, and passes in text order, find the gap where they need it
    }
    // Whole stretches move at once: the first edit after a full colouring may carry the gap
    // across millions of runs.
    const auto firstAfter =
        std::lower_bound(_head.begin(), _head.end(), position,
                         [](const Entry& entry, qsizetype p) { return entry.key < p; });
    if (firstAfter != _head.end()) {
        makeRoom(_tail, size_t(_head.end() - firstAfter));
        for (auto it = _head.end(); it != firstAfter;) {
            --it;
            _tail.push_back({_length - it->key, it->length, it->color});
        }
        _head.erase(firstAfter, _head.end());
        return;
    }
    const auto firstBefore =
        std::partition_point(_tail.begin(), _tail.end(),
                             [&](const Entry& entry) { return tailStart(entry) >= position; });
    if (firstBefore != _tail.end()) {
        makeRoom(_head, size_t(_tail.end() - firstBefore));
        for (auto it = _tail.end(); it != firstBefore;) {
            --it;
            _head.push_back({_length - it->key, it->length, it->color});
        }
        _tail.erase(firstBefore, _tail.end());
    }
}

void ColorStore::removeColor(Range range)
{
    const qsizetype from = std::clamp<qsizetype>(range.location, 0, _length);
    const qsizetype to = std::clamp<qsizetype>(range.location + range.length, from, _length);
    if (from >= to) {
        return;
    }
    moveGapTo(from);
    if (!_head.empty()) {
        Entry& last = _head.back();
        const qsizetype end = last.key + last.length;
        if (end > from) {
            last.length = from - last.key;
            if (end > to) {
                // The run covered the whole range: its tail survives behind it.
                _tail.push_back({_length - to, end - to, last.color});
                return;
            }
        }
    }
    while (!_tail.empty() && tailStart(_tail.back()) < to) {
        const Entry entry = _tail.back();
        _tail.pop_back();
        const qsizetype end = _length - entry.key + entry.length;
        if (end > to) {
            _tail.push_back({_length - to, end - to, entry.color});
            break;
        }
    }
}

void ColorStore::setColor(QRgb color, Range range)
{
    const qsizetype from = std::clamp<qsizetype>(range.location, 0, _length);
    const qsizetype to = std::clamp<qsizetype>(range.location + range.length, from, _length);
    if (from >= to) {
        return;
    }
    removeColor({from, to - from});
    _head.push_back({from, to - from, color});
}

void ColorStore::replaceColors(Range range, const std::vector<Run>& runs)
{
    const qsizetype from = std::clamp<qsizetype>(range.location, 0, _length);
    const qsizetype to = std::clamp<qsizetype>(range.location + range.length, from, _length);
    removeColor({from, to - from});
    // Now the gap stands at `from` and nothing is coloured up to `to`: runs in text order
    // go straight onto the head.
    makeRoom(_head, runs.size());
    qsizetype end = from;
    for (const Run& run : runs) {
        const qsizetype a = std::max(run.location, from);
        const qsizetype b = std::min(run.location + run.length, to);
        if (a >= b) {
            continue;
        }
        if (a < end) {
            setColor(run.color, {a, b - a});
        } else {
            moveGapTo(a);
            _head.push_back({a, b - a, run.color});
        }
        end = std::max(end, b);
    }
}

void ColorStore::contentsChange(qsizetype position, qsizetype removed, qsizetype added)
{
    position = std::clamp<qsizetype>(position, 0, _length);
    removed = std::clamp<qsizetype>(removed, 0, _length - position);
    added = std::max<qsizetype>(0, added);
    const qsizetype removedEnd = position + removed;
    const qsizetype delta = added - removed;

    moveGapTo(position);
    if (!_head.empty()) {
        Entry& last = _head.back();
        const qsizetype end = last.key + last.length;
        if (end > position) {
            last.length = (end >= removedEnd ? end + delta : position) - last.key;
        }
    }
    // Runs starting inside the removed text lose that part; what reaches past it moves to
    // just after the inserted text. Runs after the edit keep their distance from the end.
    while (!_tail.empty() && tailStart(_tail.back()) < removedEnd) {
        const Entry entry = _tail.back();
        _tail.pop_back();
        const qsizetype end = tailStart(entry) + entry.length;
        if (end > removedEnd) {
            _tail.push_back({_length - removedEnd, end - removedEnd, entry.color});
            break;
        }
    }
    _length += delta;
}

std::vector<ColorStore::Run> ColorStore::runs(qsizetype from, qsizetype to) const
{
    std::vector<Run> result;
    from = std::max<qsizetype>(0, from);
    to = std::min(to, _length);
    if (from >= to) {
        return result;
    }
    auto push = [&](qsizetype start, qsizetype length, QRgb color) {
        const qsizetype a = std::max(start, from);
        const qsizetype b = std::min(start + length, to);
        if (a < b) {
            result.push_back({a, b - a, color});
        }
    };

    auto first = std::lower_bound(_head.begin(), _head.end(), from,
                                  [](const Entry& e, qsizetype p) { return e.key < p; });
    if (first != _head.begin()) {
        --first; // it may reach into the range from the left
    }
    for (auto it = first; it != _head.end() && it->key < to; ++it) {
        push(it->key, it->length, it->color);
    }

    // The tail is in descending start order: [j, k) start inside the range, k may reach in.
    const auto startsAtOrAfter = [this](qsizetype p) {
        return [this, p](const Entry& e) { return tailStart(e) >= p; };
    };
    const auto j = std::partition_point(_tail.begin(), _tail.end(), startsAtOrAfter(to));
    const auto k = std::partition_point(j, _tail.end(), startsAtOrAfter(from));
    if (k != _tail.end()) {
        push(tailStart(*k), k->length, k->color);
    }
    for (auto it = k; it != j;) {
        --it;
        push(tailStart(*it), it->length, it->color);
    }
    return result;
}
