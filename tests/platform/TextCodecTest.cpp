#include "platform/TextCodec.h"

#include "platform/StringEncoding.h"
#include "platform/UnicodeText.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <optional>

namespace {

struct CodecCase {
    quint64 encoding;
    QString text;                      // characters the encoding holds
    std::optional<QByteArray> invalid; // none: every byte is a character of its own
    QString unwritable;                // a character the encoding cannot hold
};

QByteArray bytes(const char* data)
{
    return QByteArray(data);
}

const QString emoji = QStringLiteral("\U0001F600");
const QString loneSurrogate = QString(QChar(0xD800));

std::vector<CodecCase> codecCases()
{
    return {
        {0x80000A01, u"日本語テキスト、ｶﾀｶﾅ abc\\~"_qs, bytes("\x81\x20"), u"한"_qs},
        {3, u"日本語のテキスト ｶﾅ 髙"_qs, bytes("\xA4\x20"), u"한"_qs},
        {21, u"日本語 text\r\n次の行"_qs, bytes("\xA4\xA2"), u"한"_qs},
        {0x80000628, u"日本語テキスト𠀋"_qs, bytes("\x81\x20"), u"한"_qs},
        {4, u"Grüße 日本 😀"_qs, bytes("\xC0\xAF"), loneSurrogate},
        {0x80000001, u"日本語テキスト"_qs, bytes("\x81\x20"), u"한"_qs},
        {8, u"①日本語ｶﾀｶﾅ"_qs, bytes("\x81\x20"), u"한"_qs},
        {10, u"UTF-16 テキスト 😀"_qs, bytes("\xFE\xFF\xD8\x00"), loneSurrogate},
        {30, u"Café ü ∑ π ﬁ"_qs, std::nullopt, u"日"_qs},
        {12, u"Café €™"_qs, std::nullopt, u"Ā"_qs},
        {2, u"Café ß"_qs, bytes("\xFE"), u"日"_qs},
        {0x80000930, u"简体中文"_qs, bytes("\xA1\x20"), u"한"_qs},
        {0x80000A05, u"简体中文 ascii"_qs, bytes("\x80"), u"한"_qs},
        {0x80000019, u"简体中文"_qs, bytes("\xA1\x20"), u"한"_qs},
        {0x80000421, u"简体中文"_qs, bytes("\x81\x20"), emoji},
        {0x80000632, u"简体中文😀"_qs, bytes("\x81\x30\x81"), loneSurrogate},
        {0x80000830, u"简体中文"_qs, bytes("\x80"), emoji},
        {0x80000931, u"繁體中文"_qs, bytes("\xA1\x20"), emoji},
        {0x80000A09, u"繁體中文"_qs, bytes("\xA1\x20"), emoji},
        {0x80000A06, u"繁體中文"_qs, bytes("\xA1\x20"), emoji},
        {0x80000002, u"繁體中文"_qs, bytes("\xA1\x20"), emoji},
        {0x80000423, u"繁體中文"_qs, bytes("\xA1\x20"), emoji},
        {0x80000940, u"한국어"_qs, bytes("\xB0\x20"), emoji},
        {0x80000840, u"한국어 text"_qs, bytes("\x80"), emoji},
        {0x80000003, u"한국어"_qs, bytes("\xB0\x20"), emoji},
        {0x80000422, u"한국어똠"_qs, bytes("\xB0\x20"), emoji},
        {0x8000001D, u"Čeština Łódź"_qs, std::nullopt, u"日"_qs},
        {15, u"Čeština Łódź"_qs, std::nullopt, u"日"_qs},
        {0x80000015, u"ภาษาไทย"_qs, bytes("\xFF"), u"日"_qs},
        {0x8000041D, u"ภาษาไทย"_qs, std::nullopt, u"日"_qs},
        {0x80000508, u"Vi\u00EA\u0323t Đ ư ơ"_qs, std::nullopt, u"日"_qs},
        {0x80000004, u"العربية"_qs, std::nullopt, u"日"_qs},
        {0x80000506, u"العربية"_qs, std::nullopt, u"日"_qs},
        {0x80000005, u"עברית"_qs, std::nullopt, u"日"_qs},
        {0x80000505, u"עברית"_qs, bytes("\xD9"), u"日"_qs},
        {0x80000006, u"Ελληνικά"_qs, std::nullopt, u"日"_qs},
        {0x80000207, u"Ελληνικά"_qs, bytes("\xFF"), u"日"_qs},
        {0x80000007, u"Русский"_qs, std::nullopt, u"日"_qs},
        {0x80000205, u"Русский"_qs, std::nullopt, u"日"_qs},
        {0x80000023, u"Türkçe ğış"_qs, std::nullopt, u"日"_qs},
        {0x80000209, u"Türkçe ğış"_qs, std::nullopt, u"日"_qs},
        {0x80000025, u"Íslenska þð€"_qs, std::nullopt, u"日"_qs},
        {0x80000416, u"Íslenska þð"_qs, std::nullopt, u"日"_qs},
        {5, u"Café"_qs, std::nullopt, u"Ā"_qs},
        {0x80000203, u"Ħ ĉ ğ"_qs, bytes("\xA5"), u"日"_qs},
        {9, u"Čeština Łódź"_qs, std::nullopt, u"日"_qs},
        {0x80000204, u"Latviešu ā ē"_qs, std::nullopt, u"日"_qs},
        {0x80000400, u"Café ░▒▓ ½"_qs, std::nullopt, u"日"_qs},
        {1, u"plain text"_qs, bytes("\x80"), u"é"_qs},
        {7, u"Café \\ 日本 😀"_qs, bytes("\\x"), loneSurrogate},
        // The other encodings.
        {0x94000100, u"UTF-16LE テキスト 😀"_qs, QByteArray("\x00\xD8", 2), loneSurrogate},
        {0x90000100, u"UTF-16BE テキスト 😀"_qs, QByteArray("\xD8\x00", 2), loneSurrogate},
        {0x8C000100, u"UTF-32 テキスト 😀"_qs, QByteArray("\0\0\xD8\0", 4), loneSurrogate},
        {0x9C000100, u"UTF-32LE 😀"_qs, QByteArray("\0\xD8\0\0", 4), loneSurrogate},
        {0x98000100, u"UTF-32BE 😀"_qs, QByteArray("\0\0\xD8\0", 4), loneSurrogate},
        {0x8000020F, u"Œuvre € š ž Ÿ"_qs, std::nullopt, u"Ā"_qs},
        {0x80000410, u"Café ñ ╬ ß"_qs, std::nullopt, u"日"_qs},
        {0x8000020A, u"Ásta ŋ ĸ ð"_qs, std::nullopt, u"日"_qs},
        {0x8000020E, u"Ŵŷ ḃ ẅ"_qs, std::nullopt, u"日"_qs},
        {0x80000412, u"Čeština Łódź"_qs, std::nullopt, u"日"_qs},
        {0x80000210, u"Română ș ț €"_qs, std::nullopt, u"日"_qs},
        {0x8000020D, u"Lietuvių ą č ę"_qs, std::nullopt, u"日"_qs},
        {0x80000507, u"Latviešu ā ē"_qs, bytes("\xA1"), u"日"_qs},
        {0x80000502, u"Русский Ђ ў"_qs, std::nullopt, u"日"_qs},
        {0x80000A02, u"Русский ╬"_qs, std::nullopt, u"日"_qs},
        {0x80000A08, u"Українська ї є ґ"_qs, std::nullopt, u"日"_qs},
        {0x8000041B, u"Русский ░ Ё"_qs, std::nullopt, u"日"_qs},
        {0x80000413, u"Русский Ђ"_qs, std::nullopt, u"日"_qs},
        {0x80000503, u"Ελληνικά Ά"_qs, bytes("\xD2"), u"日"_qs},
        {0x80000504, u"Türkçe ğış"_qs, std::nullopt, u"日"_qs},
        {0x80000206, u"العربية"_qs, bytes("\xA1"), u"日"_qs},
        {0x80000208, u"עברית"_qs, bytes("\xA1"), u"日"_qs},
    };
}

} // namespace

