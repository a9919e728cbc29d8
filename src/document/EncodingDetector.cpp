#include "document/EncodingDetector.h"

#include "document/EncodingManager.h"
#include "platform/StringEncoding.h"
#include "platform/TextCodec.h"
#include "platform/UnicodeText.h"

#include <uchardet.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace {

constexpr quint64 UTF8 = 4;
constexpr quint64 UTF16 = 10;
constexpr quint64 EUCJP = 3;
constexpr quint64 ISO2022JP = 21;
constexpr quint64 ShiftJIS = 0x80000A01;
constexpr quint64 WindowsJapanese = 8;
constexpr quint64 GB18030 = 0x80000632;
constexpr quint64 Big5 = 0x80000423;
constexpr quint64 EUCKR = 0x80000940;
constexpr quint64 WindowsLatin1 = 12;
constexpr quint64 WindowsLatin2 = 15;
constexpr quint64 WindowsCyrillic = 0x80000502;
constexpr quint64 KOI8R = 0x80000A02;
constexpr quint64 KOI8U = 0x80000A08;
constexpr quint64 DOSRussian = 0x8000041B;
constexpr quint64 UTF16LE = 0x94000100;
constexpr quint64 UTF16BE = 0x90000100;
constexpr quint64 UTF32LE = 0x9C000100;
constexpr quint64 UTF32BE = 0x98000100;

// Names uchardet reports that are not the IANA names of the encodings they stand for.
constexpr std::pair<const char*, quint32> detectorNames[] = {
    {"MAC-CYRILLIC", 0x7},        {"MAC-CENTRALEUROPE", 0x1D}, {"UTF-16LE", 0x100},
    {"UTF-16BE", 0x100},          {"TIS-620", 0x41D},          {"ISO-8859-11", 0x41D},
    {"X-ISO-10646-UCS-2", 0x100}, {"IBM861", 0x416},
};

// uchardet learns what it can from the first few megabytes of non-ASCII text; reading more
// of a large file would only cost time, since the whole file is decoded anyway before its
// answer is taken.
constexpr qsizetype detectorSample = 4 << 20;
// Plausibility is judged on this many bytes at most: enough to be sure, and quick.
constexpr qsizetype plausibilitySample = 1 << 16;

qsizetype firstNonAscii(QByteArrayView data)
{
    constexpr qsizetype block = 4096;
    for (qsizetype start = 0; start < data.size(); start += block) {
        const QByteArrayView part = data.sliced(start, qMin(block, data.size() - start));
        if (!UnicodeText::isAscii(part)) {
            for (qsizetype i = 0; i < part.size(); ++i) {
                if (uchar(part[i]) >= 0x80) {
                    return start + i;
                }
            }
        }
    }
    return -1;
}

// The bytes beyond ASCII that `data` holds, and how many there are, counted up to `enough`;
// the plain ASCII stretches of a large file are passed over at memory speed.
struct HighBytes {
    std::array<bool, 256> present{};
    qsizetype count = 0;
};

HighBytes highBytesIn(QByteArrayView data, qsizetype enough)
{
    HighBytes high;
    constexpr qsizetype block = 4096;
    for (qsizetype start = 0; start < data.size() && high.count < enough; start += block) {
        const QByteArrayView part = data.sliced(start, qMin(block, data.size() - start));
        if (UnicodeText::isAscii(part)) {
            continue;
        }
        for (const char c : part) {
            if (uchar(c) >= 0x80) {
                high.present[uchar(c)] = true;
                ++high.count;
            }
        }
    }
    return high;
}

quint64 encodingFromUchardet(QByteArrayView data, qsizetype nonAscii)
{
    const qsizetype from = qMax<qsizetype>(0, nonAscii - 4096);
    const QByteArrayView sample = data.sliced(from, qMin(detectorSample, data.size() - from));
    struct Deleter {
        void operator()(uchardet_t detector) const { uchardet_delete(detector); }
    };
    std::unique_ptr<std::remove_pointer_t<uchardet_t>, Deleter> detector(uchardet_new());
    if (!detector ||
        uchardet_handle_data(detector.get(), sample.data(), size_t(sample.size())) != 0) {
        return StringEncoding::NoEncoding;
    }
    uchardet_data_end(detector.get());
    const char* charset = uchardet_get_charset(detector.get());
    if (!charset || !*charset) {
        return StringEncoding::NoEncoding;
    }
    quint32 encoding =
        StringEncoding::convertIANACharSetNameToEncoding(QString::fromLatin1(charset));
    for (const auto& [name, number] : detectorNames) {
        if (qstricmp(name, charset) == 0) {
            encoding = number;
        }
    }
    if (encoding == StringEncoding::InvalidId) {
        return StringEncoding::NoEncoding;
    }
    return StringEncoding::convertEncodingToNSStringEncoding(encoding);
}

