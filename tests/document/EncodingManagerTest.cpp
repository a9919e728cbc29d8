#include "document/EncodingManager.h"

#include "TestSupport.h"
#include "platform/Range.h"
#include "platform/StringEncoding.h"
#include "platform/TextCodec.h"

#include <QFile>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

constexpr quint64 None = StringEncoding::NoEncoding;
constexpr quint64 ShiftJIS = 0x80000A01;

QUrl urlOf(const QString& path)
{
    return QUrl::fromLocalFile(path);
}

QUrl fileWith(const QByteArray& bytes, const QString& name = QStringLiteral("file.txt"))
{
    return urlOf(TestSupport::writeFile(TestSupport::makeTempDir() + u'/' + name, bytes));
}

QByteArray fixture(const char* name)
{
    return TestSupport::readFile(QStringLiteral(TESSARAN_TEST_DATA "/encodings/") +
                                 QLatin1String(name));
}

QString nameOf(quint64 encoding)
{
    return StringEncoding::localizedNameOfStringEncoding(encoding);
}

// Real text of a few lines in one language (tests/data/prose).
QString prose(const char* language)
{
    return QString::fromUtf8(TestSupport::readFile(QStringLiteral(TESSARAN_TEST_DATA "/prose/") +
                                                   QLatin1String(language) + ".txt"));
}

quint64 detect(const QByteArray& bytes, bool priority)
{
    return EncodingManager::sharedEncodingManager().automaticDistinctionEncodingWithContentsOfURL(
        fileWith(bytes), priority);
}

QByteArray encoded(quint64 encoding, const QString& text)
{
    const std::optional<QByteArray> bytes = TextCodec::encode(encoding, text);
    EXPECT_TRUE(bytes.has_value()) << encoding;
    return bytes.value_or(QByteArray());
}

const QString japanese = prose("ja");
const QString chineseSimplified = prose("zh-Hans");
const QString chineseTraditional = prose("zh-Hant");
const QString korean = prose("ko");
const QString russian = prose("ru");

} // namespace

TEST(EncodingManager, DetectionProbesByteOrderMarksBeforeAnythingElse)
{
    // A byte-order mark, and an EF lead byte without one (U+FF08 is EF BC 88).
    EXPECT_EQ(detect("\xEF\xBB\xBFplain", true), 4u);
    EXPECT_EQ(detect(u"（括弧）"_qs.toUtf8(), true), 4u);
    EXPECT_EQ(detect(" \xEF\xBC\x88", true), 4u);
    // UTF-16 with either mark, and with the mark's halves alone.
    EXPECT_EQ(detect(encoded(10, u"little endian テキスト"_qs), false), 10u);
    EXPECT_EQ(detect("\xFE\xFF" + QByteArray("\x00h\x00i", 4), false), 10u);
    // Without a mark: ASCII bytes between NULs.
    const QByteArray wide = encoded(10, u"plain text\n"_qs).mid(2);
    EXPECT_EQ(
        EncodingManager::sharedEncodingManager().automaticDistinctionWithData(wide, false).text,
        u"plain text\n"_qs);
    // EF among the first three bytes but not UTF-8: the UTF-16 probe is skipped, so these
    // bytes, which decode both as UTF-16 and as EUC-JP, are not taken for UTF-16.
    const QByteArray notUtf8 = QByteArray::fromHex("effe6162");
    ASSERT_TRUE(TextCodec::decode(10, notUtf8).has_value());
    ASSERT_TRUE(TextCodec::decode(3, notUtf8).has_value());
    EXPECT_EQ(detect(notUtf8, true), 3u);
    // Without EF the same kind of data is UTF-16.
    EXPECT_EQ(detect(QByteArray::fromHex("eefe6162"), true), 10u);
}

TEST(EncodingManager, DetectionWithJapanesePriorityTriesJisThenEucThenShiftJis)
{
    // ASCII is UTF-8, unless EUC-JP, for which it is valid too, comes first.
    EXPECT_EQ(detect(fixture("ascii.txt"), false), 4u);
    EXPECT_EQ(detect(fixture("ascii.txt"), true), 3u);
    // An escape byte alone does not make ISO-2022-JP.
    EXPECT_EQ(detect("a\x1B"
                     "b",
                     true),
              3u);
    // "Äpfel" in UTF-8 (C3 84 70 …) is no EUC-JP but valid Shift_JIS, which comes first.
    const QByteArray apfel = u"Äpfel"_qs.toUtf8();
    ASSERT_FALSE(TextCodec::decode(3, apfel).has_value());
    ASSERT_TRUE(TextCodec::decode(ShiftJIS, apfel).has_value());
    EXPECT_EQ(detect(apfel, true), ShiftJIS);
    EXPECT_NE(detect(apfel, false), ShiftJIS);
}

