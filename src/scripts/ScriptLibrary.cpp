#include "scripts/ScriptLibrary.h"

#include "platform/FileManager.h"
#include "platform/TextCodec.h"
#include "scripts/ScriptManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>

#include <functional>

namespace {

bool existsInScriptFolder(const QString& fileName)
{
    return QFileInfo::exists(FileManager::scriptDirectoryPathInPath(fileName));
}

bool contains(const ScriptObjectPtr& folder, const ScriptObjectPtr& node)
{
    if (folder == node) {
        return true;
    }
    for (const ScriptObjectPtr& child : folder->children().value_or(ScriptObjectList())) {
        if (contains(child, node)) {
            return true;
        }
    }
    return false;
}

bool locateIn(const ScriptObjectList& list, const ScriptObjectPtr& parent,
              const ScriptObjectPtr& node, ScriptObjectPtr& folder, qsizetype& index)
{
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (list[i] == node) {
            folder = parent;
            index = i;
            return true;
        }
        if (!list[i]->isLeaf() && locateIn(list[i]->children().value_or(ScriptObjectList()),
                                           list[i], node, folder, index)) {
            return true;
        }
    }
    return false;
}

void collectFolders(const ScriptObjectList& list, int level,
                    QList<QPair<ScriptObjectPtr, int>>& result)
{
    for (const ScriptObjectPtr& node : list) {
        if (!node->isLeaf()) {
            result.append({node, level});
            collectFolders(node->children().value_or(ScriptObjectList()), level + 1, result);
        }
    }
}

} // namespace

ScriptLibrary::ScriptLibrary(ScriptManager& manager)
    : _manager(manager)
{}

ScriptObjectList ScriptLibrary::entries(const ScriptObjectPtr& folder) const
{
    if (folder) {
        return folder->children().value_or(ScriptObjectList());
    }
    return _manager.scriptDataSource().value_or(ScriptObjectList());
}

void ScriptLibrary::setEntries(const ScriptObjectPtr& folder, const ScriptObjectList& list)
{
    if (folder) {
        folder->setChildren(list);
    } else {
        _manager.setScriptDataSource(list);
    }
}

void ScriptLibrary::changed()
{
    _manager.postScriptDataSourceChanged();
}

bool ScriptLibrary::locate(const ScriptObjectPtr& node, ScriptObjectPtr& folder,
                           qsizetype& index) const
{
    return node && locateIn(entries(nullptr), nullptr, node, folder, index);
}

QList<QPair<ScriptObjectPtr, int>> ScriptLibrary::folders() const
{
    QList<QPair<ScriptObjectPtr, int>> result;
    collectFolders(entries(nullptr), 0, result);
    return result;
}

QString ScriptLibrary::filePathOf(const ScriptObjectPtr& script)
{
    return FileManager::scriptDirectoryPathInPath(script->path());
}

bool ScriptLibrary::addScript(const QString& name, const QString& extension, const QString& text,
                              quint64 encoding, const ScriptObjectPtr& folder)
{
    const QString fileName = extension.isEmpty() ? name : name + u'.' + extension;
    if (name.isEmpty() || existsInScriptFolder(fileName)) {
        return false;
    }
    const std::optional<QByteArray> bytes = TextCodec::encode(encoding, text);
    QDir().mkpath(FileManager::scriptDirectoryPathInPath());
    QSaveFile file(FileManager::scriptDirectoryPathInPath(fileName));
    if (!bytes || !file.open(QIODevice::WriteOnly) || file.write(*bytes) != bytes->size() ||
        !file.commit()) {
        return false;
    }
    ScriptObjectList list = entries(folder);
    list.append(ScriptObject::initWithPath(fileName, true));
    setEntries(folder, list);
    changed();
    return true;
}

ScriptObjectPtr ScriptLibrary::addScriptFolder(const QString& name, const ScriptObjectPtr& folder)
{
    if (name.isEmpty()) {
        return nullptr;
    }
    ScriptObjectPtr node = ScriptObject::initWithPath(name, false);
    ScriptObjectList list = entries(folder);
    list.append(node);
    setEntries(folder, list);
    changed();
    return node;
}

const QStringList& ScriptLibrary::importableTypes()
{
    static const QStringList types = {QStringLiteral("sh"), QStringLiteral("js"),
                                      QStringLiteral("scpt"), QStringLiteral("applescript")};
    return types;
}

