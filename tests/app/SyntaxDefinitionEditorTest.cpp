#include "app/SyntaxDefinitionEditor.h"

#include "TestSupport.h"
#include "app/DocumentController.h"
#include "app/SyntaxEntryTableModel.h"
#include "platform/FileManager.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"

#include <QAbstractItemDelegate>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QStyleOptionViewItem>
#include <QTableView>

#include <gtest/gtest.h>

namespace {

// A syntax folder holding exactly the shipped definitions.
void installShippedDefinitions()
{
    const QString folder = FileManager::syntaxDefinitionDirectoryPathInPath();
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    for (const QString& name : DocumentController::shippedSyntaxNames()) {
        const QString path = folder + u'/' + name + QStringLiteral(".plist");
        QFile::copy(QStringLiteral(":/SyntaxDefinition/") + name + QStringLiteral(".plist"), path);
        QFile::setPermissions(path, QFile::permissions(path) | QFile::WriteOwner);
    }
}

QVariantMap definitionFile(const QString& name)
{
    return PropertyList::readDictionary(
               FileManager::syntaxDefinitionDirectoryPathInPath(name + QStringLiteral(".plist")))
        .value_or(QVariantMap());
}

struct Editor {
    SyntaxDefinitionEditor editor;

    Editor()
    {
        installShippedDefinitions();
        editor.resize(600, 400);
        editor.makeSyntaxPopUpMenu();
        editor.makeSyntaxDefinitions();
    }
    void choose(const QString& name)
    {
        editor.syntaxTableView()->setCurrentRow(int(editor.definitions().indexOf(name)));
    }
    void category(const QString& key) { editor.definitionPopUp()->setCurrentText(key); }
    SyntaxEntryTableModel* model() const { return editor.entryModel(); }
    QVariant shown(int row, int column, int role = Qt::DisplayRole) const
    {
        return model()->data(model()->index(row, column), role);
    }
};

} // namespace

TEST(SyntaxDefinitionEditor, ListsTheFolderAndTheCategories)
{
    // The pop-up writes settings of the test's own.
    TestRoot root;
    Editor e;
    EXPECT_EQ(e.editor.definitions().size(), 17);
    // The default-syntax pop-up: two choices, the definitions, then "Plain Text" at the end.
    QComboBox* popUp = e.editor.defaultSyntaxPopUp();
    EXPECT_EQ(popUp->itemText(0), "Default For File Type");
    EXPECT_EQ(popUp->itemText(1), "None");
    EXPECT_EQ(popUp->findText("Plain Text"), popUp->count() - 1);
    UserDefaults& store = root.userDefaults();
    const int perl = popUp->findText("Perl");
    Q_EMIT popUp->activated(perl);
    EXPECT_TRUE(store.boolForKey("SyntaxColouring"));
    EXPECT_FALSE(store.boolForKey("DefaultForFileType"));
    EXPECT_EQ(store.stringForKey("DefaultsSyntaxName"), "Perl");
    e.editor.makeSyntaxPopUpMenu();
    EXPECT_EQ(popUp->currentIndex(), perl);
    Q_EMIT popUp->activated(1);
    EXPECT_FALSE(store.boolForKey("SyntaxColouring"));
    e.editor.makeSyntaxPopUpMenu();
    EXPECT_EQ(popUp->currentIndex(), 1);

    // Columns per category.
    e.choose("C");
    e.category("Comments");
    EXPECT_EQ(e.model()->columnCount(), 3);
    EXPECT_EQ(e.model()->columnWidths(403), (QList<int>{180, 180, 33}));
    e.category("FunctionDefinition");
    EXPECT_EQ(e.model()->headerData(1, Qt::Horizontal).toString(), " KeyType");
    EXPECT_EQ(e.shown(0, 1).toString(), "Macro");
    e.category("CaseInsensitive");
    EXPECT_EQ(e.model()->rowCount(), 1);
    EXPECT_EQ(e.model()->headerData(0, Qt::Horizontal).toString(), " Key");
    EXPECT_TRUE(e.shown(0, 0, Qt::CheckStateRole).isValid());
}

TEST(SyntaxDefinitionEditor, ColumnsEditTheirEntries)
{
    Editor e;
    e.choose("C");
    e.category("Comments");
    // Row 1 is the block comment "/*" … "*/".
    ASSERT_EQ(e.shown(1, 0).toString(), "/*");
    EXPECT_EQ(e.shown(1, 2, Qt::CheckStateRole).toInt(), Qt::Unchecked);
    e.model()->setData(e.model()->index(1, 2), Qt::Checked, Qt::CheckStateRole);
    QVariantMap entry = e.editor.syntaxDictionary()["Comments"].toList()[1].toMap();
    EXPECT_EQ(entry, (QVariantMap{{"regexPattern", "/*"}, {"regularExpression", true}}));
    EXPECT_EQ(e.shown(1, 2, Qt::CheckStateRole).toInt(), Qt::Checked);
    e.model()->setData(e.model()->index(1, 2), Qt::Unchecked, Qt::CheckStateRole);
    entry = e.editor.syntaxDictionary()["Comments"].toList()[1].toMap();
    EXPECT_EQ(entry, (QVariantMap{{"startStr", "/*"}, {"endStr", ""}}));

    // Choosing "None" as the kind stores an empty kind; the level is stored as a number.
    e.category("FunctionDefinition");
    e.model()->setData(e.model()->index(0, 1), 0);
    e.model()->setData(e.model()->index(0, 2), "3");
    entry = e.editor.syntaxDictionary()["FunctionDefinition"].toList()[0].toMap();
    EXPECT_EQ(entry["KeyType"].toString(), "");
    EXPECT_EQ(entry["IndentationLevel"], QVariant(qint64(3)));
    EXPECT_EQ(e.shown(0, 1).toString(), "None");

    // The kind column is edited with a pop-up of the kinds, the others as text.
    QTableView* table = e.editor.wordTableView();
    const QModelIndex kind = e.model()->index(1, 1);
    QAbstractItemDelegate* delegate = table->itemDelegateForIndex(kind);
    QWidget* editor = delegate->createEditor(table->viewport(), QStyleOptionViewItem(), kind);
    auto* popUp = qobject_cast<QComboBox*>(editor);
    ASSERT_NE(popUp, nullptr);
    EXPECT_EQ(popUp->count(), 11);
    EXPECT_EQ(popUp->itemText(0), "None");
    delegate->setEditorData(popUp, kind);
    EXPECT_EQ(popUp->currentText(), "Type");
    popUp->setCurrentIndex(popUp->findText("Class"));
    delegate->setModelData(popUp, e.model(), kind);
    EXPECT_EQ(e.editor.syntaxDictionary()["FunctionDefinition"].toList()[1].toMap()["KeyType"],
              "Class");
    EXPECT_TRUE(e.editor.saveSyntaxDictionary());
    delete editor;
    const QModelIndex pattern = e.model()->index(1, 0);
    EXPECT_EQ(qobject_cast<QComboBox*>(
                  delegate->createEditor(table->viewport(), QStyleOptionViewItem(), pattern)),
              nullptr);
}

