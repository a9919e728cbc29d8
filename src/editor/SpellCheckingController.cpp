#include "editor/SpellCheckingController.h"

#include "document/SnapshotTextSource.h"
#include "document/TextMirror.h"
#include "document/TextStore.h"
#include "editor/LayoutManager.h"
#include "editor/TextArea.h"
#include "editor/TextColorLayers.h"
#include "editor/TextView.h"
#include "platform/SpellChecker.h"
#include "platform/TextSource.h"

#include <QEvent>
#include <QMenu>
#include <QScrollBar>

#include <cmath>
#include <limits>

namespace {

// A line without layout yet, or one very long line: enough to cover any screen.
constexpr int kMaximumLineSpan = 4096;
// A word cut by the viewport's edge is checked whole, up to this far beyond the edge.
constexpr int kWordReach = 64;

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == u'\'' || c == u'_' || c == u'\u2019' || c.isMark();
}

// Where a text area's screen stands: a check of every shown line is due when it moves.
struct Screen {
    TextAreaLayout::RowRef top;
    qsizetype lastLine = -1;
    int horizontalOffset = 0;
    QSize size;
    bool wrap = false;
    bool operator==(const Screen&) const = default;
};

Screen screenOf(TextArea* area)
{
    const QList<TextArea::ShownLine> lines = area->visibleLines();
    return {area->textLayout().anchor(), lines.isEmpty() ? -1 : lines.last().line,
            area->horizontalScrollBar()->value(), area->viewport()->size(), area->wrapLines()};
}

// The text area's rows on screen, each cut to the viewport's width.
QList<SpellCheckingController::ShownText> shownTextOf(TextArea* area)
{
    QList<SpellCheckingController::ShownText> stretches;
    if (!area->textStore()) {
        return stretches;
    }
    const TextSnapshot& text = area->textStore()->text();
    const int width = area->viewport()->width();
    const int height = area->viewport()->height();
    const qreal rowHeight = area->textLayout().rowHeight();
    if (rowHeight <= 0) {
        return stretches;
    }
    for (const TextArea::ShownLine& shown : area->visibleLines()) {
        const Range line(shown.position, text.lineLength(shown.line));
        for (qreal top = shown.top; top < std::min<qreal>(shown.bottom, height); top += rowHeight) {
            if (top + rowHeight <= 0) {
                continue;
            }
            const int y = std::clamp(int(std::floor(top + rowHeight / 2)), 0, height - 1);
            const qsizetype from = std::max(line.location, area->positionAt(QPoint(0, y)) - 1);
            qsizetype to = std::min(line.max(), area->positionAt(QPoint(width, y)) + 1);
            to = std::min(to, from + kMaximumLineSpan);
            stretches.append({line, {from, std::max<qsizetype>(0, to - from)}});
        }
    }
    return stretches;
}

} // namespace

SpellCheckingController* SpellCheckingController::of(TextView* textView)
{
    if (auto* existing =
            textView->findChild<SpellCheckingController*>(QString(), Qt::FindDirectChildrenOnly)) {
        return existing;
    }
    return new SpellCheckingController(textView);
}

SpellCheckingController::SpellCheckingController(QObject* parent, SpellChecker& checker, View view)
    : QObject(parent)
    , _checker(checker)
    , _view(std::move(view))
{
    _timer.setSingleShot(true);
    _timer.setInterval(0);
    connect(&_timer, &QTimer::timeout, this, &SpellCheckingController::checkVisibleText);
}

SpellCheckingController::SpellCheckingController(TextView* textView)
    : SpellCheckingController(
          textView, textView->services().spellChecker,
          View{
              .text = [textView]() -> TextSource* {
                  return TextMirror::mirrorOfStore(textView->textStore());
              },
              .layers = [textView]() -> TextColorLayers* {
                  LayoutManager* layout = textView->layoutManager();
                  return layout ? &layout->colorLayers() : nullptr;
              },
              .shownText = [textView] { return shownTextOf(static_cast<TextArea*>(textView)); },
              .lineCount = [textView]() -> qsizetype {
                  return textView->textStore() ? textView->textStore()->text().lineCount() : 0;
              },
              .misspellingsChanged =
                  [textView](Range range) {
                      if (LayoutManager* layout = textView->layoutManager()) {
                          layout->colorsChanged(range);
                      }
                  },
              .positionAt = [textView](const QPoint& point) -> qsizetype {
                  return textView->positionAt(point);
              },
              .replace =
                  [textView](Range range, const QString& text) {
                      textView->applyEdit({range, text, {range.location + text.size(), 0}});
                  },
          })
{
    _textView = textView;
}

