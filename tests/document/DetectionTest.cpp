// Detection of short real texts: lines of the message catalogues that translate common
// programs, in the encodings used for their languages before UTF-8 (tests/data/encodings).
#include "TestSupport.h"
#include "document/EncodingManager.h"
#include "platform/StringEncoding.h"
#include "platform/TextCodec.h"

#include <gtest/gtest.h>

namespace {

QByteArray fixture(const char* name)
{
    return TestSupport::readFile(QStringLiteral(TESSARAN_TEST_DATA "/encodings/") +
                                 QLatin1String(name));
}

QString nameOf(quint64 encoding)
{
    return StringEncoding::localizedNameOfStringEncoding(encoding);
}

} // namespace

TEST(Detection, ShortTextsOpenInTheirOwnScript)
{
    const struct {
        const char* file;
        QString text;
    } cases[] = {
        {"ja-shift_jis-3chars.txt", QStringLiteral("テスト\n")},
        {"ja-shift_jis.txt", QStringLiteral("%s のファイルタイプが不明です\n")},
        {"ja-euc-jp.txt", QStringLiteral("%s: 無効なプロセスID\n")},
        {"de-windows-1252.txt", QStringLiteral("Vorübergehender Fehler bei der Namensauflösung\n")},
        {"fr-windows-1252.txt", QStringLiteral("argument %s%s « %s » trop grand\n")},
        {"zh_CN-gb2312.txt", QStringLiteral("%s: 输入文件是输出文件\n")},
        {"zh_TW-big5.txt", QStringLiteral("%s 已被取代；正在跟隨新檔案的末尾\n")},
    };
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    for (const auto& c : cases) {
        for (const bool priority : {false, true}) {
            const bool japanese = QByteArray(c.file).startsWith("ja-");
            if (priority && !japanese) {
                continue; // with the priority, other texts may well read as Japanese
            }
            const DecodedContents contents =
                manager.automaticDistinctionWithData(fixture(c.file), priority);
            EXPECT_EQ(contents.text, c.text) << c.file << " priority " << priority << ": "
                                             << nameOf(contents.encoding).toStdString();
        }
    }
}

TEST(Detection, PlainAsciiIsUtf8UnlessJapaneseComesFirst)
{
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    const QByteArray ascii = fixture("ascii.txt");
    EXPECT_EQ(manager.automaticDistinctionWithData(ascii, false).encoding, 4u);
    // ASCII is valid EUC-JP, tried first with the priority.
    EXPECT_EQ(manager.automaticDistinctionWithData(ascii, true).encoding, 3u);
    // UTF-16 without a byte-order mark: ASCII bytes between NULs.
    const QByteArray wide = TextCodec::encode(10, QStringLiteral("plain text\n"))->mid(2);
    EXPECT_EQ(manager.automaticDistinctionWithData(wide, false).text, "plain text\n");
}

TEST(Detection, LegacyCyrillicAndShortChineseOpenInTheirOwnEncoding)
{
    const struct {
        const char* file;
        quint64 encoding;
        QString text;
    } cases[] = {
        {"ru-windows-1251.txt", 0x80000502, QStringLiteral("не удалось открыть %s для чтения\n")},
        {"bg-windows-1251.txt", 0x80000502, QStringLiteral("Грешно системно извикване\n")},
        {"ru-koi8-r.txt", 0x80000A02, QStringLiteral("входная строка слишком велика\n")},
        // Ukrainian letters are where KOI8-R has box drawing.
        {"uk-koi8-u.txt", 0x80000A08, QStringLiteral("помилка під час синхронізації %s\n")},
        {"ru-ibm866.txt", 0x8000041B, QStringLiteral("неверный номер начальной строки\n")},
        {"zh_CN-gb2312-word.txt", 0x80000632, QStringLiteral("总线错误\n")},
        {"zh_TW-big5-word.txt", 0x80000423, QStringLiteral("管線損壞\n")},
    };
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    for (const auto& c : cases) {
        const DecodedContents contents =
            manager.automaticDistinctionWithData(fixture(c.file), false);
        EXPECT_EQ(nameOf(contents.encoding).toStdString(), nameOf(c.encoding).toStdString())
            << c.file;
        EXPECT_EQ(contents.text.toStdString(), c.text.toStdString()) << c.file;
    }
}
