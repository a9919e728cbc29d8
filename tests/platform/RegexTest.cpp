#include "platform/Regex.h"

#include <gtest/gtest.h>

// The option bits, groups and failures a search reaches are held by the search engine's tests;
// these are what only colouring and the function list rely on.
TEST(Regex, LineEndsRegionsAndUtf16Positions)
{
    const QString text = QStringLiteral("ab\nAB\r\nab");
    // Without Unix line separators, a CR ends a line for '$' too.
    EXPECT_EQ(Regex("B$", Regex::AnchorsMatchLines).matches(text).size(), 1u);
    EXPECT_TRUE(
        Regex("B$", Regex::AnchorsMatchLines | Regex::UseUnixLineSeparators).matches(text).empty());
    // The start of a region is a line start for '^'.
    const auto inside = Regex("^foo", 0).matches(u"foo foo foo", Range(4, 7));
    ASSERT_EQ(inside.size(), 1u);
    EXPECT_EQ(inside[0].range(), Range(4, 3));
    // Positions are UTF-16 units: a character outside the BMP counts two.
    const auto after = Regex("b", 0).matches(QStringLiteral("\U0001F600b"));
    ASSERT_EQ(after.size(), 1u);
    EXPECT_EQ(after[0].range(), Range(2, 1));
}
