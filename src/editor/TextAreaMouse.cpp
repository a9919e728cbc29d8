#include "editor/TextAreaMouse.h"

#include "document/TextStore.h"
#include "editor/TextArea.h"
#include "editor/TextBoundaries.h"
#include "editor/TextMimeData.h"

#include <QApplication>
#include <QClipboard>
#include <QDrag>
#include <QDropEvent>
#include <QMenu>
#include <QMouseEvent>

#include <algorithm>

namespace {

constexpr int kAutoScrollInterval = 50;

} // namespace

TextAreaMouse::TextAreaMouse(TextArea& area)
    : _area(area)
    , _tripleClick(0)
{
    _autoScroll.setInterval(kAutoScrollInterval);
    QObject::connect(&_autoScroll, &QTimer::timeout, &area, [this] { autoScroll(); });
}

void TextAreaMouse::press(QMouseEvent* event)
{
    const QPoint point = event->position().toPoint();
    const qsizetype position = _area.positionAt(point);
    _pressPoint = point;
    _point = point;
    if (event->button() == Qt::MiddleButton) {
        QClipboard* clipboard = QGuiApplication::clipboard();
        if (clipboard->supportsSelection() && _area.canEdit()) {
            _area.insertFromMimeData(clipboard->mimeData(QClipboard::Selection), {position, 0});
        }
        return;
    }
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const TextSnapshot& text = _area._layout.text();
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    if (!_tripleClick.hasExpired() &&
        (point - _doubleClickPoint).manhattanLength() < QApplication::startDragDistance()) {
        _tripleClick = QDeadlineTimer(0);
        _unit = Unit::Line;
        _unitOrigin = TextBoundaries::lineRange(text, position);
        _area.setSelections({{_unitOrigin.location, _unitOrigin.max()}});
        _selecting = true;
        return;
    }
    const Range selection = _area.selectedRange();
    if (!shift && selection.length > 0 && position >= selection.location &&
        position < selection.max()) {
        _dragPending = true;
        return;
    }
    if (!shift) {
        _unit = Unit::Character;
        _unitOrigin = {position, 0};
    }
    _area.moveCaret(position, shift);
    _selecting = true;
}

void TextAreaMouse::doubleClick(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const QPoint point = event->position().toPoint();
    _dragPending = false;
    _unit = Unit::Word;
    _unitOrigin = TextBoundaries::wordRange(_area._layout.text(), _area.positionAt(point));
    _area.setSelections({{_unitOrigin.location, _unitOrigin.max()}});
    _selecting = true;
    _doubleClickPoint = point;
    _tripleClick = QDeadlineTimer(QApplication::doubleClickInterval());
}

void TextAreaMouse::move(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        return;
    }
    _point = event->position().toPoint();
    if (_dragPending) {
        if ((_point - _pressPoint).manhattanLength() >= QApplication::startDragDistance()) {
            _dragPending = false;
            startDrag();
        }
        return;
    }
    if (!_selecting) {
        return;
    }
    extendSelection(_point);
    const QRect area = _area.viewport()->rect();
    const bool outside =
        _point.y() < area.top() || _point.y() > area.bottom() ||
        (!_area.wrapLines() && (_point.x() < area.left() || _point.x() > area.right()));
    if (outside && !_autoScroll.isActive()) {
        _autoScroll.start();
    } else if (!outside) {
        _autoScroll.stop();
    }
}

void TextAreaMouse::release(QMouseEvent* event)
{
    _autoScroll.stop();
    if (_dragPending) {
        _dragPending = false;
        _area.moveCaret(_area.positionAt(event->position().toPoint()), false);
    }
    _selecting = false;
}

void TextAreaMouse::extendSelection(const QPoint& point)
{
    const QRect area = _area.viewport()->rect();
    const QPoint inside(point.x(), std::clamp(point.y(), area.top(), area.bottom()));
    const qsizetype position = _area.positionAt(inside);
    if (_unit == Unit::Character) {
        _area.moveCaret(position, true);
        return;
    }
    const TextSnapshot& text = _area._layout.text();
    const Range unit = _unit == Unit::Word ? TextBoundaries::wordRange(text, position)
                                           : TextBoundaries::lineRange(text, position);
    // Whole words or lines from where the selection began, on the side the pointer went.
    if (unit.location < _unitOrigin.location) {
        _area.setSelections({{_unitOrigin.max(), unit.location}});
    } else {
        _area.setSelections({{_unitOrigin.location, std::max(unit.max(), _unitOrigin.max())}});
    }
}