QStringList ScriptLibrary::importFiles(const QStringList& paths)
{
    QStringList refused;
    ScriptObjectList list = entries(nullptr);
    QDir().mkpath(FileManager::scriptDirectoryPathInPath());
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (!info.exists() || info.isDir() || !importableTypes().contains(info.suffix())) {
            continue;
        }
        if (existsInScriptFolder(info.fileName()) ||
            !QFile::copy(path, FileManager::scriptDirectoryPathInPath(info.fileName()))) {
            refused << path;
            continue;
        }
        list.append(ScriptObject::initWithPath(info.fileName(), true));
    }
    setEntries(nullptr, list);
    changed();
    return refused;
}

const QStringList& ScriptLibrary::scriptTypes()
{
    static const QStringList types = {
        QStringLiteral("sh"),   QStringLiteral("pl"),         QStringLiteral("cgi"),
        QStringLiteral("php"),  QStringLiteral("php3"),       QStringLiteral("py"),
        QStringLiteral("pyw"),  QStringLiteral("rb"),         QStringLiteral("js"),
        QStringLiteral("scpt"), QStringLiteral("applescript")};
    return types;
}

QStringList ScriptLibrary::adoptScriptFiles()
{
    QSet<QString> named;
    const std::function<void(const ScriptObjectList&)> collect = [&](const ScriptObjectList& list) {
        for (const ScriptObjectPtr& node : list) {
            if (node->isLeaf()) {
                named.insert(node->path());
            } else {
                collect(node->children().value_or(ScriptObjectList()));
            }
        }
    };
    collect(entries(nullptr));
    QStringList adopted;
    ScriptObjectList list = entries(nullptr);
    const QFileInfoList files =
        QDir(FileManager::scriptDirectoryPathInPath()).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& file : files) {
        if (!named.contains(file.fileName()) && scriptTypes().contains(file.suffix())) {
            list.append(ScriptObject::initWithPath(file.fileName(), true));
            adopted << file.fileName();
        }
    }
    if (!adopted.isEmpty()) {
        setEntries(nullptr, list);
        changed();
    }
    return adopted;
}

bool ScriptLibrary::rename(const ScriptObjectPtr& node, const QString& name)
{
    if (!node || name.isEmpty()) {
        return false;
    }
    if (!node->isLeaf()) {
        node->setPath(name);
        changed();
        return true;
    }
    const QString extension = QFileInfo(node->path()).suffix();
    const QString fileName = extension.isEmpty() ? name : name + u'.' + extension;
    if (fileName == node->path()) {
        return true;
    }
    if (existsInScriptFolder(fileName) ||
        !QFile::rename(filePathOf(node), FileManager::scriptDirectoryPathInPath(fileName))) {
        return false;
    }
    node->setPath(fileName);
    changed();
    return true;
}

void ScriptLibrary::removeChildScriptObject(const ScriptObjectPtr& folder)
{
    for (const ScriptObjectPtr& child : folder->children().value_or(ScriptObjectList())) {
        if (child->isLeaf()) {
            QFile::remove(filePathOf(child));
        } else {
            removeChildScriptObject(child);
        }
    }
}

void ScriptLibrary::remove(const ScriptObjectPtr& node)
{
    ScriptObjectPtr folder;
    qsizetype index = 0;
    if (!locate(node, folder, index)) {
        return;
    }
    if (node->isLeaf()) {
        QFile::remove(filePathOf(node));
    } else {
        removeChildScriptObject(node);
    }
    ScriptObjectList list = entries(folder);
    list.removeAt(index);
    setEntries(folder, list);
    changed();
}

bool ScriptLibrary::move(const ScriptObjectList& nodes, const ScriptObjectPtr& folder,
                         qsizetype index)
{
    if (index < 0 || index > entries(folder).size() || (folder && folder->isLeaf())) {
        return false;
    }
    for (const ScriptObjectPtr& node : nodes) {
        ScriptObjectPtr from;
        qsizetype at = 0;
        if (!locate(node, from, at) || (folder && contains(node, folder))) {
            return false;
        }
    }
    for (const ScriptObjectPtr& node : nodes) {
        ScriptObjectPtr from;
        qsizetype at = 0;
        locate(node, from, at);
        ScriptObjectList source = entries(from);
        source.removeAt(at);
        setEntries(from, source);
        if (from == folder && at < index) {
            --index;
        }
        ScriptObjectList target = entries(folder);
        target.insert(index, node);
        setEntries(folder, target);
        ++index;
    }
    changed();
    return true;
}
