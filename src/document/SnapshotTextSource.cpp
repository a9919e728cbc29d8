#include "document/SnapshotTextSource.h"

#include "document/TextChunkIterator.h"

#include <algorithm>

namespace {

// A buffer this much larger than a copy asked for is let go: one view of a long stretch
// should not hold its memory for as long as the source lives.
constexpr qsizetype SlackToKeep = 64 * 1024;

} // namespace

SnapshotTextSource::SnapshotTextSource(TextSnapshot text)
    : _text(std::move(text))
{}

void SnapshotTextSource::setSnapshot(TextSnapshot text)
{
    _text = std::move(text);
    _leaf = nullptr;
    _leafStart = 0;
}

void SnapshotTextSource::seek(qsizetype position)
{
    if (_leaf && position >= _leafStart && position < _leafStart + _leaf->length) {
        return;
    }
    const TextTree::Hit hit = TextTree::leafAt(*_text.root(), position, true);
    _leaf = hit.leaf;
    _leafStart = hit.start;
}

QStringView SnapshotTextSource::piece(qsizetype from, qsizetype to)
{
    Q_ASSERT(0 <= from && from <= to && to <= size());
    if (from == to) {
        return {};
    }
    seek(from);
    const qsizetype end = std::min(to, _leafStart + _leaf->length);
    return QStringView(_leaf->text).sliced(from - _leafStart, end - from);
}

QStringView SnapshotTextSource::view(qsizetype from, qsizetype to)
{
    const QStringView first = piece(from, to);
    if (first.size() == to - from) {
        return first;
    }
    const qsizetype length = to - from;
    if (_buffer.capacity() > 2 * length + SlackToKeep) {
        _buffer = QString();
    }
    _buffer.resize(0);
    _buffer.reserve(length);
    for (TextChunkIterator chunks(_text, from); !chunks.atEnd() && chunks.start() < to;
         chunks.next()) {
        const QStringView chunk = chunks.chunk();
        _buffer.append(chunk.first(std::min(chunk.size(), to - chunks.start())));
    }
    _copied += length;
    return _buffer;
}
