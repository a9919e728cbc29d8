#include "window/TabWindow.h"

#include "window/DocumentWindow.h"
#include "window/TabBar.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMenuBar>
#include <QPointer>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// Every tab window, the one activated last first.
QList<QPointer<TabWindow>>& windowsInOrder()
{
    static QList<QPointer<TabWindow>> windows;
    return windows;
}

} // namespace

TabWindow::TabWindow(QWidget* parent)
    : QMainWindow(parent)
{
    setObjectName(QStringLiteral("tabWindow"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    _tabBar = new TabBar(central);
    layout->addWidget(_tabBar);
    _stack = new QStackedWidget(central);
    layout->addWidget(_stack, 1);
    setCentralWidget(central);
    menuBar();

    connect(_tabBar, &QTabBar::currentChanged, this, &TabWindow::currentChanged);
    connect(_tabBar, &QTabBar::tabMoved, this, &TabWindow::tabMoved);
    connect(_tabBar, &QTabBar::tabCloseRequested, this, [this](int index) {
        if (DocumentWindow* window = documentWindow(index)) {
            window->close();
        }
    });
    connect(_tabBar, &TabBar::tabDroppedOutside, this, &TabWindow::tabDroppedOutside);
    connect(_stack, &QStackedWidget::widgetRemoved, this, &TabWindow::widgetRemoved);
    windowsInOrder().prepend(this);
}

TabWindow::~TabWindow()
{
    // The tabs go with the window; what they do on their way out is no longer this window's.
    disconnect(_stack, nullptr, this, nullptr);
    disconnect(_tabBar, nullptr, this, nullptr);
    for (const QPointer<DocumentWindow>& window : std::as_const(_windows)) {
        if (window) {
            window->removeEventFilter(this);
            disconnect(window, nullptr, this, nullptr);
        }
    }
    if (_shownMenuBar) {
        _shownMenuBar->removeEventFilter(this);
    }
    windowsInOrder().removeAll(this);
}

QList<TabWindow*> TabWindow::tabWindows()
{
    QList<TabWindow*> windows;
    for (const QPointer<TabWindow>& window : std::as_const(windowsInOrder())) {
        if (window) {
            windows.append(window);
        }
    }
    return windows;
}

TabWindow* TabWindow::frontTabWindow()
{
    if (auto* active = qobject_cast<TabWindow*>(QApplication::activeWindow())) {
        return active;
    }
    for (TabWindow* window : tabWindows()) {
        if (window->isVisible() && !window->_closing) {
            return window;
        }
    }
    return nullptr;
}

int TabWindow::count() const
{
    return int(_windows.size());
}

DocumentWindow* TabWindow::documentWindow(int index) const
{
    return index >= 0 && index < _windows.size() ? _windows[index].data() : nullptr;
}

int TabWindow::indexOf(const DocumentWindow* window) const
{
    for (int i = 0; i < _windows.size(); ++i) {
        if (_windows[i] == window) {
            return i;
        }
    }
    return -1;
}

DocumentWindow* TabWindow::currentDocumentWindow() const
{
    return documentWindow(_tabBar->currentIndex());
}

void TabWindow::setCurrentDocumentWindow(DocumentWindow* window)
{
    const int index = indexOf(window);
    if (index >= 0) {
        _tabBar->setCurrentIndex(index);
    }
}

void TabWindow::insertDocumentWindow(int index, DocumentWindow* window)
{
    if (!window) {
        return;
    }
    TabWindow* source = window->tabWindow();
    if (source == this) {
        const int from = indexOf(window);
        _tabBar->moveTab(from, std::clamp(index < 0 ? count() - 1 : index, 0, count() - 1));
        setCurrentDocumentWindow(window);
        return;
    }
    if (source) {
        window->removeEventFilter(source);
        disconnect(window, nullptr, source, nullptr);
        source->_stack->removeWidget(window);
    }
    if (index < 0 || index > count()) {
        index = count();
    }
    // The tab window shows the tab's menus in its own menu bar.
    if (QWidget* menus = window->menuWidget()) {
        menus->hide();
    }
    _windows.insert(index, window);
    _stack->insertWidget(index, window);
    window->installEventFilter(this);
    connect(window, &DocumentWindow::closed, this, [this, window] {
        // Gone from the tabs at once, before the window itself is deleted.
        _stack->removeWidget(window);
    });
    _tabBar->insertTab(index, QString());
    updateTab(window);
    setCurrentDocumentWindow(window);
}

void TabWindow::selectNextTab()
{
    if (count() > 1) {
        _tabBar->setCurrentIndex((_tabBar->currentIndex() + 1) % count());
    }
}

void TabWindow::selectPreviousTab()
{
    if (count() > 1) {
        _tabBar->setCurrentIndex((_tabBar->currentIndex() + count() - 1) % count());
    }
}

TabWindow* TabWindow::moveTabToNewWindow(DocumentWindow* window, std::optional<QPoint> topLeft)
{
    if (indexOf(window) < 0 || count() < 2) {
        return nullptr;
    }
    auto* target = new TabWindow;
    target->resize(size());
    target->move(topLeft.value_or(pos() + QPoint(32, 32)));
    target->insertDocumentWindow(-1, window);
    target->bringToFront();
    return target;
}

std::pair<TabWindow*, int> TabWindow::dropTarget(const QPoint& globalPosition)
{
    for (TabWindow* window : tabWindows()) {
        TabBar* bar = window->_tabBar;
        const QPoint local = bar->mapFromGlobal(globalPosition);
        if (!window->isVisible() || window->_closing || !bar->rect().contains(local)) {
            continue;
        }
        int index = bar->tabAt(local);
        if (index < 0) {
            index = bar->count();
        } else if (local.x() > bar->tabRect(index).center().x()) {
            ++index;
        }
        return {window, index};
    }
    return {nullptr, -1};
}

void TabWindow::closeEvent(QCloseEvent* event)
{
    // The tabs with unsaved changes first, each shown while its question is asked; a Cancel
    // keeps that tab and the window, and the tabs not asked about stay as they were.
    _closing = true;
    const auto closeTabs = [this](bool modifiedOnly) {
        for (const QPointer<DocumentWindow>& window : QList(_windows)) {
            if (!window || (modifiedOnly && !window->isWindowModified())) {
                continue;
            }
            setCurrentDocumentWindow(window);
            if (!window->close()) {
                return false;
            }
        }
        return true;
    };
    const bool closed = closeTabs(true) && closeTabs(false);
    _closing = false;
    if (!closed) {
        event->ignore();
        return;
    }
    event->accept();
}

void TabWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        QList<QPointer<TabWindow>>& windows = windowsInOrder();
        windows.removeAll(this);
        windows.prepend(this);
    }
    QMainWindow::changeEvent(event);
}

