#pragma once

#include "editor/WordCompletion.h"
#include "platform/Range.h"
#include "syntax/CompletionWordIndex.h"

#include <QObject>
#include <QString>
#include <QStringList>

class CompletionManager;
class QKeyEvent;
class TextStore;
class SyntaxManager;
class TextView;

/// The word completion of one text view: the words its syntax definition offers, starting the
/// list (by hand, or after a pause in typing), the keys that steer the list while it is open,
/// and the rest of the proposed word shown after the insertion point. The list itself is the
/// CompletionManager's, shared by every view; the view's own completion commands forward here.
class TextViewCompletion : public QObject
{
    Q_OBJECT

public:
    /// What the view does with a key that completion has seen first.
    enum class KeyRoute {
        Done,               ///< completion took the key
        Interpret,          ///< the view's key bindings take it
        InterpretAndFollow, ///< the key bindings take it, then an open list follows the text
    };

    /// Marks changes made by the completion itself (or the key it handles), which do not end it.
    class Guard
    {
    public:
        explicit Guard(TextViewCompletion* completion)
            : _completion(completion)
        {
            ++_completion->_guard;
        }
        ~Guard() { --_completion->_guard; }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        TextViewCompletion* _completion;
    };

    /// `manager` holds the list; `syntaxManager` builds a definition's words.
    TextViewCompletion(TextView* view, CompletionManager& manager, SyntaxManager& syntaxManager);
    ~TextViewCompletion() override;

    const QStringList& completeWords() const { return _completeWords; }
    void setCompleteWords(const QStringList& completeWords) { _completeWords = completeWords; }
    bool autoComplete() const { return _autoComplete; }
    void setAutoComplete(bool autoComplete) { _autoComplete = autoComplete; }
    bool isComplete() const { return _isComplete; }
    void setIsComplete(bool isComplete) { _isComplete = isComplete; }

    /// Whether the list is open for this view.
    bool isCompleting() const;
    /// Closes this view's list, if open: cancelling keeps the word as typed, else the proposed
    /// word is accepted.
    void terminateWithCancel(bool cancel);
    /// Closes this view's list, if open, leaving the text as it is.
    void terminate();
    /// Moves the selection of this view's open list one row up or down; false when no list is
    /// open.
    bool selectRow(bool upper);

    /// Follows `document`, the view's new text: changes that others make to it end the
    /// completion, and its words are read for completion.
    void setDocument(TextStore* document);
    /// The view took another syntax definition: a list open anywhere offered the old
    /// definition's words, and the definition's own words are built anew.
    void syntaxDictionaryChanged();

    /// Sees a key before the view's key bindings; `closingBracket` says it types a bracket
    /// whose opening one is to be shown.
    KeyRoute keyPressed(QKeyEvent* event, bool closingBracket);
    /// After a key of KeyRoute::InterpretAndFollow: an open list follows the typed characters.
    void followTyping();
    /// What a typed string does to completion: extends the word being completed, or has the
    /// list open after a pause.
    void textTyped(const QString& string);
    /// Backspace while the list is open shortens the word being completed. False when that
    /// closed the list and the key is done.
    bool backspacePressed();

    // The view's completion commands.
    void complete();
    Range rangeForUserCompletion() const;
    QStringList completionsForPartialWordRange(Range range) const;
    void insertCompletion(const QString& word, Range range, int movement, bool isFinal);
    QString proposedCompletion() const;
    void makeCompleteWordsFromSyntaxDictionary();

private:
    /// Has the document's words for completion read on a worker, on the next turn.
    void prepareCompletionWords();
    /// Starts completion; `automatic` when a pause in typing started it rather than the user.
    void start(bool automatic);
    void completionEndedElsewhere();

    TextView* _view;
    WordCompletion _word;
    CompletionManager& _manager;
    SyntaxManager& _syntaxManager;
    QStringList _completeWords;
    bool _autoComplete = false;
    bool _isComplete = false;
    quint64 _completeWordsBuild = 0;
    int _guard = 0;
    bool _waitingForWords = false;
    bool _preparingCompletionWords = false;
    /// Automatic completion in a large text offers the words around the insertion point
    /// (read when it starts) rather than reading the whole text while the user types.
    CompletionWordIndex _nearbyWords;
    bool _offersNearbyWords = false;
    QMetaObject::Connection _textChangedElsewhere;
};
