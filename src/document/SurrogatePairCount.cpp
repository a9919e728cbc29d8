#include "document/SurrogatePairCount.h"

#include "document/Document.h"
#include "document/TextChunkIterator.h"
#include "document/TextStore.h"

#include <algorithm>

namespace {

// Each pair counts by its high surrogate: a pair split by an edit is counted where its high
// half is.
qint64 surrogatePairsIn(const TextSnapshot& text, qsizetype from, qsizetype to)
{
    qint64 pairs = 0;
    for (TextChunkIterator chunks(text, from); !chunks.atEnd() && chunks.start() < to;
         chunks.next()) {
        const QStringView chunk = chunks.chunk().first(std::min(chunks.end(), to) - chunks.start());
        for (QChar c : chunk) {
            pairs += c.isHighSurrogate() ? 1 : 0;
        }
    }
    return pairs;
}

} // namespace

SurrogatePairCount::SurrogatePairCount(const Document& document, QObject* parent)
    : QObject(parent)
    , _document(document)
    , _text(document.textStore()->text())
    , _total(surrogatePairsIn(_text, 0, _text.length()))
{
    connect(document.textStore(), &TextStore::contentsChange, this, &SurrogatePairCount::recount);
}

void SurrogatePairCount::recount(const TextChange& change)
{
    const TextSnapshot& now = _document.textStore()->text();
    _total -= surrogatePairsIn(_text, change.position, change.position + change.charsRemoved);
    _total += surrogatePairsIn(now, change.position, change.position + change.charsAdded);
    _text = now;
}
