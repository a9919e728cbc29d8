#include "document/TextTree.h"

#include <algorithm>
#include <functional>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

using Node = TextTree::Node;
using NodePtr = TextTree::NodePtr;
using Leaf = TextTree::Leaf;
using Branch = TextTree::Branch;

NodePtr makeBranch(const NodePtr* children, int count)
{
    auto node = std::make_shared<Branch>();
    node->height = children[0]->height + 1;
    node->count = count;
    for (int i = 0; i < count; ++i) {
        node->children[i] = children[i];
        node->lengths[i] = children[i]->length;
        node->feeds[i] = children[i]->lineFeeds;
        node->length += children[i]->length;
        node->lineFeeds += children[i]->lineFeeds;
    }
    return node;
}

// A child with the counts its parent keeps of it, so that a copy of the parent is made
// without reading the children it shares.
struct Entry {
    NodePtr node;
    qsizetype length = 0;
    qsizetype feeds = 0;
};

Entry entryOf(NodePtr node)
{
    const qsizetype length = node->length;
    const qsizetype feeds = node->lineFeeds;
    return {std::move(node), length, feeds};
}

NodePtr branchOf(Entry* children, int count, int height)
{
    auto node = std::make_shared<Branch>();
    node->height = height;
    node->count = count;
    for (int i = 0; i < count; ++i) {
        node->lengths[i] = children[i].length;
        node->feeds[i] = children[i].feeds;
        node->length += children[i].length;
        node->lineFeeds += children[i].feeds;
        node->children[i] = std::move(children[i].node);
    }
    return node;
}

// Siblings (at most twice what a branch holds) as one branch, or as two under a new parent.
NodePtr group(const NodePtr* children, int count)
{
    if (count <= TextTree::maxChildren) {
        return makeBranch(children, count);
    }
    const int half = count / 2;
    const NodePtr pair[2] = {makeBranch(children, half), makeBranch(children + half, count - half)};
    return makeBranch(pair, 2);
}

// A run of a branch's children as the root of a tree of its own.
NodePtr rootOf(const Branch& branch, int from, int to)
{
    if (from >= to) {
        return TextTree::empty();
    }
    if (to - from == 1) {
        return branch.children[from];
    }
    return makeBranch(branch.children + from, to - from);
}

NodePtr collapse(NodePtr node)
{
    while (node->height > 0 && TextTree::branch(*node).count == 1) {
        node = TextTree::branch(*node).children[0];
    }
    return node;
}

bool isUnderfull(const Node& node)
{
    return node.height == 0 ? node.length < TextTree::minLeaf
                            : TextTree::branch(node).count < TextTree::minChildren;
}

// Two leaves' text as one leaf, or two balanced ones.
std::vector<NodePtr> leavesOf(QStringView first, QStringView second)
{
    const qsizetype length = first.size() + second.size();
    QString text = length <= TextTree::maxLeaf ? TextTree::chunkBuffer(length) : QString();
    text.reserve(length);
    text.append(first);
    text.append(second);
    if (length <= TextTree::maxLeaf) {
        return {TextTree::makeLeaf(std::move(text))};
    }
    const qsizetype cut = TextTree::pairSafeCut(text, length / 2);
    return {TextTree::makeLeaf(TextTree::chunkOf(QStringView(text).first(cut))),
            TextTree::makeLeaf(TextTree::chunkOf(QStringView(text).sliced(cut)))};
}

NodePtr joinSameHeight(const NodePtr& a, const NodePtr& b)
{
    if (!isUnderfull(*a) && !isUnderfull(*b)) {
        const NodePtr pair[2] = {a, b};
        return makeBranch(pair, 2);
    }
    if (a->height == 0) {
        const std::vector<NodePtr> leaves =
            leavesOf(TextTree::leaf(*a).text, TextTree::leaf(*b).text);
        return leaves.size() == 1 ? leaves[0] : makeBranch(leaves.data(), 2);
    }
    const Branch& left = TextTree::branch(*a);
    const Branch& right = TextTree::branch(*b);
    NodePtr children[2 * TextTree::maxChildren];
    std::copy(left.children, left.children + left.count, children);
    std::copy(right.children, right.children + right.count, children + left.count);
    return group(children, left.count + right.count);
}

