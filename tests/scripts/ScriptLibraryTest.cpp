// The library commands on a real Script folder, the Scripts menu and the script pane: its
// tree, its menus and sheets.
#include "scripts/ScriptLibrary.h"

#include "ScriptTestSupport.h"
#include "TestSupport.h"
#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/ScriptCommands.h"
#include "app/ScriptMenu.h"
#include "platform/FileManager.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptFolderWatcher.h"
#include "scripts/ScriptManager.h"
#include "window/ScriptController.h"
#include "window/ScriptSheet.h"
#include "window/ScriptTreeModel.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
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
    // A window whose user chose no syntax.
    WindowController* plain = windowOf(QStringLiteral("None:None"));
    QAction none(QStringLiteral("None"));
    plain->selectedSyntaxColoring(&none);
    WindowController* c = windowOf(QStringLiteral("None:C"));
    WindowController& perlWindow = *windowOf(QStringLiteral("None:Perl"));

    // The checks before the sheet.
    ASSERT_FALSE(plain->syntaxColouring());
    ScriptCommands::addScript(plain);
    ScriptCommands::runScript(plain);
    ScriptCommands::addScript(c);
    ASSERT_EQ(recorder.alerts.size(), 3u);
    EXPECT_EQ(recorder.alerts[0].text, "Selection of syntax colouring is required.");
    EXPECT_EQ(recorder.alerts[1].text, "Selection of syntax colouring is required.");
    EXPECT_EQ(recorder.alerts[2].text, "Add Script to AppleScript and ShellScript, Perl, PHP, "
                                       "Python, Ruby Only. \nPlease check syntax colouring.");

    // Running the document itself: a Perl text without a "#!" line has no command.
    ScriptCommands::runScript(&perlWindow);
    ASSERT_EQ(recorder.alerts.size(), 4u);
    EXPECT_EQ(recorder.alerts[3].text, "Not Found unix commands.");

    // Sum becomes Sum.pl in the Script folder; a second Sum is refused.
    ScriptObjectPtr folder = library().addScriptFolder(QStringLiteral("Tools"), nullptr);
    ASSERT_TRUE(ScriptCommands::addScriptNamed(&perlWindow, QStringLiteral("Sum"), folder));
    EXPECT_EQ(TestSupport::readFile(script("Sum.pl")), "print 1;\n");
    ASSERT_EQ(folder->numberOfChildren(), 1);
    const ScriptObjectPtr sum = folder->childAtIndex(0);
    EXPECT_EQ(sum->title(), "Sum");
    EXPECT_FALSE(sum->initApp());
    EXPECT_FALSE(ScriptCommands::addScriptNamed(&perlWindow, QStringLiteral("Sum"), nullptr));
    EXPECT_EQ(recorder.alerts.back().text, "A Script was not able to be created.");
    EXPECT_TRUE(recorder.alerts.back().caution);
    EXPECT_EQ(library().entries(nullptr).size(), 1);

    // In-process scripts are kept as JavaScript files.
    WindowController* inProcess = windowOf(QStringLiteral("None:AppleScript"));
    ASSERT_TRUE(ScriptCommands::addScriptNamed(inProcess, QStringLiteral("Mine"), nullptr));
    EXPECT_TRUE(QFileInfo::exists(script("Mine.js")));
    delete inProcess->document();

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
    EXPECT_EQ(recorder.alerts.back().text, "Name was not able to be changed.");
    EXPECT_EQ(sum->path(), "Total.pl");
    EXPECT_EQ(TestSupport::readFile(script("Other.pl")), "other");
    EXPECT_TRUE(QFileInfo::exists(script("Total.pl")));
    // A folder's new name is only its title.
    EXPECT_TRUE(library().rename(folder, QStringLiteral("Maths")));
    EXPECT_EQ(folder->title(), "Maths");
    for (WindowController* controller : {plain, c, &perlWindow}) {
        delete controller->document();
    }
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

TEST_F(ScriptLibraryTest, ScriptsMenuFollowsTheLibrary)
{
    AlertRecorder recorder;
    Document* one = openDocument(QString());
    Document* two = openDocument(QString());
    QMenu* menu = scriptsMenuOf(one);
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(itemTitles(menu),
              QStringList({"-", "Import Script...", "Open Script Dictionary..."}));
    EXPECT_FALSE(itemTitles(menu, true).filter("Run Script").isEmpty());

    // A folder three levels deep: a third-level submenu, indentation level 2 in the pop-up.
    ScriptObjectPtr a = library().addScriptFolder(QStringLiteral("A"), nullptr);
    ScriptObjectPtr b = library().addScriptFolder(QStringLiteral("B"), a);
    ScriptObjectPtr c = library().addScriptFolder(QStringLiteral("C"), b);
    addFile(QStringLiteral("deep.sh"), c);
    addFile(QStringLiteral("gone.sh"), nullptr);
    ScriptManager::sharedScriptManager().postScriptDataSourceChanged();
    for (Document* document : {one, two}) {
        QMenu* scripts = scriptsMenuOf(document);
        EXPECT_EQ(itemTitles(scripts), QStringList({"-", "A", "gone", "-", "Import Script...",
                                                    "Open Script Dictionary..."}));
    }
    QMenu* level1 = menu->actions()[itemTitles(menu, true).indexOf("A")]->menu();
    ASSERT_NE(level1, nullptr);
    QMenu* level2 = level1->actions().value(0)->menu();
    ASSERT_NE(level2, nullptr);
    QMenu* level3 = level2->actions().value(0)->menu();
    ASSERT_NE(level3, nullptr);
    EXPECT_EQ(level3->title(), "C");
    EXPECT_EQ(itemTitles(level3), QStringList({"deep"}));

    ScriptSheet sheet(library(), nullptr, true);
    sheet.makeFolderPopup();
    QComboBox* popUp = sheet.scriptFolderPopUp();
    ASSERT_EQ(popUp->count(), 5); // Scripts Menu, separator, A, B, C
    EXPECT_EQ(popUp->itemText(0), "Scripts Menu");
    EXPECT_EQ(popUp->itemData(4, Qt::UserRole + 1).toInt(), 2);
    popUp->setCurrentIndex(4);
    EXPECT_EQ(sheet.selectedFolder(), c);

    // Running an entry whose file has gone.
    QFile::remove(script("gone.sh"));
    QAction* entry = menu->actions()[itemTitles(menu, true).indexOf("gone")];
    entry->trigger();
    ASSERT_EQ(recorder.alerts.size(), 1u);
    EXPECT_EQ(recorder.alerts[0].title, "No such file or directory.");
    EXPECT_EQ(recorder.alerts[0].text, "Notice");

    // Running one that is there inserts its output.
    QSignalSpy stopped(&ScriptManager::sharedScriptManager(), &ScriptManager::processStopped);
    ScriptManager::sharedScriptManager().runRegisterScript(c->childAtIndex(0));
    ASSERT_TRUE(stopped.wait(5000));
    EXPECT_EQ(two->string(), "deep.sh\n");
}

