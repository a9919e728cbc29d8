#pragma once

#include "document/TextChange.h"
#include "document/TextSnapshot.h"

#include <QFuture>
#include <QFutureWatcher>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QUndoStack;
class TextEditCommand;

/// A document's text, built for large files: held in a persistent tree of chunks (see
/// TextTree), edited in O(log n) plus the size of the edit, with snapshots that cost O(1)
/// and stay unchanged for the worker threads that read them, a revision that grows with
/// every change, a notification of each change's exact range, and an undo stack of named
/// steps.
///
/// The text holds LF line breaks only; every other character, U+2028, U+2029, NEL, NUL and
/// lone surrogates included, is ordinary text. Lives on one thread (the one that edits it);
/// other threads get snapshots from that thread.
class TextStore : public QObject
{
    Q_OBJECT

public:
    /// Typed edits that follow one another merge into one undo step until the typing
    /// pauses, a new word starts, the caret jumps or breakTyping() is called.
    enum class EditKind { Other, Typing };

    static constexpr int defaultTypingPause = 2000;

    explicit TextStore(QObject* parent = nullptr);
    ~TextStore() override;

    /// The current text. A copy of it is a snapshot.
    const TextSnapshot& text() const { return _text; }
    /// Grows by one with every change (edits, undo, redo, loading).
    quint64 revision() const { return _revision; }

    /// Replaces [position, position + length) by `text` as one change and one undo step (or
    /// part of the open edit block's step), named `stepName`. False, and nothing done, when
    /// the range is not within the text.
    bool replace(qsizetype position, qsizetype length, const QString& text,
                 const QString& stepName = {}, EditKind kind = EditKind::Other);
    bool insert(qsizetype position, const QString& text, const QString& stepName = {},
                EditKind kind = EditKind::Other);
    bool remove(qsizetype position, qsizetype length, const QString& stepName = {},
                EditKind kind = EditKind::Other);

    /// Replaces each of `ranges` (in text order, not overlapping, within the text) by `text`
    /// as one change and one undo step (or part of the open block's), named `stepName`: the
    /// new text is built in one pass, and undo puts the old one back without copying it.
    void replaceRanges(const std::vector<Range>& ranges, const QString& text,
                       const QString& stepName = {});

    /// The edits until the matching endEditBlock() are one undo step (blocks nest; the outer
    /// one counts). The step takes the first name given to the block or its edits.
    void beginEditBlock(const QString& stepName = {});
    void endEditBlock();
    bool isInEditBlock() const { return _blockDepth > 0; }
    /// The next typed edit starts a new undo step (the caret moved, say).
    void breakTyping() { _startNewStep = true; }

    /// Adds to the open edit block's step something besides the text to take back and make
    /// again with it: `undo` runs before the block's edits are taken back, `redo` after they
    /// are made again (neither runs now). Outside an edit block it does nothing.
    void addToStep(std::function<void()> undo, std::function<void()> redo);

    /// Puts a loaded text in place of the whole text, without an undo step: the undo history
    /// is cleared and the text is clean.
    void setLoadedText(const TextSnapshot& text);
    /// Puts `start`, the beginning of a text still being read, in place of the whole text as
    /// setLoadedText() does. Once `whole` (the whole text, which begins with `start`) is
    /// ready, the rest goes in after it: one change at the end, with no undo step, and the
    /// text stays clean. Every edit waits for the rest first, so none meets a text cut short.
    void setLoadingText(const TextSnapshot& start, QFuture<TextSnapshot> whole);
    /// Whether the rest of a text set by setLoadingText() is still to go in.
    bool isLoading() const { return _loading != nullptr; }
    /// Waits for the rest of a loading text and puts it in now.
    void finishLoading();

    QUndoStack* undoStack() const { return _undoStack; }
    bool canUndo() const;
    bool canRedo() const;
    void undo();
    void redo();
    /// Whether the text differs from the last clean point (loading, setClean); undoing or
    /// redoing back to that point makes it clean again.
    bool isModified() const;
    /// The text as it is now is the saved one. Inside an edit block, the text as the block
    /// leaves it.
    void setClean();

    int typingPause() const { return _typingPause; }
    void setTypingPause(int milliseconds) { _typingPause = milliseconds; }
    /// The clock typing pauses are measured with, in milliseconds (a steady clock unless a
    /// test sets its own).
    void setClock(std::function<qint64()> clock) { _clock = std::move(clock); }

Q_SIGNALS:
    /// After each change, the text already changed.
    void contentsChange(const TextChange& change);
    /// After each edit, edit block, undo or redo that changed the text, once all its
    /// changes are told.
    void contentsChanged();
    void modificationChanged(bool modified);
    /// A text started or finished going in (see setLoadingText()).
    void loadingChanged(bool loading);

private:
    friend class TextEditCommand;
    /// Makes a change without recording it (edits, and undo and redo replaying them).
    void apply(qsizetype position, qsizetype removedLength, const QString& added);
    /// Puts `text` in place of the whole text, telling a change of `removed` units at
    /// `position` into `added` units.
    void applyVersion(const TextSnapshot& text, qsizetype position, qsizetype removed,
                      qsizetype added);
    /// Adds a change just made to the open edit block's step, or makes it a step of its own
    /// (typed ones merge as they may) and tells contentsChanged().
    void record(const std::function<void(TextEditCommand&)>& add, const QString& stepName,
                bool typing);
    /// Records a change just made from `before` to the text now, undone by putting `before`
    /// back rather than from a copy of what it replaced.
    void recordVersions(const TextSnapshot& before, qsizetype position, qsizetype removed,
                        qsizetype added, const QString& stepName, bool typing);

    TextSnapshot _text;
    quint64 _revision = 0;
    QUndoStack* _undoStack = nullptr;
    std::unique_ptr<TextEditCommand> _block;
    QString _blockName;
    int _blockDepth = 0;
    bool _startNewStep = true;
    bool _changedInBlock = false;
    bool _cleanAfterBlock = false;
    int _typingPause = defaultTypingPause;
    std::function<qint64()> _clock;
    QFutureWatcher<TextSnapshot>* _loading = nullptr;
};
