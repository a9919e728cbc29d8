#include "editor/LineShifter.h"

#include "editor/BraceMatcher.h"

#include <gtest/gtest.h>

namespace {

QString apply(const QString& text, const LineShifter::Replacement& shift)
{
    QString result = text;
    result.replace(shift.range.location, shift.range.length, shift.string);
    return result;
}

TEST(LineShifter, ShiftRightAddsOneTabUnitToEveryTouchedLine)
{
    const QString text = QStringLiteral("a\n\nc\nd");
    // Three whole lines (an empty one among them) selected from the first line's start to
    // the third line's end stay selected, without the first line's new tab unit.
    auto shift = LineShifter::shiftRight(text, {0, 4}, false);
    EXPECT_EQ(apply(text, shift), QStringLiteral("\ta\n\t\n\tc\nd"));
    EXPECT_EQ(shift.selection, Range(1, 6));

    // A selection starting with a line break at a line start takes the first unit too.
    const QString broken = QStringLiteral("\nx\n");
    shift = LineShifter::shiftRight(broken, {0, 2}, true);
    EXPECT_EQ(apply(broken, shift), QStringLiteral("    \n    x\n"));
    EXPECT_EQ(shift.selection, Range(0, 2 + 4 * 2));

    // An insertion point in an empty text.
    shift = LineShifter::shiftRight(QString(), {0, 0}, true);
    EXPECT_EQ(shift.range, Range(0, 0));
    EXPECT_EQ(shift.string, QStringLiteral("    "));
    EXPECT_EQ(shift.selection, Range(4, 0));
}

TEST(LineShifter, ShiftLeftRemovesSpacesOrOneTab)
{
    // Two spaces, a tab and x lose the spaces; a tab, two spaces and x lose the tab.
    const QString text = QStringLiteral("  \tx\n\t  x\n    y");
    auto shift = LineShifter::shiftLeft(text, {0, qsizetype(text.size())}, true);
    ASSERT_TRUE(shift);
    EXPECT_EQ(apply(text, *shift), QStringLiteral("\tx\n  x\ny"));

    // With tabs as the unit a line loses one space or one tab.
    shift = LineShifter::shiftLeft(QStringLiteral("  a\n\t\tb"), {0, 8}, false);
    ASSERT_TRUE(shift);
    EXPECT_EQ(apply(QStringLiteral("  a\n\t\tb"), *shift), QStringLiteral(" a\n\tb"));

    // Nothing to remove: no change at all.
    EXPECT_FALSE(LineShifter::shiftLeft(QStringLiteral("a\nb"), {0, 3}, true));
    EXPECT_FALSE(LineShifter::shiftLeft(QString(), {0, 0}, true));

    // An insertion point inside the first line's leading spaces ends at the line start.
    shift = LineShifter::shiftLeft(QStringLiteral("    x"), {2, 0}, true);
    ASSERT_TRUE(shift);
    EXPECT_EQ(shift->selection, Range(0, 0));

    // A selection over later lines shrinks by what they lose but never ends before the
    // start of its last line.
    const QString lines = QStringLiteral("a\n    b\n    c");
    shift = LineShifter::shiftLeft(lines, {0, qsizetype(lines.size())}, true);
    ASSERT_TRUE(shift);
    EXPECT_EQ(apply(lines, *shift), QStringLiteral("a\nb\nc"));
    EXPECT_EQ(shift->selection, Range(0, 5));
    shift = LineShifter::shiftLeft(lines, {0, 4}, true);
    ASSERT_TRUE(shift);
    EXPECT_EQ(shift->selection, Range(0, 2));
}

TEST(BraceMatcher, CountsOnlyTheClosingBracketsAfterTheNearestOpening)
{
    // In '((a)(b))' the last ")" goes with the second "(".
    EXPECT_EQ(BraceMatcher::autoBraceMatching(u"((a)(b))", 8, QLatin1Char(')')), Range(1, 1));
    EXPECT_EQ(BraceMatcher::autoBraceMatching(u"(a)", 3, QLatin1Char(')')), Range(0, 1));
    EXPECT_EQ(BraceMatcher::autoBraceMatching(u"x[1]", 4, QLatin1Char(']')), Range(1, 1));
    EXPECT_EQ(BraceMatcher::autoBraceMatching(u"<a>", 3, QLatin1Char('>')), Range(0, 1));
    // None before it, or too few.
    EXPECT_EQ(BraceMatcher::autoBraceMatching(u"a)", 2, QLatin1Char(')')), Range(0, 0));
    EXPECT_EQ(BraceMatcher::autoBraceMatching(u"(a))", 4, QLatin1Char(')')), Range(0, 0));
}

} // namespace
