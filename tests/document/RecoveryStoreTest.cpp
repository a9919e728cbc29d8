// Recovery copies as a user meets them: left by an editor that ended badly, offered back at
// the next start whatever its lock file says, never written over a file that another program
// changed meanwhile, and never lost to a full disk or a folder that cannot be made.
#include "document/RecoveryStore.h"

#include "SaveTestSupport.h"
#include "TestSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <unistd.h>

using namespace SaveTestSupport;

namespace {

QStringList foldersIn(const QString& root)
{
    return QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
}

// What an editor that ended leaves: its folder with the document's copy, its lock free.
QString leftByAnEndedEditor(const QString& root, Document* document)
{
    RecoveryStore ended(root);
    EXPECT_TRUE(ended.writeCopy(document)) << ended.errorString().toStdString();
    const QString folder = ended.folder();
    ended.keepCopiesForNextStart({});
    return folder;
}

Document* documentAt(const QString& path)
{
    for (Document* document : DocumentController::sharedDocumentController().documents()) {
        if (document->fileURL() == path) {
            return document;
        }
    }
    return nullptr;
}

} // namespace

TEST(RecoveryStore, OrphansComeBackWhateverTheirLockSaysAndKeepTheStateOfTheirFile)
{
    const QString root = TestSupport::makeTempDir() + "/Recovery";
    const QString dir = TestSupport::makeTempDir();
    DocumentController& controller = DocumentController::sharedDocumentController();
    controller.discardAllDocuments();

    const auto edited = [&](const QString& name, const QByteArray& onDisk, const QString& text) {
        auto* document = new TestDocument(&controller);
        if (!name.isEmpty()) {
            EXPECT_TRUE(
                document->readFromURL(TestSupport::writeFile(dir + "/" + name, onDisk), QString()));
        }
        document->setTextStorage(text);
        return document;
    };
    Document* untitled = edited({}, {}, QStringLiteral("never saved \u00e9\n"));
    Document* kept = edited("kept.txt", "on disk\n", "kept edit\n");
    Document* changed = edited("changed.txt", "before\n", "changed edit\n");
    Document* gone = edited("gone.txt", "going\n", "gone edit\n");
    Document* running = edited("running.txt", "running\n", "running edit\n");

    // Each ended editor's lock file says something else; none of it counts.
    struct Case {
        const char* lock;
        Document* document;
    };
    const Case cases[] = {
        {"", untitled},            // empty, as a crash while it was made leaves it
        {"999999\n", kept},        // a process long gone
        {nullptr, changed},        // no lock file at all
        {"keep as written", gone}, // whatever a stopped editor wrote
    };
    for (const Case& c : cases) {
        const QString lock = leftByAnEndedEditor(root, c.document) + "/lock";
        if (c.lock) {
            TestSupport::writeFile(lock, c.lock);
        } else {
            QFile::remove(lock);
        }
    }
    // An editor that still runs keeps its copies to itself.
    RecoveryStore alive(root);
    ASSERT_TRUE(alive.writeCopy(running));
    // A document without unsaved changes leaves no copy.
    TestDocument clean;
    EXPECT_TRUE(alive.writeCopy(&clean));
    EXPECT_EQ(filesIn(alive.folder()).filter(".copy").size(), 1);

    const QString keptFile = kept->fileURL();
    const QString changedFile = changed->fileURL();
    const QString goneFile = gone->fileURL();
    controller.discardAllDocuments();
    delete untitled;
    delete kept;
    delete changed;
    delete gone;
    // Between the end and the next start another program writes one file and removes another.
    ASSERT_EQ(
        QProcess::execute("sh", {"-c", "printf 'other program\\n' > \"$1\"", "sh", changedFile}),
        0);
    ASSERT_TRUE(QFile::remove(goneFile));

    RecoveryStore store(root);
    EXPECT_EQ(store.orphanedEntries().size(), 4);
    const RecoveryStore::Recovery recovery = store.recoverOrphans(controller);
    EXPECT_EQ(recovery.count, 4);
    ASSERT_EQ(controller.documents().size(), 4u);
    ASSERT_EQ(recovery.notices.size(), 2) << recovery.notices.join("\n").toStdString();
    EXPECT_TRUE(recovery.notices.filter("changed.txt")
                    .value(0)
                    .contains("has been changed by another application"));
    EXPECT_TRUE(recovery.notices.filter("gone.txt").value(0).contains("moved or deleted"));

    for (Document* document : controller.documents()) {
        EXPECT_TRUE(document->isDocumentEdited());
        // Each copy is this editor's own now: there for its crash, gone when saved.
        EXPECT_TRUE(store.copyFile(document).startsWith(store.folder()));
        EXPECT_TRUE(QFile::exists(store.copyFile(document)));
    }
    Document* recoveredUntitled = documentAt(QString());
    ASSERT_TRUE(recoveredUntitled);
    EXPECT_EQ(recoveredUntitled->string(), QStringLiteral("never saved \u00e9\n"));

    // A file nobody touched: the edits come back over it, undo shows the disk, Save writes.
    Document* recoveredKept = documentAt(keptFile);
    ASSERT_TRUE(recoveredKept);
    EXPECT_EQ(recoveredKept->string(), "kept edit\n");
    EXPECT_EQ(TestSupport::readFile(keptFile), "on disk\n");
    EXPECT_TRUE(recoveredKept->writeSafelyToURL(keptFile, QString(), Document::Save));
    EXPECT_EQ(TestSupport::readFile(keptFile), "kept edit\n");
    EXPECT_TRUE(store.copyFile(recoveredKept).isEmpty());

    // The file another program changed: the first Save says so and leaves its bytes.
    Document* recoveredChanged = documentAt(changedFile);
    ASSERT_TRUE(recoveredChanged);
    EXPECT_EQ(recoveredChanged->string(), "changed edit\n");
    QString error;
    EXPECT_FALSE(
        recoveredChanged->writeSafelyToURL(changedFile, QString(), Document::Save, &error));
    EXPECT_TRUE(error.contains("has been changed by another application")) << error.toStdString();
    EXPECT_EQ(TestSupport::readFile(changedFile), "other program\n");
    EXPECT_TRUE(recoveredChanged->isDocumentEdited());
    EXPECT_TRUE(recoveredChanged->writeSafelyToURL(changedFile, QString(), Document::Save));
    EXPECT_EQ(TestSupport::readFile(changedFile), "changed edit\n");

    // The file that went away is written again.
    Document* recoveredGone = documentAt(goneFile);
    ASSERT_TRUE(recoveredGone);
    EXPECT_TRUE(recoveredGone->writeSafelyToURL(goneFile, QString(), Document::Save));
    EXPECT_EQ(TestSupport::readFile(goneFile), "gone edit\n");

    // The ended editors' folders are gone; the running one's and this one's stay.
    EXPECT_EQ(foldersIn(root).size(), 2);
    EXPECT_TRUE(store.orphanedEntries().isEmpty());
    controller.discardAllDocuments();
    // Closing without saving removes the copies this store took over.
    EXPECT_EQ(filesIn(store.folder()), QStringList{"lock"});
}

