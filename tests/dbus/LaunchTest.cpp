// The real editor as a user starts it: a second invocation hands its files to the first,
// and the unsaved text of an editor that was killed or terminated comes back at the next start.
#include "TestSupport.h"
#include "document/Document.h"
#include "platform/UserDefaults.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QDirIterator>
#include <QProcess>
#include <QTest>

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString kService = QStringLiteral("org.tessaran.Tessaran");
const QString kApplicationPath = QStringLiteral("/org/tessaran/Tessaran");

QDBusConnection bus()
{
    return QDBusConnection::sessionBus();
}

bool editorListening(int milliseconds = 15000)
{
    return QTest::qWaitFor([] { return bus().interface()->isServiceRegistered(kService).value(); },
                           milliseconds);
}

QVariant property(const QString& path, const QString& interface, const QString& name)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        kService, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    message.setArguments({interface, name});
    const QDBusMessage reply = bus().call(message, QDBus::Block, 5000);
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

QVariant applicationProperty(const QString& name)
{
    return property(kApplicationPath, QStringLiteral("org.tessaran.Tessaran.Application"), name);
}

QVariant frontDocumentProperty(const QString& name)
{
    const QString path =
        applicationProperty(QStringLiteral("frontDocument")).value<QDBusObjectPath>().path();
    return property(path, QStringLiteral("org.tessaran.Tessaran.Document"), name);
}

QString documentPath(int index)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        kService, kApplicationPath, QStringLiteral("org.tessaran.Tessaran.Application"),
        QStringLiteral("document"));
    message.setArguments({index});
    const QDBusMessage reply = bus().call(message, QDBus::Block, 5000);
    return reply.arguments().value(0).value<QDBusObjectPath>().path();
}

/// The document whose file is `file` (an empty name for an untitled one), once it is open.
QString documentWithFile(const QString& file)
{
    QString found;
    [[maybe_unused]] const bool open = QTest::qWaitFor(
        [&] {
            const int count = applicationProperty(QStringLiteral("count")).toInt();
            for (int index = 0; index < count && found.isEmpty(); ++index) {
                const QString path = documentPath(index);
                if (property(path, QStringLiteral("org.tessaran.Tessaran.Document"),
                             QStringLiteral("filePath"))
                        .toString() == file) {
                    found = path;
                }
            }
            return !found.isEmpty();
        },
        10000);
    return found;
}

QVariant documentProperty(const QString& file, const QString& name)
{
    return property(documentWithFile(file), QStringLiteral("org.tessaran.Tessaran.Document"), name);
}

void setDocumentProperty(const QString& path, const QString& name, const QVariant& value)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        kService, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"));
    message.setArguments({QStringLiteral("org.tessaran.Tessaran.Document"), name,
                          QVariant::fromValue(QDBusVariant(value))});
    bus().call(message, QDBus::Block, 5000);
}

/// Waits until no editor holds the name any more.
bool editorGone()
{
    return QTest::qWaitFor([] { return !bus().interface()->isServiceRegistered(kService).value(); },
                           15000);
}

} // namespace

TEST(Launch, ASecondInvocationOpensItsFileInTheFirstEditor)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    const QString dir = TestSupport::makeTempDir();
    const QString first = TestSupport::writeFile(dir + "/first.txt", "one\n");
    const QString second = TestSupport::writeFile(dir + "/second.c", "int a;\nint b;\n");

    QProcess editor;
    editor.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    editor.start(QStringLiteral(TESSARAN_EXECUTABLE), {first});
    ASSERT_TRUE(editorListening());
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 1);

    QProcess invocation;
    invocation.start(QStringLiteral(TESSARAN_EXECUTABLE), {second + ":2:5"});
    ASSERT_TRUE(invocation.waitForFinished(20000));
    EXPECT_EQ(invocation.exitCode(), 0);
    EXPECT_TRUE(QTest::qWaitFor(
        [] { return applicationProperty(QStringLiteral("count")).toInt() == 2; }, 5000));
    EXPECT_EQ(frontDocumentProperty(QStringLiteral("filePath")).toString(), second);
    // Line 2, column 5: after "int a;\n" and four more characters.
    EXPECT_EQ(qdbus_cast<QList<qlonglong>>(frontDocumentProperty(QStringLiteral("textRange"))),
              QList<qlonglong>({11, 0}));

    // A folder is refused there too, and the invocation says why.
    QProcess refused;
    refused.start(QStringLiteral(TESSARAN_EXECUTABLE), {dir});
    ASSERT_TRUE(refused.waitForFinished(20000));
    EXPECT_EQ(refused.exitCode(), 1);
    EXPECT_TRUE(refused.readAllStandardError().contains("is a folder"));
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 2);

    // A file that turns out not to open there (a line too long to edit) is reported in the
    // editor; the invocation does not wait for that alert to be dismissed.
    const QString tooLong =
        TestSupport::writeFile(dir + "/long.txt", QByteArray(1'000'001, 'x') + "\n");
    QProcess handedOver;
    handedOver.start(QStringLiteral(TESSARAN_EXECUTABLE), {tooLong});
    ASSERT_TRUE(handedOver.waitForFinished(20000));
    EXPECT_EQ(handedOver.exitCode(), 0);
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 2);

    editor.kill();
    editor.waitForFinished();
    EXPECT_TRUE(editorGone());
}

