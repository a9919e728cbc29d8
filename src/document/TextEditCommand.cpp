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
    _changes.emplace_back(std::move(edit));
}

const TextEditCommand::Edit* TextEditCommand::onlyEdit() const
{
    return _changes.size() == 1 ? std::get_if<Edit>(&_changes.front()) : nullptr;
}

void TextEditCommand::addAction(std::function<void()> undo, std::function<void()> redo)
{
    _actions.push_back({std::move(undo), std::move(redo)});
}

void TextEditCommand::appendVersions(TextSnapshot before, TextSnapshot after, qsizetype position,
                                     qsizetype removed, qsizetype added)
{
    _changes.emplace_back(Versions{std::move(before), std::move(after), position, removed, added});
}

void TextEditCommand::undo()
{
    for (auto action = _actions.rbegin(); action != _actions.rend(); ++action) {
        action->undo();
    }
    for (auto change = _changes.rbegin(); change != _changes.rend(); ++change) {
        if (const Edit* edit = std::get_if<Edit>(&*change)) {
            _store.apply(edit->position, edit->added.size(), edit->removed);
        } else {
            const Versions& version = std::get<Versions>(*change);
            _store.applyVersion(version.before, version.position, version.added, version.removed);
        }
    }
    _done = false;
}

void TextEditCommand::redo()
{
    if (_done) {
        return;
    }
    for (const auto& change : _changes) {
        if (const Edit* edit = std::get_if<Edit>(&change)) {
            _store.apply(edit->position, edit->removed.size(), edit->added);
        } else {
            const Versions& version = std::get<Versions>(change);
            _store.applyVersion(version.after, version.position, version.removed, version.added);
        }
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
    const Edit* typed = next ? next->onlyEdit() : nullptr;
    if (!typed || next->_startsStep || _changes.empty() ||
        !std::holds_alternative<Edit>(_changes.back()) ||
        next->_time - _time > _store.typingPause()) {
        return false;
    }
    Edit& last = std::get<Edit>(_changes.back());
    const Edit& edit = *typed;
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
