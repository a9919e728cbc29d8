#include "search/SearchManager.h"

#include "editor/EditorTestSupport.h"

#include <gtest/gtest.h>

namespace {

using Runs = std::vector<ColorStore::Run>;

/// The shared engine in a known state: plain, case-sensitive, forwards, both strings set.
SearchManager& engine(const QString& search = QString(), const QString& replace = QString())
{
    SearchManager& manager = SearchManager::sharedSearchManager();
    manager.searchTextFieldDidChange(search, replace);
    manager.setRegularExpressions(false);
    manager.setCaseSensitive(true);
    manager.setPrevious(false);
    manager.setReplaceAll(false);
    manager.setReplaceAndFindNext(false);
    manager.setBackgroundHighlight(false);
    return manager;
}

using EditorTest::Pane;

/// The characters carrying the background layer, as one string of '#' and '.'.
QString painted(const Pane& pane)
{
    QString marks(pane.owner.length(), u'.');
    for (const ColorStore::Run& run :
         pane.layoutManager()->backgroundHighlights({0, marks.size()})) {
        for (qsizetype i = run.location; i < run.location + run.length; ++i) {
            marks[i] = u'#';
        }
    }
    return marks;
}

} // namespace

TEST(SearchManager, FindCountsPaintsAndSelects)
{
    Pane pane(QStringLiteral("aaaa"));
    SearchManager& search = engine(QStringLiteral("aa"));
    EXPECT_EQ(search.findStringWithLayoutManager(pane.layoutManager()), "Find String : 3 Matches");
    EXPECT_EQ(search.searchMatchesList(), (std::vector<Range>{{0, 2}, {1, 2}, {2, 2}}));
    EXPECT_EQ(painted(pane), "####");
    EXPECT_TRUE(search.backgroundHighlight());
    EXPECT_EQ(pane.selection(), Range(1, 2)); // the first one after the insertion point at 0

    // A search string that begins with a space finds nothing, not even ' x' itself; find
    // still takes the old colour away, and the selection stays.
    Pane spaced(QStringLiteral("a x b x"));
    spaced.select({0, 1});
    spaced.layoutManager()->setBackgroundHighlights({{0, 1}}, Qt::red);
    engine(QStringLiteral(" x"));
    EXPECT_EQ(search.findStringWithLayoutManager(spaced.layoutManager()),
              "Find String : 0 Matches");
    EXPECT_EQ(painted(spaced), ".......");
    EXPECT_EQ(spaced.selection(), Range(0, 1));

    // Without case sensitivity 'abc' finds 'ABC', plainly and as a pattern.
    Pane cased(QStringLiteral("xABC"));
    engine(QStringLiteral("abc")).setCaseSensitive(false);
    EXPECT_EQ(search.findStringWithLayoutManager(cased.layoutManager()), "Find String : 1 Matches");
    search.setRegularExpressions(true);
    EXPECT_EQ(search.findStringWithLayoutManager(cased.layoutManager()),
              "ICU-comaptible : 1 Matches");
}

TEST(SearchManager, NextAndPreviousWrapAround)
{
    // Occurrences of 'q' at 2, 5 and 9.
    Pane pane(QStringLiteral("..q..q...q.."));
    SearchManager& search = engine(QStringLiteral("q"));
    pane.select({9, 1});
    search.findNextWithLayoutManager(pane.layoutManager());
    EXPECT_EQ(pane.selection(), Range(2, 1)); // silently round to the top
    search.findPreviousWithLayoutManager(pane.layoutManager());
    EXPECT_EQ(pane.selection(), Range(9, 1)); // and round to the bottom
    // The find command follows the backwards flag.
    search.setPrevious(true);
    pane.select({0, 0});
    search.findStringWithLayoutManager(pane.layoutManager());
    EXPECT_EQ(pane.selection(), Range(9, 1));

    // Finding far down scrolls the occurrence into sight.
    Pane tall(QStringLiteral("hay\n").repeated(300) + QStringLiteral("needle\n") +
              QStringLiteral("hay\n").repeated(99));
    engine(QStringLiteral("needle")).findStringWithLayoutManager(tall.layoutManager());
    const Range shown = tall.view()->visibleCharacterRange();
    EXPECT_TRUE(shown.contains(tall.selection().location));
}

