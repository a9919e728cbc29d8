// Saving when the disk, the folder, the file or the process itself fails: afterwards the file
// holds exactly the old bytes or exactly the new ones, the text in the editor is as it was,
// and the save reports one message that says what happened.
#include "TestSupport.h"
#include "document/Document.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTextDocument>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr quint64 kUTF8 = 4;
constexpr quint64 kLatin1 = 5;
const char* const kSaveLoopVariable = "TESSARAN_SAVE_LOOP_FILE";

// Root writes anywhere, whatever the permissions say. For as long as this lives, the calling
// thread (the one that saves) gives up that privilege, so permissions count for it as for
// everyone else; nothing changes for other users.
class PermissionsEnforced
{
public:
    PermissionsEnforced()
    {
        if (geteuid() != 0 || syscall(SYS_capget, &_header, _saved) != 0) {
            return;
        }
        __user_cap_data_struct reduced[2] = {_saved[0], _saved[1]};
        const unsigned mask = (1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH);
        reduced[0].effective &= ~mask;
        _active = syscall(SYS_capset, &_header, reduced) == 0;
    }
    ~PermissionsEnforced()
    {
        if (_active) {
            syscall(SYS_capset, &_header, _saved);
        }
    }
    PermissionsEnforced(const PermissionsEnforced&) = delete;
    PermissionsEnforced& operator=(const PermissionsEnforced&) = delete;

private:
    __user_cap_header_struct _header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct _saved[2]{};
    bool _active = false;
};

// Stands in for a full disk: no file of this process may grow beyond `bytes`, and a write
// past that fails part-way (EFBIG) the way it does when the disk fills up (ENOSPC). The
// signal the kernel sends then is ignored, as the default action would end the process.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        _handler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &_saved);
        rlimit limit = _saved;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &_saved);
        std::signal(SIGXFSZ, _handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit _saved{};
    void (*_handler)(int) = nullptr;
};

// A text of about `size` bytes whose every line names `tag`, so that two of them differ
// everywhere.
QString largeText(char tag, qsizetype size)
{
    QString text;
    text.reserve(size + 64);
    for (int line = 0; text.size() < size; ++line) {
        text += QStringLiteral("%1 line %2 of the text\n").arg(QChar(tag)).arg(line);
    }
    return text;
}

QStringList filesIn(const QString& dir)
{
    return QDir(dir).entryList(QDir::Files | QDir::Hidden | QDir::System);
}

// The checks every failed save must pass.
void expectNothingLost(const Document& document, const QString& path, const QByteArray& onDisk,
                       const QString& text)
{
    EXPECT_EQ(TestSupport::readFile(path), onDisk);
    EXPECT_EQ(document.string(), text);
    EXPECT_TRUE(document.isDocumentEdited());
}

} // namespace

TEST(SaveFaults, FullDiskReadOnlyFolderAndUnwritableEncodingKeepTheOldFile)
{
    const QString dir = TestSupport::makeTempDir();
    const QByteArray old = "old bytes, caf\xc3\xa9\n";
    const QString path = TestSupport::writeFile(dir + "/keep.txt", old);
    Document document;
    ASSERT_TRUE(document.readFromURL(path, QString()));
    const QString text = largeText('n', 256 * 1024) + QStringLiteral("caf\u00e9 \u65e5\u672c\n");
    document.setTextStorage(text);
    QString error;

    {
        // The disk fills up after 64 KB of the new file.
        FileSizeLimit full(64 * 1024);
        EXPECT_FALSE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    }
    expectNothingLost(document, path, old, text);
    EXPECT_TRUE(error.startsWith("The document “keep.txt” could not be saved. "))
        << error.toStdString();
    EXPECT_TRUE(error.endsWith("The file on the disk was left as it was.")) << error.toStdString();
    // The unfinished new file is gone.
    EXPECT_EQ(filesIn(dir), QStringList{"keep.txt"});

    // A folder nobody may write into.
    ASSERT_TRUE(QFile::setPermissions(dir, QFile::ReadOwner | QFile::ExeOwner));
    {
        PermissionsEnforced enforced;
        EXPECT_FALSE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    }
    QFile::setPermissions(dir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    expectNothingLost(document, path, old, text);
    EXPECT_EQ(error.toStdString(),
              QString("The document “keep.txt” could not be saved because you don’t have "
                      "permission to write in the folder “%1”.")
                  .arg(QFileInfo(dir).fileName())
                  .toStdString());

    // An encoding that cannot hold the text.
    document.setSavePanelChoice(kLatin1, 0);
    EXPECT_FALSE(document.writeSafelyToURL(path, QString(), Document::SaveAs, &error));
    expectNothingLost(document, path, old, text);
    EXPECT_EQ(error.toStdString(),
              "The document “keep.txt” could not be saved in the encoding “Western "
              "(ISO Latin 1)”. Some characters cannot be written in this encoding.");

    // With room, permission and an encoding that holds it, the same save succeeds.
    document.setSavePanelChoice(kUTF8, 0);
    ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::SaveAs, &error));
    EXPECT_EQ(TestSupport::readFile(path), text.toUtf8());
    EXPECT_FALSE(document.isDocumentEdited());
    EXPECT_EQ(filesIn(dir), QStringList{"keep.txt"});
}

