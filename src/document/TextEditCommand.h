#pragma once

#include "document/TextSnapshot.h"

#include <QString>
#include <QUndoCommand>

#include <functional>
#include <variant>
#include <vector>

class TextStore;

/// One undo step of a text store: the edits it made, in order, with the text each one
/// removed, so that undo and redo give back exactly the text before and after.
class TextEditCommand : public QUndoCommand
{
public:
    struct Edit {
        qsizetype position = 0;
        QString removed;
        QString added;
    };

    /// `time` is when the edit was typed (for merging typed edits); `startsStep` keeps a
    /// typed edit from merging into the step before it.
    TextEditCommand(TextStore& store, const QString& name, bool typing, bool startsStep,
                    qint64 time);

    /// Records an edit the store has already made.
    void append(Edit edit);
    /// Records a change the store made by putting `after` in place of `before`, which differ
    /// in [position, position + removed) becoming [position, position + added): undo and redo
    /// put the versions back without copying their text.
    void appendVersions(TextSnapshot before, TextSnapshot after, qsizetype position,
                        qsizetype removed, qsizetype added);
    /// Adds what else the step takes back and makes again (see TextStore::addToStep).
    void addAction(std::function<void()> undo, std::function<void()> redo);
    bool isEmpty() const { return _changes.empty() && _actions.empty(); }
    void setName(const QString& name) { setText(name); }

    void undo() override;
    /// Makes the edits again; the first call, when the stack takes the step, does nothing,
    /// since the store made them as they came.
    void redo() override;
    int id() const override;
    /// Typing continues the step: an insertion right after the last typed text (unless a new
    /// word starts), a deletion right before or at the last one, within the typing pause.
    bool mergeWith(const QUndoCommand* other) override;

private:
    struct Versions {
        TextSnapshot before;
        TextSnapshot after;
        qsizetype position = 0;
        qsizetype removed = 0;
        qsizetype added = 0;
    };
    /// The step's only change when it is an edit (typing that may continue the step before).
    const Edit* onlyEdit() const;

    TextStore& _store;
    // In the order they were made: undo takes them back from the last.
    std::vector<std::variant<Edit, Versions>> _changes;
    struct Action {
        std::function<void()> undo;
        std::function<void()> redo;
    };
    std::vector<Action> _actions;
    bool _typing;
    bool _startsStep;
    qint64 _time;
    bool _done = true;
};
