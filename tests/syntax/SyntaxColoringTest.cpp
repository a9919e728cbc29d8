#include "SyntaxTestSupport.h"

#include <gtest/gtest.h>

using namespace SyntaxTestSupport;

namespace {

QVariantMap keywordDefinition(bool caseInsensitive) {
    return {{"CharacterSet", Letters},
            {"CaseInsensitive", caseInsensitive},
            {"Keywords", words({"if", "int"})}};
}

} // namespace

// --- Words --------------------------------------------------------------------------

TEST(SyntaxColoringWords, CaseMattersOnlyWhenTheDefinitionSaysSo) {
    const QString text = QStringLiteral("if If iF IF");
    EXPECT_EQ(colour(keywordDefinition(false), text), "KK.........");
    EXPECT_EQ(colour(keywordDefinition(true), text), "KK.KK.KK.KK");
}

TEST(SyntaxColoringWords, AKeywordInsideALongerWordIsLeftAlone) {
    const QString text = QStringLiteral("print int_max (int) xint int");
    EXPECT_EQ(colour(keywordDefinition(false), text), "...............KKK.......KKK");
}

TEST(SyntaxColoringWords, WordsAtTheEdgesOfTheRangeDoNotLookOutsideIt) {
    // A letter stands just before and just after the range: only the range counts.
    const QString text = QStringLiteral("xintx");
    EXPECT_EQ(colour(keywordDefinition(false), text, Range(1, 3)), ".KKK.");
    EXPECT_EQ(colour(keywordDefinition(false), text), ".....");
}

