#include "editor/WordCompletion.h"

#include "platform/StringTextSource.h"

#include <gtest/gtest.h>

namespace {

Range partialWord(const QString& text, qsizetype caret)
{
    StringTextSource source(text);
    return WordCompletion::partialWordRange(source, {caret, 0});
}

} // namespace

TEST(WordCompletionTest, ThePartialWordAndTheAcceptingEditComeFromTheTextAlone)
{
    EXPECT_EQ(partialWord(QStringLiteral("int foo_ba"), 10), Range(4, 6));
    EXPECT_EQ(partialWord(QStringLiteral("int foo_ba"), 6), Range(4, 2));
    // Nothing before the caret is a word character: a space, a line break, the start.
    EXPECT_TRUE(partialWord(QStringLiteral("int "), 4).isNotFound());
    EXPECT_TRUE(partialWord(QStringLiteral("ab\ncd"), 3).isNotFound());
    EXPECT_TRUE(partialWord(QString(), 0).isNotFound());
    EXPECT_EQ(partialWord(QStringLiteral("ab\ncd"), 5), Range(3, 2));
    // A combining mark belongs to its letter.
    EXPECT_EQ(partialWord(QStringLiteral("x cafe\u0301"), 7), Range(2, 5));
    // A word longer than one look back is found whole.
    const QString longWord = QStringLiteral("(") + QString(300, u'w');
    EXPECT_EQ(partialWord(longWord, longWord.size()), Range(1, 300));

    StringTextSource text(u"x = al");
    const Range typed(4, 2);
    // The missing rest only, so that the typed letters keep their undo step.
    EXPECT_EQ(WordCompletion::acceptEdit(text, typed, QStringLiteral("alpha")),
              TextEdit({Range(6, 0), QStringLiteral("pha"), Range(9, 0)}));
    // Another case than typed: the whole word replaces it.
    EXPECT_EQ(WordCompletion::acceptEdit(text, typed, QStringLiteral("Alpha")),
              TextEdit({typed, QStringLiteral("Alpha"), Range(9, 0)}));
    EXPECT_EQ(WordCompletion::acceptEdit(text, typed, QStringLiteral("al")), std::nullopt);
}
