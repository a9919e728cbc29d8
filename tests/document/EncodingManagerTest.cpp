#include "document/EncodingManager.h"

#include "TestSupport.h"
#include "platform/Range.h"
#include "platform/TextCodec.h"

#include <QDir>
#include <QFile>
#include <QtConcurrent>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

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

const QString japanese = QStringLiteral(
    "吾輩は猫である。名前はまだ無い。どこで生れたかとんと見当がつかぬ。何でも薄暗いじめじめした所で"
    "ニャーニャー泣いていた事だけは記憶している。吾輩はここで始めて人間というものを見た。しかもあと"
    "で"
    "聞くとそれは書生という人間中で一番獰悪な種族であったそうだ。この書生というのは時々我々を捕えて"
    "煮"
    "て食うという話である。しかしその当時は何という考もなかったから別段恐しいとも思わなかった。ただ"
    "彼"
    "の掌に載せられてスーと持ち上げられた時何だかフワフワした感じがあったばかりである。\n"
    "掌の上で少し落ちついて書生の顔を見たのがいわゆる人間というものの見始であろう。この時妙なものだ"
    "と"
    "思った感じが今でも残っている。第一毛をもって装飾されべきはずの顔がつるつるしてまるで薬缶だ。"
    "\n");
const QString chineseSimplified = QStringLiteral(
    "我们的祖国是一个历史悠久的国家，有着灿烂的文化和勤劳勇敢的人民。在漫长的历史发展过程中，中国人"
    "民"
    "创造了举世闻名的四大发明，对世界文明的进步作出了重要贡献。今天，我们要继承和发扬优秀的传统文化"
    "，"
    "努力学习科学技术知识，为建设现代化国家而奋斗。经济发展和社会进步需要每一个人的参与，教育是民族"
    "振"
    "兴的基石，科技是国家强盛的关键。我们应当珍惜时间，认真读书，关心社会，热爱生活。\n"
    "春天来了，公园里的花都开了，孩子们在草地上快乐地玩耍，老人们在树下下棋聊天。\n");
const QString chineseTraditional = QStringLiteral(
    "我們的祖國是一個歷史悠久的國家，有著燦爛的文化和勤勞勇敢的人民。在漫長的歷史發展過程中，中國人"
    "民"
    "創造了舉世聞名的四大發明，對世界文明的進步作出了重要貢獻。今天，我們要繼承和發揚優秀的傳統文化"
    "，"
    "努力學習科學技術知識，為建設現代化國家而奮鬥。經濟發展和社會進步需要每一個人的參與，教育是民族"
    "振"
    "興的基石，科技是國家強盛的關鍵。我們應當珍惜時間，認真讀書，關心社會，熱愛生活。\n"
    "春天來了，公園裡的花都開了，孩子們在草地上快樂地玩耍，老人們在樹下下棋聊天。\n");
const QString korean = QStringLiteral(
    "대한민국은 민주공화국이다. 대한민국의 주권은 국민에게 있고, 모든 권력은 국민으로부터 나온다. "
    "모든 국민은 인간으로서의 존엄과 가치를 가지며, 행복을 추구할 권리를 가진다. 국가는 개인이 "
    "가지는 "
    "불가침의 기본적 인권을 확인하고 이를 보장할 의무를 진다. 모든 국민은 법 앞에 평등하다. "
    "누구든지 "
    "성별·종교 또는 사회적 신분에 의하여 정치적·경제적·사회적·문화적 생활의 모든 영역에 있어서 "
    "차별을 "
    "받지 아니한다.\n오늘은 날씨가 맑고 따뜻해서 공원에 산책을 나갔습니다. 사람들이 많이 "
    "있었습니다.\n");
const QString russian = QStringLiteral(
    "Все счастливые семьи похожи друг на друга, каждая несчастливая семья несчастлива по-своему. "
    "Всё "
    "смешалось в доме Облонских. Жена узнала, что муж был в связи с бывшею в их доме француженкою-"
    "гувернанткой, и объявила мужу, что не может жить с ним в одном доме. Положение это "
    "продолжалось уже "
    "третий день и мучительно чувствовалось и самими супругами, и всеми членами семьи, и "
    "домочадцами. "
    "Все члены семьи и домочадцы чувствовали, что нет смысла в их сожительстве и что на каждом "
    "постоялом "
    "дворе случайно сошедшиеся люди более связаны между собой, чем они.\n");

} // namespace

// The order of the list is the menus' (the window's Encoding menu and the pop-ups test it).
TEST(EncodingManager, EveryListedEncodingHasANameForTheMenus)
{
    EncodingManager manager;
    for (const quint64 encoding : manager.encodingList()) {
        if (encoding != EncodingManager::Separator) {
            EXPECT_FALSE(StringEncoding::localizedNameOfStringEncoding(encoding).isEmpty())
                << encoding;
        }
    }
    manager.setEncodingList({4, EncodingManager::Separator, 10});
    EXPECT_EQ(manager.encodingList(), (QList<quint64>{4, EncodingManager::Separator, 10}));
}