TEST_F(ScriptLibraryTest, ImportDictionaryAndReadMe)
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

    DocumentController& documents = DocumentController::sharedDocumentController();
    Application::instance()->delegate().openScriptDictionary(nullptr);
    ASSERT_FALSE(documents.documents().empty());
    const QString xml = documents.documents().back()->string();
    EXPECT_TRUE(xml.contains("<property name=\"textRange\" type=\"ax\" access=\"readwrite\"/>"));
    EXPECT_TRUE(xml.contains("org.tessaran.Tessaran.Application"));

    Application::instance()->readMe(nullptr);
    EXPECT_TRUE(documents.documents().back()->string().startsWith("Tessaran scripts"));
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

TEST_F(ScriptLibraryTest, DragAndDropBetweenRowsOnly)
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
    // Onto the folder's row, or onto no row at the top level: refused.
    EXPECT_FALSE(model->canDropMimeData(data.get(), Qt::MoveAction, -1, 0, folderRow));
    EXPECT_FALSE(model->dropMimeData(data.get(), Qt::MoveAction, -1, 0, folderRow));
    EXPECT_FALSE(model->dropMimeData(data.get(), Qt::MoveAction, -1, 0, QModelIndex()));
    EXPECT_EQ(titles(library().entries(nullptr)), QStringList({"Folder", "first", "second"}));

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

TEST_F(ScriptLibraryTest, PaneDoubleClickContextMenuAndSheets)
{
    ScriptObjectPtr folder = library().addScriptFolder(QStringLiteral("Folder"), nullptr);
    ScriptObjectPtr hello = addFile(QStringLiteral("hello.sh"), folder);
    Document* document = openDocument(QStringLiteral("<>"), 1, 0);
    WindowController* controller = windowOf(document);
    ScriptController pane(controller);
    pane.resize(240, 200);
    pane.show();
    QTreeView* tree = pane.outlineView();
    ScriptTreeModel* model = pane.treeController();

    // A double click on a folder opens and closes it.
    const QModelIndex folderRow = model->indexOf(folder);
    tree->setCurrentIndex(folderRow);
    pane.doubleClickedOutlineViewRow(tree);
    EXPECT_TRUE(tree->isExpanded(folderRow));
    pane.doubleClickedOutlineViewRow(tree);
    EXPECT_FALSE(tree->isExpanded(folderRow));
    tree->expand(folderRow);

    // The context menu of a row selects it; its first entry runs the script.
    const QRect row = tree->visualRect(model->indexOf(hello));
    QMenu* menu = pane.menuNeedsUpdate(row.center());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(pane.selectedObject(), hello);
    EXPECT_EQ(itemTitles(menu),
              QStringList({"Run", "Show Source", "Export...", "-", "New Name...", "Delete"}));
    QSignalSpy stopped(&ScriptManager::sharedScriptManager(), &ScriptManager::processStopped);
    menu->actions().first()->trigger();
    ASSERT_TRUE(stopped.wait(5000));
    EXPECT_EQ(document->string(), "<hello.sh\n>");
    delete menu;
    EXPECT_EQ(pane.menuNeedsUpdate(QPoint(5, tree->viewport()->height() - 2)), nullptr);

    // The folder stays open when the library changes.
    library().addScriptFolder(QStringLiteral("More"), nullptr);
    EXPECT_TRUE(tree->isExpanded(model->indexOf(folder)));

    // Adding a folder through the sheet: the typed name, in the chosen folder.
    QTimer::singleShot(0, [] {
        auto* sheet = qobject_cast<ScriptSheet*>(QApplication::activeModalWidget());
        ASSERT_NE(sheet, nullptr);
        EXPECT_EQ(sheet->scriptLabel()->text(), "Add script folder :");
        sheet->scriptFolderPopUp()->setCurrentIndex(2); // Folder
        sheet->scriptTitleField()->setText(QStringLiteral("Inner"));
        sheet->accept();
    });
    ScriptCommands::addScriptFolder(controller->window());
    EXPECT_EQ(titles(library().entries(folder)), QStringList({"hello", "Inner"}));
    // Cancelled: nothing changes.
    QTimer::singleShot(0, [] { QApplication::activeModalWidget()->close(); });
    ScriptCommands::addScriptFolder(controller->window());
    EXPECT_EQ(titles(library().entries(nullptr)), QStringList({"Folder", "More"}));
}
