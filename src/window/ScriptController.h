#pragma once

#include "scripts/ScriptObject.h"

#include <QWidget>

class QMenu;
class QTreeView;
class ScriptTreeModel;
class WindowController;

/// The script pane of a document window's sidebar: the library as a tree. A double click
/// runs a script or opens and closes a folder; the context menu runs, shows, exports,
/// renames or deletes the clicked entry; entries are rearranged by dragging them between
/// rows. The pane reloads whenever the library changes.
class ScriptController : public QWidget
{
    Q_OBJECT

public:
    ScriptController(WindowController* controller, QWidget* parent = nullptr);

    QTreeView* outlineView() const { return _outlineView; }
    ScriptTreeModel* treeController() const { return _treeController; }
    WindowController* windowController() const { return _controller; }

    /// Shows the application's library again, keeping open folders open.
    void reloadData();
    /// The entry of the clicked (selected) row; null when none.
    ScriptObjectPtr selectedObject() const;

    /// The context menu's commands, on selectedObject().
    void removeScriptObject();
    void rename();
    /// Gives the selected entry a new name without asking; false after the alert when
    /// the file name is taken.
    bool renameTo(const QString& name);
    void source();
    void exportToScript();
    /// Runs the selected script, or opens or closes the selected folder.
    void doubleClickedOutlineViewRow(QObject* sender);
    /// The context menu for the row at `position` (viewport coordinates); selects it.
    QMenu* menuNeedsUpdate(const QPoint& position);

private:
    WindowController* _controller;
    QTreeView* _outlineView = nullptr;
    ScriptTreeModel* _treeController = nullptr;
};
