#include "platform/TextCodec.h"

#include "platform/LargeBuffer.h"
#include "platform/MappingTable.h"
#include "platform/StringEncoding.h"
#include "platform/UnicodeText.h"

#include <QtEndian>

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <iconv.h>
#include <memory>
#include <vector>

namespace {

struct CodecRow {
    quint32 encoding; // Core Foundation number
    TextCodec::Backend backend;
    const char* converterName;
};

using B = TextCodec::Backend;

// ICU wherever it has the encoding, glibc's iconv where only it has one, our own tables
// for the rest. glibc's MAC-IS is an early Mac OS Icelandic (0xDC is Đ, not Ð; no euro
// sign), so Mac OS Icelandic uses the table of Apple's current mapping instead. Mac OS
// Vietnamese has no codec: no package on the system carries its table.
constexpr CodecRow codecRows[] = {
    {0xA01, B::Icu, "Shift_JIS"},    {0x920, B::IcuEuc, "EUC-JP"},
    {0x820, B::Icu, "ISO-2022-JP"},  {0x628, B::Iconv, "SHIFT_JISX0213"},
    {0x8000100, B::Utf8, nullptr},   {0x1, B::Table, nullptr},
    {0x420, B::Icu, "windows-932"},  {0x100, B::Utf16, nullptr},
    {0x0, B::Icu, "macintosh"},      {0x500, B::Icu, "windows-1252"},
    {0xB01, B::Table, nullptr},      {0x930, B::IcuEuc, "EUC-CN"},
    {0xA05, B::Icu, "HZ-GB-2312"},   {0x19, B::Table, nullptr},
    {0x421, B::Icu, "windows-936"},  {0x632, B::Icu, "GB18030"},
    {0x830, B::Icu, "ISO-2022-CN"},  {0x931, B::IcuEuc, "EUC-TW"},
    {0xA09, B::Table, nullptr},      {0xA06, B::Icu, "Big5-HKSCS"},
    {0x2, B::Table, nullptr},        {0x423, B::Icu, "windows-950"},
    {0x940, B::IcuEuc, "EUC-KR"},    {0x840, B::Icu, "ISO-2022-KR"},
    {0x3, B::Table, nullptr},        {0x422, B::Icu, "windows-949"},
    {0x1D, B::Icu, "x-mac-ce"},      {0x501, B::Icu, "windows-1250"},
    {0x15, B::Table, nullptr},       {0x41D, B::Icu, "windows-874"},
    {0x508, B::Icu, "windows-1258"}, {0x4, B::Table, nullptr},
    {0x506, B::Icu, "windows-1256"}, {0x5, B::Table, nullptr},
    {0x505, B::Icu, "windows-1255"}, {0x6, B::Icu, "x-mac-greek"},
    {0x207, B::Icu, "ISO-8859-7"},   {0x7, B::Icu, "x-mac-cyrillic"},
    {0x205, B::Icu, "ISO-8859-5"},   {0x23, B::Icu, "x-mac-turkish"},
    {0x209, B::Icu, "ISO-8859-9"},   {0x25, B::Table, nullptr},
    {0x416, B::Icu, "ibm-861"},      {0x201, B::Icu, "ISO-8859-1"},
    {0x203, B::Icu, "ISO-8859-3"},   {0x202, B::Icu, "ISO-8859-2"},
    {0x204, B::Icu, "ISO-8859-4"},   {0x400, B::Icu, "ibm-437"},
    {0x600, B::Ascii, nullptr},      {0xBFF, B::NonLossyAscii, nullptr},
};

// The encodings offered beyond the list. Debian's ICU data leaves ISO 8859-16 out, and ICU's
// DOS code pages swap 0x1A, 0x1C and 0x7F among the controls (Ctrl-Z would read as U+001C), so
// those come from iconv, which maps them as the code pages' own tables do.
constexpr CodecRow otherCodecRows[] = {
    {0x14000100, B::Icu, "UTF-16LE"}, {0x10000100, B::Icu, "UTF-16BE"},
    {0x0C000100, B::Utf32, nullptr},  {0x1C000100, B::Icu, "UTF-32LE"},
    {0x18000100, B::Icu, "UTF-32BE"}, {0x20F, B::Icu, "ISO-8859-15"},
    {0x410, B::Iconv, "CP850"},       {0x20A, B::Icu, "ISO-8859-10"},
    {0x20E, B::Icu, "ISO-8859-14"},   {0x412, B::Iconv, "CP852"},
    {0x210, B::Iconv, "ISO-8859-16"}, {0x20D, B::Icu, "ISO-8859-13"},
    {0x507, B::Icu, "windows-1257"},  {0x502, B::Icu, "windows-1251"},
    {0xA02, B::Icu, "KOI8-R"},        {0xA08, B::Icu, "KOI8-U"},
    {0x41B, B::Iconv, "CP866"},       {0x413, B::Iconv, "CP855"},
    {0x503, B::Icu, "windows-1253"},  {0x504, B::Icu, "windows-1254"},
    {0x206, B::Icu, "ISO-8859-6"},    {0x208, B::Icu, "ISO-8859-8"},
};

char16_t* unitsOf(QString& text)
{
    return reinterpret_cast<char16_t*>(text.data());
}

// --- ICU -------------------------------------------------------------------------------

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

Converter openStrictConverter(const char* name)
{
    UErrorCode error = U_ZERO_ERROR;
    Converter converter(ucnv_open(name, &error));
    if (U_FAILURE(error)) {
        return nullptr;
    }
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &error);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                          &error);
    return U_SUCCESS(error) ? std::move(converter) : nullptr;
}

