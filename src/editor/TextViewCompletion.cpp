#include "editor/TextViewCompletion.h"

#include "document/TextMirror.h"
#include "document/TextStore.h"
#include "editor/CompletionDocumentWords.h"
#include "editor/CompletionManager.h"
#include "editor/LayoutManager.h"
#include "editor/TextView.h"
#include "syntax/CompletionCandidates.h"
#include "syntax/SyntaxManager.h"

#include <QFutureWatcher>
#include <QKeyEvent>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

namespace {

// Automatic completion starts this long after a typed key.
constexpr int kCompletionDelay = 700;

// The hooks through which completion reads and changes the view's text.
WordCompletion::View hooksOf(TextView* view)
{
    WordCompletion::View hooks;
    hooks.text = [view]() -> TextSource& { return *TextMirror::mirrorOfStore(view->textStore()); };
    hooks.selection = [view] { return view->selectedRange(); };
    hooks.select = [view](Range range) { view->setSelectedRange(range); };
    hooks.showProposal = [view](qsizetype position, const QString& text) {
        if (LayoutManager* layout = view->layoutManager()) {
            layout->setProposedText(position, text);
        }
    };
    hooks.applyEdit = [view](const TextEdit& edit) { view->applyEdit(edit); };
    return hooks;
}

} // namespace

TextViewCompletion::TextViewCompletion(TextView* view, CompletionManager& manager,
                                       SyntaxManager& syntaxManager)
    : _view(view)
    , _word(hooksOf(view))
    , _manager(manager)
    , _syntaxManager(syntaxManager)
{
    connect(view, &TextArea::selectionChanged, this, &TextViewCompletion::completionEndedElsewhere);
}

TextViewCompletion::~TextViewCompletion() = default;

bool TextViewCompletion::isCompleting() const
{
    return _manager.isComplating(_view);
}

void TextViewCompletion::terminateWithCancel(bool cancel)
{
    if (isCompleting()) {
        _manager.terminateCompletionWithCancel(cancel);
    }
}

void TextViewCompletion::terminate()
{
    if (isCompleting()) {
        _manager.terminateCompletion();
    }
}

bool TextViewCompletion::selectRow(bool upper)
{
    if (!isCompleting()) {
        return false;
    }
    if (upper) {
        _manager.selectUpperRow();
    } else {
        _manager.selectLowerRow();
    }
    return true;
}

void TextViewCompletion::setDocument(TextStore* document)
{
    disconnect(_textChangedElsewhere);
    _textChangedElsewhere = connect(document, &TextStore::contentsChange, this,
                                    &TextViewCompletion::completionEndedElsewhere);
    prepareCompletionWords();
}

void TextViewCompletion::syntaxDictionaryChanged()
{
    _manager.terminateCompletion();
    makeCompleteWordsFromSyntaxDictionary();
    prepareCompletionWords();
}

TextViewCompletion::KeyRoute TextViewCompletion::keyPressed(QKeyEvent* event, bool closingBracket)
{
    const int key = event->key();
    const bool completing = isCompleting();
    const QString characters = event->text();
    const Qt::KeyboardModifiers modifiers =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    // Ctrl+Space starts completion, as Escape does; while the list is open it does nothing.
    if (key == Qt::Key_Space && modifiers == Qt::ControlModifier) {
        if (!completing) {
            complete();
        }
        return KeyRoute::Done;
    }
    if (completing && (key == Qt::Key_Return || key == Qt::Key_Enter) && modifiers == 0) {
        _manager.terminateCompletionWithCancel(false);
        return KeyRoute::Done;
    }
    if (_view->hasMarkedText()) {
        terminateWithCancel(true);
        return KeyRoute::Interpret;
    }
    if (completing && characters == QLatin1String(" ")) {
        _manager.terminateCompletionWithCancel(true);
        _view->insertText(characters);
        return KeyRoute::Done;
    }
    if (completing && key == Qt::Key_Right) {
        _manager.terminateCompletionWithCancel(true);
        return KeyRoute::Done;
    }
    if (completing && key == Qt::Key_Left) {
        _manager.terminateCompletionWithCancel(true);
        return KeyRoute::Interpret;
    }
    if (closingBracket) {
        terminateWithCancel(true);
        _isComplete = false;
        return KeyRoute::Interpret;
    }
    _isComplete = true;
    if (key == Qt::Key_Down || key == Qt::Key_Up) {
        return KeyRoute::Interpret;
    }
    if (completing) {
        // The key meets the text as typed; the list's refresh shows the proposal again.
        _word.withdraw();
    }
    return KeyRoute::InterpretAndFollow;
}

void TextViewCompletion::followTyping()
{
    if (isCompleting()) {
        _manager.startCompletion(_view);
    }
}

void TextViewCompletion::textTyped(const QString& string)
{
    // A typed key extends the word being completed even when completion was started by
    // hand, so that cancelling can restore what was typed.
    if (!_isComplete || !(_autoComplete || isCompleting())) {
        return;
    }
    _isComplete = false;
    if (_view->hasMarkedText()) {
        return;
    }
    if (isCompleting()) {
        _manager.setCurrentPartialWord(_manager.currentPartialWord() + string);
    } else {
        // Each typed key schedules its own start; one that finds the list open only
        // refreshes it.
        QTimer::singleShot(kCompletionDelay, this, [this] { start(true); });
    }
}

bool TextViewCompletion::backspacePressed()
{
    if (!isCompleting()) {
        return true;
    }
    QString partial = _manager.currentPartialWord();
    if (!partial.isEmpty()) {
        partial.chop(1);
        _manager.setCurrentPartialWord(partial);
    }
    const Range selection = _view->selectedRange();
    if (selection.location != 0) {
        _view->setSelectedRange({selection.location - 1, selection.length + 1});
    }
    if (rangeForUserCompletion().isNotFound()) {
        _manager.terminateCompletionWithCancel(false);
        return false;
    }
    return true;
}

