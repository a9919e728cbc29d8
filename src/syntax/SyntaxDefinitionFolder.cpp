#include "syntax/SyntaxDefinitionFolder.h"

#include "platform/FileManager.h"
#include "platform/PropertyList.h"

#include <QDir>
#include <QFileInfo>
#include <QVariantList>

#include <algorithm>

QStringList SyntaxDefinitionFolder::definitionPaths()
{
    const QString folder = FileManager::syntaxDefinitionDirectoryPathInPath();
    QStringList paths;
    for (const QString& file : QDir(folder).entryList(QDir::Files, QDir::Unsorted)) {
        paths.append(folder + u'/' + file);
    }
    return paths;
}

QString SyntaxDefinitionFolder::definitionPathForExtension(const QString& extension)
{
    for (const QString& path : definitionPaths()) {
        const std::optional<QVariantMap> dictionary = PropertyList::readDictionary(path);
        if (!dictionary) {
            continue;
        }
        const QVariantList extensions = dictionary->value(QStringLiteral("Extensions")).toList();
        if (std::any_of(extensions.begin(), extensions.end(), [&](const QVariant& candidate) {
                return candidate.typeId() == QMetaType::QString &&
                       candidate.toString() == extension;
            })) {
            return path;
        }
    }
    return {};
}

QStringList SyntaxDefinitionFolder::definitionPathsNamed(const QString& name)
{
    QStringList paths = definitionPaths();
    paths.removeIf([&](const QString& path) { return syntaxNameOfPath(path) != name; });
    return paths;
}

QString SyntaxDefinitionFolder::syntaxNameOfPath(const QString& path)
{
    return QFileInfo(path).completeBaseName();
}