TEST(SaveFaults, FileChangedReplacedOrDeletedByAnotherProgram)
{
    const QString dir = TestSupport::makeTempDir();
    const QString path = TestSupport::writeFile(dir + "/shared.txt", "first\n");
    Document document;
    ASSERT_TRUE(document.readFromURL(path, QString()));
    document.setTextStorage("mine\n");
    QString error;

    // Another program replaces the file with a new one (as most editors save).
    TestSupport::writeFile(dir + "/other.tmp", "theirs\n");
    ASSERT_EQ(std::rename(QFile::encodeName(dir + "/other.tmp").constData(),
                          QFile::encodeName(path).constData()),
              0);
    // Autosaves never replace it; a Save says why it does not, once.
    EXPECT_FALSE(document.writeSafelyToURL(path, QString(), Document::Autosave, &error));
    expectNothingLost(document, path, "theirs\n", "mine\n");
    EXPECT_FALSE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    expectNothingLost(document, path, "theirs\n", "mine\n");
    EXPECT_EQ(error.toStdString(),
              "The file “shared.txt” has been changed by another application since you "
              "opened or saved it. Save again to replace it with this document.");
    EXPECT_FALSE(document.writeSafelyToURL(path, QString(), Document::Autosave, &error));
    EXPECT_EQ(TestSupport::readFile(path), "theirs\n");
    // Saving again, having been told, replaces it.
    ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    EXPECT_EQ(TestSupport::readFile(path), "mine\n");

    // Another program writes into the same file: the same rule.
    document.setTextStorage("mine again\n");
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("theirs again, longer\n");
    }
    EXPECT_FALSE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    expectNothingLost(document, path, "theirs again, longer\n", "mine again\n");
    // Reading the file again takes its changes and forgets the conflict.
    ASSERT_TRUE(document.revertToContentsOfURL(path, QString()));
    document.setTextStorage("after revert\n");
    ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    EXPECT_EQ(TestSupport::readFile(path), "after revert\n");

    // A deleted file is written again.
    document.setTextStorage("written again\n");
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    EXPECT_EQ(TestSupport::readFile(path), "written again\n");

    // A deleted folder is not made again behind the user's back.
    document.setTextStorage("nowhere to go\n");
    ASSERT_TRUE(QDir(dir).removeRecursively());
    EXPECT_FALSE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    EXPECT_EQ(document.string(), "nowhere to go\n");
    EXPECT_TRUE(document.isDocumentEdited());
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_EQ(error.toStdString(),
              QString("The document “shared.txt” could not be saved because the folder "
                      "“%1” does not exist.")
                  .arg(dir)
                  .toStdString());
}

// Run by KilledWhileSavingLeavesTheOldOrTheNewBytes as a child process, which it kills: saves
// two large texts in turn into the file named by the environment, as fast as it can.
TEST(SaveFaults, DISABLED_SavesInALoopUntilKilled)
{
    const QString path = qEnvironmentVariable(kSaveLoopVariable);
    ASSERT_FALSE(path.isEmpty());
    Document document;
    ASSERT_TRUE(document.readFromURL(path, QString()));
    const QString texts[] = {largeText('a', 1 << 20), largeText('b', 1 << 20)};
    std::fputs("saving\n", stdout);
    std::fflush(stdout);
    QElapsedTimer timer;
    timer.start();
    for (int turn = 0; timer.elapsed() < 60'000; ++turn) {
        document.setTextStorage(texts[turn % 2]);
        ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save));
        std::fputs("saved\n", stdout);
        std::fflush(stdout);
    }
}

TEST(SaveFaults, KilledWhileSavingLeavesTheOldOrTheNewBytes)
{
    const QString dir = TestSupport::makeTempDir();
    const QByteArray old = largeText('o', 1 << 20).toUtf8();
    const QString path = TestSupport::writeFile(dir + "/precious.txt", old);
    const QByteArray first = largeText('a', 1 << 20).toUtf8();
    const QByteArray second = largeText('b', 1 << 20).toUtf8();
    const QString childTemp = TestSupport::makeTempDir();
    QRandomGenerator random(12);
    int killedInAnyState = 0;
    QSet<QByteArray> seen;
    for (int round = 0; round < 12; ++round) {
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(kSaveLoopVariable, path);
        // The child's own temporary folders, left behind by the kill, go with this test's.
        environment.insert(QStringLiteral("TMPDIR"), childTemp);
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(),
                    {"--gtest_also_run_disabled_tests",
                     "--gtest_filter=SaveFaults.DISABLED_SavesInALoopUntilKilled"});
        ASSERT_TRUE(child.waitForStarted(10'000));
        // Wait for the loop to start (and, every other round, for a first save to end, however
        // slow the machine), then let it run a random while.
        const QByteArray awaited = round % 2 ? "saved\n" : "saving\n";
        QByteArray output;
        while (!output.contains(awaited) && child.state() == QProcess::Running) {
            child.waitForReadyRead(10'000);
            output += child.readAllStandardOutput();
        }
        ASSERT_TRUE(output.contains(awaited)) << output.toStdString();
        QThread::usleep(random.bounded(1'000, 300'000));
        ASSERT_EQ(::kill(pid_t(child.processId()), SIGKILL), 0);
        child.waitForFinished(10'000);
        ++killedInAnyState;

        const QByteArray bytes = TestSupport::readFile(path);
        EXPECT_TRUE(bytes == old || bytes == first || bytes == second)
            << "round " << round << ": " << bytes.size() << " bytes";
        seen.insert(bytes);
    }
    EXPECT_EQ(killedInAnyState, 12);
    // The kills did land during the loop: the file changed at least once.
    EXPECT_TRUE(seen.contains(first) || seen.contains(second));
    // The new bytes are written into a file without a name, which gets one only when it is
    // complete: a kill in the moment between naming it and moving it into place may leave it
    // beside the file, whole, but never a partial file.
    for (const QString& name : filesIn(dir)) {
        if (name != "precious.txt") {
            const QByteArray bytes = TestSupport::readFile(dir + "/" + name);
            EXPECT_TRUE(bytes == first || bytes == second) << name.toStdString();
        }
    }
}
