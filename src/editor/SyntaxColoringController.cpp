#include "editor/SyntaxColoringController.h"

#include "document/SnapshotTextSource.h"
#include "document/TextMirror.h"
#include "document/TextStore.h"
#include "editor/ColorStore.h"
#include "editor/LayoutManager.h"
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

SyntaxColoringController::SyntaxColoringController(QObject* parent, SyntaxManager& manager,
                                                   View view)
    : QObject(parent)
    , _manager(manager)
    , _view(std::move(view))
    , _engine(std::make_unique<SyntaxColoringEngine>())
{}

SyntaxColoringController::SyntaxColoringController(TextView* textView)
    : SyntaxColoringController(
          textView, textView->services().syntax,
          View{
              .text = [this, textView]() -> TextSource* { return mirrorOf(textView); },
              .layers = [textView]() -> TextColorLayers* {
                  LayoutManager* layout = textView->layoutManager();
                  return layout ? &layout->colorLayers() : nullptr;
              },
              .visibleRange = [textView] { return textView->visibleCharacterRange(); },
              .indicator = [textView] { return textView->indicator(); },
              .colorsChanged =
                  [textView](Range range) {
                      if (LayoutManager* layout = textView->layoutManager()) {
                          layout->colorsChanged(range);
                      }
                  },
          })
{
    connect(textView, &TextArea::visibleRangeChanged, this,
            &SyntaxColoringController::visibleRangeMoved);
}

SyntaxColoringController::SyntaxColoringController(TextArea* area, TextColorLayers* layers,
                                                   SyntaxManager& manager)
    : SyntaxColoringController(
          area, manager,
          View{
              .text = [this]() -> TextSource* { return _snapshot.get(); },
              .layers = [layers]() -> TextColorLayers* { return layers; },
              .visibleRange = [area] { return area->visibleCharacterRange(); },
              .indicator = [] { return static_cast<QProgressBar*>(nullptr); },
              .colorsChanged = [area](Range range) { area->formatsChanged(range); },
          })
{
    TextStore* store = area->textStore();
    _snapshot = std::make_unique<SnapshotTextSource>(store ? store->text() : TextSnapshot());
    layers->reset(_snapshot->size());
    if (!store) {
        return;
    }
    // The area follows the change first (it is connected since its store was set), so the
    // visible range asked for below is already the new text's.
    connect(store, &TextStore::contentsChange, this,
            [this, store, layers](const TextChange& change) {
                _snapshot->setSnapshot(store->text());
                layers->contentsChange(change.position, change.charsRemoved, change.charsAdded);
                textDidChange(change.position, change.charsRemoved, change.charsAdded);
                textDidChanged();
            });
    connect(area, &TextArea::visibleRangeChanged, this,
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

TextMirror* SyntaxColoringController::mirrorOf(TextView* textView)
{
    TextStore* document = textView->textStore();
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
        if (TextColorLayers* layers = _view.layers()) {
            ColorStore& colors = layers->syntaxColors();
            colors.reset(colors.textLength());
            _view.colorsChanged({0, colors.textLength()});
        }
        return;
    }
    _view.text();
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
    TextSource* text = _view.text();
    TextColorLayers* layers = _view.layers();
    if (!text || !layers || range.length <= 0) {
        return;
    }
    const std::optional<SyntaxColoring> coloring =
        _manager.syntaxColoringRange(range, *text, *_engine);
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
    const Range changed = layers->replaceSyntaxColors(colored, runs);
    if (changed.length > 0) {
        _view.colorsChanged(changed);
    }
}

void SyntaxColoringController::syntaxVisibleColoring()
{
    if (hasDefinition()) {
        colorRange(_view.visibleRange());
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
    if (!hasDefinition() || !_view.text()) {
        return;
    }
    const bool running = _allColoringNext >= 0;
    // What the user sees first; the slices then cover the whole text, these lines again.
    syntaxVisibleColoring();
    if (_view.text()->size() > TextSource::eagerWorkLimit) {
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
    TextSource* text = _view.text();
    if (_allColoringNext < 0 || !text) {
        return;
    }
    QElapsedTimer turn;
    turn.start();
    while (_allColoringNext < text->size()) {
        const qsizetype start = _allColoringNext;
        _allColoringNext = text->lineEnd(std::min(text->size(), start + SliceLength));
        colorRange({start, _allColoringNext - start});
        if (_allColoringNext < text->size() && turn.elapsed() >= TurnMilliseconds) {
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
    QProgressBar* indicator = shown ? _view.indicator() : _shownIndicator.data();
    if (!indicator || (!shown && !_shownIndicator) || (shown && _shownIndicator)) {
        return;
    }
    _shownIndicator = shown ? indicator : nullptr;
    // The window's panes share one indicator: it stays while any of them colours.
    const int users = std::max(0, indicator->property("coloringPanes").toInt() + (shown ? 1 : -1));
    indicator->setProperty("coloringPanes", users);
    indicator->setVisible(users > 0);
}
