#include "editor/SyntaxColoringController.h"

#include "document/TextMirror.h"
#include "document/TextStore.h"
#include "editor/ColorStore.h"
#include "editor/TextArea.h"
#include "editor/TextColorLayers.h"
#include "editor/TextView.h"
#include "syntax/SyntaxColoring.h"
#include "syntax/SyntaxColoringEngine.h"
#include "syntax/SyntaxManager.h"

#include <QElapsedTimer>
#include <QProgressBar>
#include <QTimer>

namespace {

// A slice of the whole-text colouring: about this many characters, then up to the next
// line end, and no more slices in one turn than fit into a frame.
constexpr qsizetype SliceLength = 256 * 1024;
constexpr qint64 TurnMilliseconds = 16;

} // namespace

SyntaxColoringController::SyntaxColoringController(TextView* textView)
    : QObject(textView)
    , _textView(textView)
    , _manager(textView->services().syntax)
    , _engine(std::make_unique<SyntaxColoringEngine>())
{
    connect(textView, &TextArea::visibleRangeChanged, this,
            &SyntaxColoringController::visibleRangeMoved);
}

SyntaxColoringController::~SyntaxColoringController()
{
    // A pane closed while it colours leaves the window's indicator to the others.
    showIndicator(false);
}

bool SyntaxColoringController::hasDefinition() const
{
    return !_engine->syntaxDictionary().isEmpty();
}

TextMirror* SyntaxColoringController::text()
{
    TextStore* document = _textView->textStore();
    if (_mirror && _document == document) {
        return _mirror;
    }
    if (_mirror) {
        disconnect(_mirror, nullptr, this, nullptr);
    }
    _document = document;
    _mirror = TextMirror::mirrorOfStore(document);
    _engine->invalidate();
    if (_mirror) {
        connect(_mirror, &TextMirror::textDidChange, this,
                &SyntaxColoringController::textDidChange);
    }
    return _mirror;
}

TextColorLayers* SyntaxColoringController::layers() const
{
    return _textView->colorLayers();
}

void SyntaxColoringController::colorsChanged(Range range)
{
    _textView->colorsChanged(range);
}

void SyntaxColoringController::visibleRangeMoved()
{
    // The whole text was coloured once; lines scrolled into view only need colouring when
    // the text changed since (blocks opened or closed off screen move colours there).
    if (hasDefinition() && (_colorsBehindText || _allColoringNext >= 0)) {
        syntaxVisibleColoring();
    }
}

void SyntaxColoringController::setSyntaxDictionary(const QVariantMap& syntaxDictionary)
{
    _engine->setSyntaxDictionary(syntaxDictionary);
    if (syntaxDictionary.isEmpty()) {
        _allColoringScheduled = false;
        if (_allColoringNext >= 0) {
            finishAllColoring();
        }
        if (TextColorLayers* colorLayers = layers()) {
            ColorStore& colors = colorLayers->syntaxColors();
            colors.reset(colors.textLength());
            colorsChanged({0, colors.textLength()});
        }
        return;
    }
    // Follows the document's changes from now on.
    text();
    _colorsBehindText = true;
}

void SyntaxColoringController::textDidChange(qsizetype location, qsizetype removed, qsizetype added)
{
    _engine->textDidChange(location, removed, added);
    _colorsBehindText = true;
    if (added > LargeInsertion) {
        _largeInsertion = true;
    }
    if (_allColoringNext > location) {
        _allColoringNext = std::max(location, _allColoringNext + added - removed);
    }
}

void SyntaxColoringController::textDidChanged()
{
    if (!hasDefinition()) {
        return;
    }
    if (_largeInsertion) {
        _largeInsertion = false;
        syntaxAllColoring();
    }
    // The visible lines now, even when the whole text follows: the edit is on screen.
    syntaxVisibleColoring();
}

void SyntaxColoringController::colorRange(Range range)
{
    TextSource* source = text();
    TextColorLayers* colorLayers = layers();
    if (!source || !colorLayers || range.length <= 0) {
        return;
    }
    const std::optional<SyntaxColoring> coloring =
        _manager.syntaxColoringRange(range, *source, *_engine);
    if (!coloring) {
        return;
    }
    const Range colored = coloring->range();
    std::vector<ColorStore::Run> runs;
    for (const SyntaxColoring::Run& run : coloring->runsInRange(colored)) {
        const QColor color = _manager.colorForCategory(run.category);
        if (color.isValid()) {
            runs.push_back({run.location, run.length, color.rgba()});
        }
    }
    // Only what the colouring changed is painted again, not the whole range handed over.
    const Range changed = colorLayers->replaceSyntaxColors(colored, runs);
    if (changed.length > 0) {
        colorsChanged(changed);
    }
}

void SyntaxColoringController::syntaxVisibleColoring()
{
    if (hasDefinition()) {
        colorRange(_textView->visibleCharacterRange());
    }
}

void SyntaxColoringController::syntaxAllColoring()
{
    if (_allColoringScheduled || !hasDefinition()) {
        return;
    }
    _allColoringScheduled = true;
    QTimer::singleShot(0, this, [this] {
        if (_allColoringScheduled) {
            performSyntaxAllColoring();
        }
    });
}

void SyntaxColoringController::performSyntaxAllColoring()
{
    _allColoringScheduled = false;
    if (!hasDefinition() || !text()) {
        return;
    }
    const bool running = _allColoringNext >= 0;
    // What the user sees first; the slices then cover the whole text, these lines again.
    syntaxVisibleColoring();
    if (text()->size() > TextSource::eagerWorkLimit) {
        // A large text is coloured where it is shown: the lines on screen now, the others as
        // they are scrolled into view. Each stretch is coloured exactly as the whole text
        // would colour it (the block turns before it are known without colouring them), so
        // colouring ahead would only spend time on lines nobody may look at.
        if (running) {
            finishAllColoring();
        }
        _colorsBehindText = true;
        return;
    }
    showIndicator(true);
    _allColoringNext = 0;
    _colorsBehindText = false;
    if (!running) {
        continueAllColoring();
    }
}

void SyntaxColoringController::continueAllColoring()
{
    TextSource* source = text();
    if (_allColoringNext < 0 || !source) {
        return;
    }
    QElapsedTimer turn;
    turn.start();
    while (_allColoringNext < source->size()) {
        const qsizetype start = _allColoringNext;
        _allColoringNext = source->lineEnd(std::min(source->size(), start + SliceLength));
        colorRange({start, _allColoringNext - start});
        if (_allColoringNext < source->size() && turn.elapsed() >= TurnMilliseconds) {
            if (!_continuationScheduled) {
                _continuationScheduled = true;
                QTimer::singleShot(0, this, [this] {
                    _continuationScheduled = false;
                    continueAllColoring();
                });
            }
            return;
        }
    }
    finishAllColoring();
}

void SyntaxColoringController::finishAllColoring()
{
    _allColoringNext = -1;
    showIndicator(false);
}

void SyntaxColoringController::showIndicator(bool shown)
{
    QProgressBar* indicator = shown ? _textView->indicator() : _shownIndicator.data();
    if (!indicator || (!shown && !_shownIndicator) || (shown && _shownIndicator)) {
        return;
    }
    _shownIndicator = shown ? indicator : nullptr;
    // The window's panes share one indicator: it stays while any of them colours.
    const int users = std::max(0, indicator->property("coloringPanes").toInt() + (shown ? 1 : -1));
    indicator->setProperty("coloringPanes", users);
    indicator->setVisible(users > 0);
}
