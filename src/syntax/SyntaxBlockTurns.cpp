#include "syntax/SyntaxBlockTurns.h"

#include "platform/Scanner.h"

#include <algorithm>
#include <limits>

namespace {

constexpr qsizetype Unbounded = std::numeric_limits<qsizetype>::max();

qsizetype skipSpaces(QStringView text, qsizetype i)
{
    const qsizetype n = text.size();
    while (i < n && Scanner::isWhitespaceOrNewline(text[i])) {
        ++i;
    }
    return i;
}

// Whether `string` matches the same text with case ignored as with case kept: made of ASCII
// characters that are not letters, which no character folds to but themselves.
bool isCaseless(const QString& string)
{
    return std::all_of(string.begin(), string.end(),
                       [](QChar c) { return c.unicode() < 0x80 && !c.isLetter(); });
}

// Where `string` (not empty) first occurs in `text`, or -1. Qt's search with case ignored
// folds every character it passes; most block strings are punctuation (comment marks,
// quotes), found far faster by the vectorised search for their first character.
qsizetype find(QStringView text, const QString& string, bool caseless)
{
    if (!caseless) {
        return text.indexOf(string, 0, Qt::CaseInsensitive);
    }
    const QStringView rest = QStringView(string).sliced(1);
    for (qsizetype at = 0;; ++at) {
        at = text.indexOf(string.front(), at);
        if (at < 0 || text.size() - at < string.size()) {
            return -1;
        }
        if (text.sliced(at + 1, rest.size()) == rest) {
            return at;
        }
    }
}

// The text from where the loop resumes to its end, read a piece at a time as the source
// holds it: a text kept in chunks is never copied whole for a scan that may stop soon after
// it starts. Positions are those of the whole text; the loop only ever reads forward.
class Tail
{
public:
    /// The text up to `end`.
    Tail(TextSource& source, qsizetype end)
        : _source(source)
        , _size(end)
    {}
    explicit Tail(TextSource& source)
        : Tail(source, source.size())
    {}

    qsizetype size() const { return _size; }

    qsizetype skipSpaces(qsizetype location) const
    {
        while (location < _size) {
            const QStringView piece = _source.piece(location, _size);
            const qsizetype skipped = ::skipSpaces(piece, 0);
            location += skipped;
            if (skipped < piece.size()) {
                break;
            }
        }
        return location;
    }

    /// Where `string` (not empty) first occurs from `from` on, case ignored; size() when
    /// it does not.
    qsizetype indexOf(const QString& string, qsizetype from) const
    {
        const bool caseless = isCaseless(string);
        const qsizetype overlap = string.size() - 1;
        for (qsizetype start = from; start < _size;) {
            const QStringView piece = _source.piece(start, _size);
            const qsizetype end = start + piece.size();
            const qsizetype found = find(piece, string, caseless);
            if (found >= 0) {
                return start + found;
            }
            if (end < _size && overlap > 0) {
                // An occurrence across the end of the piece: a few units either side of it,
                // copied together.
                const qsizetype near = std::max(start, end - overlap);
                const qsizetype across =
                    find(_source.view(near, std::min(_size, end + overlap)), string, caseless);
                if (across >= 0 && near + across < end) {
                    return near + across;
                }
            }
            start = end;
        }
        return _size;
    }

private:
    TextSource& _source;
    qsizetype _size;
};

} // namespace

SyntaxBlockTurns::SyntaxBlockTurns(TextSource& text, const QString& startString,
                                   const QString& endString)
    : _startString(startString)
    , _endString(endString)
    , _length(text.size())
{
    _stalled = runTurns(
        text, 0,
        [this](qsizetype start, qsizetype end) {
            _starts.push_back(start);
            _ends.push_back(end);
        },
        [](qsizetype) { return false; });
    _split = _starts.size();
}

template <typename Sink, typename Converged>
bool SyntaxBlockTurns::runTurns(TextSource& source, qsizetype location, Sink sink,
                                Converged converged) const
{
    const Tail text(source);
    const qsizetype n = text.size();
    while (text.skipSpaces(location) < n) {
        // One turn: where the start string was reached, and the end string after it.
        const qsizetype from = text.skipSpaces(location);
        const qsizetype start = _startString.isEmpty() ? n : text.indexOf(_startString, from);
        const qsizetype endFrom = text.skipSpaces(start);
        qsizetype end = n;
        if (endFrom < n && !_endString.isEmpty()) {
            end = text.indexOf(_endString, endFrom);
        }
        sink(start, end);
        if (end == location) {
            // No progress: every further turn would be this one again.
            return true;
        }
        location = end;
        if (converged(location)) {
            return false;
        }
    }
    return false;
}

size_t SyntaxBlockTurns::firstEndingAfter(qsizetype position) const
{
    size_t lo = 0;
    size_t hi = size();
    while (lo < hi) {
        const size_t mid = (lo + hi) / 2;
        if (end(mid) <= position) {
            lo = mid + 1;
        } else {
            hi = mid;
        }
    }
    return lo;
}

