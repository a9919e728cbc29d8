// The File menu's Save As panel and Duplicate, used as a user uses them in a document window.
#include "TestSupport.h"
#include "app/DocumentController.h"
#include "app/MainMenu.h"
#include "document/Document.h"
#include "platform/UserDefaults.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTest>
#include <QTextDocument>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace {

QAction* fileMenuItem(Document* document, const QString& title)
{
    WindowController* controller =
        DocumentController::sharedDocumentController().windowControllerOf(document);
    QMenu* file = controller->window()->menuBar()->findChild<QMenu*>(QStringLiteral("fileMenu"));
    for (QAction* item : file->actions()) {
        if (item->text().remove(u'&') == title) {
            return item;
        }
    }
    return nullptr;
}

/// Triggers `item` and hands the panel it shows to `use` once it is on screen.
void withPanel(QAction* item, const std::function<void(QFileDialog*)>& use)
{
    bool used = false;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* box = qobject_cast<QMessageBox*>(widget); box && box->isVisible()) {
                ADD_FAILURE() << "unexpected alert: " << box->text().toStdString();
                box->reject();
                return;
            }
            auto* panel = qobject_cast<QFileDialog*>(widget);
            if (panel && panel->isVisible() && !used) {
                used = true;
                use(panel);
                return;
            }
        }
    });
    poll.start(20);
    // A failed expectation must not leave the panel waiting for ever.
    QTimer::singleShot(10000, [] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* panel = qobject_cast<QFileDialog*>(widget); panel && panel->isVisible()) {
                ADD_FAILURE() << "the panel is still open";
                panel->reject();
            }
        }
    });
    item->trigger();
    EXPECT_TRUE(used);
}

TEST(FileMenu, SaveAsHidesTheExtensionInTheNameField)
{
    TestRoot root;
    root.userDefaults().setBool(true, "SavePanelExtensionHidden");
    DocumentController& documents = root.documentController();
    const QString dir = TestSupport::makeTempDir();
    Document* document =
        documents.openDocumentWithContentsOfURL(TestSupport::writeFile(dir + "/notes.txt", "n\n"));
    ASSERT_NE(document, nullptr);

    withPanel(fileMenuItem(document, QStringLiteral("Save As…")), [&](QFileDialog* panel) {
        // Not the open panel's title.
        EXPECT_EQ(panel->windowTitle(), "Save As");
        auto* name = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        auto* hide = panel->findChild<QCheckBox*>(QStringLiteral("hideExtensionButton"));
        ASSERT_TRUE(name && hide);
        EXPECT_TRUE(hide->isChecked());
        EXPECT_EQ(name->text(), "notes");
        QTest::keyClick(hide, Qt::Key_Space);
        EXPECT_EQ(name->text(), "notes.txt");
        QTest::keyClick(hide, Qt::Key_Space);
        EXPECT_EQ(name->text(), "notes");
        // A new name, typed without the hidden extension, is saved with it.
        panel->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(panel));
        name->setFocus();
        name->selectAll();
        QTest::keyClicks(name, QStringLiteral("renamed"));
        EXPECT_EQ(name->text(), "renamed");
        // Posted, so that an alert it might bring up finds this poll free to report it.
        QCoreApplication::postEvent(name, new QKeyEvent(QEvent::KeyPress, Qt::Key_Return, {}));
        QCoreApplication::postEvent(name, new QKeyEvent(QEvent::KeyRelease, Qt::Key_Return, {}));
    });
    EXPECT_EQ(document->fileURL(), dir + "/renamed.txt");
    EXPECT_EQ(TestSupport::readFile(dir + "/renamed.txt"), "n\n");
}

TEST(FileMenu, DuplicateOpensAnUntitledCopyInItsOwnWindow)
{
    DocumentController& documents = DocumentController::sharedDocumentController();
    documents.discardAllDocuments();
    const QString dir = TestSupport::makeTempDir();
    Document* original = documents.openDocumentWithContentsOfURL(
        TestSupport::writeFile(dir + "/latin.txt", "caf\xe9\r\nbar\r\n"));
    ASSERT_NE(original, nullptr);
    QAction* duplicate = fileMenuItem(original, QStringLiteral("Duplicate"));
    ASSERT_NE(duplicate, nullptr);
    duplicate->trigger();

    ASSERT_EQ(documents.documents().size(), 2u);
    Document* copy = documents.documents().back();
    EXPECT_EQ(copy->string(), original->string());
    EXPECT_TRUE(copy->fileURL().isEmpty());
    EXPECT_FALSE(copy->textStorage()->isUndoAvailable());
    EXPECT_EQ(copy->documentEncoding(), original->documentEncoding());
    EXPECT_EQ(copy->documentLineBreaks(), 2);
    // Kept nowhere yet: closing it asks first.
    EXPECT_TRUE(copy->isDocumentEdited());
    WindowController* window = documents.windowControllerOf(copy);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->window()->isVisible());
    EXPECT_EQ(window->selectedSyntaxName(),
              documents.windowControllerOf(original)->selectedSyntaxName());
    documents.discardAllDocuments();
}

} // namespace