TEST(TextCodec, EveryEncodingRoundTripsFailsOnInvalidBytesAndRefusesWhatItCannotHold)
{
    const auto cases = codecCases();
    for (const CodecCase& c : cases) {
        SCOPED_TRACE(StringEncoding::localizedNameOfStringEncoding(c.encoding).toStdString());
        ASSERT_NE(TextCodec::codecForEncoding(c.encoding), nullptr);

        const QString text = c.text + u"\nASCII line 123 !?\n"_qs;
        const std::optional<QByteArray> encoded = TextCodec::encode(c.encoding, text);
        ASSERT_TRUE(encoded.has_value());
        if (c.encoding != 4 && c.encoding != 1) {
            EXPECT_NE(*encoded, text.toUtf8()) << "the sample must exercise the encoding";
        }
        EXPECT_EQ(TextCodec::decode(c.encoding, *encoded), text);

        if (c.invalid) {
            EXPECT_FALSE(TextCodec::decode(c.encoding, *c.invalid).has_value());
            // Invalid bytes in the middle of good text fail the whole decode as well.
            EXPECT_FALSE(TextCodec::decode(c.encoding, *encoded + *c.invalid + "tail").has_value());
        } else {
            // Every byte is a character: all 256 decode to 256 characters, and writing them
            // gives bytes that read back as the same text (Arabic and Hebrew have two
            // bytes for some punctuation, one per writing direction).
            QByteArray all;
            for (int b = 0; b < 256; ++b) {
                all.append(char(b));
            }
            const std::optional<QString> decoded = TextCodec::decode(c.encoding, all);
            ASSERT_TRUE(decoded.has_value());
            EXPECT_GE(decoded->size(), 256); // Mac OS Hebrew has pointed letters
            const std::optional<QByteArray> written = TextCodec::encode(c.encoding, *decoded);
            ASSERT_TRUE(written.has_value());
            EXPECT_EQ(TextCodec::decode(c.encoding, *written), decoded);
        }

        EXPECT_FALSE(TextCodec::canBeConvertedToEncoding(c.text + c.unwritable, c.encoding));
        EXPECT_TRUE(TextCodec::canBeConvertedToEncoding(c.text, c.encoding));
    }
    // Every encoding that has a name has a row above, except Mac OS Vietnamese, which has
    // no codec on this system.
    EXPECT_EQ(cases.size() + 1, size_t(StringEncoding::availableStringEncodings().size()));
    EXPECT_EQ(TextCodec::codecForEncoding(0x8000001E), nullptr);
    EXPECT_FALSE(TextCodec::decode(0x8000001E, QByteArray("abc")).has_value());
    EXPECT_FALSE(TextCodec::decode(StringEncoding::NoEncoding, QByteArray("abc")).has_value());
}

