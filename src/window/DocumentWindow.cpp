#include "window/DocumentWindow.h"

#include "window/FunctionPopUp.h"
#include "window/InformationBar.h"
#include "window/StatusField.h"
#include "window/TabWindow.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QProgressBar>
#include <QSplitter>
#include <QStyle>
#include <QStyleOptionButton>
#include <QVBoxLayout>

DocumentWindow::DocumentWindow(QWidget* parent)
    : QMainWindow(parent)
{
    setAttribute(Qt::WA_DeleteOnClose);
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    auto* top = new QHBoxLayout;
    top->setContentsMargins(4, 2, 4, 2);
    _functionPopUp = new FunctionPopUp(central);
    _functionPopUp->setObjectName(QStringLiteral("functionPopUp"));
    _functionPopUp->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    _functionPopUp->setMinimumContentsLength(24);
    _functionPopUp->hide();
    top->addWidget(_functionPopUp);
    top->addStretch(1);
    layout->addLayout(top);

    _barArea = new QWidget(central);
    _barArea->setObjectName(QStringLiteral("informationBars"));
    auto* bars = new QVBoxLayout(_barArea);
    bars->setContentsMargins(4, 0, 4, 2);
    bars->setSpacing(2);
    _barArea->hide();
    layout->addWidget(_barArea);

    _splitView = new QSplitter(Qt::Vertical, central);
    _splitView->setObjectName(QStringLiteral("splitView"));
    _splitView->setChildrenCollapsible(false);
    layout->addWidget(_splitView, 1);

    auto* status = new QHBoxLayout;
    status->setContentsMargins(8, 2, 8, 2);
    // The status text changes with every key. In a layout, each change would have the
    // whole window laid out again; in a field of its own it is only placed in that field.
    _infoArea = new QWidget(central);
    _infoField = new StatusField(_infoArea);
    _infoField->setObjectName(QStringLiteral("infoField"));
    _infoArea->setFixedHeight(_infoField->sizeHint().height());
    _infoArea->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    _infoArea->installEventFilter(this);
    status->addWidget(_infoArea, 1);
    _indicator = new QProgressBar(central);
    _indicator->setRange(0, 0);
    _indicator->setMaximumSize(80, 12);
    _indicator->setTextVisible(false);
    _indicator->hide();
    status->addWidget(_indicator);
    layout->addLayout(status);

    setCentralWidget(central);
    resize(900, 700);
}

void DocumentWindow::addInformationBar(InformationBar* bar)
{
    bar->setParent(_barArea);
    _barArea->layout()->addWidget(bar);
    bar->show();
    _bars.removeIf([](const QPointer<InformationBar>& shown) { return shown.isNull(); });
    _bars.append(bar);
    _barArea->show();
    connect(bar, &InformationBar::dismissed, this,
            [this] { _barArea->setVisible(!informationBars().isEmpty()); });
}

QList<InformationBar*> DocumentWindow::informationBars() const
{
    QList<InformationBar*> bars;
    for (const QPointer<InformationBar>& bar : _bars) {
        if (bar && !bar->isHidden()) {
            bars.append(bar);
        }
    }
    return bars;
}

void DocumentWindow::closeEvent(QCloseEvent* event)
{
    if (_closeHandler && !_closeHandler()) {
        event->ignore();
        return;
    }
    event->accept();
    Q_EMIT closed();
}

void DocumentWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        Q_EMIT becameActive();
    }
    if (event->type() == QEvent::ParentChange && tabWindow()) {
        Q_EMIT tabWindowChanged();
    }
    QMainWindow::changeEvent(event);
}

QIcon DocumentWindow::mixedStateIcon() const
{
    QStyleOptionButton box;
    box.rect = QRect(0, 0, style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, this),
                     style()->pixelMetric(QStyle::PM_IndicatorHeight, nullptr, this));
    box.state = QStyle::State_Enabled | QStyle::State_NoChange;
    const qreal ratio = devicePixelRatioF();
    QPixmap mark(box.rect.size() * ratio);
    mark.setDevicePixelRatio(ratio);
    mark.fill(Qt::transparent);
    QPainter painter(&mark);
    style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, &painter, this);
    return QIcon(mark);
}

TabWindow* DocumentWindow::tabWindow() const
{
    return isWindow() ? nullptr : qobject_cast<TabWindow*>(window());
}

int DocumentWindow::tabIndex() const
{
    const TabWindow* tabs = tabWindow();
    return tabs ? tabs->indexOf(this) : -1;
}

bool DocumentWindow::isFrontTab() const
{
    const TabWindow* tabs = tabWindow();
    return !tabs || tabs->currentDocumentWindow() == this;
}

void DocumentWindow::present(bool asTab)
{
    if (asTab) {
        presentAsTab(TabWindow::frontTabWindow());
        return;
    }
    show();
    raise();
    activateWindow();
}

TabWindow* DocumentWindow::presentAsTab(TabWindow* tabWindow)
{
    if (!tabWindow) {
        tabWindow = new TabWindow;
        tabWindow->resize(size());
    }
    tabWindow->insertDocumentWindow(-1, this);
    bringToFront();
    return tabWindow;
}

void DocumentWindow::selectTab()
{
    if (TabWindow* tabs = tabWindow()) {
        tabs->setCurrentDocumentWindow(this);
    }
}

void DocumentWindow::bringToFront()
{
    selectTab();
    QWidget* shown = window();
    shown->show();
    shown->raise();
    shown->activateWindow();
}

bool DocumentWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == _infoArea && event->type() == QEvent::Resize) {
        _infoField->setGeometry(_infoArea->rect());
    }
    return QMainWindow::eventFilter(watched, event);
}
