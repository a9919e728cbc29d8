// What a document keeps of a file's bytes: characters the text storage cannot hold as they
// are, files that are not text, mixed line breaks, and reopening in another encoding.
#include "TestSupport.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "platform/TextCodec.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

constexpr quint64 kLatin1 = 5;
constexpr quint64 kMacRoman = 30;
constexpr quint64 kUTF8 = 4;

QString fixture(const char* name)
{
    return QStringLiteral(TESSARAN_TEST_DATA "/roundtrip/") + QLatin1String(name);
}

// A copy of a fixture in a folder of its own, to be saved over.
QString copyOf(const char* name)
{
    return TestSupport::writeFile(TestSupport::makeTempDir() + u'/' + QLatin1String(name),
                                  TestSupport::readFile(fixture(name)));
}

void insertAt(Document& document, qsizetype position, const QString& text)
{
    document.replaceRanges({{position, 0}}, text, QStringLiteral("Typing"));
}

} // namespace

TEST(FileContents, EveryCharacterButLineBreaksComesBackByteForByte)
{
    const struct {
        const char* file;
        qsizetype lines; // lines of the text
    } cases[] = {
        {"paragraph-separator.txt", 2},
        {"separators-crlf.txt", 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const QByteArray bytes = TestSupport::readFile(fixture(c.file));
        const QString path = copyOf(c.file);
        TestDocument document;
        ASSERT_TRUE(document.readFromURL(path, QString()));
        ASSERT_EQ(document.documentEncoding(), kUTF8);
        // U+2029 and the other separators end no line; string() gives them back.
        EXPECT_EQ(document.lineCount(), c.lines);
        QString expected = QString::fromUtf8(bytes);
        expected.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        EXPECT_EQ(document.string(), expected);
        ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save));
        EXPECT_EQ(TestSupport::readFile(path), bytes);

        // An edit elsewhere leaves them as they are.
        insertAt(document, 0, QStringLiteral("X"));
        ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save));
        EXPECT_EQ(TestSupport::readFile(path), "X" + bytes);

        // So does a copy of the document, and a replacement of the whole text.
        const std::unique_ptr<Document> copy = document.duplicateAndReturnError();
        EXPECT_EQ(copy->string(), document.string());
        document.setTextStorage(QString::fromUtf8(bytes));
        ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save));
        EXPECT_EQ(TestSupport::readFile(path), bytes);
    }
}

TEST(FileContents, FilesThatAreNotTextOpenReadOnlyAndKeepTheirBytes)
{
    const QString dir = TestSupport::makeTempDir();
    const struct {
        QString path;
        NonTextReason reason;
    } cases[] = {
        {copyOf("binary.bin"), NonTextReason::NulCharacters},
        {TestSupport::writeFile(dir + "/controls", "\x01\x02\x03\r\x04\x05\x06\x07\r\nab\n"),
         NonTextReason::ControlCharacters},
        // Some control characters, escapes and backspaces of coloured or overstruck output,
        // still make text.
        {TestSupport::writeFile(dir + "/log", "\x1b[1mbold\x1b[0m B\bBo\bol\bld\bd\r\n"),
         NonTextReason::None},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path.toStdString());
        const QByteArray bytes = TestSupport::readFile(c.path);
        TestDocument document;
        ASSERT_TRUE(document.readFromURL(c.path, QString()));
        EXPECT_EQ(document.nonTextReason(), c.reason);
        EXPECT_EQ(document.isReadOnly(), c.reason != NonTextReason::None);
        if (c.reason == NonTextReason::None) {
            EXPECT_EQ(document.documentLineBreaks(), 2);
            continue;
        }
        EXPECT_EQ(document.documentLineBreaks(), EncodingManager::KeepLineBreaks);
        // Every CR stays a CR, every LF an LF, in the text as in the file.
        EXPECT_EQ(TextCodec::encode(document.documentEncoding(), document.string())
                      .value_or(QByteArray()),
                  bytes);

        document.editAnyway();
        EXPECT_FALSE(document.isReadOnly());
        ASSERT_TRUE(document.writeSafelyToURL(c.path, QString(), Document::Save));
        EXPECT_EQ(TestSupport::readFile(c.path), bytes);
        insertAt(document, 0, QStringLiteral("Z"));
        ASSERT_TRUE(document.writeSafelyToURL(c.path, QString(), Document::Save));
        EXPECT_EQ(TestSupport::readFile(c.path), "Z" + bytes);

        // A style chosen from the menu converts them after all.
        document.setDocumentLineBreaks(0);
        ASSERT_TRUE(document.writeSafelyToURL(c.path, QString(), Document::Save));
        EXPECT_FALSE(TestSupport::readFile(c.path).contains('\r'));
    }
}

