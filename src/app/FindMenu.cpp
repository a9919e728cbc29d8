#include "app/FindMenu.h"

#include "window/SearchController.h"
#include "window/DocumentWindow.h"
#include "window/SidebarView.h"
#include "window/WindowController.h"

#include <QAction>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>

FindMenu::FindMenu(WindowController* controller)
    : QObject(controller)
    , _controller(controller)
{
    buildFindMenu();
    if (auto* view =
            controller->window()->menuBar()->findChild<QMenu*>(QStringLiteral("viewMenu"))) {
        addViewItems(view);
    }
}

void FindMenu::buildFindMenu()
{
    QMenuBar* bar = _controller->window()->menuBar();
    _findMenu = new QMenu(tr("F&ind"), bar);
    _findMenu->setObjectName(QStringLiteral("findMenu"));
    // After Edit, where a text editor's Find menu is looked for.
    QAction* before = nullptr;
    if (auto* view = bar->findChild<QMenu*>(QStringLiteral("viewMenu"))) {
        before = view->menuAction();
    }
    bar->insertMenu(before, _findMenu);

    WindowController* c = _controller;
    const auto add = [this](const QString& title, const QKeySequence& keys, auto command) {
        QAction* action = _findMenu->addAction(title);
        action->setShortcut(keys);
        connect(action, &QAction::triggered, _controller, command);
        return action;
    };
    add(tr("Find…"), QKeySequence(tr("Ctrl+F")),
        [c] { c->showSidebarType(SidebarView::SearchType); });
    // The search pane with the replacement field ready for typing, as in other editors.
    add(tr("Replace…"), QKeySequence(tr("Ctrl+H")), [c] {
        c->showSidebarType(SidebarView::SearchType);
        if (c->isSidebarView() && c->lastSelectedType() == SidebarView::SearchType) {
            QLineEdit* field = c->sidebarView()->searchController()->replaceFeild();
            field->setFocus(Qt::ShortcutFocusReason);
            field->selectAll();
        }
    });
    add(tr("Find Next"), QKeySequence(tr("Ctrl+G")), [c] { c->findNext(c); });
    add(tr("Find Previous"), QKeySequence(tr("Ctrl+Shift+G")), [c] { c->findPrevious(c); });
    add(tr("Use Selection for Find"), QKeySequence(tr("Ctrl+E")),
        [c] { c->useSelectionforFind(c); });
    add(tr("Jump to Selection"), QKeySequence(tr("Ctrl+J")), [c] { c->jumpToSelection(c); });
    _findMenu->addSeparator();
    add(tr("Replace and Find Next"), QKeySequence(), [c] { c->replaceAndFindNext(c); });
    add(tr("Replace and Find Previous"), QKeySequence(), [c] { c->replaceAndFindPrevious(c); });
    add(tr("Replace All"), QKeySequence(), [c] { c->replaceAll(c); });
    _findMenu->addSeparator();
    add(tr("Go to Line…"), QKeySequence(tr("Ctrl+L")),
        [c] { c->showSidebarType(SidebarView::GotoType); });
}

void FindMenu::addViewItems(QMenu* view)
{
    view->addSeparator();
    _sidebarMenu = view->addMenu(tr("Sidebar"));
    _sidebarMenu->setObjectName(QStringLiteral("sidebarMenu"));
    const QString titles[] = {tr("Search"), tr("Go to Line"), tr("Information"),
                              tr("Script Library")};
    for (int type = 0; type < 4; ++type) {
        QAction* item = _sidebarMenu->addAction(titles[type]);
        // The pane's type is the item's tag, as the sidebar command reads it.
        item->setProperty("tag", type);
        item->setCheckable(true);
        item->setShortcut(QKeySequence(QStringLiteral("Ctrl+Alt+%1").arg(type + 1)));
        connect(item, &QAction::triggered, _controller,
                [controller = _controller, item] { controller->swicthSidebar(item); });
    }
    connect(_sidebarMenu, &QMenu::aboutToShow, this, [this] {
        for (QAction* item : _sidebarMenu->actions()) {
            item->setChecked(_controller->isSidebarView() &&
                             item->property("tag").toLongLong() == _controller->lastSelectedType());
        }
    });

    view->addSeparator();
    const auto addToggle = [this, view](const QString& title, int tag, bool checkable,
                                        void (WindowController::*toggle)(QObject*)) {
        QAction* item = view->addAction(title);
        item->setProperty("tag", tag);
        item->setCheckable(checkable);
        connect(item, &QAction::triggered, _controller,
                [controller = _controller, item, toggle] { (controller->*toggle)(item); });
        _controller->validateMenuItem(item);
        return item;
    };
    addToggle(tr("Show Split Pane"), WindowController::SplitPaneTag, false,
              &WindowController::toggleSplitView);
    addToggle(tr("Split Side by Side"), WindowController::VerticalSplitTag, true,
              &WindowController::toggleUsingVerticalSplitPane);
    QAction* focus = view->addAction(tr("Focus on Next Split Pane"));
    focus->setShortcut(QKeySequence(tr("Ctrl+Alt+O")));
    connect(focus, &QAction::triggered, _controller,
            [controller = _controller] { controller->toggleFocusOnNextSplitPane(controller); });
}