// What a judgement looks at: the lines that hold bytes beyond ASCII, from all over the data,
// up to about 64 KB; null when the data are small enough to be judged whole. A line starts
// after a line feed and ends with one, which no encoding judged here has inside a character;
// a line too long is cut after a byte of ASCII.
QByteArray judgedLines(QByteArrayView data)
{
    if (data.size() <= plausibilitySample) {
        return QByteArray();
    }
    QByteArray sample;
    constexpr qsizetype block = 4096;
    qsizetype taken = 0; // the end of the last line taken
    for (qsizetype start = 0; start < data.size() && sample.size() < plausibilitySample;
         start += block) {
        const QByteArrayView part = data.sliced(start, qMin(block, data.size() - start));
        if (UnicodeText::isAscii(part)) {
            continue;
        }
        for (qsizetype i = qMax(start, taken); i < start + part.size(); ++i) {
            if (uchar(data[i]) < 0x80) {
                continue;
            }
            const qsizetype lineStart = taken + data.sliced(taken, i - taken).lastIndexOf('\n') + 1;
            qsizetype lineEnd = data.indexOf('\n', i);
            lineEnd = lineEnd < 0 ? data.size() : lineEnd + 1;
            lineEnd = qMin(lineEnd, lineStart + plausibilitySample - sample.size());
            while (lineEnd > i + 1 && lineEnd < data.size() && data[lineEnd - 1] != '\n' &&
                   uchar(data[lineEnd - 1]) >= 0x80) {
                --lineEnd;
            }
            sample += data.sliced(lineStart, lineEnd - lineStart);
            taken = lineEnd;
            i = lineEnd - 1;
            if (sample.size() >= plausibilitySample) {
                break;
            }
        }
    }
    return sample.isEmpty() ? data.first(plausibilitySample).toByteArray() : sample;
}

// Whether every character of the encoding is one byte. (The list's others take several for
// some characters, or escape sequences.)
bool isSingleByte(quint64 encoding)
{
    static constexpr quint32 multiByte[] = {
        0xA01, 0x920, 0x820, 0x628, 0x8000100, 0x1, 0x420, 0x100, 0x930, 0xA05, 0x19,  0x421,
        0x632, 0x830, 0x931, 0xA09, 0xA06,     0x2, 0x423, 0x940, 0x840, 0x3,   0x422, 0xBFF,
    };
    // Of the other encodings, the variants of UTF-16 and UTF-32.
    static constexpr quint32 wide[] = {0x14000100, 0x10000100, 0x0C000100, 0x1C000100, 0x18000100};
    const quint32 cf = StringEncoding::convertNSStringEncodingToEncoding(encoding);
    return cf != StringEncoding::InvalidId &&
           std::find(std::begin(multiByte), std::end(multiByte), cf) == std::end(multiByte) &&
           std::find(std::begin(wide), std::end(wide), cf) == std::end(wide);
}

// The tally of a plausibility judgement: the characters beyond ASCII and their weights (1 for
// what text of the language commonly has, less for what it has rarely, 0 for what it never
// has or only as the garbage of a wrong reading).
struct Tally {
    double weight = 0;
    qsizetype characters = 0;
    qsizetype kana = 0;
    qsizetype ideographs = 0;

    void add(double w)
    {
        weight += w;
        ++characters;
    }
    // A character of bytes [start, end) standing between two plain letters is more likely a
    // letter with an accent in a Latin word, read two bytes at a time.
    void add(double w, QByteArrayView data, qsizetype start, qsizetype end)
    {
        const auto letter = [&](qsizetype at) {
            const char c = at >= 0 && at < data.size() ? data[at] : ' ';
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        };
        add(letter(start - 1) && letter(end) ? qMin(w, 0.25) : w);
    }
    double score() const { return characters == 0 ? 1.0 : weight / double(characters); }
};

