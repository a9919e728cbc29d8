#pragma once

#include "editor/WordCompletion.h"
#include "syntax/CompletionWordIndex.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariantMap>

class TextArea;
class TextStore;
struct TextChange;

/// Word completion for a TextArea: the words of its store (kept in step with its edits) and
/// of its syntax definition are offered for the partial word before the caret, the rest of
/// the chosen one is shown grey after it, and keys steer: Ctrl+Space starts, Up and Down
/// step, Return or Tab accept (one undo step), Escape cancels; any other key or change
/// ends the proposal.
class TextAreaCompletion : public QObject
{
    Q_OBJECT

public:
    explicit TextAreaCompletion(TextArea* area);
    ~TextAreaCompletion() override;

    /// The definition whose words are offered beside the text's.
    void setSyntax(const QVariantMap& syntaxDictionary, const QStringList& completeWords);

    /// Offers the candidates for the partial word before the caret; false when there is none.
    bool complete();
    const WordCompletion& words() const { return _completion; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void storeChanged(const TextChange& change);
    void followStore();

    QPointer<TextArea> _area;
    WordCompletion _completion;
    CompletionWordIndex _index;
    QPointer<TextStore> _store;
    bool _indexed = false;
    QVariantMap _syntaxDictionary;
    QStringList _completeWords;
};
