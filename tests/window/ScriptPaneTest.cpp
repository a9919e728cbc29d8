// The script pane on a real Script folder: its tree, its menus and sheets, and the alerts
// of the script commands.
#include "app/ScriptCommands.h"
#include "scripts/ScriptTestSupport.h"
#include "window/ScriptController.h"
#include "window/ScriptSheet.h"
#include "window/ScriptTreeModel.h"

#include <QApplication>
#include <QComboBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QSignalSpy>
#include <QTimer>
#include <QTreeView>

#include <gtest/gtest.h>

#include <memory>

using namespace ScriptTestSupport;

TEST_F(ScriptLibraryTest, DragAndDropBetweenRowsOnly)
{
    ScriptObjectPtr folder = library().addScriptFolder(QStringLiteral("Folder"), nullptr);
    addFile(QStringLiteral("inside.sh"), folder);
    addFile(QStringLiteral("first.sh"), nullptr);
    ScriptObjectPtr second = addFile(QStringLiteral("second.sh"), nullptr);
    Document* document = openDocument(QString());
    ScriptController pane(
        DocumentController::sharedDocumentController().windowControllerOf(document));
    ScriptTreeModel* model = pane.treeController();
    model->reloadData();

    const QModelIndex folderRow = model->indexOf(folder);
    std::unique_ptr<QMimeData> data(model->mimeData({model->indexOf(second)}));
    EXPECT_TRUE(data->hasFormat("ScriptObject"));
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
    WindowController* controller =
        DocumentController::sharedDocumentController().windowControllerOf(document);
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
