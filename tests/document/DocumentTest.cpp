#include "document/Document.h"

#include "TestSupport.h"
#include "platform/ExtendedAttributes.h"
#include "platform/TextCodec.h"

#include <gtest/gtest.h>

namespace {

constexpr quint64 kUTF8 = 4;
constexpr quint64 kLatin1 = 5;
constexpr quint64 kUTF16 = 10;
constexpr quint64 kMacRoman = 30;
constexpr quint64 kNone = ~quint64(0);

bool xattrsWork(const QString& dir)
{
    const QString probe = TestSupport::writeFile(dir + "/probe", "x");
    return ExtendedAttributes::write(probe, "com.apple.TextEncoding", "utf-8;134217984");
}

} // namespace

TEST(Document, EncodingChoiceFollowsHowTheReadStarted)
{
    const QString dir = TestSupport::makeTempDir();
    // "é" in Latin-1: not UTF-8, so detection cannot mistake it for that.
    const QString latin = TestSupport::writeFile(dir + "/latin.txt", "caf\xe9\n");
    const QString utf8 = TestSupport::writeFile(dir + "/utf8.txt", "caf\xc3\xa9\n");
    using Request = Document::ReadRequest;

    // Open panel with an encoding chosen: that encoding.
    TestDocument chosen;
    ASSERT_TRUE(chosen.readFromURL(latin, QString(), nullptr, {Request::OpenPanel, kMacRoman}));
    EXPECT_EQ(chosen.documentEncoding(), kMacRoman);
    // 0xE9 is "È" in Mac OS Roman.
    EXPECT_EQ(chosen.string(), QStringLiteral("caf\u00c8\n"));

    // Any other read detects.
    TestDocument detected;
    ASSERT_TRUE(detected.readFromURL(utf8, QString()));
    EXPECT_EQ(detected.documentEncoding(), kUTF8);
    EXPECT_EQ(detected.string(), QStringLiteral("caf\u00e9\n"));
    EXPECT_FALSE(detected.isDocumentEdited());
    EXPECT_FALSE(detected.canUndo());

    // A revert without an attribute keeps the current encoding instead of detecting.
    detected.setDocumentEncoding(kLatin1);
    ASSERT_TRUE(detected.revertToContentsOfURL(utf8, QString()));
    EXPECT_EQ(detected.documentEncoding(), kLatin1);
    EXPECT_EQ(detected.string(), QStringLiteral("caf\u00c3\u00a9\n"));

    // Reopening at launch does the same.
    TestDocument reopened;
    reopened.setDocumentEncoding(kMacRoman);
    ASSERT_TRUE(reopened.readFromURL(latin, QString(), nullptr, {Request::Reopen}));
    EXPECT_EQ(reopened.documentEncoding(), kMacRoman);

    if (xattrsWork(dir)) {
        // The attribute wins over detection and over the current encoding.
        ASSERT_TRUE(Document::setTextEncodingAttribute(kLatin1, utf8));
        TestDocument byAttribute;
        ASSERT_TRUE(byAttribute.readFromURL(utf8, QString()));
        EXPECT_EQ(byAttribute.documentEncoding(), kLatin1);
        TestDocument automatic;
        ASSERT_TRUE(automatic.readFromURL(utf8, QString(), nullptr, {Request::OpenPanel, kNone}));
        EXPECT_EQ(automatic.documentEncoding(), kLatin1);
    }
}

TEST(Document, SaveAsConvertsLineBreaksInTheFileOnly)
{
    const QString dir = TestSupport::makeTempDir();
    const QString cr = TestSupport::writeFile(dir + "/cr.txt", "a\rb\r");
    TestDocument classic;
    ASSERT_TRUE(classic.readFromURL(cr, QString()));
    EXPECT_EQ(classic.documentLineBreaks(), 1);
    // In memory every line break is one LF.
    EXPECT_EQ(classic.string(), "a\nb\n");
    // Save As with CRLF chosen converts the file, not the text in memory.
    classic.setSavePanelChoice(kUTF8, 2);
    const QString saved = dir + "/saved.txt";
    ASSERT_TRUE(classic.writeSafelyToURL(saved, QString(), Document::SaveAs));
    EXPECT_EQ(TestSupport::readFile(saved), "a\r\nb\r\n");
    EXPECT_EQ(classic.string(), "a\nb\n");
    EXPECT_EQ(classic.documentLineBreaks(), 2);
    EXPECT_EQ(classic.fileURL(), saved);
}

