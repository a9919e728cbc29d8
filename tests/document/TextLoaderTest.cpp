#include "document/TextLoader.h"

#include "TestSupport.h"
#include "document/EncodingManager.h"
#include "platform/TextCodec.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

constexpr quint64 Automatic = StringEncoding::NoEncoding;
constexpr quint64 UTF8 = 4;
constexpr quint64 UTF16 = 10;
constexpr quint64 ShiftJIS = 0x80000A01;

QString fileWith(const QByteArray& bytes)
{
    return TestSupport::writeFile(TestSupport::makeTempDir() + u"/text.txt"_qs, bytes);
}

QByteArray utf8Lines(qsizetype size, const char* lineBreak)
{
    QByteArray bytes;
    for (int i = 0; bytes.size() < size; ++i) {
        bytes += "line " + QByteArray::number(i) + " caf\xC3\xA9 \xF0\x9F\x98\x80 \xE2\x80\xA8 " +
                 lineBreak;
    }
    return bytes;
}

TEST(TextLoaderTest, LoadingGivesTheTextThatDecodingTheWholeFileGives)
{
    // UTF-8 goes in slices of 4,096 bytes, read a megabyte at a time: the cases put line
    // breaks, long sequences and U+FEFF on those edges.
    const QByteArray a4095(4095, 'a');
    struct Case {
        const char* name;
        QByteArray bytes;
        quint64 encoding;
    };
    const Case cases[] = {
        {"CR LF across a slice's edge, after a byte-order mark",
         "\xEF\xBB\xBF" + QByteArray(4092, 'a') + "\r\n" + utf8Lines(1'200'000, "\r\n"), UTF8},
        {"CR alone at a slice's edge", a4095 + "\rb\rc", UTF8},
        {"a four-byte sequence across a slice's edge", QByteArray(4094, 'a') + "\xF0\x9F\x98\x80z",
         UTF8},
        {"U+FEFF starting a slice is text", QByteArray(4096, 'a') + "\xEF\xBB\xBF\xEF\xBB\xBFx",
         UTF8},
        {"NUL, LS, PS and NEL are text",
         QByteArray("a\0b\xE2\x80\xA8"
                    "c\xE2\x80\xA9"
                    "d\xC2\x85"
                    "e\n",
                    16),
         UTF8},
        {"mixed line breaks, and a CR at the end", "a\r\nb\rc\nd\r\r\n\n\r", UTF8},
        {"a file without line breaks", QByteArray(9000, 'x'), UTF8},
        {"an empty file", QByteArray(), UTF8},
        {"Shift_JIS",
         *TextCodec::encode(ShiftJIS, u"日本語の文章。\r\n二行目\r\n"_qs.repeated(3000)), ShiftJIS},
        {"UTF-16 found by detection",
         *TextCodec::encode(UTF16, u"one\rtwo 😀\rthree\r"_qs.repeated(2000)), Automatic},
        {"UTF-8 found by detection", utf8Lines(300'000, "\n"), Automatic},
    };
    EncodingManager& encodings = EncodingManager::sharedEncodingManager();
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        QString decoded;
        quint64 encoding = test.encoding;
        if (encoding == Automatic) {
            const DecodedContents contents =
                encodings.automaticDistinctionWithData(test.bytes, false);
            decoded = contents.text;
            encoding = contents.encoding;
        } else {
            ASSERT_TRUE(TextCodec::decode(encoding, test.bytes, decoded));
        }
        const QString expected = encodings.replaceLineBreaks(0, decoded);

        const QString path = fileWith(test.bytes);
        for (const TextLoader::Result& result :
             {TextLoader::load(encodings, path, test.encoding, false),
              TextLoader::loadData(encodings, test.bytes, test.encoding, false)}) {
            ASSERT_EQ(result.status, TextLoader::Status::Loaded);
            EXPECT_EQ(result.text.string(), expected);
            EXPECT_EQ(result.encoding, encoding);
            EXPECT_EQ(result.lineBreaks, EncodingManager::scanLineBreaks(decoded));
            EXPECT_EQ(result.bytesRead, test.bytes.size());
            QString why;
            EXPECT_TRUE(result.text.checkStructure(&why)) << why.toStdString();
        }
    }
}

TEST(TextLoaderTest, WhatCannotBeReadOrDecodedGivesNoText)
{
    const QString folder = TestSupport::makeTempDir();
    const QString fifo = folder + u"/fifo"_qs;
    ASSERT_EQ(::mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);
    const QString invalidInTheMiddle =
        fileWith(utf8Lines(2'000'000, "\n") + "\xC3(" + utf8Lines(1000, "\n"));
    const struct {
        const char* name;
        QString path;
        quint64 encoding;
        TextLoader::Status status;
    } cases[] = {
        {"bytes that are not UTF-8, far into the file", invalidInTheMiddle, UTF8,
         TextLoader::Status::Undecodable},
        {"bytes that are not Shift_JIS", fileWith("\x81\x20\x81"), ShiftJIS,
         TextLoader::Status::Undecodable},
        {"a missing file", folder + u"/missing.txt"_qs, UTF8, TextLoader::Status::Unreadable},
        {"a folder", folder, Automatic, TextLoader::Status::Unreadable},
        {"a pipe, which would wait for a writer", fifo, UTF8, TextLoader::Status::Unreadable},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        const TextLoader::Result result = TextLoader::load(EncodingManager::sharedEncodingManager(),
                                                           test.path, test.encoding, false);
        EXPECT_EQ(result.status, test.status);
        EXPECT_TRUE(result.text.isEmpty());
    }
}

} // namespace