// Puts a joined subtree among the children of one height: itself, or the two children it
// was split into.
void appendJoined(NodePtr* children, int& count, const NodePtr& joined, int childHeight)
{
    if (joined->height == childHeight) {
        children[count++] = joined;
        return;
    }
    const Branch& pair = TextTree::branch(*joined);
    for (int i = 0; i < pair.count; ++i) {
        children[count++] = pair.children[i];
    }
}

} // namespace

qsizetype TextTree::chunkCapacity(qsizetype length)
{
    return qMax(qsizetype(1), (length + capacityStep - 1) / capacityStep) * capacityStep;
}

QString TextTree::chunkBuffer(qsizetype length)
{
    QString buffer;
    buffer.reserve(chunkCapacity(length));
    return buffer;
}

QString TextTree::chunkOf(QStringView text)
{
    QString chunk = chunkBuffer(text.size());
    chunk.append(text);
    return chunk;
}

const NodePtr& TextTree::empty()
{
    static const NodePtr node = std::make_shared<Leaf>();
    return node;
}

NodePtr TextTree::makeLeaf(QString text)
{
    if (text.isEmpty()) {
        return empty();
    }
    auto node = std::make_shared<Leaf>();
    node->length = text.size();
    node->lineFeeds = countLineFeeds(text.constData(), text.size());
    node->text = std::move(text);
    return node;
}

NodePtr TextTree::fromLeaves(std::vector<NodePtr> nodes)
{
    if (nodes.empty()) {
        return empty();
    }
    // Only the last leaf may be short: it shares its text with the one before it.
    if (nodes.size() > 1 && nodes.back()->length < minLeaf) {
        const NodePtr last = nodes.back();
        const NodePtr beforeLast = nodes[nodes.size() - 2];
        nodes.resize(nodes.size() - 2);
        for (NodePtr& node : leavesOf(leaf(*beforeLast).text, leaf(*last).text)) {
            nodes.push_back(std::move(node));
        }
    }
    // Each level in groups of as even a size as can be: with more nodes than one branch
    // holds, every group has at least half a branch's worth.
    while (nodes.size() > 1) {
        const size_t count = nodes.size();
        const size_t groups = (count + maxChildren - 1) / maxChildren;
        std::vector<NodePtr> parents;
        parents.reserve(groups);
        size_t at = 0;
        for (size_t g = 0; g < groups; ++g) {
            const size_t size = count / groups + (g < count % groups ? 1 : 0);
            parents.push_back(makeBranch(nodes.data() + at, int(size)));
            at += size;
        }
        nodes = std::move(parents);
    }
    return nodes.front();
}

NodePtr TextTree::fromText(QStringView text)
{
    if (text.size() <= maxLeaf) {
        return makeLeaf(chunkOf(text));
    }
    const qsizetype pieces = (text.size() + maxLeaf - 1) / maxLeaf;
    std::vector<NodePtr> leaves;
    leaves.reserve(size_t(pieces));
    qsizetype start = 0;
    for (qsizetype i = 1; i <= pieces; ++i) {
        const qsizetype end =
            i == pieces ? text.size() : pairSafeCut(text, text.size() * i / pieces);
        leaves.push_back(makeLeaf(chunkOf(text.sliced(start, end - start))));
        start = end;
    }
    return fromLeaves(std::move(leaves));
}

NodePtr TextTree::concat(const NodePtr& a, const NodePtr& b)
{
    if (a->length == 0) {
        return b;
    }
    if (b->length == 0) {
        return a;
    }
    if (a->height == b->height) {
        return joinSameHeight(a, b);
    }
    // The lower tree goes into the taller one's edge child, which may then have split in two.
    NodePtr children[maxChildren + 1];
    int count = 0;
    if (a->height > b->height) {
        const Branch& left = branch(*a);
        const NodePtr joined = concat(left.children[left.count - 1], b);
        std::copy(left.children, left.children + left.count - 1, children);
        count = left.count - 1;
        appendJoined(children, count, joined, a->height - 1);
    } else {
        const Branch& right = branch(*b);
        const NodePtr joined = concat(a, right.children[0]);
        appendJoined(children, count, joined, b->height - 1);
        for (int i = 1; i < right.count; ++i) {
            children[count++] = right.children[i];
        }
    }
    return group(children, count);
}

