#include "platform/SpellChecker.h"

#include <gtest/gtest.h>

TEST(SpellChecker, FindsTheMisspeltWordsOfAPartOfAText)
{
    SpellChecker checker;
    ASSERT_TRUE(checker.setLanguage("en_US"));
    const QString text = "Teh cat's bowl, x86_64 and utf8 are left alone; wrods\u2014not.";
    EXPECT_EQ(checker.misspelledWords(text, 0, text.size()), (QList<Range>{{0, 3}, {48, 5}}));
    // Only the part asked for.
    EXPECT_EQ(checker.misspelledWords(text, 4, 47), QList<Range>());
    EXPECT_EQ(checker.misspelledWords(text, 40, 200), (QList<Range>{{48, 5}}));

    // No dictionary: nothing is misspelt.
    EXPECT_FALSE(checker.setLanguage("xx_NOWHERE"));
    EXPECT_FALSE(checker.hasDictionary());
    EXPECT_TRUE(checker.misspelledWords(text, 0, text.size()).isEmpty());
    EXPECT_TRUE(checker.setLanguage("en_US"));
    EXPECT_EQ(checker.misspelledWords("Teh", 0, 3).size(), 1);
}
