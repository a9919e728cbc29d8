// The File menu of a document window as a user uses it: its panels, Open Recent and
// Duplicate.
#include "TestWindow.h"
#include "app/DocumentController.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QCheckBox>
#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QTimer>

#include <functional>

namespace {

QAction* fileMenuItem(Document* document, const QString& title)
{
    WindowController* controller =
        DocumentController::sharedDocumentController().windowControllerOf(document);
    return itemTitled(controller->window()->menuBar()->findChild<QMenu*>("fileMenu"), title);
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
                poll.setInterval(20);
                use(panel);
                return;
            }
        }
    });
    // Looked for at once: an open panel handed over later, while it still reads its folder,
    // now and then failed to accept the file chosen in it.
    poll.start(0);
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

QStringList titlesOf(QMenu* menu)
{
    QStringList titles;
    for (QAction* item : menu->actions()) {
        if (!item->isSeparator()) {
            titles << item->text();
        }
    }
    return titles;
}

} // namespace

TEST(MenuBar, OpenRecentTellsFilesOfTheSameNameApart)
{
    const QString dir = TestSupport::makeTempDir();
    const QString top = QFileInfo(dir).fileName();
    DocumentController& documents = DocumentController::sharedDocumentController();
    documents.clearRecentDocuments();
    // Newest first in the menu.
    for (const char* file :
         {"/b/x/f.txt", "/x/f.txt", "/notes.txt", "/tests/app/main.cpp", "/src/app/main.cpp"}) {
        documents.noteNewRecentDocumentURL(dir + QLatin1String(file));
    }
    TestWindow window;
    QMenu* recent = window.menu->menuNamed(QStringLiteral("openRecentMenu"));
    ASSERT_NE(recent, nullptr);
    QMetaObject::invokeMethod(recent, "aboutToShow");
    EXPECT_EQ(titlesOf(recent),
              QStringList({"main.cpp — src/app", "main.cpp — tests/app", "notes.txt",
                           "f.txt — " + top + "/x", "f.txt — b/x", "Clear Menu"}));
    documents.clearRecentDocuments();
}

TEST(MenuBar, OpenPanelStartsInTheFrontDocumentsFolder)
{
    const QString dir = TestSupport::makeTempDir();
    const QString first = TestSupport::writeFile(dir + "/one/a.txt", "a");
    const QString second = TestSupport::writeFile(dir + "/two/b.txt", "b");
    DocumentController& documents = DocumentController::sharedDocumentController();
    documents.discardAllDocuments();
    Document* front = documents.openDocumentWithContentsOfURL(first);
    ASSERT_NE(front, nullptr);
    QString startedIn;
    withPanel(fileMenuItem(front, QStringLiteral("Open…")), [&](QFileDialog* panel) {
        startedIn = panel->directory().absolutePath();
        panel->setDirectory(dir + "/two");
        panel->selectFile(second);
        static_cast<QDialog*>(panel)->accept(); // as the Open button does
    });
    EXPECT_EQ(startedIn, dir + "/one");
    ASSERT_EQ(documents.documents().size(), 2u);
    EXPECT_EQ(documents.documents().back()->fileURL(), second);
    documents.discardAllDocuments();
}

TEST(MenuBar, SaveAsHidesTheExtensionInTheNameField)
{
    TestRoot root;
    root.userDefaults().setBool(true, "SavePanelExtensionHidden");
    DocumentController& documents = root.documentController();
    const QString dir = TestSupport::makeTempDir();
    Document* document =
        documents.openDocumentWithContentsOfURL(TestSupport::writeFile(dir + "/notes.txt", "n\n"));
    ASSERT_NE(document, nullptr);

    withPanel(fileMenuItem(document, QStringLiteral("Save As…")), [&](QFileDialog* panel) {
        auto* name = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        auto* hide = panel->findChild<QCheckBox*>(QStringLiteral("hideExtensionButton"));
        ASSERT_TRUE(name && hide);
        EXPECT_TRUE(hide->isChecked());
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

TEST(MenuBar, DuplicateOpensAnUntitledCopyInItsOwnWindow)
{
    DocumentController& documents = DocumentController::sharedDocumentController();
    documents.discardAllDocuments();
    const QString dir = TestSupport::makeTempDir();
    Document* original = documents.openDocumentWithContentsOfURL(
        TestSupport::writeFile(dir + "/latin.txt", "caf\xe9\r\nbar\r\n"));
    ASSERT_NE(original, nullptr);
    fileMenuItem(original, QStringLiteral("Duplicate"))->trigger();
    ASSERT_EQ(documents.documents().size(), 2u);
    Document* copy = documents.documents().back();
    EXPECT_EQ(copy->string(), original->string());
    EXPECT_TRUE(copy->fileURL().isEmpty());
    EXPECT_EQ(copy->documentEncoding(), original->documentEncoding());
    EXPECT_EQ(copy->documentLineBreaks(), 2);
    // Kept nowhere yet: closing it asks first.
    EXPECT_TRUE(copy->isDocumentEdited());
    EXPECT_TRUE(documents.windowControllerOf(copy)->window()->isVisible());
    documents.discardAllDocuments();
}
