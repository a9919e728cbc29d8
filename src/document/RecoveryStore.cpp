#include "document/RecoveryStore.h"

#include "document/Document.h"
#include "document/DocumentOpener.h"
#include "document/TextChunkIterator.h"
#include "document/TextStore.h"
#include "platform/FileManager.h"
#include "platform/SharedInstance.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QStandardPaths>
#include <QUuid>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString kLockName = QStringLiteral("lock");
const QString kCopySuffix = QStringLiteral(".copy");
// A copy is one file: a line of JSON describing the document, then its text in UTF-8. One
// file replaced in one step cannot hold the text of one moment and the description of another.
constexpr int kFormat = 1;

QString reasonOf(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

QByteArray native(const QString& path)
{
    return QFile::encodeName(path);
}

// Creates `path` with its missing parents, private to the user; the errno of the first
// failure, 0 on success.
int makeFolders(const QString& path)
{
    const QByteArray whole = native(QDir::cleanPath(path));
    for (qsizetype slash = whole.indexOf('/', 1);; slash = whole.indexOf('/', slash + 1)) {
        const QByteArray part = slash < 0 ? whole : whole.left(slash);
        struct stat status {
        };
        if (::stat(part.constData(), &status) == 0) {
            if (!S_ISDIR(status.st_mode)) {
                return ENOTDIR;
            }
        } else if (errno != ENOENT) {
            return errno;
        } else if (::mkdir(part.constData(), 0700) != 0 && errno != EEXIST) {
            return errno;
        }
        if (slash < 0) {
            return 0;
        }
    }
}

void syncFolder(const QByteArray& folder)
{
    const int fd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

// The text in UTF-8, with the characters that stand-ins replace put back, appended to `parts`
// in parts of about a megabyte. Read chunk by chunk from a snapshot: any thread may do it, and
// the text is never held whole a second time.
void appendUtf8(std::vector<QByteArray>& parts, const TextSnapshot& text,
                const CharacterStandIns& standIns)
{
    constexpr qsizetype PartLength = 1024 * 1024;
    QString part;
    part.reserve(PartLength + TextTree::maxLeaf);
    const auto flush = [&] {
        standIns.restore(part);
        parts.push_back(part.toUtf8());
        part.resize(0);
    };
    for (TextChunkIterator chunks(text, 0); !chunks.atEnd(); chunks.next()) {
        // No chunk ends between the halves of a surrogate pair, so no part does.
        part += chunks.chunk();
        if (part.size() >= PartLength) {
            flush();
        }
    }
    if (!part.isEmpty()) {
        flush();
    }
}

// Writes `bytes` into a new file beside `path` and puts it in place of `path` only once every
// byte is on the disk: the errno of the first failure (the old file is then untouched and
// the new one gone), 0 on success. Every write and the flush to the disk are checked: on a
// full disk a buffered write can look complete until the data reaches the disk.
int writeAtomically(const QString& path, const std::vector<QByteArray>& parts)
{
    const QByteArray target = native(path);
    const qsizetype slash = target.lastIndexOf('/');
    QByteArray temporary = target.left(slash + 1) + '.' + target.mid(slash + 1) + ".XXXXXX";
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        return errno;
    }
    int error = 0;
    for (const QByteArray& bytes : parts) {
        for (qsizetype done = 0; done < bytes.size() && error == 0;) {
            const ssize_t written =
                ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
            if (written > 0) {
                done += written;
            } else if (written < 0 && errno != EINTR) {
                error = errno;
            } else if (written == 0) {
                error = EIO;
            }
        }
    }
    if (error == 0 && ::fsync(fd) != 0) {
        error = errno;
    }
    if (::close(fd) != 0 && error == 0 && errno != EINTR) {
        error = errno;
    }
    if (error == 0 && ::rename(temporary.constData(), target.constData()) != 0) {
        error = errno;
    }
    if (error != 0) {
        ::unlink(temporary.constData());
        return error;
    }
    // The new name reaches the disk with its folder.
    syncFolder(target.left(slash));
    return 0;
}

// Takes the lock of a recovery folder: the open lock file, -1 when no lock file can be
// opened there (nobody can hold it then either), or none while a running editor holds it.
std::optional<int> takeLock(const QString& folder)
{
    const QByteArray path = native(folder + u'/' + kLockName);
    int fd = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) {
        fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    }
    if (fd < 0) {
        return -1;
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return std::nullopt;
    }
    return fd;
}

