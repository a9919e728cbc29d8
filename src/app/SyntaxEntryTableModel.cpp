#include "app/SyntaxEntryTableModel.h"

#include <QFont>
#include <QFontDatabase>

namespace {

const QString kRegexPattern = QStringLiteral("regexPattern");
const QString kRegularExpression = QStringLiteral("regularExpression");
const QString kStartStr = QStringLiteral("startStr");
const QString kEndStr = QStringLiteral("endStr");
const QString kKeyType = QStringLiteral("KeyType");
const QString kIndentationLevel = QStringLiteral("IndentationLevel");
const QString kBoldType = QStringLiteral("BoldType");

} // namespace

const QStringList& SyntaxEntryTableModel::categoryKeys()
{
    static const QStringList keys = {
        QStringLiteral("Keywords"),
        QStringLiteral("Commands"),
        QStringLiteral("Values"),
        QStringLiteral("Extensions"),
        QStringLiteral("Blockwords"),
        QStringLiteral("Comments"),
        QStringLiteral("Preprocessor"),
        QStringLiteral("Numbers"),
        QStringLiteral("Strings"),
        QStringLiteral("Characters"),
        QStringLiteral("CharacterSet"),
        QStringLiteral("CaseInsensitive"),
        QStringLiteral("FunctionDefinition"),
    };
    return keys;
}

const QStringList& SyntaxEntryTableModel::keyTypes()
{
    static const QStringList types = {
        QStringLiteral("None"),  QStringLiteral("Class"),    QStringLiteral("Category"),
        QStringLiteral("Event"), QStringLiteral("Function"), QStringLiteral("Method"),
        QStringLiteral("Macro"), QStringLiteral("Property"), QStringLiteral("Script"),
        QStringLiteral("Type"),  QStringLiteral("Constant"),
    };
    return types;
}

SyntaxEntryTableModel::SyntaxEntryTableModel(QVariantMap* syntaxDictionary, QObject* parent)
    : QAbstractTableModel(parent)
    , _syntaxDictionary(syntaxDictionary)
    , _category(categoryKeys().first())
{}

void SyntaxEntryTableModel::setCategory(const QString& category)
{
    beginResetModel();
    _category = category;
    endResetModel();
}

void SyntaxEntryTableModel::reload()
{
    beginResetModel();
    endResetModel();
}

SyntaxEntryTableModel::Kind SyntaxEntryTableModel::kind() const
{
    if (_category == u"Blockwords" || _category == u"Comments") {
        return Kind::Blocks;
    }
    if (_category == u"Preprocessor" || _category == u"Numbers" || _category == u"Strings" ||
        _category == u"Characters") {
        return Kind::Patterns;
    }
    if (_category == u"CharacterSet") {
        return Kind::CharacterSet;
    }
    if (_category == u"CaseInsensitive") {
        return Kind::CaseInsensitive;
    }
    if (_category == u"FunctionDefinition") {
        return Kind::Functions;
    }
    return Kind::Words;
}

bool SyntaxEntryTableModel::isList() const
{
    return kind() != Kind::CharacterSet && kind() != Kind::CaseInsensitive;
}

QList<int> SyntaxEntryTableModel::columnWidths(int width) const
{
    const int w = width - 3;
    switch (kind()) {
    case Kind::Blocks:
        return {w / 2 - 20, w / 2 - 20, 33};
    case Kind::Functions:
        return {w / 2 - 5, w / 2 - 70, 35, 30};
    default:
        return {w};
    }
}

bool SyntaxEntryTableModel::isCheckBoxColumn(int column) const
{
    switch (kind()) {
    case Kind::Blocks:
        return column == 2;
    case Kind::CaseInsensitive:
        return column == 0;
    case Kind::Functions:
        return column == 3;
    default:
        return false;
    }
}

bool SyntaxEntryTableModel::isKeyTypeColumn(int column) const
{
    return kind() == Kind::Functions && column == 1;
}

int SyntaxEntryTableModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() || !_syntaxDictionary) {
        return 0;
    }
    if (!isList()) {
        return 1;
    }
    return int(_syntaxDictionary->value(_category).toList().size());
}

int SyntaxEntryTableModel::columnCount(const QModelIndex& parent) const
{
    if (parent.isValid()) {
        return 0;
    }
    return int(columnWidths(0).size());
}

QVariant SyntaxEntryTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    // The tip repeats the title, which a narrow column cuts short.
    if (orientation != Qt::Horizontal || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    QStringList titles;
    switch (kind()) {
    case Kind::Words:
    case Kind::CharacterSet:
    case Kind::CaseInsensitive:
        titles = {QStringLiteral(" Key")};
        break;
    case Kind::Blocks:
        titles = {QStringLiteral(" Begin"), QStringLiteral(" End"), QStringLiteral(" Regx")};
        break;
    case Kind::Patterns:
        titles = {QStringLiteral(" RegexPattern")};
        break;
    case Kind::Functions:
        titles = {QStringLiteral(" RegexPattern"), QStringLiteral(" KeyType"),
                  QStringLiteral(" Level"), QStringLiteral(" Bold")};
        break;
    }
    return role == Qt::ToolTipRole ? titles.value(section).trimmed() : titles.value(section);
}

QVariant SyntaxEntryTableModel::value(int row, int column) const
{
    const QVariant category = _syntaxDictionary->value(_category);
    switch (kind()) {
    case Kind::CharacterSet:
        return category.toString();
    case Kind::CaseInsensitive:
        return category.toBool();
    default:
        break;
    }
    const QVariant element = category.toList().value(row);
    const QVariantMap entry = element.toMap();
    switch (kind()) {
    case Kind::Words:
        return element.toString();
    case Kind::Blocks:
        if (column == 0) {
            return entry.contains(kStartStr) ? entry.value(kStartStr) : entry.value(kRegexPattern);
        }
        if (column == 1) {
            return entry.value(kEndStr);
        }
        return entry.contains(kRegexPattern);
    case Kind::Patterns:
        return entry.value(kRegexPattern);
    case Kind::Functions:
        switch (column) {
        case 0:
            return entry.value(kRegexPattern);
        case 1:
            return std::max<qsizetype>(0, keyTypes().indexOf(entry.value(kKeyType).toString()));
        case 2:
            return entry.value(kIndentationLevel);
        default:
            return entry.value(kBoldType).toBool();
        }
    default:
        return {};
    }
}

QVariant SyntaxEntryTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !_syntaxDictionary) {
        return {};
    }
    const bool checkBox = isCheckBoxColumn(index.column());
    if (role == Qt::CheckStateRole) {
        return checkBox ? QVariant(value(index.row(), index.column()).toBool() ? Qt::Checked
                                                                               : Qt::Unchecked)
                        : QVariant();
    }
    if (role == Qt::FontRole) {
        QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        font.setPixelSize(11);
        return font;
    }
    if (role != Qt::DisplayRole && role != Qt::EditRole) {
        return {};
    }
    if (checkBox) {
        return {};
    }
    const QVariant shown = value(index.row(), index.column());
    if (isKeyTypeColumn(index.column()) && role == Qt::DisplayRole) {
        return keyTypes().value(shown.toInt());
    }
    return shown;
}

Qt::ItemFlags SyntaxEntryTableModel::flags(const QModelIndex& index) const
{
    if (!index.isValid()) {
        return Qt::NoItemFlags;
    }
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    flags |= isCheckBoxColumn(index.column()) ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable;
    return flags;
}

void SyntaxEntryTableModel::store(const QVariantList& entries)
{
    _syntaxDictionary->insert(_category, entries);
}

