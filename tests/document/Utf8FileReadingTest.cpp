// The quick reading of UTF-8 files gives a document exactly what the full reading gives.
#include "document/Utf8FileReading.h"

#include "TestSupport.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "platform/CharacterStandIns.h"

#include <gtest/gtest.h>

namespace {

constexpr quint64 kUTF8 = 4;
constexpr quint64 kAutomatic = ~quint64(0);

// Everything a reading leaves in a document, or the refusal.
struct Read {
    bool read = false;
    QString error;
    quint64 encoding = 0;
    qsizetype lineBreaks = 0;
    LineBreakCounts counts;
    NonTextReason nonText = NonTextReason::None;
    CharacterStandIns standIns;
    QString stored;
    QString string;
    qsizetype lines = 0;
    /// Whether the end was still being decoded when the reading returned, and the length
    /// of the text then.
    bool loading = false;
    qsizetype lengthWhileLoading = 0;
};

Read readDocument(const QString& path, quint64 encoding, bool priority, bool quickly)
{
    Utf8FileReading::setEnabled(quickly);
    DocumentSettings settings = TestSupport::documentSettings();
    settings.priorityToJapaneseEncoding = priority;
    // Not the style of any file here: a text without line breaks must be seen to take it.
    settings.defaultsLineBreaks = 2;
    settings.defaultsTextEncoding = 5;
    Document document(TestSupport::encodings(), settings);
    Read result;
    result.read = document.readFromURL(path, QString(), &result.error,
                                       {Document::ReadRequest::OpenPanel, encoding});
    Utf8FileReading::setEnabled(true);
    result.loading = document.isLoading();
    result.lengthWhileLoading = document.length();
    result.encoding = document.documentEncoding();
    result.lineBreaks = document.documentLineBreaks();
    result.counts = document.lineBreaksAsRead();
    result.nonText = document.nonTextReason();
    result.standIns = document.characterStandIns();
    result.stored = document.storedText();
    result.string = document.string();
    result.lines = document.lineCount();
    return result;
}

} // namespace

