#include "editor/TextArea.h"

#include "document/TextStore.h"
#include "editor/TextBoundaries.h"
#include "editor/TextFormatProvider.h"
#include "editor/TextMimeData.h"

#include <QApplication>
#include <QClipboard>
#include <QDrag>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QStyleHints>
#include <QTextCharFormat>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

// Units of text the height map measures per turn of the event loop while the view is idle.
constexpr qsizetype kMeasureSlice = qsizetype(2) << 20;
// How much of the caret's line an input method sees on either side of it.
constexpr qsizetype kSurrounding = 1000;
constexpr int kAutoScrollInterval = 50;

// The text in memory has line feeds only.
QString withLineFeeds(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text;
}

} // namespace

TextArea::TextArea(QWidget* parent)
    : QAbstractScrollArea(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    setAcceptDrops(true);
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setAccessibleName(tr("Text"));
    viewport()->setAccessibleDescription(tr("The text of the document"));
    // Rows wrap at the viewport's width: a scroll bar that came and went with the text's
    // length would change that width and lay everything out again.
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    verticalScrollBar()->setSingleStep(1);
    connect(verticalScrollBar(), &QScrollBar::sliderReleased, this, [this] { syncScrollBars(); });

    const QPalette colors = palette();
    _colors.text = colors.color(QPalette::Text);
    _colors.background = colors.color(QPalette::Base);
    _colors.caret = colors.color(QPalette::Text);
    QColor selection = colors.color(QPalette::Highlight);
    selection.setAlpha(110);
    _colors.selection = selection;

    _style.font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    _measuring.setSingleShot(true);
    _measuring.setInterval(0);
    connect(&_measuring, &QTimer::timeout, this, [this] {
        if (!_layout.heightMap().measure(kMeasureSlice)) {
            _measuring.start();
        }
        syncScrollBars();
    });
    applyStyle();
}

TextArea::~TextArea() = default;

void TextArea::setTextStore(TextStore* store)
{
    if (_store) {
        disconnect(_store, nullptr, this, nullptr);
    }
    _store = store;
    _selections = {Selection()};
    _preedit = {};
    _layout.cache().setPreedit(_preedit);
    _layout.setText(store ? store->text() : TextSnapshot());
    if (store) {
        connect(store, &TextStore::contentsChange, this, &TextArea::textStoreChanged);
        connect(store, &QObject::destroyed, this, [this] {
            _layout.setText(TextSnapshot());
            _selections = {Selection()};
            viewport()->update();
        });
    }
    scheduleMeasuring();
    afterScroll();
    selectionDidChange();
}

void TextArea::textStoreChanged(const TextChange& change)
{
    const TextSnapshot& text = _store->text();
    _layout.textChanged(change, text);
    const bool whole = change.position == 0 && text.length() == change.charsAdded;
    if (!_ownEdit) {
        const QList<Selection> before = _selections;
        const auto map = [&](qsizetype p) {
            if (p <= change.position) {
                return p;
            }
            if (p >= change.position + change.charsRemoved) {
                return p + change.charsAdded - change.charsRemoved;
            }
            // A text that grows while it loads keeps the place the reader is at.
            return _loading && whole ? std::min(p, text.length()) : change.position;
        };
        for (Selection& selection : _selections) {
            selection = {map(selection.anchor), map(selection.position)};
        }
        if (_undoing) {
            _undoCaret = change.position + change.charsAdded;
        }
        if (_selections != before) {
            selectionDidChange();
        }
    }
    if (_preedit.isActive()) {
        const qsizetype caret = cursorPosition();
        _preedit.line = text.lineAt(caret);
        _preedit.column = caret - text.lineStart(_preedit.line);
        _layout.cache().setPreedit(_preedit);
    }
    scheduleMeasuring();
    syncScrollBars();
    viewport()->update();
    if (_gutter) {
        _gutter->update();
    }
}

// Looks ---------------------------------------------------------------------------------------

void TextArea::applyStyle()
{
    const QFontMetricsF metrics(_style.font);
    _style.rowHeight = std::max<qreal>(1, std::round(metrics.lineSpacing() * _lineSpacing));
    _style.baseline = std::round((_style.rowHeight - metrics.height()) / 2 + metrics.ascent());
    _style.tabStopDistance = _tabStopDistance > 0
                                 ? _tabStopDistance
                                 : metrics.horizontalAdvance(QLatin1Char(' ')) * _tabWidth;
    _layout.setStyle(_style);
    scheduleMeasuring();
    afterScroll();
}

