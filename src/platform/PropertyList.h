#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

/// Property-list files (XML or binary) as Qt values: dictionaries are QVariantMap,
/// arrays QVariantList, strings QString, booleans bool, integers qint64 (quint64 for
/// values above the signed range, such as 2^64−1), reals double, data QByteArray and
/// dates QDateTime (UTC).
class PropertyList
{
public:
    /// The value held by `data`, or an invalid QVariant when it is not a property list.
    static QVariant fromData(const QByteArray& data);
    /// The value stored in the file, or an invalid QVariant when it cannot be read or parsed.
    static QVariant readFile(const QString& path);
    /// The dictionary stored in the file; none when the file is missing, unreadable, not a
    /// property list, or holds something other than a dictionary.
    static std::optional<QVariantMap> readDictionary(const QString& path);

    /// The XML form of `value`; empty when the value holds a type a property list cannot.
    static QByteArray toXml(const QVariant& value);
    /// Writes the XML form atomically: on any failure the old file stays as it was.
    static bool writeXml(const QVariant& value, const QString& path, QString* error = nullptr);
};
