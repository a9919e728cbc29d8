#pragma once

#include "platform/Range.h"

#include <QList>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>

class QMenu;

class SnapshotTextSource;
class SpellChecker;
class TextArea;
class TextColorLayers;
class TextSource;
class TextStore;
class TextView;

/// Checks the spelling of what a view shows and underlines the misspelt words.
/// Only the lines on screen are looked at: all of them after a scroll, and the lines an edit
/// touched after each edit, so the work per keystroke grows neither with the text nor with
/// the window.
///
/// The same controller serves an editor pane (TextView, whose layout manager's colours every
/// pane on the document shares) and a bare TextArea with colours of its own: each hands it the
/// few things it needs of a view through a View.
class SpellCheckingController : public QObject
{
    Q_OBJECT

public:
    /// A stretch of a line on screen: only the characters under the viewport, since an
    /// unwrapped line may be very long.
    struct ShownText {
        /// The whole line, its line break included.
        Range line;
        Range shown;
    };

    /// What the controller asks of the view it checks. `text` and `layers` may answer null
    /// (no text yet); nothing is checked then.
    struct View {
        /// The text to check, as it is now.
        std::function<TextSource*()> text;
        /// Where the misspelt words go.
        std::function<TextColorLayers*()> layers;
        /// The stretches of text on screen.
        std::function<QList<ShownText>()> shownText;
        std::function<qsizetype()> lineCount;
        /// The underlines of `range` changed: whatever of it is on screen is painted again.
        std::function<void(Range range)> misspellingsChanged;
        /// The text position under a point of the viewport.
        std::function<qsizetype(const QPoint& point)> positionAt;
        /// Puts `text` in place of `range` as one undoable step, the caret after it.
        std::function<void(Range range, const QString& text)> replace;
    };

    /// The view's controller, made on first request (owned by the view).
    static SpellCheckingController* of(TextView* textView);

    /// Checks `textView`'s document (followed when the view gets another one) and marks the
    /// words in its LayoutManager's colour layers.
    explicit SpellCheckingController(TextView* textView);
    /// Checks `area`'s text store (set before; a later one is not followed) and marks the
    /// words in `layers`, which must follow the store's edits (the syntax colouring
    /// controller of the same area and layers does that).
    SpellCheckingController(TextArea* area, TextColorLayers* layers, SpellChecker& checker);
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
    SpellCheckingController(QObject* parent, SpellChecker& checker, View view);
    /// The old view's document, its scroll bars and viewport, followed while checking is on.
    void followTextView(bool enabled);
    /// Checks the lines on screen on the next turn.
    void scheduleCheck();
    /// After an edit only the lines it touched need checking again.
    void textDidChange(qsizetype position, qsizetype removed, qsizetype added);
    void checkShownText(qsizetype from, qsizetype to);
    void removeAllMisspellings();
    /// The misspelt word holding `position`, or none.
    Range misspelledWordAt(qsizetype position) const;

    SpellChecker& _checker;
    View _view;
    QPointer<TextView> _textView;
    QPointer<TextStore> _checkedDocument;
    // The text store's text, taken up when read.
    std::unique_ptr<SnapshotTextSource> _snapshot;
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