TEST(TextCodec, Utf8IsStrictAtEveryPositionOfTheFastPath)
{
    const QList<QByteArray> invalid = {
        "\xC0\xAF",         // overlong
        "\xE0\x80\xAF",     // overlong
        "\xED\xA0\x80",     // surrogate
        "\xF4\x90\x80\x80", // above U+10FFFF
        "\xF8\x88\x80\x80", // five-byte form
        "\xF5\x80\x80\x80", // a lead byte no character has
        "\xE6\x97",         // truncated
        "\x80",             // lone continuation
        "\xC3\x28",         // bad continuation
    };
    // The check the detector makes without decoding agrees with the decoder everywhere.
    for (int at : {0, 1, 15, 16, 17, 40}) {
        const QByteArray ascii(at, 'a');
        for (const QByteArray& bad : invalid) {
            const QByteArray bytes = ascii + bad + QByteArray(20, 'b');
            EXPECT_FALSE(TextCodec::decode(4, bytes).has_value())
                << at << " " << bad.toHex().constData();
            EXPECT_FALSE(UnicodeText::isValidUtf8(bytes)) << at << " " << bad.toHex().constData();
        }
    }
    for (const QByteArray& edge :
         {QByteArray(), QByteArray("\xEF\xBF\xBF"), QByteArray("\xF4\x8F\xBF\xBF")}) {
        EXPECT_TRUE(UnicodeText::isValidUtf8(edge));
        EXPECT_TRUE(TextCodec::decode(4, edge).has_value());
    }
    // Cut off by the end of the data.
    EXPECT_FALSE(UnicodeText::isValidUtf8("ab\xE2\x82"));
    EXPECT_FALSE(TextCodec::decode(4, QByteArray("ab\xE2\x82")).has_value());
    // Random valid text of all sequence lengths decodes as Qt's own decoder does.
    QRandomGenerator random(42);
    for (int round = 0; round < 200; ++round) {
        QString text;
        const int length = random.bounded(1, 80);
        for (int i = 0; i < length; ++i) {
            switch (random.bounded(5)) {
            case 0:
                text += QChar(char16_t(random.bounded(0x80, 0x800)));
                break;
            case 1:
                text += QChar(char16_t(random.bounded(0x3000, 0xD000)));
                break;
            case 2:
                text += QString::fromUcs4(U"\U0001F600");
                break;
            default:
                text += QChar(char16_t(random.bounded(0x20, 0x7F)));
            }
        }
        EXPECT_EQ(TextCodec::decode(4, text.toUtf8()), text);
        EXPECT_TRUE(UnicodeText::isValidUtf8(text.toUtf8()));
    }
    // The byte-order mark is not part of the text; a second one is.
    EXPECT_EQ(TextCodec::decode(4, QByteArray("\xEF\xBB\xBFx\xEF\xBB\xBF")), u"x\uFEFF"_qs);
}

