#include "platform/PropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QSaveFile>

#include <plist/plist.h>

#include <cstdlib>
#include <limits>
#include <memory>

namespace {

struct PlistDeleter {
    void operator()(void* node) const { plist_free(static_cast<plist_t>(node)); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

// Property-list dates count seconds from 2001-01-01 00:00:00 UTC.
const QDateTime& referenceDate()
{
    static const QDateTime date(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    return date;
}

QVariant integerValue(plist_t node)
{
    uint64_t value = 0;
    plist_get_uint_val(node, &value);
    if (value <= uint64_t(std::numeric_limits<qint64>::max())) {
        return QVariant::fromValue(qint64(value));
    }
    // The library keeps whether a large value was written signed or unsigned but does
    // not expose it; its own XML form tells (for example "-1" against
    // "18446744073709551615").
    char* xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(node, &xml, &length);
    const QByteArray text = QByteArray(xml, length);
    plist_to_xml_free(xml);
    const qsizetype open = text.indexOf("<integer>");
    if (open >= 0 && text.mid(open + 9, 1) == "-") {
        return QVariant::fromValue(qint64(value));
    }
    return QVariant::fromValue(quint64(value));
}

QVariant toVariant(plist_t node, int depth)
{
    if (!node || depth > 512) {
        return {};
    }
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return bool(value);
    }
    case PLIST_UINT:
        return integerValue(node);
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_STRING: {
        uint64_t length = 0;
        const char* text = plist_get_string_ptr(node, &length);
        return QString::fromUtf8(text, qsizetype(length));
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const char* bytes = plist_get_data_ptr(node, &length);
        return QByteArray(bytes, qsizetype(length));
    }
    case PLIST_DATE: {
        int32_t sec = 0;
        int32_t usec = 0;
        plist_get_date_val(node, &sec, &usec);
        return referenceDate().addMSecs(qint64(sec) * 1000 + usec / 1000);
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t count = plist_array_get_size(node);
        list.reserve(count);
        for (uint32_t i = 0; i < count; ++i) {
            QVariant item = toVariant(plist_array_get_item(node, i), depth + 1);
            if (item.isValid()) {
                list.append(std::move(item));
            }
        }
        return list;
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        while (it) {
            char* key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, it, &key, &value);
            if (!key) {
                break;
            }
            QVariant item = toVariant(value, depth + 1);
            if (item.isValid()) {
                map.insert(QString::fromUtf8(key), std::move(item));
            }
            std::free(key);
        }
        std::free(it);
        return map;
    }
    default:
        return {};
    }
}

plist_t unsignedNode(quint64 value)
{
    if (value <= quint64(std::numeric_limits<qint64>::max())) {
        return plist_new_uint(value);
    }
    // Made from XML so that the library records the value as unsigned and writes it so.
    const QByteArray xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><integer>" +
        QByteArray::number(value) + "</integer></plist>";
    plist_t node = nullptr;
    plist_from_xml(xml.constData(), uint32_t(xml.size()), &node);
    return node;
}

plist_t fromVariant(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool());
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
        return plist_new_uint(uint64_t(value.toLongLong()));
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
        return unsignedNode(value.toULongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        return plist_new_real(value.toDouble());
    case QMetaType::QString:
        return plist_new_string(value.toString().toUtf8().constData());
    case QMetaType::QByteArray: {
        const QByteArray data = value.toByteArray();
        return plist_new_data(data.constData(), uint64_t(data.size()));
    }
    case QMetaType::QDateTime: {
        const qint64 ms = referenceDate().msecsTo(value.toDateTime());
        const qint64 sec = ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000);
        return plist_new_date(int32_t(sec), int32_t((ms - sec * 1000) * 1000));
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        plist_t array = plist_new_array();
        for (const QVariant& item : value.toList()) {
            plist_t child = fromVariant(item);
            if (!child) {
                plist_free(array);
                return nullptr;
            }
            plist_array_append_item(array, child);
        }
        return array;
    }
    case QMetaType::QVariantMap: {
        plist_t dict = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            plist_t child = fromVariant(it.value());
            if (!child) {
                plist_free(dict);
                return nullptr;
            }
            plist_dict_set_item(dict, it.key().toUtf8().constData(), child);
        }
        return dict;
    }
    default:
        return nullptr;
    }
}

} // namespace

QVariant PropertyList::fromData(const QByteArray& data)
{
    if (data.isEmpty() || data.size() > std::numeric_limits<uint32_t>::max()) {
        return {};
    }
    plist_t root = nullptr;
    if (plist_is_binary(data.constData(), uint32_t(data.size()))) {
        plist_from_bin(data.constData(), uint32_t(data.size()), &root);
        // The binary reader takes dictionary keys holding a zero character, which the
        // library itself then aborts on when asked for them. Written out as XML and read
        // back, such a key ends at its zero, as any key read from XML does.
        PlistPtr binary(root);
        root = nullptr;
        char* xml = nullptr;
        uint32_t length = 0;
        if (binary) {
            plist_to_xml(binary.get(), &xml, &length);
        }
        if (xml) {
            plist_from_xml(xml, length, &root);
            plist_to_xml_free(xml);
        }
    } else {
        // The XML reader only accepts a document that has a <plist> element.
        if (!data.contains("<plist")) {
            return {};
        }
        plist_from_xml(data.constData(), uint32_t(data.size()), &root);
    }
    PlistPtr owner(root);
    return toVariant(root, 0);
}

QVariant PropertyList::readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return fromData(file.readAll());
}

std::optional<QVariantMap> PropertyList::readDictionary(const QString& path)
{
    const QVariant value = readFile(path);
    if (value.typeId() != QMetaType::QVariantMap) {
        return std::nullopt;
    }
    return value.toMap();
}

QByteArray PropertyList::toXml(const QVariant& value)
{
    PlistPtr root(fromVariant(value));
    if (!root) {
        return {};
    }
    char* xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(static_cast<plist_t>(root.get()), &xml, &length);
    QByteArray result(xml, length);
    plist_to_xml_free(xml);
    return result;
}

bool PropertyList::writeXml(const QVariant& value, const QString& path, QString* error)
{
    const QByteArray xml = toXml(value);
    if (xml.isEmpty()) {
        if (error) {
            *error = QStringLiteral("The value cannot be stored in a property list.");
        }
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(xml) != xml.size() || !file.commit()) {
        if (error) {
            *error = file.errorString();
        }
        return false;
    }
    return true;
}
