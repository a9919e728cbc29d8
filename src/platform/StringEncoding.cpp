#include "platform/StringEncoding.h"

#include <QHash>

#include <array>

namespace {

struct ClassicNumber {
    quint64 stringEncoding;
    quint32 encoding;
};

// The classic encodings keep the small numbers they had before Core Foundation existed.
constexpr std::array<ClassicNumber, 13> classicNumbers{{
    {1, 0x600},     // ASCII
    {2, 0xB01},     // NEXTSTEP
    {3, 0x920},     // EUC-JP
    {4, 0x8000100}, // UTF-8
    {5, 0x201},     // ISO 8859-1
    {7, 0xBFF},     // non-lossy ASCII
    {8, 0x420},     // Windows code page 932
    {9, 0x202},     // ISO 8859-2
    {10, 0x100},    // UTF-16
    {12, 0x500},    // Windows code page 1252
    {15, 0x501},    // Windows code page 1250
    {21, 0x820},    // ISO-2022-JP
    {30, 0x0},      // Mac OS Roman
}};

struct Names {
    quint32 encoding;
    const char* displayName;
    const char* ianaName; // first is the canonical name; aliases separated by '|'
};

// Every encoding the editor can read and write. IANA names follow the registry where it has
// one; Apple's legacy encodings use the "x-mac-" names that mail programs have long used.
constexpr Names encodingNames[] = {
    {0xA01, "Japanese (Shift JIS)", "Shift_JIS|sjis|ms_kanji|csShiftJIS|x-sjis"},
    {0x920, "Japanese (EUC)", "EUC-JP|eucjp|csEUCPkdFmtJapanese|x-euc-jp"},
    {0x820, "Japanese (ISO 2022-JP)", "ISO-2022-JP|csISO2022JP|jis"},
    {0x628, "Japanese (Shift JIS X0213)", "Shift_JISX0213|Shift_JIS-2004|sjis-2004|x-sjis-x0213"},
    {0x8000100, "Unicode (UTF-8)", "UTF-8|utf8|unicode-1-1-utf-8"},
    {0x1, "Japanese (Mac OS)", "x-mac-japanese|macjapanese"},
    {0x420, "Japanese (Windows, DOS)", "cp932|windows-31j|windows-932|ms932|csWindows31J"},
    {0x100, "Unicode (UTF-16)", "UTF-16|utf16|ucs-2|iso-10646-ucs-2|csUnicode"},
    {0x0, "Western (Mac OS Roman)", "macintosh|x-mac-roman|mac|macroman|csMacintosh"},
    {0x500, "Western (Windows Latin 1)", "windows-1252|cp1252|x-cp1252"},
    {0xB01, "Western (NextStep)", "x-nextstep|nextstep"},
    {0x930, "Simplified Chinese (GB 2312)", "GB2312|EUC-CN|euccn|csGB2312|x-euc-cn"},
    {0xA05, "Simplified Chinese (HZ GB 2312)", "HZ-GB-2312|hz"},
    {0x19, "Simplified Chinese (Mac OS)", "x-mac-chinesesimp|macchinesesimp"},
    {0x421, "Simplified Chinese (Windows, DOS)", "cp936|windows-936|GBK|ms936|CP936"},
    {0x632, "Simplified Chinese (GB 18030)", "GB18030|gb-18030|gb18030-2000"},
    {0x830, "Simplified Chinese (ISO 2022-CN)", "ISO-2022-CN|csISO2022CN"},
    {0x931, "Traditional Chinese (EUC)", "EUC-TW|euctw|x-euc-tw|cns11643"},
    {0xA09, "Traditional Chinese (Big 5-E)", "Big5-E|big5-eten|big5eten"},
    {0xA06, "Traditional Chinese (Big 5 HKSCS)", "Big5-HKSCS|big5hkscs|big5-hkscs-1999"},
    {0x2, "Traditional Chinese (Mac OS)", "x-mac-chinesetrad|macchinesetrad"},
    {0x423, "Traditional Chinese (Windows, DOS)", "cp950|windows-950|ms950|Big5|csBig5|x-x-big5"},
    {0x940, "Korean (EUC)", "EUC-KR|euckr|csEUCKR"},
    {0x840, "Korean (ISO 2022-KR)", "ISO-2022-KR|csISO2022KR"},
    {0x3, "Korean (Mac OS)", "x-mac-korean|mackorean"},
    {0x422, "Korean (Windows, DOS)", "cp949|windows-949|ms949|UHC|ks_c_5601-1987|ks_c_5601"},
    {0x1D, "Central European (Mac OS)", "x-mac-ce|x-mac-centraleurroman|maccentraleurroman"},
    {0x501, "Central European (Windows Latin 2)", "windows-1250|cp1250|x-cp1250"},
    {0x15, "Thai (Mac OS)", "x-mac-thai|macthai"},
    {0x41D, "Thai (Windows, DOS)", "windows-874|cp874|ms874|x-windows-874"},
    {0x1E, "Vietnamese (Mac OS)", "x-mac-vietnamese|macvietnamese"},
    {0x508, "Vietnamese (Windows)", "windows-1258|cp1258"},
    {0x4, "Arabic (Mac OS)", "x-mac-arabic|macarabic"},
    {0x506, "Arabic (Windows)", "windows-1256|cp1256"},
    {0x5, "Hebrew (Mac OS)", "x-mac-hebrew|machebrew"},
    {0x505, "Hebrew (Windows)", "windows-1255|cp1255"},
    {0x6, "Greek (Mac OS)", "x-mac-greek|macgreek"},
    {0x207, "Greek (ISO 8859-7)",
     "ISO-8859-7|iso8859-7|iso_8859-7|greek|greek8|csISOLatinGreek|ELOT_928|ECMA-118"},
    {0x7, "Cyrillic (Mac OS)", "x-mac-cyrillic|maccyrillic|x-mac-ukrainian"},
    {0x205, "Cyrillic (ISO 8859-5)", "ISO-8859-5|iso8859-5|iso_8859-5|cyrillic|csISOLatinCyrillic"},
    {0x23, "Turkish (Mac OS)", "x-mac-turkish|macturkish"},
    {0x209, "Turkish (ISO Latin 5)", "ISO-8859-9|iso8859-9|iso_8859-9|latin5|l5|csISOLatin5"},
    {0x25, "Icelandic (Mac OS)", "x-mac-icelandic|macicelandic"},
    {0x416, "Icelandic (DOS)", "cp861|ibm861|861|cp-is|csIBM861"},
    {0x201, "Western (ISO Latin 1)",
     "ISO-8859-1|iso8859-1|iso_8859-1|latin1|l1|csISOLatin1|ibm819|cp819"},
    {0x203, "Western (ISO Latin 3)", "ISO-8859-3|iso8859-3|iso_8859-3|latin3|l3|csISOLatin3"},
    {0x202, "Central European (ISO Latin 2)",
     "ISO-8859-2|iso8859-2|iso_8859-2|latin2|l2|csISOLatin2"},
    {0x204, "Central European (ISO Latin 4)",
     "ISO-8859-4|iso8859-4|iso_8859-4|latin4|l4|csISOLatin4"},
    {0x400, "Latin-US (DOS)", "cp437|ibm437|437|csPC8CodePage437"},
    {0x600, "Western (ASCII)", "US-ASCII|ascii|us|ANSI_X3.4-1968|iso-ir-6|iso646-us|csASCII"},
    {0xBFF, "Non-lossy ASCII", "x-nonlossyascii"},
    // Beyond the editor's own list: the other encodings people still meet.
    {0x14000100, "Unicode (UTF-16LE)", "UTF-16LE|utf16le|utf-16-le|ucs-2le"},
    {0x10000100, "Unicode (UTF-16BE)", "UTF-16BE|utf16be|utf-16-be|ucs-2be"},
    {0x0C000100, "Unicode (UTF-32)", "UTF-32|utf32|ucs-4|iso-10646-ucs-4|csUCS4"},
    {0x1C000100, "Unicode (UTF-32LE)", "UTF-32LE|utf32le|utf-32-le|ucs-4le"},
    {0x18000100, "Unicode (UTF-32BE)", "UTF-32BE|utf32be|utf-32-be|ucs-4be"},
    {0x20F, "Western (ISO Latin 9)",
     "ISO-8859-15|iso8859-15|iso_8859-15|latin-9|latin9|l9|csISO885915"},
    {0x410, "Western (DOS Latin 1)", "IBM850|cp850|850|csPC850Multilingual"},
    {0x20A, "Nordic (ISO Latin 6)", "ISO-8859-10|iso8859-10|iso_8859-10|latin6|l6|csISOLatin6"},
    {0x20E, "Celtic (ISO Latin 8)", "ISO-8859-14|iso8859-14|iso_8859-14|latin8|l8|iso-celtic"},
    {0x412, "Central European (DOS Latin 2)", "IBM852|cp852|852|csPCp852"},
    {0x210, "Romanian (ISO Latin 10)", "ISO-8859-16|iso8859-16|iso_8859-16|latin10|l10"},
    {0x20D, "Baltic (ISO Latin 7)", "ISO-8859-13|iso8859-13|iso_8859-13|latin7|l7|csISO885913"},
    {0x507, "Baltic (Windows)", "windows-1257|cp1257|x-cp1257"},
    {0x502, "Cyrillic (Windows)", "windows-1251|cp1251|x-cp1251"},
    {0xA02, "Cyrillic (KOI8-R)", "KOI8-R|koi8r|koi8|csKOI8R"},
    {0xA08, "Ukrainian (KOI8-U)", "KOI8-U|koi8u"},
    {0x41B, "Russian (DOS)", "IBM866|cp866|866|csIBM866|ibm-866"},
    {0x413, "Cyrillic (DOS)", "IBM855|cp855|855|csIBM855"},
    {0x503, "Greek (Windows)", "windows-1253|cp1253|x-cp1253"},
    {0x504, "Turkish (Windows Latin 5)", "windows-1254|cp1254|x-cp1254"},
    {0x206, "Arabic (ISO 8859-6)",
     "ISO-8859-6|iso8859-6|iso_8859-6|arabic|csISOLatinArabic|ECMA-114|ASMO-708"},
    {0x208, "Hebrew (ISO 8859-8)",
     "ISO-8859-8|iso8859-8|iso_8859-8|hebrew|csISOLatinHebrew|ISO-8859-8-I|iso-ir-138"},
};

const Names* namesOf(quint32 encoding)
{
    for (const Names& names : encodingNames) {
        if (names.encoding == encoding) {
            return &names;
        }
    }
    return nullptr;
}

const QHash<QString, quint32>& encodingsByName()
{
    static const QHash<QString, quint32> table = [] {
        QHash<QString, quint32> byName;
        for (const Names& names : encodingNames) {
            const QStringList all = QString::fromLatin1(names.ianaName).split(u'|');
            for (const QString& name : all) {
                byName.insert(name.toLower(), names.encoding);
            }
        }
        return byName;
    }();
    return table;
}

} // namespace

