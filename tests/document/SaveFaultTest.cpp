// Saving when the disk, the file system, another program or the process itself fails:
// afterwards the file holds exactly the old bytes or exactly the new ones, the text in the editor
// is as it was, and the save reports one message that says what happened.
#include "SaveTestSupport.h"
#include "TestSupport.h"
#include "document/Document.h"
#include "platform/ExtendedAttributes.h"
#include "platform/FileManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace SaveTestSupport;

namespace {

const char* const kSaveLoopVariable = "TESSARAN_SAVE_LOOP_FILE";

QString backupFolder()
{
    return FileManager::applicationSupportDirectoryPath() + "/Backups";
}

ino_t inodeOf(const QString& path)
{
    struct stat status {
    };
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_ino : 0;
}

// What another program does to the file, run as another process.
void anotherProgram(const QString& script, const QString& path)
{
    ASSERT_EQ(QProcess::execute("/bin/sh", {"-c", script, "sh", path}), 0) << script.toStdString();
}

} // namespace

// Run by FullOrReadOnlyDiskKeepsTheOldBytesAndSaysWhy in a child process with a mount
// namespace of its own, so that the small disk it mounts goes away with it.
TEST(SaveFaults, DISABLED_OnAFullOrReadOnlyDisk)
{
    QString why;
    const QString disk = mountSmallDisk(&why);
    if (disk.isEmpty()) {
        GTEST_SKIP() << "a 2 MB tmpfs cannot be mounted here (" << why.toStdString()
                     << "), so saving on a really full disk is not tested";
    }
    const QByteArray mountPoint = QFile::encodeName(disk);
    const QByteArray old = "old bytes, caf\xc3\xa9\n";
    struct Case {
        QString name;
        QString text;
    };
    // A small text (which the C library or Qt would hold back until the file is closed), a
    // large one, and a large one for a file with two names, which is written in place.
    const Case cases[] = {
        {"small.txt", QStringLiteral("new text, caf\u00e9\n")},
        {"large.txt", largeText('n', 256 * 1024)},
        {"linked.txt", largeText('l', 64 * 1024)},
    };
    for (const Case& c : cases) {
        TestSupport::writeFile(disk + "/" + c.name, old);
    }
    ASSERT_EQ(::link(QFile::encodeName(disk + "/linked.txt").constData(),
                     QFile::encodeName(disk + "/second name.txt").constData()),
              0);
    // Saves every case anew: each is refused with the message ending `says`, or saved when
    // `says` is empty.
    const auto saveEach = [&](const QString& says) {
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name.toStdString());
            const QString path = disk + "/" + c.name;
            TestDocument document;
            ASSERT_TRUE(document.readFromURL(path, QString()));
            document.setTextStorage(c.text);
            QString error;
            const bool saved = document.writeSafelyToURL(path, QString(), Document::Save, &error);
            if (says.isEmpty()) {
                EXPECT_TRUE(saved) << error.toStdString();
                EXPECT_EQ(TestSupport::readFile(path), c.text.toUtf8());
                EXPECT_FALSE(document.isDocumentEdited());
                continue;
            }
            EXPECT_FALSE(saved);
            expectNothingLost(document, path, old, c.text);
            EXPECT_EQ(error.toStdString(), ("The document “" + c.name + "” could not be saved " +
                                            says + " The file on the disk was left as it was.")
                                               .toStdString());
        }
    };
    fillUp(disk);
    const QStringList files = filesIn(disk);
    saveEach("because the disk is full (No space left on device).");
    EXPECT_EQ(TestSupport::readFile(disk + "/second name.txt"), old);
    // No unfinished file is left behind, and no copy of the old bytes either.
    EXPECT_EQ(filesIn(disk), files);
    EXPECT_EQ(filesIn(backupFolder()), QStringList());

    // A disk that can only be read.
    ASSERT_EQ(::mount(nullptr, mountPoint.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr),
              0);
    saveEach("because the disk holding it is read-only (Read-only file system).");

    // With room again, the same saves succeed.
    ASSERT_EQ(::mount(nullptr, mountPoint.constData(), nullptr, MS_REMOUNT, nullptr), 0);
    ASSERT_TRUE(QFile::remove(disk + "/filler"));
    saveEach({});
    EXPECT_EQ(TestSupport::readFile(disk + "/second name.txt"), cases[2].text.toUtf8());
    ::umount2(mountPoint.constData(), MNT_DETACH);
}

TEST(SaveFaults, FullOrReadOnlyDiskKeepsTheOldBytesAndSaysWhy)
{
    const ChildRun run = runChild("SaveFaults.DISABLED_OnAFullOrReadOnlyDisk", {}, true);
    if (run.skipped) {
        GTEST_SKIP() << run.output.section("Skipped\n", 1).section('\n', 0, 0).toStdString();
    }
    EXPECT_EQ(run.status, 0) << run.output.toStdString();
    EXPECT_TRUE(run.output.contains("[  PASSED  ] 1 test")) << run.output.toStdString();
}

