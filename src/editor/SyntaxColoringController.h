#pragma once

#include "platform/Range.h"

#include <QObject>
#include <QPointer>
#include <QVariantMap>

#include <functional>
#include <memory>

class QProgressBar;
class TextStore;
class SnapshotTextSource;
class SyntaxColoringEngine;
class SyntaxManager;
class TextArea;
class TextColorLayers;
class TextMirror;
class TextSource;
class TextView;

/// Decides when a view is coloured and which range: the whole text once a definition is
/// loaded (deferred, in slices, behind the window's progress indicator), the visible lines
/// after every edit, the whole text again after a large insertion. The matching is the
/// engine's; the colours go to the pane's colour layers, never into the text.
///
/// The same controller serves an editor pane (TextView, whose layout manager's colours every
/// pane on the document shares) and a bare TextArea with colours of its own: each hands it the
/// few things it needs of a view through a View.
class SyntaxColoringController : public QObject
{
    Q_OBJECT

public:
    /// An edit inserting more than this many characters has the whole text coloured again.
    static constexpr qsizetype LargeInsertion = 900;

    /// What the controller asks of the view it colours. Any of them may answer null (no
    /// text yet, no indicator); the controller then leaves that part out.
    struct View {
        /// The text to colour. Its changes are told through textDidChange().
        std::function<TextSource*()> text;
        /// Where the colours go.
        std::function<TextColorLayers*()> layers;
        /// The characters on screen.
        std::function<Range()> visibleRange;
        /// The window's progress indicator, shown while the whole text is coloured.
        std::function<QProgressBar*()> indicator;
        /// The colours of `range` changed: whatever of it is on screen is painted again.
        std::function<void(Range range)> colorsChanged;
    };

    /// Colours `textView`, reading its document through the document's TextMirror and
    /// writing to its LayoutManager's colour layers.
    explicit SyntaxColoringController(TextView* textView);
    /// Colours `area` over its text store (set before; a later one is not followed), writing
    /// to `layers`, which it takes over at the store's length and keeps in step with the
    /// store's edits. The lines on screen are coloured after every edit and scroll.
    SyntaxColoringController(TextArea* area, TextColorLayers* layers, SyntaxManager& manager);
    ~SyntaxColoringController() override;

    /// Takes up `syntaxDictionary` (none: drops every colour of the pane).
    void setSyntaxDictionary(const QVariantMap& syntaxDictionary);
    bool hasDefinition() const;

    /// Colours the lines shown in the pane now.
    void syntaxVisibleColoring();
    /// Colours the whole text on the next turn of the event loop.
    void syntaxAllColoring();
    /// Colours the whole text: the visible lines first, then the rest in slices of about
    /// a frame each, continued on later turns so that the window keeps repainting.
    void performSyntaxAllColoring();
    /// `removed` units at `location` were replaced by `added`; the text already holds the
    /// new ones. Nothing is coloured until textDidChanged().
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);
    /// After a change of the text: the visible lines, or the whole text after a large
    /// insertion.
    void textDidChanged();

    /// Whether a whole-text colouring is waiting or under way.
    bool isColoringAll() const { return _allColoringScheduled || _allColoringNext >= 0; }

private:
    SyntaxColoringController(QObject* parent, SyntaxManager& manager, View view);
    TextMirror* mirrorOf(TextView* textView);
    /// The visible lines again when colours there may be stale: the text changed since the
    /// whole text was coloured, or that colouring has not reached them yet.
    void visibleRangeMoved();
    void colorRange(Range range);
    void continueAllColoring();
    void finishAllColoring();
    void showIndicator(bool shown);

    SyntaxManager& _manager;
    View _view;
    std::unique_ptr<SyntaxColoringEngine> _engine;
    // The old view's text: the mirror of its document, followed when the document changes.
    QPointer<TextMirror> _mirror;
    QPointer<TextStore> _document;
    // The text store's text, as the last change left it.
    std::unique_ptr<SnapshotTextSource> _snapshot;
    QPointer<QProgressBar> _shownIndicator; // the indicator this pane made visible
    bool _allColoringScheduled = false;
    bool _continuationScheduled = false;
    qsizetype _allColoringNext = -1; // where the next slice starts; -1 when none is under way
    bool _largeInsertion = false;
    bool _colorsBehindText = false; // edited since the whole text was last coloured
};
