#include "document/TextLoader.h"

#include "document/EncodingManager.h"
#include "platform/TextCodec.h"

#include <gtest/gtest.h>

namespace {

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
    // UTF-8 goes in slices of 4,096 bytes: the cases put line breaks, long sequences and
    // U+FEFF on their edges.
    const QByteArray a4095(4095, 'a');
    struct Case {
        const char* name;
        QByteArray bytes;
    };
    const Case cases[] = {
        {"CR LF across a slice's edge, after a byte-order mark",
         "\xEF\xBB\xBF" + QByteArray(4092, 'a') + "\r\n" + utf8Lines(1'200'000, "\r\n")},
        {"CR alone at a slice's edge", a4095 + "\rb\rc"},
        {"a four-byte sequence across a slice's edge", QByteArray(4094, 'a') + "\xF0\x9F\x98\x80z"},
        {"U+FEFF starting a slice is text", QByteArray(4096, 'a') + "\xEF\xBB\xBF\xEF\xBB\xBFx"},
        {"NUL, LS, PS and NEL are text", QByteArray("a\0b\xE2\x80\xA8"
                                                    "c\xE2\x80\xA9"
                                                    "d\xC2\x85"
                                                    "e\n",
                                                    16)},
        {"mixed line breaks, and a CR at the end", "a\r\nb\rc\nd\r\r\n\n\r"},
        {"a file without line breaks", QByteArray(9000, 'x')},
        {"an empty file", QByteArray()},
    };
    EncodingManager& encodings = EncodingManager::sharedEncodingManager();
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        QString decoded;
        ASSERT_TRUE(TextCodec::decode(4, test.bytes, decoded));
        const std::optional<TextSnapshot> text = TextLoader::loadUtf8Data(test.bytes);
        ASSERT_TRUE(text);
        EXPECT_EQ(text->string(), encodings.replaceLineBreaks(0, decoded));
        QString why;
        EXPECT_TRUE(text->checkStructure(&why)) << why.toStdString();
    }
}

} // namespace
