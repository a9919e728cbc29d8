#include "window/CharacterCounter.h"

#include <QTextBlock>
#include <QTextDocument>

#include <utility>

namespace {

qint64 surrogatePairsIn(QStringView text)
{
    qint64 pairs = 0;
    for (QChar c : text) {
        pairs += c.isHighSurrogate() ? 1 : 0;
    }
    return pairs;
}

// Each block remembers how many pairs it held when last counted; a block that goes
// away takes its share with it. The blocks share the total with the counter, since the
// document destroys its blocks only after the counter, its child, is gone.
class BlockPairs : public QTextBlockUserData
{
public:
    BlockPairs(std::shared_ptr<qint64> total, qint64 pairs)
        : _total(std::move(total))
        , _pairs(pairs)
    {
        *_total += pairs;
    }
    ~BlockPairs() override { *_total -= _pairs; }
    void set(qint64 pairs)
    {
        *_total += pairs - _pairs;
        _pairs = pairs;
    }

private:
    std::shared_ptr<qint64> _total;
    qint64 _pairs;
};

} // namespace

CharacterCounter::CharacterCounter(QTextDocument* document)
    : QObject(document)
    , _document(document)
{
    connect(document, &QTextDocument::contentsChange, this, &CharacterCounter::recount);
    recount(0, 0, document->characterCount());
}

void CharacterCounter::recount(int position, int removed, int added)
{
    Q_UNUSED(removed);
    QTextBlock block = _document->findBlock(position);
    const QTextBlock last = _document->findBlock(position + added);
    while (block.isValid()) {
        const qint64 pairs = surrogatePairsIn(block.text());
        if (auto* data = static_cast<BlockPairs*>(block.userData())) {
            data->set(pairs);
        } else if (pairs > 0) {
            block.setUserData(new BlockPairs(_surrogatePairs, pairs));
        }
        if (block == last) {
            break;
        }
        block = block.next();
    }
}

qint64 CharacterCounter::count() const
{
    // characterCount() includes one separator per block, the last block's included.
    return qint64(_document->characterCount()) - _document->blockCount() - *_surrogatePairs;
}

qint64 CharacterCounter::countCharacters(QStringView text, bool allowWhitespace)
{
    qint64 count = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            ++i;
            ++count;
            continue;
        }
        if (allowWhitespace ? c != u'\n' : !c.isSpace()) {
            ++count;
        }
    }
    return count;
}