TEST(SyntaxDefinitionEditor, EntriesAreAddedRemovedAndSavedOnSwitching)
{
    Editor e;
    e.choose("C");
    e.category("Keywords");
    const int rows = e.model()->rowCount();
    QTableView* table = e.editor.wordTableView();
    table->setCurrentIndex(e.model()->index(rows - 1, 0));
    e.editor.segmentKeyWordObject(1);
    EXPECT_EQ(e.model()->rowCount(), rows - 1);
    EXPECT_EQ(table->currentIndex().row(), rows - 2);
    table->setCurrentIndex(e.model()->index(3, 0));
    e.editor.segmentKeyWordObject(1);
    EXPECT_EQ(table->currentIndex().row(), 3);

    e.category("Comments");
    e.editor.segmentKeyWordObject(0);
    const QVariantList comments = e.editor.syntaxDictionary()["Comments"].toList();
    EXPECT_EQ(comments.last().toMap(), (QVariantMap{{"startStr", "new"}, {"endStr", "new"}}));
    EXPECT_EQ(table->currentIndex().row(), comments.size() - 1);

    // Nothing is written until another definition is chosen.
    EXPECT_EQ(definitionFile("C")["Keywords"].toList().size(), rows);
    e.choose("Perl");
    EXPECT_FALSE(e.editor.saveSyntaxDictionary());
    EXPECT_EQ(definitionFile("C")["Keywords"].toList().size(), rows - 2);
    EXPECT_EQ(definitionFile("C")["Comments"].toList().size(), comments.size());
    EXPECT_EQ(e.editor.syntaxDictionary()["Name"].toString(), "Perl");
}

TEST(SyntaxDefinitionEditor, DefinitionsAreAddedRemovedAndRestored)
{
    Editor e;
    // A second "Untitled" is listed; the folder keeps one file.
    e.editor.segmentSyntaxDefinition(0);
    e.editor.segmentSyntaxDefinition(0);
    EXPECT_EQ(e.editor.definitions().count("Untitled"), 2);
    EXPECT_EQ(e.editor.syntaxDictionary()["Name"].toString(), "Untitled");
    EXPECT_EQ(e.editor.syntaxTableView()->currentRow(), e.editor.definitions().size() - 1);
    EXPECT_EQ(
        QDir(FileManager::syntaxDefinitionDirectoryPathInPath()).entryList(QDir::Files).size(), 18);

    // Removing a shipped definition deletes its file; restoring all brings it back.
    e.choose("Ruby");
    const int row = e.editor.syntaxTableView()->currentRow();
    e.editor.segmentSyntaxDefinition(1);
    EXPECT_FALSE(e.editor.definitions().contains("Ruby"));
    EXPECT_TRUE(definitionFile("Ruby").isEmpty());
    EXPECT_EQ(e.editor.syntaxTableView()->currentRow(),
              std::min<int>(row, e.editor.definitions().size() - 1));
    EXPECT_EQ(e.editor.defaultSyntaxPopUp()->findText("Ruby"), -1);
    e.editor.syntaxRestoreAll();
    EXPECT_TRUE(e.editor.definitions().contains("Ruby"));
    EXPECT_EQ(definitionFile("Ruby")["Name"].toString(), "Ruby");
    EXPECT_NE(e.editor.defaultSyntaxPopUp()->findText("Ruby"), -1);

    // Restoring one puts the shipped file back over the user's edits.
    e.choose("C");
    e.category("Keywords");
    e.editor.segmentKeyWordObject(0);
    e.choose("Perl");
    e.choose("C");
    EXPECT_EQ(e.editor.syntaxDictionary()["Keywords"].toList().last().toString(), "new");
    e.editor.syntaxRestore();
    EXPECT_EQ(definitionFile("C"), PropertyList::readDictionary(":/SyntaxDefinition/C.plist"));
    EXPECT_EQ(e.editor.syntaxDictionary()["Name"].toString(), "C");
    EXPECT_NE(e.editor.syntaxDictionary()["Keywords"].toList().last().toString(), "new");

    // A definition that is not shipped cannot be restored.
    e.choose("Untitled");
    e.editor.syntaxRestore();
    EXPECT_EQ(definitionFile("Untitled")["Name"].toString(), "Untitled");
}
