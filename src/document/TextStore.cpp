#include "document/TextStore.h"

#include "document/TextBuilder.h"
#include "document/TextChunkIterator.h"
#include "document/TextEditCommand.h"

#include <QUndoStack>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

// Removals longer than this are undone by putting the text before back, not by copying it.
constexpr qsizetype largeRemoval = 64 * 1024;

qint64 steadyMilliseconds()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

TextStore::TextStore(QObject* parent)
    : QObject(parent)
    , _undoStack(new QUndoStack(this))
    , _clock(steadyMilliseconds)
{
    connect(_undoStack, &QUndoStack::cleanChanged, this,
            [this](bool clean) { Q_EMIT modificationChanged(!clean); });
}

TextStore::~TextStore() = default;

bool TextStore::replace(qsizetype position, qsizetype length, const QString& text,
                        const QString& stepName, EditKind kind)
{
    finishLoading();
    if (position < 0 || length < 0 || position > _text.length() ||
        length > _text.length() - position) {
        return false;
    }
    if (length == 0 && text.isEmpty()) {
        return true;
    }
    if (length > largeRemoval) {
        // A transform of a whole large text, say: undo keeps the text before, which shares
        // its chunks with the text now, rather than a copy of all that was replaced.
        const TextSnapshot before = _text;
        apply(position, length, text);
        recordVersions(before, position, length, text.size(), stepName, kind == EditKind::Typing);
        return true;
    }
    TextEditCommand::Edit edit{position,
                               length > 0 ? _text.text(Range(position, length)) : QString(), text};
    apply(position, length, text);
    record([&edit](TextEditCommand& step) { step.append(std::move(edit)); }, stepName,
           kind == EditKind::Typing);
    return true;
}

void TextStore::record(const std::function<void(TextEditCommand&)>& add, const QString& stepName,
                       bool typing)
{
    if (_block) {
        if (_blockName.isEmpty()) {
            _blockName = stepName;
        }
        add(*_block);
        _changedInBlock = true;
        return;
    }
    auto* command = new TextEditCommand(*this, stepName, typing, _startNewStep, _clock());
    add(*command);
    _startNewStep = !typing;
    _undoStack->push(command);
    Q_EMIT contentsChanged();
}

bool TextStore::insert(qsizetype position, const QString& text, const QString& stepName,
                       EditKind kind)
{
    return replace(position, 0, text, stepName, kind);
}

bool TextStore::remove(qsizetype position, qsizetype length, const QString& stepName, EditKind kind)
{
    return replace(position, length, QString(), stepName, kind);
}

void TextStore::replaceRanges(const std::vector<Range>& ranges, const QString& text,
                              const QString& stepName)
{
    if (ranges.empty()) {
        return;
    }
    finishLoading();
    const TextSnapshot before = _text;
    TextBuilder builder;
    const auto copy = [&](qsizetype from, qsizetype to) {
        for (TextChunkIterator chunks(before, from); !chunks.atEnd() && chunks.start() < to;
             chunks.next()) {
            builder.append(chunks.chunk().first(std::min(chunks.end(), to) - chunks.start()));
        }
    };
    copy(0, ranges.front().location);
    for (size_t i = 0; i < ranges.size(); ++i) {
        builder.append(QStringView(text));
        copy(ranges[i].max(), i + 1 < ranges.size() ? ranges[i + 1].location : before.length());
    }
    const TextSnapshot after(builder.finish());
    const qsizetype position = ranges.front().location;
    const qsizetype removed = ranges.back().max() - position;
    const qsizetype added = removed + after.length() - before.length();
    applyVersion(after, position, removed, added);
    recordVersions(before, position, removed, added, stepName, false);
}

void TextStore::recordVersions(const TextSnapshot& before, qsizetype position, qsizetype removed,
                               qsizetype added, const QString& stepName, bool typing)
{
    record(
        [&](TextEditCommand& step) {
            step.appendVersions(before, _text, position, removed, added);
        },
        stepName, typing);
}

void TextStore::beginEditBlock(const QString& stepName)
{
    // The rest of a loading text goes in before the block, not as part of its step.
    finishLoading();
    if (_blockDepth++ == 0) {
        _block = std::make_unique<TextEditCommand>(*this, QString(), false, true, _clock());
        _blockName = stepName;
    } else if (_blockName.isEmpty()) {
        _blockName = stepName;
    }
}

