#include "editor/TextAreaKeys.h"

#include "document/TextStore.h"
#include "editor/TextArea.h"
#include "editor/TextBoundaries.h"

#include <QKeyEvent>
#include <QKeySequence>

#include <cstdlib>

namespace {

bool isNavigationKey(int key)
{
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return true;
    default:
        return false;
    }
}

Qt::KeyboardModifiers modifiersOf(const QKeyEvent* event)
{
    return event->modifiers() & ~Qt::KeypadModifier;
}

} // namespace

bool TextAreaKeys::takes(const QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = modifiersOf(event);
    const bool altered = modifiers & (Qt::AltModifier | Qt::MetaModifier);
    const int key = event->key();
    if ((key == Qt::Key_PageUp || key == Qt::Key_PageDown) && (modifiers & Qt::ControlModifier)) {
        return false; // the window's: the previous or next tab
    }
    if (isNavigationKey(key) || key == Qt::Key_Backspace || key == Qt::Key_Delete) {
        return !altered;
    }
    const bool typed = !altered && !(modifiers & Qt::ControlModifier) && !event->text().isEmpty() &&
                       event->text().at(0).isPrint();
    for (QKeySequence::StandardKey standard :
         {QKeySequence::Copy, QKeySequence::Cut, QKeySequence::Paste, QKeySequence::Undo,
          QKeySequence::Redo, QKeySequence::SelectAll}) {
        if (event->matches(standard)) {
            return true;
        }
    }
    return typed;
}

qsizetype TextAreaKeys::verticalTarget(TextArea& area, qsizetype position, qsizetype rows)
{
    TextAreaLayout& layout = area._layout;
    TextAreaLayout::RowRef row = layout.rowOf(position);
    if (area._preferredX < 0) {
        area._preferredX = layout.contentX(position);
    }
    qsizetype moved = 0;
    for (; moved < std::abs(rows); ++moved) {
        if (!(rows > 0 ? layout.nextRow(row) : layout.previousRow(row))) {
            break;
        }
    }
    if (moved == 0) {
        // Up in the first row and down in the last go to the text's ends.
        return rows > 0 ? layout.text().length() : 0;
    }
    return layout.positionInRow(row, area._preferredX);
}

void TextAreaKeys::moveRows(TextArea& area, qsizetype rows)
{
    area.moveCaret(verticalTarget(area, area.cursorPosition(), rows), false, true);
    area.ensureCursorVisible();
}

bool TextAreaKeys::navigate(TextArea& area, QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = modifiersOf(event);
    if (!isNavigationKey(event->key()) || (modifiers & (Qt::AltModifier | Qt::MetaModifier))) {
        return false;
    }
    TextAreaLayout& layout = area._layout;
    const bool control = modifiers & Qt::ControlModifier;
    const bool shift = modifiers & Qt::ShiftModifier;
    const TextSnapshot& text = layout.text();
    const qsizetype caret = area.cursorPosition();
    const Range selection = area.selectedRange();
    const bool collapse = !shift && selection.length > 0;
    qsizetype target = caret;
    bool keepX = false;
    switch (event->key()) {
    case Qt::Key_Left:
        target = control ? TextBoundaries::previousWord(text, caret)
                         : (collapse ? selection.location
                                     : TextBoundaries::previousCharacter(text, caret));
        break;
    case Qt::Key_Right:
        target = control
                     ? TextBoundaries::nextWord(text, caret)
                     : (collapse ? selection.max() : TextBoundaries::nextCharacter(text, caret));
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (control) {
            // The view moves by a row; the caret stays.
            layout.scrollRows(event->key() == Qt::Key_Up ? -1 : 1);
            area.afterScroll();
            return true;
        }
        target = verticalTarget(area, caret, event->key() == Qt::Key_Up ? -1 : 1);
        keepX = true;
        break;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: {
        const qsizetype rows =
            event->key() == Qt::Key_PageUp ? -layout.pageRows() : layout.pageRows();
        target = verticalTarget(area, caret, rows);
        layout.scrollRows(rows);
        area.afterScroll();
        keepX = true;
        break;
    }
    default: {
        if (control) {
            target = event->key() == Qt::Key_Home ? 0 : text.length();
            break;
        }
        // First the visual row's edge, then the line's.
        const qsizetype line = text.lineAt(caret);
        const qsizetype lineStart = text.lineStart(line);
        const qsizetype lineEnd = lineStart + text.lineLength(line);
        const Range row = layout.rowRange(layout.rowOf(caret));
        if (event->key() == Qt::Key_Home) {
            target = caret != row.location ? row.location : lineStart;
        } else {
            const qsizetype rowEnd = row.max() == lineEnd ? lineEnd : row.max() - 1;
            target = caret != rowEnd ? rowEnd : lineEnd;
        }
        break;
    }
    }
    area.moveCaret(target, shift, keepX);
    area.ensureCursorVisible();
    return true;
}

bool TextAreaKeys::press(TextArea& area, QKeyEvent* event)
{
    if (navigate(area, event)) {
        return true;
    }
    if (event == QKeySequence::Copy) {
        area.copy();
    } else if (event == QKeySequence::Cut) {
        area.cut();
    } else if (event == QKeySequence::Paste) {
        area.paste();
    } else if (event == QKeySequence::Undo) {
        area.undo();
    } else if (event == QKeySequence::Redo) {
        area.redo();
    } else if (event == QKeySequence::SelectAll) {
        area.selectAll();
    } else if (event == QKeySequence::DeleteStartOfWord || event == QKeySequence::DeleteEndOfWord) {
        if (area.canEdit() && area.selectedRange().length == 0) {
            const TextSnapshot& text = area._layout.text();
            const qsizetype caret = area.cursorPosition();
            area._selections = {{caret, event == QKeySequence::DeleteStartOfWord
                                            ? TextBoundaries::previousWord(text, caret)
                                            : TextBoundaries::nextWord(text, caret)}};
            area.replaceSelection(QString(), false);
        }
    } else {
        const Qt::KeyboardModifiers modifiers = modifiersOf(event);
        const bool plain =
            !(modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
        const QString text = event->text();
        switch (event->key()) {
        case Qt::Key_Backspace:
            area.deleteBackward();
            break;
        case Qt::Key_Delete:
            area.deleteForward();
            break;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (!plain) {
                return false;
            }
            area.insertNewline();
            break;
        case Qt::Key_Tab:
            if (modifiers != Qt::NoModifier) {
                return false;
            }
            area.insertTab();
            break;
        default:
            if (text.isEmpty() || !text.at(0).isPrint() ||
                (modifiers & (Qt::ControlModifier | Qt::MetaModifier))) {
                return false;
            }
            area.insertTypedText(text);
        }
    }
    return true;
}
