// The library commands on a real Script folder, the Scripts menu and the script pane: its
// tree and its menus.
#include "scripts/ScriptLibrary.h"

#include "ScriptTestSupport.h"
#include "TestSupport.h"
#include "app/ScriptCommands.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptFolderWatcher.h"
#include "scripts/ScriptManager.h"
#include "window/ScriptController.h"
#include "window/ScriptTreeModel.h"

#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

#include <gtest/gtest.h>

#include <memory>

using namespace ScriptTestSupport;

TEST_F(ScriptLibraryTest, AddScriptAndNewName)
{
    AlertRecorder recorder;
    // Windows take their syntax from the identifier when they are built.
    const auto windowOf = [](const QString& identifier) {
        Document* document = new TestDocument;
        document->setWindowIdentifier(identifier);
        document->setLoadedText(QStringLiteral("print 1;\n"));
        auto* controller = new WindowController(document);
        controller->windowDidLoad();
        return controller;
    };
    WindowController& perlWindow = *windowOf(QStringLiteral("None:Perl"));

    // Running the document itself: a Perl text without a "#!" line has no command.
    ScriptCommands::runScript(&perlWindow);
    ASSERT_EQ(recorder.alerts.size(), 1u);
    EXPECT_EQ(recorder.alerts[0].text, "Not Found unix commands.");

    // Sum becomes Sum.pl in the Script folder; a second Sum is refused.
    ScriptObjectPtr folder = library().addScriptFolder(QStringLiteral("Tools"), nullptr);
    ASSERT_TRUE(ScriptCommands::addScriptNamed(&perlWindow, QStringLiteral("Sum"), folder));
    EXPECT_EQ(TestSupport::readFile(script("Sum.pl")), "print 1;\n");
    ASSERT_EQ(folder->numberOfChildren(), 1);
    const ScriptObjectPtr sum = folder->childAtIndex(0);
    EXPECT_EQ(sum->title(), "Sum");
    EXPECT_FALSE(ScriptCommands::addScriptNamed(&perlWindow, QStringLiteral("Sum"), nullptr));
    EXPECT_EQ(library().entries(nullptr).size(), 1);

    // New names through the pane: Sum → Total moves the file; a taken name changes nothing.
    ScriptController pane(&perlWindow);
    pane.outlineView()->expandAll();
    pane.outlineView()->setCurrentIndex(pane.treeController()->indexOf(sum));
    EXPECT_TRUE(pane.renameTo(QStringLiteral("Total")));
    EXPECT_FALSE(QFileInfo::exists(script("Sum.pl")));
    EXPECT_EQ(TestSupport::readFile(script("Total.pl")), "print 1;\n");
    EXPECT_EQ(sum->path(), "Total.pl");
    TestSupport::writeFile(script("Other.pl"), "other");
    pane.outlineView()->setCurrentIndex(pane.treeController()->indexOf(sum));
    EXPECT_FALSE(pane.renameTo(QStringLiteral("Other")));
    EXPECT_EQ(sum->path(), "Total.pl");
    EXPECT_EQ(TestSupport::readFile(script("Other.pl")), "other");
    EXPECT_TRUE(QFileInfo::exists(script("Total.pl")));
    delete perlWindow.document();
}

TEST_F(ScriptLibraryTest, DeletingAFolderDeletesEveryFileBelowIt)
{
    ScriptObjectPtr top = library().addScriptFolder(QStringLiteral("A"), nullptr);
    ScriptObjectPtr middle = library().addScriptFolder(QStringLiteral("B"), top);
    ScriptObjectPtr deep = library().addScriptFolder(QStringLiteral("C"), middle);
    addFile(QStringLiteral("one.sh"), top);
    addFile(QStringLiteral("two.sh"), middle);
    addFile(QStringLiteral("three.sh"), deep);
    addFile(QStringLiteral("kept.sh"), nullptr);

    Document* document = openDocument(QString());
    ScriptController pane(windowOf(document));
    pane.outlineView()->setCurrentIndex(pane.treeController()->indexOf(top));
    ASSERT_EQ(pane.selectedObject(), top);
    pane.removeScriptObject();
    for (const char* gone : {"one.sh", "two.sh", "three.sh"}) {
        EXPECT_FALSE(QFileInfo::exists(script(gone))) << gone;
    }
    EXPECT_TRUE(QFileInfo::exists(script("kept.sh")));
    EXPECT_EQ(titles(library().entries(nullptr)), QStringList({"kept"}));
    EXPECT_EQ(pane.treeController()->rowCount(), 1);
}