bool icuDecode(const char* name, QByteArrayView data, QString& text)
{
    Converter converter = openStrictConverter(name);
    if (!converter) {
        return false;
    }
    // None of these encodings yields more units than bytes but for rare sequences; the
    // loop grows the buffer for those. Pages never written are never touched, so the
    // generous first size costs address space, not memory.
    text.resize(qMax<qsizetype>(16, data.size()));
    LargeBuffer::adviseHugePages(text.data(), text.size() * 2);
    const char* source = data.data();
    const char* sourceEnd = source + data.size();
    qsizetype used = 0;
    UErrorCode error = U_ZERO_ERROR;
    for (;;) {
        UChar* target = reinterpret_cast<UChar*>(unitsOf(text)) + used;
        UChar* start = reinterpret_cast<UChar*>(unitsOf(text));
        ucnv_toUnicode(converter.get(), &target, start + text.size(), &source, sourceEnd, nullptr,
                       true, &error);
        used = target - start;
        if (error != U_BUFFER_OVERFLOW_ERROR) {
            break;
        }
        error = U_ZERO_ERROR;
        text.resize(text.size() + qMax<qsizetype>(64, (sourceEnd - source) * 2));
    }
    if (U_FAILURE(error)) {
        return false;
    }
    text.resize(used);
    return true;
}

bool icuEncode(const char* name, QStringView text, QByteArray& data)
{
    Converter converter = openStrictConverter(name);
    if (!converter) {
        return false;
    }
    data.resize(text.size() * 2 + 16);
    const UChar* source = reinterpret_cast<const UChar*>(text.utf16());
    const UChar* sourceEnd = source + text.size();
    qsizetype used = 0;
    UErrorCode error = U_ZERO_ERROR;
    for (;;) {
        char* start = data.data();
        char* target = start + used;
        ucnv_fromUnicode(converter.get(), &target, start + data.size(), &source, sourceEnd, nullptr,
                         true, &error);
        used = target - start;
        if (error != U_BUFFER_OVERFLOW_ERROR) {
            break;
        }
        error = U_ZERO_ERROR;
        data.resize(data.size() * 2);
    }
    if (U_FAILURE(error)) {
        return false;
    }
    data.resize(used);
    return true;
}

// --- EUC -------------------------------------------------------------------------------

// Whether `data` holds a byte of 0x80-0xA0 or 0xFF where a character starts: a C1 control,
// or a lead byte no EUC encoding has. Single shift 2 (0x8E) leads a sequence of two bytes in
// EUC-JP and of four in EUC-TW, single shift 3 (0x8F) one of three in EUC-JP; the other
// leads (0xA1-0xFE) take two. The sequences themselves are ICU's to check.
bool hasStrayEucByte(QByteArrayView data, const char* name)
{
    const bool japanese = qstrcmp(name, "EUC-JP") == 0;
    const bool taiwanese = qstrcmp(name, "EUC-TW") == 0;
    const auto* bytes = reinterpret_cast<const uchar*>(data.data());
    const qsizetype size = data.size();
    for (qsizetype i = 0; i < size;) {
        const uchar b = bytes[i];
        if (b < 0x80) {
            ++i;
        } else if (b >= 0xA1 && b <= 0xFE) {
            i += 2;
        } else if (b == 0x8E && (japanese || taiwanese)) {
            i += japanese ? 2 : 4;
        } else if (b == 0x8F && japanese) {
            i += 3;
        } else {
            return true;
        }
    }
    return false;
}