TEST(RecoveryStore, AFullDiskOrAFolderThatCannotBeMadeNeverCostsTheLastGoodCopy)
{
    // A folder that cannot be made is named with the system's reason, once per run.
    const QString blocked = TestSupport::writeFile(TestSupport::makeTempDir() + "/file", "x");
    TestDocument document;
    document.setTextStorage(QStringLiteral("good copy\n"));
    {
        RecoveryStore store(blocked + "/Recovery");
        QSignalSpy said(&store, &RecoveryStore::recoveryFailed);
        EXPECT_FALSE(store.writeCopy(&document));
        EXPECT_FALSE(store.writeCopy(&document));
        ASSERT_EQ(said.size(), 1);
        const QString message = said.at(0).at(0).toString();
        EXPECT_TRUE(message.contains(blocked + "/Recovery")) << message.toStdString();
        EXPECT_TRUE(message.contains("Not a directory")) << message.toStdString();
        EXPECT_EQ(store.errorString(), message);
    }

    QString why;
    const QString disk = mountSmallDisk(&why);
    if (disk.isEmpty()) {
        GTEST_SKIP() << "mounting a 2 MB tmpfs is not permitted here (" << why.toStdString()
                     << "): the full-disk case is not tested";
    }
    const auto unmount =
        qScopeGuard([&] { ::umount2(QFile::encodeName(disk).constData(), MNT_DETACH); });
    const QString root = disk + "/Recovery";
    QString folder;
    QByteArray good;
    {
        RecoveryStore store(root);
        QSignalSpy said(&store, &RecoveryStore::recoveryFailed);
        ASSERT_TRUE(store.writeCopy(&document)) << store.errorString().toStdString();
        folder = store.folder();
        good = TestSupport::readFile(store.copyFile(&document));
        EXPECT_TRUE(good.endsWith("\ngood copy\n"));

        fillUp(disk);
        // Small and large alike: neither fits, and neither may cost the good copy.
        for (const qsizetype size : {qsizetype(10), qsizetype(1) << 20}) {
            document.setTextStorage(QString(size, u'n'));
            EXPECT_FALSE(store.writeCopy(&document));
            EXPECT_TRUE(store.errorString().contains("No space left on device"))
                << store.errorString().toStdString();
            EXPECT_EQ(TestSupport::readFile(store.copyFile(&document)), good);
            // No half-written copy is left behind.
            EXPECT_EQ(filesIn(folder).size(), 2) << filesIn(folder).join(' ').toStdString();
        }
        EXPECT_EQ(said.size(), 1);
        store.keepCopiesForNextStart({&document});
    }
    // What the next start is offered is the last good copy.
    const QList<RecoveryStore::Entry> entries = RecoveryStore(root).orphanedEntries();
    ASSERT_EQ(entries.size(), 1);
    EXPECT_EQ(entries[0].text, "good copy\n");
}
