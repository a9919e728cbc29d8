// Documents gathered as tabs of one window: the menu bar, the title and the scripting
// interface follow the current tab; tabs are reordered and moved with the mouse;
// closing asks about each tab's changes; the tabs come back at the next start.
#include "window/TabWindow.h"

#include "TestSupport.h"
#include "app/DocumentController.h"
#include "app/JavaScriptRunner.h"
#include "app/MainMenu.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "platform/UserDefaults.h"
#include "window/DocumentWindow.h"
#include "window/TabBar.h"
#include "window/WindowController.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

namespace {

class TabWindowTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        // A root of the test's own: the setting is the test's, and so are the documents.
        _root = std::make_unique<TestRoot>();
        _root->userDefaults().setBool(true, QStringLiteral("OpenDocumentsInTabs"));
        _dir = TestSupport::makeTempDir();
    }

    void TearDown() override
    {
        documents().discardAllDocuments();
        // The emptied tab windows close on the way back to the event loop.
        QTRY_VERIFY(TabWindow::tabWindows().isEmpty());
        _root.reset();
    }

    static DocumentController& documents()
    {
        return DocumentController::sharedDocumentController();
    }

    Document* open(const QString& name, const QByteArray& bytes = "text\n")
    {
        return documents().openDocumentWithContentsOfURL(
            TestSupport::writeFile(_dir + u'/' + name, bytes));
    }

    static WindowController* controllerOf(Document* document)
    {
        return documents().windowControllerOf(document);
    }

    static DocumentWindow* windowOf(Document* document) { return controllerOf(document)->window(); }

    /// The texts of a tab window's tabs, in order, separated by spaces.
    static std::string tabNames(const TabWindow* tabs)
    {
        QStringList names;
        for (int i = 0; i < tabs->count(); ++i) {
            names << tabs->tabBar()->tabText(i);
        }
        return names.join(u' ').toStdString();
    }

    static void activate(QWidget* window)
    {
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }

    /// The names the alerts quote (“name”), separated by spaces.
    static std::string quoted(const QList<TestSupport::Alert>& alerts)
    {
        QStringList names;
        for (const TestSupport::Alert& alert : alerts) {
            const QString said = alert.title + u' ' + alert.text;
            const qsizetype open = said.indexOf(u'“');
            names << said.mid(open + 1, said.indexOf(u'”') - open - 1);
        }
        return names.join(u' ').toStdString();
    }

    /// Drags with the left button from `from` on the tab bar to the global point `to`.
    static void dragTab(TabBar* bar, const QPoint& from, const QPoint& to)
    {
        QTest::mousePress(bar, Qt::LeftButton, {}, from);
        const QPoint target = bar->mapFromGlobal(to);
        for (int step = 1; step <= 8; ++step) {
            QTest::mouseMove(bar, from + (target - from) * step / 8);
        }
        QTest::mouseRelease(bar, Qt::LeftButton, {}, target);
    }

    std::unique_ptr<TestRoot> _root;
    QString _dir;
};

TEST_F(TabWindowTest, DocumentsOpenAsTabsAndTheMenusActOnTheCurrentOne)
{
    Document* a = open("a.txt");
    Document* b = open("b.c", "int b;\n");
    Document* c = open("c.txt");
    ASSERT_TRUE(a && b && c);
    ASSERT_EQ(TabWindow::tabWindows().size(), 1);
    TabWindow* tabs = TabWindow::tabWindows().front();
    EXPECT_EQ(tabNames(tabs), "a.txt b.c c.txt");
    EXPECT_EQ(tabs->currentDocumentWindow(), windowOf(c));
    activate(tabs);

    // The keys of the usual editors go round the tabs, from the keyboard focus in the text.
    const auto press = [](int key, Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), modifiers);
    };
    const struct {
        int key;
        Qt::KeyboardModifiers modifiers;
        Document* current;
    } keys[] = {
        {Qt::Key_Tab, Qt::ControlModifier, a},
        {Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier, c},
        {Qt::Key_PageUp, Qt::ControlModifier, b},
    };
    for (const auto& step : keys) {
        press(step.key, step.modifiers);
        EXPECT_EQ(tabs->currentDocumentWindow(), windowOf(step.current))
            << "key " << QKeySequence(step.key | step.modifiers).toString().toStdString();
        EXPECT_EQ(QApplication::focusWidget(), controllerOf(step.current)->textView());
    }
    EXPECT_EQ(tabs->windowTitle(), "b.c[*]");
    EXPECT_EQ(documents().currentDocument(), b);

    // The window's menu bar is the current tab's, and so are its keys.
    EXPECT_EQ(tabs->menuBar()->actions(), windowOf(b)->menuBar()->actions());
    press(Qt::Key_BracketRight, Qt::ControlModifier); // Format ▸ Shift Right
    EXPECT_EQ(b->string(), "\tint b;\n");
    EXPECT_EQ(a->string(), "text\n");
    EXPECT_EQ(tabs->tabBar()->tabText(1), "b.c*");
    EXPECT_TRUE(tabs->isWindowModified());

    // Scripts act on the current tab of the front window.
    press(Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(documents().currentDocument(), c);
    EXPECT_FALSE(tabs->isWindowModified());
    EXPECT_EQ(
        JavaScriptRunner::run(QStringLiteral("application.frontDocument.contents = 'js';")).outcome,
        JavaScriptRunner::Outcome::Ran);
    EXPECT_EQ(c->string(), "jstext\n");
    EXPECT_EQ(a->string(), "text\n");

    b->setDocumentEdited(false);
    c->setDocumentEdited(false);
}

