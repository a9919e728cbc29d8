#pragma once

#include <QList>
#include <QString>

/// The two numberings of text encodings and their names: string encodings (64-bit, the
/// numbers stored in settings and documents) and Core Foundation encodings (32-bit, the
/// numbers written into a file's `com.apple.TextEncoding` attribute).
class StringEncoding
{
public:
    /// No encoding; "Automatic" where a user may choose one.
    static constexpr quint64 NoEncoding = ~quint64(0);
    /// The Core Foundation number of no valid encoding; it converts to itself.
    static constexpr quint32 InvalidId = 0xFFFFFFFFu;

    /// Core Foundation → string encoding: thirteen classic encodings have small numbers of
    /// their own, every other encoding e is 0x80000000 + e.
    static quint64 convertEncodingToNSStringEncoding(quint32 encoding);
    /// The same rule backwards; InvalidId for a number that no encoding can have.
    static quint32 convertNSStringEncodingToEncoding(quint64 encoding);

    /// The IANA character-set name of a Core Foundation encoding; null when it has none.
    static QString convertEncodingToIANACharSetName(quint32 encoding);
    /// Looks a character-set name up, ignoring case and accepting common aliases
    /// ("utf8", "sjis", "x-mac-roman", "latin1", …); InvalidId when unknown.
    static quint32 convertIANACharSetNameToEncoding(const QString& name);

    /// The English name shown in menus and the status line, e.g. "Japanese (Shift JIS)";
    /// empty for an encoding the editor does not know.
    static QString localizedNameOfStringEncoding(quint64 encoding);

    /// Every string encoding that has a name here, in no particular order.
    static QList<quint64> availableStringEncodings();
};