void releaseLock(int fd)
{
    if (fd >= 0) {
        ::close(fd);
    }
}

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

// Removes a recovery folder whose copies have all been taken over: what is left are the
// unfinished copies of an ended process and its lock. A copy that could not be read or taken
// over keeps its folder, to be offered again at the next start.
void removeFolderIfDone(const QString& folder)
{
    const QStringList names = filesIn(folder);
    if (std::any_of(names.cbegin(), names.cend(),
                    [](const QString& name) { return name.endsWith(kCopySuffix); })) {
        return;
    }
    for (const QString& name : names) {
        ::unlink(native(folder + u'/' + name).constData());
    }
    ::rmdir(native(folder).constData());
}

std::optional<RecoveryStore::Entry> readCopy(const QString& file)
{
    QFile copy(file);
    if (!copy.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QByteArray bytes = copy.readAll();
    const qsizetype end = bytes.indexOf('\n');
    if (end < 0) {
        return std::nullopt;
    }
    const QJsonObject info = QJsonDocument::fromJson(bytes.left(end)).object();
    if (info.value(QStringLiteral("format")).toInt() != kFormat) {
        return std::nullopt;
    }
    RecoveryStore::Entry entry;
    entry.text = QString::fromUtf8(bytes.constData() + end + 1, bytes.size() - end - 1);
    entry.path = info.value(QStringLiteral("path")).toString();
    entry.displayName = info.value(QStringLiteral("displayName")).toString();
    entry.encoding = info.value(QStringLiteral("encoding")).toString().toULongLong();
    entry.lineBreaks = info.value(QStringLiteral("lineBreaks")).toInteger();
    entry.stamp = FileStamp::fromString(info.value(QStringLiteral("stamp")).toString());
    entry.copyFile = file;
    return entry;
}

// The readable copies of one folder in the order they were first made.
QList<RecoveryStore::Entry> copiesIn(const QString& folder)
{
    QStringList names = QDir(folder).entryList({u'*' + kCopySuffix}, QDir::Files);
    std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
        return QFileInfo(a).baseName().toInt() < QFileInfo(b).baseName().toInt();
    });
    QList<RecoveryStore::Entry> entries;
    for (const QString& name : names) {
        if (std::optional<RecoveryStore::Entry> entry = readCopy(folder + u'/' + name)) {
            entries << *entry;
        }
    }
    return entries;
}

struct Orphan {
    QString folder;
    int lock = -1;
};

// The folders of editors that are no longer running, oldest first, each with its lock taken
// so that no other editor starting now recovers the same copies.
std::vector<Orphan> takeOrphans(const QString& root, const QString& own)
{
    std::vector<Orphan> orphans;
    const QFileInfoList candidates =
        QDir(root).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Time | QDir::Reversed);
    for (const QFileInfo& candidate : candidates) {
        const QString folder = candidate.absoluteFilePath();
        if (folder == own) {
            continue;
        }
        if (const std::optional<int> lock = takeLock(folder)) {
            orphans.push_back({folder, *lock});
        }
    }
    return orphans;
}

} // namespace

struct RecoveryStore::PendingCopy {
    QPointer<Document> document;
    /// The end of a file still going in is not in the text yet: the copy is taken once it is.
    /// While a worker writes the copy.
    QFutureWatcher<int>* write = nullptr;
    QString path;
    /// The copy was removed (the document saved, reverted or closed) while being written:
    /// what the worker writes goes too.
    bool dropped = false;
    /// Asked for again while being written.
    bool again = false;
};

RecoveryStore::RecoveryStore(const QString& root, QObject* parent)
    : QObject(parent)
    , _root(root)
{}