SpellCheckingController::SpellCheckingController(TextArea* area, TextColorLayers* layers,
                                                 SpellChecker& checker)
    : SpellCheckingController(
          area, checker,
          View{
              .text = [this, area]() -> TextSource* {
                  if (!area->textStore()) {
                      return nullptr;
                  }
                  _snapshot->setSnapshot(area->textStore()->text());
                  return _snapshot.get();
              },
              .layers = [layers]() -> TextColorLayers* { return layers; },
              .shownText = [area] { return shownTextOf(area); },
              .lineCount = [area]() -> qsizetype {
                  return area->textStore() ? area->textStore()->text().lineCount() : 0;
              },
              .misspellingsChanged = [area](Range range) { area->formatsChanged(range); },
              .positionAt = [area](const QPoint& point) { return area->positionAt(point); },
              .replace =
                  [area](Range range, const QString& text) {
                      area->replaceRange(range, text);
                      area->setCursorPosition(range.location + text.size());
                  },
          })
{
    _snapshot = std::make_unique<SnapshotTextSource>(TextSnapshot());
    if (TextStore* store = area->textStore()) {
        connect(store, &TextStore::contentsChange, this, [this](const TextChange& change) {
            textDidChange(change.position, change.charsRemoved, change.charsAdded);
        });
    }
    connect(area, &TextArea::contextMenuCreated, this,
            qOverload<QMenu*, const QPoint&>(&SpellCheckingController::addSpellingSuggestions));
    // The area tells of its screen after every edit too (it keeps the caret in sight): only
    // other rows on screen need every shown line checked, an edit in place only its own.
    connect(area, &TextArea::visibleRangeChanged, this, [this, area, last = Screen()]() mutable {
        const Screen now = screenOf(area);
        if (now != last) {
            last = now;
            scheduleCheck();
        }
    });
}

SpellCheckingController::~SpellCheckingController() = default;

void SpellCheckingController::setContinuousSpellCheckingEnabled(bool enabled,
                                                                const QString& language)
{
    const bool documentChanged = _textView && _textView->textStore() != _checkedDocument;
    const bool changed = enabled != _enabled || language != _language || documentChanged;
    _enabled = enabled;
    _language = language;
    if (!changed) {
        return;
    }
    if (_textView) {
        followTextView(enabled);
    }
    removeAllMisspellings();
    if (!enabled) {
        _timer.stop();
        return;
    }
    _lineCount = _view.lineCount();
    scheduleCheck();
}

void SpellCheckingController::followTextView(bool enabled)
{
    if (_checkedDocument) {
        disconnect(_checkedDocument, nullptr, this, nullptr);
    }
    _checkedDocument = nullptr;
    disconnect(_textView->verticalScrollBar(), nullptr, this, nullptr);
    disconnect(_textView->horizontalScrollBar(), nullptr, this, nullptr);
    _textView->viewport()->removeEventFilter(this);
    if (!enabled) {
        return;
    }
    _checkedDocument = _textView->textStore();
    connect(_checkedDocument, &TextStore::contentsChange, this, [this](const TextChange& change) {
        textDidChange(change.position, change.charsRemoved, change.charsAdded);
    });
    connect(_textView->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &SpellCheckingController::scheduleCheck);
    connect(_textView->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &SpellCheckingController::scheduleCheck);
    // A resized viewport shows other lines.
    _textView->viewport()->installEventFilter(this);
}

bool SpellCheckingController::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Show) {
        scheduleCheck();
    }
    return QObject::eventFilter(watched, event);
}

void SpellCheckingController::scheduleCheck()
{
    // One check per turn of the event loop, after the layout has followed the edit.
    if (_enabled) {
        _checkAll = true;
        _timer.start();
    }
}

void SpellCheckingController::textDidChange(qsizetype position, qsizetype removed, qsizetype added)
{
    if (!_enabled) {
        return;
    }
    // Lines gained or lost bring other lines onto the screen.
    if (const qsizetype lines = _view.lineCount(); lines != _lineCount) {
        _lineCount = lines;
        scheduleCheck();
        return;
    }
    if (_editedFrom < 0) {
        _editedFrom = position;
        _editedTo = position + added;
    } else {
        // Edits between two checks: one stretch covering them all, moved along.
        if (_editedTo > position) {
            _editedTo = std::max<qsizetype>(position, _editedTo - removed) + added;
        }
        _editedFrom = std::min<qsizetype>(_editedFrom, position);
        _editedTo = std::max<qsizetype>(_editedTo, position + added);
    }
    _timer.start();
}

