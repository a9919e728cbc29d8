#include "document/TextBuilder.h"

void TextBuilder::append(QStringView text)
{
    _length += text.size();
    while (!text.isEmpty()) {
        if (_pending.isEmpty() && _pending.capacity() < TextTree::maxLeaf) {
            _pending = TextTree::chunkBuffer(TextTree::maxLeaf);
        }
        const qsizetype take = qMin(TextTree::maxLeaf - _pending.size(), text.size());
        _pending.append(text.first(take));
        text = text.sliced(take);
        if (_pending.size() == TextTree::maxLeaf) {
            emitPending();
        }
    }
}

void TextBuilder::append(QString&& text)
{
    const qsizetype size = text.size();
    if (!_pending.isEmpty() || size < TextTree::minLeaf || size > TextTree::maxLeaf ||
        text.back().isHighSurrogate()) {
        append(QStringView(text));
        return;
    }
    if (text.capacity() != TextTree::chunkCapacity(size)) {
        text = TextTree::chunkOf(text);
    }
    _length += size;
    _leaves.push_back(TextTree::makeLeaf(std::move(text)));
}

void TextBuilder::emitPending()
{
    // A chunk never ends with the first half of a surrogate pair: a high surrogate at the
    // end waits for what follows.
    QString next;
    if (_pending.back().isHighSurrogate()) {
        next = TextTree::chunkBuffer(TextTree::maxLeaf);
        next.append(_pending.back());
        _pending.chop(1);
    }
    _leaves.push_back(TextTree::makeLeaf(std::move(_pending)));
    _pending = std::move(next);
}

TextSnapshot TextBuilder::snapshot() const
{
    std::vector<TextTree::NodePtr> leaves = _leaves;
    if (!_pending.isEmpty()) {
        leaves.push_back(TextTree::makeLeaf(TextTree::chunkOf(_pending)));
    }
    return TextSnapshot(TextTree::fromLeaves(std::move(leaves)));
}

TextSnapshot TextBuilder::finish()
{
    if (!_pending.isEmpty()) {
        _leaves.push_back(TextTree::makeLeaf(TextTree::chunkOf(_pending)));
    }
    const TextSnapshot text(TextTree::fromLeaves(std::move(_leaves)));
    _leaves = {};
    _pending = QString();
    _length = 0;
    return text;
}