std::pair<NodePtr, NodePtr> TextTree::split(const NodePtr& node, qsizetype position)
{
    if (position <= 0) {
        return {empty(), node};
    }
    if (position >= node->length) {
        return {node, empty()};
    }
    if (node->height == 0) {
        const QStringView text = leaf(*node).text;
        return {makeLeaf(chunkOf(text.first(position))), makeLeaf(chunkOf(text.sliced(position)))};
    }
    const Branch& b = branch(*node);
    int i = 0;
    qsizetype start = 0;
    while (position >= start + b.lengths[i]) {
        start += b.lengths[i];
        ++i;
    }
    if (position == start) {
        return {rootOf(b, 0, i), rootOf(b, i, b.count)};
    }
    auto [left, right] = split(b.children[i], position - start);
    return {collapse(concat(rootOf(b, 0, i), left)),
            collapse(concat(right, rootOf(b, i + 1, b.count)))};
}

NodePtr TextTree::replaceInLeaf(const NodePtr& root, qsizetype position, qsizetype length,
                                QStringView text)
{
    const Branch* path[64];
    int index[64];
    int depth = 0;
    const Node* node = root.get();
    qsizetype start = 0;
    while (node->height > 0) {
        const Branch& b = branch(*node);
        int i = 0;
        while (i < b.count - 1 && position >= start + b.lengths[i]) {
            start += b.lengths[i];
            ++i;
        }
        path[depth] = &b;
        index[depth++] = i;
        node = b.children[i].get();
    }
    const Leaf& old = leaf(*node);
    const qsizetype offset = position - start;
    const qsizetype newLength = old.length - length + text.size();
    // What fits in this chunk, or in two: more, or an underfull chunk, takes the general path.
    if (offset + length > old.length || newLength > 2 * maxLeaf ||
        (depth > 0 && newLength < minLeaf)) {
        return nullptr;
    }
    QString updated = chunkBuffer(qMin(newLength, maxLeaf));
    updated.append(QStringView(old.text).first(offset));
    updated.append(text);
    updated.append(QStringView(old.text).sliced(offset + length));
    // A new first or last unit could pair with the neighbouring chunk's.
    if (offset == 0 && start > 0 && updated.front().isLowSurrogate()) {
        return nullptr;
    }
    if (offset + length == old.length && start + old.length < root->length &&
        updated.back().isHighSurrogate()) {
        return nullptr;
    }

    // The new chunk, or two halves of it, replaces the old one in a copy of each branch on
    // the path; a branch that then has one child too many is split in two, as in any B-tree.
    Entry nodes[2];
    int count = 1;
    if (newLength <= maxLeaf) {
        nodes[0] = entryOf(makeLeaf(std::move(updated)));
    } else {
        const qsizetype cut = pairSafeCut(updated, newLength / 2);
        nodes[0] = entryOf(makeLeaf(chunkOf(QStringView(updated).first(cut))));
        nodes[1] = entryOf(makeLeaf(chunkOf(QStringView(updated).sliced(cut))));
        count = 2;
    }
    while (depth-- > 0) {
        const Branch& b = *path[depth];
        const int i = index[depth];
        Entry children[maxChildren + 1];
        int n = 0;
        for (int j = 0; j < b.count; ++j) {
            if (j != i) {
                children[n++] = {b.children[j], b.lengths[j], b.feeds[j]};
                continue;
            }
            for (int k = 0; k < count; ++k) {
                children[n++] = std::move(nodes[k]);
            }
        }
        if (n <= maxChildren) {
            nodes[0] = entryOf(branchOf(children, n, b.height));
            count = 1;
        } else {
            nodes[0] = entryOf(branchOf(children, n / 2, b.height));
            nodes[1] = entryOf(branchOf(children + n / 2, n - n / 2, b.height));
            count = 2;
        }
    }
    if (count == 1) {
        return nodes[0].node;
    }
    const NodePtr pair[2] = {nodes[0].node, nodes[1].node};
    return makeBranch(pair, 2);
}

