#include "syntax/SyntaxDefinitionFolder.h"

#include "platform/FileManager.h"
#include "platform/FileStamp.h"
#include "platform/PropertyList.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QVariantList>

#include <algorithm>

namespace {

/// One file of the folder as it was when last looked at.
struct Entry {
    FileStamp stamp;
    std::optional<QVariantMap> dictionary;
};

QHash<QString, Entry>& entries()
{
    static QHash<QString, Entry> read;
    return read;
}

} // namespace

QStringList SyntaxDefinitionFolder::definitionPaths()
{
    const QString folder = FileManager::syntaxDefinitionDirectoryPathInPath();
    QStringList paths;
    for (const QString& file : QDir(folder).entryList(QDir::Files, QDir::Unsorted)) {
        paths.append(folder + u'/' + file);
    }
    return paths;
}

std::optional<QVariantMap> SyntaxDefinitionFolder::definition(const QString& path)
{
    const std::optional<FileStamp> stamp = FileStamp::ofFile(path);
    if (!stamp) {
        // No file on disk: gone since, or one of the application's own resources.
        entries().remove(path);
        return PropertyList::readDictionary(path);
    }
    const auto known = entries().constFind(path);
    if (known != entries().constEnd() && known->stamp == *stamp) {
        return known->dictionary;
    }
    const Entry entry{*stamp, PropertyList::readDictionary(path)};
    entries().insert(path, entry);
    return entry.dictionary;
}

QString SyntaxDefinitionFolder::definitionPathForExtension(const QString& extension)
{
    for (const QString& path : definitionPaths()) {
        const std::optional<QVariantMap> dictionary = definition(path);
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
