#include "editor/TextAreaCompletion.h"

#include "document/SnapshotTextSource.h"
#include "document/TextChange.h"
#include "document/TextStore.h"
#include "editor/TextArea.h"
#include "syntax/CompletionCandidates.h"

#include <QKeyEvent>

#include <memory>

namespace {

WordCompletion::View hooksOf(TextArea* area)
{
    WordCompletion::View hooks;
    auto source = std::make_shared<SnapshotTextSource>();
    hooks.text = [area, source]() -> TextSource& {
        // The store's text as it is now: a snapshot costs no copy.
        if (!source->snapshot().isSameVersion(area->textStore()->text())) {
            source->setSnapshot(area->textStore()->text());
        }
        return *source;
    };
    hooks.selection = [area] { return area->selectedRange(); };
    hooks.select = [area](Range range) { area->setSelectedRange(range); };
    hooks.showProposal = [area](qsizetype position, const QString& text) {
        area->setProposedText(position, text);
    };
    hooks.applyEdit = [area](const TextEdit& edit) { area->applyEdit(edit); };
    return hooks;
}

} // namespace

TextAreaCompletion::TextAreaCompletion(TextArea* area)
    : QObject(area)
    , _area(area)
    , _completion(hooksOf(area))
    , _index(CompletionCandidates::wordKind({}))
{
    area->installEventFilter(this);
    connect(area, &TextArea::selectionChanged, this, [this] {
        if (!_completion.isChanging()) {
            _completion.finish(true);
        }
    });
}

TextAreaCompletion::~TextAreaCompletion() = default;

void TextAreaCompletion::setSyntax(const QVariantMap& syntaxDictionary,
                                   const QStringList& completeWords)
{
    _completion.finish(true);
    _syntaxDictionary = syntaxDictionary;
    _completeWords = completeWords;
    const CompletionWordIndex::Kind kind = CompletionCandidates::wordKind(syntaxDictionary);
    if (kind != _index.kind()) {
        _index = CompletionWordIndex(kind);
        _indexed = false;
    }
}

void TextAreaCompletion::followStore()
{
    TextStore* store = _area->textStore();
    if (store == _store) {
        return;
    }
    if (_store) {
        disconnect(_store, nullptr, this, nullptr);
    }
    _store = store;
    _indexed = false;
    if (store) {
        connect(store, &TextStore::contentsChange, this, &TextAreaCompletion::storeChanged);
        connect(store, &QObject::destroyed, this, [this] {
            _store = nullptr;
            _indexed = false;
        });
    }
}

void TextAreaCompletion::storeChanged(const TextChange& change)
{
    if (_indexed) {
        _index.textDidChange(change.position, change.charsRemoved, change.charsAdded);
    }
    if (!_completion.isChanging()) {
        _completion.finish(true);
    }
}

bool TextAreaCompletion::complete()
{
    followStore();
    if (!_store) {
        return false;
    }
    const Range partial = _completion.partialWordRange();
    if (partial.isNotFound()) {
        _completion.finish(true);
        return false;
    }
    SnapshotTextSource text(_store->text());
    // The first request reads the whole text; later ones only what changed since.
    if (!_indexed || !_index.update(text)) {
        _index.build(_area->textStore()->text().string());
        _indexed = true;
    }
    const QString word = _completion.textIn(partial);
    return _completion.start(CompletionCandidates::completionsFromTextWords(
        _index.wordsForPartialWord(word), word, _syntaxDictionary, _completeWords));
}

bool TextAreaCompletion::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != _area || event->type() != QEvent::KeyPress) {
        return QObject::eventFilter(watched, event);
    }
    const auto* key = static_cast<QKeyEvent*>(event);
    const Qt::KeyboardModifiers modifiers =
        key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (key->key() == Qt::Key_Space && modifiers == Qt::ControlModifier) {
        if (!_completion.isActive()) {
            complete();
        }
        return true;
    }
    if (!_completion.isActive() || modifiers != 0) {
        return false;
    }
    switch (key->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
        _completion.finish(false);
        return true;
    case Qt::Key_Escape:
        _completion.finish(true);
        return true;
    case Qt::Key_Up:
        _completion.step(-1);
        return true;
    case Qt::Key_Down:
        _completion.step(1);
        return true;
    default:
        // The key meets the text as typed; a typed letter has the list follow the longer
        // partial word once the area has taken it.
        _completion.finish(true);
        if (!key->text().isEmpty() && key->text().front().isPrint()) {
            QMetaObject::invokeMethod(this, &TextAreaCompletion::complete, Qt::QueuedConnection);
        }
        return false;
    }
}
