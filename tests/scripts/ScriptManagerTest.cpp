// Running scripts as real child processes and in-process.
#include "scripts/ScriptManager.h"

#include "ScriptTestSupport.h"
#include "TestSupport.h"
#include "scripts/JavaScriptRunner.h"

#include <QDir>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace ScriptTestSupport;

namespace {

ScriptManager& manager()
{
    return ScriptManager::sharedScriptManager();
}

/// Runs `source` as `kind` and waits until its child has ended.
void runAndWait(const QString& source, const QString& kind = QStringLiteral("ShellScript"))
{
    QSignalSpy stopped(&manager(), &ScriptManager::processStopped);
    manager().runScriptWithSource(source, kind);
    ASSERT_TRUE(stopped.count() > 0 || stopped.wait(5000)) << source.toStdString();
}

class ScriptRunning : public ::testing::Test
{
protected:
    void TearDown() override { closeAllDocuments(); }
};

} // namespace

TEST(ScriptManager, ReadsTheInterpreterLine)
{
    using Interpreter = ScriptManager::Interpreter;
    const QString perl = QStringLiteral("#!/usr/bin/perl -w -T\nprint 1;\n");
    const std::optional<Interpreter> options = ScriptManager::interpreterOfSource(perl);
    ASSERT_TRUE(options);
    EXPECT_EQ(options->program(), "/usr/bin/perl");
    EXPECT_EQ(options->arguments(perl), QStringList({"-w -T", perl}));

    // The last "#!" line counts; without options the source is the only argument.
    const QString two = QStringLiteral("#!/bin/false\necho\n#!/bin/sh\n");
    EXPECT_EQ(ScriptManager::interpreterOfSource(two)->command, "/bin/sh");
    EXPECT_EQ(ScriptManager::interpreterOfSource(two)->arguments(two), QStringList({two}));

    // A command with blanks starts its first word.
    const QString env = QStringLiteral("#!/usr/bin/env python3 -c\n");
    const std::optional<Interpreter> python = ScriptManager::interpreterOfSource(env);
    EXPECT_EQ(python->program(), "/usr/bin/env");
    EXPECT_EQ(python->arguments(env), QStringList({"python3", "-c", env}));
    EXPECT_TRUE(ScriptManager::isRunnable(*python));
    EXPECT_FALSE(ScriptManager::isRunnable(
        {QStringLiteral("/usr/bin/env no-such-tessaran-interpreter"), {}}));
    EXPECT_FALSE(ScriptManager::isRunnable({QStringLiteral("/no/such/interpreter"), {}}));

    EXPECT_FALSE(ScriptManager::interpreterOfSource(QStringLiteral("echo hi\n")));
    EXPECT_FALSE(ScriptManager::interpreterOfSource(QStringLiteral("#! sh\n")));
    EXPECT_FALSE(ScriptManager::findString(QString(), QStringLiteral("(.*)")));
}

TEST(ScriptManager, KeepsACharacterSplitBetweenPieces)
{
    QByteArray pending;
    EXPECT_EQ(ScriptManager::decodeOutputPiece(pending, "caf\xC3"), "caf");
    EXPECT_EQ(pending, "\xC3");
    EXPECT_EQ(ScriptManager::decodeOutputPiece(pending, "\xA9!"), QStringLiteral("é!"));
    EXPECT_TRUE(pending.isEmpty());
    // Four-byte characters cut after one, two or three bytes.
    const QByteArray face = QStringLiteral("\U0001F600").toUtf8();
    for (int cut = 1; cut < 4; ++cut) {
        EXPECT_EQ(ScriptManager::decodeOutputPiece(pending, face.left(cut)), "");
        EXPECT_EQ(ScriptManager::decodeOutputPiece(pending, face.mid(cut)),
                  QStringLiteral("\U0001F600"));
    }
    // Bytes that are not UTF-8 give nothing.
    EXPECT_EQ(ScriptManager::decodeOutputPiece(pending, "a\xFF"
                                                        "b"),
              "");
}

