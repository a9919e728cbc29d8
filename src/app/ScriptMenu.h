#pragma once

#include "scripts/ScriptObject.h"

#include <QObject>

class QAction;
class QMenu;
class QMenuBar;
class WindowController;

Q_DECLARE_METATYPE(ScriptObjectPtr)

/// The Scripts menu of a document window: its fixed entries (tag 3, among them "Stop
/// Script", enabled while a script runs), the library's
/// scripts and folders as items and submenus, "Import Script..." and "Open Script
/// Dictionary...". It is rebuilt whenever the library changes.
class ScriptMenu : public QObject
{
    Q_OBJECT

public:
    static constexpr int FixedTag = 3;

    /// Adds the Scripts menu to the window's menu bar.
    static QMenu* addScriptsMenu(QMenuBar* bar, WindowController* controller);

    ScriptMenu(QMenu* menu, WindowController* controller);
    QMenu* supportMenu() const { return _supportMenu; }

    /// Rebuilds the menu from the library: every item but the fixed ones is replaced.
    void makeSupportMenuItems(QMenu* menu);
    void updateSupportMenuItems() { makeSupportMenuItems(_supportMenu); }
    void addMenuOfScriptObject(const ScriptObjectPtr& node, QMenu* menu);
    void addMenuOfScriptObjectFolder(const ScriptObjectPtr& node, QMenu* menu);
    /// Runs the script of a menu entry (the node is the item's data).
    void runRegisterScript(QAction* item);

private:
    void addFixedItems();

    QMenu* _supportMenu;
    WindowController* _controller;
};
