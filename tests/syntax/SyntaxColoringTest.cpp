// What one colouring pass paints, case by case. Each case is also checked against the
// step-by-step model (colour() does both), so a case pins the model down as well.
#include "SyntaxTestSupport.h"

#include <gtest/gtest.h>

using namespace SyntaxTestSupport;

namespace {

struct Case {
    const char* behaviour;
    QVariantMap definition;
    QString text;
    std::string expected;
    Range range = Range::notFound(); // the whole text
};

void expectCases(const std::vector<Case>& cases)
{
    for (const Case& c : cases) {
        const Range range = c.range.isNotFound() ? Range(0, c.text.size()) : c.range;
        EXPECT_EQ(colour(c.definition, c.text, range), c.expected) << c.behaviour;
    }
}

QVariantMap keywords(std::initializer_list<const char*> list, bool caseInsensitive = false)
{
    return {
        {"CharacterSet", Letters}, {"CaseInsensitive", caseInsensitive}, {"Keywords", words(list)}};
}

const QVariantMap Broken{{"regularExpression", true}};
const QVariantMap OnlyStart{{"startStr", QStringLiteral("<")}};
const QVariantMap Neither{{"comment", QStringLiteral("ignored")}};

} // namespace

TEST(SyntaxColoring, WordsAreColouredWhereTheyStandAlone)
{
    const QString longS = QString::fromUtf8("\xC5\xBF");
    expectCases({
        {"case respected", keywords({"if"}), "if If iF IF", "KK........."},
        {"case ignored", keywords({"if"}, true), "if If iF IF", "KK.KK.KK.KK"},
        {"inside longer words", keywords({"int"}), "print int_max (int) xint int",
         "...............KKK.......KKK"},
        {"range edges look no further", keywords({"int"}), "xintx", ".KKK.", Range(1, 3)},
        {"an empty range colours nothing", keywords({"if"}), "if", "..", Range(1, 0)},
        {"a whole-text word needs its neighbours", keywords({"int"}), "xintx", "....."},
        {"empty character set: no words, still patterns and blocks",
         {{"CharacterSet", QString()},
          {"Keywords", words({"if"})},
          {"Numbers", QVariantList{pattern("[0-9]+")}},
          {"Comments", QVariantList{block("/*", "*/")}}},
         "if 12 /*if*/",
         "...NN.CCCCCC"},
        {"no character set: every occurrence",
         {{"Keywords", words({"in"})}},
         "print in",
         "..KK..KK"},
        {"a glued occurrence is stepped over whole", keywords({"a-a"}), "xa-a-a", "......"},
        {"overlapping free occurrences", keywords({"a-a"}), "a-a-a", "KKKKK"},
        {"the walk starts at the first word character", keywords({"#if"}), "#if x", "....."},
        {"non-word characters inside words", keywords({"#if"}), "a #if x", "..KKK.."},
        {"a word starting with white space is never found", keywords({" x"}), "a x", "..."},
        {"later lists win, duplicates do no harm",
         {{"CharacterSet", Letters},
          {"Keywords", words({"nil", "nil"})},
          {"Values", words({"nil"})},
          {"Commands", words({"puts"})}},
         "puts nil",
         "XXXX.VVV"},
        {"Unicode folding: long s and accents", keywords({"static", "\xC3\xA9t\xC3\xA9"}, true),
         "x " + longS + "tatic STATIC " + QString::fromUtf8("\xC3\x89T\xC3\x89"),
         "..KKKKKK.KKKKKK.KKK"},
        {"no walk before the first word character", keywords({"static"}, true), longS + "tatic",
         "......"},
    });
}

TEST(SyntaxColoring, LaterCategoriesPaintOverEarlierOnes)
{
    expectCases({
        {"a comment inside a string wins from the slashes on",
         {{"Strings", QVariantList{pattern("\"[^\"\\n]*\"")}},
          {"Comments", QVariantList{pattern("//.*$")}}},
         "s = \"http://x\";\nint",
         "....SSSSSSCCCCC...."},
        {"blocks, words, numbers, strings, characters, preprocessor",
         {{"CharacterSet", Letters},
          {"Blockwords", QVariantList{block("{", "}")}},
          {"Keywords", words({"if"})},
          {"Numbers", QVariantList{pattern("[0-9]+")}},
          {"Strings", QVariantList{pattern("\"[^\"]*\"")}},
          {"Characters", QVariantList{pattern("'.'")}},
          {"Preprocessor", QVariantList{pattern("^#.*$")}}},
         "{if 1 \"a 2 'b'\"}\n#if \"x\"",
         "BKKBNBSSSSSHHHSB.PPPPPPP"},
        {"no comments: everything else still coloured",
         {{"CharacterSet", Letters},
          {"Keywords", words({"return"})},
          {"Numbers", QVariantList{pattern("[0-9]+")}}},
         "return 42; // 7",
         "KKKKKK.NN.....N"},
    });
}

