// The real editor as a user starts it: a second invocation hands its files to the first,
// and the unsaved text of an editor that was killed or terminated comes back at the next start.
#include "DBusTestSupport.h"
#include "document/Document.h"
#include "platform/UserDefaults.h"

#include <QDirIterator>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace DBusTestSupport;

namespace {

/// The document whose file is `file` (an empty name for an untitled one), once it is open.
QString documentWithFile(const QString& file)
{
    QString found;
    [[maybe_unused]] const bool open = QTest::qWaitFor(
        [&] {
            const int count = applicationProperty(QStringLiteral("count")).toInt();
            for (int index = 0; index < count && found.isEmpty(); ++index) {
                const QString path = documentAt(index);
                if (documentProperty(path, QStringLiteral("filePath")).toString() == file) {
                    found = path;
                }
            }
            return !found.isEmpty();
        },
        10000);
    return found;
}

bool frontContentsBecome(const QString& expected)
{
    // Generous: a million characters take their time on a slow or instrumented build.
    return QTest::qWaitFor(
        [&] { return frontDocumentProperty(QStringLiteral("contents")).toString() == expected; },
        20000);
}

} // namespace

TEST(Launch, ASecondInvocationHandsItsFilesAndStandardInputToTheFirstEditor)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    const QString dir = TestSupport::makeTempDir();
    const QString first = TestSupport::writeFile(dir + "/first.txt", "one\n");
    const QString second = TestSupport::writeFile(dir + "/second.c", "int a;\nint b;\n");
    const QString tooLong =
        TestSupport::writeFile(dir + "/long.txt", QByteArray(1'000'001, 'x') + "\n");
    Editor editor;
    ASSERT_TRUE(editor.start({first}));
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 1);

    const struct {
        const char* what;
        QString argument;
        int status;
        int documents;
        const char* says;
    } invocations[] = {
        {"a file and a position", second + ":2:5", 0, 2, ""},
        {"a folder, refused there too", dir, 1, 2, "is a folder"},
        // Reported in the editor; the invocation does not wait for that alert to go.
        {"a file that does not open there (a line too long to edit)", tooLong, 0, 2, ""},
    };
    for (const auto& c : invocations) {
        SCOPED_TRACE(c.what);
        QProcess invocation;
        ASSERT_TRUE(invoke(invocation, {c.argument}));
        EXPECT_EQ(invocation.exitCode(), c.status);
        EXPECT_TRUE(invocation.readAllStandardError().contains(c.says));
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return applicationProperty(QStringLiteral("count")).toInt() == c.documents; },
            5000));
    }
    EXPECT_EQ(frontDocumentProperty(QStringLiteral("filePath")).toString(), second);
    // Line 2, column 5: after "int a;\n" and four more characters.
    EXPECT_EQ(qdbus_cast<QList<qlonglong>>(frontDocumentProperty(QStringLiteral("textRange"))),
              QList<qlonglong>({11, 0}));

    // echo hi | tessaran -
    QProcess echo;
    echo.start(QStringLiteral(TESSARAN_EXECUTABLE), {QStringLiteral("-")});
    echo.write("hi\n");
    echo.closeWriteChannel();
    ASSERT_TRUE(echo.waitForFinished(20000));
    EXPECT_EQ(echo.exitCode(), 0);
    EXPECT_TRUE(frontContentsBecome(QStringLiteral("hi\n")));
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 3);
    EXPECT_EQ(frontDocumentProperty(QStringLiteral("filePath")).toString(), "");

    // The invocation returns at once; what comes later still arrives in the window.
    const QString fifo = dir + "/input";
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    // Opened for reading too, so that the invocation's opening of it does not wait.
    const int writer = ::open(QFile::encodeName(fifo).constData(), O_RDWR);
    ASSERT_GE(writer, 0);
    QProcess streamed;
    streamed.setStandardInputFile(fifo);
    streamed.start(QStringLiteral(TESSARAN_EXECUTABLE), {QStringLiteral("-")});
    ASSERT_EQ(::write(writer, "one\n", 4), 4);
    EXPECT_TRUE(streamed.waitForFinished(20000));
    EXPECT_EQ(streamed.exitCode(), 0);
    EXPECT_TRUE(frontContentsBecome(QStringLiteral("one\n")));
    ASSERT_EQ(::write(writer, "two\n", 4), 4);
    ::close(writer);
    EXPECT_TRUE(frontContentsBecome(QStringLiteral("one\ntwo\n")));
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 4);

    // Named on the command line, a pipe or a device is refused by the invocation itself.
    for (const QString& refused : {fifo, QStringLiteral("/dev/null")}) {
        SCOPED_TRACE(refused.toStdString());
        QProcess invocation;
        ASSERT_TRUE(invoke(invocation, {refused}));
        EXPECT_NE(invocation.exitCode(), 0);
        EXPECT_TRUE(invocation.readAllStandardError().contains("not a regular file"));
    }
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 4);
    EXPECT_TRUE(editor.kill());
}

