#include "platform/FileStamp.h"

#include <QFile>

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