TEST(Document, ByteOrderMarkRules)
{
    const QString dir = TestSupport::makeTempDir();
    const QString marked = TestSupport::writeFile(dir + "/bom.txt", "\xef\xbb\xbfhi\n");
    TestDocument document;
    ASSERT_TRUE(document.readFromURL(marked, QString()));
    EXPECT_EQ(document.documentEncoding(), kUTF8);
    // The mark is not part of the text...
    EXPECT_EQ(document.string(), "hi\n");
    // ...so a save with the option on writes exactly one, and with it off none.
    DocumentSettings settings = document.documentSettings();
    settings.UTF8AppendByBOM = true;
    document.updatePreferences(settings);
    ASSERT_TRUE(document.writeSafelyToURL(marked, QString(), Document::Save));
    EXPECT_EQ(TestSupport::readFile(marked), "\xef\xbb\xbfhi\n");
    document.setSavePanelChoice(kUTF16, 0);
    const QString wide = dir + "/wide.txt";
    ASSERT_TRUE(document.writeSafelyToURL(wide, QString(), Document::SaveAs));
    EXPECT_FALSE(TestSupport::readFile(wide).startsWith("\xef\xbb\xbf"));
    settings.UTF8AppendByBOM = false;
    document.updatePreferences(settings);
    document.setSavePanelChoice(kUTF8, 0);
    ASSERT_TRUE(document.writeSafelyToURL(marked, QString(), Document::SaveAs));
    EXPECT_EQ(TestSupport::readFile(marked), "hi\n");
}

TEST(Document, FailedSavesLeaveTheFileAndTheDocumentAsTheyWere)
{
    const QString dir = TestSupport::makeTempDir();
    const QString path = TestSupport::writeFile(dir + "/keep.txt", "old bytes\n");
    TestDocument document;
    ASSERT_TRUE(document.readFromURL(path, QString()));
    const quint64 encoding = document.documentEncoding();
    document.setTextStorage(QStringLiteral("new text with \u65e5\u672c\n"));
    EXPECT_TRUE(document.isDocumentEdited());

    // A character the encoding cannot hold.
    document.setSavePanelChoice(kLatin1, 0);
    QString error;
    EXPECT_FALSE(document.writeSafelyToURL(path, QString(), Document::SaveAs, &error));
    EXPECT_TRUE(error.contains("could not be saved in the encoding")) << error.toStdString();
    EXPECT_TRUE(error.contains("keep.txt")) << error.toStdString();
    EXPECT_EQ(TestSupport::readFile(path), "old bytes\n");
    EXPECT_EQ(document.documentEncoding(), encoding);
    EXPECT_TRUE(document.isDocumentEdited());

    // The undoable replacement restores the text on undo.
    document.undo();
    EXPECT_EQ(document.string(), "old bytes\n");
}

TEST(Document, AttributeValues)
{
    EXPECT_EQ(Document::textEncodingFromAttributeValue("utf-8;134217984"), kUTF8);
    // Whatever the name says, a number of two or more characters decides.
    EXPECT_EQ(Document::textEncodingFromAttributeValue("macintosh;134217984"), kUTF8);
    // A one-character number is ignored and the name decides.
    EXPECT_EQ(Document::textEncodingFromAttributeValue("macintosh;0"), kMacRoman);
    // Another program's attribute may hold the name alone.
    EXPECT_EQ(Document::textEncodingFromAttributeValue("windows-1251"), 0x80000502u);
    EXPECT_EQ(Document::textEncodingFromAttributeValue("no-such-charset"), kNone);
    EXPECT_EQ(Document::textEncodingFromAttributeValue(""), kNone);
    EXPECT_EQ(Document::textEncodingFromAttributeValue("x"), kNone);
    EXPECT_EQ(Document::textEncodingFromAttributeValue("\xff\xfe;134217984"), kNone);
    EXPECT_EQ(Document::textEncodingFromAttributeValue("utf-8; +134217984junk"), kUTF8);
    // The name of Shift JIS stands for the Core Foundation encoding 0xA01.
    EXPECT_EQ(Document::textEncodingFromAttributeValue(QByteArray("shift_jis\0junk", 14)),
              0x80000A01u);

    const QString dir = TestSupport::makeTempDir();
    if (!xattrsWork(dir)) {
        GTEST_SKIP() << "no extended attributes here";
    }
    const QString file = TestSupport::writeFile(dir + "/a.txt", "a");
    EXPECT_EQ(Document::textEncodingAttributeOfURL(file), kNone);
    ASSERT_TRUE(Document::setTextEncodingAttribute(kUTF8, file));
    // Under the user namespace, where other Linux tools look for it.
    EXPECT_EQ(ExtendedAttributes::read(file, "user.com.apple.TextEncoding").value_or(""),
              "UTF-8;134217984");
    EXPECT_EQ(Document::textEncodingAttributeOfURL(file), kUTF8);
    EXPECT_FALSE(Document::setTextEncodingAttribute(kUTF8, QString()));
    ExtendedAttributes::write(file, "com.apple.TextEncoding", QByteArray(200, 'a'));
    EXPECT_EQ(Document::textEncodingAttributeOfURL(file), kNone);
}

