#pragma once

#include "platform/FileStamp.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

class Document;
class DocumentOpener;

/// Keeps a recovery copy of every document with unsaved changes, untitled ones included, in
/// the user's data folder, so that a crash, a killed process, a power cut or a full disk
/// loses nothing: the next start finds the copies the ended process left and offers them
/// back. This is what autosave does here; the user's own file changes only on Save.
///
/// Each running editor writes into a folder of its own under "Recovery", held by a lock on
/// the folder's "lock" file for as long as the process lives. The system drops that lock
/// when the process ends, however it ends, so a folder whose lock can be taken belongs to
/// an editor that is gone, whatever the lock file says (nothing, or a process long dead).
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
        /// The state of the file the unsaved text was based on; none when the text was not
        /// read from the file nor saved into it.
        std::optional<FileStamp> stamp;
        QString copyFile; ///< the copy on disk
    };

    /// What recovering the copies of ended editors brought back.
    struct Recovery {
        int count = 0;
        /// One sentence for each recovered document whose file changed on disk since its
        /// unsaved changes were made.
        QStringList notices;
    };

    /// The store of this process, writing under `root` (normally
    /// $XDG_DATA_HOME/Tessaran/Recovery).
    explicit RecoveryStore(const QString& root, QObject* parent = nullptr);
    /// Removes this editor's folder with its copies, unless keepCopiesForNextStart() ran.
    ~RecoveryStore() override;

    /// The store of the application's root.
    static RecoveryStore& sharedRecoveryStore();
    /// $XDG_DATA_HOME/Tessaran/Recovery; empty without a data folder.
    static QString standardRoot();

    /// Writes a copy of the document whenever it asks for one (see
    /// Document::recoveryCopyDue), and removes the copy once the document is saved,
    /// reverted or closed.
    void watch(Document* document);
    /// Makes the document's copy without holding up typing: a worker writes the text as it is
    /// now (or, for a file still going in, once it is all in), while the edits go on.
    /// Removes the copy when the document has nothing unsaved. A copy that cannot be written
    /// is tried again after the autosave delay; recoveryFailed() says why.
    void startCopy(Document* document);
    /// Whether startCopy() is making a copy of the document.
    bool isCopying(Document* document) const { return _pending.contains(document); }
    /// Writes the document's copy now, or removes it when the document has nothing unsaved.
    /// The copy replaces the previous one only once it is complete on the disk; false when
    /// it could not be written (errorString() says why, the previous copy stays).
    bool writeCopy(Document* document);
    /// The file holding the document's copy; empty while it has none.
    QString copyFile(Document* document) const;
    /// The folder that holds every editor's folder of copies.
    QString root() const { return _root; }
    /// The folder this process writes its copies into (created on first use); empty when
    /// it cannot be created (errorString() says why).
    QString folder();
    /// Why the last copy or the folder could not be written.
    QString errorString() const { return _errorString; }

    /// For an end without questions (the session ending, a termination signal): writes the
    /// copies of the documents with unsaved changes now, and keeps them when this process
    /// ends, so that the next start offers them back. False when a copy could not be written.
    bool keepCopiesForNextStart(const std::vector<Document*>& documents);

    /// The copies left by editors that are no longer running, oldest folder first.
    QList<Entry> orphanedEntries() const;
    /// Opens every orphaned copy again, through `documents`, as a document with unsaved
    /// changes (in its file's window when the file still exists) and makes the copy this
    /// editor's own.
    Recovery recoverOrphans(DocumentOpener& documents);

Q_SIGNALS:
    /// Copies cannot be kept, or one could not be written: `message` says which and the
    /// system's reason. Sent once per run, so the user is told without being nagged.
    void recoveryFailed(const QString& message);

private:
    struct PendingCopy;
    QString copyPath(int number) const;
    /// The header line of the document's copy, as it is now.
    QByteArray describe(Document* document) const;
    int numberOf(Document* document);
    void writeSnapshot(PendingCopy* pending);
    void finishCopy(PendingCopy* pending, int error);
    /// Waits for a copy of the document that a worker is writing, then forgets it.
    void settleCopy(Document* document);
    void removeCopy(Document* document);
    void fail(const QString& message);
    void adoptCopy(Document* document, const Entry& entry);
    Document* reopen(DocumentOpener& documents, const Entry& entry, QStringList& notices);

    QString _root;
    QString _folder;
    int _lock = -1;
    QHash<Document*, int> _numbers;
    QSet<Document*> _watched;
    QHash<Document*, PendingCopy*> _pending;
    QSet<PendingCopy*> _writes;
    int _nextNumber = 1;
    bool _keepAtExit = false;
    bool _failureReported = false;
    QString _errorString;
};
