#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringView>

/// Fast checks and conversions on whole texts, the hot paths of opening large files.
class UnicodeText
{
public:
    /// Whether every byte is below 0x80.
    static bool isAscii(QByteArrayView data);
    /// Whether the bytes are strict UTF-8, by the same rules as decodeUtf8(), without
    /// decoding them.
    static bool isValidUtf8(QByteArrayView data);
    /// Whether every surrogate is half of a pair, so that the text is valid Unicode.
    static bool isWellFormed(QStringView text);
    /// Strict UTF-8: false on overlong forms, surrogates, code points above U+10FFFF and
    /// truncated sequences. A leading byte-order mark is not part of the text.
    static bool decodeUtf8(QByteArrayView data, QString& text);
};
