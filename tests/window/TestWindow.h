#pragma once

#include "TestSupport.h"
#include "app/DocumentController.h"
#include "app/MainMenu.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "window/DocumentWindow.h"
#include "window/SidebarView.h"
#include "window/WindowController.h"

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <QTest>

#include <gtest/gtest.h>

/// The item of `menu` titled `title` (its mnemonic's '&' aside), or null.
inline QAction* itemTitled(const QMenu* menu, const QString& title)
{
    for (QAction* item : menu->actions()) {
        if (QString(item->text()).remove(u'&') == title) {
            return item;
        }
    }
    return nullptr;
}

/// A document window with its menus, as the document controller makes one, on a document of
/// the test's own that it deletes, window and all, at the end.
struct TestWindow {
    Document* document = new TestDocument;
    WindowController* controller = nullptr;
    MainMenu* menu = nullptr; // the controller's child

    /// A window on `text`, restored with `identifier`; `show` puts it on screen, active.
    explicit TestWindow(const QString& text = QString(), const QString& identifier = QString(),
                        bool show = false)
    {
        document->setWindowIdentifier(identifier);
        if (!text.isEmpty()) {
            document->setLoadedText(text);
        }
        controller = new WindowController(document);
        controller->windowDidLoad();
        menu = new MainMenu(controller);
        if (show) {
            DocumentWindow* shown = controller->window();
            shown->show();
            shown->activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowActive(shown));
        }
    }
    ~TestWindow()
    {
        delete controller->window();
        delete document;
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    DocumentWindow* window() const { return controller->window(); }
    TextView* view() const { return controller->textView(); }
    SidebarView* sidebar() const { return controller->sidebarView(); }
    /// The item of the menu named `menuName` titled `title`.
    QAction* action(const QString& menuName, const QString& title) const
    {
        return itemTitled(menu->menuNamed(menuName), title);
    }
};

/// A file opened as the user opens it, through the document controller (read in `encoding`, as
/// the open panel's choice, unless automatic), whose window and document go at the end.
struct OpenedFile {
    QString path;
    QPointer<Document> document;
    WindowController* controller = nullptr;

    explicit OpenedFile(const QString& filePath, quint64 encoding = ~quint64(0))
        : path(filePath)
    {
        DocumentController& documents = DocumentController::sharedDocumentController();
        documents.setIsOpenPanel(encoding != ~quint64(0));
        documents.setOpenPanelEncoding(encoding);
        document = documents.openDocumentWithContentsOfURL(path, true);
        documents.setOpenPanelEncoding(~quint64(0));
        EXPECT_TRUE(document) << path.toStdString();
        controller = document ? documents.windowControllerOf(document) : nullptr;
    }
    ~OpenedFile()
    {
        if (controller) {
            delete controller->window();
        }
        delete document.data();
    }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;

    DocumentWindow* window() const { return controller->window(); }
    TextView* view() const { return controller->textView(); }
};
