#include "document/SurrogatePairCount.h"

#include "document/Document.h"

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

// A line's share of the total.
class LinePairs : public QTextBlockUserData
{
public:
    LinePairs(std::shared_ptr<qint64> total, qint64 pairs)
        : _total(std::move(total))
        , _pairs(pairs)
    {
        *_total += pairs;
    }
    ~LinePairs() override { *_total -= _pairs; }
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

SurrogatePairCount::SurrogatePairCount(const Document& document, QObject* parent)
    : QObject(parent)
    , _textStorage(document.textStorage())
{
    connect(_textStorage, &QTextDocument::contentsChange, this, &SurrogatePairCount::recount);
    recount(0, 0, _textStorage->characterCount());
}

void SurrogatePairCount::recount(int position, int removed, int added)
{
    Q_UNUSED(removed);
    QTextBlock block = _textStorage->findBlock(position);
    const QTextBlock last = _textStorage->findBlock(position + added);
    while (block.isValid()) {
        const qint64 pairs = surrogatePairsIn(block.text());
        if (auto* data = static_cast<LinePairs*>(block.userData())) {
            data->set(pairs);
        } else if (pairs > 0) {
            block.setUserData(new LinePairs(_total, pairs));
        }
        if (block == last) {
            break;
        }
        block = block.next();
    }
}