void SyntaxBlockTurns::moveSplit(size_t index)
{
    // Both ways a position and its distance from the end trade places.
    for (; _split < index; ++_split) {
        _starts[_split] = _length - _starts[_split];
        _ends[_split] = _length - _ends[_split];
    }
    while (_split > index) {
        --_split;
        _starts[_split] = _length - _starts[_split];
        _ends[_split] = _length - _ends[_split];
    }
}

void SyntaxBlockTurns::textDidChange(std::shared_ptr<SyntaxBlockTurns>& turns, TextSource& text,
                                     qsizetype location, qsizetype removed, qsizetype added)
{
    if (!turns) {
        return;
    }
    if (turns.use_count() > 1) {
        turns = std::make_shared<SyntaxBlockTurns>(*turns);
    }
    turns->update(text, location, removed, added);
}

void SyntaxBlockTurns::update(TextSource& text, qsizetype edit, qsizetype removed, qsizetype added)
{
    const qsizetype oldLength = _length;
    const qsizetype delta = added - removed;
    const qsizetype startLength = _startString.size();
    const qsizetype endLength = _endString.size();
    const size_t count = size();

    // A turn is kept when everything it looked at lies before the edit. What a turn looks
    // at grows with the turns, so the kept turns are a prefix.
    auto lookedAtEnd = [&](size_t i) {
        const qsizetype e = end(i);
        return e >= oldLength ? Unbounded : std::max(start(i) + startLength, e + endLength);
    };
    size_t lo = 0;
    size_t hi = count;
    while (lo < hi) {
        const size_t mid = (lo + hi) / 2;
        if (lookedAtEnd(mid) <= edit) {
            lo = mid + 1;
        } else {
            hi = mid;
        }
    }
    const size_t kept = lo;
    moveSplit(kept);
    if (kept == count && _stalled) {
        _length = oldLength + delta;
        return;
    }
    // Between the kept turns and the next one's start (or the end, when the search for it
    // found none) the old text held no start string: an edit that lies wholly before that
    // start makes one only where its text meets what lies on either side. Without one, the
    // turns stay as they were and only move; rescanning from the last kept turn would read
    // all the text between the blocks at every key.
    if (kept < count && !_startString.isEmpty() &&
        (start(kept) == oldLength || edit + removed + (startLength - 1) <= start(kept))) {
        const qsizetype from = std::max(kept > 0 ? end(kept - 1) : 0, edit - (startLength - 1));
        const qsizetype to = std::min(text.size(), edit + added + (startLength - 1));
        if (from >= to || Tail(text, to).indexOf(_startString, from) == to) {
            _length = oldLength + delta;
            return;
        }
    }

    // Once a turn ends behind the edit where an old turn ended, the rest is the old rest,
    // shifted: the loop's only state is its position. The old turns from `kept` on are
    // held by their distance from the old end.
    const qsizetype resume = kept > 0 ? _ends[kept - 1] : 0;
    const qsizetype editEnd = edit + added;
    size_t rejoin = count;
    std::vector<Turn> fresh;
    const bool stalled = runTurns(
        text, resume,
        [&](qsizetype start, qsizetype end) {
            fresh.push_back({start, end});
        },
        [&](qsizetype location) {
            if (location < editEnd) {
                return false;
            }
            const qsizetype target = location - delta;
            size_t a = kept;
            size_t b = count;
            while (a < b) {
                const size_t mid = (a + b) / 2;
                if (oldLength - _ends[mid] < target) {
                    a = mid + 1;
                } else {
                    b = mid;
                }
            }
            if (a < count && oldLength - _ends[a] == target) {
                rejoin = a;
                return true;
            }
            return false;
        });

    // The fresh turns take the place of the old ones they replace; typing inside a block or
    // between two finds as many as there were, and nothing else moves.
    const size_t replacedEnd = rejoin < count ? rejoin + 1 : count;
    const size_t replaced = replacedEnd - kept;
    if (fresh.size() > replaced) {
        const size_t more = fresh.size() - replaced;
        _starts.insert(_starts.begin() + qsizetype(kept), more, 0);
        _ends.insert(_ends.begin() + qsizetype(kept), more, 0);
    } else if (fresh.size() < replaced) {
        const size_t fewer = replaced - fresh.size();
        _starts.erase(_starts.begin() + qsizetype(kept), _starts.begin() + qsizetype(kept + fewer));
        _ends.erase(_ends.begin() + qsizetype(kept), _ends.begin() + qsizetype(kept + fewer));
    }
    for (size_t k = 0; k < fresh.size(); ++k) {
        _starts[kept + k] = fresh[k].start;
        _ends[kept + k] = fresh[k].end;
    }
    // The old turns after the rejoining one moved with the end of the text: their distance
    // from it holds.
    _split = kept + fresh.size();
    _length = text.size();
    if (rejoin == count) {
        _stalled = stalled;
    }
}
