#pragma once

#include "editor/TextEdit.h"
#include "platform/Range.h"

#include <QString>

#include <functional>
#include <optional>

class TextSource;

/// What completing a word does to a text, worked out from the text alone so that every view
/// completes alike: the partial word before the insertion point, the rest of a candidate
/// shown after it without entering the text, and the edit that accepting makes (one undo
/// step). The text view's completion lends the view through a few hooks; the list of
/// candidates is the CompletionManager's.
class WordCompletion
{
public:
    /// What completion asks of a view.
    struct View {
        std::function<TextSource&()> text;
        std::function<Range()> selection;
        std::function<void(Range)> select;
        /// Shows `text` after `position`, outside the text (saving, undo and the modified
        /// state never see it); an empty text takes it away.
        std::function<void(qsizetype position, const QString& text)> showProposal;
        /// Makes the edit as one undo step and selects what it asks for.
        std::function<void(const TextEdit&)> applyEdit;
    };

    /// The word characters just before the start of `selection`, on its line; not found
    /// when there are none.
    static Range partialWordRange(TextSource& text, Range selection);
    /// Putting `word` in place of the partial word at `partial`: only the missing rest when
    /// the word begins with what was typed (case included), else the whole word. None when
    /// the word is there already.
    static std::optional<TextEdit> acceptEdit(TextSource& text, Range partial, const QString& word);

    explicit WordCompletion(View view);

    Range partialWordRange() const;
    QString textIn(Range range) const;

    /// Shows the rest of `word` after the partial word at `partial`, the caret before it.
    void propose(const QString& word, Range partial);
    /// Takes the proposal away; the text stays as typed.
    void withdraw();
    /// Puts `word` in for good.
    void accept(const QString& word, Range partial);
    const QString& proposedText() const { return _proposed; }

private:
    View _view;
    QString _proposed;
};