RecoveryStore::~RecoveryStore()
{
    // Copies that workers are writing land before the folder is cleared.
    const QSet<PendingCopy*> writes = _writes;
    for (PendingCopy* pending : writes) {
        pending->write->waitForFinished();
        if (pending->dropped) {
            ::unlink(native(pending->path).constData());
        }
    }
    for (auto it = _pending.begin(); it != _pending.end();) {
        it = writes.contains(*it) ? _pending.erase(it) : std::next(it);
    }
    qDeleteAll(writes);
    qDeleteAll(_pending);
    if (_lock < 0) {
        return;
    }
    // A clean end leaves nothing to recover; the lock goes last, so that no other editor
    // takes the folder for an orphan while its copies are still there.
    if (!_keepAtExit) {
        for (const QString& name : filesIn(_folder)) {
            if (name != kLockName) {
                ::unlink(native(_folder + u'/' + name).constData());
            }
        }
        ::unlink(native(_folder + u'/' + kLockName).constData());
        ::rmdir(native(_folder).constData());
    }
    ::close(_lock);
}

RecoveryStore& RecoveryStore::sharedRecoveryStore()
{
    return SharedInstance<RecoveryStore>::object();
}

QString RecoveryStore::standardRoot()
{
    // Not created on the way: a missing data folder is reported when the first copy is due.
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return data.isEmpty()
               ? QString()
               : data + u'/' + FileManager::applicationName() + QStringLiteral("/Recovery");
}

void RecoveryStore::fail(const QString& message)
{
    _errorString = message;
    if (!_failureReported) {
        _failureReported = true;
        Q_EMIT recoveryFailed(message);
    }
}

QString RecoveryStore::folder()
{
    if (!_folder.isEmpty()) {
        return _folder;
    }
    if (_root.isEmpty()) {
        fail(tr("Copies of unsaved documents cannot be kept: there is no folder for application "
                "data (HOME is not set)."));
        return {};
    }
    const auto cannotCreate = [this](const QString& folder, int error) {
        fail(tr("Copies of unsaved documents cannot be kept, because the folder “%1” could not "
                "be created: %2. If the editor ends unexpectedly, unsaved changes are lost.")
                 .arg(folder, reasonOf(error)));
        return QString();
    };
    if (const int error = makeFolders(_root)) {
        return cannotCreate(_root, error);
    }
    // Another editor starting at the same moment may take a new folder for an orphan and
    // remove it; the next name is tried then.
    for (int attempt = 0; attempt < 8; ++attempt) {
        const QString folder = _root + u'/' + QString::number(QCoreApplication::applicationPid()) +
                               u'-' + QUuid::createUuid().toString(QUuid::Id128).left(8);
        if (::mkdir(native(folder).constData(), 0700) != 0) {
            if (errno == EEXIST) {
                continue;
            }
            return cannotCreate(folder, errno);
        }
        const QByteArray lockPath = native(folder + u'/' + kLockName);
        const int fd = ::open(lockPath.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST) {
                continue;
            }
            return cannotCreate(folder + u'/' + kLockName, errno);
        }
        if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
            ::close(fd);
            continue;
        }
        // For people looking into the folder: the process that owns it.
        const QByteArray owner = QByteArray::number(QCoreApplication::applicationPid()) + '\n';
        // The lock itself does not depend on what the file says.
        [[maybe_unused]] const ssize_t written =
            ::write(fd, owner.constData(), size_t(owner.size()));
        _lock = fd;
        _folder = folder;
        return _folder;
    }
    return cannotCreate(_root, EEXIST);
}

QString RecoveryStore::copyPath(int number) const
{
    return _folder + u'/' + QString::number(number) + kCopySuffix;
}

QString RecoveryStore::copyFile(Document* document) const
{
    const auto number = _numbers.constFind(document);
    return number == _numbers.cend() ? QString() : copyPath(*number);
}

void RecoveryStore::watch(Document* document)
{
    if (_watched.contains(document)) {
        return;
    }
    _watched.insert(document);
    connect(document, &Document::recoveryCopyDue, this, [this, document] { startCopy(document); });
    connect(document, &Document::documentEditedChanged, this, [this, document](bool modified) {
        if (!modified) {
            removeCopy(document);
        }
    });
    connect(document, &QObject::destroyed, this, [this, document] {
        removeCopy(document);
        // Kept for the next start: a copy being made goes on without its document.
        if (PendingCopy* pending = _pending.take(document); pending && !pending->write) {
            delete pending;
        }
        _watched.remove(document);
        _numbers.remove(document);
    });
}