bool hasC1Control(QStringView text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar c) { return c.unicode() >= 0x80 && c.unicode() < 0xA0; });
}

// --- iconv -----------------------------------------------------------------------------

constexpr const char* hostUtf16 = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "UTF-16LE" : "UTF-16BE";

// Runs one whole conversion into `output` (a QByteArray, or a QString for text), growing
// it as needed. A non-zero count of irreversible conversions means iconv wrote something
// other than what it was given, which a strict conversion refuses.
template <typename Buffer>
bool iconvConvert(const char* to, const char* from, const char* input, size_t inputSize,
                  Buffer& output, qsizetype firstSize)
{
    constexpr size_t unit = sizeof(*output.data());
    iconv_t descriptor = iconv_open(to, from);
    if (descriptor == iconv_t(-1)) {
        return false;
    }
    output.resize(firstSize + 16);
    LargeBuffer::adviseHugePages(output.data(), output.size() * qsizetype(unit));
    char* in = const_cast<char*>(input);
    size_t inLeft = inputSize;
    size_t used = 0; // bytes
    bool ok = true;
    bool flushing = false;
    for (;;) {
        char* start = reinterpret_cast<char*>(output.data());
        char* out = start + used;
        size_t outLeft = size_t(output.size()) * unit - used;
        const size_t result = flushing ? iconv(descriptor, nullptr, nullptr, &out, &outLeft)
                                       : iconv(descriptor, &in, &inLeft, &out, &outLeft);
        used = size_t(out - start);
        if (result == size_t(-1)) {
            if (errno == E2BIG) {
                output.resize(output.size() * 2);
                continue;
            }
            ok = false;
            break;
        }
        if (result > 0) {
            ok = false;
            break;
        }
        if (flushing) {
            break;
        }
        flushing = true;
    }
    iconv_close(descriptor);
    output.resize(qsizetype(used / unit));
    return ok;
}

bool iconvDecode(const char* name, QByteArrayView data, QString& text)
{
    // Shift_JIS X0213 gives at most one unit per byte, but for the rare pair of one
    // two-byte code and two characters.
    return iconvConvert(hostUtf16, name, data.data(), size_t(data.size()), text, data.size());
}

bool iconvEncode(const char* name, QStringView text, QByteArray& data)
{
    if (!UnicodeText::isWellFormed(text)) {
        return false;
    }
    return iconvConvert(name, hostUtf16, reinterpret_cast<const char*>(text.utf16()),
                        size_t(text.size()) * 2, data, text.size() * 2);
}

// --- ASCII and non-lossy ASCII ---------------------------------------------------------

