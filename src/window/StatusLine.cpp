#include "window/StatusLine.h"

#include "document/Document.h"
#include "document/EncodingManager.h"
#include "editor/TextView.h"
#include "platform/FileManager.h"
#include "platform/StringEncoding.h"
#include "window/CaretPosition.h"
#include "window/CharacterCounter.h"
#include "window/DocumentWindow.h"
#include "window/SidebarView.h"
#include "window/WindowController.h"

#include <QFileInfo>
#include <QLabel>
#include <QLocale>

StatusLine::StatusLine(WindowController* controller)
    : QObject(controller)
    , _controller(controller)
    , _counter(new CharacterCounter(controller->document()))
{
    fileChanged();
    connect(_counter, &CharacterCounter::rangeCounted, this, [this](qint64 count) {
        _characters = count;
        update();
    });
}

void StatusLine::fileChanged()
{
    _fileIsReadOnly = isReadOnlyFile(_controller->document()->fileURL());
}

void StatusLine::selectionChanged(TextView* view)
{
    if (view != _controller->textView()) {
        return;
    }
    const Range selection = view->selectedRange();
    if (selection.length == 0) {
        showWholeCount();
        return;
    }
    // Answered by rangeCounted, at once or from a worker; an older answer never lands.
    _counter->countRange(selection.location, selection.max(), _allowWhitespaceCount);
}

void StatusLine::showWholeCount()
{
    // The whole text's count is kept up to date as it changes: nothing to copy. A selection's
    // count still on its way is older than this one.
    _counter->cancelRangeCount();
    _characters = _counter->count();
    update();
}

void StatusLine::countCharacters(const QString& text)
{
    if (_countloop) {
        return;
    }
    _countloop = true;
    _characters = CharacterCounter::countCharacters(text, _allowWhitespaceCount);
    update();
    _countloop = false;
}

QString StatusLine::text() const
{
    const Document* document = _controller->document();
    QString text = QStringLiteral("Characters: ") + QLocale().toString(_characters);
    text += QStringLiteral("   ") +
            StringEncoding::localizedNameOfStringEncoding(document->documentEncoding());
    text += QStringLiteral("   ") +
            EncodingManager::lineBreaksStatusTitle(document->documentLineBreaks());
    const QString syntax = _controller->selectedSyntaxName();
    if (!syntax.isEmpty() && _controller->syntaxColouring()) {
        text += QStringLiteral("   ") + syntax;
    }
    if (const TextView* view = _controller->textView()) {
        text +=
            QStringLiteral("   ") + CaretPosition::statusText(*document, view->cursorPosition());
    }
    if (_fileIsReadOnly) {
        text += QStringLiteral("   Read-Only");
    }
    return text;
}

bool StatusLine::isReadOnlyFile(const QString& path)
{
    return !path.isEmpty() && QFileInfo::exists(path) && !FileManager::isWritableFile(path);
}

void StatusLine::showCaretPosition()
{
    // Only the line changes: the information pane has nothing to refresh.
    const QString line = text();
    DocumentWindow* window = _controller->window();
    if (window && window->infoField()->text() != line) {
        window->infoField()->setText(line);
        Q_EMIT changed(line);
    }
}

void StatusLine::update()
{
    const QString line = text();
    if (DocumentWindow* window = _controller->window()) {
        window->infoField()->setText(line);
    }
    if (_controller->isSidebarView() && _controller->lastSelectedType() == SidebarView::InfoType) {
        _controller->sidebarView()->updateInformationOfDocument(_controller->document(),
                                                                _controller->selectedSyntaxName());
    }
    Q_EMIT changed(line);
}
