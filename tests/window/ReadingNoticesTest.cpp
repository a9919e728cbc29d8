#include "window/ReadingNotices.h"

#include "TestWindow.h"
#include "window/InformationBar.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

QString fixture(const char* name)
{
    return TestSupport::writeFile(
        TestSupport::makeTempDir() + u'/' + QLatin1String(name),
        TestSupport::readFile(QStringLiteral(TESSARAN_TEST_DATA "/roundtrip/") +
                              QLatin1String(name)));
}

struct OpenWindow : OpenedFile {
    using OpenedFile::OpenedFile;
    InformationBar* nonTextBar() const { return controller->readingNotices()->nonTextBar(); }
    InformationBar* lineBreaksBar() const { return controller->readingNotices()->lineBreaksBar(); }
    QList<InformationBar*> bars() const { return controller->window()->informationBars(); }
};

} // namespace

TEST(ReadingNotices, AFileThatIsNotTextIsReadOnlyUntilEditAnyway)
{
    OpenWindow window(fixture("binary.bin"));
    ASSERT_NE(window.controller, nullptr);
    InformationBar* bar = window.nonTextBar();
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(window.bars(), QList<InformationBar*>({bar}));
    EXPECT_TRUE(bar->message().contains("it holds NUL bytes. It is open read-only"));
    EXPECT_TRUE(window.controller->toolbarInformation().contains("   Line breaks as read"));

    TextView* view = window.controller->textView();
    const QString before = window.document->string();
    QTest::keyClicks(view, "typed");
    QTest::keyClick(view, Qt::Key_Return);
    QTest::keyClick(view, Qt::Key_Tab);
    QTest::keyClick(view, Qt::Key_Backspace);
    view->shiftRight(nullptr);
    view->insertTextAtSelection(QStringLiteral("script output"));
    EXPECT_TRUE(view->isReadOnly());
    EXPECT_EQ(window.document->string(), before);
    EXPECT_FALSE(window.document->isDocumentEdited());

    ASSERT_EQ(bar->buttons().size(), 1);
    QTest::mouseClick(bar->buttons().constFirst(), Qt::LeftButton);
    EXPECT_TRUE(window.bars().isEmpty());
    EXPECT_FALSE(view->isReadOnly());
    QTest::keyClicks(view, "Z");
    EXPECT_TRUE(window.document->isDocumentEdited());
}

TEST(ReadingNotices, MixedLineBreaksSayWhatASaveWrites)
{
    OpenWindow window(fixture("mixed-line-breaks.txt"));
    ASSERT_NE(window.controller, nullptr);
    EXPECT_EQ(window.nonTextBar(), nullptr);
    InformationBar* bar = window.lineBreaksBar();
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->message().contains("(1 LF, 1 CR, 2 CRLF). Saving will write every line "
                                        "break as Windows(CRLF), the style"));
    EXPECT_FALSE(window.controller->textView()->isReadOnly());

    // The bar follows the style chosen, as the status line does.
    window.controller->setLineBreaks(0);
    EXPECT_TRUE(bar->message().contains("as OS X/Unix(LF), the style"));
    EXPECT_TRUE(window.controller->toolbarInformation().contains("   OS X/Unix(LF)"));
}

TEST(ReadingNotices, ReopeningInAnotherEncodingFromTheWindow)
{
    const QString dir = TestSupport::makeTempDir();
    // "Grüße" in Windows Latin 1, which is no UTF-8.
    const QString path = TestSupport::writeFile(dir + "/greeting.txt", "Gr\xfc\xdf"
                                                                       "e\n");
    OpenWindow window(path);
    ASSERT_NE(window.controller, nullptr);
    ASSERT_EQ(window.document->string(), QStringLiteral("Grüße\n"));

    // Mac OS Roman reads the same bytes as other letters; the status line follows.
    window.controller->reopenUsingEncoding(30);
    EXPECT_EQ(window.document->string(), QStringLiteral("Gr\u00b8\ufb02e\n"));
    EXPECT_TRUE(window.controller->toolbarInformation().contains("Western (Mac OS Roman)"));

    // An encoding the file's bytes are not written in: an alert, and nothing changes.
    QString alert;
    QTimer::singleShot(0, [&alert] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            alert = box->text() + u'|' + box->informativeText();
            box->accept();
        }
    });
    window.controller->reopenUsingEncoding(4);
    EXPECT_EQ(alert, "The file “greeting.txt” could not be read using text encoding Unicode "
                     "(UTF-8).|If possible, select a different text encoding.");
    EXPECT_EQ(window.document->string(), QStringLiteral("Gr\u00b8\ufb02e\n"));
    EXPECT_EQ(window.document->documentEncoding(), 30u);

    // A file read in the wrong encoding is put right, although its text as shown ("ƒeƒXƒg")
    // could not be written in the right one: without edits, the file's bytes decide.
    OpenWindow misread(
        TestSupport::writeFile(dir + "/test-in-japanese.txt", "\x83\x65\x83\x58\x83\x67\n"), 12);
    ASSERT_NE(misread.controller, nullptr);
    ASSERT_EQ(misread.document->string(), QStringLiteral("\u0192e\u0192X\u0192g\n"));
    misread.controller->reopenUsingEncoding(0x80000A01);
    EXPECT_EQ(misread.document->string(), QStringLiteral("テスト\n"));
    EXPECT_FALSE(misread.document->isDocumentEdited());
}
