#include "window/ScriptController.h"

#include "scripts/ScriptLibrary.h"
#include "scripts/ScriptManager.h"
#include "scripts/ScriptTarget.h"
#include "window/ScriptAlert.h"
#include "window/ScriptSheet.h"
#include "window/ScriptTreeModel.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSet>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

ScriptController::ScriptController(WindowController* controller, QWidget* parent)
    : QWidget(parent)
    , _controller(controller)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    _treeController = new ScriptTreeModel(ScriptManager::sharedScriptManager().library(), this);
    _outlineView = new QTreeView(this);
    _outlineView->setObjectName(QStringLiteral("scriptOutlineView"));
    _outlineView->setModel(_treeController);
    _outlineView->setHeaderHidden(true);
    _outlineView->setFrameShape(QFrame::NoFrame);
    _outlineView->viewport()->setAutoFillBackground(false);
    _outlineView->setExpandsOnDoubleClick(false);
    _outlineView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _outlineView->setDragDropMode(QAbstractItemView::DragDrop);
    _outlineView->setDefaultDropAction(Qt::MoveAction);
    _outlineView->setDragDropOverwriteMode(false);
    _outlineView->setDropIndicatorShown(true);
    _outlineView->setContextMenuPolicy(Qt::CustomContextMenu);
    layout->addWidget(_outlineView);

    connect(_outlineView, &QTreeView::doubleClicked, this,
            [this] { doubleClickedOutlineViewRow(_outlineView); });
    connect(_outlineView, &QWidget::customContextMenuRequested, this, [this](const QPoint& point) {
        if (QMenu* menu = menuNeedsUpdate(point)) {
            menu->popup(_outlineView->viewport()->mapToGlobal(point));
        }
    });
    connect(&ScriptManager::sharedScriptManager(), &ScriptManager::scriptDataSourceChanged, this,
            &ScriptController::reloadData);
    reloadData();
}

void ScriptController::reloadData()
{
    QSet<ScriptObject*> expanded;
    for (const auto& [folder, level] : ScriptManager::sharedScriptManager().library().folders()) {
        const QModelIndex index = _treeController->indexOf(folder);
        if (index.isValid() && _outlineView->isExpanded(index)) {
            expanded.insert(folder.get());
        }
    }
    _treeController->reloadData();
    for (const auto& [folder, level] : ScriptManager::sharedScriptManager().library().folders()) {
        if (expanded.contains(folder.get())) {
            _outlineView->expand(_treeController->indexOf(folder));
        }
    }
}

ScriptObjectPtr ScriptController::selectedObject() const
{
    return _treeController->nodeAt(_outlineView->currentIndex());
}

QMenu* ScriptController::menuNeedsUpdate(const QPoint& position)
{
    const QModelIndex index = _outlineView->indexAt(position);
    if (!index.isValid()) {
        return nullptr;
    }
    _outlineView->setCurrentIndex(index);
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("Run"), this, [this] { doubleClickedOutlineViewRow(_outlineView); });
    menu->addAction(tr("Show Source"), this, &ScriptController::source);
    menu->addAction(tr("Export..."), this, &ScriptController::exportToScript);
    menu->addSeparator();
    menu->addAction(tr("New Name..."), this, &ScriptController::rename);
    menu->addAction(tr("Delete"), this, &ScriptController::removeScriptObject);
    return menu;
}

void ScriptController::removeScriptObject()
{
    ScriptManager::sharedScriptManager().library().remove(selectedObject());
}

void ScriptController::rename()
{
    const ScriptObjectPtr node = selectedObject();
    if (!node) {
        return;
    }
    ScriptSheet sheet(ScriptManager::sharedScriptManager().library(), window(), false);
    sheet.scriptLabel()->setText(tr("New name :"));
    sheet.scriptTitleField()->setText(node->title());
    const QString name = sheet.runSheet();
    if (!name.isEmpty()) {
        renameTo(name);
    }
}

bool ScriptController::renameTo(const QString& name)
{
    const ScriptObjectPtr node = selectedObject();
    if (!node || name.isEmpty()) {
        return false;
    }
    if (!ScriptManager::sharedScriptManager().library().rename(node, name)) {
        ScriptAlert::show(tr("Notice"), tr("Name was not able to be changed."), true);
        return false;
    }
    return true;
}

void ScriptController::source()
{
    const ScriptObjectPtr node = selectedObject();
    if (!node || !node->isLeaf()) {
        return;
    }
    const QString path = ScriptLibrary::filePathOf(node);
    if (node->initApp()) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
    } else if (ScriptTarget* target = ScriptManager::sharedScriptManager().target()) {
        target->openDocumentWithContentsOfURL(path);
    }
}

void ScriptController::exportToScript()
{
    const ScriptObjectPtr node = selectedObject();
    if (!node || !node->isLeaf()) {
        return;
    }
    QFileDialog panel(window());
    panel.setOption(QFileDialog::DontUseNativeDialog, true);
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setWindowModality(Qt::WindowModal);
    panel.selectFile(node->title());
    if (panel.exec() != QDialog::Accepted || panel.selectedFiles().isEmpty()) {
        return;
    }
    QString destination = panel.selectedFiles().first();
    const QString extension = QFileInfo(node->path()).suffix();
    if (!extension.isEmpty() && !destination.endsWith(u'.' + extension)) {
        destination += u'.' + extension;
    }
    QFile::copy(ScriptLibrary::filePathOf(node), destination);
}

void ScriptController::doubleClickedOutlineViewRow(QObject* sender)
{
    if (sender != _outlineView) {
        return;
    }
    const QModelIndex index = _outlineView->currentIndex();
    const ScriptObjectPtr node = _treeController->nodeAt(index);
    if (!node) {
        return;
    }
    if (node->isLeaf()) {
        ScriptManager::sharedScriptManager().runRegisterScript(node);
    } else {
        _outlineView->setExpanded(index, !_outlineView->isExpanded(index));
    }
}
