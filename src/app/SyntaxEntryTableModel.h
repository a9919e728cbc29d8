#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <QVariantMap>

/// The entries of one category of a syntax definition as a table: the columns the category
/// needs, the values shown in them, and edits written back into the definition. Each edit
/// copies the category's array, changes the copy and stores it back under the key.
class SyntaxEntryTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// The thirteen categories, in the order the category pop-up lists them.
    static const QStringList& categoryKeys();
    /// The kinds of function definitions; position 0, "None", stands for no kind.
    static const QStringList& keyTypes();

    explicit SyntaxEntryTableModel(QVariantMap* syntaxDictionary, QObject* parent = nullptr);

    QString category() const { return _category; }
    /// Shows the entries of `category` (a key of categoryKeys()).
    void setCategory(const QString& category);
    /// Re-reads the definition after it was replaced.
    void reload();

    /// The columns' widths for a table `width` wide.
    QList<int> columnWidths(int width) const;
    /// Whether the column holds check boxes.
    bool isCheckBoxColumn(int column) const;
    /// Whether the column chooses a kind from keyTypes().
    bool isKeyTypeColumn(int column) const;
    /// Whether entries can be added to and removed from the category.
    bool isList() const;

    /// Appends the category's new entry; returns its row (−1 when the category is no list).
    int addEntry();
    /// Removes the entry at `row`; false when there is none.
    bool removeEntry(int row);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// The definition was changed by an edit, an addition or a removal.
    void edited();

private:
    enum class Kind { Words, Blocks, Patterns, CharacterSet, CaseInsensitive, Functions };
    Kind kind() const;
    /// The value a cell shows (for check boxes, a boolean).
    QVariant value(int row, int column) const;
    void store(const QVariantList& entries);

    QVariantMap* _syntaxDictionary;
    QString _category;
};