// Run by FailingSystemCallsKeepTheOldBytesAndSayWhich in a child process into which the fault
// shim is preloaded: each case makes some system calls fail on the files of one folder.
TEST(SaveFaults, DISABLED_WhenSystemCallsFail)
{
    ASSERT_NE(::dlsym(RTLD_DEFAULT, "tessaran_fault_shim_loaded"), nullptr)
        << "the fault shim is not preloaded";
    const QString dir = TestSupport::makeTempDir();
    const bool root = ::geteuid() == 0;
    const bool attributes =
        ExtendedAttributes::write(TestSupport::writeFile(dir + "/probe", "x"), "user.probe", "x");
    QFile::remove(dir + "/probe");
    const QByteArray old = "old bytes\n";
    const QString text = largeText('n', 32 * 1024);
    const QString leftAsItWas = " The file on the disk was left as it was.";

    struct Fault {
        const char* calls;
        int error;
        int count;       // how many calls fail; 0: all of them
        const char* has; // what the file is: "", "two names", "another owner", "an attribute"
        // What the message says after "The document “NAME” could not be saved"; empty when
        // the save succeeds all the same, and "copy" when the file cannot be given its old
        // bytes back and the message names the copy of them.
        QString says;
    };
    const Fault faults[] = {
        {"write", ENOSPC, 0, "",
         " because the disk is full (No space left on device)." + leftAsItWas},
        {"write", EDQUOT, 0, "",
         " because your disk quota is used up (Disk quota exceeded)." + leftAsItWas},
        {"fsync", EIO, 0, "",
         ". Flushing the file to the disk failed: Input/output error." + leftAsItWas},
        {"close", EIO, 0, "", ". Closing the file failed: Input/output error." + leftAsItWas},
        {"rename", EIO, 0, "",
         ". Replacing the old file failed: Input/output error." + leftAsItWas},
        // What cannot be carried over to a new file makes the save write into the file itself.
        {"fchown", EPERM, 0, "another owner", ""},
        {"fsetxattr", EOPNOTSUPP, 0, "an attribute", ""},
        // So does a file that cannot be replaced, such as one mounted on its own.
        {"rename", EBUSY, 0, "", ""},
        // Written in place, a failed write is undone from the copy of the old bytes…
        {"write", EIO, 1, "two names",
         ". Writing to the disk failed: Input/output error." + leftAsItWas},
        {"fsync", ENOSPC, 1, "two names",
         " because the disk is full (No space left on device)." + leftAsItWas},
        {"close", EIO, 1, "two names",
         ". Closing the file failed: Input/output error." + leftAsItWas},
        // … and when even that fails, the message says where the copy is.
        {"write", EIO, 0, "two names", "copy"},
    };
    int number = 0;
    for (const Fault& fault : faults) {
        const QString name = QStringLiteral("file%1.txt").arg(++number);
        SCOPED_TRACE(name.toStdString() + ": " + fault.calls + " fails with " +
                     std::strerror(fault.error) + ", the file has " + fault.has);
        const QString has = fault.has;
        if ((has == "another owner" && !root) || (has == "an attribute" && !attributes)) {
            continue;
        }
        const QString path = TestSupport::writeFile(dir + "/" + name, old);
        const QByteArray file = QFile::encodeName(path);
        if (has == "two names") {
            ASSERT_EQ(::link(file.constData(), QFile::encodeName(path + ".other").constData()), 0);
        } else if (has == "another owner") {
            ASSERT_EQ(::chown(file.constData(), 4242, 4243), 0);
        } else if (has == "an attribute") {
            ASSERT_TRUE(ExtendedAttributes::write(path, "user.origin", "kept"));
        }
        const ino_t inode = inodeOf(path);
        const QStringList files = filesIn(dir);
        TestDocument document;
        ASSERT_TRUE(document.readFromURL(path, QString()));
        document.setTextStorage(text);

        qputenv("TESSARAN_FAULT_PATH", QFile::encodeName(dir) + "/*");
        qputenv("TESSARAN_FAULT_CALLS", fault.calls);
        qputenv("TESSARAN_FAULT_ERRNO", QByteArray::number(fault.error));
        qputenv("TESSARAN_FAULT_COUNT", QByteArray::number(fault.count));
        QString error;
        const bool saved = document.writeSafelyToURL(path, QString(), Document::Save, &error);
        qunsetenv("TESSARAN_FAULT_PATH");

        EXPECT_EQ(filesIn(dir), files);
        if (fault.says.isEmpty()) {
            EXPECT_TRUE(saved) << error.toStdString();
            EXPECT_EQ(TestSupport::readFile(path), text.toUtf8());
            EXPECT_FALSE(document.isDocumentEdited());
            EXPECT_EQ(inodeOf(path), inode);
            struct stat status {
            };
            ASSERT_EQ(::stat(file.constData(), &status), 0);
            if (has == "another owner") {
                EXPECT_EQ(status.st_uid, 4242u);
                EXPECT_EQ(status.st_gid, 4243u);
            } else if (has == "an attribute") {
                EXPECT_EQ(ExtendedAttributes::read(path, "user.origin").value_or(""), "kept");
            }
            EXPECT_EQ(filesIn(backupFolder()), QStringList());
            continue;
        }
        EXPECT_FALSE(saved);
        const QString start = "The document “" + name + "” could not be saved";
        if (fault.says != "copy") {
            EXPECT_EQ(error.toStdString(), (start + fault.says).toStdString());
            expectNothingLost(document, path, old, text);
            EXPECT_EQ(filesIn(backupFolder()), QStringList());
            continue;
        }
        // The file may hold anything now; the copy holds the old bytes, the window the text.
        const QRegularExpression copyNamed(
            "^" + QRegularExpression::escape(start) +
            R"(\. Writing to the disk failed: Input/output error\. The file on the disk may be )"
            R"(incomplete: its previous contents are kept in “(.+)”\.$)");
        const QRegularExpressionMatch match = copyNamed.match(error);
        ASSERT_TRUE(match.hasMatch()) << error.toStdString();
        const QString copy = match.captured(1);
        EXPECT_EQ(QFileInfo(copy).absolutePath(), backupFolder());
        EXPECT_TRUE(copy.endsWith(" " + name)) << copy.toStdString();
        EXPECT_EQ(TestSupport::readFile(copy), old);
        EXPECT_FALSE(
            QFileInfo(copy).permissions().testAnyFlags(QFile::ReadGroup | QFile::ReadOther));
        EXPECT_EQ(document.string(), text);
        EXPECT_TRUE(document.isDocumentEdited());
    }

    // With the shim still there but asked for nothing, saving works.
    const QString path = TestSupport::writeFile(dir + "/last.txt", old);
    TestDocument document;
    ASSERT_TRUE(document.readFromURL(path, QString()));
    document.setTextStorage(text);
    EXPECT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save));
    EXPECT_EQ(TestSupport::readFile(path), text.toUtf8());
}

