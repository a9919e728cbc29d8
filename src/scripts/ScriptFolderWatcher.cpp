#include "scripts/ScriptFolderWatcher.h"

#include "platform/FileManager.h"
#include "scripts/ScriptLibrary.h"

#include <QDir>
#include <QFileSystemWatcher>

ScriptFolderWatcher::ScriptFolderWatcher(ScriptLibrary& library, QObject* parent)
    : QObject(parent)
    , _library(library)
    , _watcher(new QFileSystemWatcher(this))
{
    connect(_watcher, &QFileSystemWatcher::directoryChanged, this,
            &ScriptFolderWatcher::folderChanged);
    folderChanged();
}

void ScriptFolderWatcher::folderChanged()
{
    // A folder removed and made again is a new folder to the system: watch it again.
    const QString folder = FileManager::scriptDirectoryPathInPath();
    if (!_watcher->directories().contains(folder) && QDir(folder).exists()) {
        _watcher->addPath(folder);
    }
    _library.adoptScriptFiles();
}
