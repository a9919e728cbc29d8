#include "window/DiskChangeNotices.h"

#include "TestWindow.h"
#include "platform/FileWatcher.h"
#include "window/DiskComparisonDialog.h"
#include "window/InformationBar.h"

#include <QMenuBar>
#include <QProcess>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

constexpr quint64 kWindowsLatin1 = 12;
constexpr qsizetype kCRLF = 2;

// Another program at work on the file: a shell writing it in place or renaming over it.
void anotherProgram(const QString& script, const QString& path)
{
    ASSERT_EQ(QProcess::execute("/bin/sh", {"-c", script, "sh", path}), 0) << script.toStdString();
}

struct OpenWindow : OpenedFile {
    using OpenedFile::OpenedFile;
    DiskChangeNotices* notices() const { return controller->diskChangeNotices(); }
    InformationBar* bar() const { return notices()->bar(); }
    QStringList buttonTitles() const
    {
        QStringList titles;
        for (const QPushButton* button : bar()->buttons()) {
            titles << button->text();
        }
        return titles;
    }
    void click(const QString& title) const
    {
        for (QPushButton* button : bar()->buttons()) {
            if (button->text() == title) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        ADD_FAILURE() << "no button " << title.toStdString();
    }
    /// The caret's line and its place in the line.
    std::pair<qsizetype, qsizetype> caret() const
    {
        const qsizetype position = view()->cursorPosition();
        const qsizetype line = document->lineOfPosition(position);
        return {line, position - document->rangeOfLine(line).location};
    }
    void moveToEnd() const { view()->setSelection(document->length(), document->length()); }
};

QByteArray numberedLines(int count, const QByteArray& extra)
{
    QByteArray bytes;
    for (int line = 1; line <= count; ++line) {
        bytes += "line " + QByteArray::number(line) + " caf\xe9" + extra + "\r\n";
    }
    return bytes;
}

} // namespace

TEST(DiskChangeNotices, AnUnmodifiedDocumentFollowsItsFileAndKeepsItsPlace)
{
    const QString path =
        TestSupport::writeFile(TestSupport::makeTempDir() + "/notes.txt", numberedLines(300, ""));
    OpenWindow window(path, kWindowsLatin1);
    ASSERT_NE(window.controller, nullptr);
    window.controller->window()->resize(600, 400);
    const qsizetype place = window.document->rangeOfLine(150).location + 4;
    window.view()->setSelection(place, place);
    window.view()->verticalScrollBar()->setValue(120);

    // Written in place (in one write, over the whole of it), then replaced by renaming a new
    // file over it, as editors and git do.
    const char* const changes[] = {
        R"(printf 'new first line\r\n' > "$1.new" && cat "$1" >> "$1.new" &&
           dd if="$1.new" of="$1" bs=1M conv=notrunc status=none)",
        R"(sed 's/caf/Caf/' "$1" > "$1.new" && mv "$1.new" "$1")",
    };
    const auto caret = window.caret();
    for (const char* change : changes) {
        const QString before = window.document->string();
        anotherProgram(change, path);
        QTRY_VERIFY(window.document->string() != before);
        EXPECT_TRUE(window.document->string().startsWith("new first line\nline 1 "));
        EXPECT_FALSE(window.document->isDocumentEdited());
        EXPECT_EQ(window.bar(), nullptr);
        EXPECT_EQ(window.caret(), caret);
        EXPECT_EQ(window.view()->verticalScrollBar()->value(), 120);
        EXPECT_EQ(window.document->documentEncoding(), kWindowsLatin1);
        EXPECT_EQ(window.document->documentLineBreaks(), kCRLF);
    }
    EXPECT_TRUE(window.document->string().contains("line 150 Caf\u00e9\n"));
    // One step that undo takes back, as the Edit menu names it.
    QMenu* edit = window.window()->menuBar()->findChild<QMenu*>(QStringLiteral("editMenu"));
    ASSERT_NE(edit, nullptr);
    Q_EMIT edit->aboutToShow();
    EXPECT_EQ(edit->actions().first()->text(), "Undo Reload");

    // The editor's own saves are no change to the file: typed after a save, the text stays the
    // user's and no bar comes, once the events of the save are seen.
    FileWatcher saves;
    saves.setPath(path);
    QSignalSpy saved(&saves, &FileWatcher::changed);
    QTest::keyClicks(window.view(), "typed");
    ASSERT_TRUE(DocumentController::sharedDocumentController().saveDocument(window.document));
    QTest::keyClicks(window.view(), " after");
    ASSERT_TRUE(saved.wait());
    window.notices()->check();
    EXPECT_EQ(window.bar(), nullptr);
    EXPECT_TRUE(window.document->isDocumentEdited());
    EXPECT_TRUE(window.document->string().contains("typed after"));
}

