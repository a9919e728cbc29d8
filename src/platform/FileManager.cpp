#include "platform/FileManager.h"

#include <QDir>
#include <QStandardPaths>

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