TEST(Utf8FileReading, ReadsWhatTheFullReadingReadsAndLeavesItTheRest)
{
    const QByteArray emoji = "\xF0\x9F\x98\x80"; // two UTF-16 units
    const qsizetype limit = Document::maximumLineLength;
    // Just over the size decoded on a worker.
    const QByteArray largeAscii =
        QByteArray("int x = 1; /* a comment */\n").repeated(Utf8FileReading::workerBytes / 27 + 1);
    const QByteArray large = "caf\xC3\xA9 " + emoji + "\n" + largeAscii;
    const struct {
        const char* name;
        QByteArray bytes;
        bool quick; // whether the quick reading takes it
        quint64 encoding = kAutomatic;
        bool priority = false;
    } cases[] = {
        {"utf8", "na\xC3\xAFve caf\xC3\xA9\n\xE6\x97\xA5\xE6\x9C\xAC " + emoji + "\n", true},
        {"ascii", "int main() { return 0; }\n", true},
        {"no line break", "h\xC3\xA9llo", true},
        {"asked for utf8", "caf\xC3\xA9\n", true, kUTF8},
        {"asked for utf8 with priority", "caf\xC3\xA9\n", true, kUTF8, true},
        {"escape beyond ascii", "\xC3\xA9\x1B[0m\n", true},
        {"bom", "\xEF\xBB\xBFhello\n\xEF\xBB\xBF\n", true},
        {"bom with priority", "\xEF\xBB\xBF\xE6\x97\xA5\n", true, kAutomatic, true},
        {"line at the limit", "x\n" + emoji.repeated(limit / 2) + "\nend", true},
        {"line over the limit", "x\n" + emoji.repeated(limit / 2) + "y\nend", false},
        {"bytes over the limit", "x\n" + QByteArray(limit * 8 + 1, 'a') + "\n", false},
        {"ascii with escape", "\x1B$B$3$s\x1B(B\n", false},
        {"ascii with tilde brace", "a ~{<:Ky2;~} b\n", false},
        {"crlf", "a\r\nb\r\n", true},
        {"cr", "a\rb\r", true},
        {"mixed", "a\r\nb\nc\rd\r\r\n\n\re", true},
        {"cr at the end", "a\nb\r", true},
        {"nul", QByteArray("a\0b\n", 4), false},
        {"paragraph separator",
         "a\xE2\x80\xA9"
         "b\n",
         false},
        {"frame mark",
         "a\xEF\xB7\x90"
         "b\n",
         false},
        {"control characters",
         "\x01\x02\x03"
         "a\n",
         false},
        {"c1 controls",
         "\xC2\x80\xC2\x81"
         "a\n",
         false},
        {"shift_jis", "\x93\xFA\x96\x7B\x8C\xEA\n", false},
        {"shift_jis with priority", "\x93\xFA\x96\x7B\x8C\xEA\n", false, kAutomatic, true},
        {"utf8 with priority", "\xE6\x97\xA5\xE6\x9C\xAC\n", false, kAutomatic, true},
        {"latin1 asked for utf8", "caf\xE9\n", false, kUTF8},
        {"latin1 after utf8", "caf\xC3\xA9\n" + QByteArray(20000, 'a') + "\xE9\n", false},
        // Beyond the part whose look decides whether a file is text: only the decoding sees it.
        {"latin1 far after utf8", "caf\xC3\xA9\n" + QByteArray(300'000, 'a') + "\xE9\n", false},
        {"empty", "", false},
        // Large files, with what would refuse the quick reading only after their first part.
        {"large", large, true},
        {"large multibyte", (QByteArray("\xE6\x97\xA5") + emoji + "\n").repeated(1'200'000), true},
        {"large with a line at the limit", large + QByteArray(limit, 'a') + "\n", true},
        {"large with a line over the limit", large + QByteArray(limit + 1, 'a') + "\n", false},
        {"large with a frame mark", large + "\xEF\xB7\x91\n", false},
        {"large with latin1", large + "caf\xE9\n", false},
        {"large with a cr", large + "a\r\n", true},
        {"large crlf", QByteArray(largeAscii).replace("\n", "\r\n"), true},
        {"large with a nul", large + QByteArray("a\0b\n", 4), false},
        {"large ascii with escape", largeAscii + "\x1B$B$3$s\x1B(B\n", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path =
            TestSupport::writeFile(TestSupport::makeTempDir() + QStringLiteral("/file"), c.bytes);
        QByteArray data = c.bytes;
        EXPECT_EQ(Utf8FileReading::read(data, c.encoding, c.priority, TestSupport::encodings(),
                                        limit, limit * 8)
                      .has_value(),
                  c.quick);
        const Read quick = readDocument(path, c.encoding, c.priority, true);
        const Read full = readDocument(path, c.encoding, c.priority, false);
        EXPECT_EQ(quick.read, full.read);
        EXPECT_EQ(quick.error, full.error);
        EXPECT_EQ(quick.encoding, full.encoding);
        EXPECT_EQ(quick.lineBreaks, full.lineBreaks);
        EXPECT_EQ(quick.counts.lineFeeds, full.counts.lineFeeds);
        EXPECT_EQ(quick.counts.carriageReturns, full.counts.carriageReturns);
        EXPECT_EQ(quick.counts.carriageReturnLineFeeds, full.counts.carriageReturnLineFeeds);
        EXPECT_EQ(quick.nonText, full.nonText);
        EXPECT_TRUE(quick.standIns == full.standIns);
        EXPECT_EQ(quick.stored, full.stored);
        EXPECT_EQ(quick.string, full.string);
        EXPECT_EQ(quick.lines, full.lines);
        if (c.bytes.isEmpty()) {
            EXPECT_EQ(full.encoding, 5u); // the default
        }
        if (c.quick) {
            EXPECT_TRUE(quick.read) << qPrintable(quick.error);
            EXPECT_EQ(quick.encoding, kUTF8);
        }
        // A large file shows its start at once, long enough to be taken for a large text.
        if (c.quick && c.bytes.size() > Utf8FileReading::workerBytes &&
            !EncodingManager::lineLongerThan(c.bytes, limit)) {
            EXPECT_TRUE(quick.loading);
            EXPECT_GT(quick.lengthWhileLoading, TextSource::eagerWorkLimit);
            EXPECT_LT(quick.lengthWhileLoading, quick.stored.size());
        }
    }
}
