#pragma once

#include <QObject>
#include <QString>

class QTimer;

/// Tells when a file may have changed on disk: written in place, replaced by another file
/// (as most editors and git save, renaming a new file over it), renamed, deleted or made
/// again. It watches the file and its folder, since a watch on the file alone ends with the
/// file it was set on. Every watcher of the editor shares one system watch per path.
class FileWatcher : public QObject
{
    Q_OBJECT

public:
    explicit FileWatcher(QObject* parent = nullptr);
    ~FileWatcher() override;

    /// Watches `path` (an absolute path; empty watches nothing) instead of the one before.
    void setPath(const QString& path);
    QString path() const { return _path; }

    /// How long a burst of events is gathered before changed() is emitted, so that a program
    /// writing the file in several steps is reported once, when it is done.
    static constexpr int settlingMilliseconds = 100;

Q_SIGNALS:
    /// Something happened to the file or in its folder; whether the file is still what it
    /// was is for the receiver to find out. The editor's own saves are reported too.
    void changed();

private:
    void noticed(const QString& path);
    void settled();

    QString _path;
    QString _folder;
    QTimer* _settling = nullptr;
};
