#include "editor/SpellCheckingController.h"

#include "document/TextMirror.h"
#include "document/TextStore.h"
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

// A stretch of a line on screen: only the characters under the viewport, since an unwrapped
// line may be very long.
struct ShownText {
    // The whole line, its line break included.
    Range line;
    Range shown;
};

// The view's rows on screen, each cut to the viewport's width.
QList<ShownText> shownTextOf(TextArea* area)
{
    QList<ShownText> stretches;
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

SpellCheckingController::SpellCheckingController(TextView* textView)
    : QObject(textView)
    , _textView(textView)
    , _checker(textView->services().spellChecker)
{
    _timer.setSingleShot(true);
    _timer.setInterval(0);
    connect(&_timer, &QTimer::timeout, this, &SpellCheckingController::checkVisibleText);
}

SpellCheckingController::~SpellCheckingController() = default;

TextSource* SpellCheckingController::text() const
{
    return TextMirror::mirrorOfStore(_textView->textStore());
}

TextColorLayers* SpellCheckingController::layers() const
{
    return _textView->colorLayers();
}

void SpellCheckingController::misspellingsChanged(Range range)
{
    _textView->colorsChanged(range);
}

qsizetype SpellCheckingController::lineCount() const
{
    return _textView->textStore() ? _textView->textStore()->text().lineCount() : 0;
}

void SpellCheckingController::setContinuousSpellCheckingEnabled(bool enabled,
                                                                const QString& language)
{
    const bool documentChanged = _textView->textStore() != _checkedDocument;
    const bool changed = enabled != _enabled || language != _language || documentChanged;
    _enabled = enabled;
    _language = language;
    if (!changed) {
        return;
    }
    followTextView(enabled);
    removeAllMisspellings();
    if (!enabled) {
        _timer.stop();
        return;
    }
    _lineCount = lineCount();
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
    if (const qsizetype lines = lineCount(); lines != _lineCount) {
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
    TextSource* source = text();
    TextColorLayers* colorLayers = layers();
    if (!source || !colorLayers) {
        return;
    }
    _checker.setLanguage(_language);
    for (const ShownText& stretch : shownTextOf(_textView)) {
        if (stretch.line.max() < from || stretch.line.location > to) {
            continue;
        }
        // Whole words: a word cut by the viewport's edge is checked whole.
        qsizetype start = std::max<qsizetype>(0, stretch.shown.location);
        qsizetype end = std::min(source->size(), stretch.shown.max());
        const qsizetype left = start;
        while (start > stretch.line.location && left - start < kWordReach &&
               isWordCharacter(source->at(start - 1))) {
            --start;
        }
        const qsizetype right = end;
        while (end < stretch.line.max() && end < source->size() && end - right < kWordReach &&
               isWordCharacter(source->at(end))) {
            ++end;
        }
        if (start >= end) {
            continue;
        }
        const QString words = source->view(start, end).toString();
        QList<Range> misspelt = _checker.misspelledWords(words, 0, words.size());
        for (Range& word : misspelt) {
            word.location += start;
        }
        // Checking the same lines again mostly finds the same words: no repaint for that.
        const Range checked(start, end - start);
        if (colorLayers->replaceMisspellings(checked, misspelt)) {
            misspellingsChanged(checked);
        }
    }
}

void SpellCheckingController::removeAllMisspellings()
{
    TextColorLayers* colorLayers = layers();
    if (!colorLayers || colorLayers->misspellings().isEmpty()) {
        return;
    }
    ColorStore& words = colorLayers->misspellings();
    words.reset(words.textLength());
    misspellingsChanged({0, words.textLength()});
}

Range SpellCheckingController::misspelledWordAt(qsizetype position) const
{
    TextColorLayers* colorLayers = layers();
    if (!colorLayers) {
        return Range::notFound();
    }
    // Marks are read clipped to the range asked for; no word marked is longer than a
    // stretch checked. The word under the pointer may end at the position (pointer on its
    // right half).
    constexpr qsizetype reach = kMaximumLineSpan + 2 * kWordReach;
    const ColorStore& words = colorLayers->misspellings();
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
    const Range word = misspelledWordAt(_textView->positionAt(viewportPosition));
    TextSource* source = text();
    if (word.isNotFound() || !source || word.max() > source->size()) {
        return;
    }
    const QString misspelt = source->view(word.location, word.max()).toString();
    _checker.setLanguage(_language);
    const QStringList guesses = _checker.guessesForWord(misspelt);
    QAction* before = menu->actions().value(0);
    QList<QAction*> actions;
    for (const QString& guess : guesses) {
        auto* action = new QAction(guess, menu);
        connect(action, &QAction::triggered, this, [this, word, misspelt, guess] {
            // The text may have changed while the menu was open.
            TextSource* now = text();
            if (!now || word.max() > now->size() ||
                now->view(word.location, word.max()) != misspelt) {
                return;
            }
            _textView->applyEdit({word, guess, {word.location + guess.size(), 0}});
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