TEST(SyntaxColoring, BlocksRunOverTheWholeText)
{
    const QVariantMap comments{{"CharacterSet", Letters},
                               {"Keywords", words({"int"})},
                               {"Comments", QVariantList{block("/*", "*/")}}};
    expectCases({
        {"outside the range only blocks are painted", comments, "int /*a*/ int /*b*/",
         "....CCCCC.KKK.CCCCC", Range(10, 3)},
        {"the end is searched from the block's start",
         {{"Comments", QVariantList{block("ab", "b")}}},
         "ab x b",
         "CC...."},
        {"case is ignored",
         {{"Comments", QVariantList{block("<!--", "-->")}},
          {"Blockwords", QVariantList{block("begin", "end")}}},
         "BEGIN x End <!--y-->",
         "BBBBBBBBBBB.CCCCCCCC"},
        {"an unterminated block runs to the end; later entries still count",
         {{"Comments", QVariantList{block("/*", "*/"), block("#", "\n")}}},
         "# x\na /* b",
         "CCCC..CCCC"},
        // "new"/"new" is what the definitions' editor makes for a new entry: the loop could
        // never move past it.
        {"a block ending where it starts is painted once and ends the category's blocks",
         {{"Comments", QVariantList{block("new", "new"), block("<", ">")}},
          {"Blockwords", QVariantList{block("(", ")")}}},
         "(a) new <b> new",
         "BBB.CCC........"},
    });
}

TEST(SyntaxColoring, AFailingEntryEndsItsOwnPassQuietly)
{
    const QVariantMap numbers{{"Numbers", QVariantList{pattern("[0-9]+")}}};
    expectCases({
        {"a pattern that does not compile is passed over",
         {{"Numbers", QVariantList{pattern("([0-9"), pattern("[0-9]+")}}},
         "a 12",
         "..NN"},
        {"an entry without a pattern ends its category only",
         {{"Strings", QVariantList{pattern("'[^']*'"), Broken, pattern("\"[^\"]*\"")}},
          {"Numbers", QVariantList{pattern("[0-9]+")}}},
         "'a' \"b\" 1",
         "SSS.....N"},
        {"a word list that is no list ends the whole pass",
         {{"CharacterSet", Letters},
          {"Blockwords", QVariantList{block("{", "}")}},
          {"Keywords", QStringLiteral("if")},
          {"Numbers", QVariantList{pattern("[0-9]+")}}},
         "{1} if 2",
         "BBB....."},
        {"a word that is no string is skipped",
         {{"CharacterSet", Letters}, {"Keywords", QVariantList{42, QStringLiteral("if")}}},
         "42 if",
         "...KK"},
        {"a block entry missing one string ends the block pass",
         {{"Comments", QVariantList{Neither, block("(", ")"), OnlyStart, block("[", "]")}}},
         "(a) <b> [c]",
         "CCC........"},
        {"a character set that is no string colours nothing",
         {{"CharacterSet", 7}, {"Comments", QVariantList{pattern("#.*")}}},
         "# x",
         "..."},
    });
}

TEST(SyntaxColoring, AnEndlessPatternHitsTheTimeLimitAndEndsItsCategoryQuietly)
{
    const QVariantMap definition{{"Numbers", QVariantList{pattern("(a+)+b"), pattern("[0-9]+")}},
                                 {"Strings", QVariantList{pattern("\"[^\"]*\"")}}};
    const QString text = QString(40, u'a') + QStringLiteral(" 7 \"s\"");
    EXPECT_EQ(colour(definition, text), std::string(43, '.') + "SSS");
    const SyntaxColoring coloring =
        SyntaxColoringEngine(definition).coloringRange(text, Range(0, text.size()));
    EXPECT_TRUE(coloring.wasInterrupted(SyntaxColoring::Numbers));
    EXPECT_FALSE(coloring.wasInterrupted(SyntaxColoring::Strings));
}

TEST(SyntaxColoring, RemovingTheDefinitionRemovesEveryColour)
{
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