void TextViewCompletion::complete()
{
    start(false);
}

void TextViewCompletion::start(bool automatic)
{
    const Guard guard(this);
    TextStore* document = _view->textStore();
    if (!isCompleting()) {
        const Range range = rangeForUserCompletion();
        _manager.setCurrentPartialWord(range.isNotFound() ? QString() : _word.textIn(range));
    }
    if (_view->hasMarkedText() || !document) {
        return;
    }
    const TextSnapshot& text = document->text();
    _offersNearbyWords = automatic && text.length() > TextSource::eagerWorkLimit;
    if (_offersNearbyWords) {
        constexpr qsizetype reach = 256 * 1024;
        const qsizetype caret = _view->cursorPosition();
        const qsizetype from = text.lineStart(text.lineAt(std::max<qsizetype>(0, caret - reach)));
        const qsizetype to = std::min(text.length(), caret + reach);
        _nearbyWords =
            CompletionWordIndex(CompletionCandidates::wordKind(_view->syntaxDictionary()));
        _nearbyWords.build(text.text({from, to - from}));
        _manager.startCompletion(_view);
        return;
    }
    CompletionDocumentWords* words = CompletionDocumentWords::of(
        document, CompletionCandidates::wordKind(_view->syntaxDictionary()));
    if (!words->prepare()) {
        // The text's words are being read on a worker: complete once they are, unless the
        // user has typed or moved on meanwhile.
        if (!_waitingForWords) {
            _waitingForWords = true;
            const quint64 revision = document->revision();
            const qsizetype position = _view->cursorPosition();
            connect(
                words, &CompletionDocumentWords::ready, this,
                [this, revision, position] {
                    _waitingForWords = false;
                    if (_view->textStore()->revision() == revision &&
                        _view->selectedRange() == Range(position, 0)) {
                        complete();
                    }
                },
                Qt::SingleShotConnection);
        }
        return;
    }
    _manager.startCompletion(_view);
}

Range TextViewCompletion::rangeForUserCompletion() const
{
    return _word.partialWordRange();
}

QStringList TextViewCompletion::completionsForPartialWordRange(Range range) const
{
    if (range.isNotFound() || range.length == 0) {
        return {};
    }
    TextStore* document = _view->textStore();
    const QString partial = _word.textIn(range);
    const QVariantMap& dictionary = _view->syntaxDictionary();
    if (_offersNearbyWords) {
        return CompletionCandidates::completionsFromTextWords(
            _nearbyWords.wordsForPartialWord(partial), partial, dictionary, _completeWords);
    }
    CompletionDocumentWords* words =
        CompletionDocumentWords::of(document, CompletionCandidates::wordKind(dictionary));
    // While the text's words are being read, the definition's are offered alone.
    return CompletionCandidates::completionsFromTextWords(
        words->wordsForPartialWord(partial).value_or(QStringList()), partial, dictionary,
        _completeWords);
}

void TextViewCompletion::insertCompletion(const QString& word, Range range, int movement,
                                          bool isFinal)
{
    const Guard guard(this);
    // Until accepted, the rest of the word is only shown after the typed letters: it is not
    // in the text, so saving, undo and the modified state never see it.
    if (!isFinal) {
        _word.propose(word, range);
        _view->ensureCursorVisible();
        return;
    }
    if (movement == TextView::CancelTextMovement) {
        _word.withdraw();
        return;
    }
    _word.accept(word, range);
    _view->ensureCursorVisible();
}

QString TextViewCompletion::proposedCompletion() const
{
    LayoutManager* layout = _view->layoutManager();
    return layout ? layout->proposedText() : QString();
}

void TextViewCompletion::prepareCompletionWords()
{
    // On the next turn, once the definition of a new window has been chosen: the words are
    // read on a worker, and only for the kind the view offers.
    if (_preparingCompletionWords) {
        return;
    }
    _preparingCompletionWords = true;
    QTimer::singleShot(0, this, [this] {
        _preparingCompletionWords = false;
        // A large text's words are read when completion first asks for them.
        if (!_view->textStore() ||
            _view->textStore()->text().length() > TextSource::eagerWorkLimit) {
            return;
        }
        CompletionDocumentWords::of(_view->textStore(),
                                    CompletionCandidates::wordKind(_view->syntaxDictionary()));
    });
}

void TextViewCompletion::completionEndedElsewhere()
{
    // Another change of the text or of the insertion point than the completion's own: the
    // proposed rest of the word no longer belongs there.
    if (_guard == 0) {
        terminate();
    }
}

void TextViewCompletion::makeCompleteWordsFromSyntaxDictionary()
{
    _completeWords.clear();
    const quint64 build = ++_completeWordsBuild;
    const QVariantMap dictionary = _view->syntaxDictionary();
    using Result = std::optional<QStringList>;
    auto* watcher = new QFutureWatcher<Result>(this);
    connect(watcher, &QFutureWatcher<Result>::finished, this, [this, watcher, build] {
        const Result words = watcher->result();
        watcher->deleteLater();
        // Only the newest build counts; one that found another running leaves none.
        if (build == _completeWordsBuild) {
            _completeWords = words.value_or(QStringList());
            Q_EMIT _view->completeWordsChanged();
        }
    });
    SyntaxManager* syntaxManager = &_syntaxManager;
    watcher->setFuture(QtConcurrent::run([syntaxManager, dictionary] {
        return syntaxManager->makeCompleteWordsFromSyntaxDictionary(dictionary);
    }));
}