// Shift_JIS and Windows code page 932: one byte for ASCII and half-width katakana, two for
// the rest, led by 0x81-0x9F or 0xE0-0xFC.
Tally tallyShiftJis(QByteArrayView data)
{
    Tally tally;
    const auto* bytes = reinterpret_cast<const uchar*>(data.data());
    for (qsizetype i = 0; i < data.size();) {
        const uchar b = bytes[i];
        if (b < 0x80) {
            ++i;
            continue;
        }
        if (b >= 0xA1 && b <= 0xDF) {
            tally.add(0); // half-width katakana: the trace of a wrong reading, nowadays
            ++i;
            continue;
        }
        const uint code = i + 1 < data.size() ? (uint(b) << 8 | bytes[i + 1]) : 0;
        i += 2;
        if (code >= 0x829F && code <= 0x82F1) {
            ++tally.kana; // hiragana
            tally.add(1, data, i - 2, i);
        } else if (code >= 0x8340 && code <= 0x8396) {
            ++tally.kana; // katakana
            tally.add(1, data, i - 2, i);
        } else if (b == 0x81 || (code >= 0x824F && code <= 0x829A)) {
            tally.add(1, data, i - 2, i); // punctuation, full-width digits and letters
        } else if (code >= 0x889F && code <= 0x9872) {
            ++tally.ideographs; // first level of kanji: the common ones
            tally.add(1, data, i - 2, i);
        } else if ((code >= 0x989F && code <= 0x9FFC) || (code >= 0xE040 && code <= 0xEAA4)) {
            ++tally.ideographs; // second level
            tally.add(0.5, data, i - 2, i);
        } else if (b == 0x87) {
            tally.add(0.5, data, i - 2, i); // circled numbers and units
        } else {
            tally.add(0, data, i - 2, i); // Greek, Cyrillic, box drawing, vendor and user areas
        }
    }
    return tally;
}

// EUC-JP: rows of JIS X 0208 as two bytes of 0xA1-0xFE; 0x8E leads half-width katakana,
// 0x8F the rarely used JIS X 0212.
Tally tallyEucJp(QByteArrayView data)
{
    Tally tally;
    const auto* bytes = reinterpret_cast<const uchar*>(data.data());
    for (qsizetype i = 0; i < data.size();) {
        const uchar b = bytes[i];
        if (b < 0x80) {
            ++i;
        } else if (b == 0x8E) {
            tally.add(0);
            i += 2;
        } else if (b == 0x8F) {
            tally.add(0);
            i += 3;
        } else {
            const int row = b - 0xA0;
            i += 2;
            if (row == 4 || row == 5) {
                ++tally.kana;
                tally.add(1, data, i - 2, i);
            } else if (row == 1 || row == 3) {
                tally.add(1, data, i - 2, i);
            } else if (row >= 16 && row <= 47) {
                ++tally.ideographs;
                tally.add(1, data, i - 2, i);
            } else if (row >= 48 && row <= 84) {
                ++tally.ideographs;
                tally.add(0.5, data, i - 2, i);
            } else if (row == 2 || row == 13) {
                tally.add(0.5, data, i - 2, i);
            } else {
                tally.add(0, data, i - 2, i);
            }
        }
    }
    return tally;
}

// GB 2312 as held by GB 18030 (and GBK): rows of 0xA1-0xFE pairs; other pairs are GBK's
// extension, sequences of four bytes the rest of Unicode.
Tally tallyGb(QByteArrayView data)
{
    Tally tally;
    const auto* bytes = reinterpret_cast<const uchar*>(data.data());
    for (qsizetype i = 0; i < data.size();) {
        const uchar b = bytes[i];
        if (b < 0x80) {
            ++i;
            continue;
        }
        const uchar t = i + 1 < data.size() ? bytes[i + 1] : 0;
        if (t >= 0x30 && t <= 0x39) {
            tally.add(0);
            i += 4;
            continue;
        }
        i += 2;
        const int row = b - 0xA0;
        if (t < 0xA1 || row < 1 || row > 87) {
            tally.add(0, data, i - 2, i); // GBK's extension: rare characters
        } else if (row == 1 || row == 3) {
            tally.add(1, data, i - 2, i);
        } else if (row >= 16 && row <= 55) {
            ++tally.ideographs;
            tally.add(1, data, i - 2, i);
        } else if (row >= 56) {
            ++tally.ideographs;
            tally.add(0.5, data, i - 2, i);
        } else if (row == 2 || row == 8) {
            tally.add(0.5, data, i - 2, i); // numbers, pinyin
        } else {
            if (row == 4 || row == 5) {
                ++tally.kana;
            }
            tally.add(0, data, i - 2, i); // kana, Greek, Cyrillic, box drawing
        }
    }
    return tally;
}

