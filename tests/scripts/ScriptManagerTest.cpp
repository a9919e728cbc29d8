// Running scripts as real child processes and in-process.
#include "scripts/ScriptManager.h"

#include "ScriptTestSupport.h"
#include "TestSupport.h"
#include "app/JavaScriptRunner.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
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
    EXPECT_FALSE(options->takesProgramText());
    EXPECT_EQ(options->arguments("/tmp/source"), QStringList({"-w -T", "/tmp/source"}));
    const QString inline_ = QStringLiteral("#!/usr/bin/perl -w -e\nprint 1;\n");
    EXPECT_TRUE(ScriptManager::interpreterOfSource(inline_)->takesProgramText());
    EXPECT_EQ(ScriptManager::interpreterOfSource(inline_)->arguments(inline_),
              QStringList({"-w -e", inline_}));

    // The last "#!" line counts; without options the source is the only argument.
    const QString two = QStringLiteral("#!/bin/false\necho\n#!/bin/sh\n");
    EXPECT_EQ(ScriptManager::interpreterOfSource(two)->command, "/bin/sh");
    EXPECT_FALSE(ScriptManager::interpreterOfSource(two)->takesProgramText());
    EXPECT_EQ(ScriptManager::interpreterOfSource(two)->arguments("/tmp/source"),
              QStringList({"/tmp/source"}));

    // A command with blanks starts its first word.
    const QString env = QStringLiteral("#!/usr/bin/env python3 -c\n");
    const std::optional<Interpreter> python = ScriptManager::interpreterOfSource(env);
    EXPECT_EQ(python->program(), "/usr/bin/env");
    EXPECT_TRUE(python->takesProgramText());
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
    // Bytes that are not UTF-8 show as replacement characters, the rest as it is.
    EXPECT_EQ(ScriptManager::decodeOutputPiece(pending, "a\xFF"
                                                        "b"),
              QStringLiteral("a\uFFFDb"));
    EXPECT_EQ(ScriptManager::decodeOutputPiece(pending, "caf\xE9 ok"),
              QStringLiteral("caf\uFFFD ok"));
    EXPECT_TRUE(pending.isEmpty());
}

