#pragma once

#include <QByteArray>
#include <QString>

/// The "com.apple.TextEncoding" extended attribute of a file, which names the encoding its
/// text is written in ("utf-8;134217984": the character set, then the encoding's number), as
/// other editors write it. Reading a file takes it before detecting; saving keeps it true.
class TextEncodingAttribute
{
public:
    /// The attribute's name.
    static const QString& name();
    /// The encoding the attribute of the file at `path` names; all ones when the file has no
    /// usable attribute.
    static quint64 ofFile(const QString& path);
    /// Writes the attribute; false when the encoding has no character-set name or the
    /// attribute cannot be written.
    static bool write(quint64 encoding, const QString& path);
    /// The attribute's value parsed as the reader does (for the bytes read from a file).
    static quint64 fromValue(const QByteArray& value);
};
