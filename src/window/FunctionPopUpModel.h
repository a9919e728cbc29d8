#pragma once

#include "syntax/FunctionMenu.h"

#include <QAbstractListModel>
#include <QFont>

#include <vector>

/// The items of the function pop-up as a list model that answers from the FunctionMenu's
/// items when a row is shown: a list of tens of thousands of definitions is handed over in
/// one step, not item by item.
class FunctionPopUpModel : public QAbstractListModel
{
    Q_OBJECT

public:
    explicit FunctionPopUpModel(QObject* parent = nullptr);

    void setItems(std::vector<FunctionMenu::Item> items);
    /// One line of text in place of the items, which cannot be chosen.
    void setNotice(const QString& text);
    const std::vector<FunctionMenu::Item>& items() const { return _items; }
    bool isNotice() const { return _notice; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    std::vector<FunctionMenu::Item> _items;
    bool _notice = false;
    QFont _bold;
};
