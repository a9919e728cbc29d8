#include "document/TextMirror.h"

#include "document/TextStore.h"

TextMirror* TextMirror::mirrorOfStore(TextStore* store)
{
    if (!store) {
        return nullptr;
    }
    if (auto* mirror = store->findChild<TextMirror*>(QString(), Qt::FindDirectChildrenOnly)) {
        return mirror;
    }
    return new TextMirror(store);
}

TextMirror::TextMirror(TextStore* store)
    : QObject(store)
    , _store(store)
    , _source(store->text())
{
    connect(store, &TextStore::contentsChange, this, &TextMirror::contentsChange);
}

void TextMirror::contentsChange(const TextChange& change)
{
    _source.setSnapshot(_store->text());
    Q_EMIT textDidChange(change.position, change.charsRemoved, change.charsAdded);
}