void TextArea::setWrapLines(bool wrap)
{
    if (wrap == _style.wrap) {
        return;
    }
    _style.wrap = wrap;
    setHorizontalScrollBarPolicy(wrap ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    updateGeometries();
    applyStyle();
    ensureCursorVisible();
}

void TextArea::setTextFont(const QFont& font)
{
    _style.font = font;
    applyStyle();
}

void TextArea::setTabWidth(int spaces)
{
    _tabWidth = std::max(1, spaces);
    applyStyle();
}

void TextArea::setTabStopDistance(qreal distance)
{
    _tabStopDistance = std::max<qreal>(0, distance);
    applyStyle();
}

void TextArea::setLineSpacing(qreal lineSpacing)
{
    _lineSpacing = std::max<qreal>(0.5, lineSpacing);
    applyStyle();
}

void TextArea::setColors(const Colors& colors)
{
    _colors = colors;
    viewport()->update();
}

void TextArea::setShowInvisibleCharacters(bool show)
{
    _style.showInvisibles = show;
    applyStyle();
}

void TextArea::setInvisibleCharacterMarks(const InvisibleCharacterPainter::Marks& marks)
{
    _marks.setMarks(marks);
    viewport()->update();
}

void TextArea::setFormatProvider(TextFormatProvider* provider)
{
    _provider = provider;
    if (provider) {
        _layout.cache().setFormatSource([this](qsizetype line) {
            const TextSnapshot& text = _layout.text();
            return _provider->formatsForLine(line, text.lineStart(line), text.lineLength(line))
                .foreground;
        });
    } else {
        _layout.cache().setFormatSource({});
    }
    _layout.cache().clear();
    viewport()->update();
}

void TextArea::formatsChanged(qsizetype firstLine, qsizetype lastLine)
{
    // The lines on screen compare their colours when painted; the others when laid out.
    Q_UNUSED(firstLine);
    Q_UNUSED(lastLine);
    viewport()->update();
}

void TextArea::setGutter(int width, GutterPainter painter)
{
    _gutterWidth = std::max(0, width);
    _gutterPainter = std::move(painter);
    if (_gutterWidth > 0 && !_gutter) {
        _gutter = new QWidget(this);
        _gutter->installEventFilter(this);
        _gutter->show();
    } else if (_gutterWidth == 0 && _gutter) {
        delete _gutter;
        _gutter = nullptr;
    }
    setViewportMargins(_gutterWidth, 0, 0, 0);
    updateGeometries();
}

void TextArea::setReadOnly(bool readOnly)
{
    _readOnly = readOnly;
    viewport()->update();
}

void TextArea::setLoading(bool loading)
{
    _loading = loading;
    viewport()->update();
}

// Geometry and scrolling -------------------------------------------------------------------------

void TextArea::updateGeometries()
{
    _layout.setViewportSize(viewport()->size());
    if (_gutter) {
        const QRect area = contentsRect();
        _gutter->setGeometry(area.left(), area.top(), _gutterWidth, viewport()->height());
    }
}

void TextArea::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateGeometries();
    scheduleMeasuring();
    afterScroll();
}

void TextArea::syncScrollBars()
{
    _syncing = true;
    QScrollBar* vertical = verticalScrollBar();
    vertical->setRange(0, int(std::min<qsizetype>(_layout.scrollMaximum(), INT_MAX)));
    vertical->setPageStep(_layout.pageRows());
    if (!vertical->isSliderDown()) {
        vertical->setValue(int(std::min<qsizetype>(_layout.scrollValue(), INT_MAX)));
    }
    _lastScrollValue = vertical->value();
    QScrollBar* horizontal = horizontalScrollBar();
    horizontal->setRange(0, int(std::ceil(_layout.horizontalMaximum())));
    horizontal->setPageStep(viewport()->width());
    horizontal->setSingleStep(int(std::ceil(_layout.cache().averageCharWidth() * 2)));
    horizontal->setValue(int(_layout.horizontalOffset()));
    _syncing = false;
}

void TextArea::scrollContentsBy(int, int)
{
    if (_syncing) {
        return;
    }
    QScrollBar* vertical = verticalScrollBar();
    const qsizetype value = vertical->value();
    if (value != _lastScrollValue) {
        const qsizetype delta = value - _lastScrollValue;
        // A few pages away, row by row (exact); further, or dragging the slider, through
        // the estimated rows.
        if (value == 0) {
            _layout.setAnchor({});
        } else if (!vertical->isSliderDown() && value < vertical->maximum() &&
                   std::abs(delta) <= 4 * _layout.pageRows()) {
            _layout.scrollRows(delta);
        } else {
            _layout.setScrollValue(value);
        }
        _lastScrollValue = value;
    }
    _layout.setHorizontalOffset(horizontalScrollBar()->value());
    afterScroll();
}

