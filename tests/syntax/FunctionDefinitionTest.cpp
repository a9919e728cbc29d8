#include "SyntaxTestSupport.h"
#include "document/TextSnapshot.h"
#include "platform/StringTextSource.h"
#include "syntax/FunctionDefinitionIndex.h"
#include "syntax/FunctionMenu.h"
#include "syntax/SyntaxManager.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <optional>

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

TEST(FunctionDefinitions, EntriesListTheirMatchesInTextOrderOrFailTheBuild)
{
    const QString marks = QStringLiteral("#pragma mark -\nint f(void)\n#pragma mark Tools\n");
    const struct {
        const char* what;
        QVariantMap definition;
        std::optional<QStringList> titles; // below "No Symbol selected" and its separator
        const QString& text = Python;
    } cases[] = {
        {"without \"AllMatching\" an entry needs group 1",
         definitionWith({functionEntry("^def\\s+\\w+"),
                         functionEntry("^class\\s+\\w+", {{"AllMatching", true}})}),
         std::nullopt},
        {"\"AllMatching\" takes the whole match; items sorted by position",
         definitionWith({functionEntry("^def\\s+\\w+", {{"AllMatching", true}}),
                         functionEntry("^class\\s+\\w+", {{"AllMatching", true}})}),
         QStringList({"class Shape", "def main"})},
        {"two entries matching at one place are listed in entry order",
         definitionWith({functionEntry("^(def) main"), functionEntry("^(d)ef")}),
         QStringList({"def", "d"})},
        {"letter case is ignored even when the words respect it",
         QVariantMap{{"FunctionDefinition", QVariantList{functionEntry("^DEF (\\w+)")}},
                     {"CaseInsensitive", false}},
         QStringList({"main"})},
        {"nothing to look for", {}, std::nullopt},
        {"an entry without a pattern", definitionWith({QVariantMap{{"KeyType", "Function"}}}),
         std::nullopt},
        {"an entry that is not a dictionary", definitionWith({"^def"}), std::nullopt},
        {"a pattern that does not compile finds nothing; the others still count",
         definitionWith({functionEntry("(def"), functionEntry("^def (\\w+)")}),
         QStringList({"main"})},
        {"a dash becomes a separator line", definitionWith({functionEntry("^#pragma mark (.*)$")}),
         QStringList({"---", "Tools"}), marks},
    };
    SyntaxManager manager;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const auto items = manager.makeFunctionDefinitionWithString(c.text, c.definition);
        ASSERT_EQ(items.has_value(), c.titles.has_value());
        // The guard is cleared on the way out of a failed build too.
        EXPECT_FALSE(manager.isFunctionLoop());
        if (items) {
            EXPECT_EQ(titles(FunctionMenu(items, c.text)),
                      QStringList({"No Symbol selected", "---"}) + *c.titles);
        }
    }
    // Without a "KeyType" an item carries neither kind nor indentation.
    const auto plain = manager.makeFunctionDefinitionWithString(
        Python, definitionWith({functionEntry("^class\\s+\\w+", {{"AllMatching", true}})}));
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->at(0).toMap().keys(),
              QStringList({"BoldType", "RangeLocation", "RangeString"}));
    EXPECT_FALSE(FunctionMenu(plain, Python).items()[2].hasKind);
    EXPECT_EQ(titles(FunctionMenu(std::nullopt, Python)), QStringList({"No Symbol selected"}));
    EXPECT_EQ(titles(FunctionMenu(QVariantList(), Python)), QStringList({"No Symbol selected"}));
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
    // The lines come from the text's line counts, as a document's copy keeps them.
    const QString text = QStringLiteral("first\nint main(void)\n{\n}\nlast");
    const TextSnapshot lines(TextTree::fromText(text));
    FunctionMenu::Item item;
    item.title = QStringLiteral("main");
    item.rangeString = NSStringFromRange(Range(10, 4));
    EXPECT_EQ(FunctionMenu::rangeToSelect(item, lines), Range(6, 15));
    // A range over three lines, the last ending at the text's end without a line break.
    EXPECT_EQ(FunctionMenu::lineRangeForRange(lines, Range(22, 4)), Range(21, 8));
    // A range that ends with a line break takes no further line.
    EXPECT_EQ(FunctionMenu::lineRangeForRange(lines, Range(0, 6)), Range(0, 6));
    EXPECT_EQ(FunctionMenu::lineRangeForRange(lines, Range(text.size(), 0)), Range(25, 4));
    EXPECT_EQ(FunctionMenu::lineRangeForRange(lines, Range(5, 1)), Range(0, 6));
    EXPECT_EQ(FunctionMenu::lineRangeForRange(lines, Range(6, 0)), Range(6, 15));
    EXPECT_TRUE(FunctionMenu::rangeToSelect(FunctionMenu::Item{}, lines).isNotFound());
}