TEST(DiskChangeNotices, AModifiedDocumentOffersReloadKeepAndCompareAndLosesNothing)
{
    const QString path =
        TestSupport::writeFile(TestSupport::makeTempDir() + "/plan.txt", "first\nshared\n");
    OpenWindow window(path);
    ASSERT_NE(window.controller, nullptr);
    window.moveToEnd();
    QTest::keyClicks(window.view(), "mine");
    const QString mine = window.document->string();

    anotherProgram(R"(printf 'theirs\nshared\n' > "$1.new" && mv "$1.new" "$1")", path);
    QTRY_VERIFY(window.bar() != nullptr);
    EXPECT_TRUE(window.bar()->message().contains("changed on disk"));
    EXPECT_EQ(window.buttonTitles(), QStringList({"Reload", "Keep my version", "Compare"}));
    EXPECT_EQ(window.document->string(), mine);
    // Until the user chooses, the first Save still refuses to replace the other version.
    EXPECT_FALSE(window.document->writeSafelyToURL(path, QString(), Document::Save));
    EXPECT_EQ(TestSupport::readFile(path), "theirs\nshared\n");

    // Compare shows both versions and leaves the choice open.
    window.click("Compare");
    ASSERT_NE(window.notices()->comparison(), nullptr);
    QTRY_VERIFY(!window.notices()->comparison()->differences().isEmpty());
    const QString differences = window.notices()->comparison()->differences();
    EXPECT_TRUE(differences.contains("\n-theirs\n")) << differences.toStdString();
    EXPECT_TRUE(differences.contains("\n+first\n")) << differences.toStdString();
    EXPECT_TRUE(differences.contains("\n shared\n")) << differences.toStdString();
    EXPECT_TRUE(differences.contains("\n+mine")) << differences.toStdString();
    EXPECT_NE(window.bar(), nullptr);
    window.notices()->comparison()->close();

    // Reload takes the file's text; Undo gives the user's back, which one Save then writes.
    ASSERT_EQ(TestSupport::readFile(path), "theirs\nshared\n");
    window.click("Reload");
    EXPECT_EQ(window.bar(), nullptr);
    EXPECT_EQ(window.document->string(), "theirs\nshared\n");
    EXPECT_FALSE(window.document->isDocumentEdited());
    window.view()->undo();
    EXPECT_EQ(window.document->string(), mine);
    EXPECT_TRUE(window.document->isDocumentEdited());
    ASSERT_TRUE(DocumentController::sharedDocumentController().saveDocument(window.document));
    EXPECT_EQ(TestSupport::readFile(path), mine.toUtf8());

    // Keep my version: the text stays, unsaved, and the next Save replaces the file at once.
    QTest::keyClicks(window.view(), " again");
    anotherProgram(R"(printf 'theirs again, longer\n' > "$1")", path);
    QTRY_VERIFY(window.bar() != nullptr);
    window.click("Keep my version");
    EXPECT_EQ(window.bar(), nullptr);
    EXPECT_EQ(window.document->string(), mine + " again");
    EXPECT_TRUE(window.document->isDocumentEdited());
    ASSERT_TRUE(DocumentController::sharedDocumentController().saveDocument(window.document));
    EXPECT_EQ(TestSupport::readFile(path), (mine + " again").toUtf8());
}

TEST(DiskChangeNotices, ADeletedOrRenamedFileIsSaidAndWrittenAgainBySave)
{
    const QString dir = TestSupport::makeTempDir();
    const QString path = TestSupport::writeFile(dir + "/todo.txt", "milk\neggs\n");
    OpenWindow window(path);
    ASSERT_NE(window.controller, nullptr);

    anotherProgram(R"(mv "$1" "$(dirname "$1")/done.txt")", path);
    QTRY_VERIFY(window.bar() != nullptr);
    EXPECT_EQ(window.bar()->message(), "“todo.txt” has been renamed “done.txt” on disk by another "
                                       "program. Save writes it again as “todo.txt”.");
    // The window holds the only copy of the text under its name: closing it asks first.
    EXPECT_TRUE(window.document->isDocumentEdited());
    ASSERT_TRUE(DocumentController::sharedDocumentController().saveDocument(window.document));
    EXPECT_EQ(TestSupport::readFile(path), "milk\neggs\n");
    QTRY_VERIFY(window.bar() == nullptr);
    EXPECT_FALSE(window.document->isDocumentEdited());

    anotherProgram(R"(rm "$1")", path);
    QTRY_VERIFY(window.bar() != nullptr);
    EXPECT_EQ(window.bar()->message(), "“todo.txt” is no longer on disk: another program deleted "
                                       "or moved it. Save writes it again.");
    // Put back by the other program, with other contents in another encoding: the untouched
    // text follows it, detecting the encoding as an opening does.
    anotherProgram(R"(printf 'Br\366tchen\n' > "$1")", path);
    QTRY_VERIFY(window.document->string() == QStringLiteral("Br\u00f6tchen\n"));
    EXPECT_EQ(window.bar(), nullptr);
    EXPECT_FALSE(window.document->isDocumentEdited());

    // Removed again, and edited meanwhile: Save writes the user's text.
    anotherProgram(R"(rm "$1")", path);
    QTRY_VERIFY(window.bar() != nullptr);
    window.moveToEnd();
    QTest::keyClicks(window.view(), "butter");
    QTest::keyClick(window.view(), Qt::Key_Return);
    ASSERT_TRUE(DocumentController::sharedDocumentController().saveDocument(window.document));
    EXPECT_EQ(TestSupport::readFile(path), "Br\xf6tchen\nbutter\n");
    QTRY_VERIFY(window.bar() == nullptr);
}
