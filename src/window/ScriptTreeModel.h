#pragma once

#include "scripts/ScriptObject.h"

#include <QAbstractItemModel>
#include <QIcon>

#include <memory>

class ScriptLibrary;
#include <vector>

/// The script library as a tree for the script pane: rows show the nodes' titles, folders
/// hold their entries. Rows can be dragged (type "ScriptObject") and dropped between other
/// rows, never onto one; a drop moves the entries in the library.
class ScriptTreeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    static constexpr const char* MimeType = "ScriptObject";

    /// The tree of `library`.
    explicit ScriptTreeModel(ScriptLibrary& library, QObject* parent = nullptr);
    ~ScriptTreeModel() override;

    /// The desktop's icon for a script's file type (looked up once per extension) or for
    /// a folder, as the pane and the Scripts menu show it.
    static QIcon iconOf(const ScriptObjectPtr& node);

    /// Shows the application's scriptDataSource again.
    void reloadData();
    ScriptObjectPtr nodeAt(const QModelIndex& index) const;
    QModelIndex indexOf(const ScriptObjectPtr& node) const;
    /// The nodes of the last drag, in drag order.
    const ScriptObjectList& dragObjects() const { return _dragObjects; }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    /// Only between rows: `row` -1 (onto a row, or onto no row) is refused.
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

private:
    struct Item;
    void build(Item* item, const ScriptObjectList& nodes);
    Item* itemAt(const QModelIndex& index) const;

    ScriptLibrary& _library;
    std::unique_ptr<Item> _root;
    mutable ScriptObjectList _dragObjects;
};
