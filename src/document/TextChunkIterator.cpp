#include "document/TextChunkIterator.h"

TextChunkIterator::TextChunkIterator(const TextSnapshot& text, qsizetype position,
                                     Direction direction)
    : _text(text)
    , _direction(direction)
{
    position = qBound(qsizetype(0), position, text.length());
    if ((direction == Forward && position == text.length()) ||
        (direction == Backward && position == 0)) {
        return;
    }
    // Forward, the chunk holding the unit at the position; backward, the one holding the
    // unit before it.
    const TextTree::Node* node = text.root().get();
    while (node->height > 0) {
        const TextTree::Branch& branch = TextTree::branch(*node);
        int i = 0;
        while (i < branch.count - 1 &&
               (direction == Forward ? position >= _leafStart + branch.lengths[i]
                                     : position > _leafStart + branch.lengths[i])) {
            _leafStart += branch.lengths[i];
            ++i;
        }
        _path.append({&branch, i});
        node = branch.children[i].get();
    }
    _leaf = &TextTree::leaf(*node);
    if (direction == Forward) {
        setPiece(position - _leafStart, _leaf->length);
    } else {
        setPiece(0, position - _leafStart);
    }
}

void TextChunkIterator::next()
{
    if (!_leaf) {
        return;
    }
    const bool forward = _direction == Forward;
    while (!_path.isEmpty() &&
           _path.back().index == (forward ? _path.back().branch->count - 1 : 0)) {
        _path.pop_back();
    }
    if (_path.isEmpty()) {
        _leaf = nullptr;
        _piece = {};
        _pieceStart = forward ? _text.length() : 0;
        return;
    }
    Frame& frame = _path.back();
    frame.index += forward ? 1 : -1;
    const qsizetype previousLength = _leaf->length;
    descend(frame.branch->children[frame.index].get(), forward);
    _leafStart += forward ? previousLength : -_leaf->length;
    setPiece(0, _leaf->length);
}

void TextChunkIterator::descend(const TextTree::Node* node, bool leftmost)
{
    while (node->height > 0) {
        const TextTree::Branch& branch = TextTree::branch(*node);
        const int i = leftmost ? 0 : branch.count - 1;
        _path.append({&branch, i});
        node = branch.children[i].get();
    }
    _leaf = &TextTree::leaf(*node);
}

void TextChunkIterator::setPiece(qsizetype from, qsizetype to)
{
    _piece = QStringView(_leaf->text).sliced(from, to - from);
    _pieceStart = _leafStart + from;
}
