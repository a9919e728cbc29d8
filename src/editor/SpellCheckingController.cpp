#include "editor/SpellCheckingController.h"

#include "editor/LayoutManager.h"
#include "editor/TextView.h"
#include "platform/SpellChecker.h"

#include <QEvent>
#include <QMenu>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <limits>

namespace {

// A line without layout yet, or one very long line: enough to cover any screen.
constexpr int kMaximumLineSpan = 4096;

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == u'\'' || c == u'_' || c == u'\u2019' || c.isMark();
}

} // namespace

SpellCheckingController* SpellCheckingController::of(TextView* textView)
{
    if (auto* existing =
            textView->findChild<SpellCheckingController*>(QString(), Qt::FindDirectChildrenOnly)) {
        return existing;
    }
    return new SpellCheckingController(textView);
}

SpellCheckingController::SpellCheckingController(TextView* textView)
    : QObject(textView)
    , _textView(textView)
{
    _timer.setSingleShot(true);
    _timer.setInterval(0);
    connect(&_timer, &QTimer::timeout, this, &SpellCheckingController::checkVisibleText);
}

void SpellCheckingController::setContinuousSpellCheckingEnabled(bool enabled,
                                                                const QString& language)
{
    if (!_textView) {
        return;
    }
    const bool changed =
        enabled != _enabled || language != _language || _textView->document() != _checkedDocument;
    _enabled = enabled;
    _language = language;
    if (!changed) {
        return;
    }
    if (_checkedDocument) {
        disconnect(_checkedDocument, nullptr, this, nullptr);
    }
    _checkedDocument = nullptr;
    disconnect(_textView->verticalScrollBar(), nullptr, this, nullptr);
    disconnect(_textView->horizontalScrollBar(), nullptr, this, nullptr);
    _textView->viewport()->removeEventFilter(this);
    if (LayoutManager* layout = _textView->layoutManager()) {
        layout->removeAllMisspelledWords();
    }
    if (!enabled) {
        _timer.stop();
        return;
    }
    _checkedDocument = _textView->document();
    _blockCount = _checkedDocument->blockCount();
    connect(_checkedDocument, &QTextDocument::contentsChange, this,
            &SpellCheckingController::textDidChange);
    connect(_textView->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &SpellCheckingController::scheduleCheck);
    connect(_textView->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &SpellCheckingController::scheduleCheck);
    // A resized viewport shows other lines.
    _textView->viewport()->installEventFilter(this);
    scheduleCheck();
}

bool SpellCheckingController::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Show) {
        scheduleCheck();
    }
    return QObject::eventFilter(watched, event);
}

void SpellCheckingController::scheduleCheck()
{
    // One check per turn of the event loop, after the layout has followed the edit.
    if (_enabled) {
        _checkAll = true;
        _timer.start();
    }
}

void SpellCheckingController::textDidChange(int position, int removed, int added)
{
    if (!_enabled) {
        return;
    }
    // Lines gained or lost bring other lines onto the screen.
    if (_checkedDocument && _checkedDocument->blockCount() != _blockCount) {
        _blockCount = _checkedDocument->blockCount();
        scheduleCheck();
        return;
    }
    if (_editedFrom < 0) {
        _editedFrom = position;
        _editedTo = position + added;
    } else {
        // Edits between two checks: one stretch covering them all, moved along.
        if (_editedTo > position) {
            _editedTo = std::max<qsizetype>(position, _editedTo - removed) + added;
        }
        _editedFrom = std::min<qsizetype>(_editedFrom, position);
        _editedTo = std::max<qsizetype>(_editedTo, position + added);
    }
    _timer.start();
}

void SpellCheckingController::checkVisibleText()
{
    const bool all = _checkAll || _editedFrom < 0;
    const qsizetype from = _editedFrom;
    const qsizetype to = _editedTo;
    _checkAll = false;
    _editedFrom = _editedTo = -1;
    if (all) {
        checkShownBlocks(0, std::numeric_limits<qsizetype>::max());
    } else {
        checkShownBlocks(from, to);
    }
}

