#pragma once

#include "platform/Range.h"

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QTimer>

class QMenu;

class SpellChecker;
class TextColorLayers;
class TextSource;
class TextStore;
class TextView;

/// Checks the spelling of what an editor pane shows and underlines the misspelt words in the
/// colour layers of the pane's LayoutManager, which every pane on the document shares.
/// Only the lines on screen are looked at: all of them after a scroll, and the lines an edit
/// touched after each edit, so the work per keystroke grows neither with the text nor with
/// the window. Each TextView has its own, made on first request and owned by the view.
class SpellCheckingController : public QObject
{
    Q_OBJECT

public:
    /// The view's controller, made on first request (owned by the view).
    static SpellCheckingController* of(TextView* textView);

    /// Checks `textView`'s document (followed when the view gets another one) and marks the
    /// words in its LayoutManager's colour layers.
    explicit SpellCheckingController(TextView* textView);
    ~SpellCheckingController() override;

    /// Turns checking on (in `language`) or off; off removes every underline of the view.
    void setContinuousSpellCheckingEnabled(bool enabled, const QString& language);
    bool isContinuousSpellCheckingEnabled() const { return _enabled; }
    QString language() const { return _language; }

    /// Checks the lines on screen now.
    void checkVisibleText();

    /// When the word at `viewportPosition` is misspelt: puts the dictionary's guesses at the
    /// top of `menu` (each replaces the word as one undoable step) and a separator below.
    /// Nothing happens while checking is off or for a word spelt right.
    void addSpellingSuggestions(QMenu* menu, const QPoint& viewportPosition);
    /// The same for the controller of `textView`, if it has one.
    static void addSpellingSuggestions(TextView* textView, QMenu* menu,
                                       const QPoint& viewportPosition);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// The text to check, as it is now: the mirror of the view's document.
    TextSource* text() const;
    /// Where the misspelt words go; none before the view has a layout manager.
    TextColorLayers* layers() const;
    /// The underlines of `range` changed: whatever of it any pane shows is painted again.
    void misspellingsChanged(Range range);
    qsizetype lineCount() const;
    /// The view's document, its scroll bars and viewport, followed while checking is on.
    void followTextView(bool enabled);
    /// Checks the lines on screen on the next turn.
    void scheduleCheck();
    /// After an edit only the lines it touched need checking again.
    void textDidChange(qsizetype position, qsizetype removed, qsizetype added);
    void checkShownText(qsizetype from, qsizetype to);
    void removeAllMisspellings();
    /// The misspelt word holding `position`, or none.
    Range misspelledWordAt(qsizetype position) const;

    TextView* _textView; // the parent
    SpellChecker& _checker;
    QPointer<TextStore> _checkedDocument;
    bool _enabled = false;
    QString _language;
    QTimer _timer;
    /// The edited characters still to check when only edits asked for a check; from < 0
    /// when every shown line is to be checked.
    qsizetype _editedFrom = -1;
    qsizetype _editedTo = -1;
    bool _checkAll = false;
    qsizetype _lineCount = 0;
};