void TextArea::afterScroll()
{
    syncScrollBars();
    viewport()->update();
    if (_gutter) {
        _gutter->update();
    }
    if (hasFocus()) {
        QGuiApplication::inputMethod()->update(Qt::ImCursorRectangle);
    }
    Q_EMIT visibleRangeChanged();
}

void TextArea::scheduleMeasuring()
{
    if (!_layout.heightMap().isMeasured() && !_measuring.isActive()) {
        _measuring.start();
    }
}

Range TextArea::visibleCharacterRange()
{
    return _layout.visibleRange();
}

QList<TextArea::ShownLine> TextArea::visibleLines()
{
    return _layout.shownLines();
}

QRect TextArea::rectForPosition(qsizetype position)
{
    const QRectF caret = _layout.caretRect(position);
    return {int(std::floor(caret.x())), int(std::floor(caret.y())), 1, int(caret.height())};
}

qsizetype TextArea::positionAt(const QPoint& point)
{
    return _layout.positionAt(QPointF(point));
}

void TextArea::scrollRangeToVisible(Range range)
{
    _layout.scrollToShow(range.max());
    _layout.scrollToShow(range.location);
    afterScroll();
}

void TextArea::ensureCursorVisible()
{
    _layout.scrollToShow(cursorPosition());
    afterScroll();
}

// Painting ------------------------------------------------------------------------------------

void TextArea::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    TextAreaPainter::Frame frame;
    for (const Selection& selection : _selections) {
        frame.selections.append(selection.range());
    }
    if (hasFocus() && _caretShown) {
        frame.caret = cursorPosition();
        frame.preeditCursor = _preedit.isActive() ? _preeditCursor : -1;
    }
    frame.caretWidth = 1.5;
    frame.dropCaret = _dropCaret;
    frame.showInvisibles = _style.showInvisibles;
    TextAreaPainter::paint(painter, event->rect(), _layout, _provider, _colors, _marks, frame);
}

bool TextArea::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == _gutter && event->type() == QEvent::Paint) {
        paintGutter(static_cast<QPaintEvent*>(event));
        return true;
    }
    return QAbstractScrollArea::eventFilter(watched, event);
}

void TextArea::paintGutter(QPaintEvent* event)
{
    QPainter painter(_gutter);
    if (_gutterPainter) {
        _gutterPainter(painter, event->rect(), _layout.shownLines());
    }
}

void TextArea::resetCaretBlink()
{
    _caretShown = true;
    const int flash = QGuiApplication::styleHints()->cursorFlashTime();
    if (hasFocus() && flash > 0) {
        _blink.start(flash / 2, this);
    } else {
        _blink.stop();
    }
    updateCaret();
}

void TextArea::updateCaret()
{
    viewport()->update(rectForPosition(cursorPosition()).adjusted(-3, 0, 3, 0));
}

void TextArea::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == _blink.timerId()) {
        _caretShown = !_caretShown;
        updateCaret();
    } else if (event->timerId() == _autoScroll.timerId()) {
        autoScroll();
    } else if (event->timerId() == _tripleClick.timerId()) {
        _tripleClick.stop();
    } else {
        QAbstractScrollArea::timerEvent(event);
    }
}

void TextArea::focusInEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusInEvent(event);
    resetCaretBlink();
    viewport()->update();
}

void TextArea::focusOutEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusOutEvent(event);
    _blink.stop();
    _caretShown = false;
    viewport()->update();
}

// Selection ------------------------------------------------------------------------------------

void TextArea::selectionDidChange()
{
    const Range range = selectedRange();
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (range.length > 0 && clipboard->supportsSelection()) {
        clipboard->setMimeData(new TextMimeData(_layout.text(), range), QClipboard::Selection);
    }
    viewport()->update();
    if (hasFocus()) {
        QGuiApplication::inputMethod()->update(Qt::ImQueryInput);
    }
    Q_EMIT selectionChanged();
}

void TextArea::setSelections(const QList<Selection>& selections)
{
    const qsizetype length = _layout.text().length();
    QList<Selection> clamped;
    for (const Selection& selection : selections) {
        clamped.append({std::clamp<qsizetype>(selection.anchor, 0, length),
                        std::clamp<qsizetype>(selection.position, 0, length)});
    }
    if (clamped.isEmpty()) {
        clamped.append(Selection());
    }
    if (_store) {
        _store->breakTyping();
    }
    _preferredX = -1;
    const bool changed = clamped != _selections;
    _selections = clamped;
    resetCaretBlink();
    if (changed) {
        selectionDidChange();
    }
}

void TextArea::setSelectedRange(Range range)
{
    setSelections({{range.location, range.max()}});
}

void TextArea::setCursorPosition(qsizetype position, bool extend)
{
    moveCaret(position, extend);
}