NodePtr TextTree::replace(const NodePtr& root, qsizetype position, qsizetype length,
                          QStringView text)
{
    if (length == 0 && text.isEmpty()) {
        return root;
    }
    if (NodePtr edited = replaceInLeaf(root, position, length, text)) {
        return edited;
    }
    // The general path cuts the tree at both ends of the range and joins the parts around
    // the new text. A cut between the halves of a surrogate pair, or new text whose edge
    // pairs with its neighbour, would leave a pair across two chunks: the range then takes
    // in the neighbouring unit, whose copy goes into the new text.
    const qsizetype total = root->length;
    const auto unitAt = [&root](qsizetype at) {
        const Hit hit = leafAt(*root, at, true);
        return hit.leaf->text[at - hit.start];
    };
    qsizetype start = position;
    qsizetype end = position + length;
    QString middle = text.toString();
    for (;;) {
        const QChar first = !middle.isEmpty() ? middle.front()
                            : end < total     ? unitAt(end)
                                              : QChar();
        if (start > 0 && first.isLowSurrogate()) {
            const QChar before = unitAt(start - 1);
            if (before.isHighSurrogate()) {
                middle.prepend(before);
                --start;
                continue;
            }
        }
        if (!middle.isEmpty() && end < total && middle.back().isHighSurrogate()) {
            const QChar after = unitAt(end);
            if (after.isLowSurrogate()) {
                middle.append(after);
                ++end;
                continue;
            }
        }
        break;
    }
    const auto [left, rest] = split(root, start);
    const NodePtr right = split(rest, end - start).second;
    return collapse(concat(concat(left, fromText(middle)), right));
}

TextTree::Hit TextTree::leafAt(const Node& root, qsizetype position, bool forward)
{
    const Node* node = &root;
    Hit hit;
    while (node->height > 0) {
        const Branch& b = branch(*node);
        int i = 0;
        while (i < b.count - 1 && (forward ? position >= hit.start + b.lengths[i]
                                           : position > hit.start + b.lengths[i])) {
            hit.start += b.lengths[i];
            hit.lineFeedsBefore += b.feeds[i];
            ++i;
        }
        node = b.children[i].get();
    }
    hit.leaf = &leaf(*node);
    return hit;
}

TextTree::Hit TextTree::leafWithLineFeed(const Node& root, qsizetype k)
{
    const Node* node = &root;
    Hit hit;
    while (node->height > 0) {
        const Branch& b = branch(*node);
        int i = 0;
        while (i < b.count - 1 && k > b.feeds[i]) {
            k -= b.feeds[i];
            hit.start += b.lengths[i];
            hit.lineFeedsBefore += b.feeds[i];
            ++i;
        }
        node = b.children[i].get();
    }
    hit.leaf = &leaf(*node);
    return hit;
}

qsizetype TextTree::countLineFeeds(const QChar* text, qsizetype length)
{
    const char16_t* p = reinterpret_cast<const char16_t*>(text);
    const char16_t* const end = p + length;
    qsizetype count = 0;
#ifdef __SSE2__
    // Each 16-bit lane counts the line feeds it met (a match compares as −1), in runs short
    // enough that no lane overflows.
    const __m128i lineFeed = _mm_set1_epi16('\n');
    while (end - p >= 8) {
        __m128i lanes = _mm_setzero_si128();
        const char16_t* const runEnd = p + qMin<qsizetype>((end - p) & ~qsizetype(7), 8 * 4096);
        for (; p < runEnd; p += 8) {
            const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            lanes = _mm_sub_epi16(lanes, _mm_cmpeq_epi16(units, lineFeed));
        }
        // Pairs of lanes summed into 32 bits, then the four sums.
        const __m128i sums = _mm_madd_epi16(lanes, _mm_set1_epi16(1));
        alignas(16) qint32 parts[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(parts), sums);
        count += qsizetype(parts[0]) + parts[1] + parts[2] + parts[3];
    }
#endif
    for (; p < end; ++p) {
        count += *p == u'\n';
    }
    return count;
}

