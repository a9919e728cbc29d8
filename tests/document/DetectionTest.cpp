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

TEST(Detection, ShortTextsOpenInTheirOwnScriptAndEncoding)
{
    const struct {
        const char* file;
        QString text;
        quint64 encoding = 0; // where one is told apart from others of the same script
    } cases[] = {
        {"ja-shift_jis-3chars.txt", QStringLiteral("テスト\n")},
        {"ja-shift_jis.txt", QStringLiteral("%s のファイルタイプが不明です\n")},
        {"ja-euc-jp.txt", QStringLiteral("%s: 無効なプロセスID\n")},
        {"de-windows-1252.txt", QStringLiteral("Vorübergehender Fehler bei der Namensauflösung\n")},
        {"fr-windows-1252.txt", QStringLiteral("argument %s%s « %s » trop grand\n")},
        {"zh_CN-gb2312.txt", QStringLiteral("%s: 输入文件是输出文件\n")},
        {"zh_TW-big5.txt", QStringLiteral("%s 已被取代；正在跟隨新檔案的末尾\n")},
        {"ru-windows-1251.txt", QStringLiteral("не удалось открыть %s для чтения\n"), 0x80000502},
        {"bg-windows-1251.txt", QStringLiteral("Грешно системно извикване\n"), 0x80000502},
        {"ru-koi8-r.txt", QStringLiteral("входная строка слишком велика\n"), 0x80000A02},
        // Ukrainian letters are where KOI8-R has box drawing.
        {"uk-koi8-u.txt", QStringLiteral("помилка під час синхронізації %s\n"), 0x80000A08},
        {"ru-ibm866.txt", QStringLiteral("неверный номер начальной строки\n"), 0x8000041B},
        {"zh_CN-gb2312-word.txt", QStringLiteral("总线错误\n"), 0x80000632},
        {"zh_TW-big5-word.txt", QStringLiteral("管線損壞\n"), 0x80000423},
    };
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        // With the priority, only Japanese texts: others may well read as Japanese then.
        for (const bool priority : {false, true}) {
            if (priority && !QByteArray(c.file).startsWith("ja-")) {
                continue;
            }
            const DecodedContents contents =
                manager.automaticDistinctionWithData(fixture(c.file), priority);
            EXPECT_EQ(contents.text.toStdString(), c.text.toStdString())
                << "priority " << priority << ": " << nameOf(contents.encoding).toStdString();
            if (c.encoding != 0) {
                EXPECT_EQ(nameOf(contents.encoding).toStdString(),
                          nameOf(c.encoding).toStdString());
            }
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
