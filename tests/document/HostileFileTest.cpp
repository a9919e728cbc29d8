// Files no one would call text: each opens or is refused with a message naming it, and
// neither takes the window away for long.
#include "TestSupport.h"
#include "document/Document.h"
#include "document/EncodingManager.h"

#include <QFile>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

constexpr quint64 kUTF8 = 4;

// Opens `path` in a new document.
struct Opened {
    bool ok = false;
    QString error;
};

Opened open(Document& document, const QString& path, Document::ReadRequest request = {})
{
    Opened result;
    result.ok = document.readFromURL(path, QString(), &result.error, request);
    return result;
}

} // namespace

TEST(HostileFiles, InvalidUtf8OpensWithEveryByteKeptAndIsRefusedAsUtf8)
{
    const QString dir = TestSupport::makeTempDir();
    // Invalid UTF-8 opens in an encoding that keeps every byte...
    const QByteArray invalid = "caf\xc3 \xff\xfe ok \xed\xa0\x80 \xc0\xaf\nend\n";
    const QString invalidPath = TestSupport::writeFile(dir + "/invalid.txt", invalid);
    TestDocument detected;
    ASSERT_TRUE(open(detected, invalidPath).ok);
    EXPECT_NE(detected.documentEncoding(), kUTF8);
    const QString copy = dir + "/copy.txt";
    ASSERT_TRUE(detected.writeSafelyToURL(copy, QString(), Document::SaveTo));
    EXPECT_EQ(TestSupport::readFile(copy), invalid);

    // ...and is refused, with a message, when UTF-8 is asked for.
    TestDocument strict;
    const Opened refused = open(strict, invalidPath, {Document::ReadRequest::OpenPanel, kUTF8});
    EXPECT_FALSE(refused.ok);
    EXPECT_EQ(refused.error.toStdString(),
              "The file “invalid.txt” could not be opened using text encoding Unicode (UTF-8).");
    EXPECT_TRUE(strict.string().isEmpty());
}

TEST(HostileFiles, LinesLongerThanTheLimitAreRefusedNamingTheLine)
{
    const QString dir = TestSupport::makeTempDir();
    const qsizetype limit = Document::maximumLineLength;

    // A line of exactly the limit opens; one character more does not.
    QByteArray bytes = "short\n" + QByteArray(limit, 'x') + "\nend\n";
    const QString fits = TestSupport::writeFile(dir + "/fits.txt", bytes);
    TestDocument document;
    ASSERT_TRUE(open(document, fits).ok);
    bytes.insert(6, 'x');
    const QString over = TestSupport::writeFile(dir + "/over.txt", bytes);
    TestDocument refused;
    const Opened opened = open(refused, over);
    EXPECT_FALSE(opened.ok);
    EXPECT_EQ(opened.error.toStdString(),
              "The file “over.txt” could not be opened: line 2 is 1,000,001 "
              "characters long, and lines longer than 1,000,000 characters "
              "cannot be edited.");
    EXPECT_TRUE(refused.string().isEmpty());

    // A line longer in bytes than any encoding could fit in the limit is refused before it
    // is decoded, and named by its bytes.
    const QString huge = TestSupport::writeFile(
        dir + "/huge.txt", "first\r\nsecond\r" + QByteArray(limit * 8 + 1, 'y'));
    const Opened hugeOpened = open(refused, huge);
    EXPECT_FALSE(hugeOpened.ok);
    EXPECT_EQ(hugeOpened.error.toStdString(),
              "The file “huge.txt” could not be opened: line 3 is 8,000,001 "
              "bytes long, and lines longer than 1,000,000 characters "
              "cannot be edited.");

    // A file of many short lines that end at CR alone is no single long line.
    const QString classic = TestSupport::writeFile(
        dir + "/classic.txt", QByteArray("abcdefghi\r").repeated(limit / 10 + 10));
    TestDocument crLines;
    ASSERT_TRUE(open(crLines, classic).ok);

    // Lines end at LF, CR and CR LF alike, whether bytes or characters are counted.
    EXPECT_EQ(EncodingManager::lineLongerThan(QStringView(u"a\r\nbb\r\u00e9\u00e9\u00e9\ndd"), 2),
              std::make_optional(std::pair<qsizetype, qint64>(3, 3)));
    EXPECT_EQ(EncodingManager::lineLongerThan("a\r\nbb\rccc\ndd", 2),
              std::make_optional(std::pair<qsizetype, qint64>(3, 3)));
    EXPECT_EQ(EncodingManager::lineLongerThan("a\r\nbb\rccc\ndd", 3), std::nullopt);
    EXPECT_EQ(EncodingManager::lineLongerThan("\n\n\r\rxyz", 2),
              std::make_optional(std::pair<qsizetype, qint64>(5, 3)));
}

TEST(HostileFiles, PipesAndFilesThatFailWhileReadAreRefusedWithoutBlocking)
{
    const QString dir = TestSupport::makeTempDir();
    // A pipe no one writes into would block a reader forever.
    const QString fifo = dir + "/pipe";
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    TestDocument document;
    Opened opened = open(document, fifo);
    EXPECT_FALSE(opened.ok);
    EXPECT_EQ(opened.error.toStdString(),
              "“pipe” is not a regular file, so it cannot be opened as text.");

    // This process's memory is a file that opens and then fails at the first read (nothing
    // is mapped at address 0).
    opened = open(document, "/proc/self/mem");
    EXPECT_FALSE(opened.ok);
    EXPECT_EQ(opened.error.toStdString(),
              "The file “mem” could not be opened because it cannot be read.");
    EXPECT_TRUE(document.string().isEmpty());
    EXPECT_TRUE(document.fileURL().isEmpty());

    // A file that claims no size is read up to its end all the same.
    opened = open(document, "/proc/self/status");
    ASSERT_TRUE(opened.ok) << opened.error.toStdString();
    EXPECT_TRUE(document.string().startsWith("Name:"));
}