TEST_F(ScriptRunning, TheSelectionGoesInAndTheOutputReplacesIt)
{
    const struct {
        const char* what;
        QString text;
        Range selection;
        const char* source;
        const char* kind;
        QString expected;
    } cases[] = {
        {"output", "xabcx", {1, 3}, "#!/bin/sh -c\necho hi", "ShellScript", "xhi\nx"},
        {"standard error", "", {0, 0}, "#!/bin/sh -c\necho err >&2", "ShellScript", "err\n"},
        {"an empty selection is an input that ends at once",
         "ab",
         {1, 0},
         "#!/bin/sh -c\ncat; echo done",
         "ShellScript",
         "adone\nb"},
        {"the selection on standard input",
         u"<caf\u00e9\nline>"_qs,
         {1, 9},
         "#!/bin/sh -c\nprintf '['; cat; printf ']'",
         "ShellScript",
         u"<[caf\u00e9\nline]>"_qs},
        {"a character whose bytes arrive in two pieces",
         "",
         {0, 0},
         "#!/bin/sh -c\nprintf '\\303'; sleep 0.2; printf '\\251'",
         "ShellScript",
         u"\u00e9"_qs},
        // Latin-1 bytes amid UTF-8, then a character cut off by the end of the output.
        {"output that is not UTF-8",
         "",
         {0, 0},
         "#!/bin/sh\nprintf 'caf\\351 \\303\\251t\\351\\n'; printf '\\342\\202'\n",
         "ShellScript",
         u"caf\uFFFD \u00e9t\uFFFD\n\uFFFD\uFFFD"_qs},
        // Interpreters without a program-text option read the source from a file.
        {"sh from a file", "<abc>", {1, 3}, "#!/bin/sh\ntr a-z A-Z\n", "ShellScript", "<ABC>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Document* document = openDocument(c.text, c.selection.location, c.selection.length);
        runAndWait(QString::fromUtf8(c.source), QString::fromUtf8(c.kind));
        EXPECT_EQ(document->string(), c.expected);
        EXPECT_FALSE(manager().isFindRunning());
    }

    // The source goes in a file that exists while the script runs and is gone once it has ended.
    Document* path = openDocument(QString());
    runAndWait(QStringLiteral("#!/bin/sh\ntest -f \"$0\" && grep -q 'grep -q' \"$0\" && "
                              "printf %s \"$0\"\n"));
    EXPECT_TRUE(path->string().startsWith(QDir::tempPath() + "/tessaran-script-"))
        << path->string().toStdString();
    EXPECT_FALSE(QFileInfo::exists(path->string()));
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

TEST_F(ScriptRunning, WhatCannotRunSaysWhyAndLeavesTheText)
{
    AlertRecorder recorder;
    const QString dir = TestSupport::makeTempDir();
    Document* document = openDocument(QStringLiteral("abc"), 0, 3);
    QSignalSpy stopped(&manager(), &ScriptManager::processStopped);
    manager().runRegisterScriptWithPath(
        TestSupport::writeFile(dir + "/wrap.sh", "#!/bin/sh\nprintf '('; cat; printf ')'"));
    ASSERT_TRUE(stopped.wait(5000));
    EXPECT_EQ(document->string(), "(abc)");

    manager().runScriptWithSource(QStringLiteral("echo hi"), QStringLiteral("ShellScript"));
    manager().runScriptWithSource(QStringLiteral("#!/no/such/interpreter\n"),
                                  QStringLiteral("Ruby"));
    manager().runScriptWithSource(QStringLiteral("#!/usr/bin/env no-such-tessaran-program\n"),
                                  QStringLiteral("Python"));
    manager().runScriptWithSource(QStringLiteral("int main;"), QStringLiteral("C"));
    manager().runScriptWithSource(QStringLiteral("let x = ;\n"), QStringLiteral("AppleScript"));
    // Unknown extensions run nothing; the in-process kinds report what they cannot load.
    manager().runRegisterScriptWithPath(
        TestSupport::writeFile(dir + "/x.txt", "#!/bin/sh -c\necho"));
    EXPECT_FALSE(manager().isFindRunning());
    manager().runRegisterScriptWithPath(TestSupport::writeFile(dir + "/old.scpt", "compiled"));
    manager().runRegisterScriptWithPath(dir + "/missing.js");
    manager().runRegisterScriptWithPath(TestSupport::writeFile(dir + "/bad.js", "\n\nvar = 3;"));
    // One alert each; a compile error names its line.
    ASSERT_EQ(recorder.alerts.size(), 8u);
    EXPECT_EQ(recorder.alerts[0].text, "Not Found unix commands.");
    EXPECT_TRUE(recorder.alerts[7].text.startsWith("3 error\n"));
    EXPECT_EQ(document->string(), "(abc)");
    EXPECT_FALSE(manager().isFindRunning());
}

TEST_F(ScriptRunning, RunawayJavaScriptIsInterrupted)
{
    JavaScriptRunner::setTimeLimit(300);
    EXPECT_EQ(JavaScriptRunner::run(QStringLiteral("for (;;) {}")).outcome,
              JavaScriptRunner::Outcome::Interrupted);
    // The next script runs normally.
    EXPECT_EQ(JavaScriptRunner::run(QStringLiteral("1 + 1")).outcome,
              JavaScriptRunner::Outcome::Ran);
    JavaScriptRunner::setTimeLimit(JavaScriptRunner::DefaultTimeLimit);
}

namespace {

/// Whether a process has ended (a zombie nobody reaps has ended too).
bool processGone(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) {
        return true;
    }
    const QByteArray fields = stat.readAll();
    return fields.mid(fields.lastIndexOf(')') + 2, 1) == "Z";
}

} // namespace

TEST_F(ScriptRunning, OutputBeyondTheLimitStopsTheScript)
{
    AlertRecorder recorder;
    constexpr qint64 limit = 256 * 1024;
    ScriptManager::setOutputLimit(limit);
    Document* document = openDocument(QString());
    QSignalSpy stopped(&manager(), &ScriptManager::processStopped);
    manager().runScriptWithSource(QStringLiteral("#!/bin/sh\nexec yes 0123456789abcde\n"),
                                  QStringLiteral("ShellScript"));
    QPointer<QProcess> process = manager().task();
    ASSERT_TRUE(stopped.wait(30000));
    ScriptManager::setOutputLimit(ScriptManager::DefaultOutputLimit);

    // Exactly the output up to the limit went in.
    const QString text = document->string();
    EXPECT_EQ(text.size(), limit);
    EXPECT_EQ(text, QString("0123456789abcde\n").repeated(limit / 16));
    ASSERT_EQ(recorder.alerts.size(), 1u);
    EXPECT_TRUE(
        recorder.alerts[0].text.startsWith("The script was stopped because its output passed 256 "))
        << recorder.alerts[0].text.toStdString();
    EXPECT_FALSE(manager().isFindRunning());
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return !process || process->state() == QProcess::NotRunning; }, 10000));
}