TEST_F(ScriptRunning, OutputReplacesTheSelection)
{
    Document* document = openDocument(QStringLiteral("xabcx"), 1, 3);
    runAndWait(QStringLiteral("#!/bin/sh -c\necho hi"));
    EXPECT_EQ(document->string(), "xhi\nx");
    EXPECT_FALSE(manager().isFindRunning());

    // The options of the "#!" line are one argument, the source the last one.
    Document* echo = openDocument(QString());
    runAndWait(QStringLiteral("#!/bin/echo -w -T"));
    EXPECT_EQ(echo->string(), "-w -T #!/bin/echo -w -T\n");

    // The last of two "#!" lines is used; the working folder is the home folder.
    Document* two = openDocument(QString());
    runAndWait(QStringLiteral("#!/bin/false\n#!/bin/sh -c\npwd"));
    EXPECT_EQ(two->string(), QDir::homePath() + u'\n');

    // Standard error goes in with the output.
    Document* errors = openDocument(QString());
    runAndWait(QStringLiteral("#!/bin/sh -c\necho out; echo err >&2"));
    EXPECT_TRUE(errors->string().contains("err\n"));
}

TEST_F(ScriptRunning, SelectionOnStandardInput)
{
    // An empty selection is an input that ends at once: cat returns.
    Document* empty = openDocument(QStringLiteral("ab"), 1, 0);
    runAndWait(QStringLiteral("#!/bin/sh -c\ncat; echo done"));
    EXPECT_EQ(empty->string(), "adone\nb");

    Document* text = openDocument(QStringLiteral("<caf\u00e9\nline>"), 1, 9);
    runAndWait(QStringLiteral("#!/bin/sh -c\nprintf '['; cat; printf ']'"));
    EXPECT_EQ(text->string(), QStringLiteral("<[caf\u00e9\nline]>"));

    // A character whose bytes arrive in two pieces.
    Document* split = openDocument(QString());
    runAndWait(QStringLiteral("#!/bin/sh -c\nprintf '\\303'; sleep 0.2; printf '\\251'"));
    EXPECT_EQ(split->string(), QStringLiteral("\u00e9"));
}

TEST_F(ScriptRunning, PerlAndPython)
{
    Document* perl = openDocument(QStringLiteral("abc"), 0, 3);
    runAndWait(QStringLiteral("# Perl reads switches from a first \"#!\" line: keep it second.\n"
                              "#!/usr/bin/perl -w -e\nwhile (<STDIN>) { print uc $_; }"),
               QStringLiteral("Perl"));
    EXPECT_EQ(perl->string(), "ABC");

    Document* python = openDocument(QStringLiteral("abc"), 0, 3);
    runAndWait(QStringLiteral("#!/usr/bin/python3 -c\nimport sys\n"
                              "sys.stdout.write(sys.stdin.read()[::-1])"),
               QStringLiteral("Python"));
    EXPECT_EQ(python->string(), "cba");
}

TEST_F(ScriptRunning, NewDocumentReceivesEveryPiece)
{
    Document* original = openDocument(QStringLiteral("keep"), 0, 4);
    const auto before = DocumentController::sharedDocumentController().documents().size();
    runAndWait(QStringLiteral("#!/bin/sh -c\n# @new\necho one; sleep 0.3; echo two"));
    const auto& documents = DocumentController::sharedDocumentController().documents();
    ASSERT_EQ(documents.size(), before + 1);
    EXPECT_EQ(documents.back()->string(), "one\ntwo\n");
    EXPECT_EQ(original->string(), "keep");
    EXPECT_FALSE(manager().isNewWindow());
}

TEST_F(ScriptRunning, ASecondScriptStopsTheFirst)
{
    Document* document = openDocument(QString());
    manager().runScriptWithSource(QStringLiteral("#!/bin/sh -c\necho early; sleep 0.6; echo late"),
                                  QStringLiteral("ShellScript"));
    QTRY_COMPARE_WITH_TIMEOUT(document->string(), QStringLiteral("early\n"), 5000);
    QPointer<QProcess> first = manager().task();
    runAndWait(QStringLiteral("#!/bin/sh -c\necho second"));
    QTest::qWait(1000);
    EXPECT_EQ(document->string(), "early\nsecond\n");
    EXPECT_TRUE(!first || first->state() == QProcess::NotRunning);
}

