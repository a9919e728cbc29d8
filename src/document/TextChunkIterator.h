#pragma once

#include "document/TextSnapshot.h"

#include <QStringView>
#include <QVarLengthArray>

/// The text of a snapshot piece by piece, from a position towards the end or the start,
/// without copying it: each piece is one of the store's chunks (the first one cut at the
/// position). Moving to the next piece costs O(1) on average. The iterator holds its
/// snapshot, so the pieces stay valid as long as it lives.
class TextChunkIterator
{
public:
    enum Direction { Forward, Backward };

    /// Forward: the pieces of [position, end), the first one starting at `position`.
    /// Backward: the pieces of [0, position) from the last, the first one ending at
    /// `position`. The position is pinned to the text.
    TextChunkIterator(const TextSnapshot& text, qsizetype position, Direction direction = Forward);

    bool atEnd() const { return _leaf == nullptr; }
    /// The current piece.
    QStringView chunk() const { return _piece; }
    /// Where the current piece starts and ends in the text.
    qsizetype start() const { return _pieceStart; }
    qsizetype end() const { return _pieceStart + _piece.size(); }
    /// On to the following piece in the iteration's direction.
    void next();

private:
    struct Frame {
        const TextTree::Branch* branch;
        int index;
    };
    void descend(const TextTree::Node* node, bool leftmost);
    void setPiece(qsizetype from, qsizetype to);

    TextSnapshot _text;
    Direction _direction;
    QVarLengthArray<Frame, 16> _path;
    const TextTree::Leaf* _leaf = nullptr;
    qsizetype _leafStart = 0;
    QStringView _piece;
    qsizetype _pieceStart = 0;
};
