#include "window/TabBar.h"

#include <QLabel>
#include <QMouseEvent>

TabBar::TabBar(QWidget* parent)
    : QTabBar(parent)
{
    setObjectName(QStringLiteral("tabBar"));
    setDocumentMode(true);
    setExpanding(false);
    setMovable(true);
    setTabsClosable(true);
    setElideMode(Qt::ElideMiddle);
    setUsesScrollButtons(true);
    setSelectionBehaviorOnRemove(QTabBar::SelectPreviousTab);
}

TabBar::~TabBar()
{
    delete _picture;
}

bool TabBar::isFarFromBar(const QPoint& position) const
{
    // Wandering a little off the bar while reordering is not tearing the tab off.
    const int margin = height();
    return !rect().adjusted(-margin, -margin, margin, margin).contains(position);
}

void TabBar::mousePressEvent(QMouseEvent* event)
{
    _pressPosition = event->position().toPoint();
    QTabBar::mousePressEvent(event);
}

void TabBar::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint position = event->position().toPoint();
    if (!_tearingOff && (event->buttons() & Qt::LeftButton) && currentIndex() >= 0 &&
        tabAt(_pressPosition) >= 0 && isFarFromBar(position)) {
        startTearingOff(event);
    }
    if (_tearingOff) {
        _picture->move(event->globalPosition().toPoint() - _picture->rect().center());
        return;
    }
    QTabBar::mouseMoveEvent(event);
}

void TabBar::mouseReleaseEvent(QMouseEvent* event)
{
    // A middle click closes a tab, as in browsers and the other editors.
    const int clicked = tabAt(event->position().toPoint());
    if (event->button() == Qt::MiddleButton && clicked >= 0 && !_tearingOff) {
        Q_EMIT tabCloseRequested(clicked);
        return;
    }
    if (!_tearingOff || event->button() != Qt::LeftButton) {
        QTabBar::mouseReleaseEvent(event);
        return;
    }
    stopTearingOff();
    // The pressed tab became the current one, and stays so while the bar moves it.
    Q_EMIT tabDroppedOutside(currentIndex(), event->globalPosition().toPoint());
}

void TabBar::startTearingOff(QMouseEvent* event)
{
    _tearingOff = true;
    // The bar's own reordering ends here, the tab sliding back into its place.
    QMouseEvent release(QEvent::MouseButtonRelease, _pressPosition, mapToGlobal(_pressPosition),
                        Qt::LeftButton, Qt::NoButton, event->modifiers());
    QTabBar::mouseReleaseEvent(&release);
    _picture = new QLabel(nullptr, Qt::ToolTip | Qt::FramelessWindowHint);
    _picture->setAttribute(Qt::WA_TransparentForMouseEvents);
    _picture->setPixmap(grab(tabRect(currentIndex())));
    _picture->adjustSize();
    _picture->move(event->globalPosition().toPoint() - _picture->rect().center());
    _picture->show();
    setCursor(Qt::ClosedHandCursor);
}

void TabBar::stopTearingOff()
{
    _tearingOff = false;
    delete _picture;
    unsetCursor();
}