TEST(Launch, APlainSecondInvocationBringsTheEditorForwardWithoutANewWindow)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    const QString dir = TestSupport::makeTempDir();
    const auto invoke = [](const QStringList& arguments) {
        QProcess invocation;
        invocation.start(QStringLiteral(TESSARAN_EXECUTABLE), arguments);
        return invocation.waitForFinished(20000) &&
               invocation.exitStatus() == QProcess::NormalExit && invocation.exitCode() == 0;
    };
    // A file opened after the plain invocations has its window only once they are done, so
    // the count then tells what they did.
    const auto countAfterOpening = [&](const QString& name) {
        const QString file = TestSupport::writeFile(dir + u'/' + name, "text\n");
        EXPECT_TRUE(invoke({file}));
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return frontDocumentProperty(QStringLiteral("filePath")).toString() == file; },
            5000));
        return applicationProperty(QStringLiteral("count")).toInt();
    };
    const struct {
        const char* name;
        bool untitledAtStart;
        QStringList arguments;
        int documentsAtStart;
        int documentsAfterTwoPlainInvocations; // before the file opened to count them
    } cases[] = {
        {"a window open", true, {TestSupport::writeFile(dir + "/open.txt", "open\n")}, 1, 1},
        // No window at all: the first plain invocation opens one, the second only raises it.
        {"no window", false, {}, 0, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        // Its own settings and data folders: nothing recovered, untitled window as asked.
        const QString home = TestSupport::makeTempDir();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_DATA_HOME"), home + "/data");
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + "/config");
        {
            UserDefaults settings(home + "/config/Tessaran/Tessaran.conf");
            settings.setBool(c.untitledAtStart, QStringLiteral("ShouldOpenUntitledFile"));
            settings.synchronize();
        }
        QProcess editor;
        editor.setProcessEnvironment(environment);
        editor.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        editor.start(QStringLiteral(TESSARAN_EXECUTABLE), c.arguments);
        ASSERT_TRUE(editorListening());
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                return applicationProperty(QStringLiteral("count")).toInt() == c.documentsAtStart;
            },
            5000));
        EXPECT_TRUE(invoke({}));
        EXPECT_TRUE(invoke({}));
        EXPECT_EQ(countAfterOpening(QStringLiteral("%1.txt").arg(c.documentsAtStart)),
                  c.documentsAfterTwoPlainInvocations + 1);
        editor.kill();
        editor.waitForFinished();
        EXPECT_TRUE(editorGone());
    }
}

TEST(Launch, ASecondInvocationHandsOverStandardInputAndRefusesPipesAndDevices)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    const QString dir = TestSupport::makeTempDir();
    const QString first = TestSupport::writeFile(dir + "/first.txt", "one\n");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), TestSupport::makeTempDir());
    QProcess editor;
    editor.setProcessEnvironment(environment);
    editor.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    editor.start(QStringLiteral(TESSARAN_EXECUTABLE), {first});
    ASSERT_TRUE(editorListening());
    const auto contentsBecome = [](const QString& expected) {
        return QTest::qWaitFor(
            [&] {
                return frontDocumentProperty(QStringLiteral("contents")).toString() == expected;
            },
            10000);
    };

    // echo hi | tessaran -
    QProcess echo;
    echo.start(QStringLiteral(TESSARAN_EXECUTABLE), {QStringLiteral("-")});
    echo.write("hi\n");
    echo.closeWriteChannel();
    ASSERT_TRUE(echo.waitForFinished(20000));
    EXPECT_EQ(echo.exitCode(), 0);
    EXPECT_TRUE(contentsBecome(QStringLiteral("hi\n")));
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 2);
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
    EXPECT_TRUE(contentsBecome(QStringLiteral("one\n")));
    ASSERT_EQ(::write(writer, "two\n", 4), 4);
    ::close(writer);
    EXPECT_TRUE(contentsBecome(QStringLiteral("one\ntwo\n")));
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 3);

    // Named on the command line, a pipe or a device is refused by the invocation itself.
    for (const QString& refused : {fifo, QStringLiteral("/dev/null")}) {
        SCOPED_TRACE(refused.toStdString());
        QProcess invocation;
        invocation.start(QStringLiteral(TESSARAN_EXECUTABLE), {refused});
        ASSERT_TRUE(invocation.waitForFinished(20000));
        EXPECT_NE(invocation.exitCode(), 0);
        EXPECT_TRUE(invocation.readAllStandardError().contains("not a regular file"));
    }
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 3);

    editor.kill();
    editor.waitForFinished();
    EXPECT_TRUE(editorGone());
}