int RecoveryStore::numberOf(Document* document)
{
    int& number = _numbers[document];
    if (number == 0) {
        number = _nextNumber++;
    }
    return number;
}

QByteArray RecoveryStore::describe(Document* document) const
{
    QJsonObject info;
    info[QStringLiteral("format")] = kFormat;
    info[QStringLiteral("path")] = document->fileURL();
    info[QStringLiteral("displayName")] = document->displayName();
    info[QStringLiteral("encoding")] = QString::number(document->documentEncoding());
    info[QStringLiteral("lineBreaks")] = qint64(document->documentLineBreaks());
    if (const std::optional<FileStamp> stamp = document->fileStamp()) {
        info[QStringLiteral("stamp")] = stamp->toString();
    }
    return QJsonDocument(info).toJson(QJsonDocument::Compact);
}

void RecoveryStore::startCopy(Document* document)
{
    watch(document);
    if (!document->isDocumentEdited()) {
        removeCopy(document);
        return;
    }
    if (PendingCopy* pending = _pending.value(document)) {
        // One being written is followed by another; one waiting for the end of the file
        // takes the text as it is then.
        pending->again = pending->again || pending->write;
        return;
    }
    if (folder().isEmpty()) {
        document->scheduleAutosave();
        return;
    }
    auto* pending = new PendingCopy;
    pending->document = document;
    _pending.insert(document, pending);
    writeSnapshot(pending);
}

void RecoveryStore::writeSnapshot(PendingCopy* pending)
{
    Document* document = pending->document;
    const QByteArray header = describe(document);
    pending->path = copyPath(numberOf(document));
    // The text as it is now, which the edits made while the worker writes leave as it is.
    const TextSnapshot text = document->textStore()->text();
    const CharacterStandIns standIns = document->characterStandIns();
    pending->write = new QFutureWatcher<int>(this);
    _writes.insert(pending);
    connect(pending->write, &QFutureWatcher<int>::finished, this,
            [this, pending] { finishCopy(pending, pending->write->result()); });
    // Made into bytes and written on the worker: both are passes over the whole text.
    pending->write->setFuture(QtConcurrent::run([header, text, standIns, path = pending->path] {
        std::vector<QByteArray> parts{header + '\n'};
        appendUtf8(parts, text, standIns);
        return writeAtomically(path, parts);
    }));
}

void RecoveryStore::finishCopy(PendingCopy* pending, int error)
{
    _writes.remove(pending);
    pending->write->deleteLater();
    Document* document = pending->document;
    if (document && _pending.value(document) == pending) {
        _pending.remove(document);
    }
    const bool again = pending->again;
    if (pending->dropped) {
        ::unlink(native(pending->path).constData());
    } else if (error != 0 && document) {
        fail(tr("A recovery copy of “%1” could not be written in “%2”: %3. Save the document to "
                "keep your changes.")
                 .arg(document->displayName(), _folder, reasonOf(error)));
        document->scheduleAutosave();
    }
    delete pending;
    if (again && document) {
        startCopy(document);
    }
}

void RecoveryStore::settleCopy(Document* document)
{
    PendingCopy* pending = _pending.take(document);
    if (!pending) {
        return;
    }
    if (pending->write) {
        // What it writes is older than what follows: it only has to be out of the way.
        pending->write->disconnect(this);
        pending->write->waitForFinished();
        pending->write->deleteLater();
        _writes.remove(pending);
    }
    delete pending;
}

bool RecoveryStore::writeCopy(Document* document)
{
    watch(document);
    settleCopy(document);
    if (!document->isDocumentEdited()) {
        removeCopy(document);
        return true;
    }
    if (folder().isEmpty()) {
        return false;
    }
    std::vector<QByteArray> parts{describe(document) + '\n'};
    appendUtf8(parts, document->textStore()->text(), document->characterStandIns());
    const int number = numberOf(document);
    if (const int error = writeAtomically(copyPath(number), parts)) {
        fail(tr("A recovery copy of “%1” could not be written in “%2”: %3. Save the document to "
                "keep your changes.")
                 .arg(document->displayName(), _folder, reasonOf(error)));
        return false;
    }
    return true;
}

