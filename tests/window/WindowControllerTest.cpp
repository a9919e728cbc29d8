#include "window/WindowController.h"

#include "TestWindow.h"
#include "app/DocumentController.h"
#include "document/PermissionsEnforced.h"
#include "document/TextStore.h"
#include "document/TextTree.h"

#include <QFile>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPromise>

#include <chrono>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

using Window = TestWindow;

TEST(WindowController, StatusLineCountsAndFollowsTheCaret)
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    Window perl(QStringLiteral("ab\ncd\nef"), QStringLiteral("None:Perl"));
    EXPECT_EQ(perl.controller->toolbarInformation(),
              "Characters: 6   Unicode (UTF-8)   OS X/Unix(LF)   Perl   Line 1, Column 1");
    // Selecting from the b to the c, across one line feed, counts 2.
    perl.view()->setSelectedRange({1, 3});
    QTRY_COMPARE_WITH_TIMEOUT(perl.controller->infoCharacters(), 2, 2000);

    // Grouping of the user's locale; characters outside the BMP count once; the count
    // follows edits.
    Window big(QString(12345, u'x') + QStringLiteral("\U0001F600"));
    EXPECT_TRUE(big.controller->toolbarInformation().startsWith("Characters: 12,346   "));
    QTest::keyClicks(big.view(), "yz");
    EXPECT_EQ(big.controller->infoCharacters(), 12348);

    // The front pane's caret; a tab and a character outside the BMP are one column each.
    Window window(QStringLiteral("ab\n\tc\U0001F600d\nlast"), QString(), true);
    const auto status = [&] { return window.window()->infoField()->text(); };
    TextView* first = window.view();
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        const char* expected;
    } moves[] = {
        {Qt::Key_Down, Qt::NoModifier, "Line 2, Column 1"},
        {Qt::Key_End, Qt::NoModifier, "Line 2, Column 5"},
        {Qt::Key_Left, Qt::NoModifier, "Line 2, Column 4"},
        // A selection shows where its moving end is.
        {Qt::Key_Up, Qt::ShiftModifier, "Line 1, Column 3"},
        {Qt::Key_Down, Qt::ShiftModifier, "Line 2, Column 4"},
        {Qt::Key_Down, Qt::NoModifier, "Line 3, Column 5"},
    };
    for (const auto& move : moves) {
        QTest::keyClick(first, move.key, move.modifiers);
        EXPECT_TRUE(status().endsWith(QLatin1String("   ") + QLatin1String(move.expected)))
            << move.expected << " / " << status().toStdString();
    }

    // With two panes, the status line follows the one in front.
    window.controller->toggleSplitView(window.controller);
    TextView* second = window.view();
    ASSERT_NE(second, first);
    EXPECT_TRUE(status().endsWith("   Line 1, Column 1")) << status().toStdString();
    window.controller->toggleFocusOnNextSplitPane(window.controller);
    EXPECT_TRUE(status().endsWith("   Line 3, Column 5")) << status().toStdString();
    QTest::keyClick(second, Qt::Key_Down);
    EXPECT_TRUE(status().endsWith("   Line 3, Column 5")) << status().toStdString();

    // A toggle reaches both panes; they share the text; closing the split keeps the first.
    const bool numbers = first->rulersVisible();
    window.menu->actionWithTag(WindowController::LineNumbersTag)->trigger();
    EXPECT_NE(first->rulersVisible(), numbers);
    EXPECT_NE(second->rulersVisible(), numbers);
    QTest::keyClicks(second, "!");
    first->selectAll();
    EXPECT_TRUE(first->selectedText().contains(u'!'));
    window.menu->actionWithTag(WindowController::SplitPaneTag)->trigger();
    ASSERT_EQ(window.controller->textViews().size(), 1u);
    EXPECT_EQ(window.view(), first);

    // A file this user may not write says so in the title and the status line when opened.
    const QString dir = TestSupport::makeTempDir();
    const QString locked = TestSupport::writeFile(dir + "/locked.txt", "text\n");
    ASSERT_TRUE(QFile::setPermissions(locked, QFile::ReadOwner | QFile::ReadGroup));
    PermissionsEnforced enforced;
    if (const int fd = ::open(QFile::encodeName(locked).constData(), O_WRONLY); fd >= 0) {
        ::close(fd);
        GTEST_SKIP() << "this user may write any file: there is no read-only file to open";
    }
    DocumentController& documents = DocumentController::sharedDocumentController();
    Document* document = documents.openDocumentWithContentsOfURL(locked);
    ASSERT_NE(document, nullptr);
    DocumentWindow* shown = documents.windowControllerOf(document)->window();
    EXPECT_EQ(shown->windowTitle(), "locked.txt[*] — Read-Only");
    EXPECT_TRUE(shown->infoField()->text().endsWith("   Line 1, Column 1   Read-Only"));
    documents.discardAllDocuments();
}

TEST(WindowController, WhileTheEndOfAFileGoesInTheFirstKeyMeetsTheWholeText)
{
    Window window(QString(), QString(), true);
    TextStore* store = window.document->textStore();
    const QString start = u"the start\n"_qs;
    const QString whole = start + u"and the rest, read on a worker\n"_qs.repeated(1000);
    QPromise<TextSnapshot> rest;
    rest.start();
    store->setLoadingText(TextSnapshot(TextTree::fromText(start)), rest.future());
    TextView* view = window.view();
    EXPECT_TRUE(view->isLoading());
    EXPECT_FALSE(window.window()->indicator()->isHidden());
    // Select All, then a key: both on the whole text, not on what was in when they came.
    std::thread worker([&rest, &whole] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        rest.addResult(TextSnapshot(TextTree::fromText(whole)));
        rest.finish();
    });
    view->setFocus();
    QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);
    worker.join();
    EXPECT_FALSE(view->isLoading());
    EXPECT_TRUE(window.window()->indicator()->isHidden());
    EXPECT_EQ(view->selectedRange().length, whole.size());
    QTest::keyClick(view, Qt::Key_X);
    EXPECT_EQ(window.document->string(), u"x"_qs);
    window.document->undo();
    EXPECT_EQ(window.document->string(), whole);
    EXPECT_FALSE(window.document->isDocumentEdited());
}

TEST(WindowController, AnEncodingAmongTheOthersReopensTheText)
{
    Window window(QStringLiteral("text"));
    QMenu* others = window.menu->menuNamed("encodingMenu")->actions().last()->menu();
    ASSERT_NE(others, nullptr);
    QAction* cyrillic = itemTitled(others, QStringLiteral("Cyrillic (Windows)"));
    ASSERT_NE(cyrillic, nullptr);
    cyrillic->trigger();
    EXPECT_EQ(window.document->documentEncoding(), 0x80000502u);
}

TEST(WindowController, AMailCarriesTheWholeTextEncoded)
{
    const QUrl mail = WindowController::sharingURL(0, QStringLiteral("notes.txt"),
                                                   QStringLiteral("a+b & c=d 100% \u00e9\n"));
    EXPECT_EQ(mail.toString(QUrl::FullyEncoded),
              "mailto:?subject=notes.txt&body=a%2Bb%20%26%20c%3Dd%20100%25%20%C3%A9%0A");
}