void TextArea::moveCaret(qsizetype position, bool extend, bool keepPreferredX)
{
    const qreal preferredX = _preferredX;
    Selection selection = _selections.first();
    selection.position = position;
    if (!extend) {
        selection.anchor = position;
    }
    setSelections({selection});
    if (keepPreferredX) {
        _preferredX = preferredX;
    }
}

QString TextArea::selectedText() const
{
    return _layout.text().text(selectedRange());
}

void TextArea::selectAll()
{
    setSelections({{0, _layout.text().length()}});
}

// Editing ---------------------------------------------------------------------------------------

void TextArea::replaceSelection(const QString& text, bool typing, const QString& stepName)
{
    if (!canEdit()) {
        return;
    }
    const Range range = selectedRange();
    _ownEdit = true;
    const bool done =
        _store->replace(range.location, range.length, text, stepName,
                        typing ? TextStore::EditKind::Typing : TextStore::EditKind::Other);
    _ownEdit = false;
    if (!done) {
        return;
    }
    const qsizetype caret = range.location + text.size();
    _selections = {{caret, caret}};
    _preferredX = -1;
    ensureCursorVisible();
    resetCaretBlink();
    selectionDidChange();
}

void TextArea::insertText(const QString& text, const QString& stepName)
{
    replaceSelection(text, false, stepName);
}

void TextArea::replaceRange(Range range, const QString& text, const QString& stepName)
{
    if (canEdit()) {
        _store->replace(range.location, range.length, text, stepName);
    }
}

void TextArea::insertTypedText(const QString& text)
{
    replaceSelection(text, true);
}

void TextArea::insertNewline()
{
    insertTypedText(QStringLiteral("\n"));
}

void TextArea::insertTab()
{
    insertTypedText(QStringLiteral("\t"));
}

void TextArea::deleteBackward()
{
    if (!canEdit()) {
        return;
    }
    if (selectedRange().length == 0) {
        // One code point back: a base character loses its marks one by one.
        const TextSnapshot& text = _layout.text();
        const qsizetype caret = cursorPosition();
        if (caret == 0) {
            return;
        }
        const bool pair = caret >= 2 && text.at(caret - 1).isLowSurrogate() &&
                          text.at(caret - 2).isHighSurrogate();
        _selections = {{caret, caret - (pair ? 2 : 1)}};
    }
    replaceSelection(QString(), true);
}

void TextArea::deleteForward()
{
    if (!canEdit()) {
        return;
    }
    if (selectedRange().length == 0) {
        const qsizetype caret = cursorPosition();
        _selections = {{caret, TextBoundaries::nextCharacter(_layout.text(), caret)}};
    }
    replaceSelection(QString(), true);
}

void TextArea::undo()
{
    if (!canEdit()) {
        return;
    }
    _undoing = true;
    _undoCaret = -1;
    _store->undo();
    _undoing = false;
    if (_undoCaret >= 0) {
        moveCaret(_undoCaret, false);
        ensureCursorVisible();
    }
}

void TextArea::redo()
{
    if (!canEdit()) {
        return;
    }
    _undoing = true;
    _undoCaret = -1;
    _store->redo();
    _undoing = false;
    if (_undoCaret >= 0) {
        moveCaret(_undoCaret, false);
        ensureCursorVisible();
    }
}

void TextArea::cut()
{
    if (canEdit() && selectedRange().length > 0) {
        copy();
        replaceSelection(QString(), false);
    }
}

void TextArea::copy()
{
    const Range range = selectedRange();
    if (range.length > 0) {
        QGuiApplication::clipboard()->setMimeData(new TextMimeData(_layout.text(), range));
    }
}

void TextArea::paste()
{
    insertFromMimeData(QGuiApplication::clipboard()->mimeData(), selectedRange());
}

void TextArea::insertFromMimeData(const QMimeData* source, Range range)
{
    if (!canEdit() || !source || !source->hasText()) {
        return;
    }
    _selections = {{range.location, range.max()}};
    replaceSelection(withLineFeeds(source->text()), false);
}

// Keys ---------------------------------------------------------------------------------------

qsizetype TextArea::verticalTarget(qsizetype position, qsizetype rows)
{
    TextAreaLayout::RowRef row = _layout.rowOf(position);
    if (_preferredX < 0) {
        _preferredX = _layout.contentX(position);
    }
    qsizetype moved = 0;
    for (; moved < std::abs(rows); ++moved) {
        if (!(rows > 0 ? _layout.nextRow(row) : _layout.previousRow(row))) {
            break;
        }
    }
    if (moved == 0) {
        // Up in the first row and down in the last go to the text's ends.
        return rows > 0 ? _layout.text().length() : 0;
    }
    return _layout.positionInRow(row, _preferredX);
}