bool TabWindow::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (watched == _shownMenuBar &&
        (type == QEvent::ActionAdded || type == QEvent::ActionRemoved)) {
        showMenusOf(currentDocumentWindow());
    } else if (type == QEvent::WindowTitleChange || type == QEvent::ModifiedChange) {
        auto* window = qobject_cast<DocumentWindow*>(watched);
        if (window && indexOf(window) >= 0) {
            updateTab(window);
            if (window == currentDocumentWindow()) {
                updateTitle();
            }
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void TabWindow::currentChanged(int index)
{
    DocumentWindow* window = documentWindow(index);
    if (window) {
        _stack->setCurrentWidget(window);
    }
    showMenusOf(window);
    updateTitle();
    if (window) {
        // The tab's editor takes the keyboard, where the user left it.
        QWidget* focus = window->focusWidget();
        (focus ? focus : window)->setFocus(Qt::TabFocusReason);
    }
}

void TabWindow::tabMoved(int from, int to)
{
    _windows.move(from, to);
}

void TabWindow::widgetRemoved(int index)
{
    Q_UNUSED(index);
    // A tab whose window left the stack (closed, deleted or moved elsewhere) goes too.
    for (int i = count() - 1; i >= 0; --i) {
        if (!_windows[i] || _stack->indexOf(_windows[i]) < 0) {
            _windows.removeAt(i);
            _tabBar->removeTab(i);
        }
    }
    if (_windows.isEmpty() && !_closing) {
        close();
    }
}

void TabWindow::tabDroppedOutside(int index, const QPoint& globalPosition)
{
    DocumentWindow* window = documentWindow(index);
    if (!window) {
        return;
    }
    const auto [target, at] = dropTarget(globalPosition);
    if (target == this) {
        return;
    }
    if (target) {
        target->insertDocumentWindow(at, window);
        target->bringToFront();
        return;
    }
    // Let go away from every tab bar: a window of its own, its tab bar under the pointer.
    const QPoint offset = _tabBar->mapTo(this, _tabBar->tabRect(index).center());
    moveTabToNewWindow(window, globalPosition - offset - (geometry().topLeft() - pos()));
}

void TabWindow::updateTab(DocumentWindow* window)
{
    const int index = indexOf(window);
    if (index < 0) {
        return;
    }
    // As the window title shows it: "[*]" is where the modified mark goes.
    QString title = window->windowTitle();
    title.replace(QStringLiteral("[*]"), window->isWindowModified() ? QStringLiteral("*") : "");
    const QString path = window->windowFilePath();
    _tabBar->setTabToolTip(index, path.isEmpty() ? title : path);
    // A tab's text would take an ampersand as a shortcut mark.
    _tabBar->setTabText(index, title.replace(u'&', QStringLiteral("&&")));
}

void TabWindow::updateTitle()
{
    DocumentWindow* window = currentDocumentWindow();
    setWindowFilePath(window ? window->windowFilePath() : QString());
    setWindowTitle(window ? window->windowTitle() : QString());
    setWindowModified(window && window->isWindowModified());
}

void TabWindow::showMenusOf(DocumentWindow* window)
{
    QMenuBar* bar = menuBar();
    if (_shownMenuBar) {
        _shownMenuBar->removeEventFilter(this);
    }
    for (QAction* action : bar->actions()) {
        bar->removeAction(action);
    }
    // The tab's own menu bar stays hidden inside it: with only the current tab's menus in a
    // visible menu bar, only its shortcuts answer.
    _shownMenuBar = window ? qobject_cast<QMenuBar*>(window->menuWidget()) : nullptr;
    if (_shownMenuBar) {
        _shownMenuBar->hide();
        bar->addActions(_shownMenuBar->actions());
        _shownMenuBar->installEventFilter(this);
    }
}

void TabWindow::bringToFront()
{
    show();
    raise();
    activateWindow();
}