void SpellCheckingController::checkVisibleText()
{
    const bool all = _checkAll || _editedFrom < 0;
    const qsizetype from = _editedFrom;
    const qsizetype to = _editedTo;
    _checkAll = false;
    _editedFrom = _editedTo = -1;
    if (all) {
        checkShownText(0, std::numeric_limits<qsizetype>::max());
    } else {
        checkShownText(from, to);
    }
}

void SpellCheckingController::checkShownText(qsizetype from, qsizetype to)
{
    if (!_enabled) {
        return;
    }
    TextSource* text = _view.text();
    TextColorLayers* layers = _view.layers();
    if (!text || !layers) {
        return;
    }
    _checker.setLanguage(_language);
    for (const ShownText& stretch : _view.shownText()) {
        if (stretch.line.max() < from || stretch.line.location > to) {
            continue;
        }
        // Whole words: a word cut by the viewport's edge is checked whole.
        qsizetype start = std::max<qsizetype>(0, stretch.shown.location);
        qsizetype end = std::min(text->size(), stretch.shown.max());
        const qsizetype left = start;
        while (start > stretch.line.location && left - start < kWordReach &&
               isWordCharacter(text->at(start - 1))) {
            --start;
        }
        const qsizetype right = end;
        while (end < stretch.line.max() && end < text->size() && end - right < kWordReach &&
               isWordCharacter(text->at(end))) {
            ++end;
        }
        if (start >= end) {
            continue;
        }
        const QString words = text->view(start, end).toString();
        QList<Range> misspelt = _checker.misspelledWords(words, 0, words.size());
        for (Range& word : misspelt) {
            word.location += start;
        }
        // Checking the same lines again mostly finds the same words: no repaint for that.
        const Range checked(start, end - start);
        if (layers->replaceMisspellings(checked, misspelt)) {
            _view.misspellingsChanged(checked);
        }
    }
}

void SpellCheckingController::removeAllMisspellings()
{
    TextColorLayers* layers = _view.layers();
    if (!layers || layers->misspellings().isEmpty()) {
        return;
    }
    ColorStore& words = layers->misspellings();
    words.reset(words.textLength());
    _view.misspellingsChanged({0, words.textLength()});
}

Range SpellCheckingController::misspelledWordAt(qsizetype position) const
{
    TextColorLayers* layers = _view.layers();
    if (!layers) {
        return Range::notFound();
    }
    // Marks are read clipped to the range asked for; no word marked is longer than a
    // stretch checked. The word under the pointer may end at the position (pointer on its
    // right half).
    constexpr qsizetype reach = kMaximumLineSpan + 2 * kWordReach;
    const ColorStore& words = layers->misspellings();
    for (const ColorStore::Run& run : words.runs(std::max<qsizetype>(0, position - reach),
                                                 std::min(words.textLength(), position + reach))) {
        if (position >= run.location && position <= run.location + run.length) {
            return {run.location, run.length};
        }
    }
    return Range::notFound();
}

void SpellCheckingController::addSpellingSuggestions(TextView* textView, QMenu* menu,
                                                     const QPoint& viewportPosition)
{
    if (auto* controller =
            textView->findChild<SpellCheckingController*>(QString(), Qt::FindDirectChildrenOnly)) {
        controller->addSpellingSuggestions(menu, viewportPosition);
    }
}

void SpellCheckingController::addSpellingSuggestions(QMenu* menu, const QPoint& viewportPosition)
{
    if (!_enabled) {
        return;
    }
    const Range word = misspelledWordAt(_view.positionAt(viewportPosition));
    TextSource* text = _view.text();
    if (word.isNotFound() || !text || word.max() > text->size()) {
        return;
    }
    const QString misspelt = text->view(word.location, word.max()).toString();
    _checker.setLanguage(_language);
    const QStringList guesses = _checker.guessesForWord(misspelt);
    QAction* before = menu->actions().value(0);
    QList<QAction*> actions;
    for (const QString& guess : guesses) {
        auto* action = new QAction(guess, menu);
        connect(action, &QAction::triggered, this, [this, word, misspelt, guess] {
            // The text may have changed while the menu was open.
            TextSource* now = _view.text();
            if (!now || word.max() > now->size() ||
                now->view(word.location, word.max()) != misspelt) {
                return;
            }
            _view.replace(word, guess);
        });
        actions.append(action);
    }
    if (actions.isEmpty()) {
        auto* none = new QAction(tr("No Guesses Found"), menu);
        none->setEnabled(false);
        actions.append(none);
    }
    menu->insertActions(before, actions);
    if (before) {
        menu->insertSeparator(before);
    }
}