TEST(SyntaxColoringWords, AnEmptyCharacterSetColoursNoWordsButPatternsAndBlocks) {
    const QVariantMap definition{{"CharacterSet", QString()},
                                 {"Keywords", words({"if"})},
                                 {"Numbers", QVariantList{pattern("[0-9]+")}},
                                 {"Comments", QVariantList{block("/*", "*/")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("if 12 /*if*/")), "...NN.CCCCCC");
}

TEST(SyntaxColoringWords, WithoutACharacterSetEveryOccurrenceCounts) {
    const QVariantMap definition{{"Keywords", words({"in"})}};
    EXPECT_EQ(colour(definition, QStringLiteral("print in")), "..KK..KK");
}

TEST(SyntaxColoringWords, AnOccurrenceGluedToAWordIsSteppedOverWhole) {
    // The occurrence at 1 is glued to the x; the walk goes on after it and never sees the
    // free-standing occurrence that overlaps it.
    const QVariantMap definition{{"CharacterSet", Letters}, {"Keywords", words({"a-a"})}};
    EXPECT_EQ(colour(definition, QStringLiteral("xa-a-a")), "......");
    EXPECT_EQ(colour(definition, QStringLiteral("a-a-a")), "KKKKK");
}

TEST(SyntaxColoringWords, WordsWithOtherCharactersStartWhereTheWordCharactersStart) {
    const QVariantMap definition{{"CharacterSet", Letters}, {"Keywords", words({"#if", " x"})}};
    // The walk starts at the first word character, after the "#".
    EXPECT_EQ(colour(definition, QStringLiteral("#if x")), ".....");
    EXPECT_EQ(colour(definition, QStringLiteral("a #if x")), "..KKK..");
}

TEST(SyntaxColoringWords, LaterWordListsWinAndDuplicatesDoNoHarm) {
    const QVariantMap definition{{"CharacterSet", Letters},
                                 {"Keywords", words({"nil", "nil"})},
                                 {"Values", words({"nil"})},
                                 {"Commands", words({"puts"})}};
    EXPECT_EQ(colour(definition, QStringLiteral("puts nil")), "XXXX.VVV");
}

TEST(SyntaxColoringWords, CaseInsensitiveMatchingFollowsUnicodeFolding) {
    // The long s folds to s but is no word character here: it still makes a match, once
    // the walk has begun (it begins at the first word character).
    const QVariantMap definition{{"CharacterSet", Letters},
                                 {"CaseInsensitive", true},
                                 {"Keywords", words({"static", "\xC3\xA9t\xC3\xA9"})}};
    EXPECT_EQ(colour(definition, QString::fromUtf8("\xC5\xBFtatic STATIC \xC3\x89T\xC3\x89")),
              ".......KKKKKK.KKK");
    EXPECT_EQ(colour(definition, QString::fromUtf8("x \xC5\xBFtatic")), "..KKKKKK");
}

// --- Patterns and painting order ----------------------------------------------------

TEST(SyntaxColoringOrder, TheCommentWinsOverAStringFromTheSlashesOn) {
    const QVariantMap definition{{"Strings", QVariantList{pattern("\"[^\"\\n]*\"")}},
                                 {"Comments", QVariantList{pattern("//.*$")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("s = \"http://x\";\nint")), "....SSSSSSCCCCC....");
}

TEST(SyntaxColoringOrder, LaterCategoriesPaintOverEarlierOnes) {
    const QVariantMap definition{{"CharacterSet", Letters},
                                 {"Blockwords", QVariantList{block("{", "}")}},
                                 {"Keywords", words({"if"})},
                                 {"Numbers", QVariantList{pattern("[0-9]+")}},
                                 {"Strings", QVariantList{pattern("\"[^\"]*\"")}},
                                 {"Characters", QVariantList{pattern("'.'")}},
                                 {"Preprocessor", QVariantList{pattern("^#.*$")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("{if 1 \"a 2 'b'\"}\n#if \"x\"")),
              "BKKBNBSSSSSHHHSB.PPPPPPP");
}

TEST(SyntaxColoringOrder, ADefinitionWithoutCommentsColoursEverythingElse) {
    const QVariantMap definition{{"CharacterSet", Letters},
                                 {"Keywords", words({"return"})},
                                 {"Numbers", QVariantList{pattern("[0-9]+")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("return 42; // 7")), "KKKKKK.NN.....N");
}

// --- Blocks -------------------------------------------------------------------------

TEST(SyntaxColoringBlocks, ABlockCommentOpenedAboveTheRangeIsColouredAfterAnEdit) {
    const QVariantMap definition{{"CharacterSet", Letters},
                                 {"Keywords", words({"int"})},
                                 {"Comments", QVariantList{block("/*", "*/")}}};
    QString text = QStringLiteral("int a;\n/* one\ntwo int\nthree */ int b;\n");
    SyntaxColoringEngine engine(definition);
    engine.coloringRange(text, Range(0, text.size()));

    // Type in the last two lines, which are all that is visible.
    const qsizetype visible = text.indexOf(QStringLiteral("two"));
    text.insert(visible, QStringLiteral("x"));
    engine.textDidChange(visible, 0, 1);
    const Range range(visible, text.size() - visible);
    const SyntaxColoring coloring = engine.coloringRange(text, range);
    EXPECT_EQ(picture(coloring.runsInRange(range), text.size()).substr(size_t(visible)),
              "CCCCCCCCCCCCCCCCC.KKK....");
    EXPECT_EQ(coloring.runs(),
              ReferenceColoring::runs(ReferenceColoring::color(definition, text, range)));
}

TEST(SyntaxColoringBlocks, BlocksOutsideTheRangeArePaintedAndNothingElseThere) {
    const QVariantMap definition{{"CharacterSet", Letters},
                                 {"Keywords", words({"int"})},
                                 {"Comments", QVariantList{block("/*", "*/")}}};
    const QString text = QStringLiteral("int /*a*/ int /*b*/");
    EXPECT_EQ(colour(definition, text, Range(10, 3)), "....CCCCC.KKK.CCCCC");
}

TEST(SyntaxColoringBlocks, TheEndIsSearchedFromTheStartOfTheBlock) {
    const QVariantMap definition{{"Comments", QVariantList{block("ab", "b")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("ab x b")), "CC....");
}

TEST(SyntaxColoringBlocks, BlocksMatchWithoutRegardToCase) {
    const QVariantMap definition{{"Comments", QVariantList{block("<!--", "-->")}},
                                 {"Blockwords", QVariantList{block("begin", "end")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("BEGIN x End <!--y-->")), "BBBBBBBBBBB.CCCCCCCC");
}

TEST(SyntaxColoringBlocks, AnUnterminatedBlockRunsToTheEndAndLaterEntriesStillCount) {
    const QVariantMap definition{{"Comments", QVariantList{block("/*", "*/"), block("#", "\n")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("# x\na /* b")), "CCCC..CCCC");
}

TEST(SyntaxColoringBlocks, ABlockWhoseEndStandsAtItsStartEndsTheCategoryBlockPass) {
    // "new"/"new" is what the definitions' editor makes for a new entry; the loop cannot
    // move past it, so the block is painted once and the later entry is not used.
    const QVariantMap definition{{"Comments", QVariantList{block("new", "new"), block("<", ">")}},
                                 {"Blockwords", QVariantList{block("(", ")")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("(a) new <b> new")), "BBB.CCC........");
}

// --- Error guards -------------------------------------------------------------------

TEST(SyntaxColoringGuards, ABrokenPatternIsPassedOver) {
    const QVariantMap definition{{"Numbers", QVariantList{pattern("([0-9"), pattern("[0-9]+")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("a 12")), "..NN");
}

TEST(SyntaxColoringGuards, AnEntryWithoutPatternEndsItsCategoryOnly) {
    const QVariantMap broken{{"regularExpression", true}};
    const QVariantMap definition{
        {"Strings", QVariantList{pattern("'[^']*'"), broken, pattern("\"[^\"]*\"")}},
        {"Numbers", QVariantList{pattern("[0-9]+")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("'a' \"b\" 1")), "SSS.....N");
}

TEST(SyntaxColoringGuards, AnEndlessPatternHitsTheTimeLimitAndEndsItsCategoryQuietly) {
    const QVariantMap definition{{"Numbers", QVariantList{pattern("(a+)+b"), pattern("[0-9]+")}},
                                 {"Strings", QVariantList{pattern("\"[^\"]*\"")}}};
    const QString text = QString(40, u'a') + QStringLiteral(" 7 \"s\"");
    EXPECT_EQ(colour(definition, text), std::string(43, '.') + "SSS");
    const SyntaxColoring coloring =
        SyntaxColoringEngine(definition).coloringRange(text, Range(0, text.size()));
    EXPECT_TRUE(coloring.wasInterrupted(SyntaxColoring::Numbers));
    EXPECT_FALSE(coloring.wasInterrupted(SyntaxColoring::Strings));
}

TEST(SyntaxColoringGuards, AWordListThatIsNoListEndsTheWholePass) {
    const QVariantMap definition{{"CharacterSet", Letters},
                                 {"Blockwords", QVariantList{block("{", "}")}},
                                 {"Keywords", QStringLiteral("if")},
                                 {"Numbers", QVariantList{pattern("[0-9]+")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("{1} if 2")), "BBB.....");
}

TEST(SyntaxColoringGuards, AWordThatIsNoStringIsSkipped) {
    const QVariantMap definition{{"CharacterSet", Letters},
                                 {"Keywords", QVariantList{42, QStringLiteral("if")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("42 if")), "...KK");
}

TEST(SyntaxColoringGuards, ABlockEntryMissingOneStringEndsTheBlockPass) {
    const QVariantMap onlyStart{{"startStr", QStringLiteral("<")}};
    const QVariantMap neither{{"comment", QStringLiteral("ignored")}};
    const QVariantMap definition{
        {"Comments", QVariantList{neither, block("(", ")"), onlyStart, block("[", "]")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("(a) <b> [c]")), "CCC........");
}

TEST(SyntaxColoringGuards, ACharacterSetThatIsNoStringColoursNothing) {
    const QVariantMap definition{{"CharacterSet", 7}, {"Comments", QVariantList{pattern("#.*")}}};
    EXPECT_EQ(colour(definition, QStringLiteral("# x")), "...");
}

// --- Ranges and removal -------------------------------------------------------------

TEST(SyntaxColoringRanges, AnEmptyRangeChangesNothing) {
    SyntaxColoringEngine engine(keywordDefinition(false));
    const SyntaxColoring coloring = engine.coloringRange(QStringLiteral("if"), Range(1, 0));
    EXPECT_EQ(coloring.range().length, 0);
    EXPECT_TRUE(coloring.runs().empty());
}

TEST(SyntaxColoringRanges, RemovingTheDefinitionRemovesEveryColour) {
    const QString text = QStringLiteral("if /* x */ int");
    SyntaxColoringEngine engine({{"CharacterSet", Letters},
                                 {"Keywords", words({"if", "int"})},
                                 {"Comments", QVariantList{block("/*", "*/")}}});
    EXPECT_EQ(picture(engine.coloringRange(text, Range(0, text.size())).runs(), text.size()),
              "KK.CCCCCCC.KKK");
    engine.setSyntaxDictionary({});
    const SyntaxColoring cleared = engine.coloringRange(text, Range(0, text.size()));
    EXPECT_EQ(cleared.range(), Range(0, text.size()));
    EXPECT_TRUE(cleared.runs().empty());
    const SyntaxColoring removal = SyntaxColoring::removingAllColors(text.size());
    EXPECT_EQ(removal.range(), Range(0, text.size()));
    EXPECT_TRUE(removal.runsInRange(Range(0, text.size())).empty());
}