void RecoveryStore::removeCopy(Document* document)
{
    // Documents closing as the process ends after keepCopiesForNextStart() keep theirs.
    if (_keepAtExit) {
        return;
    }
    if (PendingCopy* pending = _pending.take(document)) {
        if (pending->write) {
            pending->dropped = true;
        } else {
            delete pending;
        }
    }
    const auto number = _numbers.find(document);
    if (number != _numbers.end()) {
        ::unlink(native(copyPath(*number)).constData());
        _numbers.erase(number);
    }
}

bool RecoveryStore::keepCopiesForNextStart(const std::vector<Document*>& documents)
{
    bool written = true;
    for (Document* document : documents) {
        written = writeCopy(document) && written;
    }
    _keepAtExit = true;
    return written;
}

QList<RecoveryStore::Entry> RecoveryStore::orphanedEntries() const
{
    QList<Entry> entries;
    for (const Orphan& orphan : takeOrphans(_root, _folder)) {
        entries << copiesIn(orphan.folder);
        releaseLock(orphan.lock);
    }
    return entries;
}

Document* RecoveryStore::reopen(DocumentOpener& controller, const Entry& entry,
                                QStringList& notices)
{
    const std::vector<Document*>& open = controller.documents();
    // Two ended editors may have had the same file: the second text comes back untitled.
    const bool hasFile =
        !entry.path.isEmpty() && std::none_of(open.cbegin(), open.cend(), [&](Document* other) {
            return other->fileURL() == entry.path;
        });
    Document* document = nullptr;
    std::optional<FileStamp> onDisk;
    if (hasFile && QFileInfo(entry.path).isFile()) {
        document = controller.openDocumentWithContentsOfURL(entry.path);
        if (document) {
            onDisk = document->fileStamp();
        }
    }
    if (!document) {
        document = controller.newDocument();
        if (hasFile) {
            document->setFileURL(entry.path);
        }
    }
    document->setDocumentEncoding(entry.encoding);
    document->setDocumentLineBreaks(entry.lineBreaks);
    if (hasFile) {
        // The text keeps the state of the file its edits started from, so that the first
        // Save over a file another program changed since is refused with a message. A file
        // that did not exist then has no state any file can have.
        document->setFileStamp(entry.stamp.value_or(FileStamp()));
        const QString name = QFileInfo(entry.path).fileName();
        if (onDisk && onDisk != entry.stamp) {
            notices << tr("The file “%1” has been changed by another application since the "
                          "unsaved changes recovered in its window were made. Saving asks "
                          "before it replaces the other application’s version; Revert to Saved "
                          "shows that version.")
                           .arg(name);
        } else if (!onDisk && entry.stamp) {
            notices << tr("The file “%1” has been moved or deleted since the unsaved changes "
                          "recovered in its window were made. Saving writes it again.")
                           .arg(name);
        }
    }
    // One undoable replacement: Undo shows what the file holds on disk.
    document->setTextStorage(entry.text);
    document->setDocumentEdited(true);
    return document;
}

void RecoveryStore::adoptCopy(Document* document, const Entry& entry)
{
    // The ended editor's copy becomes this editor's copy of the document: it is there for the
    // next start should this run end badly too, and goes when the document is saved or closed.
    watch(document);
    if (folder().isEmpty()) {
        return;
    }
    removeCopy(document);
    const int number = _nextNumber++;
    if (::rename(native(entry.copyFile).constData(), native(copyPath(number)).constData()) == 0) {
        _numbers.insert(document, number);
    }
}

RecoveryStore::Recovery RecoveryStore::recoverOrphans(DocumentOpener& documents)
{
    Recovery recovery;
    for (const Orphan& orphan : takeOrphans(_root, _folder)) {
        for (const Entry& entry : copiesIn(orphan.folder)) {
            adoptCopy(reopen(documents, entry, recovery.notices), entry);
            ++recovery.count;
        }
        removeFolderIfDone(orphan.folder);
        releaseLock(orphan.lock);
    }
    return recovery;
}