TEST(TextCodec, Utf16ByteOrderComesFromTheMarkOrTheData)
{
    const QString text = u"Line 日本 😀\n"_qs;
    QByteArray big;
    QByteArray little;
    for (QChar c : text) {
        big.append(char(c.unicode() >> 8)).append(char(c.unicode() & 0xFF));
        little.append(char(c.unicode() & 0xFF)).append(char(c.unicode() >> 8));
    }
    // The mark chooses the order and is not part of the text.
    EXPECT_EQ(TextCodec::decode(10, "\xFE\xFF" + big), text);
    EXPECT_EQ(TextCodec::decode(10, "\xFF\xFE" + little), text);
    // Unmarked: big-endian unless the data are clearly little-endian.
    EXPECT_EQ(TextCodec::decode(10, big), text);
    EXPECT_EQ(TextCodec::decode(10, little), text);
    const QByteArray cjkBig = QByteArray("\x4E\x00\x4E\x01\x65\xE5\x67\x2C", 8); // 一丁日本
    EXPECT_EQ(TextCodec::decode(10, cjkBig), u"一丁日本"_qs);
    // Data that look big-endian but hold a lone surrogate that way are little-endian.
    EXPECT_EQ(TextCodec::decode(10, QByteArray::fromHex("dc004142")), u"\u00DC\u4241"_qs);
    // Odd lengths and lone surrogates fail.
    EXPECT_FALSE(TextCodec::decode(10, QByteArray("\xFE\xFF\x00", 3)).has_value());
    EXPECT_FALSE(TextCodec::decode(10, QByteArray("\xFE\xFF\xDC\x00\x00\x41", 6)).has_value());
    // Writing puts a mark in front, so that any reader finds the order.
    const std::optional<QByteArray> written = TextCodec::encode(10, text);
    ASSERT_TRUE(written.has_value());
    EXPECT_EQ(written->left(2), QByteArray("\xFF\xFE"));
    EXPECT_EQ(written->mid(2), little);
}

TEST(TextCodec, NonLossyAsciiEscapesEverythingElse)
{
    EXPECT_EQ(TextCodec::encode(7, u"a\\b é日😀"_qs),
              QByteArray("a\\\\b \\u00e9\\u65e5\\ud83d\\ude00"));
    EXPECT_EQ(TextCodec::decode(7, QByteArray("a\\\\b \\u00E9\\u65e5\\101\\351")),
              u"a\\b é日Aé"_qs);
    for (const char* bad :
         {"\\", "\\u12", "\\u12g4", "\\9", "\\400", "\\q", "\xC3\xA9", "\\ud83d alone"}) {
        EXPECT_FALSE(TextCodec::decode(7, QByteArray(bad)).has_value()) << bad;
    }
}

