#include "SyntaxTestSupport.h"
#include "platform/ColorArchive.h"
#include "platform/UserDefaults.h"
#include "syntax/FunctionMenu.h"
#include "syntax/SyntaxManager.h"

#include <gtest/gtest.h>

namespace {

QVariantMap functionEntry(const QString& pattern, QVariantMap extra = {})
{
    extra.insert(QStringLiteral("regexPattern"), pattern);
    return extra;
}

QVariantMap definitionWith(const QVariantList& entries)
{
    return {{QStringLiteral("FunctionDefinition"), entries}};
}

QStringList titles(const FunctionMenu& menu)
{
    QStringList result;
    for (const FunctionMenu::Item& item : menu.items()) {
        result.append(item.isSeparator ? QStringLiteral("---") : item.title);
    }
    return result;
}

const QString Python = QStringLiteral("class Shape:\n"
                                      "    def area(self):\n"
                                      "        pass\n"
                                      "def main():\n"
                                      "    pass\n");

} // namespace

TEST(FunctionDefinitions, ACaptureGroupListsTheBareNameWithTheEntrysAttributes)
{
    SyntaxManager manager;
    const auto items = manager.makeFunctionDefinitionWithString(
        Python, definitionWith({functionEntry(
                    "^\\s*def\\s+(\\w+)",
                    {{"BoldType", true}, {"KeyType", "Function"}, {"IndentationLevel", "1"}})}));
    ASSERT_TRUE(items);
    ASSERT_EQ(items->size(), 2);
    const QVariantMap first = items->at(0).toMap();
    EXPECT_EQ(first.value("RangeString").toString(), "{21, 4}");
    EXPECT_EQ(first.value("RangeLocation").toLongLong(), 21);
    EXPECT_EQ(first.value("BoldType"), QVariant(true));
    EXPECT_EQ(first.value("KeyType"), QVariant("Function"));
    EXPECT_EQ(first.value("IndentationLevel"), QVariant("1"));

    const FunctionMenu menu(items, Python);
    EXPECT_EQ(titles(menu), QStringList({"No Symbol selected", "---", "area", "main"}));
    EXPECT_TRUE(menu.items()[2].bold);
    EXPECT_EQ(menu.items()[2].indentationLevel, 1);
    EXPECT_EQ(menu.items()[2].kind, FunctionMenu::Kind::Function);
}

TEST(FunctionDefinitions, AllMatchingTakesTheWholeMatchAndItemsAreSortedByPosition)
{
    SyntaxManager manager;
    const auto items = manager.makeFunctionDefinitionWithString(
        Python, definitionWith({functionEntry("^def\\s+\\w+"),
                                functionEntry("^class\\s+\\w+", {{"AllMatching", true}})}));
    // Without "AllMatching" the item is group 1, which the first pattern lacks: the build fails.
    EXPECT_FALSE(items);

    const auto sorted = manager.makeFunctionDefinitionWithString(
        Python, definitionWith({functionEntry("^def\\s+\\w+", {{"AllMatching", true}}),
                                functionEntry("^class\\s+\\w+", {{"AllMatching", true}})}));
    ASSERT_TRUE(sorted);
    EXPECT_EQ(titles(FunctionMenu(sorted, Python)),
              QStringList({"No Symbol selected", "---", "class Shape", "def main"}));
    // Without a "KeyType" the item carries neither kind nor indentation.
    EXPECT_EQ(sorted->at(0).toMap().keys(),
              QStringList({"BoldType", "RangeLocation", "RangeString"}));
    EXPECT_FALSE(FunctionMenu(sorted, Python).items()[2].hasKind);
}

