#include "editor/TextAreaInputMethod.h"

#include "document/TextStore.h"
#include "editor/TextArea.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QTextCharFormat>

#include <algorithm>
#include <cmath>

namespace {

// How much of the caret's line an input method sees on either side of the caret.
constexpr qsizetype kSurrounding = 1000;

// The part of the caret's line an input method sees.
Range surrounding(const TextSnapshot& text, qsizetype caret)
{
    const qsizetype line = text.lineAt(caret);
    const qsizetype lineStart = text.lineStart(line);
    const qsizetype from = std::max(lineStart, caret - kSurrounding);
    const qsizetype to = std::min(lineStart + text.lineLength(line), caret + kSurrounding);
    return {from, to - from};
}

} // namespace

void TextAreaInputMethod::event(TextArea& area, QInputMethodEvent* event)
{
    if (!area.canEdit()) {
        event->ignore();
        return;
    }
    const TextSnapshot& text = area._layout.text();
    const qsizetype caret = area.cursorPosition();
    if (event->replacementLength() > 0) {
        const qsizetype from = std::max<qsizetype>(0, caret + event->replacementStart());
        area._selections = {{from, std::min(text.length(), from + event->replacementLength())}};
    }
    const QString preedit = event->preeditString();
    if (!event->commitString().isEmpty() || event->replacementLength() > 0 ||
        (!preedit.isEmpty() && area.selectedRange().length > 0)) {
        area.replaceSelection(event->commitString(), true);
    }
    TextLayoutCache::Preedit composing;
    area._preeditCursor = preedit.size();
    if (!preedit.isEmpty()) {
        const TextSnapshot& now = area._layout.text();
        const qsizetype at = area.cursorPosition();
        composing.line = now.lineAt(at);
        composing.column = at - now.lineStart(composing.line);
        composing.text = preedit;
    }
    for (const QInputMethodEvent::Attribute& attribute : event->attributes()) {
        if (attribute.type == QInputMethodEvent::TextFormat && !preedit.isEmpty()) {
            const QTextCharFormat format = attribute.value.value<QTextFormat>().toCharFormat();
            if (format.isValid()) {
                composing.formats.append({attribute.start, attribute.length, format});
            }
        } else if (attribute.type == QInputMethodEvent::Cursor) {
            area._preeditCursor = std::clamp<qsizetype>(attribute.start, 0, preedit.size());
        } else if (attribute.type == QInputMethodEvent::Selection && preedit.isEmpty()) {
            const qsizetype base = surrounding(area._layout.text(), area.cursorPosition()).location;
            area.setSelections(
                {{base + attribute.start, base + attribute.start + attribute.length}});
        }
    }
    area._preedit = composing;
    area.showPreedit();
    if (composing.isActive()) {
        area._layout.scrollToShow(area.cursorPosition());
    }
    area.afterScroll();
    event->accept();
}

QVariant TextAreaInputMethod::query(const TextArea& area, Qt::InputMethodQuery query)
{
    // Queries lay out the caret's line when it is not: the layout changes, not the area.
    TextAreaLayout& layout = const_cast<TextArea&>(area)._layout;
    const TextSnapshot& text = layout.text();
    const qsizetype caret = area.cursorPosition();
    const Range around = surrounding(text, caret);
    switch (query) {
    case Qt::ImEnabled:
        return area.canEdit();
    case Qt::ImReadOnly:
        return !area.canEdit();
    case Qt::ImHints:
        return int(Qt::ImhMultiLine);
    case Qt::ImFont:
        return area.textFont();
    case Qt::ImCursorRectangle: {
        const QRectF at =
            layout.caretRect(caret, area._preedit.isActive() ? int(area._preeditCursor) : 0);
        return QRect(int(std::floor(at.x())), int(std::floor(at.y())), 1, int(at.height()))
            .translated(area.viewport()->pos());
    }
    case Qt::ImAbsolutePosition:
        return caret;
    case Qt::ImCursorPosition:
        return caret - around.location;
    case Qt::ImAnchorPosition:
        return std::clamp(area.selections().first().anchor, around.location, around.max()) -
               around.location;
    case Qt::ImSurroundingText:
        return text.text(around);
    case Qt::ImTextBeforeCursor:
        return text.text(Range(around.location, caret - around.location));
    case Qt::ImTextAfterCursor:
        return text.text(Range(caret, around.max() - caret));
    case Qt::ImCurrentSelection: {
        const Range selection = area.selectedRange();
        return text.text(Range(selection.location, std::min(selection.length, kSurrounding)));
    }
    default:
        return QVariant();
    }
}

void TextAreaInputMethod::commit(TextArea& area)
{
    if (area._preedit.isActive()) {
        QGuiApplication::inputMethod()->commit();
        area._preedit = {};
        area.showPreedit();
        area.viewport()->update();
    }
}

void TextAreaInputMethod::propose(TextArea& area, qsizetype position, const QString& text)
{
    TextLayoutCache::Preedit& proposal = area._proposal;
    const auto repaintLine = [&area](qsizetype line) {
        const TextSnapshot& text = area._layout.text();
        if (line >= 0 && line < text.lineCount()) {
            area.viewport()->update(area._layout.rowsMovedByChange({text.lineStart(line), 0}));
        }
    };
    const qsizetype before = proposal.text.isEmpty() ? -1 : proposal.line;
    proposal = {};
    const TextStore* store = area._store;
    if (store && !text.isEmpty() && position >= 0 && position <= store->text().length()) {
        const TextSnapshot& snapshot = store->text();
        proposal.line = snapshot.lineAt(position);
        proposal.column = position - snapshot.lineStart(proposal.line);
        proposal.text = text;
        proposal.underlined = false;
        QTextCharFormat grey;
        grey.setForeground(QColor(Qt::lightGray));
        proposal.formats = {{0, int(text.size()), grey}};
    }
    area.showPreedit();
    repaintLine(before);
    repaintLine(proposal.text.isEmpty() ? -1 : proposal.line);
}