TEST(TextCodec, ShiftJisX0213AndTablesHandleSequencesBeyondOneCharacter)
{
    // JIS X 0213 writes か with the semi-voiced mark as one code; iconv must flush it.
    const QString kaSemiVoiced = u"か\u309A"_qs;
    const std::optional<QByteArray> written = TextCodec::encode(0x80000628, kaSemiVoiced);
    ASSERT_TRUE(written.has_value());
    EXPECT_EQ(written->size(), 2);
    EXPECT_EQ(TextCodec::decode(0x80000628, *written), kaSemiVoiced);
    // Apple's tables write some characters as a base and a hint for the glyph; the longest
    // text that has a byte sequence wins, and the base alone is still written as itself.
    const quint64 macChineseTraditional = 0x80000002;
    const QString hinted = u"\\\uF87F"_qs;
    EXPECT_EQ(TextCodec::decode(macChineseTraditional, QByteArray("\x80")), hinted);
    EXPECT_EQ(TextCodec::encode(macChineseTraditional, hinted + u"\\"_qs), QByteArray("\x80\\"));
    EXPECT_FALSE(TextCodec::encode(macChineseTraditional, u"\uF87F"_qs).has_value());
    // A lead byte at the very end of the data is a truncated character.
    for (quint64 encoding : {quint64(0x80000001), quint64(0x80000A09), quint64(0x80000003)}) {
        const std::optional<QByteArray> han = TextCodec::encode(encoding, u"中"_qs);
        ASSERT_TRUE(han.has_value());
        ASSERT_EQ(han->size(), 2);
        EXPECT_FALSE(TextCodec::decode(encoding, "ab" + han->left(1)).has_value());
    }
}

TEST(UnicodeText, AsciiAndWellFormedChecksSeeEveryPosition)
{
    for (int at = 0; at < 130; at += 7) {
        QByteArray data(130, 'x');
        EXPECT_TRUE(UnicodeText::isAscii(data));
        data[at] = char(0x80);
        EXPECT_FALSE(UnicodeText::isAscii(data)) << at;

        QString text(40, u'y');
        if (at < 39) {
            text[at] = QChar(0xD83D);
            EXPECT_FALSE(UnicodeText::isWellFormed(text)) << at;
            text[at + 1] = QChar(0xDE00);
            EXPECT_TRUE(UnicodeText::isWellFormed(text)) << at;
            text[at] = QChar(0xDE00);
            EXPECT_FALSE(UnicodeText::isWellFormed(text)) << at;
        }
    }
}

TEST(TextCodec, EucEncodingsHaveNoC1Controls)
{
    // Shift_JIS "テスト", whose lead bytes EUC converters would otherwise take for C1 controls.
    const QByteArray shiftJis("\x83\x65\x83\x58\x83\x67\n");
    const struct {
        quint64 encoding;
        QByteArray valid; // sequences led by the single shifts, where the encoding has them
    } cases[] = {
        {3, "\x8E\xB1 \x8F\xB0\xA1 \xA4\xA2"},     // EUC-JP: ｱ, 丂 (JIS X 0212), あ
        {0x80000930, "\xB0\xA1"},                  // EUC-CN: 啊
        {0x80000940, "\xB0\xA1"},                  // EUC-KR: 가
        {0x80000931, "\x8E\xA2\xA1\xA1 \xC4\xA1"}, // EUC-TW: plane 2, and 一
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(StringEncoding::localizedNameOfStringEncoding(c.encoding).toStdString());
        EXPECT_TRUE(TextCodec::decode(c.encoding, c.valid).has_value());
        EXPECT_FALSE(TextCodec::decode(c.encoding, shiftJis).has_value());
        for (int byte = 0x80; byte <= 0xA0; ++byte) {
            if ((byte == 0x8E && c.encoding != 0x80000930 && c.encoding != 0x80000940) ||
                (byte == 0x8F && c.encoding == 3)) {
                continue; // the single shifts lead sequences; alone they are incomplete anyway
            }
            EXPECT_FALSE(
                TextCodec::decode(c.encoding, "a" + QByteArray(1, char(byte)) + "b").has_value())
                << byte;
        }
        EXPECT_FALSE(TextCodec::canBeConvertedToEncoding(u"a\u0085b"_qs, c.encoding));
    }
}
