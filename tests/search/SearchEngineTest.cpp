#include "search/SearchEngine.h"

#include <gtest/gtest.h>

using R = std::vector<Range>;

TEST(SearchEngine, PlainOccurrences)
{
    EXPECT_EQ(SearchEngine::findAllString("aaaa", "aa", true), (R{{0, 2}, {1, 2}, {2, 2}}));
    // Blanks are skipped before each step, yet an occurrence after them is found where it is.
    EXPECT_EQ(SearchEngine::findAllString("b  b\n\tb", "b", true), (R{{0, 1}, {3, 1}, {6, 1}}));
    // A search string that begins with a blank is never found.
    EXPECT_EQ(SearchEngine::findAllString("a x and x", " x", true), R{});
    EXPECT_EQ(SearchEngine::findAllString("a\nx", "\nx", true), R{});
    EXPECT_EQ(SearchEngine::findAllString("   \n ", "a", true), R{});
    EXPECT_EQ(SearchEngine::findAllString("", "a", true), R{});
    EXPECT_EQ(SearchEngine::findAllString("xABCx abc", "abc", false), (R{{1, 3}, {6, 3}}));
    EXPECT_EQ(SearchEngine::findAllString("xABCx abc", "abc", true), (R{{6, 3}}));
    EXPECT_EQ(SearchEngine::findAllString("abc", "", true), R{});
    EXPECT_EQ(SearchEngine::findAllString("f(x)\n\tf(y)", "f(", true), (R{{0, 2}, {6, 2}}));
}

TEST(SearchEngine, RegularExpressionOccurrences)
{
    // With groups, the groups are the occurrences, not the whole match.
    EXPECT_EQ(SearchEngine::findRegularExpressionOfAllString("ab ab", "(a)(b)", true, false),
              (R{{0, 1}, {1, 1}, {3, 1}, {4, 1}}));
    EXPECT_EQ(SearchEngine::findRegularExpressionOfAllString("xABC abc", "abc", false, false),
              (R{{1, 3}, {5, 3}}));
    // A group that did not take part is skipped.
    EXPECT_EQ(SearchEngine::findRegularExpressionOfAllString("y x", "(x)|(y)", true, false),
              (R{{0, 1}, {2, 1}}));
    EXPECT_EQ(SearchEngine::findRegularExpressionOfAllString("a\nb", "^b$", true, false),
              (R{{2, 1}}));
    // Only LF ends a line: '$' does not match before a CR.
    EXPECT_EQ(SearchEngine::findRegularExpressionOfAllString("a\r\nb", "a$", true, false), R{});
    EXPECT_EQ(SearchEngine::findRegularExpressionOfAllString("a\nb", "a.b", true, false), R{});
    EXPECT_EQ(SearchEngine::findRegularExpressionOfAllString("a\nb", "a.b", true, true),
              (R{{0, 3}}));
    EXPECT_EQ(SearchEngine::findRegularExpressionOfAllString("abc", "(", true, false), R{});
}

TEST(SearchEngine, ChoosingTheNextOrPreviousOccurrence)
{
    const QString text(20, u'x');
    const R ranges{{2, 1}, {5, 1}, {9, 1}};
    EXPECT_EQ(SearchEngine::selectedMatchingRange(ranges, {5, 1}, false, text), Range(9, 1));
    EXPECT_EQ(SearchEngine::selectedMatchingRange(ranges, {5, 1}, true, text), Range(2, 1));
    EXPECT_EQ(SearchEngine::selectedMatchingRange(ranges, {9, 1}, false, text), Range(2, 1));
    // Backwards from the very start wraps to the last occurrence.
    EXPECT_EQ(SearchEngine::selectedMatchingRange(ranges, {0, 0}, true, text), Range(9, 1));
    EXPECT_TRUE(SearchEngine::selectedMatchingRange({}, {0, 0}, false, text).isNotFound());
}

