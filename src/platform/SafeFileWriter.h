#pragma once

#include <QByteArray>
#include <QString>

struct stat;

/// Puts new bytes into a file so that nothing is lost whatever fails: until the new bytes are
/// complete and on the disk, the file holds its old ones.
///
/// The usual way is a new file written beside the old one, given the old one's owner, group,
/// mode and extended attributes (ACLs included), then renamed over it. Where that would change
/// what the file is (a hard link would be broken, the owner or an attribute cannot be carried
/// over) or cannot be done (the folder is not writable, the file cannot be renamed over), the
/// bytes are written into the file itself instead: the old bytes are first copied into
/// `backupFolder` and the space for the new ones reserved, and the old bytes are written back
/// when a write fails. A symbolic link is followed to its target, so it stays a link.
class SafeFileWriter
{
public:
    /// What was being done when the write failed.
    enum class Step {
        None,
        /// Examining the file or its folder (a missing folder, a loop of links).
        Inspect,
        /// The path names something that is neither a regular file nor missing.
        NotRegularFile,
        /// Creating the new file beside the old one.
        Create,
        /// Opening the file itself (to check that it may be written, or to write into it).
        Open,
        /// Keeping a copy of the old bytes before writing into the file itself.
        Backup,
        /// Reserving the space for the new bytes.
        Reserve,
        Write,
        Sync,
        Close,
        /// Putting the new file in the old one's place.
        Rename,
    };

    explicit SafeFileWriter(QString backupFolder);

    /// Makes `bytes` the contents of the file at `path`, creating it when it does not exist.
    bool write(const QString& path, const QByteArray& bytes);

    Step failedStep() const { return _failedStep; }
    /// The system's error number of the failure (ENOSPC, EACCES, …); 0 for NotRegularFile.
    int errorNumber() const { return _errorNumber; }
    /// The file or folder the failure concerns: the file, its folder, or the backup folder.
    QString failedPath() const { return _failedPath; }
    /// Whether the file still holds its old bytes (or is still missing) after a failure. When
    /// not, backupPath() names the copy of them.
    bool oldBytesKept() const { return _oldBytesKept; }
    QString backupPath() const { return _backupPath; }
    /// The file that received the bytes: `path` with symbolic links followed.
    QString targetPath() const { return _targetPath; }
    /// Whether the bytes were written into the file itself rather than into a replacement.
    bool wroteInPlace() const { return _wroteInPlace; }

private:
    enum class Outcome { Done, Failed, InPlace };

    Outcome replace(const QByteArray& target, const QByteArray& bytes, const struct stat* old);
    bool writeInPlace(const QByteArray& target, const QByteArray& bytes);
    bool keepCopy(const QByteArray& oldBytes, const QByteArray& fileName);
    bool fail(Step step, int errorNumber, const QByteArray& path);

    QString _backupFolder;
    Step _failedStep = Step::None;
    int _errorNumber = 0;
    QString _failedPath;
    bool _oldBytesKept = true;
    QString _backupPath;
    QString _targetPath;
    bool _wroteInPlace = false;
};