TEST(SearchManager, ReplacingIsOneUndoableStepEach)
{
    // Occurrences at 0, 10 and 20, each 3 long, replaced by one character: the text is
    // changed at 0, 8 and 16 of the changing text.
    const QString text = QStringLiteral("abc.......abc.......abc.......");
    Pane pane(text);
    SearchManager& search = engine(QStringLiteral("abc"), QStringLiteral("Z"));
    // Nothing is replaced while nothing is highlighted.
    search.replacingAllStringWithLayoutManager(pane.layoutManager());
    EXPECT_EQ(pane.owner.storedText(), text);

    search.findStringWithLayoutManager(pane.layoutManager());
    search.replacingAllStringWithLayoutManager(pane.layoutManager());
    EXPECT_EQ(pane.owner.storedText(), "Z.......Z.......Z.......");
    EXPECT_FALSE(search.backgroundHighlight());
    const Document* names = &pane.owner;
    EXPECT_EQ(names->undoActionName(), "Replace All");
    pane.view()->undo();
    EXPECT_EQ(pane.owner.storedText(), text);

    // Replace one: the selection, whatever it holds, becomes the replacement, selected; the
    // label is empty without "replace and find next", the new count with it.
    pane.select({0, 0});
    engine(QStringLiteral("abc"), QStringLiteral("XY"))
        .findStringWithLayoutManager(pane.layoutManager());
    EXPECT_EQ(pane.selection(), Range(10, 3));
    EXPECT_EQ(search.replaceStringWithLayoutManager(pane.layoutManager()), "");
    EXPECT_EQ(pane.owner.storedText(), "abc.......XY.......abc.......");
    EXPECT_EQ(pane.selection(), Range(10, 2));
    EXPECT_EQ(names->undoActionName(), "Replace");
    search.setReplaceAndFindNext(true);
    EXPECT_EQ(search.replaceStringWithLayoutManager(pane.layoutManager()),
              "Find String : 2 Matches");
    EXPECT_EQ(pane.selection(), Range(19, 3));
    pane.view()->undo();
    pane.view()->undo();
    EXPECT_EQ(pane.owner.storedText(), text);

    // In regular-expression mode the replacement is inserted as it stands.
    Pane pattern(QStringLiteral("key=value"));
    engine(QStringLiteral("(value)"), QStringLiteral("$1")).setRegularExpressions(true);
    search.setReplaceAll(true);
    EXPECT_EQ(search.findStringWithLayoutManager(pattern.layoutManager()),
              "ICU-comaptible : 1 Matches");
    EXPECT_EQ(search.replaceStringWithLayoutManager(pattern.layoutManager()), "ICU-comaptible :");
    EXPECT_EQ(pattern.owner.storedText(), "key=$1");
}

TEST(SearchManager, GoToPaintsAndStepsThroughTheNamedLines)
{
    QString text;
    for (int i = 1; i <= 40; ++i) {
        text += QStringLiteral("line %1\n").arg(i, 2, 10, QChar(u'0'));
    }
    Pane pane(text);
    SearchManager& search = engine();
    const auto lineRange = [&](int line) {
        // With its line break.
        const Range characters = pane.owner.rangeOfLine(line - 1);
        return Range(characters.location, characters.length + 1);
    };
    const auto paintedRuns = [&] {
        return pane.layoutManager()->backgroundHighlights({0, text.size()});
    };
    pane.select({3, 2});

    search.gotoTextFieldDidChange(QStringLiteral("10:20:30"));
    std::vector<qsizetype> positions;
    for (int i = 0; i < 4; ++i) {
        search.gotoLine(pane.view());
        positions.push_back(search.gotoPosition());
        const int shownLine = i % 3 * 10 + 10;
        EXPECT_TRUE(pane.view()->visibleCharacterRange().contains(lineRange(shownLine).location))
            << shownLine;
    }
    EXPECT_EQ(positions, (std::vector<qsizetype>{1, 2, 0, 1}));
    const Runs runs = paintedRuns();
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(Range(runs[1].location, runs[1].length), lineRange(20));
    EXPECT_EQ(pane.selection(), Range(3, 2)); // shown, not selected

    // An edit of the field starts again at the first component; a component that names no
    // line is neither painted nor stepped to.
    search.gotoTextFieldDidChange(QStringLiteral("30:5-3:99:2"));
    search.gotoLine(pane.view());
    EXPECT_EQ(search.gotoPosition(), 1);
    EXPECT_EQ(paintedRuns().size(), 2u);
    search.gotoLine(pane.view());
    EXPECT_EQ(search.gotoPosition(), 0); // stepped over '5-3' and '99' to '2'
    EXPECT_TRUE(pane.view()->visibleCharacterRange().contains(lineRange(2).location));

    // A relative form counts from the selection, which the action leaves where it is (the
    // forms themselves are the engine's).
    pane.select(lineRange(5));
    search.gotoTextFieldDidChange(QStringLiteral("-2"));
    search.gotoLine(pane.view());
    const Runs relative = paintedRuns();
    ASSERT_EQ(relative.size(), 1u);
    EXPECT_EQ(Range(relative[0].location, relative[0].length), lineRange(3));
    EXPECT_EQ(pane.selection(), lineRange(5));
}