bool asciiEncode(QStringView text, QByteArray& data)
{
    data.resize(text.size());
    char* out = data.data();
    for (QChar c : text) {
        if (c.unicode() >= 0x80) {
            return false;
        }
        *out++ = char(c.unicode());
    }
    return true;
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

// ASCII in which "\\" is a backslash, "\uXXXX" one UTF-16 unit and "\ooo" (three octal
// digits) a character up to U+00FF. A backslash followed by anything else is invalid.
bool nonLossyDecode(QByteArrayView data, QString& text)
{
    text.resize(data.size());
    char16_t* out = unitsOf(text);
    qsizetype used = 0;
    const char* bytes = data.data();
    const qsizetype size = data.size();
    for (qsizetype i = 0; i < size;) {
        const uchar c = uchar(bytes[i]);
        if (c >= 0x80) {
            return false;
        }
        if (c != '\\') {
            out[used++] = c;
            ++i;
            continue;
        }
        if (i + 1 < size && bytes[i + 1] == '\\') {
            out[used++] = u'\\';
            i += 2;
        } else if (i + 5 < size && bytes[i + 1] == 'u') {
            int value = 0;
            for (int k = 2; k < 6; ++k) {
                const int digit = hexValue(bytes[i + k]);
                if (digit < 0) {
                    return false;
                }
                value = value * 16 + digit;
            }
            out[used++] = char16_t(value);
            i += 6;
        } else if (i + 3 < size && bytes[i + 1] >= '0' && bytes[i + 1] <= '3' &&
                   bytes[i + 2] >= '0' && bytes[i + 2] <= '7' && bytes[i + 3] >= '0' &&
                   bytes[i + 3] <= '7') {
            out[used++] = char16_t((bytes[i + 1] - '0') * 64 + (bytes[i + 2] - '0') * 8 +
                                   (bytes[i + 3] - '0'));
            i += 4;
        } else {
            return false;
        }
    }
    text.resize(used);
    return UnicodeText::isWellFormed(text);
}

bool nonLossyEncode(QStringView text, QByteArray& data)
{
    if (!UnicodeText::isWellFormed(text)) {
        return false;
    }
    static constexpr char digits[] = "0123456789abcdef";
    data.clear();
    data.reserve(text.size());
    for (QChar c : text) {
        const char16_t u = c.unicode();
        if (u == u'\\') {
            data.append("\\\\", 2);
        } else if (u < 0x80) {
            data.append(char(u));
        } else {
            const char escape[6] = {'\\',
                                    'u',
                                    digits[u >> 12],
                                    digits[(u >> 8) & 0xF],
                                    digits[(u >> 4) & 0xF],
                                    digits[u & 0xF]};
            data.append(escape, 6);
        }
    }
    return true;
}

// --- UTF-16 ----------------------------------------------------------------------------

// Unmarked UTF-16 is read big-endian, the order the standard prescribes for it, unless
// the data are clearly little-endian. The high bytes of a text's units take few distinct
// values (0x00 for Latin, 0x04 for Cyrillic, 0x30 and 0x4E-0x9F for Japanese, …) while
// the low bytes take many, so among the first 4096 units the bytes at odd offsets must
// take fewer than two thirds as many distinct values as those at even offsets. A count of
// zero bytes alone would be fooled by big-endian text with characters such as U+4E00.
// When the order chosen so gives lone surrogates and the other does not, the other wins.
bool looksLittleEndian(QByteArrayView data)
{
    const qsizetype units = qMin<qsizetype>(data.size() / 2, 4096);
    std::array<bool, 256> seenEven{};
    std::array<bool, 256> seenOdd{};
    int even = 0;
    int odd = 0;
    for (qsizetype i = 0; i < units; ++i) {
        const uchar first = uchar(data[2 * i]);
        const uchar second = uchar(data[2 * i + 1]);
        if (!seenEven[first]) {
            seenEven[first] = true;
            ++even;
        }
        if (!seenOdd[second]) {
            seenOdd[second] = true;
            ++odd;
        }
    }
    return 3 * odd < 2 * even;
}

bool utf16DecodeOrder(QByteArrayView data, bool littleEndian, QString& text)
{
    const qsizetype count = data.size() / 2;
    text.resize(count);
    LargeBuffer::adviseHugePages(text.data(), text.size() * 2);
    if (littleEndian) {
        qFromLittleEndian<quint16>(data.data(), count, unitsOf(text));
    } else {
        qFromBigEndian<quint16>(data.data(), count, unitsOf(text));
    }
    return UnicodeText::isWellFormed(text);
}

bool utf16Decode(QByteArrayView data, QString& text)
{
    if (data.size() % 2 != 0) {
        return false;
    }
    const auto* bytes = reinterpret_cast<const uchar*>(data.data());
    if (data.size() >= 2 && bytes[0] == 0xFE && bytes[1] == 0xFF) {
        return utf16DecodeOrder(data.sliced(2), false, text);
    }
    if (data.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) {
        return utf16DecodeOrder(data.sliced(2), true, text);
    }
    const bool little = looksLittleEndian(data);
    return utf16DecodeOrder(data, little, text) || utf16DecodeOrder(data, !little, text);
}

bool utf16Encode(QStringView text, QByteArray& data)
{
    if (!UnicodeText::isWellFormed(text)) {
        return false;
    }
    data.resize(2 + text.size() * 2);
    data[0] = char(0xFF);
    data[1] = char(0xFE);
    qToLittleEndian<quint16>(text.utf16(), text.size(), data.data() + 2);
    return true;
}

// --- UTF-32 ---------------------------------------------------------------------------

// Like UTF-16: a byte-order mark chooses the order and is not part of the text; unmarked
// data are big-endian, as the standard has it, unless only the other order decodes. Written
// little-endian with a mark.
bool utf32Decode(QByteArrayView data, QString& text)
{
    if (data.size() % 4 != 0) {
        return false;
    }
    if (data.startsWith(QByteArrayView("\xFF\xFE\0\0", 4))) {
        return icuDecode("UTF-32LE", data.sliced(4), text);
    }
    if (data.startsWith(QByteArrayView("\0\0\xFE\xFF", 4))) {
        return icuDecode("UTF-32BE", data.sliced(4), text);
    }
    return icuDecode("UTF-32BE", data, text) || icuDecode("UTF-32LE", data, text);
}

bool utf32Encode(QStringView text, QByteArray& data)
{
    if (!UnicodeText::isWellFormed(text) || !icuEncode("UTF-32LE", text, data)) {
        return false;
    }
    data.prepend(QByteArrayView("\xFF\xFE\0\0", 4));
    return true;
}

} // namespace

