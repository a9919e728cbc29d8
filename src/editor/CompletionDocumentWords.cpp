#include "editor/CompletionDocumentWords.h"

#include "document/TextMirror.h"
#include "document/TextStore.h"

#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

CompletionDocumentWords* CompletionDocumentWords::existing(TextStore* document)
{
    return document ? document->findChild<CompletionDocumentWords*>(QString(),
                                                                    Qt::FindDirectChildrenOnly)
                    : nullptr;
}

CompletionDocumentWords* CompletionDocumentWords::of(TextStore* document, Kind kind)
{
    if (!document) {
        return nullptr;
    }
    if (CompletionDocumentWords* words = existing(document)) {
        if (words->kind() == kind) {
            return words;
        }
        delete words;
    }
    return new CompletionDocumentWords(document, kind);
}

CompletionDocumentWords::CompletionDocumentWords(TextStore* document, Kind kind)
    : QObject(document)
    , _mirror(TextMirror::mirrorOfStore(document))
    , _index(kind)
    , _buildTimer(new QTimer(this))
{
    _buildTimer->setSingleShot(true);
    _buildTimer->setInterval(250);
    connect(_buildTimer, &QTimer::timeout, this, &CompletionDocumentWords::startBuild);
    connect(_mirror, &TextMirror::textDidChange, this, &CompletionDocumentWords::textDidChange);
    _buildTimer->start();
}

void CompletionDocumentWords::setChunkSize(qsizetype characters)
{
    _chunkSize = characters;
    _index.setChunkSize(characters);
}

void CompletionDocumentWords::textDidChange(qsizetype location, qsizetype removed, qsizetype added)
{
    if (_building) {
        _editsDuringBuild.push_back({location, removed, added});
        return;
    }
    if (!_built) {
        return; // the first build reads the text as it is then
    }
    _index.textDidChange(location, removed, added);
    // A change as large as a file is read on a worker, once the changes have settled.
    if (_index.pendingCharacters() > _largeChange) {
        _buildTimer->start();
    }
}

void CompletionDocumentWords::startBuild()
{
    _buildTimer->stop();
    const TextSnapshot snapshot = _mirror->snapshot();
    if (snapshot.length() <= _smallText && !_building) {
        // Read at once: less work than handing the text to a worker, and ready to answer.
        CompletionWordIndex built(_index.kind());
        if (_chunkSize > 0) {
            built.setChunkSize(_chunkSize);
        }
        built.build(snapshot.string());
        _index = std::move(built);
        _built = true;
        ++_builds;
        return;
    }
    _building = true;
    _editsDuringBuild.clear();
    ++_builds;
    // The worker reads the text as it is now, which edits made meanwhile leave as it is.
    const Kind kind = _index.kind();
    const qsizetype chunkSize = _chunkSize;
    using Result = std::shared_ptr<CompletionWordIndex>;
    auto* watcher = new QFutureWatcher<Result>(this);
    connect(watcher, &QFutureWatcher<Result>::finished, this, [this, watcher] {
        watcher->deleteLater();
        buildDidEnd(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run([snapshot, kind, chunkSize] {
        auto built = std::make_shared<CompletionWordIndex>(kind);
        if (chunkSize > 0) {
            built->setChunkSize(chunkSize);
        }
        built->build(snapshot.string());
        return built;
    }));
}

void CompletionDocumentWords::buildDidEnd(std::shared_ptr<CompletionWordIndex> built)
{
    // The words of the old text go on the worker too: freeing them is a pass of its own.
    auto old = std::make_shared<CompletionWordIndex>(std::move(_index));
    QThreadPool::globalInstance()->start([old = std::move(old)]() mutable { old.reset(); });
    _index = std::move(*built);
    _building = false;
    _built = true;
    const std::vector<Edit> edits = std::move(_editsDuringBuild);
    _editsDuringBuild.clear();
    for (const Edit& edit : edits) {
        _index.textDidChange(edit.location, edit.removed, edit.added);
    }
    if (_index.pendingCharacters() > _largeChange) {
        // Still going in (a large file arrives piece by piece): read it once it has settled.
        _buildTimer->start();
        return;
    }
    Q_EMIT ready();
}

bool CompletionDocumentWords::prepare()
{
    if (_building) {
        return false;
    }
    if (!_built || _buildTimer->isActive() || _index.pendingCharacters() > _largeChange ||
        !_index.update(*_mirror)) {
        startBuild();
        return !_building;
    }
    return true;
}

std::optional<QStringList> CompletionDocumentWords::wordsForPartialWord(const QString& partialWord)
{
    if (!prepare()) {
        return std::nullopt;
    }
    return _index.wordsForPartialWord(partialWord);
}
