#include "platform/Regex.h"

#include <gtest/gtest.h>

namespace {

std::vector<Range> allGroups(const Regex& regex, const QString& text)
{
    std::vector<Range> ranges;
    for (const auto& match : regex.matches(text)) {
        ranges.insert(ranges.end(), match.groups.begin(), match.groups.end());
    }
    return ranges;
}

} // namespace

TEST(Regex, OptionBits)
{
    using R = std::vector<Range>;
    const QString text = QStringLiteral("ab\nAB\r\nab");
    EXPECT_EQ(allGroups(Regex("^ab$", 0), text), R{});
    EXPECT_EQ(allGroups(Regex("^ab$", Regex::AnchorsMatchLines), text), (R{{0, 2}, {7, 2}}));
    EXPECT_EQ(allGroups(Regex("^ab$", Regex::AnchorsMatchLines | Regex::CaseInsensitive), text),
              (R{{0, 2}, {3, 2}, {7, 2}}));
    // Dot does not cross a line end unless asked to.
    EXPECT_EQ(allGroups(Regex("b.A", 0), text), R{});
    EXPECT_EQ(allGroups(Regex("b.A", Regex::DotMatchesLineSeparators), text), (R{{1, 3}}));
    // With Unix line separators only, CR is an ordinary character for '$'.
    EXPECT_EQ(allGroups(Regex("B$", Regex::AnchorsMatchLines), text), (R{{4, 1}}));
    EXPECT_EQ(allGroups(Regex("B$", Regex::AnchorsMatchLines | Regex::UseUnixLineSeparators), text),
              R{});
    EXPECT_EQ(allGroups(Regex("a.b", Regex::IgnoreMetacharacters), "axb a.b"), (R{{4, 3}}));
}

TEST(Regex, CaptureGroups)
{
    using R = std::vector<Range>;
    const Regex regex("(a)(b)", 0);
    ASSERT_TRUE(regex.isValid());
    EXPECT_EQ(regex.captureGroupCount(), 2);
    EXPECT_EQ(allGroups(regex, "ab ab"), (R{{0, 2}, {0, 1}, {1, 1}, {3, 2}, {3, 1}, {4, 1}}));

    // A group that did not take part has no range.
    const auto matches = Regex("(x)|(y)", 0).matches(u"y");
    ASSERT_EQ(matches.size(), 1u);
    EXPECT_TRUE(matches[0].groups[1].isNotFound());
    EXPECT_EQ(matches[0].groups[2], Range(0, 1));

    // Positions are UTF-16 units: a character outside the BMP counts two.
    EXPECT_EQ(allGroups(Regex("b", 0), QStringLiteral("\U0001F600b")), (R{{2, 1}}));
}

TEST(Regex, RegionAndFailures)
{
    using R = std::vector<Range>;
    const QString text = QStringLiteral("foo foo foo");
    EXPECT_EQ(allGroups(Regex("foo", 0), text).size(), 3u);
    const auto inside = Regex("^foo", 0).matches(text, Range(4, 7));
    ASSERT_EQ(inside.size(), 1u);
    EXPECT_EQ(inside[0].range(), Range(4, 3));

    Regex broken("(unclosed", 0);
    EXPECT_FALSE(broken.isValid());
    EXPECT_FALSE(broken.errorString().isEmpty());
    Regex::Status status = Regex::Status::Ok;
    EXPECT_TRUE(broken.matches(text, Range::notFound(), &status).empty());
    EXPECT_EQ(status, Regex::Status::InvalidPattern);

    // Catastrophic backtracking ends with an error instead of running for ever.
    Regex slow("(a+)+$", 0);
    slow.setTimeLimit(10);
    const QString hostile = QString(40, u'a') + u'b';
    slow.matches(hostile, Range::notFound(), &status);
    EXPECT_EQ(status, Regex::Status::TimeLimit);
    EXPECT_EQ(allGroups(Regex("x", 0), QString()), R{});
}