TEST(SearchEngine, WholeWordOccurrences)
{
    // Plain text and regular expressions agree on what a word is.
    enum Modes { Plain = 1, Expression = 2, Both = 3 };
    struct Case {
        const char* text;
        const char* find;
        int modes;
        R expected;
    };
    const Case cases[] = {
        // At the start and the end of the text; inside a word; before an underscore.
        {"cat concat cat_ cat", "cat", Both, {{0, 3}, {16, 3}}},
        {"_cat cat_id cat", "cat", Both, {{12, 3}}},
        // Letters of other scripts and combining marks are word characters.
        {"naïve naïveté", "naïve", Both, {{0, 5}}},
        {"слово словом слово", "слово", Both, {{0, 5}, {13, 5}}},
        {"cafe\u0301 cafe", "cafe", Both, {{6, 4}}},
        {"x\U0001D400 \U0001D400", "\U0001D400", Both, {{4, 2}}},
        {"x\U0001D400 x", "x", Both, {{4, 1}}},
        // Digits belong to words; punctuation and blanks do not.
        {"a1 1 11 (1)", "1", Both, {{3, 1}, {9, 1}}},
        // An occurrence that begins or ends with a non-word character cuts no word there.
        {"f(x) gf(y)", "f(", Plain, {{0, 2}}},
        {"f(x)", "(x)", Plain, {{1, 3}}},
        {"f(x)", "\\(x\\)", Expression, {{1, 3}}},
        // A regular expression takes the alternative that is a whole word.
        {"ab a", "a|ab", Expression, {{0, 2}, {3, 1}}},
        {"a12 34 5b", "\\d+", Expression, {{4, 2}}},
        // With groups, the match is a whole word and its groups are the occurrences.
        {"cat concat", "(c)(at)", Expression, {{0, 1}, {1, 2}}},
        // A pattern that does not compile finds nothing, even where parentheses would
        // balance it.
        {"ab", "a)(?:b", Expression, {}},
    };
    for (const Case& c : cases) {
        const QString text = QString::fromUtf8(c.text);
        const QString find = QString::fromUtf8(c.find);
        if (c.modes & Plain) {
            EXPECT_EQ(SearchEngine::findAllString(text, find, true, true), c.expected)
                << "plain " << c.find << " in " << c.text;
        }
        if (c.modes & Expression) {
            EXPECT_EQ(SearchEngine::findRegularExpressionOfAllString(text, find, true, false, true),
                      c.expected)
                << "expression " << c.find << " in " << c.text;
        }
    }
    // Case does not matter when told so; without the option every occurrence counts.
    EXPECT_EQ(SearchEngine::findAllString("Cat CAT cats", "cat", false, true), (R{{0, 3}, {4, 3}}));
    EXPECT_EQ(
        SearchEngine::findRegularExpressionOfAllString("Cat CAT cats", "cat", false, false, true),
        (R{{0, 3}, {4, 3}}));
    EXPECT_EQ(SearchEngine::findAllString("cat concat", "cat", true, false).size(), 2u);
}

TEST(SearchEngine, LineDescriptions)
{
    qint64 from = 0, to = 0, relative = 0;
    struct Case {
        const char* text;
        bool ok;
        qint64 from, to, relative;
    };
    for (const Case& c :
         {Case{"2", true, 2, 2, 0}, Case{" 7 ", true, 7, 7, 0}, Case{"+0", true, 0, 0, 1},
          Case{"-0", true, 0, 0, -1}, Case{"3-5", true, 3, 5, 0}, Case{"+1-3", true, 1, 3, 1},
          Case{"5-3", false, 0, 0, 0}, Case{"3-", false, 0, 0, 0}, Case{"3x", false, 0, 0, 0},
          Case{"", false, 0, 0, 0}, Case{"x", false, 0, 0, 0}}) {
        EXPECT_EQ(SearchEngine::parseLineDescription(c.text, &from, &to, &relative), c.ok)
            << c.text;
        if (c.ok) {
            EXPECT_EQ(from, c.from) << c.text;
            EXPECT_EQ(to, c.to) << c.text;
            EXPECT_EQ(relative, c.relative) << c.text;
        }
    }
}

TEST(SearchEngine, LinesNamedByADescription)
{
    const auto lines = [](const QString& text, const char* description, Range selection = {0, 0}) {
        return SearchEngine::selectLinesUsingDescription(description, text, selection);
    };
    EXPECT_EQ(lines("a\nb", "2"), Range(2, 1));
    EXPECT_TRUE(lines("a\nb", "3").isNotFound());
    EXPECT_TRUE(lines("a\nb\n", "3").isNotFound());
    EXPECT_TRUE(lines("a\nb", "0").isNotFound());
    EXPECT_EQ(lines("a\nb\n", "1-2"), Range(0, 4));
    EXPECT_EQ(lines("a\r\nb\rc\u2028d", "3"), Range(5, 2));
    EXPECT_EQ(lines("a\r\nb\rc\u2028d", "4"), Range(7, 1));

    const QString text = QStringLiteral("l1\nl2\nl3\nl4\nl5\n");
    const Range inLine3{7, 1};
    EXPECT_EQ(lines(text, "+0", inLine3), Range(6, 3));
    EXPECT_EQ(lines(text, "+2", inLine3), Range(12, 3));
    EXPECT_EQ(lines(text, "-0", inLine3), Range(3, 3));
    EXPECT_EQ(lines(text, "-1", inLine3), Range(3, 3));
    EXPECT_EQ(lines(text, "-2", inLine3), Range(0, 3));
    EXPECT_EQ(lines(text, "+1-2", inLine3), Range(9, 6));
    EXPECT_EQ(lines(text, "-1-2", inLine3), Range(0, 6));
    EXPECT_TRUE(lines(text, "-1", {1, 0}).isNotFound());
    EXPECT_TRUE(lines(text, "+5", inLine3).isNotFound());
    // The reference for '+' is the last selected character, so a selection ending just
    // after a line break still counts from the line it ends.
    EXPECT_EQ(lines(text, "+0", {6, 3}), Range(6, 3));
    EXPECT_EQ(lines(text, "7", inLine3).location, NSNotFound);
}
