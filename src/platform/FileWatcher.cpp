#include "platform/FileWatcher.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHash>
#include <QPointer>
#include <QTimer>

namespace {

// One system watcher for the whole editor: each one holds a file descriptor of its own, and a
// user has only so many (often 128), whereas a user may well open hundreds of files.
QPointer<QFileSystemWatcher> sharedWatcher;
// How many FileWatchers use each watched path.
QHash<QString, int> uses;

QFileSystemWatcher* watcher()
{
    if (!sharedWatcher) {
        // Owned by the application, so that it goes before the event loop's machinery does.
        sharedWatcher = new QFileSystemWatcher(QCoreApplication::instance());
        uses.clear();
    }
    return sharedWatcher;
}

void addWatch(const QString& path)
{
    QFileSystemWatcher* system = watcher();
    const bool watched = system->files().contains(path) || system->directories().contains(path);
    if (!watched && QFileInfo::exists(path)) {
        system->addPath(path);
    }
}

void use(const QString& path)
{
    if (path.isEmpty()) {
        return;
    }
    watcher();
    if (uses[path]++ == 0) {
        addWatch(path);
    }
}

void release(const QString& path)
{
    if (path.isEmpty() || !sharedWatcher) {
        return;
    }
    if (--uses[path] > 0) {
        return;
    }
    uses.remove(path);
    if (sharedWatcher->files().contains(path) || sharedWatcher->directories().contains(path)) {
        sharedWatcher->removePath(path);
    }
}

} // namespace

FileWatcher::FileWatcher(QObject* parent)
    : QObject(parent)
    , _settling(new QTimer(this))
{
    _settling->setSingleShot(true);
    _settling->setInterval(settlingMilliseconds);
    connect(_settling, &QTimer::timeout, this, &FileWatcher::settled);
    QFileSystemWatcher* system = watcher();
    connect(system, &QFileSystemWatcher::fileChanged, this, &FileWatcher::noticed);
    connect(system, &QFileSystemWatcher::directoryChanged, this, &FileWatcher::noticed);
}

FileWatcher::~FileWatcher()
{
    setPath(QString());
}

void FileWatcher::setPath(const QString& path)
{
    if (path == _path) {
        return;
    }
    release(_path);
    release(_folder);
    _path = path;
    _folder = path.isEmpty() ? QString() : QFileInfo(path).absolutePath();
    use(_path);
    use(_folder);
}

void FileWatcher::noticed(const QString& path)
{
    if (!_path.isEmpty() && (path == _path || path == _folder)) {
        _settling->start();
    }
}

void FileWatcher::settled()
{
    if (_path.isEmpty()) {
        return;
    }
    // The system drops the watch of a file that is replaced or removed, and of a folder that
    // is: the file or folder there now is watched anew.
    addWatch(_path);
    addWatch(_folder);
    Q_EMIT changed();
}
