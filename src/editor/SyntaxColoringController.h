#pragma once

#include "platform/Range.h"

#include <QObject>
#include <QPointer>
#include <QVariantMap>

#include <memory>

class QProgressBar;
class SyntaxColoringEngine;
class SyntaxManager;
class TextColorLayers;
class TextMirror;
class TextStore;
class TextView;

/// Decides when an editor pane is coloured and which range: the whole text once a definition
/// is loaded (deferred, in slices, behind the window's progress indicator), the visible lines
/// after every edit, the whole text again after a large insertion. The matching is the
/// engine's; the colours go to the colour layers of the pane's LayoutManager, which every
/// pane on the document shares, never into the text. Each TextView makes its own on first
/// request and owns it.
class SyntaxColoringController : public QObject
{
    Q_OBJECT

public:
    /// An edit inserting more than this many characters has the whole text coloured again.
    static constexpr qsizetype LargeInsertion = 900;

    /// Colours `textView`, reading its document through the document's TextMirror (followed
    /// when the view gets another document) and writing to its LayoutManager's colour layers.
    explicit SyntaxColoringController(TextView* textView);
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
    /// The text to colour: the mirror of the view's document. None before the view has one.
    TextMirror* text();
    /// Where the colours go; none before the view has a layout manager.
    TextColorLayers* layers() const;
    /// The colours of `range` changed: whatever of it any pane shows is painted again.
    void colorsChanged(Range range);
    /// The visible lines again when colours there may be stale: the text changed since the
    /// whole text was coloured, or that colouring has not reached them yet.
    void visibleRangeMoved();
    void colorRange(Range range);
    void continueAllColoring();
    void finishAllColoring();
    void showIndicator(bool shown);

    TextView* _textView; // the parent
    SyntaxManager& _manager;
    std::unique_ptr<SyntaxColoringEngine> _engine;
    // The mirror of the view's document, followed when the document changes.
    QPointer<TextMirror> _mirror;
    QPointer<TextStore> _document;
    QPointer<QProgressBar> _shownIndicator; // the indicator this pane made visible
    bool _allColoringScheduled = false;
    bool _continuationScheduled = false;
    qsizetype _allColoringNext = -1; // where the next slice starts; -1 when none is under way
    bool _largeInsertion = false;
    bool _colorsBehindText = false; // edited since the whole text was last coloured
};
