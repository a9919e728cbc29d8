#include "window/CharacterCounter.h"

#include "document/Document.h"
#include "document/SurrogatePairCount.h"

#include <QFutureWatcher>
#include <QtConcurrent/QtConcurrentRun>

CharacterCounter::CharacterCounter(Document* document)
    : QObject(document)
    , _document(document)
    , _surrogatePairs(new SurrogatePairCount(*document, this))
{}

qint64 CharacterCounter::count() const
{
    // Every line but the last ends in a line feed.
    return qint64(_document->length()) + 1 - _document->lineCount() - _surrogatePairs->count();
}

void CharacterCounter::countRange(qsizetype start, qsizetype end, bool allowWhitespace)
{
    ++_newestRequest;
    if (allowWhitespace && _surrogatePairs->count() == 0) {
        // Every unit is a character but the line feeds, one between each two lines.
        _waiting.reset();
        const qsizetype lineFeeds =
            _document->lineOfPosition(end) - _document->lineOfPosition(start);
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
    const QString text = _document->textInRange({request.start, request.end - request.start});
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