// Big5 as Windows code page 950: pairs led by 0x81-0xFE.
Tally tallyBig5(QByteArrayView data)
{
    Tally tally;
    const auto* bytes = reinterpret_cast<const uchar*>(data.data());
    for (qsizetype i = 0; i < data.size();) {
        const uchar b = bytes[i];
        if (b < 0x80) {
            ++i;
            continue;
        }
        const uint code = i + 1 < data.size() ? (uint(b) << 8 | bytes[i + 1]) : 0;
        i += 2;
        if (code >= 0xA140 && code <= 0xA3BF) {
            tally.add(1, data, i - 2, i); // punctuation and symbols
        } else if (code >= 0xA440 && code <= 0xC67E) {
            ++tally.ideographs; // the frequently used characters
            tally.add(1, data, i - 2, i);
        } else if (code >= 0xC940 && code <= 0xF9D5) {
            ++tally.ideographs; // the less frequently used ones
            tally.add(0.5, data, i - 2, i);
        } else {
            tally.add(0, data, i - 2, i); // the user-defined areas and vendor extensions
        }
    }
    return tally;
}

// EUC-KR: rows of KS X 1001 as 0xA1-0xFE pairs.
Tally tallyEucKr(QByteArrayView data)
{
    Tally tally;
    const auto* bytes = reinterpret_cast<const uchar*>(data.data());
    // Korean puts spaces between words, which are seldom longer than six syllables; Chinese
    // read as Korean gives long runs.
    qsizetype run = 0;
    qsizetype runEnd = -1;
    for (qsizetype i = 0; i < data.size();) {
        const uchar b = bytes[i];
        if (b < 0x80) {
            ++i;
            continue;
        }
        run = i == runEnd ? run + 1 : 1;
        i += 2;
        runEnd = i;
        const double cap = run > 6 ? 0.5 : 1;
        const int row = b - 0xA0;
        if (row >= 16 && row <= 40) {
            tally.add(cap, data, i - 2, i); // Hangul syllables
        } else if (row == 1 || row == 3) {
            tally.add(cap, data, i - 2, i);
        } else if (row >= 42 && row <= 93) {
            ++tally.ideographs; // hanja
            tally.add(qMin(cap, 0.5), data, i - 2, i);
        } else if (row == 2 || row == 4) {
            tally.add(qMin(cap, 0.5), data, i - 2, i);
        } else {
            if (row == 10 || row == 11) {
                ++tally.kana;
            }
            tally.add(0, data, i - 2, i);
        }
    }
    return tally;
}

bool isAsciiLetter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool isApostrophe(QChar c)
{
    return c == u'\u2019' || c == u'\u2018' || c == u'\u00B7';
}

// How common a Cyrillic letter is in Russian, Ukrainian, Bulgarian or Serbian text, where the
// one-byte encodings differ in which byte is which letter: the frequent letters of one read as
// rare letters, or as capitals, in another. Capitals stand at the start of words.
double cyrillicWeight(QChar c, QChar before)
{
    static const QString common = QStringLiteral("оеаинтсрвлкмдпуяыьгзбчйхжшюіј");
    static const QString lessCommon = QStringLiteral("цщэфъёєїґўљњћђџ");
    const double capital = c.isUpper() && before.isLetter() ? 0.5 : 1;
    const QChar lower = c.toLower();
    return capital * (common.contains(lower) ? 1 : lessCommon.contains(lower) ? 0.5 : 0.25);
}

// Slavic words hold vowels and consonants in roughly equal measure; most wrong readings of
// Cyrillic bytes in another Cyrillic encoding turn the vowels of a word into consonants.
double cyrillicWordWeight(QStringView word)
{
    static const QString vowels = QStringLiteral("аеёиоуыэюяіїєАЕЁИОУЫЭЮЯІЇЄ");
    if (word.size() < 4) {
        return 1;
    }
    const auto count =
        std::count_if(word.begin(), word.end(), [](QChar c) { return vowels.contains(c); });
    const double share = double(count) / double(word.size());
    return share >= 0.2 && share <= 0.75 ? 1 : 0.5;
}

