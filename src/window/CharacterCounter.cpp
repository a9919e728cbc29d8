#include "window/CharacterCounter.h"

#include <QFutureWatcher>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QtConcurrent/QtConcurrentRun>

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

void CharacterCounter::countRange(qsizetype start, qsizetype end, bool allowWhitespace)
{
    ++_newestRequest;
    if (allowWhitespace && *_surrogatePairs == 0) {
        // Every unit is a character but the line feeds, one between each two blocks.
        _waiting.reset();
        const int lineFeeds = _document->findBlock(int(end)).blockNumber() -
                              _document->findBlock(int(start)).blockNumber();
        Q_EMIT rangeCounted(qint64(end - start) - lineFeeds);
        return;
    }
    _waiting = RangeRequest{start, end, allowWhitespace};
    if (!_counting) {
        startWaitingCount();
    }
}

void CharacterCounter::cancelRangeCount()
{
    ++_newestRequest;
    _waiting.reset();
}

void CharacterCounter::startWaitingCount()
{
    const RangeRequest request = *_waiting;
    _waiting.reset();
    QTextCursor cursor(_document);
    cursor.setPosition(int(request.start));
    cursor.setPosition(int(request.end), QTextCursor::KeepAnchor);
    const QString text = cursor.selectedText().replace(QChar::ParagraphSeparator, u'\n');
    const quint64 number = _newestRequest;
    _counting = true;
    auto* watcher = new QFutureWatcher<qint64>(this);
    connect(watcher, &QFutureWatcher<qint64>::finished, this, [this, watcher, number] {
        watcher->deleteLater();
        _counting = false;
        if (number == _newestRequest) {
            Q_EMIT rangeCounted(watcher->result());
        } else if (_waiting) {
            startWaitingCount();
        }
    });
    watcher->setFuture(QtConcurrent::run([text, allowWhitespace = request.allowWhitespace] {
        return countCharacters(text, allowWhitespace);
    }));
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
