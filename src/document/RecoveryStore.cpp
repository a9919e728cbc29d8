#include "document/RecoveryStore.h"

#include "document/Document.h"
#include "document/DocumentController.h"
#include "platform/FileManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QSaveFile>
#include <QTextDocument>
#include <QTimer>
#include <QUuid>

#include <algorithm>

namespace {

const QString kLockName = QStringLiteral("lock");
const QString kTextSuffix = QStringLiteral(".txt");
const QString kInfoSuffix = QStringLiteral(".json");

bool writeAtomically(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

} // namespace

RecoveryStore::RecoveryStore(const QString& root, QObject* parent)
    : QObject(parent)
    , _root(root)
{}

RecoveryStore::~RecoveryStore()
{
    // A clean end leaves nothing to recover. The copies go first, while the lock still keeps
    // other editors from taking them for a killed editor's; then the lock, which removes its
    // own file (taken away with the folder, it would warn that it is missing); then the folder.
    if (!_folder.isEmpty()) {
        QDir folder(_folder);
        for (const QString& name : folder.entryList(QDir::Files | QDir::Hidden)) {
            if (name != kLockName) {
                folder.remove(name);
            }
        }
        _lock.reset();
        folder.removeRecursively();
    }
}

RecoveryStore& RecoveryStore::sharedRecoveryStore()
{
    static RecoveryStore* store = new RecoveryStore(FileManager::applicationSupportDirectoryPath() +
                                                        QStringLiteral("/Recovery"),
                                                    QCoreApplication::instance());
    return *store;
}

QString RecoveryStore::folder()
{
    if (_folder.isEmpty()) {
        const QString folder = _root + u'/' + QString::number(QCoreApplication::applicationPid()) +
                               u'-' + QUuid::createUuid().toString(QUuid::Id128).left(8);
        if (!QDir().mkpath(folder)) {
            return QString();
        }
        auto lock = std::make_unique<QLockFile>(folder + u'/' + kLockName);
        lock->setStaleLockTime(0);
        if (!lock->tryLock(0)) {
            return QString();
        }
        _lock = std::move(lock);
        _folder = folder;
    }
    return _folder;
}

void RecoveryStore::watch(Document* document)
{
    auto* timer = new QTimer(document);
    timer->setSingleShot(true);
    timer->setInterval(kDelay);
    _timers.insert(document, timer);
    connect(timer, &QTimer::timeout, this, [this, document] { writeCopy(document); });
    connect(document->textStorage(), &QTextDocument::contentsChanged, timer,
            qOverload<>(&QTimer::start));
    connect(document->textStorage(), &QTextDocument::modificationChanged, this,
            [this, document, timer](bool modified) {
                if (modified) {
                    timer->start();
                } else {
                    removeCopy(document);
                }
            });
    connect(document, &QObject::destroyed, this, [this, document] {
        _timers.remove(document);
        removeCopy(document);
    });
}

QString RecoveryStore::copyPath(Document* document) const
{
    const auto number = _numbers.constFind(document);
    return number == _numbers.cend() || _folder.isEmpty()
               ? QString()
               : _folder + u'/' + QString::number(*number);
}

void RecoveryStore::writeCopy(Document* document)
{
    if (!document->isDocumentEdited()) {
        removeCopy(document);
        return;
    }
    if (folder().isEmpty()) {
        return;
    }
    if (!_numbers.contains(document)) {
        _numbers.insert(document, _nextNumber++);
    }
    const QString base = copyPath(document);
    QJsonObject info;
    info[QStringLiteral("path")] = document->fileURL();
    info[QStringLiteral("displayName")] = document->displayName();
    info[QStringLiteral("encoding")] = QString::number(document->documentEncoding());
    info[QStringLiteral("lineBreaks")] = qint64(document->documentLineBreaks());
    // The text first: a copy whose description is missing is not offered back half made.
    writeAtomically(base + kTextSuffix, document->string().toUtf8()) &&
        writeAtomically(base + kInfoSuffix, QJsonDocument(info).toJson());
}

void RecoveryStore::removeCopy(Document* document)
{
    const QString base = copyPath(document);
    if (!base.isEmpty()) {
        QFile::remove(base + kInfoSuffix);
        QFile::remove(base + kTextSuffix);
    }
    _numbers.remove(document);
    if (QTimer* timer = _timers.value(document)) {
        timer->stop();
    }
}

QStringList RecoveryStore::orphanedFolders() const
{
    QStringList folders;
    const QFileInfoList candidates =
        QDir(_root).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Time | QDir::Reversed);
    for (const QFileInfo& candidate : candidates) {
        const QString path = candidate.absoluteFilePath();
        if (path == _folder) {
            continue;
        }
        // A lock that can be taken belongs to an editor that is no longer running.
        QLockFile lock(path + u'/' + kLockName);
        lock.setStaleLockTime(0);
        if (lock.tryLock(0)) {
            lock.unlock();
            folders << path;
        }
    }
    return folders;
}

QList<RecoveryStore::Entry> RecoveryStore::orphanedEntries() const
{
    QList<Entry> entries;
    for (const QString& folder : orphanedFolders()) {
        QFileInfoList infos =
            QDir(folder).entryInfoList({u'*' + kInfoSuffix}, QDir::Files, QDir::Name);
        std::sort(infos.begin(), infos.end(), [](const QFileInfo& a, const QFileInfo& b) {
            return a.baseName().toInt() < b.baseName().toInt();
        });
        for (const QFileInfo& infoFile : infos) {
            QFile description(infoFile.absoluteFilePath());
            QFile text(infoFile.absolutePath() + u'/' + infoFile.baseName() + kTextSuffix);
            if (!description.open(QIODevice::ReadOnly) || !text.open(QIODevice::ReadOnly)) {
                continue;
            }
            const QJsonObject info = QJsonDocument::fromJson(description.readAll()).object();
            Entry entry;
            entry.text = QString::fromUtf8(text.readAll());
            entry.path = info.value(QStringLiteral("path")).toString();
            entry.displayName = info.value(QStringLiteral("displayName")).toString();
            entry.encoding = info.value(QStringLiteral("encoding")).toString().toULongLong();
            entry.lineBreaks = info.value(QStringLiteral("lineBreaks")).toInteger();
            entries << entry;
        }
    }
    return entries;
}

void RecoveryStore::removeOrphans()
{
    for (const QString& folder : orphanedFolders()) {
        QDir(folder).removeRecursively();
    }
}

int RecoveryStore::recoverOrphans()
{
    const QList<Entry> entries = orphanedEntries();
    DocumentController& controller = DocumentController::sharedDocumentController();
    int recovered = 0;
    for (const Entry& entry : entries) {
        Document* document = nullptr;
        if (!entry.path.isEmpty() && QFileInfo(entry.path).isFile()) {
            document = controller.openDocumentWithContentsOfURL(entry.path);
        }
        if (!document) {
            document = controller.newDocument();
            document->setDocumentEncoding(entry.encoding);
            if (!entry.path.isEmpty()) {
                document->setFileURL(entry.path);
            }
        }
        document->setDocumentLineBreaks(entry.lineBreaks);
        // One undoable replacement: undo shows what the file holds on disk.
        document->finishLoading();
        document->setTextStorage(entry.text);
        document->textStorage()->setModified(true);
        ++recovered;
    }
    removeOrphans();
    return recovered;
}