TEST_F(TabWindowTest, TabsAreReorderedAndMovedBetweenWindows)
{
    Document* a = open("a.txt");
    Document* b = open("b.txt");
    Document* c = open("c.txt");
    TabWindow* first = windowOf(a)->tabWindow();
    ASSERT_NE(first, nullptr);
    first->move(0, 0);
    TabBar* bar = first->tabBar();

    // Along the bar: a goes after b.
    const QRect tabA = bar->tabRect(0);
    dragTab(bar, tabA.center(), bar->mapToGlobal(bar->tabRect(1).center() + QPoint(10, 0)));
    QTRY_COMPARE(tabNames(first), "b.txt a.txt c.txt");
    EXPECT_EQ(windowOf(a)->tabIndex(), 1);
    EXPECT_EQ(first->currentDocumentWindow(), windowOf(a));

    // The Window menu's item takes the current tab into a window of its own.
    windowOf(c)->selectTab();
    QAction* moveTab = windowOf(c)->menuBar()->findChild<QAction*>("moveTabToNewWindow");
    ASSERT_NE(moveTab, nullptr);
    moveTab->trigger();
    TabWindow* second = windowOf(c)->tabWindow();
    ASSERT_NE(second, nullptr);
    ASSERT_NE(second, first);
    EXPECT_EQ(tabNames(first), "b.txt a.txt");
    EXPECT_EQ(tabNames(second), "c.txt");
    second->move(1200, 0);

    // Onto another window's tab bar, before the tab it is let go on.
    const QPoint onC =
        second->tabBar()->mapToGlobal(second->tabBar()->tabRect(0).topLeft() + QPoint(4, 4));
    dragTab(bar, bar->tabRect(0).center(), onC);
    EXPECT_EQ(tabNames(second), "b.txt c.txt");
    EXPECT_EQ(tabNames(first), "a.txt");
    EXPECT_EQ(second->currentDocumentWindow(), windowOf(b));

    // A window's only tab dragged onto another window: the emptied window goes.
    const QPointer<TabWindow> emptied = first;
    TabBar* secondBar = second->tabBar();
    dragTab(bar, bar->tabRect(0).center(),
            secondBar->mapToGlobal(QPoint(secondBar->width() - 4, 4)));
    EXPECT_EQ(tabNames(second), "b.txt c.txt a.txt");
    QTRY_VERIFY(emptied.isNull());
    EXPECT_EQ(documents().documents().size(), 3u);
}

