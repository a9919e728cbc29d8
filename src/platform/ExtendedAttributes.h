#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// One extended attribute of a file. Attributes live in Linux's "user." namespace.
class ExtendedAttributes
{
public:
    /// The attribute's bytes; none when the file has no such attribute, cannot be read,
    /// or lies on a file system without extended attributes.
    static std::optional<QByteArray> read(const QString& path, const QString& name);
    /// Sets the attribute; false (with errno's text in `error`) when it cannot be written.
    static bool write(const QString& path, const QString& name, const QByteArray& value,
                      QString* error = nullptr);
    static bool remove(const QString& path, const QString& name);
};
