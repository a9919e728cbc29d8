#include "editor/TextArea.h"

#include "document/TextStore.h"
#include "editor/TextAreaInputMethod.h"
#include "editor/TextAreaKeys.h"
#include "editor/TextAreaMouse.h"
#include "editor/TextBoundaries.h"
#include "editor/TextFormatProvider.h"
#include "editor/TextMimeData.h"

#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QStyleHints>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

// Units of text the height map measures per turn of the event loop while the view is idle.
constexpr qsizetype kMeasureSlice = qsizetype(2) << 20;

} // namespace

TextArea::TextArea(QWidget* parent)
    : QAbstractScrollArea(parent)
    , _mouse(std::make_unique<TextAreaMouse>(*this))
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
    _proposal = {};
    showPreedit();
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
    if (!_ownEdit) {
        const QList<Selection> before = _selections;
        const auto map = [&](qsizetype p) {
            if (p <= change.position) {
                return p;
            }
            if (p >= change.position + change.charsRemoved) {
                return p + change.charsAdded - change.charsRemoved;
            }
            return change.position;
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
    // A proposal belongs to the text it was made for.
    _proposal = {};
    if (_preedit.isActive()) {
        const qsizetype caret = cursorPosition();
        _preedit.line = text.lineAt(caret);
        _preedit.column = caret - text.lineStart(_preedit.line);
    }
    showPreedit();
    scheduleMeasuring();
    syncScrollBars();
    if (change.linesAdded == 0 && change.linesRemoved == 0) {
        // An edit within a line repaints its rows only (and, wrapped, those below).
        viewport()->update(_layout.rowsMovedByChange({change.position, change.charsAdded}));
    } else {
        viewport()->update();
        if (_gutter) {
            _gutter->update();
        }
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

void TextArea::formatsChanged(Range range)
{
    // The lines on screen compare their colours when painted; the others when laid out.
    const Range shown = visibleCharacterRange();
    if (range.location <= shown.max() && range.max() >= shown.location) {
        viewport()->update();
    }
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
    scrollToShow({range.max(), range.location});
}

void TextArea::ensureCursorVisible()
{
    scrollToShow({cursorPosition()});
}

void TextArea::scrollToShow(std::initializer_list<qsizetype> positions)
{
    const TextAreaLayout::RowRef anchor = _layout.anchor();
    const qreal offset = _layout.horizontalOffset();
    for (qsizetype position : positions) {
        _layout.scrollToShow(position);
    }
    // Already in sight: nothing moved, nothing to paint again.
    if (_layout.anchor() != anchor || _layout.horizontalOffset() != offset) {
        afterScroll();
    } else {
        syncScrollBars();
    }
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
    frame.dropCaret = _mouse->dropCaret();
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
    // The rows of the selections as they were painted and as they are now.
    for (const Selection& selection : std::exchange(_paintedSelections, _selections)) {
        viewport()->update(_layout.rowsOf(selection.range(), viewport()->width()));
    }
    for (const Selection& selection : _selections) {
        viewport()->update(_layout.rowsOf(selection.range(), viewport()->width()));
    }
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

void TextArea::applyEdit(const TextEdit& edit, const QString& stepName)
{
    if (!canEdit()) {
        return;
    }
    replaceRange(edit.range, edit.string, stepName);
    setSelectedRange(edit.selection);
    ensureCursorVisible();
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
        const qsizetype caret = cursorPosition();
        if (caret == 0) {
            return;
        }
        _selections = {{caret, TextBoundaries::previousCodePoint(_layout.text(), caret)}};
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
    replayStep(&TextStore::undo);
}

void TextArea::redo()
{
    replayStep(&TextStore::redo);
}

void TextArea::replayStep(void (TextStore::*replay)())
{
    if (!canEdit()) {
        return;
    }
    _undoing = true;
    _undoCaret = -1;
    (_store->*replay)();
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
    replaceSelection(TextMimeData::withLineFeeds(source->text()), false);
}

// Events ------------------------------------------------------------------------------------

bool TextArea::event(QEvent* event)
{
    // Keys the text takes are not the window's shortcuts.
    if (event->type() == QEvent::ShortcutOverride &&
        TextAreaKeys::takes(static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QAbstractScrollArea::event(event);
}

void TextArea::keyPressEvent(QKeyEvent* event)
{
    if (TextAreaKeys::press(*this, event)) {
        event->accept();
    } else {
        event->ignore();
    }
}

void TextArea::inputMethodEvent(QInputMethodEvent* event)
{
    TextAreaInputMethod::event(*this, event);
}

QVariant TextArea::inputMethodQuery(Qt::InputMethodQuery query) const
{
    const QVariant answer = TextAreaInputMethod::query(*this, query);
    return answer.isValid() ? answer : QAbstractScrollArea::inputMethodQuery(query);
}

void TextArea::mousePressEvent(QMouseEvent* event)
{
    setFocus(Qt::MouseFocusReason);
    commitPreedit();
    _mouse->press(event);
}

void TextArea::mouseDoubleClickEvent(QMouseEvent* event)
{
    _mouse->doubleClick(event);
}

void TextArea::mouseMoveEvent(QMouseEvent* event)
{
    _mouse->move(event);
}

void TextArea::mouseReleaseEvent(QMouseEvent* event)
{
    _mouse->release(event);
}

void TextArea::dragEnterEvent(QDragEnterEvent* event)
{
    _mouse->dragEnter(event);
}

void TextArea::dragMoveEvent(QDragMoveEvent* event)
{
    _mouse->dragMove(event);
}

void TextArea::dragLeaveEvent(QDragLeaveEvent*)
{
    _mouse->dragLeave();
}

void TextArea::dropEvent(QDropEvent* event)
{
    _mouse->drop(event);
}

void TextArea::commitPreedit()
{
    TextAreaInputMethod::commit(*this);
}

void TextArea::showPreedit()
{
    _layout.cache().setPreedit(_preedit.isActive() ? _preedit : _proposal);
}

void TextArea::setProposedText(qsizetype position, const QString& text)
{
    TextAreaInputMethod::propose(*this, position, text);
}

void TextArea::contextMenuEvent(QContextMenuEvent* event)
{
    if (QMenu* menu = createContextMenu(event->pos())) {
        menu->exec(event->globalPos());
        delete menu;
    }
}

QMenu* TextArea::createContextMenu(const QPoint&)
{
    return _mouse->editMenu();
}