void TextAreaMouse::autoScroll()
{
    TextAreaLayout& layout = _area._layout;
    const QRect area = _area.viewport()->rect();
    const qreal rowHeight = layout.rowHeight();
    qsizetype rows = 0;
    if (_point.y() < area.top()) {
        rows = -(1 + qsizetype((area.top() - _point.y()) / rowHeight));
    } else if (_point.y() > area.bottom()) {
        rows = 1 + qsizetype((_point.y() - area.bottom()) / rowHeight);
    }
    if (rows != 0) {
        layout.scrollRows(rows);
    }
    if (!_area.wrapLines()) {
        const qreal step = layout.cache().averageCharWidth() * 4;
        if (_point.x() < area.left()) {
            layout.setHorizontalOffset(layout.horizontalOffset() - step);
        } else if (_point.x() > area.right()) {
            layout.setHorizontalOffset(layout.horizontalOffset() + step);
        }
    }
    _area.afterScroll();
    extendSelection(_point);
}

void TextAreaMouse::startDrag()
{
    TextStore* store = _area.textStore();
    const Range range = _area.selectedRange();
    const quint64 revision = store ? store->revision() : 0;
    auto* drag = new QDrag(&_area);
    drag->setMimeData(new TextMimeData(_area._layout.text(), range));
    _droppedHere = false;
    const bool editable = _area.canEdit();
    const Qt::DropActions actions =
        editable ? Qt::CopyAction | Qt::MoveAction : Qt::DropActions(Qt::CopyAction);
    const Qt::DropAction done = drag->exec(actions, editable ? Qt::MoveAction : Qt::CopyAction);
    // Moved to another program or view: the text leaves this one, unless it changed meanwhile.
    if (done == Qt::MoveAction && !_droppedHere && _area.canEdit() &&
        store->revision() == revision) {
        store->remove(range.location, range.length, QObject::tr("Move"));
    }
}

void TextAreaMouse::dragEnter(QDragEnterEvent* event)
{
    if (_area.canEdit() && event->mimeData()->hasText()) {
        event->acceptProposedAction();
    } else {
        event->ignore();
    }
}

void TextAreaMouse::dragMove(QDragMoveEvent* event)
{
    if (!_area.canEdit() || !event->mimeData()->hasText()) {
        event->ignore();
        return;
    }
    _dropCaret = _area.positionAt(event->position().toPoint());
    _area.viewport()->update();
    event->acceptProposedAction();
}

void TextAreaMouse::dragLeave()
{
    _dropCaret = -1;
    _area.viewport()->update();
}

void TextAreaMouse::drop(QDropEvent* event)
{
    _dropCaret = -1;
    _area.viewport()->update();
    TextStore* store = _area.textStore();
    if (!_area.canEdit() || !event->mimeData()->hasText()) {
        event->ignore();
        return;
    }
    const qsizetype at = _area.positionAt(event->position().toPoint());
    const QString text = TextMimeData::withLineFeeds(event->mimeData()->text());
    // Our own selection, dragged: moved unless Ctrl asks for a copy.
    const auto* own = qobject_cast<const TextMimeData*>(event->mimeData());
    const Range selection = _area.selectedRange();
    const bool fromHere =
        event->source() == &_area ||
        (own && own->range() == selection && own->snapshot().isSameVersion(_area._layout.text()));
    const bool move = fromHere && !(event->modifiers() & Qt::ControlModifier);
    if (move && at >= selection.location && at <= selection.max()) {
        event->ignore();
        return;
    }
    qsizetype target = at;
    _area._ownEdit = true;
    store->beginEditBlock(move ? QObject::tr("Move") : QObject::tr("Drop"));
    if (move) {
        store->remove(selection.location, selection.length);
        target = at > selection.location ? at - selection.length : at;
    }
    store->insert(target, text);
    store->endEditBlock();
    _area._ownEdit = false;
    _droppedHere = true;
    _area.setSelections({{target, target + text.size()}});
    _area.ensureCursorVisible();
    event->setDropAction(move ? Qt::MoveAction : Qt::CopyAction);
    event->accept();
    _area.setFocus(Qt::OtherFocusReason);
}

QMenu* TextAreaMouse::editMenu()
{
    TextArea* area = &_area;
    auto* menu = new QMenu(area);
    const bool selected = area->selectedRange().length > 0;
    const bool editable = area->canEdit();
    menu->addAction(TextArea::tr("Undo"), area, &TextArea::undo)
        ->setEnabled(editable && area->_store->canUndo());
    menu->addAction(TextArea::tr("Redo"), area, &TextArea::redo)
        ->setEnabled(editable && area->_store->canRedo());
    menu->addSeparator();
    menu->addAction(TextArea::tr("Cut"), area, &TextArea::cut)->setEnabled(editable && selected);
    menu->addAction(TextArea::tr("Copy"), area, &TextArea::copy)->setEnabled(selected);
    const QMimeData* clipboard = QGuiApplication::clipboard()->mimeData();
    menu->addAction(TextArea::tr("Paste"), area, &TextArea::paste)
        ->setEnabled(editable && clipboard && clipboard->hasText());
    menu->addAction(TextArea::tr("Delete"), area,
                    [area] { area->replaceSelection(QString(), false); })
        ->setEnabled(editable && selected);
    menu->addSeparator();
    menu->addAction(TextArea::tr("Select All"), area, &TextArea::selectAll);
    return menu;
}
