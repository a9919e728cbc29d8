// Autosave as a user meets it: while they type, a recovery copy keeps up with the text; the
// file itself changes only when they save, so "Don't Save" and Revert to Saved find it as it was.
#include "TestSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "document/RecoveryStore.h"
#include "platform/PreferencesValues.h"
#include "platform/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

void type(Document* document, const QString& text)
{
    document->replaceRanges({{document->length(), 0}}, text, QStringLiteral("Typing"));
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

TEST(Autosave, ACopyIsWrittenByAWorkerWhileTheUserTypesOn)
{
    const QString root = TestSupport::makeTempDir() + "/Recovery";
    RecoveryStore store(root);
    TestDocument document;
    // Pairs across every part the copy is encoded in, and a U+2029 of the text's own, which
    // stands in the text storage as another character: the copy gives it back, as the
    // document's text does.
    QString text(1024 * 1024 - 1, u'a');
    for (int i = 0; i < 30000; ++i) {
        text += QStringLiteral("\U0001F600 line %1 of a large text%2\n")
                    .arg(i)
                    .arg(i % 7000 == 5 ? QStringLiteral("\u2029") : QString());
    }
    document.setTextStorage(text);
    document.setDocumentEdited(true);
    ASSERT_FALSE(document.characterStandIns().isEmpty());
    const auto copyOf = [&] {
        const QString copy = store.copyFile(&document);
        const QByteArray bytes = copy.isEmpty() ? QByteArray() : TestSupport::readFile(copy);
        return QString::fromUtf8(bytes.mid(bytes.indexOf('\n') + 1));
    };

    // A key at every turn while the copy is made: what is written is the text as it was when
    // the copy was asked for, whatever keys came while a worker wrote it.
    const QString asked = document.string();
    store.startCopy(&document);
    EXPECT_TRUE(store.isCopying(&document));
    const qsizetype typedAt = document.length() - 100;
    int keys = 0;
    while (store.isCopying(&document)) {
        document.replaceRanges({{typedAt + keys, 0}}, QStringLiteral("k"),
                               QStringLiteral("Typing"));
        ++keys;
        QTest::qWait(2);
    }
    EXPECT_GE(keys, 1);
    EXPECT_EQ(copyOf(), asked);
    EXPECT_TRUE(asked.contains(QChar(0x2029)));
    EXPECT_TRUE(document.isDocumentEdited());

    // Saved before the copy is written: no copy stays.
    document.replaceRanges({{typedAt + keys, 0}}, QStringLiteral("saved"),
                           QStringLiteral("Typing"));
    store.startCopy(&document);
    document.setDocumentEdited(false);
    EXPECT_FALSE(store.isCopying(&document));
    QTest::qWait(200);
    EXPECT_TRUE(QDir(store.folder()).entryList({"*.copy"}, QDir::Files).isEmpty());
    EXPECT_TRUE(store.copyFile(&document).isEmpty());
}