TEST(SaveFaults, FailingSystemCallsKeepTheOldBytesAndSayWhich)
{
    QProcessEnvironment environment;
    environment.insert("LD_PRELOAD", TESSARAN_FAULT_SHIM);
    // A sanitized build wants its own library first; the shim only passes calls on to it.
    const QString sanitizer = qEnvironmentVariable("ASAN_OPTIONS");
    environment.insert("ASAN_OPTIONS", (sanitizer.isEmpty() ? QString() : sanitizer + ":") +
                                           "verify_asan_link_order=0");
    const ChildRun run = runChild("SaveFaults.DISABLED_WhenSystemCallsFail", environment, false);
    EXPECT_EQ(run.status, 0) << run.output.toStdString();
    EXPECT_TRUE(run.output.contains("[  PASSED  ] 1 test")) << run.output.toStdString();
}

TEST(SaveFaults, FileChangedReplacedOrDeletedByAnotherProgram)
{
    const QString dir = TestSupport::makeTempDir();
    const QString path = TestSupport::writeFile(dir + "/shared.txt", "first\n");
    TestDocument document;
    ASSERT_TRUE(document.readFromURL(path, QString()));
    document.setTextStorage("mine\n");
    QString error;

    // Another program replaces the file with a new one (as most editors save).
    anotherProgram(R"(printf 'theirs\n' > "$1.new" && mv "$1.new" "$1")", path);
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
    EXPECT_FALSE(document.isDocumentEdited());

    // Another program writes into the same file: the same rule.
    document.setTextStorage("mine again\n");
    anotherProgram(R"(printf 'theirs again, longer\n' > "$1")", path);
    EXPECT_FALSE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    expectNothingLost(document, path, "theirs again, longer\n", "mine again\n");
    // Reading the file again takes its changes and forgets the conflict.
    ASSERT_TRUE(document.revertToContentsOfURL(path, QString()));
    document.setTextStorage("after revert\n");
    ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    EXPECT_EQ(TestSupport::readFile(path), "after revert\n");

    // A deleted file is written again.
    document.setTextStorage("written again\n");
    anotherProgram(R"(rm "$1")", path);
    ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save, &error));
    EXPECT_EQ(TestSupport::readFile(path), "written again\n");

    // A deleted folder is not made again behind the user's back.
    document.setTextStorage("nowhere to go\n");
    anotherProgram(R"(rm -r "$1")", dir);
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
    TestDocument document;
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