TEST_F(ScriptLibraryTest, ImportCopiesTheScriptsOnce)
{
    const QString dir = TestSupport::makeTempDir();
    const QStringList refused = library().importFiles(
        {TestSupport::writeFile(dir + "/a.sh", "#!/bin/sh -c\n"),
         TestSupport::writeFile(dir + "/b.js", "1;"), TestSupport::writeFile(dir + "/c.py", "#"),
         TestSupport::writeFile(dir + "/d.applescript", "x"), dir});
    EXPECT_TRUE(refused.isEmpty());
    EXPECT_EQ(titles(library().entries(nullptr)), QStringList({"a", "b", "d"}));
    EXPECT_TRUE(QFileInfo::exists(script("b.js")));
    EXPECT_FALSE(QFileInfo::exists(script("c.py")));
    // The same name again is refused and leaves the library as it was.
    EXPECT_EQ(library().importFiles({dir + "/a.sh"}), QStringList({dir + "/a.sh"}));
    EXPECT_EQ(library().entries(nullptr).size(), 3);
}

TEST_F(ScriptLibraryTest, ScriptsPutInTheFolderJoinTheLibrary)
{
    // The manager writes the library out whenever it changes.
    ScriptManager::sharedScriptManager();
    TestSupport::writeFile(script("Before.sh"), "#!/bin/sh\necho before\n");
    Document* document = openDocument(QString());
    QMenu* menu = scriptsMenuOf(document);
    ScriptController pane(windowOf(document));

    // What is there already joins at once; later files as they come, without a restart.
    ScriptFolderWatcher watcher(library());
    EXPECT_EQ(titles(library().entries(nullptr)), QStringList({"Before"}));
    TestSupport::writeFile(script(".hidden.sh"), "#!/bin/sh\n");
    TestSupport::writeFile(script("notes.txt"), "not a script");
    TestSupport::writeFile(script("Dropped.py"), "#!/usr/bin/env python3\nprint('dropped')\n");
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return itemTitles(menu).contains(QStringLiteral("Dropped")); }, 10000));
    EXPECT_EQ(itemTitles(menu), QStringList({"-", "Before", "Dropped", "-", "Import Script...",
                                             "Open Script Dictionary..."}));
    EXPECT_EQ(pane.treeController()->rowCount(), 2);

    // The settings hold the library as it is now, not as it was at the last clean quit.
    const auto stored = ScriptManager::unarchivedScriptDataSource(
        UserDefaults::standardUserDefaults().dataForKey(QStringLiteral("ScriptAllItems")));
    ASSERT_TRUE(stored);
    EXPECT_EQ(titles(*stored), QStringList({"Before", "Dropped"}));

    // Running it from the menu.
    QSignalSpy stopped(&ScriptManager::sharedScriptManager(), &ScriptManager::processStopped);
    menu->actions()[itemTitles(menu, true).indexOf("Dropped")]->trigger();
    ASSERT_TRUE(stopped.wait(10000));
    EXPECT_EQ(document->string(), "dropped\n");
}

TEST_F(ScriptLibraryTest, DragAndDropMovesEntriesNotFiles)
{
    ScriptObjectPtr folder = library().addScriptFolder(QStringLiteral("Folder"), nullptr);
    addFile(QStringLiteral("inside.sh"), folder);
    addFile(QStringLiteral("first.sh"), nullptr);
    ScriptObjectPtr second = addFile(QStringLiteral("second.sh"), nullptr);
    Document* document = openDocument(QString());
    ScriptController pane(windowOf(document));
    ScriptTreeModel* model = pane.treeController();
    model->reloadData();

    const QModelIndex folderRow = model->indexOf(folder);
    std::unique_ptr<QMimeData> data(model->mimeData({model->indexOf(second)}));
    // Between two rows inside the folder: moved there, the file stays where it is.
    ASSERT_TRUE(model->dropMimeData(data.get(), Qt::MoveAction, 0, 0, folderRow));
    EXPECT_EQ(titles(library().entries(nullptr)), QStringList({"Folder", "first"}));
    EXPECT_EQ(titles(library().entries(folder)), QStringList({"second", "inside"}));
    EXPECT_TRUE(QFileInfo::exists(script("second.sh")));
    EXPECT_EQ(model->rowCount(model->indexOf(folder)), 2);

    // Within the same level, after a later row; a folder never goes into itself.
    data.reset(model->mimeData({model->indexOf(folder)}));
    ASSERT_TRUE(model->dropMimeData(data.get(), Qt::MoveAction, 2, 0, QModelIndex()));
    EXPECT_EQ(titles(library().entries(nullptr)), QStringList({"first", "Folder"}));
    data.reset(model->mimeData({model->indexOf(folder)}));
    EXPECT_FALSE(model->dropMimeData(data.get(), Qt::MoveAction, 0, 0, model->indexOf(folder)));
}
