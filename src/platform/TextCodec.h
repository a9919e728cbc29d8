#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <optional>

/// A strict converter between the bytes of one string encoding and text. Decoding fails on
/// any invalid or unmapped byte sequence, encoding on any character the encoding cannot
/// hold: nothing is ever replaced or dropped silently.
///
/// Byte-order marks: UTF-8, UTF-16 and UTF-32 drop a leading one when decoding. UTF-16 and
/// UTF-32 are written with a byte-order mark, little-endian. Their variants of one byte order
/// (UTF-16LE, …) take a leading mark for a character like any other, so that they write back
/// the bytes they read.
class TextCodec
{
public:
    /// The codec of a string encoding; null when the editor has none for it.
    static const TextCodec* codecForEncoding(quint64 encoding);

    /// Decodes with the codec of `encoding`; false when there is none or the data do not
    /// decode. After a failure `text` holds whatever was decoded before the error.
    static bool decode(quint64 encoding, QByteArrayView data, QString& text);
    static std::optional<QString> decode(quint64 encoding, QByteArrayView data);
    static std::optional<QByteArray> encode(quint64 encoding, QStringView text);
    /// Whether every character of the text can be written in the encoding.
    static bool canBeConvertedToEncoding(QStringView text, quint64 encoding);

    quint64 encoding() const { return _encoding; }
    bool decode(QByteArrayView data, QString& text) const;
    bool encode(QStringView text, QByteArray& data) const;

    /// Where a codec's conversion comes from. IcuEuc is ICU's for an EUC encoding, whose
    /// converters also take the C1 control bytes 0x80-0x9F as characters; strict EUC has
    /// none (0x8E and 0x8F only lead sequences), so they are refused both ways.
    enum class Backend { Utf8, Utf16, Utf32, Ascii, NonLossyAscii, Icu, IcuEuc, Iconv, Table };
    TextCodec(quint64 encoding, Backend backend, const char* converterName);

private:
    quint64 _encoding;
    Backend _backend;
    const char* _converterName;
};
