#pragma once

#include <QString>

#include <optional>

/// What identifies one state of a file on disk: the file (device and inode), its size and
/// its modification time to the nanosecond. Two stamps differ when another program wrote
/// the file, or replaced it with another one, in between.
class FileStamp
{
public:
    /// The stamp of the file at `path` now; none when there is no such file.
    static std::optional<FileStamp> ofFile(const QString& path);

    /// The stamp as text, to be kept beside a copy of the file's contents.
    QString toString() const;
    /// A stamp read back from toString(); none when `text` is not one.
    static std::optional<FileStamp> fromString(const QString& text);

    bool operator==(const FileStamp&) const = default;
    /// Whether both stamps are of the same file (device and inode), whatever its contents and
    /// name: a file renamed keeps it, a file replaced by another one does not.
    bool isSameFile(const FileStamp& other) const
    {
        return _device == other._device && _inode == other._inode;
    }

private:
    unsigned long long _device = 0;
    unsigned long long _inode = 0;
    long long _size = 0;
    long long _seconds = 0;
    long long _nanoseconds = 0;
};
