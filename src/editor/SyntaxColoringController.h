#pragma once

#include "platform/Range.h"

#include <QObject>
#include <QPointer>
#include <QVariantMap>

#include <memory>

class QProgressBar;
class QTextDocument;
class SyntaxColoring;
class SyntaxColoringEngine;
class TextMirror;
class TextView;

/// Decides when a text view is coloured and which range: the whole text once a definition
/// is loaded (deferred, in slices, behind the window's progress indicator), the visible
/// lines after every edit, the whole text again after a large insertion. The matching is
/// the engine's; the colours go to the pane's colour store (its LayoutManager), never into
/// the document.
class SyntaxColoringController : public QObject
{
    Q_OBJECT

public:
    /// An edit inserting more than this many characters has the whole text coloured again.
    static constexpr qsizetype LargeInsertion = 900;

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
    /// After a change of the text: the visible lines, or the whole text after a large
    /// insertion.
    void textDidChanged();

    /// Whether a whole-text colouring is waiting or under way.
    bool isColoringAll() const { return _allColoringScheduled || _allColoringNext >= 0; }

private:
    TextMirror* mirror();
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);
    void colorRange(Range range);
    void continueAllColoring();
    void finishAllColoring();
    void showIndicator(bool shown);

    TextView* _textView;
    std::unique_ptr<SyntaxColoringEngine> _engine;
    QPointer<TextMirror> _mirror;
    QPointer<QTextDocument> _document;
    QPointer<QProgressBar> _shownIndicator; // the indicator this pane made visible
    bool _allColoringScheduled = false;
    bool _continuationScheduled = false;
    qsizetype _allColoringNext = -1; // where the next slice starts; -1 when none is under way
    bool _largeInsertion = false;
    bool _colorsBehindText = false; // edited since the whole text was last coloured
};
