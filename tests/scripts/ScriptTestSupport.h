#pragma once

#include "app/DocumentController.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "scripts/ScriptAlert.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QCoreApplication>
#include <QTest>
#include <QTextCursor>
#include <QTextDocument>

#include <vector>

namespace ScriptTestSupport {

/// Opens a document window holding `text` with `selection` (location, length) selected.
inline Document* openDocument(const QString& text, qsizetype location = 0, qsizetype length = 0)
{
    DocumentController& documents = DocumentController::sharedDocumentController();
    Document* document = documents.newDocument();
    document->textStorage()->setPlainText(text);
    TextView* view = documents.windowControllerOf(document)->textView();
    QTextCursor cursor = view->textCursor();
    cursor.setPosition(int(location));
    cursor.setPosition(int(location + length), QTextCursor::KeepAnchor);
    view->setTextCursor(cursor);
    // Scripts act on the front window: wait until the window system made it active.
    view->window()->activateWindow();
    [[maybe_unused]] const bool active = QTest::qWaitForWindowActive(view->window(), 2000);
    return document;
}

inline TextView* textViewOf(Document* document)
{
    return DocumentController::sharedDocumentController().windowControllerOf(document)->textView();
}

/// Closes every document window without asking.
inline void closeAllDocuments()
{
    DocumentController& documents = DocumentController::sharedDocumentController();
    for (Document* document : std::vector<Document*>(documents.documents())) {
        if (WindowController* controller = documents.windowControllerOf(document)) {
            controller->window()->setCloseHandler(nullptr);
            controller->window()->close();
        }
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// Records the alerts shown while it lives, instead of showing them.
struct AlertRecorder {
    std::vector<ScriptAlert::Alert> alerts;
    AlertRecorder()
    {
        ScriptAlert::setHandler(
            [this](const ScriptAlert::Alert& alert) { alerts.push_back(alert); });
    }
    ~AlertRecorder() { ScriptAlert::setHandler(nullptr); }
};

} // namespace ScriptTestSupport
