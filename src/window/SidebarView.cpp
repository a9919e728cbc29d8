#include "window/SidebarView.h"

#include "window/GotoController.h"
#include "window/InfoController.h"
#include "window/ScriptController.h"
#include "window/SearchController.h"

#include <QBoxLayout>
#include <QLineEdit>
#include <QLinearGradient>
#include <QPainter>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QVBoxLayout>

SidebarView::SidebarView(WindowController* windowController, QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("sidebarView"));
    setFixedWidth(Width);
    _searchController = new SearchController(windowController, this);
    _gotoController = new GotoController(windowController, this);
    _infoController = new InfoController(this);
    _scriptController = new ScriptController(windowController, this);
    _viewControllers = {_searchController, _gotoController, _infoController, _scriptController};
    for (QWidget* pane : _viewControllers) {
        pane->hide();
    }
    hide();
}

SidebarView::~SidebarView() = default;

void SidebarView::placeBeside(QWidget* editor)
{
    QWidget* parent = editor->parentWidget();
    if (!parent || !parent->layout()) {
        return;
    }
    auto* row = new QWidget(parent);
    row->setObjectName(QStringLiteral("editorAndSidebar"));
    auto* rowLayout = new QHBoxLayout;
    rowLayout->setContentsMargins(0, 0, 0, 0);
    rowLayout->setSpacing(0);
    delete parent->layout()->replaceWidget(editor, row);
    row->setLayout(rowLayout);
    rowLayout->addWidget(editor, 1);
    rowLayout->addWidget(this);
}

QWidget* SidebarView::viewController(qint64 type) const
{
    return type >= 0 && type < _viewControllers.size() ? _viewControllers[type] : nullptr;
}

void SidebarView::showPane(qint64 type)
{
    finishTransition();
    QWidget* pane = viewController(type);
    if (!pane) {
        return;
    }
    for (QWidget* other : _viewControllers) {
        if (other != pane) {
            other->hide();
        }
    }
    pane->setGeometry(rect());
    pane->show();
    _shownView = pane;
}

void SidebarView::doTransition(QWidget* newView, QWidget* oldView)
{
    finishTransition();
    if (!newView || newView == oldView) {
        showPane(_viewControllers.indexOf(newView));
        return;
    }
    if (QWidget* focused = window()->focusWidget()) {
        focused->clearFocus();
    }
    const QRect bounds = rect();
    newView->setGeometry(bounds.translated(bounds.width(), 0));
    newView->show();
    newView->raise();
    _shownView = newView;
    _leavingView = oldView;

    _transition = new QParallelAnimationGroup(this);
    const auto slide = [this](QWidget* view, QPoint to) {
        auto* animation = new QPropertyAnimation(view, "pos", _transition);
        animation->setDuration(TransitionDuration);
        animation->setEasingCurve(QEasingCurve::OutCubic);
        animation->setEndValue(to);
        _transition->addAnimation(animation);
    };
    if (oldView) {
        slide(oldView, bounds.topLeft() - QPoint(bounds.width(), 0));
    }
    slide(newView, bounds.topLeft());
    connect(_transition, &QAbstractAnimation::finished, this, &SidebarView::finishTransition);
    _transition->start();
}

bool SidebarView::isTransitionRunning() const
{
    return _transition && _transition->state() == QAbstractAnimation::Running;
}

void SidebarView::finishTransition()
{
    if (!_transition) {
        return;
    }
    QParallelAnimationGroup* transition = std::exchange(_transition, nullptr);
    transition->stop();
    transition->deleteLater();
    if (_leavingView && _leavingView != _shownView) {
        _leavingView->hide();
    }
    _leavingView = nullptr;
    if (_shownView) {
        _shownView->setGeometry(rect());
    }
}

void SidebarView::setSearchFieldString(const QString& string)
{
    _searchController->searchField()->setText(string);
}

void SidebarView::updateInformationOfDocument(const Document* document, const QString& syntax)
{
    _infoController->updateInformationOfDocument(document, syntax);
}

void SidebarView::reloadData()
{
    _scriptController->reloadData();
}

void SidebarView::viewFirstResponder(qint64 type)
{
    if (type == SearchType) {
        _searchController->searchField()->setFocus(Qt::OtherFocusReason);
        _searchController->searchField()->selectAll();
    } else if (type == GotoType) {
        _gotoController->gotoField()->setFocus(Qt::OtherFocusReason);
        _gotoController->gotoField()->selectAll();
    }
}

void SidebarView::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    const QColor base = palette().color(QPalette::Window);
    QLinearGradient fill(rect().topLeft(), rect().bottomLeft());
    fill.setColorAt(0, base.lighter(104));
    fill.setColorAt(1, base.darker(104));
    painter.fillRect(rect(), fill);
    // The edge toward the editor, with a soft shadow falling on the sidebar.
    QLinearGradient shadow(QPointF(0, 0), QPointF(6, 0));
    shadow.setColorAt(0, QColor(0, 0, 0, 60));
    shadow.setColorAt(1, QColor(0, 0, 0, 0));
    painter.fillRect(QRect(0, 0, 6, height()), shadow);
    painter.fillRect(QRect(0, 0, 1, height()), QColor(64, 64, 64));
}

void SidebarView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (_shownView && !isTransitionRunning()) {
        _shownView->setGeometry(rect());
    }
}
