#include "platform/SafeFileWriter.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

namespace {

// Closes the file on the way out of a failed step. Where the result of closing matters (some
// file systems report a failed write only then), close() is called and checked.
class Descriptor
{
public:
    explicit Descriptor(int fd = -1)
        : _fd(fd)
    {}
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return _fd; }
    explicit operator bool() const { return _fd >= 0; }
    bool close() { return ::close(std::exchange(_fd, -1)) == 0; }
    void reset(int fd = -1)
    {
        if (_fd >= 0) {
            ::close(_fd);
        }
        _fd = fd;
    }

private:
    int _fd;
};

QByteArray folderOf(const QByteArray& path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.left(slash);
}

QByteArray nameOf(const QByteArray& path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

// Follows the symbolic links that `path` ends with to the file they name, which may not exist
// yet (a dangling link is saved through as well).
QByteArray followLinks(QByteArray path, int* error)
{
    for (int depth = 0; depth < 40; ++depth) {
        char target[PATH_MAX];
        const ssize_t length = ::readlink(path.constData(), target, sizeof target);
        if (length < 0) {
            if (errno == EINVAL || errno == ENOENT || errno == ENOTDIR) {
                return path;
            }
            *error = errno;
            return {};
        }
        if (size_t(length) == sizeof target) {
            *error = ENAMETOOLONG;
            return {};
        }
        const QByteArray next(target, length);
        path = next.startsWith('/') ? next : folderOf(path) + '/' + next;
    }
    *error = ELOOP;
    return {};
}

bool writeAll(int fd, const QByteArray& bytes, bool fromStart)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const size_t piece = size_t(std::min<qsizetype>(bytes.size() - done, 1 << 20));
        const ssize_t written = fromStart ? ::pwrite(fd, bytes.constData() + done, piece, done)
                                          : ::write(fd, bytes.constData() + done, piece);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            if (written == 0) {
                errno = EIO;
            }
            return false;
        }
        done += written;
    }
    return true;
}

std::optional<QByteArray> readAll(int fd)
{
    QByteArray bytes;
    char buffer[1 << 16];
    for (off_t offset = 0;;) {
        const ssize_t got = ::pread(fd, buffer, sizeof buffer, offset);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return std::nullopt;
        }
        if (got == 0) {
            return bytes;
        }
        bytes.append(buffer, got);
        offset += got;
    }
}

