#include "editor/TextViewCompletion.h"

#include "editor/CompletionDocumentWords.h"
#include "editor/CompletionManager.h"
#include "editor/LayoutManager.h"
#include "editor/TextView.h"
#include "syntax/CompletionCandidates.h"
#include "syntax/SyntaxManager.h"

#include <QFutureWatcher>
#include <QKeyEvent>
#include <QTextBlock>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

namespace {

// Automatic completion starts this long after a typed key.
constexpr int kCompletionDelay = 700;

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c.isMark();
}

} // namespace

TextViewCompletion::TextViewCompletion(TextView* view, CompletionManager& manager,
                                       SyntaxManager& syntaxManager)
    : _view(view)
    , _manager(manager)
    , _syntaxManager(syntaxManager)
{
    connect(view, &QPlainTextEdit::cursorPositionChanged, this,
            &TextViewCompletion::completionEndedElsewhere);
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

void TextViewCompletion::setDocument(QTextDocument* document)
{
    disconnect(_textChangedElsewhere);
    _textChangedElsewhere = connect(document, &QTextDocument::contentsChange, this,
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
        _view->layoutManager()->setProposedText(-1, QString());
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
        QTimer::singleShot(kCompletionDelay, this, [this] { complete(); });
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
    const Guard guard(this);
    QTextDocument* document = _view->document();
    if (!isCompleting()) {
        const Range range = rangeForUserCompletion();
        QString partial;
        if (!range.isNotFound()) {
            QTextCursor cursor(document);
            cursor.setPosition(int(range.location));
            cursor.setPosition(int(range.max()), QTextCursor::KeepAnchor);
            partial = cursor.selectedText();
        }
        _manager.setCurrentPartialWord(partial);
    }
    if (_view->hasMarkedText()) {
        return;
    }
    CompletionDocumentWords* words = CompletionDocumentWords::of(
        document, CompletionCandidates::wordKind(_view->syntaxDictionary()));
    if (!words->prepare()) {
        // The text's words are being read on a worker: complete once they are, unless the
        // user has typed or moved on meanwhile.
        if (!_waitingForWords) {
            _waitingForWords = true;
            const int revision = document->revision();
            const int position = _view->textCursor().position();
            connect(
                words, &CompletionDocumentWords::ready, this,
                [this, revision, position] {
                    _waitingForWords = false;
                    const QTextCursor cursor = _view->textCursor();
                    if (_view->document()->revision() == revision &&
                        cursor.position() == position && !cursor.hasSelection()) {
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
    const QTextCursor cursor = _view->textCursor();
    const qsizetype end = cursor.selectionStart();
    const QTextBlock block = _view->document()->findBlock(int(end));
    const QString line = block.text();
    qsizetype start = end - block.position();
    const qsizetype inBlockEnd = start;
    while (start > 0 && isWordCharacter(line[start - 1])) {
        --start;
    }
    if (start == inBlockEnd) {
        return Range::notFound();
    }
    return {block.position() + start, inBlockEnd - start};
}

QStringList TextViewCompletion::completionsForPartialWordRange(Range range) const
{
    if (range.isNotFound() || range.length == 0) {
        return {};
    }
    QTextDocument* document = _view->document();
    QTextCursor cursor(document);
    cursor.setPosition(int(range.location));
    cursor.setPosition(int(range.max()), QTextCursor::KeepAnchor);
    const QString partial = cursor.selectedText();
    const QVariantMap& dictionary = _view->syntaxDictionary();
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
    LayoutManager* layout = _view->layoutManager();
    // Until accepted, the rest of the word is only shown after the typed letters: it is not
    // in the text, so saving, undo and the modified state never see it.
    if (!isFinal) {
        if (_view->selectedRange() != Range(range.max(), 0)) {
            _view->setSelectedRange({range.max(), 0});
        }
        layout->setProposedText(range.max(), word.mid(range.length));
        _view->ensureCursorVisible();
        return;
    }
    layout->setProposedText(-1, QString());
    if (movement == TextView::CancelTextMovement) {
        return;
    }
    QTextCursor cursor(_view->document());
    cursor.setPosition(int(range.location));
    cursor.setPosition(int(range.max()), QTextCursor::KeepAnchor);
    const QString typed = cursor.selectedText();
    if (typed != word) {
        // One undo step, apart from the typing before it.
        cursor.beginEditBlock();
        if (word.startsWith(typed)) {
            cursor.setPosition(int(range.max()));
            cursor.insertText(word.mid(typed.size()));
        } else {
            cursor.insertText(word);
        }
        cursor.endEditBlock();
    }
    _view->setSelectedRange({range.location + word.size(), 0});
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
        CompletionDocumentWords::of(_view->document(),
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