// Long texts, and short ones: lines of the message catalogues that translate common programs,
// in the encodings used for their languages before UTF-8 (tests/data/encodings). Each opens in
// its own script.
TEST(EncodingManager, DetectionFindsTheEncodingOfRealText)
{
    const struct {
        const char* what;
        QByteArray bytes;
        QString text;
        quint64 encoding = 0; // where one is told apart from others of the same script
    } cases[] = {
        {"Shift_JIS", encoded(ShiftJIS, japanese), japanese, ShiftJIS},
        {"EUC-JP", encoded(3, japanese), japanese, 3},
        {"ISO-2022-JP", encoded(21, japanese), japanese, 21},
        {"GB 18030", encoded(0x80000632, chineseSimplified), chineseSimplified},
        {"Big5", encoded(0x80000423, chineseTraditional), chineseTraditional},
        {"EUC-KR", encoded(0x80000940, korean), korean},
        {"ISO 8859-5", encoded(0x80000205, russian), russian},
        {"UTF-16", encoded(10, japanese + russian), japanese + russian},
        {"UTF-8", encoded(4, korean + russian + japanese), korean + russian + japanese},
        {"ja-shift_jis-3chars.txt", fixture("ja-shift_jis-3chars.txt"), u"テスト\n"_qs},
        {"ja-shift_jis.txt", fixture("ja-shift_jis.txt"), u"%s のファイルタイプが不明です\n"_qs},
        {"ja-euc-jp.txt", fixture("ja-euc-jp.txt"), u"%s: 無効なプロセスID\n"_qs},
        {"de-windows-1252.txt", fixture("de-windows-1252.txt"),
         u"Vorübergehender Fehler bei der Namensauflösung\n"_qs},
        {"fr-windows-1252.txt", fixture("fr-windows-1252.txt"),
         u"argument %s%s « %s » trop grand\n"_qs},
        {"zh_CN-gb2312.txt", fixture("zh_CN-gb2312.txt"), u"%s: 输入文件是输出文件\n"_qs},
        {"zh_TW-big5.txt", fixture("zh_TW-big5.txt"), u"%s 已被取代；正在跟隨新檔案的末尾\n"_qs},
        {"ru-windows-1251.txt", fixture("ru-windows-1251.txt"),
         u"не удалось открыть %s для чтения\n"_qs, 0x80000502},
        {"bg-windows-1251.txt", fixture("bg-windows-1251.txt"), u"Грешно системно извикване\n"_qs,
         0x80000502},
        {"ru-koi8-r.txt", fixture("ru-koi8-r.txt"), u"входная строка слишком велика\n"_qs,
         0x80000A02},
        // Ukrainian letters are where KOI8-R has box drawing.
        {"uk-koi8-u.txt", fixture("uk-koi8-u.txt"), u"помилка під час синхронізації %s\n"_qs,
         0x80000A08},
        {"ru-ibm866.txt", fixture("ru-ibm866.txt"), u"неверный номер начальной строки\n"_qs,
         0x8000041B},
        {"zh_CN-gb2312-word.txt", fixture("zh_CN-gb2312-word.txt"), u"总线错误\n"_qs, 0x80000632},
        {"zh_TW-big5-word.txt", fixture("zh_TW-big5-word.txt"), u"管線損壞\n"_qs, 0x80000423},
    };
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        // With the priority, only Japanese texts: others may well read as Japanese then.
        for (const bool priority : {false, true}) {
            if (priority && c.text != japanese && !QByteArray(c.what).startsWith("ja-")) {
                continue;
            }
            const DecodedContents found = manager.automaticDistinctionWithData(c.bytes, priority);
            EXPECT_EQ(found.text.toStdString(), c.text.toStdString())
                << "priority " << priority << ": " << nameOf(found.encoding).toStdString();
            if (c.encoding != 0) {
                EXPECT_EQ(nameOf(found.encoding).toStdString(), nameOf(c.encoding).toStdString());
            }
            EXPECT_EQ(found.lineBreaks, 0);
        }
    }
}