TEST(FileContents, MixedLineBreaksAreCountedAndSavedInTheDocumentsStyle)
{
    const QString dir = TestSupport::makeTempDir();
    const struct {
        QByteArray bytes;
        LineBreakCounts counts;
        bool mixed;
        qsizetype style;
        QByteArray saved;
    } cases[] = {
        {TestSupport::readFile(fixture("mixed-line-breaks.txt")),
         {1, 1, 2},
         true,
         2,
         "first\r\nsecond\r\nthird\r\nfourth\r\n"},
        {"a\rb\nc", {1, 1, 0}, true, 1, "a\rb\rc"},
        {"a\r\nb\r\n", {0, 0, 2}, false, 2, "a\r\nb\r\n"},
        {"a\nb", {0, 0, 0}, false, 0, "a\nb"}, // all LFs: not counted
        {"ab", {0, 0, 0}, false, 0, "ab"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.toStdString());
        const QString path = TestSupport::writeFile(dir + "/file.txt", c.bytes);
        TestDocument document;
        ASSERT_TRUE(document.readFromURL(path, QString()));
        const LineBreakCounts counts = document.lineBreaksAsRead();
        EXPECT_EQ(counts.lineFeeds, c.counts.lineFeeds);
        EXPECT_EQ(counts.carriageReturns, c.counts.carriageReturns);
        EXPECT_EQ(counts.carriageReturnLineFeeds, c.counts.carriageReturnLineFeeds);
        EXPECT_EQ(counts.isMixed(), c.mixed);
        EXPECT_EQ(document.documentLineBreaks(), c.style);
        EXPECT_FALSE(document.isReadOnly());
        ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save));
        EXPECT_EQ(TestSupport::readFile(path), c.saved);
    }
}

TEST(FileContents, ReopeningInAnotherEncodingIsOneUndoableStep)
{
    const QString dir = TestSupport::makeTempDir();
    // "café" in ISO Latin 1; "È" in Mac OS Roman, and no UTF-8 at all.
    const QString path = TestSupport::writeFile(dir + "/cafe.txt", "caf\xe9\n");
    TestDocument document;
    ASSERT_TRUE(document.readFromURL(path, QString()));
    const quint64 detected = document.documentEncoding();
    ASSERT_EQ(document.string(), QStringLiteral("caf\u00e9\n"));

    // Unsaved edits: the file's text replaces them, undo brings them back, with the encoding
    // they were made in and their unsaved state; redo goes forward again.
    insertAt(document, 5, QStringLiteral("au lait\n"));
    ASSERT_TRUE(document.isDocumentEdited());
    ASSERT_TRUE(document.rereadWithEncoding(kMacRoman));
    EXPECT_EQ(document.string(), QStringLiteral("caf\u00c8\n"));
    EXPECT_EQ(document.documentEncoding(), kMacRoman);
    EXPECT_FALSE(document.isDocumentEdited());
    document.undo();
    EXPECT_EQ(document.string(), QStringLiteral("caf\u00e9\nau lait\n"));
    EXPECT_EQ(document.documentEncoding(), detected);
    EXPECT_TRUE(document.isDocumentEdited());
    document.redo();
    EXPECT_EQ(document.string(), QStringLiteral("caf\u00c8\n"));
    EXPECT_EQ(document.documentEncoding(), kMacRoman);
    EXPECT_FALSE(document.isDocumentEdited());

    // Bytes that do not decode in the encoding: nothing changes, no undo step either, and the
    // error says why.
    QString error;
    EXPECT_FALSE(document.rereadWithEncoding(kUTF8, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("cafe.txt"))) << error.toStdString();
    EXPECT_EQ(document.string(), QStringLiteral("caf\u00c8\n"));
    EXPECT_EQ(document.documentEncoding(), kMacRoman);
    document.undo();
    EXPECT_EQ(document.string(), QStringLiteral("caf\u00e9\nau lait\n"));
    document.redo();
    EXPECT_FALSE(document.canRedo());

    // The encoding reopened in is the one saved in.
    ASSERT_TRUE(document.rereadWithEncoding(kLatin1));
    insertAt(document, 0, QStringLiteral("\u00e0 "));
    ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::Save));
    EXPECT_EQ(TestSupport::readFile(path), "\xe0 caf\xe9\n");
}
