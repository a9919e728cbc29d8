#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <memory>

class Document;
class QLockFile;
class QTimer;

/// Keeps a copy of every document with unsaved changes — untitled ones above all — in the
/// user's data folder, so that a crash or a killed process loses nothing: the next start
/// finds the copies the dead process left and opens them again.
///
/// Each running editor writes into a folder of its own under "Recovery", held by a lock
/// file; a folder whose lock is free belongs to an editor that is gone.
class RecoveryStore : public QObject
{
    Q_OBJECT

public:
    /// What one recovery copy holds.
    struct Entry {
        QString text;
        QString path;        ///< the document's file; empty for an untitled document
        QString displayName; ///< the window's title when the copy was made
        quint64 encoding = 0;
        qsizetype lineBreaks = 0;
    };

    /// The store of this process, writing under `root` (normally
    /// $XDG_DATA_HOME/Tessaran/Recovery).
    explicit RecoveryStore(const QString& root, QObject* parent = nullptr);
    ~RecoveryStore() override;

    static RecoveryStore& sharedRecoveryStore();

    /// Writes a copy of the document a moment after each change while it has unsaved
    /// changes, and removes the copy once it is saved, reverted or closed.
    void watch(Document* document);
    /// Writes (or removes) the document's copy now.
    void writeCopy(Document* document);
    /// The folder this process writes its copies into (created on first use).
    QString folder();

    /// The copies left by editors that are no longer running, oldest folder first.
    QList<Entry> orphanedEntries() const;
    /// Removes the folders of editors that are no longer running.
    void removeOrphans();
    /// Opens every orphaned copy again as a document with unsaved changes (in its file's
    /// window when the file still exists), then removes the orphans; returns how many.
    int recoverOrphans();

    /// Milliseconds between the last change and the copy.
    static constexpr int kDelay = 2000;

private:
    QStringList orphanedFolders() const;
    QString copyPath(Document* document) const;
    void removeCopy(Document* document);

    QString _root;
    QString _folder;
    std::unique_ptr<QLockFile> _lock;
    QHash<Document*, QTimer*> _timers;
    QHash<Document*, int> _numbers;
    int _nextNumber = 1;
};
