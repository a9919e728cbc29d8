#include "document/TextEditCommand.h"

#include "document/TextStore.h"

namespace {

// Typed after a blank, a character starts a new word, and with it a new undo step, so that
// undo takes back typing a word at a time.
bool startsWord(QChar previous, QChar next)
{
    return previous.isSpace() && !next.isSpace();
}

constexpr int typingId = 1;

} // namespace

TextEditCommand::TextEditCommand(TextStore& store, const QString& name, bool typing,
                                 bool startsStep, qint64 time)
    : QUndoCommand(name)
    , _store(store)
    , _typing(typing)
    , _startsStep(startsStep)
    , _time(time)
{}

void TextEditCommand::append(Edit edit)
{
    _edits.push_back(std::move(edit));
}

void TextEditCommand::addAction(std::function<void()> undo, std::function<void()> redo)
{
    _actions.push_back({std::move(undo), std::move(redo)});
}

void TextEditCommand::appendVersions(TextSnapshot before, TextSnapshot after, qsizetype position,
                                     qsizetype removed, qsizetype added)
{
    _versions.push_back({std::move(before), std::move(after), position, removed, added});
}

void TextEditCommand::undo()
{
    for (auto action = _actions.rbegin(); action != _actions.rend(); ++action) {
        action->undo();
    }
    for (auto edit = _edits.rbegin(); edit != _edits.rend(); ++edit) {
        _store.apply(edit->position, edit->added.size(), edit->removed);
    }
    for (auto version = _versions.rbegin(); version != _versions.rend(); ++version) {
        _store.applyVersion(version->before, version->position, version->added, version->removed);
    }
    _done = false;
}

void TextEditCommand::redo()
{
    if (_done) {
        return;
    }
    for (const Edit& edit : _edits) {
        _store.apply(edit.position, edit.removed.size(), edit.added);
    }
    for (const Versions& version : _versions) {
        _store.applyVersion(version.after, version.position, version.removed, version.added);
    }
    for (const Action& action : _actions) {
        action.redo();
    }
    _done = true;
}

int TextEditCommand::id() const
{
    return _typing ? typingId : -1;
}

bool TextEditCommand::mergeWith(const QUndoCommand* other)
{
    // The stack is open to other commands (a menu may push its own); only ours merge.
    const auto* next = dynamic_cast<const TextEditCommand*>(other);
    if (!next || next->_startsStep || next->_edits.size() != 1 || _edits.empty() ||
        next->_time - _time > _store.typingPause()) {
        return false;
    }
    Edit& last = _edits.back();
    const Edit& edit = next->_edits.front();
    if (edit.removed.isEmpty() && !edit.added.isEmpty()) {
        // Typing on: right after the text typed last.
        if (last.added.isEmpty() || edit.position != last.position + last.added.size() ||
            startsWord(last.added.back(), edit.added.front())) {
            return false;
        }
        last.added += edit.added;
    } else if (edit.added.isEmpty() && last.added.isEmpty() && !edit.removed.isEmpty()) {
        if (edit.position + edit.removed.size() == last.position) {
            // Backspace: the deletion before the last one.
            last.removed.prepend(edit.removed);
            last.position = edit.position;
        } else if (edit.position == last.position) {
            // Delete: the deletion after it.
            last.removed += edit.removed;
        } else {
            return false;
        }
    } else {
        return false;
    }
    _time = next->_time;
    return true;
}
