#pragma once

#include <QtGlobal>

class QObject;
class WindowController;

/// Opens, switches and closes a window's sidebar. Outside full screen the window grows by the
/// sidebar, so that the text keeps its width; the window identifier records the pane shown,
/// so that the window opens with it again.
class SidebarController
{
public:
    explicit SidebarController(WindowController& controller)
        : _controller(controller)
    {}

    bool isShown() const { return _isSidebarView; }
    /// The pane shown last (shown now when the sidebar is).
    qint64 lastSelectedType() const { return _lastSelectedType; }
    /// With a sender, opens, switches or closes the sidebar with the pane of the sender's
    /// "tag"; with none, shows the pane recorded in the window identifier.
    void swicthSidebar(QObject* sender);
    /// Opens the sidebar with the pane of `type`, switches to it, or closes the sidebar when
    /// it shows that pane.
    void swicthSidebarType(qint64 type);
    /// Shows the pane of `type`, opening the sidebar or switching to it, and never closes it.
    void showSidebarType(qint64 type);

private:
    WindowController& _controller;
    bool _isSidebarView = false;
    bool _isFullScreen = false;
    qint64 _lastSelectedType = 0;
};