TEST(FunctionDefinitions, TwoEntriesMatchingAtOnePlaceAreBothListedInEntryOrder)
{
    SyntaxManager manager;
    const auto items = manager.makeFunctionDefinitionWithString(
        Python, definitionWith({functionEntry("^def (main)", {{"KeyType", "Function"}}),
                                functionEntry("^def (\\w+)", {{"KeyType", "Method"}})}));
    ASSERT_TRUE(items);
    const FunctionMenu menu(items, Python);
    ASSERT_EQ(titles(menu), QStringList({"No Symbol selected", "---", "main", "main"}));
    EXPECT_EQ(menu.items()[2].kind, FunctionMenu::Kind::Function);
    EXPECT_EQ(menu.items()[3].kind, FunctionMenu::Kind::Method);
}

TEST(FunctionDefinitions, LetterCaseIsIgnoredEvenWhenTheWordsRespectIt)
{
    SyntaxManager manager;
    QVariantMap definition = definitionWith({functionEntry("^DEF (\\w+)")});
    definition.insert("CaseInsensitive", false);
    const auto items = manager.makeFunctionDefinitionWithString(Python, definition);
    ASSERT_TRUE(items);
    EXPECT_EQ(items->size(), 1);
}

TEST(FunctionDefinitions, NothingToLookForOrAFailingEntryGivesNoList)
{
    SyntaxManager manager;
    EXPECT_FALSE(manager.makeFunctionDefinitionWithString(Python, {}));
    EXPECT_FALSE(manager.makeFunctionDefinitionWithString(
        Python, definitionWith({QVariantMap{{"KeyType", "Function"}}})));
    EXPECT_FALSE(manager.makeFunctionDefinitionWithString(Python, definitionWith({"^def"})));
    // A pattern that does not compile finds nothing; the others still count.
    const auto items = manager.makeFunctionDefinitionWithString(
        Python, definitionWith({functionEntry("(def"), functionEntry("^def (\\w+)")}));
    ASSERT_TRUE(items);
    EXPECT_EQ(items->size(), 1);
    // The guard is cleared on the way out of a failed build.
    EXPECT_FALSE(manager.isFunctionLoop());
    EXPECT_EQ(titles(FunctionMenu(std::nullopt, Python)), QStringList({"No Symbol selected"}));
    EXPECT_EQ(titles(FunctionMenu(QVariantList(), Python)), QStringList({"No Symbol selected"}));
}

// --- The pop-up's items -------------------------------------------------------------

TEST(FunctionMenu, ADashBecomesASeparatorLine)
{
    SyntaxManager manager;
    const QString text = QStringLiteral("#pragma mark -\nint f(void)\n#pragma mark Tools\n");
    const auto items = manager.makeFunctionDefinitionWithString(
        text, definitionWith({functionEntry("^#pragma mark (.*)$")}));
    EXPECT_EQ(titles(FunctionMenu(items, text)),
              QStringList({"No Symbol selected", "---", "---", "Tools"}));
}

TEST(FunctionMenu, ReopeningKeepsTheFirstItemWithThePreviousTitleSelected)
{
    SyntaxManager manager;
    const QString text = QStringLiteral("def a():\ndef b():\ndef b():\n");
    const auto items = manager.makeFunctionDefinitionWithString(
        text, definitionWith({functionEntry("^def (\\w+)")}));
    EXPECT_EQ(FunctionMenu(items, text, "b").selectedIndex(), 3);
    EXPECT_EQ(FunctionMenu(items, text, "gone").selectedIndex(), 0);
    EXPECT_EQ(FunctionMenu(items, text).selectedIndex(), 0);
}

TEST(FunctionMenu, ADefinitionBeyondTheChangedTextEndsTheList)
{
    const QVariantList items{QVariantMap{{"RangeString", "{0, 3}"}, {"RangeLocation", 0}},
                             QVariantMap{{"RangeString", "{20, 3}"}, {"RangeLocation", 20}},
                             QVariantMap{{"RangeString", "{4, 3}"}, {"RangeLocation", 4}}};
    EXPECT_EQ(titles(FunctionMenu(items, QStringLiteral("one two"))),
              QStringList({"No Symbol selected", "---", "one"}));
}

