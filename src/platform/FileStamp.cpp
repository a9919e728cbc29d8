#include "platform/FileStamp.h"

#include <QFile>
#include <QStringList>

#include <algorithm>
#include <iterator>
#include <sys/stat.h>

std::optional<FileStamp> FileStamp::ofFile(const QString& path)
{
    struct stat status {
    };
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    FileStamp stamp;
    stamp._device = status.st_dev;
    stamp._inode = status.st_ino;
    stamp._size = status.st_size;
    stamp._seconds = status.st_mtim.tv_sec;
    stamp._nanoseconds = status.st_mtim.tv_nsec;
    return stamp;
}

QString FileStamp::toString() const
{
    return QStringLiteral("%1:%2:%3:%4:%5")
        .arg(_device)
        .arg(_inode)
        .arg(_size)
        .arg(_seconds)
        .arg(_nanoseconds);
}

std::optional<FileStamp> FileStamp::fromString(const QString& text)
{
    const QStringList parts = text.split(u':');
    if (parts.size() != 5) {
        return std::nullopt;
    }
    bool ok[5] = {};
    FileStamp stamp;
    stamp._device = parts[0].toULongLong(&ok[0]);
    stamp._inode = parts[1].toULongLong(&ok[1]);
    stamp._size = parts[2].toLongLong(&ok[2]);
    stamp._seconds = parts[3].toLongLong(&ok[3]);
    stamp._nanoseconds = parts[4].toLongLong(&ok[4]);
    if (!std::all_of(std::begin(ok), std::end(ok), [](bool value) { return value; })) {
        return std::nullopt;
    }
    return stamp;
}
