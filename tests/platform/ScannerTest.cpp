#include "platform/Scanner.h"

#include "platform/Range.h"

#include <gtest/gtest.h>

TEST(Scanner, EndAndSkipRules)
{
    Scanner scanner(QStringLiteral("  x \u2028\u00a0\u3000\u0085\t"));
    EXPECT_FALSE(scanner.isAtEnd());
    EXPECT_TRUE(scanner.scanString("x"));
    EXPECT_EQ(scanner.scanLocation(), 3);
    // Line and paragraph separators, no-break and ideographic spaces and NEL are skipped.
    EXPECT_TRUE(scanner.isAtEnd());
    EXPECT_FALSE(scanner.scanUpToString("y"));

    Scanner upTo(QStringLiteral("ab cd"));
    QString into;
    EXPECT_TRUE(upTo.scanUpToString("cd", &into));
    EXPECT_EQ(into, "ab ");
    EXPECT_EQ(upTo.scanLocation(), 3);
    // Standing on the string: nothing passed over.
    EXPECT_FALSE(upTo.scanUpToString("cd"));
    EXPECT_EQ(upTo.scanLocation(), 3);
    // No occurrence: to the end.
    EXPECT_TRUE(upTo.scanUpToString("zz"));
    EXPECT_EQ(upTo.scanLocation(), 5);
}

TEST(Scanner, Integers)
{
    Scanner scanner(QStringLiteral(" 12 -7 +3 - 4 x 99999999999999999999"));
    qint64 v = 0;
    for (const qint64 expected : {12, -7, 3}) {
        ASSERT_TRUE(scanner.scanInteger(&v));
        EXPECT_EQ(v, expected);
    }
    // A sign must touch its digits.
    const qsizetype before = scanner.scanLocation();
    EXPECT_FALSE(scanner.scanInteger(&v));
    EXPECT_EQ(scanner.scanLocation(), before + 1);
    EXPECT_TRUE(scanner.scanString("-"));
    ASSERT_TRUE(scanner.scanInteger(&v));
    EXPECT_EQ(v, 4);
    EXPECT_FALSE(scanner.scanInteger(&v));
    EXPECT_TRUE(scanner.scanString("x"));
    ASSERT_TRUE(scanner.scanInteger(&v));
    EXPECT_EQ(v, std::numeric_limits<qint64>::max());
    EXPECT_TRUE(scanner.isAtEnd());
}

TEST(Range, TextFormsAndArithmetic)
{
    EXPECT_EQ(NSStringFromRange({3, 14}), "{3, 14}");
    EXPECT_EQ(NSRangeFromString("{3, 14}"), Range(3, 14));
    EXPECT_EQ(NSRangeFromString("  7 "), Range(7, 0));
    EXPECT_EQ(NSRangeFromString("nothing"), Range(0, 0));
    EXPECT_EQ(NSRangeFromString(NSStringFromRange({NSNotFound, 0})), Range(NSNotFound, 0));

    EXPECT_EQ(Range(2, 5).intersection({4, 10}), Range(4, 3));
    EXPECT_EQ(Range(2, 2).intersection({4, 10}), Range(0, 0));
    EXPECT_EQ(Range(2, 2).unionWith({8, 1}), Range(2, 7));
    EXPECT_TRUE(Range(2, 2).contains(3));
    EXPECT_FALSE(Range(2, 2).contains(4));
}
