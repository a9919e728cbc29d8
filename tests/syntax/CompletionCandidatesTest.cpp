#include "syntax/CompletionCandidates.h"

#include "platform/Regex.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// The candidates as the word pattern finds them through the regular-expression engine:
// the reference the scanner in use must agree with.
QStringList referenceCandidates(QStringView text, const QString& partialWord)
{
    static const Regex pattern(QStringLiteral("([a-z|A-Z|_].*?)[\\W|\\s|\\)]"),
                               Regex::CaseInsensitive | Regex::AnchorsMatchLines);
    QStringList words;
    pattern.forEachMatch(text, [&](const Regex::Match& match) {
        const QString word = text.mid(match.groups[1].location, match.groups[1].length).toString();
        if (word.size() > partialWord.size() &&
            word.first(partialWord.size()).compare(partialWord, Qt::CaseInsensitive) == 0 &&
            !words.contains(word)) {
            words.append(word);
        }
        return true;
    });
    std::stable_sort(words.begin(), words.end(), [](const QString& a, const QString& b) {
        return a.compare(b, Qt::CaseInsensitive) < 0;
    });
    return words;
}

} // namespace

TEST(CompletionCandidates, CandidatesFromTheTextAndTheDefinition)
{
    const QString text = QStringLiteral("print printf Print pr x\n");
    const QVariantMap definition = {{QStringLiteral("Name"), QStringLiteral("C")}};
    QStringList words = CompletionCandidates::completionsForPartialWord(
        text, QStringLiteral("pr"), definition, {"private", "pr", "int", "print"});
    // The text's "pr" is no longer than the partial word; the definition's is offered.
    EXPECT_EQ(words, QStringList({"pr", "print", "Print", "printf", "private"}));
    words =
        CompletionCandidates::completionsForPartialWord(text, QStringLiteral("PR"), definition, {});
    EXPECT_EQ(words, QStringList({"print", "Print", "printf"}));
    // A word with nothing after it is not found by the text's pattern.
    EXPECT_TRUE(CompletionCandidates::completionsForPartialWord(u"pro", QStringLiteral("pr"),
                                                                definition, {})
                    .isEmpty());
    EXPECT_TRUE(CompletionCandidates::completionsForPartialWord(text, QString(), definition, {"pr"})
                    .isEmpty());

    // Plain text, or no definition: the text's words beginning with the partial word.
    const QVariantMap plain = {{QStringLiteral("Name"), QStringLiteral("Plain Text")}};
    EXPECT_EQ(CompletionCandidates::completionsForPartialWord(u"pro prom pr", QStringLiteral("pr"),
                                                              plain, {"private"}),
              QStringList({"pro", "prom"}));
    EXPECT_EQ(
        CompletionCandidates::completionsForPartialWord(u"été étage", QStringLiteral("ét"), {}, {}),
        QStringList({"étage", "été"}));
}

TEST(CompletionCandidates, TextWordsAgreeWithTheWordPatternOnAnyText)
{
    // Letters that start words and those that only continue them, "|" (both a start and an
    // end), the letters that match "a-z" only ignoring case (long s, Kelvin sign), marks,
    // digits of other scripts, letters outside the BMP, symbols, line breaks of every kind, a
    // lone surrogate.
    const QList<QString> pieces = {
        "a",      "B",      "s",      "k",      "_",          "|",          ")",
        "(",      " ",      "\t",     "\n",     "\r",         "0",          "9",
        "-",      ".",      "\u00e9", "\u017f", "\u212a",     "\u0301",     "\u0345",
        "\u00b2", "\u00aa", "\u0660", "\u203f", "\u200c",     "\u00a0",     "\u2028",
        "\u2029", "\u0085", "\u24b6", "\u216b", "\U0001d400", "\U0001f600", QString(QChar(0xd800)),
        "ab",     "Sk",     "x_1"};
    const QVariantMap definition = {{QStringLiteral("Name"), QStringLiteral("C")}};
    const QStringList prefixes = {"a", "S", "k", "_", "|", "b", "\u017f", "\u212a", "ab"};
    QRandomGenerator random(7);
    for (int round = 0; round < 400; ++round) {
        QString text;
        const int count = random.bounded(1, 60);
        for (int i = 0; i < count; ++i) {
            text += pieces[random.bounded(pieces.size())];
        }
        for (const QString& prefix : prefixes) {
            ASSERT_EQ(CompletionCandidates::completionsForPartialWord(text, prefix, definition, {}),
                      referenceCandidates(text, prefix))
                << "text \"" << text.toStdString() << "\", prefix " << prefix.toStdString();
        }
    }
}
