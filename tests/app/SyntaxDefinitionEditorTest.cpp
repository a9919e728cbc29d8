#include "app/SyntaxDefinitionEditor.h"

#include "app/DocumentController.h"
#include "app/SyntaxEntryTableModel.h"
#include "platform/FileManager.h"
#include "platform/PropertyList.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QListWidget>
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
    EXPECT_EQ(
        QDir(FileManager::syntaxDefinitionDirectoryPathInPath()).entryList(QDir::Files).size(), 18);

    // Removing a shipped definition deletes its file; restoring all brings it back.
    e.choose("Ruby");
    const int row = e.editor.syntaxTableView()->currentRow();
    e.editor.segmentSyntaxDefinition(1);
    EXPECT_FALSE(e.editor.definitions().contains("Ruby"));
    EXPECT_TRUE(definitionFile("Ruby").isEmpty());
    // The row shown is the definition loaded, which the next edits change.
    EXPECT_EQ(e.editor.syntaxTableView()->currentRow(), row);
    EXPECT_EQ(e.editor.syntaxDictionary()["Name"], e.editor.definitions()[row]);
    e.editor.syntaxRestoreAll();
    EXPECT_TRUE(e.editor.definitions().contains("Ruby"));
    EXPECT_EQ(definitionFile("Ruby")["Name"].toString(), "Ruby");

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

    // A definition that is not shipped cannot be restored, and its file stays.
    e.choose("Untitled");
    e.editor.syntaxRestore();
    EXPECT_EQ(definitionFile("Untitled")["Name"].toString(), "Untitled");
}
