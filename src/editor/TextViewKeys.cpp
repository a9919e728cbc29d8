#include "editor/TextViewKeys.h"

#include "document/TextMirror.h"
#include "editor/FindIndicator.h"
#include "editor/TextAreaKeys.h"
#include "editor/TextView.h"
#include "editor/TextViewCompletion.h"
#include "platform/SystemBeep.h"

#include <QKeyEvent>

TextViewKeys::TextViewKeys(TextView& view, TextViewCompletion& completion)
    : _view(view)
    , _completion(completion)
{}

TypingRules TextViewKeys::rules() const
{
    return TypingRules(_view.typingSettings());
}

TextSource& TextViewKeys::text() const
{
    return *TextMirror::mirrorOfStore(_view.textStore());
}

void TextViewKeys::keyPressed(QKeyEvent* event, const std::function<void(QKeyEvent*)>& base)
{
    const int key = event->key();
    // A read-only text takes the keys that move and select, through the text area's own
    // handling, which changes nothing; the editing keys below would insert regardless.
    if (key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt ||
        key == Qt::Key_Meta || key == Qt::Key_AltGr || _view.isReadOnly()) {
        base(event);
        return;
    }
    const TextViewCompletion::Guard guard(&_completion);
    const bool closingBracket =
        _view.autoBraceMatching() && TypingRules::isClosingBracket(event->text());
    const TextViewCompletion::KeyRoute route = _completion.keyPressed(event, closingBracket);
    if (route != TextViewCompletion::KeyRoute::Done) {
        interpretKeyEvent(event, base);
    }
    if (route == TextViewCompletion::KeyRoute::InterpretAndFollow) {
        _completion.followTyping();
    }
}

void TextViewKeys::interpretKeyEvent(QKeyEvent* event, const std::function<void(QKeyEvent*)>& base)
{
    const Qt::KeyboardModifiers modifiers =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const int key = event->key();
    if (event == QKeySequence::SelectAll) {
        _view.selectAll();
    } else if ((key == Qt::Key_Return || key == Qt::Key_Enter) && modifiers == 0) {
        insertNewline();
    } else if (key == Qt::Key_Tab && modifiers == 0) {
        insertTab();
    } else if (key == Qt::Key_Backspace && modifiers == 0) {
        deleteBackward();
    } else if (key == Qt::Key_Escape && modifiers == 0) {
        cancelOperation();
    } else if (key == Qt::Key_Up && event->modifiers() == Qt::NoModifier) {
        moveUp();
    } else if (key == Qt::Key_Down && event->modifiers() == Qt::NoModifier) {
        moveDown();
    } else if (!event->text().isEmpty() && event->text()[0].isPrint() &&
               !(modifiers & (Qt::ControlModifier | Qt::MetaModifier)) && !_view.isReadOnly()) {
        insertText(event->text());
    } else {
        base(event);
    }
}

void TextViewKeys::insertText(const QString& string)
{
    _completion.textTyped(string);
    if (!_view.canEdit()) {
        SystemBeep::beep();
        return;
    }
    // Typed, so that the characters typed on one go make one undo step.
    _view.TextArea::insertTypedText(string);
    if (!rules().matchesTypedBracket(string) || _view.usedIndentClosingBraces()) {
        return;
    }
    const Range match = autoBraceMatching(string);
    if (match.length > 0) {
        FindIndicator::showFindIndicatorForRange(&_view, match);
    } else {
        SystemBeep::beep();
    }
}

Range TextViewKeys::autoBraceMatching(const QString& closing) const
{
    if (closing.size() != 1) {
        return {0, 0};
    }
    return TypingRules::openingBracket(text(), _view.visibleCharacterRange(),
                                       _view.cursorPosition(), closing[0]);
}

void TextViewKeys::insertNewline()
{
    const TextEdit edit = rules().insertNewline(text(), _view.selectedRange());
    _view.applyEdit(edit);
    closingBraceInserted(edit.shown);
    _view.ensureCursorVisible();
}

void TextViewKeys::autoIndent()
{
    if (const auto edit = rules().autoIndent(text(), _view.selectedRange())) {
        _view.applyEdit(*edit);
        closingBraceInserted(edit->shown);
    }
}

void TextViewKeys::closingBraceInserted(Range closing)
{
    if (closing.isNotFound()) {
        return;
    }
    // The "}" counts as typed for completion, but it is no bracket to match: it shows itself.
    _completion.textTyped(QStringLiteral("}"));
    FindIndicator::showFindIndicatorForRange(&_view, closing);
    _view.ensureCursorVisible();
}

void TextViewKeys::insertTab()
{
    if (_completion.isCompleting()) {
        _completion.terminateWithCancel(false);
        return;
    }
    _view.applyEdit(rules().insertTab(_view.selectedRange()));
}

void TextViewKeys::deleteBackward()
{
    if (!_completion.backspacePressed()) {
        return;
    }
    if (const auto edit = rules().deleteBackward(text(), _view.selectedRange())) {
        _view.applyEdit(*edit);
    }
    _view.ensureCursorVisible();
}

void TextViewKeys::cancelOperation()
{
    if (_completion.isCompleting()) {
        _completion.terminateWithCancel(true);
    } else {
        _completion.complete();
    }
}

void TextViewKeys::moveUp()
{
    if (!_completion.selectRow(true)) {
        TextAreaKeys::moveRows(_view, -1);
    }
}

void TextViewKeys::moveDown()
{
    if (!_completion.selectRow(false)) {
        TextAreaKeys::moveRows(_view, 1);
    }
}