// Text read one byte a character: its letters beyond ASCII stand within words, next to plain
// letters for the Latin alphabets and to one another for the other scripts, in words of one
// script; its punctuation is a handful of marks between words. A wrong reading of the same
// bytes gives runs of accented letters, capitals inside words, signs within words, letters
// of two scripts side by side, controls.
Tally tallySingleByte(QStringView text)
{
    static const QString commonMarks = QStringLiteral("«»‘’‚“”„‹›–—…€£°¿¡§©®™•·\u00A0");
    static const QString otherMarks = QStringLiteral("ºª×÷±²³¹½¼¾µ¢¥¶¬");
    Tally tally;
    // The length of the run of letters beyond ASCII that the current one belongs to.
    qsizetype runStart = 0;
    qsizetype runLength = 0;
    double runWeight = 1; // of a Cyrillic run, see cyrillicWordWeight()
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.unicode() < 0x80) {
            continue;
        }
        const QChar before = i > 0 ? text[i - 1] : QChar();
        const QChar after = i + 1 < text.size() ? text[i + 1] : QChar();
        if (c.isLetter()) {
            if (i >= runStart + runLength) {
                runStart = i;
                runLength = 0;
                while (i + runLength < text.size() && text[i + runLength].unicode() >= 0x80 &&
                       (text[i + runLength].isLetter() || text[i + runLength].isMark())) {
                    ++runLength;
                }
                runWeight = cyrillicWordWeight(text.sliced(runStart, runLength));
            }
            const bool capitalInside = c.isUpper() && before.isLetter() && before.isLower();
            const bool mixedScripts =
                (before.unicode() >= 0x80 && before.isLetter() && before.script() != c.script()) ||
                (after.unicode() >= 0x80 && after.isLetter() && after.script() != c.script());
            if (capitalInside || mixedScripts) {
                tally.add(0);
            } else if (c.script() == QChar::Script_Latin) {
                if (isAsciiLetter(before) || isAsciiLetter(after)) {
                    tally.add(1);
                } else {
                    tally.add(runLength <= 3 ? 0.5 : 0);
                }
            } else if (isAsciiLetter(before) || isAsciiLetter(after)) {
                tally.add(0); // words of another script have no plain letters
            } else {
                // A letter alone is unusual, and so are most Cyrillic letters of a wrong reading.
                const double weight = runLength >= 2 ? 1 : 0.5;
                tally.add(c.script() == QChar::Script_Cyrillic
                              ? weight * runWeight * cyrillicWeight(c, before)
                              : weight);
            }
        } else if (c.isMark()) {
            tally.add(before.isLetter() || before.isMark() ? 1 : 0);
        } else if (commonMarks.contains(c) || otherMarks.contains(c)) {
            const bool withinWord = before.isLetter() && after.isLetter() && !isApostrophe(c);
            tally.add(withinWord ? 0 : commonMarks.contains(c) ? 1 : 0.5);
        } else {
            tally.add(0);
        }
    }
    return tally;
}

// The encodings people wrote Japanese, Korean, Chinese, European and Russian text in before
// UTF-8, in the order that breaks a tie (after uchardet's own answer).
constexpr quint64 candidates[] = {
    ShiftJIS,      EUCJP,         ISO2022JP,       EUCKR, GB18030,    Big5,
    WindowsLatin1, WindowsLatin2, WindowsCyrillic, KOI8R, DOSRussian,
};

// Encodings that read most bytes as another does, which uchardet names for it: KOI8-U (it
// knows only KOI8-R), the Windows code pages beside the ISO ones it prefers (whose C1
// controls stand where Windows has quotes and dashes), Windows Cyrillic beside Mac OS's.
constexpr std::pair<quint64, quint64> relatives[] = {
    {KOI8R, KOI8U},
    {0x8000020D, 0x80000507}, // ISO 8859-13, Windows Baltic
    {0x80000207, 0x80000503}, // ISO 8859-7, Windows Greek
    {0x80000209, 0x80000504}, // ISO 8859-9, Windows Turkish
    {0x80000007, WindowsCyrillic},
};

QList<quint64> relativesOf(quint64 encoding)
{
    QList<quint64> found;
    for (const auto& [one, other] : relatives) {
        if (one == encoding) {
            found.append(other);
        }
    }
    return found;
}

