#include "editor/SyntaxColoringController.h"

#include "document/TextMirror.h"
#include "editor/ColorStore.h"
#include "editor/LayoutManager.h"
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

// Just after the first line break at or after `from`, or the end of the text. Read a piece
// at a time as the text is kept: a long line is not copied to be searched.
qsizetype endOfLine(TextSource& text, qsizetype from)
{
    const qsizetype n = text.size();
    for (qsizetype start = from; start < n;) {
        const QStringView piece = text.piece(start, n);
        const qsizetype newline = piece.indexOf(u'\n');
        if (newline >= 0) {
            return start + newline + 1;
        }
        start += piece.size();
    }
    return n;
}

} // namespace

SyntaxColoringController::SyntaxColoringController(TextView* textView)
    : QObject(textView)
    , _textView(textView)
    , _engine(std::make_unique<SyntaxColoringEngine>())
{
    // The whole text was coloured once; lines scrolled into view only need colouring when
    // the text changed since (blocks opened or closed off screen move colours there).
    connect(textView, &QPlainTextEdit::updateRequest, this, [this](const QRect&, int dy) {
        if (dy != 0 && hasDefinition() && (_colorsBehindText || _allColoringNext >= 0)) {
            syntaxVisibleColoring();
        }
    });
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

TextMirror* SyntaxColoringController::mirror()
{
    QTextDocument* document = _textView->document();
    if (_mirror && _document == document) {
        return _mirror;
    }
    if (_mirror) {
        disconnect(_mirror, nullptr, this, nullptr);
    }
    _document = document;
    _mirror = TextMirror::mirrorOfDocument(document);
    _engine->invalidate();
    if (_mirror) {
        connect(_mirror, &TextMirror::textDidChange, this,
                &SyntaxColoringController::textDidChange);
    }
    return _mirror;
}

void SyntaxColoringController::setSyntaxDictionary(const QVariantMap& syntaxDictionary)
{
    _engine->setSyntaxDictionary(syntaxDictionary);
    if (syntaxDictionary.isEmpty()) {
        _allColoringScheduled = false;
        if (_allColoringNext >= 0) {
            finishAllColoring();
        }
        if (LayoutManager* layout = _textView->layoutManager()) {
            layout->removeAllTemporaryAttributes();
        }
        return;
    }
    mirror();
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
    TextMirror* text = mirror();
    LayoutManager* layout = _textView->layoutManager();
    if (!text || !layout || range.length <= 0) {
        return;
    }
    SyntaxManager& manager = _textView->services().syntax;
    const std::optional<SyntaxColoring> coloring =
        manager.syntaxColoringRange(range, *text, *_engine);
    if (!coloring) {
        return;
    }
    const Range colored = coloring->range();
    std::vector<ColorStore::Run> runs;
    for (const SyntaxColoring::Run& run : coloring->runsInRange(colored)) {
        const QColor color = manager.colorForCategory(run.category);
        if (color.isValid()) {
            runs.push_back({run.location, run.length, color.rgba()});
        }
    }
    layout->setSyntaxColors(colored, runs);
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
    if (!hasDefinition() || !mirror()) {
        return;
    }
    const bool running = _allColoringNext >= 0;
    showIndicator(true);
    // What the user sees first; the slices then cover the whole text, these lines again.
    syntaxVisibleColoring();
    _allColoringNext = 0;
    _colorsBehindText = false;
    if (!running) {
        continueAllColoring();
    }
}

void SyntaxColoringController::continueAllColoring()
{
    if (_allColoringNext < 0 || !_mirror) {
        return;
    }
    QElapsedTimer turn;
    turn.start();
    while (_allColoringNext < _mirror->size()) {
        const qsizetype start = _allColoringNext;
        _allColoringNext = endOfLine(*_mirror, std::min(_mirror->size(), start + SliceLength));
        colorRange({start, _allColoringNext - start});
        if (_allColoringNext < _mirror->size() && turn.elapsed() >= TurnMilliseconds) {
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
