#pragma once

#include "platform/Range.h"

#include <QDeadlineTimer>
#include <QPoint>
#include <QTimer>

class QDragEnterEvent;
class QDragMoveEvent;
class QDropEvent;
class QMenu;
class QMouseEvent;
class TextArea;

/// The mouse over a text area: a click puts the caret, Shift extends the selection, a
/// double-click selects a word and a triple-click a line (a drag then extends by words or
/// lines), dragging past an edge scrolls, the middle button pastes the primary selection,
/// and selected text is dragged and dropped (moved within the area, copied with Ctrl).
class TextAreaMouse
{
public:
    explicit TextAreaMouse(TextArea& area);

    void press(QMouseEvent* event);
    void doubleClick(QMouseEvent* event);
    void move(QMouseEvent* event);
    void release(QMouseEvent* event);

    void dragEnter(QDragEnterEvent* event);
    void dragMove(QDragMoveEvent* event);
    void dragLeave();
    void drop(QDropEvent* event);
    /// The right-click menu's edit commands, each enabled when it can act.
    QMenu* editMenu();
    /// Where dragged text would go in, or -1.
    qsizetype dropCaret() const { return _dropCaret; }

private:
    enum class Unit { Character, Word, Line };

    void extendSelection(const QPoint& point);
    void autoScroll();
    void startDrag();

    TextArea& _area;
    Unit _unit = Unit::Character;
    /// What the press selected: the selection grows from it.
    Range _unitOrigin;
    QPoint _pressPoint;
    QPoint _point;
    bool _selecting = false;
    bool _dragPending = false;
    QTimer _autoScroll;
    QDeadlineTimer _tripleClick;
    QPoint _doubleClickPoint;
    qsizetype _dropCaret = -1;
    bool _droppedHere = false;
};