TEST_F(ScriptRunning, Alerts)
{
    AlertRecorder recorder;
    Document* document = openDocument(QStringLiteral("text"));
    manager().runScriptWithSource(QStringLiteral("echo hi"), QStringLiteral("ShellScript"));
    manager().runScriptWithSource(QStringLiteral("#!/no/such/interpreter\n"),
                                  QStringLiteral("Ruby"));
    manager().runScriptWithSource(QStringLiteral("#!/usr/bin/env no-such-tessaran-program\n"),
                                  QStringLiteral("Python"));
    manager().runScriptWithSource(QStringLiteral("int main;"), QStringLiteral("C"));
    manager().runScriptWithSource(QStringLiteral("let x = ;\n"), QStringLiteral("AppleScript"));
    ASSERT_EQ(recorder.alerts.size(), 5u);
    EXPECT_EQ(recorder.alerts[0].title, "Notice");
    EXPECT_EQ(recorder.alerts[0].text, "Not Found unix commands.");
    EXPECT_TRUE(recorder.alerts[1].text.startsWith("Not Found unix commands."));
    EXPECT_TRUE(recorder.alerts[2].text.startsWith("Not Found unix commands."));
    EXPECT_EQ(recorder.alerts[3].title, "This source cannot be performed.");
    EXPECT_EQ(recorder.alerts[3].text, "Notice");
    EXPECT_EQ(recorder.alerts[4].title, "Error Script");
    EXPECT_TRUE(recorder.alerts[4].text.startsWith("1 error\n"));
    EXPECT_TRUE(recorder.alerts[4].caution);
    EXPECT_EQ(document->string(), "text");
    EXPECT_FALSE(manager().isFindRunning());
}

TEST_F(ScriptRunning, ScriptFilesByExtension)
{
    AlertRecorder recorder;
    const QString dir = TestSupport::makeTempDir();
    Document* document = openDocument(QStringLiteral("abc"), 0, 3);
    QSignalSpy stopped(&manager(), &ScriptManager::processStopped);
    manager().runRegisterScriptWithPath(
        TestSupport::writeFile(dir + "/wrap.sh", "#!/bin/sh -c\nprintf '('; cat; printf ')'"));
    ASSERT_TRUE(stopped.wait(5000));
    EXPECT_EQ(document->string(), "(abc)");

    // Unknown extensions run nothing; the in-process kinds report what they cannot load.
    manager().runRegisterScriptWithPath(
        TestSupport::writeFile(dir + "/x.txt", "#!/bin/sh -c\necho"));
    EXPECT_FALSE(manager().isFindRunning());
    manager().runRegisterScriptWithPath(TestSupport::writeFile(dir + "/old.scpt", "compiled"));
    manager().runRegisterScriptWithPath(dir + "/missing.js");
    manager().runRegisterScriptWithPath(TestSupport::writeFile(dir + "/bad.js", "\n\nvar = 3;"));
    ASSERT_EQ(recorder.alerts.size(), 3u);
    EXPECT_EQ(recorder.alerts[0].title, "Error");
    EXPECT_EQ(recorder.alerts[0].text, "No entries found.");
    EXPECT_TRUE(recorder.alerts[0].applicationModal);
    EXPECT_EQ(recorder.alerts[1].text, "No entries found.");
    EXPECT_TRUE(recorder.alerts[2].text.startsWith("3 error\n"));
    EXPECT_EQ(document->string(), "(abc)");
}

TEST_F(ScriptRunning, RunawayJavaScriptIsInterrupted)
{
    JavaScriptRunner::setTimeLimit(300);
    QElapsedTimer timer;
    timer.start();
    const JavaScriptRunner::Result result = JavaScriptRunner::run(QStringLiteral("for (;;) {}"));
    EXPECT_EQ(result.outcome, JavaScriptRunner::Outcome::Interrupted);
    EXPECT_LT(timer.elapsed(), 3000);
    // The next script runs normally.
    EXPECT_EQ(JavaScriptRunner::run(QStringLiteral("1 + 1")).outcome,
              JavaScriptRunner::Outcome::Ran);
    JavaScriptRunner::setTimeLimit(JavaScriptRunner::DefaultTimeLimit);
}

TEST_F(ScriptRunning, AlertsAreSheetsOnTheWindow)
{
    Document* document = openDocument(QStringLiteral("text"));
    DocumentWindow* window =
        DocumentController::sharedDocumentController().windowControllerOf(document)->window();
    ScriptAlert::show(QStringLiteral("Notice"), QStringLiteral("Not Found unix commands."), true,
                      false, window);
    auto* sheet = window->findChild<QMessageBox*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    // The headline in the body, where the title bar cannot cut it off.
    EXPECT_EQ(sheet->text(), "Notice");
    EXPECT_EQ(sheet->informativeText(), "Not Found unix commands.");
    EXPECT_EQ(sheet->icon(), QMessageBox::Warning);
    EXPECT_EQ(sheet->buttons().size(), 1);
    EXPECT_TRUE(sheet->isVisible());
    sheet->accept();
}
