#pragma once

#include <QString>
#include <QStringView>

#include <memory>
#include <utility>
#include <vector>

/// The tree behind the text store: a B-tree whose leaves hold the text in chunks of a few
/// thousand UTF-16 units and whose branches keep each child's length and line-feed count, so
/// that positions, lines and edits cost O(log n) plus the size of the edit.
///
/// Nodes never change once made. An edit copies the nodes on its path and shares every other
/// node with the version it started from, so an earlier root remains a complete version of
/// the text that no later edit touches; any thread may read it.
///
/// Shape, for every version: all leaves at the same depth; a leaf other than the root holds
/// minLeaf…maxLeaf units and a branch other than the root minChildren…maxChildren children;
/// a root branch has two children at least; no chunk ends between the two halves of a
/// surrogate pair.
class TextTree
{
public:
    /// 8 KB chunks: copying one on an edit costs well under a microsecond, and the nodes
    /// around them add about 2 % to the text's own memory.
    static constexpr qsizetype maxLeaf = 4096;
    static constexpr qsizetype minLeaf = 1024;
    static constexpr int maxChildren = 16;
    static constexpr int minChildren = 4;

    struct Node {
        qsizetype length = 0;
        qsizetype lineFeeds = 0;
        /// 0 for a leaf; a branch is one above its children.
        int height = 0;
    };
    using NodePtr = std::shared_ptr<const Node>;

    struct Leaf : Node {
        QString text;
    };

    struct Branch : Node {
        int count = 0;
        // The children's lengths and line feeds side by side, so that a descent reads one
        // node's memory per level instead of every child's.
        qsizetype lengths[maxChildren] = {};
        qsizetype feeds[maxChildren] = {};
        NodePtr children[maxChildren];
    };

    static const Leaf& leaf(const Node& node) { return static_cast<const Leaf&>(node); }
    static const Branch& branch(const Node& node) { return static_cast<const Branch&>(node); }

    /// Chunks keep their text in buffers of a few sizes only (whole multiples of
    /// capacityStep), so that the buffer an edit frees has the size the next edit of a
    /// chunk asks for: the allocator hands it out again instead of growing the heap.
    static constexpr qsizetype capacityStep = 512;
    static qsizetype chunkCapacity(qsizetype length);
    /// An empty string with a chunk's buffer for `length` units.
    static QString chunkBuffer(qsizetype length);
    /// A copy of `text` in a chunk's buffer.
    static QString chunkOf(QStringView text);

    /// The one empty leaf every empty text shares.
    static const NodePtr& empty();
    /// A leaf over `text`, which should be in a chunk's buffer.
    static NodePtr makeLeaf(QString text);
    /// A balanced tree over leaves given in order, each of a valid size but the last; built
    /// bottom-up in time linear in their number.
    static NodePtr fromLeaves(std::vector<NodePtr> leaves);
    static NodePtr fromText(QStringView text);

    /// The text of `root` with [position, position + length) replaced by `text`. The range
    /// must lie within the text.
    static NodePtr replace(const NodePtr& root, qsizetype position, qsizetype length,
                           QStringView text);

    /// Where a position falls: its leaf, the leaf's start and the line feeds before it.
    struct Hit {
        const Leaf* leaf = nullptr;
        qsizetype start = 0;
        qsizetype lineFeedsBefore = 0;
    };
    /// The leaf holding the unit at `position` (forward) or the unit before it (backward);
    /// at the ends of the text, the first or last leaf.
    static Hit leafAt(const Node& root, qsizetype position, bool forward);
    /// The leaf holding the `k`-th line feed (from 1); k must be at most root.lineFeeds.
    static Hit leafWithLineFeed(const Node& root, qsizetype k);

    static qsizetype countLineFeeds(const QChar* text, qsizetype length);
    /// The offset of the `k`-th line feed (from 1) in the text; -1 when it has fewer.
    static qsizetype findLineFeed(const QChar* text, qsizetype length, qsizetype k);
    /// A cut at or before `at` that does not fall between the halves of a surrogate pair.
    static qsizetype pairSafeCut(QStringView text, qsizetype at);

    /// Whether `root` has the shape described above and its counts are right; `why` says
    /// what is wrong otherwise.
    static bool check(const NodePtr& root, QString* why);

private:
    static NodePtr concat(const NodePtr& a, const NodePtr& b);
    static std::pair<NodePtr, NodePtr> split(const NodePtr& node, qsizetype position);
    static NodePtr replaceInLeaf(const NodePtr& root, qsizetype position, qsizetype length,
                                 QStringView text);
};