bool TextArea::navigate(QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (modifiers & (Qt::AltModifier | Qt::MetaModifier)) {
        return false;
    }
    const bool control = modifiers & Qt::ControlModifier;
    const bool shift = modifiers & Qt::ShiftModifier;
    const TextSnapshot& text = _layout.text();
    const qsizetype caret = cursorPosition();
    const Range selection = selectedRange();
    const bool collapse = !shift && selection.length > 0;
    qsizetype target = caret;
    bool keepX = false;
    switch (event->key()) {
    case Qt::Key_Left:
        target = control ? TextBoundaries::previousWord(text, caret)
                         : (collapse ? selection.location
                                     : TextBoundaries::previousCharacter(text, caret));
        break;
    case Qt::Key_Right:
        target = control
                     ? TextBoundaries::nextWord(text, caret)
                     : (collapse ? selection.max() : TextBoundaries::nextCharacter(text, caret));
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (control) {
            // The view moves by a row; the caret stays.
            _layout.scrollRows(event->key() == Qt::Key_Up ? -1 : 1);
            afterScroll();
            return true;
        }
        target = verticalTarget(caret, event->key() == Qt::Key_Up ? -1 : 1);
        keepX = true;
        break;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: {
        const qsizetype rows =
            event->key() == Qt::Key_PageUp ? -_layout.pageRows() : _layout.pageRows();
        target = verticalTarget(caret, rows);
        _layout.scrollRows(rows);
        keepX = true;
        break;
    }
    case Qt::Key_Home:
    case Qt::Key_End: {
        if (control) {
            target = event->key() == Qt::Key_Home ? 0 : text.length();
            break;
        }
        // First the visual row's edge, then the line's.
        const qsizetype line = text.lineAt(caret);
        const qsizetype lineStart = text.lineStart(line);
        const qsizetype lineEnd = lineStart + text.lineLength(line);
        const Range row = _layout.rowRange(_layout.rowOf(caret));
        if (event->key() == Qt::Key_Home) {
            target = caret != row.location ? row.location : lineStart;
        } else {
            const qsizetype rowEnd = row.max() == lineEnd ? lineEnd : row.max() - 1;
            target = caret != rowEnd ? rowEnd : lineEnd;
        }
        break;
    }
    default:
        return false;
    }
    moveCaret(target, shift, keepX);
    ensureCursorVisible();
    return true;
}

bool TextArea::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        // Keys the text takes are not the window's shortcuts.
        auto* key = static_cast<QKeyEvent*>(event);
        const Qt::KeyboardModifiers modifiers = key->modifiers() & ~Qt::KeypadModifier;
        const bool plain =
            !(modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
        const bool typed = plain && !key->text().isEmpty() && key->text().at(0).isPrint();
        const bool standard = key == QKeySequence::Copy || key == QKeySequence::Cut ||
                              key == QKeySequence::Paste || key == QKeySequence::Undo ||
                              key == QKeySequence::Redo || key == QKeySequence::SelectAll;
        switch (key->key()) {
        case Qt::Key_Left:
        case Qt::Key_Right:
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_Home:
        case Qt::Key_End:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
        case Qt::Key_Backspace:
        case Qt::Key_Delete:
            if (!(modifiers & (Qt::AltModifier | Qt::MetaModifier))) {
                event->accept();
                return true;
            }
            break;
        default:
            if (typed || standard) {
                event->accept();
                return true;
            }
        }
    }
    return QAbstractScrollArea::event(event);
}