// From this many bytes beyond ASCII on, uchardet's single-byte answers are trusted.
constexpr qsizetype trustedAnswerBytes = 32;

// The Mac OS, DOS and NeXT encodings: few files met today are written in them.
bool isRare(quint64 encoding)
{
    const quint32 cf = StringEncoding::convertNSStringEncodingToEncoding(encoding);
    return cf < 0x100 || (cf >= 0x400 && cf < 0x500) || cf == 0xB01;
}

// Whether the single-byte encoding reads every byte of `data` as Windows Latin 1 does.
bool readsAsWindowsLatin1(QByteArrayView data, quint64 encoding)
{
    if (!isSingleByte(encoding)) {
        return false;
    }
    const HighBytes high = highBytesIn(data, std::numeric_limits<qsizetype>::max());
    for (int byte = 0x80; byte < 0x100; ++byte) {
        if (high.present[byte]) {
            const QByteArray one(1, char(byte));
            const std::optional<QString> mine = TextCodec::decode(encoding, one);
            if (!mine || mine != TextCodec::decode(WindowsLatin1, one)) {
                return false;
            }
        }
    }
    return true;
}

// Below this, no reading is plausible: the bytes are better read one for one, in the Western
// encoding, which keeps every byte.
constexpr double plausibleEnough = 0.5;

// How plausible `head` is as text in `encoding` (see EncodingDetector::plausibility).
double judge(QByteArrayView head, quint64 encoding)
{
    const std::optional<QString> text = TextCodec::decode(encoding, head);
    if (!text) {
        return -1;
    }
    Tally tally;
    switch (encoding) {
    case ShiftJIS:
    case WindowsJapanese:
        tally = tallyShiftJis(head);
        break;
    case EUCJP:
        tally = tallyEucJp(head);
        break;
    case GB18030:
        tally = tallyGb(head);
        break;
    case Big5:
        tally = tallyBig5(head);
        break;
    case EUCKR:
        tally = tallyEucKr(head);
        break;
    case ISO2022JP: {
        // What stands between the escapes is JIS X 0208: judged as EUC-JP.
        const std::optional<QByteArray> euc = TextCodec::encode(EUCJP, *text);
        if (!euc) {
            return 0;
        }
        tally = tallyEucJp(*euc);
        break;
    }
    default:
        if (!isSingleByte(encoding)) {
            return -1;
        }
        tally = tallySingleByte(*text);
        break;
    }
    double score = tally.score();
    // Japanese is written with kana between the kanji: ideographs alone in EUC-JP, whose rows
    // Chinese GB 2312 shares, are more likely Chinese.
    if (encoding == EUCJP && tally.ideographs > 0 && tally.kana == 0) {
        score *= 0.5;
    }
    return score;
}

} // namespace

double EncodingDetector::plausibility(QByteArrayView data, quint64 encoding)
{
    const QByteArray sample = judgedLines(data);
    return judge(sample.isNull() ? data : QByteArrayView(sample), encoding);
}