TEST(FunctionMenu, ChoosingADefinitionSelectsItsWholeLines)
{
    const QString text = QStringLiteral("first\nint main(void)\n{\n}\nlast");
    FunctionMenu::Item item;
    item.title = QStringLiteral("main");
    item.rangeString = NSStringFromRange(Range(10, 4));
    EXPECT_EQ(FunctionMenu::rangeToSelect(item, text), Range(6, 15));
    // A range over three lines, the last ending at the text's end without a line break.
    EXPECT_EQ(FunctionMenu::lineRangeForRange(text, Range(22, 4)), Range(21, 8));
    // A range that ends with a line break takes no further line.
    EXPECT_EQ(FunctionMenu::lineRangeForRange(text, Range(0, 6)), Range(0, 6));
    EXPECT_EQ(FunctionMenu::lineRangeForRange(text, Range(text.size(), 0)), Range(25, 4));
    EXPECT_TRUE(FunctionMenu::rangeToSelect(FunctionMenu::Item{}, text).isNotFound());
}

TEST(FunctionMenu, IndentationIsTheLevelsIntegerValue)
{
    const QString text = QStringLiteral("abcdef");
    auto level = [&](const QVariant& value) {
        const QVariantList items{QVariantMap{
            {"RangeString", "{0, 1}"}, {"KeyType", "Function"}, {"IndentationLevel", value}}};
        return FunctionMenu(items, text).items()[2].indentationLevel;
    };
    EXPECT_EQ(level(2), 2);
    EXPECT_EQ(level("3"), 3);
    EXPECT_EQ(level(" 4 levels"), 4);
    EXPECT_EQ(level("deep"), 0);
    EXPECT_EQ(level(QVariant()), 0);
}

TEST(FunctionMenu, KindsNameTheirImagesAndUnknownKindsShowNone)
{
    ASSERT_EQ(FunctionMenu::kindNames().size(), 11);
    EXPECT_EQ(FunctionMenu::kindForName("None"), FunctionMenu::Kind::None);
    EXPECT_EQ(FunctionMenu::kindForName("Constant"), FunctionMenu::Kind::Constant);
    EXPECT_EQ(FunctionMenu::kindForName("Category"), FunctionMenu::Kind::Category);
    EXPECT_EQ(FunctionMenu::kindForName("class"), FunctionMenu::Kind::Unknown);
}

// --- The manager --------------------------------------------------------------------

TEST(SyntaxManager, ColoursAreReadFromTheSettingsAndAgainOnRequest)
{
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    defaults.setObject(ColorArchive::archivedData(QColor(255, 0, 0)), "KeywordsColor");
    defaults.setObject(ColorArchive::archivedData(QColor(0, 128, 0)), "CommentsColor");
    SyntaxManager manager;
    EXPECT_EQ(manager.keywordsColor(), QColor(255, 0, 0));
    EXPECT_EQ(manager.colorForCategory(SyntaxColoring::Comments), QColor(0, 128, 0));

    defaults.setObject(ColorArchive::archivedData(QColor(0, 0, 255)), "KeywordsColor");
    EXPECT_EQ(manager.keywordsColor(), QColor(255, 0, 0));
    manager.updatePreferences();
    EXPECT_EQ(manager.keywordsColor(), QColor(0, 0, 255));
    EXPECT_EQ(&SyntaxManager::sharedSyntaxManager(), &SyntaxManager::sharedSyntaxManager());
}

TEST(SyntaxManager, ColouringAnEmptyRangeDoesNothing)
{
    SyntaxManager manager;
    SyntaxColoringEngine engine({{"Comments", QVariantList{SyntaxTestSupport::pattern("#.*")}}});
    const QString text = QStringLiteral("# x");
    EXPECT_FALSE(manager.syntaxColoringRange(Range(1, 0), text, engine));
    const auto coloring = manager.syntaxColoringRange(Range(0, 3), text, engine);
    ASSERT_TRUE(coloring);
    EXPECT_EQ(coloring->runs().size(), 1u);
    EXPECT_FALSE(manager.isEndlessLoop());
}