qsizetype TextTree::findLineFeed(const QChar* text, qsizetype length, qsizetype k)
{
    const char16_t* const begin = reinterpret_cast<const char16_t*>(text);
    const char16_t* p = begin;
    const char16_t* const end = p + length;
#ifdef __SSE2__
    // Sixteen units at a time: one bit for each line feed, counted without a call (the
    // baseline instruction set has no population count).
    const __m128i lineFeed = _mm_set1_epi16('\n');
    for (; end - p >= 16; p += 16) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 8));
        unsigned mask = unsigned(_mm_movemask_epi8(
            _mm_packs_epi16(_mm_cmpeq_epi16(low, lineFeed), _mm_cmpeq_epi16(high, lineFeed))));
        unsigned bits = mask - ((mask >> 1) & 0x5555u);
        bits = (bits & 0x3333u) + ((bits >> 2) & 0x3333u);
        bits = (bits + (bits >> 4)) & 0x0F0Fu;
        const qsizetype found = (bits + (bits >> 8)) & 0x1Fu;
        if (found >= k) {
            while (--k > 0) {
                mask &= mask - 1;
            }
            return p - begin + __builtin_ctz(mask);
        }
        k -= found;
    }
#endif
    for (; p < end; ++p) {
        if (*p == u'\n' && --k == 0) {
            return p - begin;
        }
    }
    return -1;
}

qsizetype TextTree::pairSafeCut(QStringView text, qsizetype at)
{
    if (at > 0 && at < text.size() && text[at - 1].isHighSurrogate() && text[at].isLowSurrogate()) {
        return at - 1;
    }
    return at;
}

bool TextTree::check(const NodePtr& root, QString* why)
{
    const auto fail = [why](const QString& what) {
        if (why) {
            *why = what;
        }
        return false;
    };
    QChar previous;
    std::function<bool(const Node&, bool)> visit = [&](const Node& node, bool isRoot) {
        if (node.height == 0) {
            const Leaf& l = leaf(node);
            if (l.length != l.text.size() ||
                l.lineFeeds != countLineFeeds(l.text.constData(), l.length)) {
                return fail(QStringLiteral("a chunk's counts are wrong"));
            }
            if (l.length > maxLeaf || (!isRoot && l.length < minLeaf)) {
                return fail(QStringLiteral("a chunk of %1 units").arg(l.length));
            }
            if (previous.isHighSurrogate() && !l.text.isEmpty() &&
                l.text.front().isLowSurrogate()) {
                return fail(QStringLiteral("a surrogate pair across two chunks"));
            }
            if (!l.text.isEmpty()) {
                previous = l.text.back();
            }
            return true;
        }
        const Branch& b = branch(node);
        if (b.count > maxChildren || b.count < (isRoot ? 2 : minChildren)) {
            return fail(QStringLiteral("a branch of %1 children at height %2")
                            .arg(b.count)
                            .arg(node.height));
        }
        qsizetype length = 0;
        qsizetype feeds = 0;
        for (int i = 0; i < b.count; ++i) {
            const Node& child = *b.children[i];
            if (child.height != node.height - 1) {
                return fail(QStringLiteral("leaves at different depths"));
            }
            if (b.lengths[i] != child.length || b.feeds[i] != child.lineFeeds) {
                return fail(QStringLiteral("a branch's counts of a child are wrong"));
            }
            length += child.length;
            feeds += child.lineFeeds;
            if (!visit(child, false)) {
                return false;
            }
        }
        if (length != node.length || feeds != node.lineFeeds) {
            return fail(QStringLiteral("a branch's totals are wrong"));
        }
        return true;
    };
    return visit(*root, true);
}
