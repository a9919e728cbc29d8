// Autosave as a user meets it: while they type, a recovery copy keeps up with the text; the
// file itself changes only when they save, so "Don't Save" and Revert to Saved find it as it was.
#include "TestSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "document/DocumentTextCopy.h"
#include "document/RecoveryStore.h"
#include "platform/PreferencesValues.h"
#include "platform/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

void type(Document* document, const QString& text)
{
    QTextCursor cursor(document->textStorage());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(text);
}

} // namespace

TEST(Autosave, KeepsACopyWhileTheUserTypesAndNeverWritesTheFile)
{
    TestRoot root;
    root.userDefaults().setInteger(1, SettingsKey::AutosavingDelay);
    DocumentController& controller = root.documentController();
    // The application's start reads the delay.
    controller.awakeFromNib();
    RecoveryStore& store = root.recoveryStore();
    const QByteArray onDisk = "on disk\r\n";
    const QString path = TestSupport::writeFile(TestSupport::makeTempDir() + "/notes.txt", onDisk);
    const auto copyOf = [&](Document* document) {
        const QString copy = store.copyFile(document);
        return copy.isEmpty() ? QByteArray() : TestSupport::readFile(copy);
    };

    Document* document = controller.openDocumentWithContentsOfURL(path);
    ASSERT_TRUE(document);
    // A key every 50 ms, without a pause: the copy comes all the same.
    QTimer typing;
    typing.setInterval(50);
    QObject::connect(&typing, &QTimer::timeout, [document] { type(document, "x"); });
    typing.start();
    EXPECT_TRUE(QTest::qWaitFor([&] { return copyOf(document).contains("\non disk\nx"); }, 10000));
    EXPECT_TRUE(typing.isActive());
    typing.stop();
    // The next copy holds the last key too; all the while the file is as it was.
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return copyOf(document).endsWith('\n' + document->string().toUtf8()); }, 10000));
    EXPECT_EQ(TestSupport::readFile(path), onDisk);
    EXPECT_TRUE(document->isDocumentEdited());

    // "Don't Save" discards: the file stays as it was, and so does no copy.
    const QString copy = store.copyFile(document);
    TestSupport::answerAlerts({QStringLiteral("Don’t Save")});
    EXPECT_TRUE(controller.closeDocument(document));
    controller.discardAllDocuments();
    EXPECT_FALSE(QFile::exists(copy));
    EXPECT_EQ(TestSupport::readFile(path), onDisk);

    // Revert to Saved goes back to the file on disk; Save writes it. Either ends the copy.
    document = controller.openDocumentWithContentsOfURL(path);
    ASSERT_TRUE(document);
    type(document, "reverted");
    ASSERT_TRUE(store.writeCopy(document));
    TestSupport::answerAlerts({QStringLiteral("Revert")});
    controller.revertDocumentToSaved(document);
    EXPECT_EQ(document->string(), "on disk\n");
    EXPECT_FALSE(document->isDocumentEdited());
    EXPECT_TRUE(store.copyFile(document).isEmpty());

    type(document, "saved\n");
    ASSERT_TRUE(store.writeCopy(document));
    const QString saved = store.copyFile(document);
    EXPECT_TRUE(controller.saveDocument(document));
    EXPECT_EQ(TestSupport::readFile(path), "on disk\r\nsaved\r\n");
    EXPECT_FALSE(QFile::exists(saved));
}