TEST(Document, ReplacingRangesIsOneNamedUndoStep)
{
    const QString text = QStringLiteral("one two\nthree two two");
    TestDocument document;
    document.setLoadedText(text);
    const int revision = document.revision();

    // "two" at 4, 14 and 18; the range at 15 overlaps the one before it, the one at 20
    // reaches past the end.
    document.replaceRanges({{4, 3}, {14, 3}, {15, 3}, {18, 3}, {20, 5}}, QStringLiteral("2"),
                           QStringLiteral("Replace All"));
    EXPECT_EQ(document.storedText(), QStringLiteral("one 2\nthree 2 2"));
    EXPECT_NE(document.revision(), revision);
    EXPECT_EQ(document.undoActionName(), QStringLiteral("Replace All"));
    document.undo();
    EXPECT_EQ(document.storedText(), text);
    EXPECT_FALSE(document.canUndo());
}

TEST(Document, LargeFilesAreReadWholeUndoneNeverAndSavedByteForByte)
{
    const QString dir = TestSupport::makeTempDir();
    QByteArray bytes;
    for (int line = 0; bytes.size() < 3'000'000; ++line) {
        bytes += "line " + QByteArray::number(line) + " caf\xc3\xa9 \xf0\x9f\x98\x80\r\n";
    }
    const QString file = TestSupport::writeFile(dir + "/large.txt", bytes);
    QString expected = QString::fromUtf8(bytes);
    expected.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));

    TestDocument document;
    ASSERT_TRUE(document.readFromURL(file, QString()));
    EXPECT_EQ(document.storedText(), expected);
    EXPECT_EQ(document.lineCount(), expected.count(u'\n') + 1);
    EXPECT_FALSE(document.isDocumentEdited());
    EXPECT_FALSE(document.canUndo());
    const QString copy = dir + "/copy.txt";
    ASSERT_TRUE(document.writeSafelyToURL(copy, QString(), Document::SaveTo));
    EXPECT_EQ(TestSupport::readFile(copy), bytes);

    // Reading again after an edit: the file's text, unedited, and the edit undoable.
    document.replaceRanges({{0, 4}}, QStringLiteral("LINE"), QString());
    ASSERT_TRUE(document.revertToContentsOfURL(file, QString()));
    EXPECT_EQ(document.storedText(), expected);
    EXPECT_FALSE(document.isDocumentEdited());
}

TEST(Document, OtherEncodingsAreDetectedAndSavedByteForByte)
{
    // Messages of a Russian translation, in the code page Windows used for them.
    const QString russian =
        QStringLiteral("не удалось открыть %s для чтения\r\nвходная строка слишком велика\r\n"
                       "неверный номер начальной строки\r\nзаданы несколько программ сжатия\r\n");
    const QString wide = QStringLiteral("plain text, Привет\n");
    const struct {
        const char* name;
        quint64 encoding;
        QString text;
    } cases[] = {
        {"windows-1251", 0x80000502, russian},
        {"KOI8-U", 0x80000A08, QStringLiteral("помилка під час синхронізації %s\n")},
        // Without a byte-order mark, written back without one, in the same order.
        {"UTF-16LE", 0x94000100, wide},
        {"UTF-16BE", 0x90000100, wide},
        {"UTF-32LE", 0x9C000100, wide},
        // With one: a UTF-16 mark begins the UTF-32 mark, which must not read as a NUL.
        {"UTF-32", 0x8C000100, wide},
    };
    const QString dir = TestSupport::makeTempDir();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = dir + u'/' + QLatin1String(c.name) + ".txt";
        const QByteArray bytes = TextCodec::encode(c.encoding, c.text).value_or(QByteArray());
        ASSERT_FALSE(bytes.isEmpty());
        TestSupport::writeFile(path, bytes);
        TestDocument document;
        ASSERT_TRUE(document.readFromURL(path, QString()));
        EXPECT_EQ(document.documentEncoding(), c.encoding);
        EXPECT_EQ(document.string(), QString(c.text).replace(u"\r\n"_qs, u"\n"_qs));
        ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save));
        EXPECT_EQ(TestSupport::readFile(path), bytes);
    }
}