TEST(Launch, APlainSecondInvocationOpensAWindowOnlyWhenThereIsNone)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    Editor editor;
    {
        UserDefaults settings(editor.settingsFile());
        settings.setBool(false, QStringLiteral("ShouldOpenUntitledFile"));
        settings.synchronize();
    }
    ASSERT_TRUE(editor.start({}));
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 0);
    // The first opens a window, the second only brings it forward.
    for (int run = 0; run < 2; ++run) {
        QProcess invocation;
        ASSERT_TRUE(invoke(invocation, {}));
        EXPECT_EQ(invocation.exitCode(), 0);
    }
    // A file named after them has its window only once they are done, so the count then
    // tells what they did.
    const QString file = TestSupport::writeFile(TestSupport::makeTempDir() + "/a.txt", "text\n");
    QProcess invocation;
    ASSERT_TRUE(invoke(invocation, {file}));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return frontDocumentProperty(QStringLiteral("filePath")).toString() == file; },
        5000));
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 2);
    EXPECT_TRUE(editor.kill());
}

TEST(Launch, UnsavedTextOutlivesAKillAndATerminationAndNeverTouchesTheFile)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    // Runs of one user, one after the other; copies are due a second after the first
    // unsaved change.
    Editor editor;
    TestSupport::writeFile(editor.settingsFile(), "[General]\nAutosavingDelay=1\n");
    // Every recovery copy the editors left, in one piece.
    const auto copies = [&] {
        QByteArray all;
        QDirIterator it(editor.data + "/Tessaran/Recovery", {"*.copy"}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            all += TestSupport::readFile(it.next());
        }
        return all;
    };
    const QByteArray onDisk = "on disk\n";
    const QString file = TestSupport::writeFile(TestSupport::makeTempDir() + "/notes.txt", onDisk);
    const auto expectBothBack = [&] {
        EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 2);
        EXPECT_EQ(documentProperty(documentWithFile(file), QStringLiteral("contents")).toString(),
                  "edited\n");
        EXPECT_EQ(
            documentProperty(documentWithFile(QString()), QStringLiteral("contents")).toString(),
            "from a pipe\n");
    };

    ASSERT_TRUE(editor.start({file, QStringLiteral("-")}));
    editor.process.write("from a pipe\n");
    editor.process.closeWriteChannel();
    const QString notes = documentWithFile(file);
    ASSERT_FALSE(notes.isEmpty());
    setDocumentProperty(notes, QStringLiteral("textRange"),
                        QVariant::fromValue(QList<qlonglong>{0, onDisk.size()}));
    setDocumentProperty(notes, QStringLiteral("contents"), QStringLiteral("edited\n"));
    // Autosave makes the copies and leaves the file alone.
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return copies().contains("\nedited\n") && copies().contains("\nfrom a pipe\n"); },
        15000));
    EXPECT_EQ(TestSupport::readFile(file), onDisk);
    ASSERT_TRUE(editor.kill());

    // The next start offers both back; the file is still as it was.
    ASSERT_TRUE(editor.start({}, false));
    expectBothBack();
    EXPECT_EQ(TestSupport::readFile(file), onDisk);

    // The session ends: the editor quits without a word or a question, and keeps copies of
    // what is still unsaved.
    editor.process.readAllStandardError();
    ::kill(pid_t(editor.process.processId()), SIGTERM);
    ASSERT_TRUE(editor.process.waitForFinished(20000));
    EXPECT_EQ(editor.process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(editor.process.exitCode(), 0);
    // The headless display of the tests has its own complaints about window hints; apart
    // from them, quitting prints nothing.
    QStringList printed = QString::fromUtf8(editor.process.readAllStandardError()).split(u'\n');
    printed.removeIf([](const QString& line) {
        return line.isEmpty() || line.startsWith("This plugin does not support");
    });
    EXPECT_TRUE(printed.isEmpty()) << printed.join(u'\n').toStdString();
    ASSERT_TRUE(gone());
    EXPECT_TRUE(copies().contains("\nedited\n") && copies().contains("\nfrom a pipe\n"));

    // Another program writes the file meanwhile: the text still comes back, over nothing.
    ASSERT_EQ(QProcess::execute("sh", {"-c", "printf 'other program\\n' > \"$1\"", "sh", file}), 0);
    ASSERT_TRUE(editor.start({}));
    expectBothBack();
    EXPECT_EQ(TestSupport::readFile(file), "other program\n");
    EXPECT_TRUE(editor.kill());
}

TEST(Launch, StandardInputStopsAtALineTooLongToEdit)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    Editor editor;
    ASSERT_TRUE(editor.start({QStringLiteral("-")}));

    // A line longer than the limit is taken up to the limit; nothing after it is read, and
    // the editor stays responsive.
    editor.process.write("one\r\n" + QByteArray(Document::maximumLineLength + 10, 'x') +
                         "\nlost\n");
    editor.process.closeWriteChannel();
    EXPECT_TRUE(frontContentsBecome("one\n" + QString(Document::maximumLineLength, u'x')));
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 1);
    EXPECT_TRUE(editor.kill());
}
