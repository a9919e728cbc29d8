#include "platform/Range.h"

#include <gtest/gtest.h>

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