void TextArea::keyPressEvent(QKeyEvent* event)
{
    if (navigate(event)) {
        return;
    }
    if (event == QKeySequence::Copy) {
        copy();
    } else if (event == QKeySequence::Cut) {
        cut();
    } else if (event == QKeySequence::Paste) {
        paste();
    } else if (event == QKeySequence::Undo) {
        undo();
    } else if (event == QKeySequence::Redo) {
        redo();
    } else if (event == QKeySequence::SelectAll) {
        selectAll();
    } else if (event == QKeySequence::DeleteStartOfWord || event == QKeySequence::DeleteEndOfWord) {
        if (canEdit() && selectedRange().length == 0) {
            const TextSnapshot& text = _layout.text();
            const qsizetype caret = cursorPosition();
            _selections = {{caret, event == QKeySequence::DeleteStartOfWord
                                       ? TextBoundaries::previousWord(text, caret)
                                       : TextBoundaries::nextWord(text, caret)}};
            replaceSelection(QString(), false);
        }
    } else {
        const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
        const bool plain =
            !(modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
        const QString text = event->text();
        switch (event->key()) {
        case Qt::Key_Backspace:
            deleteBackward();
            break;
        case Qt::Key_Delete:
            deleteForward();
            break;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (!plain) {
                event->ignore();
                return;
            }
            insertNewline();
            break;
        case Qt::Key_Tab:
            if (modifiers != Qt::NoModifier) {
                event->ignore();
                return;
            }
            insertTab();
            break;
        default:
            if (text.isEmpty() || !text.at(0).isPrint() ||
                (modifiers & (Qt::ControlModifier | Qt::MetaModifier))) {
                event->ignore();
                return;
            }
            insertTypedText(text);
        }
    }
    event->accept();
}

// Input methods ---------------------------------------------------------------------------------

void TextArea::inputMethodEvent(QInputMethodEvent* event)
{
    if (!canEdit()) {
        event->ignore();
        return;
    }
    const qsizetype caret = cursorPosition();
    if (event->replacementLength() > 0) {
        const qsizetype from = std::max<qsizetype>(0, caret + event->replacementStart());
        _selections = {
            {from, std::min(_layout.text().length(), from + event->replacementLength())}};
    }
    const QString preedit = event->preeditString();
    if (!event->commitString().isEmpty() || event->replacementLength() > 0 ||
        (!preedit.isEmpty() && selectedRange().length > 0)) {
        replaceSelection(event->commitString(), true);
    }
    TextLayoutCache::Preedit composing;
    _preeditCursor = preedit.size();
    if (!preedit.isEmpty()) {
        const TextSnapshot& text = _layout.text();
        const qsizetype at = cursorPosition();
        composing.line = text.lineAt(at);
        composing.column = at - text.lineStart(composing.line);
        composing.text = preedit;
    }
    for (const QInputMethodEvent::Attribute& attribute : event->attributes()) {
        if (attribute.type == QInputMethodEvent::TextFormat && !preedit.isEmpty()) {
            const QTextCharFormat format = attribute.value.value<QTextFormat>().toCharFormat();
            if (format.isValid()) {
                composing.formats.append({attribute.start, attribute.length, format});
            }
        } else if (attribute.type == QInputMethodEvent::Cursor) {
            _preeditCursor = std::clamp<qsizetype>(attribute.start, 0, preedit.size());
        } else if (attribute.type == QInputMethodEvent::Selection && preedit.isEmpty()) {
            // Relative to the surrounding text: the caret's line.
            const TextSnapshot& text = _layout.text();
            const qsizetype base = std::max(text.lineStart(text.lineAt(cursorPosition())),
                                            cursorPosition() - kSurrounding);
            setSelections({{base + attribute.start, base + attribute.start + attribute.length}});
        }
    }
    _preedit = composing;
    _layout.cache().setPreedit(_preedit);
    if (_preedit.isActive()) {
        _layout.scrollToShow(cursorPosition());
    }
    afterScroll();
    event->accept();
}

QVariant TextArea::inputMethodQuery(Qt::InputMethodQuery query) const
{
    return inputMethodQuery(query, QVariant());
}

QVariant TextArea::inputMethodQuery(Qt::InputMethodQuery query, QVariant argument) const
{
    auto* self = const_cast<TextArea*>(this);
    const TextSnapshot& text = _layout.text();
    const qsizetype caret = cursorPosition();
    const qsizetype line = text.lineAt(caret);
    const qsizetype lineStart = text.lineStart(line);
    const qsizetype from = std::max(lineStart, caret - kSurrounding);
    const qsizetype to = std::min(lineStart + text.lineLength(line), caret + kSurrounding);
    switch (query) {
    case Qt::ImEnabled:
        return canEdit();
    case Qt::ImReadOnly:
        return !canEdit();
    case Qt::ImHints:
        return int(Qt::ImhMultiLine);
    case Qt::ImFont:
        return textFont();
    case Qt::ImCursorRectangle: {
        const QRectF at =
            self->_layout.caretRect(caret, _preedit.isActive() ? int(_preeditCursor) : 0);
        return QRect(int(std::floor(at.x())), int(std::floor(at.y())), 1, int(at.height()))
            .translated(viewport()->pos());
    }
    case Qt::ImAbsolutePosition:
        return caret;
    case Qt::ImCursorPosition:
        return caret - from;
    case Qt::ImAnchorPosition:
        return std::clamp(_selections.first().anchor, from, to) - from;
    case Qt::ImSurroundingText:
        return text.text(Range(from, to - from));
    case Qt::ImTextBeforeCursor:
        return text.text(Range(from, caret - from));
    case Qt::ImTextAfterCursor:
        return text.text(Range(caret, to - caret));
    case Qt::ImCurrentSelection: {
        const Range selection = selectedRange();
        return text.text(Range(selection.location, std::min(selection.length, kSurrounding)));
    }
    case Qt::ImMaximumTextLength:
        return QVariant();
    default:
        Q_UNUSED(argument);
        return QAbstractScrollArea::inputMethodQuery(query);
    }
}

void TextArea::commitPreedit()
{
    if (_preedit.isActive()) {
        QGuiApplication::inputMethod()->commit();
        _preedit = {};
        _layout.cache().setPreedit(_preedit);
        viewport()->update();
    }
}

// Mouse
// --------------------------------------------------------------------------------------------

void TextArea::mousePressEvent(QMouseEvent* event)
{
    setFocus(Qt::MouseFocusReason);
    commitPreedit();
    const QPoint point = event->position().toPoint();
    const qsizetype position = positionAt(point);
    _pressPoint = point;
    _mousePoint = point;
    if (event->button() == Qt::MiddleButton) {
        QClipboard* clipboard = QGuiApplication::clipboard();
        if (clipboard->supportsSelection() && canEdit()) {
            insertFromMimeData(clipboard->mimeData(QClipboard::Selection), {position, 0});
        }
        return;
    }
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const TextSnapshot& text = _layout.text();
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    if (_tripleClick.isActive() &&
        (point - _doubleClickPoint).manhattanLength() < QApplication::startDragDistance()) {
        _tripleClick.stop();
        _unit = Unit::Line;
        _unitOrigin = TextBoundaries::lineRange(text, position);
        setSelections({{_unitOrigin.location, _unitOrigin.max()}});
        _selecting = true;
        return;
    }
    const Range selection = selectedRange();
    if (!shift && selection.length > 0 && position >= selection.location &&
        position < selection.max()) {
        _dragPending = true;
        return;
    }
    if (!shift) {
        _unit = Unit::Character;
        _unitOrigin = {position, 0};
    }
    moveCaret(position, shift);
    _selecting = true;
}

void TextArea::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const QPoint point = event->position().toPoint();
    _dragPending = false;
    _unit = Unit::Word;
    _unitOrigin = TextBoundaries::wordRange(_layout.text(), positionAt(point));
    setSelections({{_unitOrigin.location, _unitOrigin.max()}});
    _selecting = true;
    _doubleClickPoint = point;
    _tripleClick.start(QApplication::doubleClickInterval(), this);
}

