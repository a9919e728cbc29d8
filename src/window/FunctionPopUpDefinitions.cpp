#include "window/FunctionPopUpDefinitions.h"

#include "document/TextMirror.h"
#include "document/TextStore.h"

#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

namespace {

// Changes larger than this are read by a worker rather than when the pop-up opens.
constexpr qsizetype kLargeChange = 1024 * 1024;
// A text this short is read when the pop-up opens, on this thread.
constexpr qsizetype kSmallText = 64 * 1024;

} // namespace

FunctionPopUpDefinitions::FunctionPopUpDefinitions(TextStore* document,
                                                   const QVariantMap& syntaxDictionary,
                                                   QObject* parent)
    : QObject(parent)
    , _document(document)
    , _mirror(TextMirror::mirrorOfStore(document))
    , _syntaxDictionary(syntaxDictionary)
    , _index(std::make_unique<FunctionDefinitionIndex>(syntaxDictionary))
{
    _buildTimer.setSingleShot(true);
    _buildTimer.setInterval(250);
    connect(&_buildTimer, &QTimer::timeout, this, &FunctionPopUpDefinitions::startBuild);
    connect(&_build, &QFutureWatcher<Result>::finished, this,
            &FunctionPopUpDefinitions::buildDidEnd);
    connect(_mirror, &TextMirror::textDidChange, this, &FunctionPopUpDefinitions::textDidChange);
    if (!_index->hasDefinitions()) {
        return;
    }
    // Until the first reading the whole text is a change not yet read.
    _index->textDidChange(0, 0, _mirror->size());
    if (pendingIsLarge()) {
        _buildTimer.start();
    }
}

// A reading under way ends on its own; its result goes with the last copy of its future.
FunctionPopUpDefinitions::~FunctionPopUpDefinitions() = default;

bool FunctionPopUpDefinitions::serves(const TextStore* document,
                                      const QVariantMap& syntaxDictionary) const
{
    return document == _document && (_syntaxDictionary.isSharedWith(syntaxDictionary) ||
                                     _syntaxDictionary == syntaxDictionary);
}

bool FunctionPopUpDefinitions::pendingIsLarge() const
{
    // Definitions read as a whole are read when the pop-up opens: a worker reading the
    // whole text again after every pause in typing would cost more than it saves.
    const qsizetype pending = _index->pendingCharacters();
    return pending > kLargeChange ||
           (pending > kSmallText && pending == _index->textLength() && _builds == 0);
}

bool FunctionPopUpDefinitions::isReady() const
{
    return !_building && !_buildTimer.isActive();
}

void FunctionPopUpDefinitions::readNow()
{
    if (_buildTimer.isActive()) {
        startBuild();
    }
}

void FunctionPopUpDefinitions::textDidChange(qsizetype location, qsizetype removed, qsizetype added)
{
    if (!_index->hasDefinitions()) {
        return;
    }
    if (_building) {
        _editsDuringBuild.push_back({location, removed, added});
        return;
    }
    _index->textDidChange(location, removed, added);
    if (_index->readsInChunks() && pendingIsLarge()) {
        _buildTimer.start();
    }
}

void FunctionPopUpDefinitions::startBuild()
{
    _buildTimer.stop();
    if (_building) {
        return;
    }
    _building = true;
    _editsDuringBuild.clear();
    ++_builds;
    // The text as it is now, which edits made meanwhile leave as it is: the worker makes
    // the one string of it the reading needs.
    const QVariantMap dictionary = _syntaxDictionary;
    _build.setFuture(QtConcurrent::run([snapshot = _mirror->snapshot(), dictionary] {
        auto built = std::make_shared<FunctionDefinitionIndex>(dictionary);
        built->build(snapshot.string());
        return built;
    }));
}

void FunctionPopUpDefinitions::buildDidEnd()
{
    if (!_building) {
        return;
    }
    Result built = _build.result();
    _build.setFuture({});
    _building = false;
    // The definitions of the old text go on the worker too: freeing them is a pass of its own.
    auto old = std::shared_ptr<FunctionDefinitionIndex>(std::move(_index));
    QThreadPool::globalInstance()->start([old = std::move(old)]() mutable { old.reset(); });
    _index = std::make_unique<FunctionDefinitionIndex>(std::move(*built));
    const std::vector<Edit> edits = std::move(_editsDuringBuild);
    _editsDuringBuild.clear();
    for (const Edit& edit : edits) {
        _index->textDidChange(edit.location, edit.removed, edit.added);
    }
    if (_index->readsInChunks() && pendingIsLarge()) {
        // Still going in: read it again once it has settled.
        _buildTimer.start();
        return;
    }
    Q_EMIT ready();
}

std::optional<std::vector<FunctionMenu::Definition>> FunctionPopUpDefinitions::definitions()
{
    if (!_index->hasDefinitions()) {
        return std::nullopt;
    }
    if (_buildTimer.isActive()) {
        startBuild();
    }
    if (_building) {
        _build.waitForFinished();
        buildDidEnd();
        _buildTimer.stop();
    }
    const qint64 before = _index->scannedCharacters();
    if (!_index->isUpToDate(_mirror->size())) {
        // The reading wants the text in one piece; with nothing changed, nothing is read.
        const QString text = _mirror->snapshot().string();
        if (!_index->update(text)) {
            _index->build(text);
        }
    }
    _scanned += _index->scannedCharacters() - before;
    return _index->definitions();
}