bool SyntaxEntryTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || !_syntaxDictionary) {
        return false;
    }
    const int row = index.row();
    const int column = index.column();
    const bool checkBox = isCheckBoxColumn(column);
    if (checkBox != (role == Qt::CheckStateRole) || (!checkBox && role != Qt::EditRole)) {
        return false;
    }
    const bool on = checkBox && value.toInt() == Qt::Checked;
    switch (kind()) {
    case Kind::CharacterSet:
        _syntaxDictionary->insert(_category, value.toString());
        break;
    case Kind::CaseInsensitive:
        _syntaxDictionary->insert(_category, on);
        break;
    default: {
        QVariantList entries = _syntaxDictionary->value(_category).toList();
        if (row < 0 || row >= entries.size()) {
            return false;
        }
        QVariantMap entry = entries[row].toMap();
        switch (kind()) {
        case Kind::Words:
            entries[row] = value.toString();
            break;
        case Kind::Patterns:
            entry.insert(kRegexPattern, value.toString());
            entries[row] = entry;
            break;
        case Kind::Blocks:
            if (column == 0) {
                entry.insert(entry.contains(kStartStr) || !entry.contains(kRegexPattern)
                                 ? kStartStr
                                 : kRegexPattern,
                             value.toString());
            } else if (column == 1) {
                entry.insert(kEndStr, value.toString());
            } else if (on && entry.contains(kRegexPattern)) {
                entry.insert(kRegularExpression, true);
            } else if (on) {
                entry = {{kRegexPattern, entry.value(kStartStr).toString()},
                         {kRegularExpression, true}};
            } else if (entry.contains(kRegexPattern)) {
                entry = {{kStartStr, entry.value(kRegexPattern).toString()}, {kEndStr, QString()}};
            }
            entries[row] = entry;
            break;
        case Kind::Functions:
            if (column == 0) {
                entry.insert(kRegexPattern, value.toString());
            } else if (column == 1) {
                const QString type = keyTypes().value(value.toInt());
                entry.insert(kKeyType, type == u"None" ? QString() : type);
            } else if (column == 2) {
                entry.insert(kIndentationLevel, qint64(value.toString().toLongLong()));
            } else {
                entry.insert(kBoldType, on);
            }
            entries[row] = entry;
            break;
        default:
            break;
        }
        store(entries);
        break;
    }
    }
    // A conversion changes the whole row.
    Q_EMIT dataChanged(this->index(row, 0), this->index(row, columnCount() - 1));
    Q_EMIT edited();
    return true;
}

int SyntaxEntryTableModel::addEntry()
{
    if (!isList() || !_syntaxDictionary) {
        return -1;
    }
    QVariant entry;
    switch (kind()) {
    case Kind::Words:
        entry = QStringLiteral("new");
        break;
    case Kind::Patterns:
        entry = QVariantMap{{kRegexPattern, QStringLiteral("new")}, {kRegularExpression, true}};
        break;
    case Kind::Blocks:
        entry = QVariantMap{{kStartStr, QStringLiteral("new")}, {kEndStr, QStringLiteral("new")}};
        break;
    default:
        entry = QVariantMap{{kRegexPattern, QStringLiteral("new")},
                            {kBoldType, false},
                            {kIndentationLevel, QString()},
                            {kKeyType, QString()}};
        break;
    }
    QVariantList entries = _syntaxDictionary->value(_category).toList();
    const int row = int(entries.size());
    beginInsertRows(QModelIndex(), row, row);
    entries.append(entry);
    store(entries);
    endInsertRows();
    Q_EMIT edited();
    return row;
}

bool SyntaxEntryTableModel::removeEntry(int row)
{
    if (!isList() || !_syntaxDictionary) {
        return false;
    }
    QVariantList entries = _syntaxDictionary->value(_category).toList();
    if (row < 0 || row >= entries.size()) {
        return false;
    }
    beginRemoveRows(QModelIndex(), row, row);
    entries.removeAt(row);
    store(entries);
    endRemoveRows();
    Q_EMIT edited();
    return true;
}