TEST(EncodingManager, DetectionProbesByteOrderMarksBeforeAnythingElse)
{
    // A byte-order mark, and an EF lead byte without one (U+FF08 is EF BC 88).
    EXPECT_EQ(detect("\xEF\xBB\xBFplain", true), 4u);
    EXPECT_EQ(detect(u"（括弧）"_qs.toUtf8(), true), 4u);
    EXPECT_EQ(detect(" \xEF\xBC\x88", true), 4u);
    // UTF-16 with either mark, and with the mark's halves alone.
    EXPECT_EQ(detect(encoded(10, u"little endian テキスト"_qs), false), 10u);
    EXPECT_EQ(detect("\xFE\xFF" + QByteArray("\x00h\x00i", 4), false), 10u);
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
    const QString plain = QStringLiteral("int main() { return 0; }\n");
    EXPECT_EQ(detect(plain.toLatin1(), true), 3u); // ASCII is valid EUC-JP
    EXPECT_EQ(detect(encoded(21, japanese), true), 21u);
    EXPECT_EQ(detect(encoded(3, japanese), true), 3u);
    EXPECT_EQ(detect(encoded(ShiftJIS, japanese), true), ShiftJIS);
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

TEST(EncodingManager, DetectionFindsTheEncodingOfRealText)
{
    struct Case {
        const char* what;
        quint64 encoding;
        QString text;
    };
    const Case cases[] = {
        {"Shift_JIS", ShiftJIS, japanese},
        {"EUC-JP", 3, japanese},
        {"ISO-2022-JP", 21, japanese},
        {"GB 18030", 0x80000632, chineseSimplified},
        {"Big5", 0x80000423, chineseTraditional},
        {"EUC-KR", 0x80000940, korean},
        {"ISO 8859-5", 0x80000205, russian},
        {"UTF-16", 10, japanese + russian},
        {"UTF-8", 4, korean + russian + japanese},
    };
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QByteArray bytes = encoded(c.encoding, c.text);
        for (const bool priority : {false, true}) {
            const bool japaneseText = c.text == japanese;
            if (priority && !japaneseText) {
                continue; // with priority, other scripts may well read as EUC-JP
            }
            const QUrl url = fileWith(bytes);
            const quint64 found =
                manager.automaticDistinctionEncodingWithContentsOfURL(url, priority);
            EXPECT_EQ(TextCodec::decode(found, bytes), c.text) << priority;
            // Reading and detecting in one pass agrees with the detection.
            const DecodedContents contents = manager.contentsOfURL(url, None, priority);
            EXPECT_EQ(contents.encoding, found);
            EXPECT_EQ(contents.text, c.text);
            EXPECT_EQ(contents.lineBreaks, 0);
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

TEST(EncodingManager, DetectionRunsOnWorkerThreads)
{
    // Large files are read off the main thread: with several files detected at once, the
    // shared list, the tables and the converters must give each the answer one thread gets.
    QList<QPair<QByteArray, quint64>> files;
    for (int round = 0; round < 4; ++round) {
        files.append({encoded(0x80000001, japanese), 0});           // Mac OS Japanese table
        files.append({encoded(0x80000628, japanese), 0});           // iconv
        files.append({encoded(0x80000A09, chineseTraditional), 0}); // Big5-E table
        files.append({encoded(0x80000940, korean), 0});             // ICU
    }
    QList<QUrl> urls;
    for (const auto& file : files) {
        urls.append(fileWith(file.first));
    }
    EncodingManager fresh;
    const QList<quint64> found = QtConcurrent::blockingMapped(urls, [&fresh](const QUrl& url) {
        return fresh.automaticDistinctionEncodingWithContentsOfURL(url, false);
    });
    for (qsizetype i = 0; i < files.size(); ++i) {
        files[i].second =
            EncodingManager::sharedEncodingManager().automaticDistinctionEncodingWithContentsOfURL(
                urls[i], false);
    }
    for (qsizetype i = 0; i < files.size(); ++i) {
        EXPECT_EQ(found[i], files[i].second) << i;
        EXPECT_NE(found[i], None);
    }
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
    EXPECT_EQ(manager.automaticDistinctionEncodingWithContentsOfURL(QUrl(), true), None);
    EXPECT_FALSE(manager.contentsOfURL(urlOf(dir), 4, false).isValid());
    // Only regular files are read: a FIFO without a writer must not block detection.
    const QString fifo = dir + "/fifo";
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    EXPECT_EQ(manager.automaticDistinctionEncodingWithContentsOfURL(urlOf(fifo), false), None);
    EXPECT_EQ(manager.automaticDistinctionEncodingWithContentsOfURL(urlOf("/dev/zero"), false),
              None);
    EXPECT_EQ(manager.automaticDistinctionEncodingWithContentsOfURL(
                  QUrl("https://example.com/a.txt"), false),
              None);
    if (geteuid() != 0) { // root reads files regardless of their permissions
        const QString locked = TestSupport::writeFile(dir + "/locked.txt", "text");
        QFile::setPermissions(locked, QFileDevice::Permissions());
        EXPECT_EQ(manager.automaticDistinctionEncodingWithContentsOfURL(urlOf(locked), false),
                  None);
    }
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
    const QUrl shiftJis = fileWith(encoded(ShiftJIS, u"一行目\r\n二行目"_qs));
    EXPECT_EQ(manager.scanLineBreaks(shiftJis, ShiftJIS), 2);
    EXPECT_EQ(manager.scanLineBreaks(shiftJis, 21), NSNotFound); // does not decode
    EXPECT_EQ(manager.scanLineBreaks(urlOf(TestSupport::makeTempDir() + "/none"), 4), NSNotFound);
    const QUrl classic = fileWith(encoded(10, u"one\rtwo"_qs));
    EXPECT_EQ(manager.scanLineBreaks(classic, 10), 1);
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