TextCodec::TextCodec(quint64 encoding, Backend backend, const char* converterName)
    : _encoding(encoding)
    , _backend(backend)
    , _converterName(converterName)
{}

const TextCodec* TextCodec::codecForEncoding(quint64 encoding)
{
    static const std::vector<TextCodec> codecs = [] {
        std::vector<TextCodec> all;
        for (const CodecRow& row : codecRows) {
            all.emplace_back(StringEncoding::convertEncodingToNSStringEncoding(row.encoding),
                             row.backend, row.converterName);
        }
        for (const CodecRow& row : otherCodecRows) {
            all.emplace_back(StringEncoding::convertEncodingToNSStringEncoding(row.encoding),
                             row.backend, row.converterName);
        }
        return all;
    }();
    for (const TextCodec& codec : codecs) {
        if (codec._encoding == encoding) {
            return &codec;
        }
    }
    return nullptr;
}

bool TextCodec::decode(quint64 encoding, QByteArrayView data, QString& text)
{
    const TextCodec* codec = codecForEncoding(encoding);
    return codec && codec->decode(data, text);
}

std::optional<QString> TextCodec::decode(quint64 encoding, QByteArrayView data)
{
    QString text;
    if (!decode(encoding, data, text)) {
        return std::nullopt;
    }
    return text;
}

std::optional<QByteArray> TextCodec::encode(quint64 encoding, QStringView text)
{
    const TextCodec* codec = codecForEncoding(encoding);
    QByteArray data;
    if (!codec || !codec->encode(text, data)) {
        return std::nullopt;
    }
    return data;
}

bool TextCodec::canBeConvertedToEncoding(QStringView text, quint64 encoding)
{
    return encode(encoding, text).has_value();
}

bool TextCodec::decode(QByteArrayView data, QString& text) const
{
    switch (_backend) {
    case Backend::Utf8:
        return UnicodeText::decodeUtf8(data, text);
    case Backend::Utf16:
        return utf16Decode(data, text);
    case Backend::Utf32:
        return utf32Decode(data, text);
    case Backend::Ascii:
        if (!UnicodeText::isAscii(data)) {
            return false;
        }
        text = QString::fromLatin1(data);
        return true;
    case Backend::NonLossyAscii:
        return nonLossyDecode(data, text);
    case Backend::Icu:
        return icuDecode(_converterName, data, text);
    case Backend::IcuEuc:
        return !hasStrayEucByte(data, _converterName) && icuDecode(_converterName, data, text);
    case Backend::Iconv:
        return iconvDecode(_converterName, data, text);
    case Backend::Table: {
        const MappingTable* table = MappingTable::tableForEncoding(
            StringEncoding::convertNSStringEncodingToEncoding(_encoding));
        return table && table->decode(data, text);
    }
    }
    return false;
}

bool TextCodec::encode(QStringView text, QByteArray& data) const
{
    switch (_backend) {
    case Backend::Utf8:
        if (!UnicodeText::isWellFormed(text)) {
            return false;
        }
        data = text.toUtf8();
        return true;
    case Backend::Utf16:
        return utf16Encode(text, data);
    case Backend::Utf32:
        return utf32Encode(text, data);
    case Backend::Ascii:
        return asciiEncode(text, data);
    case Backend::NonLossyAscii:
        return nonLossyEncode(text, data);
    case Backend::Icu:
        return UnicodeText::isWellFormed(text) && icuEncode(_converterName, text, data);
    case Backend::IcuEuc:
        return UnicodeText::isWellFormed(text) && !hasC1Control(text) &&
               icuEncode(_converterName, text, data);
    case Backend::Iconv:
        return iconvEncode(_converterName, text, data);
    case Backend::Table: {
        const MappingTable* table = MappingTable::tableForEncoding(
            StringEncoding::convertNSStringEncodingToEncoding(_encoding));
        return table && table->encode(text, data);
    }
    }
    return false;
}
