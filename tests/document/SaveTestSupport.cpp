#include "SaveTestSupport.h"

#include "TestSupport.h"
#include "document/Document.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace SaveTestSupport {

namespace {

// Runs in the child between fork and exec, so it makes system calls only.
void writeTo(const char* path, const QByteArray& value)
{
    const int fd = ::open(path, O_WRONLY | O_CLOEXEC);
    if (fd >= 0) {
        [[maybe_unused]] const ssize_t written =
            ::write(fd, value.constData(), size_t(value.size()));
        ::close(fd);
    }
}

void enterOwnMountNamespace(const QByteArray& userMap, const QByteArray& groupMap)
{
    if (::unshare(CLONE_NEWNS) != 0) {
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
            return;
        }
        writeTo("/proc/self/setgroups", "deny");
        writeTo("/proc/self/uid_map", userMap);
        writeTo("/proc/self/gid_map", groupMap);
    }
    // Nothing mounted in the child reaches the parent's namespace.
    ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
}

} // namespace

QString largeText(char tag, qsizetype size)
{
    QString text;
    text.reserve(size + 64);
    for (int line = 0; text.size() < size; ++line) {
        text += QStringLiteral("%1 line %2 of the text\n").arg(QChar(tag)).arg(line);
    }
    return text;
}

QString mountSmallDisk(QString* why)
{
    const QString dir = TestSupport::makeTempDir();
    if (::mount("tmpfs", QFile::encodeName(dir).constData(), "tmpfs", 0, "size=2m") != 0) {
        *why = QString::fromLocal8Bit(std::strerror(errno));
        return {};
    }
    return dir;
}

void fillUp(const QString& dir)
{
    const int fd = ::open(QFile::encodeName(dir + "/filler").constData(),
                          O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    ASSERT_GE(fd, 0);
    const QByteArray block(64 * 1024, 'f');
    while (::write(fd, block.constData(), size_t(block.size())) > 0) {
    }
    EXPECT_EQ(errno, ENOSPC);
    ::close(fd);
}

QStringList filesIn(const QString& dir)
{
    return QDir(dir).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

void expectNothingLost(const Document& document, const QString& path, const QByteArray& onDisk,
                       const QString& text)
{
    EXPECT_EQ(TestSupport::readFile(path), onDisk) << path.toStdString();
    EXPECT_EQ(document.string(), text);
    EXPECT_TRUE(document.isDocumentEdited());
}

ChildRun runChild(const QString& test, const QProcessEnvironment& environment, bool ownMounts)
{
    QProcess child;
    QProcessEnvironment full = QProcessEnvironment::systemEnvironment();
    full.insert(environment);
    child.setProcessEnvironment(full);
    child.setProcessChannelMode(QProcess::MergedChannels);
    if (ownMounts) {
        const QByteArray userMap = "0 " + QByteArray::number(::getuid()) + " 1";
        const QByteArray groupMap = "0 " + QByteArray::number(::getgid()) + " 1";
        child.setChildProcessModifier(
            [userMap, groupMap] { enterOwnMountNamespace(userMap, groupMap); });
    }
    child.start(QCoreApplication::applicationFilePath(),
                {"--gtest_also_run_disabled_tests", "--gtest_filter=" + test});
    ChildRun run;
    if (!child.waitForFinished(100'000)) {
        child.kill();
        child.waitForFinished();
    }
    run.output = QString::fromLocal8Bit(child.readAll());
    run.status = child.exitStatus() == QProcess::NormalExit ? child.exitCode() : -1;
    run.skipped = run.status == 0 && run.output.contains("[  SKIPPED ]");
    return run;
}

} // namespace SaveTestSupport