TEST(EncodingManager, ShortUtf8TextIsNotMistakenForASingleByteEncoding)
{
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    for (const QByteArray& bytes :
         {QByteArray("caf\xc3\xa9\n"), QByteArray("na\xc3\xafve r\xc3\xa9sum\xc3\xa9"),
          QByteArray("x = \"\xe2\x82\xac\"\n")}) {
        EXPECT_EQ(manager.automaticDistinctionEncodingWithContentsOfURL(fileWith(bytes), false), 4u)
            << bytes.toStdString();
    }

    // Mostly UTF-8 with one stray Latin-1 byte far in: a Western reading, never UTF-16, which
    // would also take the bytes but lose every line.
    QByteArray mixed;
    for (int i = 0; i < 2000; ++i) {
        mixed += "/* r\xc3\xa9sum\xc3\xa9 */\nint x" + QByteArray::number(i) + ";\n";
    }
    mixed += "/* Copyright \xa9 2007 */\n";
    const DecodedContents contents = manager.contentsOfURL(fileWith(mixed), ~quint64(0), false);
    EXPECT_EQ(contents.encoding, 12u);
    EXPECT_TRUE(contents.text.endsWith(QStringLiteral("Copyright \u00a9 2007 */\n")));
}

TEST(EncodingManager, UnreadableEmptyOrMissingFilesHaveNoEncoding)
{
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    const QString dir = TestSupport::makeTempDir();
    EXPECT_EQ(detect(QByteArray(), true), None);
    EXPECT_EQ(detect(QByteArray(), false), None);
    EXPECT_EQ(manager.automaticDistinctionEncodingWithContentsOfURL(urlOf(dir), false), None);
    EXPECT_EQ(manager.automaticDistinctionEncodingWithContentsOfURL(urlOf(dir + "/missing"), true),
              None);
    EXPECT_FALSE(manager.contentsOfURL(urlOf(dir), 4, false).isValid());
    // Only regular files are read: a FIFO without a writer must not block detection.
    const QString fifo = dir + "/fifo";
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    EXPECT_EQ(manager.automaticDistinctionEncodingWithContentsOfURL(urlOf(fifo), false), None);
    // Bytes that decode in no offered encoding but a single-byte one still get that one.
    const quint64 binary = detect(QByteArray("\x00\x81\xFF\xFE\x80", 5), false);
    EXPECT_NE(binary, None);
    // A file read in a given encoding that it is not written in is no contents at all.
    EXPECT_FALSE(manager.contentsOfURL(fileWith("\xFF\xFF"), 4, false).isValid());
}

TEST(EncodingManager, LineBreakScanFindsTheFirstStyleInPriorityOrder)
{
    const struct {
        QString text;
        qsizetype style;
    } cases[] = {
        {u"a\nb\r\nc"_qs, 2},    {u"a\rb\nc"_qs, 1},
        {u"a\nb\nc\n"_qs, 0},    {u"abc"_qs, NSNotFound},
        {QString(), NSNotFound}, {u"a\n\r"_qs, 1},
        {u"a\r\r\r\n"_qs, 2},    {u"\u2028\u2029\u0085"_qs, NSNotFound},
        {u"\r"_qs, 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(EncodingManager::scanLineBreaks(c.text), c.style) << c.text.toStdString();
    }
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    const QUrl classic = fileWith(encoded(10, u"one\rtwo"_qs));
    const DecodedContents contents = manager.contentsOfURL(classic, 10, false);
    EXPECT_EQ(contents.text, u"one\rtwo"_qs); // kept as read
    EXPECT_EQ(contents.lineBreaks, 1);
}

TEST(EncodingManager, ReplacingLineBreaksCollapsesPairsFirst)
{
    const EncodingManager& manager = EncodingManager::sharedEncodingManager();
    const QString mixed = u"a\r\nb\rc\nd"_qs;
    EXPECT_EQ(manager.replaceLineBreaks(0, mixed), u"a\nb\nc\nd"_qs);
    EXPECT_EQ(manager.replaceLineBreaks(1, mixed), u"a\rb\rc\rd"_qs);
    EXPECT_EQ(manager.replaceLineBreaks(2, mixed), u"a\r\nb\r\nc\r\nd"_qs);
    EXPECT_EQ(manager.replaceLineBreaks(3, mixed), mixed);
    EXPECT_EQ(manager.replaceLineBreaks(-1, mixed), mixed);
    for (qsizetype style : {0, 1, 2}) {
        const QString styled = manager.replaceLineBreaks(style, mixed);
        EXPECT_EQ(manager.replaceLineBreaks(style, styled), styled);
        // A trailing pair is one line break in every style.
        EXPECT_EQ(manager.replaceLineBreaks(style, u"end\r\n"_qs).count(u"end"_qs), 1);
        EXPECT_EQ(EncodingManager::scanLineBreaks(manager.replaceLineBreaks(style, u"end\r\n"_qs)),
                  style);
        EXPECT_EQ(manager.replaceLineBreaks(style, u"end\r\n"_qs).size(), style == 2 ? 5 : 4);
        // Unicode's own separators and NEL are text, not line breaks.
        const QString separators = u"x\u2028y\u2029z\u0085w"_qs;
        EXPECT_EQ(manager.replaceLineBreaks(style, separators), separators);
    }
}
