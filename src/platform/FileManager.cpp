#include "platform/FileManager.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <fcntl.h>
#include <unistd.h>

namespace {

QString joined(const QString& folder, const QString& name)
{
    if (folder.isNull()) {
        return {};
    }
    return name.isEmpty() ? folder : folder + u'/' + name;
}

} // namespace

QString FileManager::findOrCreateDirectory(int directory, int domain,
                                           const QString& appendPathComponent)
{
    if (directory != ApplicationSupportDirectory || domain != UserDomainMask) {
        return {};
    }
    QString path = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (path.isEmpty()) {
        return {};
    }
    path = joined(path, appendPathComponent);
    if (!QDir().mkpath(path)) {
        return {};
    }
    return path;
}

QString FileManager::applicationSupportDirectoryPath()
{
    return findOrCreateDirectory(ApplicationSupportDirectory, UserDomainMask, applicationName());
}

QString FileManager::syntaxDefinitionDirectoryPathInPath(const QString& fileName)
{
    return joined(joined(applicationSupportDirectoryPath(), QStringLiteral("SyntaxDefinition")),
                  fileName);
}

QString FileManager::scriptDirectoryPathInPath(const QString& fileName)
{
    return joined(joined(applicationSupportDirectoryPath(), QStringLiteral("Script")), fileName);
}

QString FileManager::backupDirectoryPath()
{
    return joined(applicationSupportDirectoryPath(), QStringLiteral("Backups"));
}

bool FileManager::isWritableFile(const QString& path)
{
    const QFileInfo info(path);
    const QString target = info.exists() ? info.absoluteFilePath() : info.absolutePath();
    // The effective user and capabilities, as open() will see them (not the real ones that
    // plain access() asks about).
    return faccessat(AT_FDCWD, QFile::encodeName(target).constData(), W_OK, AT_EACCESS) == 0;
}