TEST(FunctionDefinitions, PatternsWithinLinesAreToldApart)
{
    const struct {
        const char* pattern;
        bool withinLines;
    } cases[] = {
        {"^[ \\t]*#[ \\t]*define[ \\t]+([A-Za-z_][A-Za-z0-9_]*+)", true},
        {"^(?:[A-Za-z_][A-Za-z0-9_]*+[ \\t\\*]++)+([A-Za-z_][A-Za-z0-9_]*+)[ \\t]*\\((?![^\\n]*;)",
         true},
        {"^[ \\t]*([^\\s{}@/;][^{};\\n]*?)[ \\t]*\\{", true},
        {"^class[ \\t]+(?:[^=\\n]*=>)?((?-i:[A-Z])[\\w']*+)", true},
        {"^\\s*def\\s+(\\w+)", false},     // \s takes in line breaks
        {"<title[^>]*>([^<\\n]+)", false}, // [^>] too
        {"a.b", true},                     // "." stops at a line break
        {"(?s)a.b", false},
        {"(?x)a b", false},
        {"a\\nb", false},
        {"[\\x00-\\x7f]+", false},
        {"[\\t-\\r]", false},
        {"\\Qa\\E", false},
        {"\\p{L}+", false},
        {"[[a-z]&&[^b]]", false},
        {"\\W+", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(FunctionDefinitionIndex::matchesWithinLines(QString::fromUtf8(c.pattern)),
                  c.withinLines)
            << c.pattern;
    }
}

TEST(FunctionDefinitions, IndexFollowsEditsAsASearchOfTheWholeTextWould)
{
    // Read in chunks (C, Python) and whole (HTML, whose tags may span lines), a group that
    // takes no part, an entry without group 1, edits at random.
    const QList<QVariantMap> definitions = {
        SyntaxTestSupport::shipped("C"), SyntaxTestSupport::shipped("Python"),
        SyntaxTestSupport::shipped("HTML"),
        definitionWith({functionEntry("^(x)?(y+)", {{"KeyType", "Macro"}}),
                        functionEntry("^y", {{"AllMatching", true}, {"BoldType", true}})}),
        definitionWith({functionEntry("^z")})};
    const QList<QString> pieces = {"int main(void)\n",
                                   "{\n",
                                   "}\n",
                                   "static int helper(int v) {\n",
                                   "#define X 1\n",
                                   "struct s {\n",
                                   "  ",
                                   "\n",
                                   "class A:\n",
                                   "    def f(self):\n",
                                   "def g():\n",
                                   "<title>T</title>\n",
                                   "<h1\n>H</h1>",
                                   "yy\n",
                                   "xy ",
                                   "z\n",
                                   ";",
                                   "(",
                                   "a"};
    QRandomGenerator random(5);
    SyntaxManager manager;
    for (const QVariantMap& definition : definitions) {
        for (int round = 0; round < 15; ++round) {
            QString text;
            for (int i = random.bounded(0, 60); i > 0; --i) {
                text += pieces[random.bounded(pieces.size())];
            }
            FunctionDefinitionIndex index(definition);
            index.setChunkSize(random.bounded(1, 60));
            index.build(text);
            for (int edit = 0; edit < 30; ++edit) {
                const qsizetype location = random.bounded(text.size() + 1);
                const qsizetype removed =
                    random.bounded(std::min<qsizetype>(text.size() - location, 40) + 1);
                const QString inserted = pieces[random.bounded(pieces.size())];
                text.replace(location, removed, inserted);
                index.textDidChange(location, removed, inserted.size());
                if (random.bounded(3) == 0) {
                    continue;
                }
                ASSERT_TRUE(index.update(text));
                ASSERT_EQ(index.definitionItems(),
                          manager.makeFunctionDefinitionWithString(text, definition))
                    << "text \"" << text.toStdString() << "\"";
                StringTextSource source(text);
                const FunctionMenu fromIndex =
                    FunctionMenu::fromDefinitions(index.definitions(), source, QStringLiteral("g"));
                const FunctionMenu reference(
                    manager.makeFunctionDefinitionWithString(text, definition), text,
                    QStringLiteral("g"));
                ASSERT_EQ(titles(fromIndex), titles(reference));
                ASSERT_EQ(fromIndex.selectedIndex(), reference.selectedIndex());
            }
        }
    }
}
