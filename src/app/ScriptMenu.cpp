#include "app/ScriptMenu.h"

#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/ScriptCommands.h"
#include "scripts/ScriptLibrary.h"
#include "scripts/ScriptManager.h"
#include "window/DocumentWindow.h"
#include "window/ScriptTreeModel.h"
#include "window/WindowController.h"

#include <QAction>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QStyle>

QMenu* ScriptMenu::addScriptsMenu(QMenuBar* bar, WindowController* controller)
{
    QMenu* menu = bar->addMenu(tr("&Scripts"));
    menu->setObjectName(QStringLiteral("scriptsMenu"));
    new ScriptMenu(menu, controller);
    return menu;
}

ScriptMenu::ScriptMenu(QMenu* menu, WindowController* controller)
    : QObject(menu)
    , _supportMenu(menu)
    , _controller(controller)
{
    addFixedItems();
    makeSupportMenuItems(menu);
    connect(&ScriptManager::sharedScriptManager(), &ScriptManager::scriptDataSourceChanged, this,
            &ScriptMenu::updateSupportMenuItems);
}

void ScriptMenu::addFixedItems()
{
    QWidget* window = _controller->window();
    const auto fixed = [](QAction* item) {
        item->setProperty("tag", FixedTag);
        return item;
    };
    QAction* run = fixed(_supportMenu->addAction(
        tr("Run Script"), this, [this] { ScriptCommands::runScript(_controller); }));
    // The first fixed entry carries the library's image.
    run->setIcon(QFileIconProvider().icon(QFileIconProvider::Desktop).pixmap(16, 16));
    // Enabled while a script's process runs, in every window's menu.
    ScriptManager& manager = ScriptManager::sharedScriptManager();
    QAction* stop = fixed(_supportMenu->addAction(
        tr("Stop Script"), this, [] { ScriptManager::sharedScriptManager().stopProcess(); }));
    stop->setObjectName(QStringLiteral("stopScript"));
    stop->setEnabled(manager.isFindRunning());
    connect(&manager, &ScriptManager::processStarted, stop, [stop] { stop->setEnabled(true); });
    connect(&manager, &ScriptManager::processStopped, stop, [stop] { stop->setEnabled(false); });
    fixed(_supportMenu->addAction(tr("Add Script..."), this,
                                  [this] { ScriptCommands::addScript(_controller); }));
    fixed(_supportMenu->addAction(tr("Add Script Folder..."), this,
                                  [window] { ScriptCommands::addScriptFolder(window); }));
    fixed(_supportMenu->addSeparator());
    fixed(_supportMenu->addAction(tr("Script ReadMe"), this, [] { ScriptCommands::readMe(); }));
    fixed(
        _supportMenu->addAction(tr("Get Scripts..."), this, [] { ScriptCommands::getToScript(); }));
}

void ScriptMenu::makeSupportMenuItems(QMenu* menu)
{
    for (QAction* item : menu->actions()) {
        if (item->property("tag").toInt() != FixedTag) {
            menu->removeAction(item);
            if (QMenu* submenu = item->menu()) {
                submenu->deleteLater();
            } else if (item->parent() == menu || item->parent() == this) {
                item->deleteLater();
            }
        }
    }
    const ScriptObjectList entries =
        ScriptManager::sharedScriptManager().library().entries(nullptr);
    if (!entries.isEmpty()) {
        menu->addSeparator();
    }
    for (const ScriptObjectPtr& node : entries) {
        if (node->isLeaf()) {
            addMenuOfScriptObject(node, menu);
        } else {
            addMenuOfScriptObjectFolder(node, menu);
        }
    }
    menu->addSeparator();
    QWidget* window = _controller->window();
    menu->addAction(tr("Import Script..."), this,
                    [window] { ScriptCommands::importToScript(window); });
    menu->addAction(tr("Open Script Dictionary..."), this,
                    [] { Application::instance()->delegate().openScriptDictionary(nullptr); });
}

void ScriptMenu::addMenuOfScriptObject(const ScriptObjectPtr& node, QMenu* menu)
{
    const QIcon icon = ScriptTreeModel::iconOf(node);
    QAction* item = menu->addAction(node->title());
    item->setData(QVariant::fromValue(node));
    if (!icon.isNull()) {
        item->setIcon(icon.pixmap(16, 16));
    }
    connect(item, &QAction::triggered, this, [this, item] { runRegisterScript(item); });
}

void ScriptMenu::addMenuOfScriptObjectFolder(const ScriptObjectPtr& node, QMenu* menu)
{
    QMenu* submenu = menu->addMenu(node->title());
    submenu->setIcon(QFileIconProvider().icon(QFileIconProvider::Folder).pixmap(16, 16));
    submenu->menuAction()->setData(QVariant::fromValue(node));
    for (const ScriptObjectPtr& child : node->children().value_or(ScriptObjectList())) {
        if (child->isLeaf()) {
            addMenuOfScriptObject(child, submenu);
        } else {
            addMenuOfScriptObjectFolder(child, submenu);
        }
    }
}

void ScriptMenu::runRegisterScript(QAction* item)
{
    ScriptManager::sharedScriptManager().runRegisterScript(item->data().value<ScriptObjectPtr>());
}