void TextStore::endEditBlock()
{
    if (_blockDepth == 0 || --_blockDepth > 0) {
        return;
    }
    std::unique_ptr<TextEditCommand> block = std::move(_block);
    _startNewStep = true;
    if (!block->isEmpty()) {
        block->setName(_blockName);
        _undoStack->push(block.release());
    }
    if (std::exchange(_cleanAfterBlock, false)) {
        _undoStack->setClean();
    }
    if (std::exchange(_changedInBlock, false)) {
        Q_EMIT contentsChanged();
    }
}

void TextStore::addToStep(std::function<void()> undo, std::function<void()> redo)
{
    if (_block) {
        _block->addAction(std::move(undo), std::move(redo));
    }
}

void TextStore::setLoadedText(const TextSnapshot& text)
{
    // A text still going in is replaced as a whole.
    const bool wasLoading = isLoading();
    delete std::exchange(_loading, nullptr);
    _block.reset();
    _cleanAfterBlock = false;
    _blockDepth = 0;
    _undoStack->clear();
    _startNewStep = true;
    TextChange change;
    change.charsRemoved = _text.length();
    change.charsAdded = text.length();
    change.linesRemoved = _text.lineCount() - 1;
    change.linesAdded = text.lineCount() - 1;
    change.revision = ++_revision;
    _text = TextSnapshot(text.root(), _revision);
    Q_EMIT contentsChange(change);
    Q_EMIT contentsChanged();
    if (wasLoading) {
        Q_EMIT loadingChanged(false);
    }
}

void TextStore::setLoadingText(const TextSnapshot& start, QFuture<TextSnapshot> whole)
{
    setLoadedText(start);
    _loading = new QFutureWatcher<TextSnapshot>(this);
    connect(_loading, &QFutureWatcher<TextSnapshot>::finished, this, &TextStore::finishLoading);
    _loading->setFuture(whole);
    Q_EMIT loadingChanged(true);
}

void TextStore::finishLoading()
{
    if (!_loading) {
        return;
    }
    // The watcher may be the one telling that the text is ready.
    QFutureWatcher<TextSnapshot>* loading = std::exchange(_loading, nullptr);
    loading->disconnect(this);
    loading->deleteLater();
    const TextSnapshot whole = loading->result();
    const qsizetype start = _text.length();
    applyVersion(whole, start, 0, whole.length() - start);
    Q_EMIT contentsChanged();
    Q_EMIT loadingChanged(false);
}

bool TextStore::canUndo() const
{
    return !isInEditBlock() && _undoStack->canUndo();
}

bool TextStore::canRedo() const
{
    return !isInEditBlock() && _undoStack->canRedo();
}

void TextStore::undo()
{
    if (isInEditBlock()) {
        return;
    }
    _startNewStep = true;
    const quint64 before = _revision;
    _undoStack->undo();
    if (_revision != before) {
        Q_EMIT contentsChanged();
    }
}

void TextStore::redo()
{
    if (isInEditBlock()) {
        return;
    }
    _startNewStep = true;
    const quint64 before = _revision;
    _undoStack->redo();
    if (_revision != before) {
        Q_EMIT contentsChanged();
    }
}

bool TextStore::isModified() const
{
    return !_undoStack->isClean();
}

void TextStore::setClean()
{
    if (_block) {
        _cleanAfterBlock = true;
        return;
    }
    _undoStack->setClean();
}

void TextStore::applyVersion(const TextSnapshot& text, qsizetype position, qsizetype removed,
                             qsizetype added)
{
    TextChange change;
    change.position = position;
    change.charsRemoved = removed;
    change.charsAdded = added;
    change.firstLine = _text.lineAt(position);
    change.linesRemoved = _text.lineAt(position + removed) - change.firstLine;
    change.linesAdded = text.lineAt(position + added) - change.firstLine;
    change.revision = ++_revision;
    _text = TextSnapshot(text.root(), _revision);
    Q_EMIT contentsChange(change);
}

void TextStore::apply(qsizetype position, qsizetype removedLength, const QString& added)
{
    TextChange change;
    change.position = position;
    change.charsRemoved = removedLength;
    change.charsAdded = added.size();
    change.firstLine = _text.lineAt(position);
    if (removedLength > 0) {
        change.linesRemoved = _text.lineAt(position + removedLength) - change.firstLine;
    }
    change.linesAdded = TextTree::countLineFeeds(added.constData(), added.size());
    change.revision = ++_revision;
    _text =
        TextSnapshot(TextTree::replace(_text.root(), position, removedLength, added), _revision);
    Q_EMIT contentsChange(change);
}
