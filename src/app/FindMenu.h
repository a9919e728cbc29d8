#pragma once

#include <QObject>

class QAction;
class QMenu;
class WindowController;

/// The Find menu of a document window, and the View menu's sidebar and split-pane items.
/// Every command acts on the window's main text view or its sidebar.
class FindMenu : public QObject
{
    Q_OBJECT

public:
    /// Adds the Find menu after the Edit menu, and the sidebar and split items at the end
    /// of the View menu ("viewMenu"), to the controller's window.
    explicit FindMenu(WindowController* controller);

    QMenu* findMenu() const { return _findMenu; }
    QMenu* sidebarMenu() const { return _sidebarMenu; }

private:
    void buildFindMenu();
    void addViewItems(QMenu* view);

    WindowController* _controller;
    QMenu* _findMenu = nullptr;
    QMenu* _sidebarMenu = nullptr;
};
