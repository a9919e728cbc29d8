#include "window/ScriptTreeModel.h"

#include "scripts/ScriptLibrary.h"

#include <QFileIconProvider>
#include <QFileInfo>
#include <QHash>
#include <QMimeData>

struct ScriptTreeModel::Item {
    ScriptObjectPtr node;
    Item* parent = nullptr;
    int row = 0;
    std::vector<std::unique_ptr<Item>> children;
};

ScriptTreeModel::ScriptTreeModel(ScriptLibrary& library, QObject* parent)
    : QAbstractItemModel(parent)
    , _library(library)
    , _root(std::make_unique<Item>())
{
    reloadData();
}

ScriptTreeModel::~ScriptTreeModel() = default;

QIcon ScriptTreeModel::iconOf(const ScriptObjectPtr& node)
{
    static QHash<QString, QIcon> icons;
    const QFileIconProvider provider;
    if (!node->isLeaf()) {
        return provider.icon(QFileIconProvider::Folder);
    }
    const QString extension = QFileInfo(node->path()).suffix();
    auto found = icons.find(extension);
    if (found == icons.end()) {
        found = icons.insert(extension, provider.icon(QFileInfo(ScriptLibrary::filePathOf(node))));
    }
    return *found;
}

void ScriptTreeModel::build(Item* item, const ScriptObjectList& nodes)
{
    for (const ScriptObjectPtr& node : nodes) {
        auto child = std::make_unique<Item>();
        child->node = node;
        child->parent = item;
        child->row = int(item->children.size());
        if (!node->isLeaf()) {
            build(child.get(), node->children().value_or(ScriptObjectList()));
        }
        item->children.push_back(std::move(child));
    }
}

void ScriptTreeModel::reloadData()
{
    beginResetModel();
    _root = std::make_unique<Item>();
    build(_root.get(), _library.entries(nullptr));
    endResetModel();
}

ScriptTreeModel::Item* ScriptTreeModel::itemAt(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<Item*>(index.internalPointer()) : _root.get();
}

ScriptObjectPtr ScriptTreeModel::nodeAt(const QModelIndex& index) const
{
    return index.isValid() ? itemAt(index)->node : nullptr;
}

QModelIndex ScriptTreeModel::indexOf(const ScriptObjectPtr& node) const
{
    std::vector<Item*> pending{_root.get()};
    while (!pending.empty()) {
        Item* item = pending.back();
        pending.pop_back();
        for (const auto& child : item->children) {
            if (child->node == node) {
                return createIndex(child->row, 0, child.get());
            }
            pending.push_back(child.get());
        }
    }
    return {};
}

QModelIndex ScriptTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    Item* item = itemAt(parent);
    if (column != 0 || row < 0 || size_t(row) >= item->children.size()) {
        return {};
    }
    return createIndex(row, 0, item->children[size_t(row)].get());
}

QModelIndex ScriptTreeModel::parent(const QModelIndex& index) const
{
    Item* item = itemAt(index);
    if (!index.isValid() || item->parent == _root.get()) {
        return {};
    }
    return createIndex(item->parent->row, 0, item->parent);
}

int ScriptTreeModel::rowCount(const QModelIndex& parent) const
{
    return parent.column() > 0 ? 0 : int(itemAt(parent)->children.size());
}

int ScriptTreeModel::columnCount(const QModelIndex&) const
{
    return 1;
}

QVariant ScriptTreeModel::data(const QModelIndex& index, int role) const
{
    const ScriptObjectPtr node = nodeAt(index);
    if (!node) {
        return {};
    }
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) {
        return node->title();
    }
    if (role == Qt::DecorationRole) {
        return iconOf(node);
    }
    return {};
}

Qt::ItemFlags ScriptTreeModel::flags(const QModelIndex& index) const
{
    if (!index.isValid()) {
        return Qt::ItemIsDropEnabled;
    }
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
    if (!nodeAt(index)->isLeaf()) {
        flags |= Qt::ItemIsDropEnabled;
    }
    return flags;
}

Qt::DropActions ScriptTreeModel::supportedDragActions() const
{
    return Qt::MoveAction;
}

Qt::DropActions ScriptTreeModel::supportedDropActions() const
{
    return Qt::MoveAction;
}

QStringList ScriptTreeModel::mimeTypes() const
{
    return {QString::fromLatin1(MimeType)};
}

QMimeData* ScriptTreeModel::mimeData(const QModelIndexList& indexes) const
{
    // The model keeps the dragged nodes; the data only says what is dragged.
    _dragObjects.clear();
    for (const QModelIndex& index : indexes) {
        if (ScriptObjectPtr node = nodeAt(index); node && !_dragObjects.contains(node)) {
            _dragObjects.append(node);
        }
    }
    auto* data = new QMimeData;
    data->setData(QString::fromLatin1(MimeType), QByteArray::number(_dragObjects.size()));
    return data;
}

bool ScriptTreeModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int row, int,
                                      const QModelIndex&) const
{
    return data && data->hasFormat(QString::fromLatin1(MimeType)) && row != -1 &&
           !_dragObjects.isEmpty();
}

bool ScriptTreeModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row,
                                   int column, const QModelIndex& parent)
{
    if (!canDropMimeData(data, action, row, column, parent)) {
        return false;
    }
    const ScriptObjectList moved = _dragObjects;
    _dragObjects.clear();
    // The library tells every pane, this one included, to reload.
    return _library.move(moved, nodeAt(parent), row);
}