void TextArea::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        return;
    }
    _mousePoint = event->position().toPoint();
    if (_dragPending) {
        if ((_mousePoint - _pressPoint).manhattanLength() >= QApplication::startDragDistance()) {
            _dragPending = false;
            startDrag();
        }
        return;
    }
    if (!_selecting) {
        return;
    }
    extendMouseSelection(_mousePoint);
    const QRect area = viewport()->rect();
    const bool outside =
        _mousePoint.y() < area.top() || _mousePoint.y() > area.bottom() ||
        (!_style.wrap && (_mousePoint.x() < area.left() || _mousePoint.x() > area.right()));
    if (outside && !_autoScroll.isActive()) {
        _autoScroll.start(kAutoScrollInterval, this);
    } else if (!outside) {
        _autoScroll.stop();
    }
}

void TextArea::mouseReleaseEvent(QMouseEvent* event)
{
    _autoScroll.stop();
    if (_dragPending) {
        _dragPending = false;
        moveCaret(positionAt(event->position().toPoint()), false);
    }
    _selecting = false;
}

void TextArea::extendMouseSelection(const QPoint& point)
{
    const QRect area = viewport()->rect();
    const QPoint inside(point.x(), std::clamp(point.y(), area.top(), area.bottom()));
    const qsizetype position = positionAt(inside);
    if (_unit == Unit::Character) {
        moveCaret(position, true);
        return;
    }
    const TextSnapshot& text = _layout.text();
    const Range unit = _unit == Unit::Word ? TextBoundaries::wordRange(text, position)
                                           : TextBoundaries::lineRange(text, position);
    // Whole words or lines from where the selection began, on the side the pointer went.
    if (unit.location < _unitOrigin.location) {
        setSelections({{_unitOrigin.max(), unit.location}});
    } else {
        setSelections({{_unitOrigin.location, std::max(unit.max(), _unitOrigin.max())}});
    }
}

void TextArea::autoScroll()
{
    const QRect area = viewport()->rect();
    const qreal rowHeight = _layout.rowHeight();
    qsizetype rows = 0;
    if (_mousePoint.y() < area.top()) {
        rows = -(1 + qsizetype((area.top() - _mousePoint.y()) / rowHeight));
    } else if (_mousePoint.y() > area.bottom()) {
        rows = 1 + qsizetype((_mousePoint.y() - area.bottom()) / rowHeight);
    }
    if (rows != 0) {
        _layout.scrollRows(rows);
    }
    if (!_style.wrap) {
        const qreal step = _layout.cache().averageCharWidth() * 4;
        if (_mousePoint.x() < area.left()) {
            _layout.setHorizontalOffset(_layout.horizontalOffset() - step);
        } else if (_mousePoint.x() > area.right()) {
            _layout.setHorizontalOffset(_layout.horizontalOffset() + step);
        }
    }
    afterScroll();
    extendMouseSelection(_mousePoint);
}

