// The menu bar of a document window as a user uses it: the File menu's panels, Open Recent,
// Duplicate, Export as PDF, and the Help menu.
#include "TestWindow.h"
#include "app/DocumentController.h"
#include "app/HelpMenu.h"
#include "platform/FileManager.h"
#include "platform/FileTitles.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
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
    EXPECT_EQ(recent->actions().first()->toolTip(), dir + "/src/app/main.cpp");

    // Where only the whole folder tells them apart, it is shown, the home folder as "~".
    documents.clearRecentDocuments();
    const QString home = QDir::homePath();
    documents.noteNewRecentDocumentURL(home + "/a/f.txt");
    documents.noteNewRecentDocumentURL("/a/f.txt");
    QMetaObject::invokeMethod(recent, "aboutToShow");
    EXPECT_EQ(titlesOf(recent), QStringList({"f.txt — /a", "f.txt — ~/a", "Clear Menu"}));
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
    // The window's own document counts, whatever folder the panel was in last.
    withPanel(fileMenuItem(front, QStringLiteral("Open…")), [&](QFileDialog* panel) {
        startedIn = panel->directory().absolutePath();
        panel->reject();
    });
    EXPECT_EQ(startedIn, dir + "/one");

    // With an untitled document in front, where it was last confirmed (a setting, so also
    // after a restart).
    documents.discardAllDocuments();
    withPanel(fileMenuItem(documents.newDocument(), QStringLiteral("Open…")),
              [&](QFileDialog* panel) {
                  startedIn = panel->directory().absolutePath();
                  panel->reject();
              });
    EXPECT_EQ(startedIn, dir + "/two");
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

TEST(MenuBar, DuplicateOpensAnUntitledCopyInItsOwnWindow)
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
    EXPECT_FALSE(copy->canUndo());
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

TEST(MenuBar, ExportAsPdfPrintsInTheWindowsFontSizeInPoints)
{
    DocumentController& documents = DocumentController::sharedDocumentController();
    const QString dir = TestSupport::makeTempDir();
    QByteArray lines;
    for (int line = 1; line <= 200; ++line) {
        lines += "line " + QByteArray::number(line) + '\n';
    }
    Document* document =
        documents.openDocumentWithContentsOfURL(TestSupport::writeFile(dir + "/lines.txt", lines));
    ASSERT_NE(document, nullptr);

    const QString pdf = dir + "/lines.pdf";
    withPanel(fileMenuItem(document, QStringLiteral("Export as PDF…")), [&](QFileDialog* panel) {
        panel->selectFile(pdf);
        static_cast<QDialog*>(panel)->accept(); // as the Save button does
    });
    const qsizetype pages = QString::fromLatin1(TestSupport::readFile(pdf))
                                .count(QRegularExpression(QStringLiteral("/Type\\s*/Page\\b")));
    // The window shows the text 12 points high, and a point on screen is a pixel: 200 lines
    // of 12 points (about 14 with their leading) on the 698 points an A4 page has between its
    // margins make five pages. Text a pixel of the printer high would fit on one.
    EXPECT_GE(pages, 4);
    EXPECT_LE(pages, 6);
    documents.discardAllDocuments();
}

TEST(MenuBar, HelpMenuShowsAboutAndFindsTheReadMe)
{
    TestWindow window;
    QMenuBar* bar = window.controller->window()->menuBar();
    QMenu* help = window.menu->menuNamed(QStringLiteral("helpMenu"));
    ASSERT_NE(help, nullptr);
    EXPECT_EQ(bar->actions().last(), help->menuAction());
    QAction* about = help->findChild<QAction*>(QStringLiteral("about"));
    QAction* readMe = help->findChild<QAction*>(QStringLiteral("readMe"));
    ASSERT_NE(about, nullptr);
    ASSERT_NE(readMe, nullptr);
    EXPECT_EQ(about->text(), "&About Tessaran");

    // About: version, licence, and the folders where the editor keeps things.
    about->trigger();
    auto* box = window.controller->window()->findChild<QMessageBox*>("aboutBox");
    ASSERT_NE(box, nullptr);
    const QString text = box->text();
    EXPECT_TRUE(text.contains(TESSARAN_VERSION));
    EXPECT_TRUE(text.contains("Licence"));
    for (const QString& path : {UserDefaults::standardUserDefaults().path(),
                                FileManager::syntaxDefinitionDirectoryPathInPath(),
                                FileManager::scriptDirectoryPathInPath(),
                                FileManager::applicationSupportDirectoryPath() + "/Recovery",
                                FileManager::applicationSupportDirectoryPath() + "/Backups"}) {
        EXPECT_TRUE(text.contains(FileTitles::abbreviatedPath(path).toHtmlEscaped()))
            << path.toStdString() << "\n"
            << text.toStdString();
    }
    box->close();

    // The README is found beside the program in a build folder...
    const QString buildDir = QFileInfo(TESSARAN_EXECUTABLE).absolutePath();
    const QString shipped = TESSARAN_SOURCE_DIR "/README.md";
    EXPECT_EQ(HelpMenu::readMePath(buildDir), buildDir + "/README.md");
    EXPECT_EQ(TestSupport::readFile(HelpMenu::readMePath(buildDir)),
              TestSupport::readFile(shipped));
    // ...and in an installation, where the build installs it.
    const QString cmake = QStandardPaths::findExecutable("cmake");
    if (!cmake.isEmpty()) {
        const QString prefix = TestSupport::makeTempDir() + "/prefix";
        QProcess install;
        install.start(cmake, {"--install", buildDir, "--prefix", prefix});
        ASSERT_TRUE(install.waitForFinished(120000));
        ASSERT_EQ(install.exitCode(), 0) << install.readAllStandardError().toStdString();
        const QString installed = HelpMenu::readMePath(prefix + "/bin");
        EXPECT_TRUE(installed.startsWith(prefix + "/share/doc/")) << installed.toStdString();
        EXPECT_EQ(TestSupport::readFile(installed), TestSupport::readFile(shipped));
    }

    // Elsewhere (this test program's folder) it is not found, and the menu item says so.
    if (!HelpMenu::readMePath(QCoreApplication::applicationDirPath()).isEmpty()) {
        GTEST_SKIP() << "a README is installed on this machine";
    }
    readMe->trigger();
    auto* missing = window.controller->window()->findChild<QMessageBox*>("readMeMissing");
    ASSERT_NE(missing, nullptr);
    EXPECT_EQ(missing->text(), "The ReadMe could not be found.");
    EXPECT_TRUE(missing->informativeText().contains(
        HelpMenu::readMeCandidates(QCoreApplication::applicationDirPath()).first()));
    missing->close();
}
