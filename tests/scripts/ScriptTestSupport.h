#pragma once

#include "TestSupport.h"
#include "app/DocumentController.h"
#include "app/ScriptMenu.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "platform/FileManager.h"
#include "scripts/ScriptLibrary.h"
#include "scripts/ScriptManager.h"
#include "scripts/ScriptObject.h"
#include "window/DocumentWindow.h"
#include "window/ScriptAlert.h"
#include "window/WindowController.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include <gtest/gtest.h>

#include <vector>

namespace ScriptTestSupport {

inline WindowController* windowOf(Document* document)
{
    return DocumentController::sharedDocumentController().windowControllerOf(document);
}

/// Opens a document window holding `text` with `selection` (location, length) selected.
inline Document* openDocument(const QString& text, qsizetype location = 0, qsizetype length = 0)
{
    Document* document = DocumentController::sharedDocumentController().newDocument();
    document->setLoadedText(text);
    TextView* view = windowOf(document)->textView();
    view->setSelection(location, location + length);
    // Scripts act on the front window: wait until the window system made it active.
    view->window()->activateWindow();
    [[maybe_unused]] const bool active = QTest::qWaitForWindowActive(view->window(), 2000);
    return document;
}

/// Closes a document's window without asking; it goes when control is back in the event
/// loop, as in the running editor.
inline void closeWindowOf(Document* document)
{
    DocumentWindow* window = windowOf(document)->window();
    window->setCloseHandler(nullptr);
    window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// Closes every document window without asking.
inline void closeAllDocuments()
{
    for (Document* document :
         std::vector<Document*>(DocumentController::sharedDocumentController().documents())) {
        if (WindowController* controller = windowOf(document)) {
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

inline ScriptLibrary& library()
{
    return ScriptManager::sharedScriptManager().library();
}

/// A Script folder and a library that start empty; the document windows close after.
class ScriptLibraryTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QDir(FileManager::scriptDirectoryPathInPath()).removeRecursively();
        QDir().mkpath(FileManager::scriptDirectoryPathInPath());
        ScriptManager::sharedScriptManager().setScriptDataSource(ScriptObjectList());
    }
    void TearDown() override { closeAllDocuments(); }

    static QString script(const QString& name)
    {
        return FileManager::scriptDirectoryPathInPath(name);
    }
    static ScriptObjectPtr addFile(const QString& name, const ScriptObjectPtr& folder)
    {
        TestSupport::writeFile(script(name), "#!/bin/sh -c\necho " + name.toUtf8());
        ScriptObjectPtr node = ScriptObject::initWithPath(name, true);
        ScriptObjectList list = library().entries(folder);
        list.append(node);
        if (folder) {
            folder->setChildren(list);
        } else {
            ScriptManager::sharedScriptManager().setScriptDataSource(list);
        }
        return node;
    }
    static QStringList titles(const ScriptObjectList& nodes)
    {
        QStringList result;
        for (const ScriptObjectPtr& node : nodes) {
            result << node->title();
        }
        return result;
    }
    static QMenu* scriptsMenuOf(Document* document)
    {
        return windowOf(document)->window()->menuBar()->findChild<QMenu*>(
            QStringLiteral("scriptsMenu"));
    }
    static QStringList itemTitles(QMenu* menu, bool withFixed = false)
    {
        QStringList result;
        for (QAction* item : menu->actions()) {
            if (withFixed || item->property("tag").toInt() != ScriptMenu::FixedTag) {
                result << (item->isSeparator() ? QStringLiteral("-") : item->text());
            }
        }
        return result;
    }
};

} // namespace ScriptTestSupport