TEST_F(ScriptRunning, StopScriptEndsTheScriptAndWhatItStarted)
{
    Document* document = openDocument(QString());
    QAction* stop = windowOf(document)->window()->findChild<QAction*>(u"stopScript"_qs);
    ASSERT_NE(stop, nullptr);
    EXPECT_FALSE(stop->isEnabled());

    // It prints the number of a process it started and waits for it for ever.
    manager().runScriptWithSource(QStringLiteral("#!/bin/sh\nsleep 100000 &\necho $!\nwait\n"),
                                  QStringLiteral("ShellScript"));
    EXPECT_TRUE(stop->isEnabled());
    ASSERT_TRUE(QTest::qWaitFor([&] { return document->string().endsWith(u'\n'); }, 10000));
    const qint64 sleeper = document->string().trimmed().toLongLong();
    ASSERT_GT(sleeper, 0);
    QPointer<QProcess> process = manager().task();

    QSignalSpy stopped(&manager(), &ScriptManager::processStopped);
    stop->trigger();
    EXPECT_EQ(stopped.count(), 1);
    EXPECT_FALSE(stop->isEnabled());
    EXPECT_FALSE(manager().isFindRunning());
    EXPECT_TRUE(QTest::qWaitFor([&] { return processGone(sleeper); }, 10000));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return !process || process->state() == QProcess::NotRunning; }, 10000));
}

TEST_F(ScriptRunning, OutputGoesOnlyToTheDocumentInFrontAtTheStart)
{
    const QString dir = TestSupport::makeTempDir();
    const QString go = dir + "/go";
    // "one" at once, "two" when the test says so, then (for the second run) nothing more.
    const QString source = QStringLiteral("#!/bin/sh\necho one\nwhile [ ! -e '%1' ]; do sleep "
                                          "0.05; done\necho two\n%2\n");
    Document* first = openDocument(QString());
    QSignalSpy stopped(&manager(), &ScriptManager::processStopped);
    manager().runScriptWithSource(source.arg(go, QString()), QStringLiteral("ShellScript"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return first->string() == "one\n"; }, 10000));
    // Another window comes to the front: the rest of the output still goes to the first.
    Document* second = openDocument(QString());
    TestSupport::writeFile(go, "");
    ASSERT_TRUE(stopped.wait(10000));
    EXPECT_EQ(first->string(), "one\ntwo\n");
    EXPECT_EQ(second->string(), "");

    // Closing the window that receives the output stops the script; nothing goes elsewhere.
    QFile::remove(go);
    Document* third = openDocument(QString());
    manager().runScriptWithSource(source.arg(go, QStringLiteral("while :; do echo more; sleep "
                                                                "0.05; done")),
                                  QStringLiteral("ShellScript"));
    QPointer<QProcess> process = manager().task();
    ASSERT_TRUE(QTest::qWaitFor([&] { return third->string() == "one\n"; }, 10000));
    stopped.clear();
    closeWindowOf(third);
    ASSERT_TRUE(stopped.count() > 0 || stopped.wait(10000));
    EXPECT_FALSE(manager().isFindRunning());
    TestSupport::writeFile(go, "");
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return !process || process->state() == QProcess::NotRunning; }, 10000));
    EXPECT_EQ(first->string(), "one\ntwo\n");
    EXPECT_EQ(second->string(), "");

    // With no document window at all, the output goes nowhere: no window opens for it.
    closeAllDocuments();
    runAndWait(QStringLiteral("#!/bin/sh\necho lost\n"));
    EXPECT_TRUE(DocumentController::sharedDocumentController().documents().empty());
}
