#include "platform/TextLines.h"

#include <gtest/gtest.h>

TEST(TextLines, EveryTerminatorEndsALine)
{
    const QString text = QStringLiteral("ab\r\ncd\ref\u0085g\u2029h\u2028\n");
    EXPECT_EQ(TextLines::lineRangeForRange(text, {0, 0}), Range(0, 4));
    // Inside a CR LF pair the position still belongs to the line the pair ends.
    EXPECT_EQ(TextLines::lineStart(text, 3), 0);
    EXPECT_EQ(TextLines::lineEnd(text, 3), 4);
    EXPECT_EQ(TextLines::contentsEnd(text, 0), 2);
    EXPECT_EQ(TextLines::lineRangeForRange(text, {4, 0}), Range(4, 3));
    EXPECT_EQ(TextLines::lineRangeForRange(text, {7, 1}), Range(7, 3));
    EXPECT_EQ(TextLines::lineRangeForRange(text, {10, 0}), Range(10, 2));
    EXPECT_EQ(TextLines::lineRangeForRange(text, {12, 0}), Range(12, 2));
    EXPECT_EQ(TextLines::lineRangeForRange(text, {14, 0}), Range(14, 1));
    // The end of the text is an empty last line.
    EXPECT_EQ(TextLines::lineRangeForRange(text, {15, 0}), Range(15, 0));
    // A range over several lines covers them whole; one ending after a break stops there.
    EXPECT_EQ(TextLines::lineRangeForRange(text, {1, 5}), Range(0, 7));
    EXPECT_EQ(TextLines::lineRangeForRange(text, {0, 4}), Range(0, 4));
    EXPECT_EQ(TextLines::lineRangeForRange(QString(), {0, 0}), Range(0, 0));
    EXPECT_EQ(TextLines::contentsEnd(QStringLiteral("abc"), 1), 3);
}