TEST_F(TabWindowTest, ClosingTabsAsksAboutEachTabsChanges)
{
    const QByteArray original = "on disk\n";
    Document* a = open("a.txt", original);
    Document* b = open("b.txt", original);
    Document* c = open("c.txt", original);
    Document* d = open("d.txt", original);
    open("e.txt", original);
    open("f.txt", original);
    TabWindow* tabs = windowOf(a)->tabWindow();
    activate(tabs);
    for (Document* document : {b, c, d}) {
        document->setTextStorage(QStringLiteral("changed\n"));
    }

    // Ctrl+W closes the current tab; Cancel keeps it, Don't Save closes it, file untouched.
    windowOf(b)->selectTab();
    QList<TestSupport::Alert> asked;
    TestSupport::answerAlerts({"Cancel"}, &asked);
    QTest::keyClick(controllerOf(b)->textView(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(quoted(asked), "b.txt");
    EXPECT_EQ(tabs->count(), 6);
    EXPECT_EQ(tabs->currentDocumentWindow(), windowOf(b));
    // Without a window manager, nothing gives the window back its activation after an alert.
    activate(tabs);
    TestSupport::answerAlerts({"Don’t Save"}, &asked);
    QTest::keyClick(controllerOf(b)->textView(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(quoted(asked), "b.txt");
    EXPECT_EQ(tabNames(tabs), "a.txt c.txt* d.txt* e.txt f.txt");
    EXPECT_EQ(TestSupport::readFile(_dir + "/b.txt"), original);

    // A tab's close button closes that tab, asking only when it has changes.
    QAbstractButton* closeA =
        qobject_cast<QAbstractButton*>(tabs->tabBar()->tabButton(0, QTabBar::RightSide));
    ASSERT_NE(closeA, nullptr);
    closeA->click();
    EXPECT_EQ(tabNames(tabs), "c.txt* d.txt* e.txt f.txt");
    // So does a middle click on it.
    QTest::mouseClick(tabs->tabBar(), Qt::MiddleButton, {}, tabs->tabBar()->tabRect(3).center());
    EXPECT_EQ(tabNames(tabs), "c.txt* d.txt* e.txt");

    // Closing the window asks about each modified tab in turn; a Cancel stops there and keeps
    // the window, with the tab it was asked about and the tabs without changes.
    TestSupport::answerAlerts({"Don’t Save", "Cancel"}, &asked);
    EXPECT_FALSE(tabs->close());
    EXPECT_EQ(quoted(asked), "c.txt d.txt");
    EXPECT_EQ(tabNames(tabs), "d.txt* e.txt");
    EXPECT_TRUE(tabs->isVisible());
    EXPECT_EQ(TestSupport::readFile(_dir + "/c.txt"), original);
    EXPECT_EQ(TestSupport::readFile(_dir + "/d.txt"), original);
    EXPECT_EQ(d->string(), "changed\n");
    d->setDocumentEdited(false);
}

TEST_F(TabWindowTest, TabsComeBackInTheirWindowsInOrderWithTheCurrentTab)
{
    // a, c, b with c current | e, an untitled tab, d with e current | a window of its own.
    Document* a = open("a.txt");
    open("b.txt");
    Document* c = open("c.txt");
    Document* d = open("d.txt");
    Document* e = open("e.txt");
    Document* untitled = documents().newDocument();
    TabWindow* first = windowOf(a)->tabWindow();
    first->insertDocumentWindow(1, windowOf(c));
    TabWindow* second = first->moveTabToNewWindow(windowOf(d));
    ASSERT_NE(second, nullptr);
    second->insertDocumentWindow(0, windowOf(e));
    second->insertDocumentWindow(1, windowOf(untitled));
    windowOf(e)->selectTab();
    windowOf(c)->selectTab();
    // With the setting off, the next document has a window of its own: here one read in
    // Windows Latin 1 with Perl and its information pane, as a restored one is.
    _root->userDefaults().setBool(false, QStringLiteral("OpenDocumentsInTabs"));
    const QString latin = TestSupport::writeFile(_dir + "/latin.pl", "print \"caf\xe9\";\n");
    Document* own = documents().reopenDocumentForURL(latin, 5, QStringLiteral("2:Perl"));
    ASSERT_NE(own, nullptr);
    EXPECT_TRUE(windowOf(own)->isWindow());
    ASSERT_EQ(tabNames(first), "a.txt c.txt b.txt");
    ASSERT_EQ(tabNames(second), "e.txt " + untitled->displayName().toStdString() + " d.txt");
    // A file gone by the next start is skipped.
    open("gone.txt");

    documents().noteDocumentsForRestoration();
    documents().discardAllDocuments();
    QTRY_VERIFY(TabWindow::tabWindows().isEmpty());
    QFile::remove(_dir + "/gone.txt");

    // Each comes back as it was, whatever the setting says now: with it on, the window of its
    // own stays one and joins no tab window.
    _root->userDefaults().setBool(true, QStringLiteral("OpenDocumentsInTabs"));
    EXPECT_EQ(documents().reopenDocumentsOfLastRun(), 6);
    std::map<std::string, std::string> restored; // by current tab
    for (TabWindow* window : TabWindow::tabWindows()) {
        restored[window->currentDocumentWindow()->windowTitle().toStdString()] = tabNames(window);
    }
    EXPECT_EQ(restored, (std::map<std::string, std::string>{{"c.txt[*]", "a.txt c.txt b.txt"},
                                                            {"e.txt[*]", "e.txt d.txt"}}));
    // Read in the encoding it had, without detection, with its window's identifier.
    own = documents().documents().back();
    EXPECT_EQ(own->fileURL(), latin);
    EXPECT_TRUE(windowOf(own)->isWindow());
    EXPECT_EQ(own->documentEncoding(), 5u);
    EXPECT_EQ(own->string(), QStringLiteral("print \"caf\u00e9\";\n"));
    EXPECT_EQ(own->windowIdentifier(), "2:Perl");
    EXPECT_EQ(controllerOf(own)->selectedSyntaxName(), "Perl");
    // What was remembered is used once.
    documents().discardAllDocuments();
    EXPECT_EQ(documents().reopenDocumentsOfLastRun(), 0);
}

} // namespace
