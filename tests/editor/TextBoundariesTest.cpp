#include "editor/TextBoundaries.h"

#include "document/TextBuilder.h"

#include <gtest/gtest.h>

TEST(TextBoundaries, CharacterAndWordStopsKeepClustersWhole)
{
    using Stop = Range (*)(const TextSnapshot&, qsizetype);
    const Stop next = [](const TextSnapshot& t, qsizetype p) {
        return Range(TextBoundaries::nextCharacter(t, p), 0);
    };
    const Stop previous = [](const TextSnapshot& t, qsizetype p) {
        return Range(TextBoundaries::previousCharacter(t, p), 0);
    };
    const Stop nextWord = [](const TextSnapshot& t, qsizetype p) {
        return Range(TextBoundaries::nextWord(t, p), 0);
    };
    const Stop previousWord = [](const TextSnapshot& t, qsizetype p) {
        return Range(TextBoundaries::previousWord(t, p), 0);
    };
    const Stop word = TextBoundaries::wordRange;
    const Stop line = TextBoundaries::lineRange;
    const struct {
        const char* name;
        QString text;
        Stop stop;
        qsizetype position;
        Range expected; // a position is (position, 0)
    } cases[] = {
        {"a letter with a combining accent", u"e\u0301x"_qs, next, 0, {2, 0}},
        {"back over it", u"e\u0301x"_qs, previous, 2, {0, 0}},
        {"a surrogate pair", u"a😀b"_qs, next, 1, {3, 0}},
        {"an emoji with its skin tone", u"👍🏽!"_qs, next, 0, {4, 0}},
        {"a line feed is a character", u"ab\ncd"_qs, next, 2, {3, 0}},
        {"next word: past letters", u"foo.bar  baz"_qs, nextWord, 0, {3, 0}},
        {"next word: past a dot", u"foo.bar  baz"_qs, nextWord, 3, {4, 0}},
        {"next word: past the blanks after a word", u"foo.bar  baz"_qs, nextWord, 4, {9, 0}},
        {"previous word: this word's start", u"foo.bar  baz"_qs, previousWord, 12, {9, 0}},
        {"previous word: over blanks", u"foo.bar  baz"_qs, previousWord, 9, {4, 0}},
        {"previous word at a line start", u"ab\ncd"_qs, previousWord, 3, {2, 0}},
        {"a word", u"foo.bar  baz"_qs, word, 5, {4, 3}},
        {"just past a word", u"foo.bar  baz"_qs, word, 7, {4, 3}},
        {"between blanks", u"foo.bar  baz"_qs, word, 8, {7, 2}},
        {"a line and its line feed", u"ab\ncd"_qs, line, 1, {0, 3}},
        {"the last line", u"ab\ncd"_qs, line, 4, {3, 2}},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        TextBuilder builder;
        builder.append(test.text);
        EXPECT_EQ(test.stop(builder.finish(), test.position), test.expected);
    }
}