void SpellCheckingController::checkShownBlocks(qsizetype from, qsizetype to)
{
    if (!_enabled || !_textView || !_textView->layoutManager()) {
        return;
    }
    LayoutManager* layout = _textView->layoutManager();
    SpellChecker& checker = _textView->services().spellChecker;
    checker.setLanguage(_language);
    const qreal width = _textView->viewport()->width();
    for (const TextView::ShownBlock& shown :
         _textView->shownBlocks(0, _textView->viewport()->height())) {
        const QTextBlock& block = shown.block;
        if (block.position() + block.length() < from || block.position() > to) {
            continue;
        }
        const QString text = block.text();
        const QTextLayout* lines = block.layout();
        QList<QPair<int, int>> spans;
        if (!lines || lines->lineCount() == 0) {
            spans.append({0, std::min<int>(int(text.size()), kMaximumLineSpan)});
        } else {
            for (int i = 0; i < lines->lineCount(); ++i) {
                const QTextLine line = lines->lineAt(i);
                const qreal top = shown.offset.y() + line.y();
                if (top > _textView->viewport()->height() || top + line.height() < 0) {
                    continue;
                }
                // Only the characters under the viewport: an unwrapped line may be very long.
                int from = std::max(line.textStart(), line.xToCursor(-shown.offset.x()) - 1);
                int to = std::min(line.textStart() + line.textLength(),
                                  line.xToCursor(width - shown.offset.x()) + 1);
                to = std::min(to, from + kMaximumLineSpan);
                // Whole words: a word cut by the viewport's edge is checked whole.
                const int left = from;
                while (from > 0 && left - from < 64 && isWordCharacter(text.at(from - 1))) {
                    --from;
                }
                const int right = to;
                while (to < text.size() && to - right < 64 && isWordCharacter(text.at(to))) {
                    ++to;
                }
                if (from < to) {
                    spans.append({from, to});
                }
            }
        }
        for (const auto& [from, to] : spans) {
            QList<Range> words = checker.misspelledWords(text, from, to);
            for (Range& word : words) {
                word.location += block.position();
            }
            layout->setMisspelledWords({block.position() + from, qsizetype(to - from)}, words);
        }
    }
}

Range SpellCheckingController::misspelledWordAt(qsizetype position) const
{
    if (!_textView || !_textView->layoutManager()) {
        return Range::notFound();
    }
    // Marks are read clipped to the range asked for: ask for the whole line. The word under
    // the pointer may end at the position (pointer on its right half).
    const QTextBlock block = _textView->document()->findBlock(int(position));
    const Range line(block.position(), block.length());
    for (const Range& word : _textView->layoutManager()->misspelledWords(line)) {
        if (position >= word.location && position <= word.max()) {
            return word;
        }
    }
    return Range::notFound();
}

void SpellCheckingController::addSpellingSuggestions(TextView* textView, QMenu* menu,
                                                     const QPoint& viewportPosition)
{
    auto* controller =
        textView->findChild<SpellCheckingController*>(QString(), Qt::FindDirectChildrenOnly);
    if (!controller || !controller->_enabled) {
        return;
    }
    const qsizetype position = textView->cursorForPosition(viewportPosition).position();
    const Range word = controller->misspelledWordAt(position);
    if (word.isNotFound()) {
        return;
    }
    QTextCursor cursor(textView->document());
    cursor.setPosition(int(word.location));
    cursor.setPosition(int(word.max()), QTextCursor::KeepAnchor);
    const QString misspelt = cursor.selectedText();
    SpellChecker& checker = textView->services().spellChecker;
    checker.setLanguage(controller->_language);
    const QStringList guesses = checker.guessesForWord(misspelt);
    QAction* before = menu->actions().value(0);
    QList<QAction*> actions;
    for (const QString& guess : guesses) {
        auto* action = new QAction(guess, menu);
        QPointer<TextView> view(textView);
        connect(action, &QAction::triggered, textView, [view, word, misspelt, guess] {
            if (!view) {
                return;
            }
            QTextCursor replace(view->document());
            replace.setPosition(int(word.location));
            replace.setPosition(int(word.max()), QTextCursor::KeepAnchor);
            // The text may have changed while the menu was open.
            if (replace.selectedText() != misspelt) {
                return;
            }
            replace.beginEditBlock();
            replace.insertText(guess);
            replace.endEditBlock();
            view->setTextCursor(replace);
        });
        actions.append(action);
    }
    if (actions.isEmpty()) {
        auto* none = new QAction(tr("No Guesses Found"), menu);
        none->setEnabled(false);
        actions.append(none);
    }
    menu->insertActions(before, actions);
    if (before) {
        menu->insertSeparator(before);
    }
}