TEST(Launch, UnsavedTextOutlivesAKillAndATerminationAndNeverTouchesTheFile)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    // The editor's own settings and data, kept from one start to the next; copies are due a
    // second after the first unsaved change.
    const QString data = TestSupport::makeTempDir();
    const QString config = TestSupport::makeTempDir();
    TestSupport::writeFile(config + "/Tessaran/Tessaran.conf", "[General]\nAutosavingDelay=1\n");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), data);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config);
    const auto start = [&](QProcess& editor, const QStringList& arguments) {
        editor.setProcessEnvironment(environment);
        editor.start(QStringLiteral(TESSARAN_EXECUTABLE), arguments);
        return editorListening();
    };
    // Every recovery copy the editors left, in one piece.
    const auto copies = [&] {
        QByteArray all;
        QDirIterator it(data + "/Tessaran/Recovery", {"*.copy"}, QDir::Files,
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
        EXPECT_EQ(documentProperty(file, QStringLiteral("contents")).toString(), "edited\n");
        EXPECT_EQ(documentProperty(QString(), QStringLiteral("contents")).toString(),
                  "from a pipe\n");
    };

    QProcess editor;
    editor.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    ASSERT_TRUE(start(editor, {file, QStringLiteral("-")}));
    editor.write("from a pipe\n");
    editor.closeWriteChannel();
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
    ::kill(pid_t(editor.processId()), SIGKILL);
    editor.waitForFinished();
    ASSERT_TRUE(editorGone());

    // The next start offers both back; the file is still as it was.
    QProcess again;
    ASSERT_TRUE(start(again, {}));
    expectBothBack();
    EXPECT_EQ(TestSupport::readFile(file), onDisk);

    // The session ends: the editor quits without a word or a question, and keeps copies of
    // what is still unsaved.
    again.readAllStandardError();
    ::kill(pid_t(again.processId()), SIGTERM);
    ASSERT_TRUE(again.waitForFinished(20000));
    EXPECT_EQ(again.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(again.exitCode(), 0);
    // The headless display of the tests has its own complaints about window hints; apart
    // from them, quitting prints nothing.
    QStringList printed = QString::fromUtf8(again.readAllStandardError()).split(u'\n');
    printed.removeIf([](const QString& line) {
        return line.isEmpty() || line.startsWith("This plugin does not support");
    });
    EXPECT_TRUE(printed.isEmpty()) << printed.join(u'\n').toStdString();
    ASSERT_TRUE(editorGone());
    EXPECT_TRUE(copies().contains("\nedited\n") && copies().contains("\nfrom a pipe\n"));

    // Another program writes the file meanwhile: the text still comes back, over nothing.
    ASSERT_EQ(QProcess::execute("sh", {"-c", "printf 'other program\\n' > \"$1\"", "sh", file}), 0);
    QProcess third;
    third.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    ASSERT_TRUE(start(third, {}));
    expectBothBack();
    EXPECT_EQ(TestSupport::readFile(file), "other program\n");
    third.kill();
    third.waitForFinished();
    EXPECT_TRUE(editorGone());
}

TEST(Launch, StandardInputKeepsItsLineBreaksAndStopsAtALineTooLongToEdit)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    // Its own data folder, so that what this editor leaves for recovery stays out of the
    // other tests' way.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), TestSupport::makeTempDir());
    QProcess editor;
    editor.setProcessEnvironment(environment);
    editor.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    editor.start(QStringLiteral(TESSARAN_EXECUTABLE), {QStringLiteral("-")});
    ASSERT_TRUE(editorListening());
    // Generous: a million characters take their time on a slow or instrumented build.
    const auto contentsBecome = [](const QString& expected) {
        return QTest::qWaitFor(
            [&] {
                return frontDocumentProperty(QStringLiteral("contents")).toString() == expected;
            },
            20000);
    };

    // A CR LF cut in two between two reads is still one line break.
    editor.write("one\r");
    EXPECT_TRUE(contentsBecome("one"));
    editor.write("\ntwo\r\n");
    EXPECT_TRUE(contentsBecome("one\ntwo\n"));

    // A line longer than the limit is taken up to the limit; nothing after it is read, and
    // the editor stays responsive.
    editor.write(QByteArray(Document::maximumLineLength + 10, 'x') + "\nlost\n");
    editor.closeWriteChannel();
    EXPECT_TRUE(contentsBecome("one\ntwo\n" + QString(Document::maximumLineLength, u'x')));
    EXPECT_EQ(applicationProperty(QStringLiteral("count")).toInt(), 1);

    editor.kill();
    editor.waitForFinished();
    EXPECT_TRUE(editorGone());
}
