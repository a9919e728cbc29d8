#include "document/RecoveryStore.h"

#include "TestSupport.h"
#include "document/Document.h"
#include "document/DocumentController.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <optional>

namespace {

// Makes `folder`'s copies look like those of an editor that was killed: the same files in
// a folder whose lock file names a process that no longer exists.
void leaveAsOrphan(const QString& folder, const QString& orphan)
{
    QDir().mkpath(orphan);
    for (const QString& name : QDir(folder).entryList(QDir::Files)) {
        QByteArray bytes = TestSupport::readFile(folder + "/" + name);
        if (name == "lock") {
            QList<QByteArray> lines = bytes.split('\n');
            lines[0] = "999999";
            bytes = lines.join('\n');
        }
        TestSupport::writeFile(orphan + "/" + name, bytes);
    }
}

} // namespace

TEST(RecoveryStore, CopiesOfUnsavedTextOutliveTheirEditorAndComeBack)
{
    const QString root = TestSupport::makeTempDir() + "/Recovery";
    const QString dir = TestSupport::makeTempDir();
    const QString file = TestSupport::writeFile(dir + "/kept.txt", "on disk\n");

    Document untitled;
    untitled.textStorage()->setPlainText(QStringLiteral("never saved \u00e9\n"));
    Document edited;
    ASSERT_TRUE(edited.readFromURL(file, QString()));
    edited.setTextStorage(QStringLiteral("edited\n"));
    Document clean;
    {
        RecoveryStore killed(root);
        killed.writeCopy(&untitled);
        killed.writeCopy(&edited);
        killed.writeCopy(&clean); // nothing unsaved, nothing kept
        EXPECT_EQ(QDir(killed.folder()).entryList({"*.txt"}, QDir::Files).size(), 2);
        // While its editor runs, a folder is no orphan.
        EXPECT_TRUE(RecoveryStore(root).orphanedEntries().isEmpty());
        leaveAsOrphan(killed.folder(), root + "/999999-dead");
    }
    // A clean end removes the editor's own folder.
    EXPECT_EQ(QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 1);

    RecoveryStore store(root);
    const QList<RecoveryStore::Entry> entries = store.orphanedEntries();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0].text, QStringLiteral("never saved \u00e9\n"));
    EXPECT_TRUE(entries[0].path.isEmpty());
    EXPECT_EQ(entries[1].text, QStringLiteral("edited\n"));
    EXPECT_EQ(entries[1].path, file);

    // Recovering opens both with their unsaved text; the file on disk is untouched.
    DocumentController& controller = DocumentController::sharedDocumentController();
    controller.discardAllDocuments();
    EXPECT_EQ(store.recoverOrphans(), 2);
    ASSERT_EQ(controller.documents().size(), 2u);
    EXPECT_EQ(controller.documents()[0]->string(), QStringLiteral("never saved \u00e9\n"));
    EXPECT_TRUE(controller.documents()[0]->fileURL().isEmpty());
    EXPECT_EQ(controller.documents()[1]->fileURL(), file);
    EXPECT_EQ(controller.documents()[1]->string(), QStringLiteral("edited\n"));
    EXPECT_TRUE(controller.documents()[1]->isDocumentEdited());
    EXPECT_EQ(TestSupport::readFile(file), "on disk\n");
    EXPECT_TRUE(store.orphanedEntries().isEmpty());
    controller.discardAllDocuments();
}

TEST(RecoveryStore, AnEditorThatEndsCleanlyLeavesNothingAndSaysNothing)
{
    // What the program would print on its standard error while the store ends.
    static QStringList messages;
    messages.clear();
    const QString root = TestSupport::makeTempDir() + "/Recovery";
    Document untitled;
    untitled.textStorage()->setPlainText(QStringLiteral("never saved\n"));
    std::optional<RecoveryStore> store(std::in_place, root);
    store->writeCopy(&untitled);
    ASSERT_EQ(QDir(store->folder()).entryList({"*.txt"}, QDir::Files).size(), 1);
    {
        const QtMessageHandler previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& text) { messages << text; });
        const auto restore = qScopeGuard([previous] { qInstallMessageHandler(previous); });
        store.reset();
    }
    EXPECT_TRUE(QDir(root).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).isEmpty());
    EXPECT_TRUE(messages.isEmpty()) << messages.join(u'\n').toStdString();
}
