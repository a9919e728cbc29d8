#pragma once

#include "platform/Range.h"

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QTextDocument>
#include <QTimer>

class QMenu;
class QTextDocument;
class TextView;

/// Checks the spelling of what a text view shows and underlines the misspelt words.
/// Only the lines on screen are looked at: all of them after a scroll, and the lines an edit
/// touched after each edit, so the work per keystroke grows neither with the text nor with
/// the window.
class SpellCheckingController : public QObject
{
    Q_OBJECT

public:
    /// The view's controller, made on first request (owned by the view).
    static SpellCheckingController* of(TextView* textView);

    explicit SpellCheckingController(TextView* textView);

    /// Turns checking on (in `language`) or off; off removes every underline of the view.
    void setContinuousSpellCheckingEnabled(bool enabled, const QString& language);
    bool isContinuousSpellCheckingEnabled() const { return _enabled; }
    QString language() const { return _language; }

    /// Checks the lines on screen now.
    void checkVisibleText();

    /// When the word at `viewportPosition` is misspelt: puts the dictionary's guesses at the
    /// top of `menu` (each replaces the word as one undoable step) and a separator below.
    /// Nothing happens while checking is off or for a word spelt right.
    static void addSpellingSuggestions(TextView* textView, QMenu* menu,
                                       const QPoint& viewportPosition);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Checks the lines on screen on the next turn.
    void scheduleCheck();
    /// After an edit only the lines it touched need checking again.
    void textDidChange(int position, int removed, int added);
    void checkShownBlocks(qsizetype from, qsizetype to);
    /// The misspelt word holding `position`, or none.
    Range misspelledWordAt(qsizetype position) const;

    QPointer<TextView> _textView;
    QPointer<QTextDocument> _checkedDocument;
    bool _enabled = false;
    QString _language;
    QTimer _timer;
    /// The edited characters still to check when only edits asked for a check; from < 0
    /// when every shown line is to be checked.
    qsizetype _editedFrom = -1;
    qsizetype _editedTo = -1;
    bool _checkAll = false;
    int _blockCount = 0;
};