quint64 EncodingDetector::detect(QByteArrayView data, const QList<quint64>& offered, QString& text)
{
    const auto decodes = [&](quint64 encoding) {
        return offered.contains(encoding) && TextCodec::decode(encoding, data, text);
    };
    // Nearly any even number of bytes decodes as UTF-16, but text in it has NUL bytes as
    // the high half of every ASCII character; data of another kind gives NUL characters.
    if (data.contains('\0') && decodes(UTF16) && !text.contains(QChar(0))) {
        // Without a byte-order mark, the variant of its byte order writes it back as it was.
        for (const quint64 order : {UTF16LE, UTF16BE}) {
            if (offered.contains(order) && TextCodec::encode(order, text) == data) {
                return order;
            }
        }
        return UTF16;
    }
    // UTF-32 has NUL bytes in every character, and its units above U+10FFFF in any other data.
    if (data.contains('\0') && data.size() % 4 == 0) {
        for (const quint64 order : {UTF32LE, UTF32BE}) {
            if (decodes(order) && !text.contains(QChar(0))) {
                return order;
            }
        }
    }
    const qsizetype nonAscii = firstNonAscii(data);
    // The encodings of seven bits (ISO-2022-JP, -KR, -CN, HZ) shift with escapes and tildes.
    const bool mayShift = nonAscii < 0 && (data.contains('\x1B') || data.contains("~{"));
    // Text that is valid UTF-8 beyond ASCII is UTF-8 in all but contrived cases; plain ASCII
    // is UTF-8 too, so that the first character beyond ASCII typed into it can be saved.
    if (!mayShift && (nonAscii < 0 || UnicodeText::isValidUtf8(data.sliced(nonAscii))) &&
        decodes(UTF8)) {
        return UTF8;
    }
    // uchardet knows the double-byte encodings well, even from a line; its answer is taken
    // when the bytes decode in it.
    const quint64 answer = encodingFromUchardet(data, qMax<qsizetype>(nonAscii, 0));
    // UTF-8 is known not to decode by now.
    const bool answered = answer != StringEncoding::NoEncoding && answer != UTF16 &&
                          answer != UTF8 && offered.contains(answer);
    if (answered && !isSingleByte(answer) && TextCodec::decode(answer, data, text)) {
        return answer;
    }
    if (nonAscii < 0 && decodes(UTF8)) {
        return UTF8;
    }
    // From a good many letters its single-byte answers are right too; from a few, they often
    // pick a neighbour of the right encoding that reads some of them wrong, and for some short
    // texts it has no answer. Then the reading most plausible as text decides, among its
    // answer and the encodings people most often wrote text in; a tie goes to the first in
    // that order, except that the Mac OS and DOS encodings, rare in files met today, give way.
    QList<std::pair<quint64, double>> readings; // most plausible first
    const QByteArray sample = judgedLines(data);
    const QByteArrayView judged = sample.isNull() ? data : QByteArrayView(sample);
    if (answered && isSingleByte(answer) &&
        highBytesIn(data.sliced(qMax<qsizetype>(nonAscii, 0)), trustedAnswerBytes).count >=
            trustedAnswerBytes) {
        if (const double score = judge(judged, answer); score >= 0) {
            // A relative that reads the bytes better is what the answer meant.
            quint64 best = answer;
            double bestScore = score;
            for (const quint64 relative : relativesOf(answer)) {
                const double relativeScore =
                    offered.contains(relative) ? judge(judged, relative) : -1;
                if (relativeScore > bestScore) {
                    best = relative;
                    bestScore = relativeScore;
                }
            }
            readings.append({best, 1});
            if (best != answer) {
                readings.append({answer, 1});
            }
        }
    }
    if (readings.isEmpty()) {
        // An answer beyond the editor's own list breaks no tie: from a few letters uchardet
        // takes Western text for Baltic or Nordic, whose readings of them are as plausible.
        const bool beyondList = answered && EncodingManager::otherEncodingList().contains(answer);
        QList<quint64> order;
        if (answered && !beyondList) {
            order.append(answer);
        }
        order.append(QList<quint64>(std::begin(candidates), std::end(candidates)));
        if (answered) {
            order.append(answer);
        }
        for (qsizetype i = 0, count = order.size(); i < count; ++i) {
            order.append(relativesOf(order[i]));
        }
        for (qsizetype i = 0; i < order.size(); ++i) {
            const quint64 encoding = order[i];
            if (!offered.contains(encoding) || order.indexOf(encoding) < i ||
                (encoding == ISO2022JP && !data.contains('\x1B'))) {
                continue;
            }
            if (const double score = judge(judged, encoding); score >= 0) {
                readings.append({encoding, score - (isRare(encoding) ? 0.01 : 0)});
            }
        }
        std::stable_sort(readings.begin(), readings.end(),
                         [](const auto& a, const auto& b) { return a.second > b.second; });
    }
    // Bytes that read as no text at all are read one for one, which keeps every byte; and
    // where the best reading is the same as Windows Latin 1's, the most common of all is taken.
    if (!readings.isEmpty() && offered.contains(WindowsLatin1) &&
        readings.front().first != WindowsLatin1 &&
        (readings.front().second < plausibleEnough ||
         readsAsWindowsLatin1(data, readings.front().first))) {
        readings.prepend({WindowsLatin1, 1});
    }
    // The judgement saw part of the data; the whole must decode.
    for (const auto& reading : readings) {
        if (TextCodec::decode(reading.first, data, text)) {
            return reading.first;
        }
    }
    if (decodes(WindowsLatin1)) {
        return WindowsLatin1;
    }
    text.clear();
    return StringEncoding::NoEncoding;
}
