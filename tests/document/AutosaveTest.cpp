// Autosave as a user meets it: while they type, a recovery copy keeps up with the text; the
// file itself changes only when they save, so "Don't Save" and Revert to Saved find it as it was.
#include "TestSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "document/RecoveryStore.h"
#include "platform/UserDefaults.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QTest>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

// Answers the next alert with the button titled `title`, as a user would.
void answerNextAlert(const QString& title)
{
    auto* timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, title] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            auto* alert = qobject_cast<QMessageBox*>(window);
            if (!alert || !alert->isVisible()) {
                continue;
            }
            for (QAbstractButton* button : alert->buttons()) {
                if (button->text() == title) {
                    timer->stop();
                    timer->deleteLater();
                    button->click();
                    return;
                }
            }
        }
    });
    timer->start();
}

void type(Document* document, const QString& text)
{
    QTextCursor cursor(document->textStorage());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(text);
}

} // namespace

TEST(Autosave, KeepsACopyWhileTheUserTypesAndNeverWritesTheFile)
{
    UserDefaults::standardUserDefaults().setInteger(1, "AutosavingDelay");
    DocumentController& controller = DocumentController::sharedDocumentController();
    controller.updatePreferences();
    controller.discardAllDocuments();
    RecoveryStore& store = RecoveryStore::sharedRecoveryStore();
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
    answerNextAlert(QStringLiteral("Don’t Save"));
    EXPECT_TRUE(controller.closeDocument(document));
    controller.discardAllDocuments();
    EXPECT_FALSE(QFile::exists(copy));
    EXPECT_EQ(TestSupport::readFile(path), onDisk);

    // Revert to Saved goes back to the file on disk; Save writes it. Either ends the copy.
    document = controller.openDocumentWithContentsOfURL(path);
    ASSERT_TRUE(document);
    type(document, "reverted");
    ASSERT_TRUE(store.writeCopy(document));
    answerNextAlert(QStringLiteral("Revert"));
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

    controller.discardAllDocuments();
    UserDefaults::standardUserDefaults().removeObjectForKey("AutosavingDelay");
    controller.updatePreferences();
}