bool syncFolder(const QByteArray& folder)
{
    Descriptor fd(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return fd && ::fsync(fd.get()) == 0 && fd.close();
}

// Makes the folder and the missing ones above it, readable by the user only.
bool makeFolder(const QByteArray& folder)
{
    struct stat status {
    };
    if (::stat(folder.constData(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) {
            return true;
        }
        errno = ENOTDIR;
        return false;
    }
    if (errno != ENOENT || (folderOf(folder) != folder && !makeFolder(folderOf(folder)))) {
        return false;
    }
    return ::mkdir(folder.constData(), 0700) == 0 || errno == EEXIST;
}

QByteArray hiddenName(const QByteArray& folder, const QByteArray& name)
{
    return folder + "/." + name + '.' +
           QByteArray::number(QRandomGenerator::global()->generate64() & 0xFFFFFFFFFFull, 36);
}

// A new file in `folder` that has no name until it is complete, so that a crash while it is
// written leaves nothing behind. On a file system that cannot make such files, a hidden file
// with a random name (`named`) stands in.
int createUnnamed(const QByteArray& folder, const QByteArray& name, mode_t mode, QByteArray* named)
{
    named->clear();
    const int fd = ::open(folder.constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
    if (fd >= 0 || (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)) {
        return fd;
    }
    for (int attempt = 0; attempt < 100; ++attempt) {
        *named = hiddenName(folder, name);
        const int file = ::open(named->constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
        if (file >= 0 || errno != EEXIST) {
            if (file < 0) {
                named->clear();
            }
            return file;
        }
    }
    named->clear();
    return -1;
}

// Gives the file made by createUnnamed() a name; false with EEXIST when the name is taken.
bool giveName(int fd, const QByteArray& name)
{
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(fd);
    if (::linkat(AT_FDCWD, self.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0) {
        return true;
    }
    // Without /proc, a privileged process can still name the file directly.
    return errno == ENOENT && ::linkat(fd, "", AT_FDCWD, name.constData(), AT_EMPTY_PATH) == 0;
}

std::optional<QByteArray> attributeNames(const QByteArray& path)
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        const ssize_t size = ::listxattr(path.constData(), nullptr, 0);
        if (size < 0) {
            // A file system without attributes has none to keep.
            return errno == ENOTSUP ? std::optional<QByteArray>(QByteArray()) : std::nullopt;
        }
        QByteArray names(size, Qt::Uninitialized);
        const ssize_t got = ::listxattr(path.constData(), names.data(), size_t(size));
        if (got >= 0) {
            names.truncate(got);
            return names;
        }
        if (errno != ERANGE) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<QByteArray> attributeValue(const QByteArray& path, const QByteArray& name)
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        const ssize_t size = ::getxattr(path.constData(), name.constData(), nullptr, 0);
        if (size < 0) {
            return std::nullopt;
        }
        QByteArray value(size, Qt::Uninitialized);
        const ssize_t got = ::getxattr(path.constData(), name.constData(), value.data(), size);
        if (got >= 0) {
            value.truncate(got);
            return value;
        }
        if (errno != ERANGE) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

// Gives the new file everything but the bytes that makes the old one what it is: owner, group,
// extended attributes (ACLs are the system.posix_acl_* ones) and mode. False when any of it
// cannot be carried over, such as another user's ownership for an unprivileged process.
bool copyMetadata(int fd, const QByteArray& from, const struct stat& old)
{
    struct stat now {
    };
    if (::fstat(fd, &now) != 0) {
        return false;
    }
    if ((now.st_uid != old.st_uid || now.st_gid != old.st_gid) &&
        ::fchown(fd, old.st_uid, old.st_gid) != 0) {
        return false;
    }
    const std::optional<QByteArray> names = attributeNames(from);
    if (!names) {
        return false;
    }
    for (const QByteArray& name : names->split('\0')) {
        if (name.isEmpty()) {
            continue;
        }
        const std::optional<QByteArray> value = attributeValue(from, name);
        if (!value ||
            ::fsetxattr(fd, name.constData(), value->constData(), size_t(value->size()), 0) != 0) {
            return false;
        }
    }
    // The mode goes last: a change of owner clears the set-user-ID and set-group-ID bits, and
    // the kernel drops a set-group-ID bit for a group the process is not in without an error.
    if (::fchmod(fd, old.st_mode & 07777) != 0 || ::fstat(fd, &now) != 0) {
        return false;
    }
    return (now.st_mode & 07777) == (old.st_mode & 07777) && now.st_uid == old.st_uid &&
           now.st_gid == old.st_gid;
}

bool writeBack(const QByteArray& path, const QByteArray& bytes)
{
    Descriptor fd(::open(path.constData(), O_WRONLY | O_CLOEXEC));
    return fd && writeAll(fd.get(), bytes, true) && ::ftruncate(fd.get(), bytes.size()) == 0 &&
           ::fsync(fd.get()) == 0 && fd.close();
}

} // namespace

SafeFileWriter::SafeFileWriter(QString backupFolder)
    : _backupFolder(std::move(backupFolder))
{}

bool SafeFileWriter::fail(Step step, int errorNumber, const QByteArray& path)
{
    _failedStep = step;
    _errorNumber = errorNumber;
    _failedPath = QFile::decodeName(path);
    return false;
}

bool SafeFileWriter::write(const QString& path, const QByteArray& bytes)
{
    _failedStep = Step::None;
    _errorNumber = 0;
    _failedPath.clear();
    _oldBytesKept = true;
    _backupPath.clear();
    _wroteInPlace = false;

    int error = 0;
    const QByteArray target =
        followLinks(QFile::encodeName(QFileInfo(path).absoluteFilePath()), &error);
    if (target.isEmpty()) {
        return fail(Step::Inspect, error, QFile::encodeName(path));
    }
    _targetPath = QFile::decodeName(target);
    struct stat old {
    };
    if (::stat(target.constData(), &old) != 0) {
        if (errno != ENOENT) {
            return fail(Step::Inspect, errno, target);
        }
        const QByteArray folder = folderOf(target);
        struct stat status {
        };
        if (::stat(folder.constData(), &status) != 0) {
            return fail(Step::Inspect, errno == ENOTDIR ? ENOENT : errno, folder);
        }
        if (!S_ISDIR(status.st_mode)) {
            return fail(Step::Inspect, ENOENT, folder);
        }
        return replace(target, bytes, nullptr) == Outcome::Done;
    }
    if (!S_ISREG(old.st_mode)) {
        return fail(Step::NotRegularFile, S_ISDIR(old.st_mode) ? EISDIR : 0, target);
    }
    // A file the user may not write is not replaced behind its permissions' back.
    if (::faccessat(AT_FDCWD, target.constData(), W_OK, AT_EACCESS) != 0) {
        return fail(Step::Open, errno, target);
    }
    // Replacing one name of a file with several would part it from the others.
    if (old.st_nlink <= 1) {
        const Outcome outcome = replace(target, bytes, &old);
        if (outcome != Outcome::InPlace) {
            return outcome == Outcome::Done;
        }
    }
    return writeInPlace(target, bytes);
}

SafeFileWriter::Outcome SafeFileWriter::replace(const QByteArray& target, const QByteArray& bytes,
                                                const struct stat* old)
{
    const QByteArray folder = folderOf(target);
    QByteArray name;
    Descriptor fd(createUnnamed(folder, nameOf(target), old ? 0600 : 0666, &name));
    if (!fd) {
        // A folder the user may not write into: the file itself may still be writable.
        if (old && (errno == EACCES || errno == EPERM)) {
            return Outcome::InPlace;
        }
        fail(Step::Create, errno, folder);
        return Outcome::Failed;
    }
    const auto discard = [&](Step step) {
        const int error = errno;
        if (!name.isEmpty()) {
            ::unlink(name.constData());
        }
        fail(step, error, target);
        return Outcome::Failed;
    };
    if (old && !copyMetadata(fd.get(), target, *old)) {
        if (!name.isEmpty()) {
            ::unlink(name.constData());
        }
        return Outcome::InPlace;
    }
    if (!writeAll(fd.get(), bytes, false)) {
        return discard(Step::Write);
    }
    if (::fsync(fd.get()) != 0) {
        return discard(Step::Sync);
    }
    for (int attempt = 0; name.isEmpty(); ++attempt) {
        name = hiddenName(folder, nameOf(target));
        if (!giveName(fd.get(), name)) {
            name.clear();
            if (errno != EEXIST || attempt == 100) {
                return discard(Step::Rename);
            }
        }
    }
    if (!fd.close()) {
        return discard(Step::Close);
    }
    if (::rename(name.constData(), target.constData()) != 0) {
        // Some files can be written but not replaced: a file mounted on its own (a container's
        // bind mount), another user's file in a shared folder, a file system that cannot rename
        // over a file.
        if (old && (errno == EBUSY || errno == EXDEV || errno == EPERM || errno == EACCES ||
                    errno == ENOTSUP)) {
            ::unlink(name.constData());
            return Outcome::InPlace;
        }
        return discard(Step::Rename);
    }
    // The new file is complete and in place by now: a failure here could only mean that the
    // new name might not outlive a power cut, and the old file cannot be brought back anyway.
    syncFolder(folder);
    return Outcome::Done;
}

bool SafeFileWriter::writeInPlace(const QByteArray& target, const QByteArray& bytes)
{
    _wroteInPlace = true;
    Descriptor fd(::open(target.constData(), O_RDWR | O_CLOEXEC));
    if (!fd) {
        return fail(Step::Open, errno, target);
    }
    struct stat before {
    };
    const std::optional<QByteArray> oldBytes =
        ::fstat(fd.get(), &before) == 0 ? readAll(fd.get()) : std::nullopt;
    if (!oldBytes) {
        return fail(Step::Open, errno, target);
    }
    if (!keepCopy(*oldBytes, nameOf(target))) {
        return false;
    }
    const auto dropCopy = [this] {
        ::unlink(QFile::encodeName(_backupPath).constData());
        _backupPath.clear();
    };
    // A full disk found now costs nothing: no old byte has been overwritten yet. File systems
    // that cannot reserve space are written all the same; a failed write is undone below.
    if (bytes.size() > oldBytes->size() &&
        ::fallocate(fd.get(), FALLOC_FL_KEEP_SIZE, 0, bytes.size()) != 0 &&
        (errno == ENOSPC || errno == EDQUOT || errno == EFBIG)) {
        const int error = errno;
        dropCopy();
        return fail(Step::Reserve, error, target);
    }
    Step failed = Step::None;
    if (!writeAll(fd.get(), bytes, true) || ::ftruncate(fd.get(), bytes.size()) != 0) {
        failed = Step::Write;
    } else if (::fsync(fd.get()) != 0) {
        failed = Step::Sync;
    } else {
        // Writing clears the set-user-ID and set-group-ID bits; give them back where allowed.
        struct stat after {
        };
        if (::fstat(fd.get(), &after) == 0 && after.st_mode != before.st_mode) {
            ::fchmod(fd.get(), before.st_mode & 07777);
        }
        if (!fd.close()) {
            failed = Step::Close;
        }
    }
    if (failed == Step::None) {
        dropCopy();
        return true;
    }
    const int error = errno;
    fd.reset();
    if (writeBack(target, *oldBytes)) {
        dropCopy();
    } else {
        _oldBytesKept = false;
    }
    return fail(failed, error, target);
}

bool SafeFileWriter::keepCopy(const QByteArray& oldBytes, const QByteArray& fileName)
{
    const QByteArray folder = QFile::encodeName(_backupFolder);
    if (folder.isEmpty()) {
        return fail(Step::Backup, ENOENT, folder);
    }
    if (!makeFolder(folder)) {
        return fail(Step::Backup, errno, folder);
    }
    QByteArray name;
    Descriptor fd(createUnnamed(folder, fileName, 0600, &name));
    if (!fd) {
        return fail(Step::Backup, errno, folder);
    }
    const auto discard = [&] {
        const int error = errno;
        if (!name.isEmpty()) {
            ::unlink(name.constData());
        }
        return fail(Step::Backup, error, folder);
    };
    if (!writeAll(fd.get(), oldBytes, false) || ::fsync(fd.get()) != 0) {
        return discard();
    }
    // Named after the moment and the file, so that copies are easy to tell apart.
    const QByteArray moment =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HHmmss")).toUtf8();
    for (int number = 1;; ++number) {
        const QByteArray copy =
            folder + '/' + moment + ' ' +
            (number > 1 ? '(' + QByteArray::number(number) + ") " : QByteArray()) + fileName;
        const bool named = name.isEmpty() ? giveName(fd.get(), copy)
                                          : ::renameat2(AT_FDCWD, name.constData(), AT_FDCWD,
                                                        copy.constData(), RENAME_NOREPLACE) == 0;
        if (named) {
            name = copy;
            break;
        }
        if (errno != EEXIST || number == 100) {
            return discard();
        }
    }
    if (!fd.close() || !syncFolder(folder)) {
        return discard();
    }
    _backupPath = QFile::decodeName(name);
    return true;
}