quint64 StringEncoding::convertEncodingToNSStringEncoding(quint32 encoding)
{
    if (encoding == InvalidId) {
        return InvalidId;
    }
    for (const ClassicNumber& classic : classicNumbers) {
        if (classic.encoding == encoding) {
            return classic.stringEncoding;
        }
    }
    return 0x80000000ull + encoding;
}

quint32 StringEncoding::convertNSStringEncodingToEncoding(quint64 encoding)
{
    for (const ClassicNumber& classic : classicNumbers) {
        if (classic.stringEncoding == encoding) {
            return classic.encoding;
        }
    }
    if (encoding < 0x80000000ull || encoding >= 0xFFFFFFFFull) {
        return InvalidId;
    }
    return quint32(encoding - 0x80000000ull);
}

QString StringEncoding::convertEncodingToIANACharSetName(quint32 encoding)
{
    const Names* names = namesOf(encoding);
    if (!names) {
        return {};
    }
    const QString all = QString::fromLatin1(names->ianaName);
    return all.left(all.indexOf(u'|'));
}

quint32 StringEncoding::convertIANACharSetNameToEncoding(const QString& name)
{
    return encodingsByName().value(name.trimmed().toLower(), InvalidId);
}

QString StringEncoding::localizedNameOfStringEncoding(quint64 encoding)
{
    const quint32 cf = convertNSStringEncodingToEncoding(encoding);
    const Names* names = cf == InvalidId ? nullptr : namesOf(cf);
    return names ? QString::fromLatin1(names->displayName) : QString();
}

QList<quint64> StringEncoding::availableStringEncodings()
{
    QList<quint64> encodings;
    for (const Names& names : encodingNames) {
        encodings.append(convertEncodingToNSStringEncoding(names.encoding));
    }
    return encodings;
}
