#include "window/FunctionPopUpModel.h"

#include "window/FunctionPopUp.h"

#include <QFontDatabase>

FunctionPopUpModel::FunctionPopUpModel(QObject* parent)
    : QAbstractListModel(parent)
    , _bold(QFontDatabase::systemFont(QFontDatabase::GeneralFont))
{
    _bold.setBold(true);
    _bold.setPixelSize(11);
}

void FunctionPopUpModel::setItems(std::vector<FunctionMenu::Item> items)
{
    beginResetModel();
    _items = std::move(items);
    _notice = false;
    endResetModel();
}

void FunctionPopUpModel::setNotice(const QString& text)
{
    FunctionMenu::Item item;
    item.title = text;
    setItems({item});
    _notice = true;
}

int FunctionPopUpModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(_items.size());
}

QVariant FunctionPopUpModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= int(_items.size())) {
        return {};
    }
    const FunctionMenu::Item& item = _items[size_t(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return item.isSeparator ? QString() : item.title;
    case Qt::DecorationRole:
        return item.hasKind && !item.isSeparator ? FunctionPopUp::imageForKind(item.kind)
                                                 : QVariant();
    case Qt::FontRole:
        return item.bold ? QVariant(_bold) : QVariant();
    case Qt::AccessibleDescriptionRole:
        return item.isSeparator ? QVariant(QStringLiteral("separator")) : QVariant();
    case FunctionPopUp::RangeStringRole:
        return item.rangeString.isEmpty() ? QVariant() : QVariant(item.rangeString);
    case FunctionPopUp::IndentationRole:
        return item.indentationLevel;
    default:
        return {};
    }
}

Qt::ItemFlags FunctionPopUpModel::flags(const QModelIndex& index) const
{
    if (!index.isValid() || index.row() >= int(_items.size()) || _notice ||
        _items[size_t(index.row())].isSeparator) {
        return Qt::NoItemFlags;
    }
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}