void TextArea::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu* menu = createContextMenu(event->pos());
    if (menu) {
        menu->exec(event->globalPos());
        delete menu;
    }
}

QMenu* TextArea::createContextMenu(const QPoint&)
{
    auto* menu = new QMenu(this);
    const bool selected = selectedRange().length > 0;
    menu->addAction(tr("Undo"), this, &TextArea::undo)->setEnabled(canEdit() && _store->canUndo());
    menu->addAction(tr("Redo"), this, &TextArea::redo)->setEnabled(canEdit() && _store->canRedo());
    menu->addSeparator();
    menu->addAction(tr("Cut"), this, &TextArea::cut)->setEnabled(canEdit() && selected);
    menu->addAction(tr("Copy"), this, &TextArea::copy)->setEnabled(selected);
    const QMimeData* clipboard = QGuiApplication::clipboard()->mimeData();
    menu->addAction(tr("Paste"), this, &TextArea::paste)
        ->setEnabled(canEdit() && clipboard && clipboard->hasText());
    menu->addAction(tr("Delete"), this, [this] { replaceSelection(QString(), false); })
        ->setEnabled(canEdit() && selected);
    menu->addSeparator();
    menu->addAction(tr("Select All"), this, &TextArea::selectAll);
    return menu;
}

// Drag and drop
// ------------------------------------------------------------------------------------

void TextArea::startDrag()
{
    const Range range = selectedRange();
    const quint64 revision = _store ? _store->revision() : 0;
    auto* drag = new QDrag(this);
    drag->setMimeData(new TextMimeData(_layout.text(), range));
    _droppedHere = false;
    const Qt::DropActions actions =
        canEdit() ? Qt::CopyAction | Qt::MoveAction : Qt::DropActions(Qt::CopyAction);
    const Qt::DropAction done = drag->exec(actions, canEdit() ? Qt::MoveAction : Qt::CopyAction);
    // Moved to another program or view: the text leaves this one, unless it changed meanwhile.
    if (done == Qt::MoveAction && !_droppedHere && canEdit() && _store->revision() == revision) {
        _store->remove(range.location, range.length, tr("Move"));
    }
}

void TextArea::dragEnterEvent(QDragEnterEvent* event)
{
    if (canEdit() && event->mimeData()->hasText()) {
        event->acceptProposedAction();
    } else {
        event->ignore();
    }
}

void TextArea::dragMoveEvent(QDragMoveEvent* event)
{
    if (!canEdit() || !event->mimeData()->hasText()) {
        event->ignore();
        return;
    }
    _dropCaret = positionAt(event->position().toPoint());
    viewport()->update();
    event->acceptProposedAction();
}

void TextArea::dragLeaveEvent(QDragLeaveEvent*)
{
    _dropCaret = -1;
    viewport()->update();
}

void TextArea::dropEvent(QDropEvent* event)
{
    _dropCaret = -1;
    viewport()->update();
    if (!canEdit() || !event->mimeData()->hasText()) {
        event->ignore();
        return;
    }
    const qsizetype at = positionAt(event->position().toPoint());
    const QString text = withLineFeeds(event->mimeData()->text());
    // Our own selection, dragged: moved unless Ctrl asks for a copy.
    const auto* own = qobject_cast<const TextMimeData*>(event->mimeData());
    const Range selection = selectedRange();
    const bool fromHere =
        event->source() == this ||
        (own && own->range() == selection && own->snapshot().isSameVersion(_layout.text()));
    const bool move = fromHere && !(event->modifiers() & Qt::ControlModifier);
    if (move && at >= selection.location && at <= selection.max()) {
        event->ignore();
        return;
    }
    qsizetype target = at;
    _ownEdit = true;
    _store->beginEditBlock(move ? tr("Move") : tr("Drop"));
    if (move) {
        _store->remove(selection.location, selection.length);
        target = at > selection.location ? at - selection.length : at;
    }
    _store->insert(target, text);
    _store->endEditBlock();
    _ownEdit = false;
    _droppedHere = true;
    setSelections({{target, target + text.size()}});
    ensureCursorVisible();
    event->setDropAction(move ? Qt::MoveAction : Qt::CopyAction);
    event->accept();
    setFocus(Qt::OtherFocusReason);
}
