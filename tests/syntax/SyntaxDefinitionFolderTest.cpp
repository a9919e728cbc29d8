// The syntax folder as windows look through it: each definition read once, and again only
// after its file changed.
#include "syntax/SyntaxDefinitionFolder.h"

#include "TestSupport.h"
#include "platform/FileManager.h"
#include "platform/PropertyList.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

QByteArray definitionClaiming(const QString& extension)
{
    return PropertyList::toXml(QVariantMap{
        {QStringLiteral("Extensions"), QVariantList{extension}},
        {QStringLiteral("Keywords"), QVariantList{QStringLiteral("keyword")}},
    });
}

/// The file's modification time, to put back after writing it.
struct timespec modified(const QString& path)
{
    struct stat status {
    };
    ::stat(QFile::encodeName(path).constData(), &status);
    return status.st_mtim;
}

void setModified(const QString& path, const struct timespec& time)
{
    const struct timespec times[2] = {time, time};
    ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0);
}

/// Writes `bytes` over the file in place, keeping its inode.
void overwrite(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.write(bytes);
    file.resize(bytes.size());
}

TEST(SyntaxDefinitionFolder, ADefinitionIsReadAgainOnlyWhenItsFileChanged)
{
    QDir().mkpath(FileManager::syntaxDefinitionDirectoryPathInPath());
    const QString path = TestSupport::writeFile(
        FileManager::syntaxDefinitionDirectoryPathInPath(QStringLiteral("Mine.plist")),
        definitionClaiming(QStringLiteral("aaa")));
    EXPECT_EQ(SyntaxDefinitionFolder::definitionPathForExtension(QStringLiteral("aaa")), path);

    // Other bytes under the same stamp (size, time, file) are not looked at: what was read
    // is used.
    const struct timespec time = modified(path);
    overwrite(path, definitionClaiming(QStringLiteral("bbb")));
    setModified(path, time);
    EXPECT_EQ(SyntaxDefinitionFolder::definitionPathForExtension(QStringLiteral("aaa")), path);

    // Changed: read again.
    const struct timespec later = {time.tv_sec + 1, time.tv_nsec};
    setModified(path, later);
    EXPECT_EQ(SyntaxDefinitionFolder::definitionPathForExtension(QStringLiteral("aaa")), "");
    EXPECT_EQ(SyntaxDefinitionFolder::definitionPathForExtension(QStringLiteral("bbb")), path);
    QFile::remove(path);
    EXPECT_EQ(SyntaxDefinitionFolder::definitionPathForExtension(QStringLiteral("bbb")), "");
}

} // namespace
