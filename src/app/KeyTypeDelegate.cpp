#include "app/KeyTypeDelegate.h"

#include "app/SyntaxEntryTableModel.h"

#include <QComboBox>

QWidget* KeyTypeDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                       const QModelIndex& index) const
{
    const auto* model = qobject_cast<const SyntaxEntryTableModel*>(index.model());
    if (!model || !model->isKeyTypeColumn(index.column())) {
        return QStyledItemDelegate::createEditor(parent, option, index);
    }
    auto* popUp = new QComboBox(parent);
    popUp->setFrame(false);
    popUp->addItems(SyntaxEntryTableModel::keyTypes());
    // The choice is written as soon as it is made.
    connect(popUp, &QComboBox::activated, this,
            [this, popUp] { Q_EMIT const_cast<KeyTypeDelegate*>(this)->commitData(popUp); });
    return popUp;
}

void KeyTypeDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (auto* popUp = qobject_cast<QComboBox*>(editor)) {
        popUp->setCurrentIndex(index.data(Qt::EditRole).toInt());
        return;
    }
    QStyledItemDelegate::setEditorData(editor, index);
}

void KeyTypeDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                   const QModelIndex& index) const
{
    if (auto* popUp = qobject_cast<QComboBox*>(editor)) {
        model->setData(index, popUp->currentIndex(), Qt::EditRole);
        return;
    }
    QStyledItemDelegate::setModelData(editor, model, index);
}
