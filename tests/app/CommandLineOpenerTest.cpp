#include "app/CommandLineOpener.h"

#include "TestSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QFileInfo>
#include <QTest>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

TextView* viewOf(Document* document)
{
    return DocumentController::sharedDocumentController().windowControllerOf(document)->textView();
}

} // namespace

TEST(CommandLineOpener, FilesPositionsEncodingsAndNewNames)
{
    DocumentController& controller = DocumentController::sharedDocumentController();
    controller.discardAllDocuments();
    const QString dir = TestSupport::makeTempDir();
    const QString source = TestSupport::writeFile(dir + "/a.c", "one\ntwo\nthree four\n");
    // "日本" in Shift_JIS: read so only when the command line says so.
    const QString japanese = TestSupport::writeFile(dir + "/j.txt", "\x93\xfa\x96\x7b\n");
    const QString fresh = dir + "/new.txt";

    const CommandLine line = CommandLine::parse({source + ":3:7", fresh, "--line", "2"});
    ASSERT_TRUE(line.ok());
    const QList<Document*> opened = CommandLineOpener::open(line);
    ASSERT_EQ(opened.size(), 2);
    const qsizetype caret = viewOf(opened[0])->cursorPosition();
    EXPECT_EQ(opened[0]->lineOfPosition(caret), 2);
    EXPECT_EQ(caret - opened[0]->rangeOfLine(2).location, 6);
    // A name that does not exist yet is a new document that saves under it.
    EXPECT_EQ(opened[1]->fileURL(), QFileInfo(fresh).absoluteFilePath());
    EXPECT_FALSE(QFileInfo::exists(fresh));
    opened[1]->setTextStorage(QStringLiteral("saved\n"));
    ASSERT_TRUE(controller.saveDocument(opened[1]));
    EXPECT_EQ(TestSupport::readFile(fresh), "saved\n");

    const QList<Document*> shiftJis =
        CommandLineOpener::open(CommandLine::parse({"--encoding", "shift_jis", japanese}));
    ASSERT_EQ(shiftJis.size(), 1);
    EXPECT_EQ(shiftJis[0]->documentEncoding(), 0x80000A01u);
    EXPECT_EQ(shiftJis[0]->string(), QStringLiteral("\u65e5\u672c\n"));
    EXPECT_FALSE(controller.isOpenPanel());
    // An encoding beyond the list, over the detection, which reads these bytes as KOI8-R.
    const QString russian = TestSupport::writeFile(dir + "/r.txt", "\xf0\xd2\xc9\xd7\xc5\xd4\n");
    const QList<Document*> cyrillic =
        CommandLineOpener::open(CommandLine::parse({"--encoding", "windows-1251", russian}));
    ASSERT_EQ(cyrillic.size(), 1);
    EXPECT_EQ(cyrillic[0]->documentEncoding(), 0x80000502u);
    EXPECT_EQ(cyrillic[0]->string(), QStringLiteral("рТЙЧЕФ\n"));

    EXPECT_TRUE(CommandLineOpener::unreadableFiles(CommandLine::parse({source, fresh})).isEmpty());
    EXPECT_EQ(CommandLineOpener::unreadableFiles(CommandLine::parse({dir, dir + "/no/x"})).size(),
              2);
    controller.discardAllDocuments();
}

TEST(DocumentController, AFileAlreadyOpenLeavesTheOpenPanelsEncodingToTheNextFile)
{
    const QString dir = TestSupport::makeTempDir();
    const QString open = TestSupport::writeFile(dir + "/open.txt", "caf\xe9\n");
    const QString next = TestSupport::writeFile(dir + "/next.txt", "caf\xe9\n");
    DocumentController& controller = DocumentController::sharedDocumentController();
    Document* first = controller.openDocumentWithContentsOfURL(open, false);
    ASSERT_NE(first, nullptr);

    // The open panel's choice of two files, the first of them open already, in Mac OS Roman.
    constexpr quint64 kMacRoman = 30;
    controller.setIsOpenPanel(true);
    controller.setOpenPanelEncoding(kMacRoman);
    EXPECT_EQ(controller.openDocumentWithContentsOfURL(open, false), first);
    Document* second = controller.openDocumentWithContentsOfURL(next, false);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->documentEncoding(), kMacRoman);
    EXPECT_EQ(second->string(), QStringLiteral("caf\u00c8\n"));
    EXPECT_FALSE(controller.isOpenPanel());
    controller.setOpenPanelEncoding(~quint64(0));
    controller.discardAllDocuments();
}

TEST(CommandLineOpener, StandardInputBecomesAnUntitledDocumentAsItArrives)
{
    int pipeEnds[2];
    ASSERT_EQ(pipe(pipeEnds), 0);
    const int savedInput = dup(STDIN_FILENO);
    dup2(pipeEnds[0], STDIN_FILENO);
    close(pipeEnds[0]);

    const QList<Document*> opened = CommandLineOpener::open(CommandLine::parse({"-"}));
    ASSERT_EQ(opened.size(), 1);
    Document* document = opened[0];
    EXPECT_TRUE(document->fileURL().isEmpty());
    // "é", and a CR LF, split between two writes still arrive whole.
    ASSERT_EQ(write(pipeEnds[1], "make: caf\xc3", 10), 10);
    EXPECT_TRUE(QTest::qWaitFor([&] { return document->string() == "make: caf"; }, 5000));
    ASSERT_EQ(write(pipeEnds[1], "\xa9\r", 2), 2);
    EXPECT_TRUE(QTest::qWaitFor([&] { return document->string() == "make: caf\u00e9"; }, 5000));
    ASSERT_EQ(write(pipeEnds[1], "\nerror\n", 7), 7);
    close(pipeEnds[1]);
    EXPECT_TRUE(QTest::qWaitFor([&] { return document->isDocumentEdited(); }, 5000));
    EXPECT_EQ(document->string(), QStringLiteral("make: caf\u00e9\nerror\n"));
    EXPECT_FALSE(document->canUndo());

    dup2(savedInput, STDIN_FILENO);
    close(savedInput);
    DocumentController::sharedDocumentController().discardAllDocuments();
}