TEST(Autosave, TheTextIsCopiedInSlicesThatFollowTheEditsMadeMeanwhile)
{
    // A U+2029 of the file stands in the storage as another character; the copy gives the
    // file's character back, as the document's text does.
    QByteArray bytes;
    for (int i = 0; i < 300; ++i) {
        bytes += "line " + QByteArray::number(i) + (i % 60 == 7 ? "\xE2\x80\xA9" : "") + "\n";
    }
    const QString path = TestSupport::writeFile(TestSupport::makeTempDir() + "/sliced.txt", bytes);
    TestDocument document;
    ASSERT_TRUE(document.readFromURL(path, QString()));
    document.finishLoading();
    ASSERT_TRUE(document.string().contains(QChar(0x2029)));

    DocumentTextCopy copy(&document);
    copy.setSliceLength(97);
    QSignalSpy finished(&copy, &DocumentTextCopy::finished);
    const QStringList inserted = {"a", "\n", "xyz", "", "\n\n", "\u00e9"};
    QRandomGenerator random(3);
    const auto edit = [&](int at, int removed) {
        QTextCursor cursor(document.textStorage());
        const int length = document.textStorage()->characterCount() - 1;
        cursor.setPosition(std::min(at, length));
        cursor.setPosition(std::min(at + removed, length), QTextCursor::KeepAnchor);
        cursor.insertText(inserted[random.bounded(inserted.size())]);
    };
    // Edits of every size before, within, across and after the slices copied so far.
    for (int round = 0; round < 40; ++round) {
        finished.clear();
        copy.start();
        for (int turn = 0; finished.isEmpty() && turn < 10000; ++turn) {
            for (int k = random.bounded(3); k > 0; --k) {
                const int length = document.textStorage()->characterCount() - 1;
                edit(random.bounded(length + 1), random.bounded(round % 4 == 0 ? 300 : 3));
            }
            QCoreApplication::processEvents();
        }
        ASSERT_EQ(finished.size(), 1);
        ASSERT_EQ(DocumentTextCopy::text(copy.takePieces()), document.string());
    }

    // A key at every turn in what is already copied never puts the end of the copy off.
    const int length = document.textStorage()->characterCount() - 1;
    finished.clear();
    copy.start();
    int turns = 0;
    for (; finished.isEmpty() && turns < 10000; ++turns) {
        QCoreApplication::processEvents();
        edit(random.bounded(std::max(1, turns * 97 / 2)), 0);
    }
    EXPECT_LT(turns, 2 * length / 97 + 10);
    EXPECT_EQ(DocumentTextCopy::text(copy.takePieces()), document.string());
}

TEST(Autosave, ACopyIsWrittenByAWorkerWhileTheUserTypesOn)
{
    const QString root = TestSupport::makeTempDir() + "/Recovery";
    RecoveryStore store(root);
    TestDocument document;
    // More than a slice, the first ending between the halves of a pair.
    QString text(1024 * 1024 - 1, u'a');
    for (int i = 0; i < 30000; ++i) {
        text += QStringLiteral("\U0001F600 line %1 of a large text\n").arg(i);
    }
    document.setTextStorage(text);
    document.textStorage()->setModified(true);
    const auto copyOf = [&] {
        const QString copy = store.copyFile(&document);
        const QByteArray bytes = copy.isEmpty() ? QByteArray() : TestSupport::readFile(copy);
        return QString::fromUtf8(bytes.mid(bytes.indexOf('\n') + 1));
    };

    // A key at every turn while the copy is made: what is written is the text after one of
    // them.
    QSet<QString> states;
    store.startCopy(&document);
    EXPECT_TRUE(store.isCopying(&document));
    QTextCursor cursor(document.textStorage());
    cursor.setPosition(int(text.size() - 100));
    while (store.isCopying(&document)) {
        cursor.insertText(QStringLiteral("k"));
        states.insert(document.string());
        QTest::qWait(2);
    }
    EXPECT_GE(states.size(), 2);
    EXPECT_TRUE(states.contains(copyOf()));
    EXPECT_TRUE(document.isDocumentEdited());

    // Saved before the copy is written: no copy stays.
    cursor.insertText(QStringLiteral("saved"));
    store.startCopy(&document);
    document.textStorage()->setModified(false);
    EXPECT_FALSE(store.isCopying(&document));
    QTest::qWait(200);
    EXPECT_TRUE(QDir(store.folder()).entryList({"*.copy"}, QDir::Files).isEmpty());
    EXPECT_TRUE(store.copyFile(&document).isEmpty());
}
