#include "window/SidebarView.h"

#include "TestWindow.h"
#include "app/PreferencesController.h"
#include "editor/LayoutManager.h"
#include "platform/UserDefaults.h"
#include "search/SearchManager.h"
#include "window/GotoController.h"
#include "window/InfoController.h"
#include "window/SearchController.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>

#include <functional>

namespace {

/// Shown unless said otherwise: the panes take the keyboard focus.
struct Window : TestWindow {
    explicit Window(const QString& text = QString(), const QString& identifier = QString(),
                    bool show = true)
        : TestWindow(text, identifier, show)
    {}
};

void resetEngine()
{
    SearchManager& search = SearchManager::sharedSearchManager();
    search.searchTextFieldDidChange(QString(), QString());
    search.setRegularExpressions(false);
    search.setCaseSensitive(true);
    search.setReplaceAll(false);
    search.setWholeWord(false);
    search.setBackgroundHighlight(false);
}

} // namespace

TEST(SidebarView, OpeningSwitchingClosingAndTheWindowIdentifier)
{
    TestRoot root;
    root.userDefaults().setBool(false, "SyntaxColouring");
    Window window(QStringLiteral("some text"));

    // The search pane opens the sidebar.
    window.controller->swicthSidebarType(SidebarView::SearchType);
    QCoreApplication::processEvents();
    EXPECT_TRUE(window.sidebar()->isVisible());
    EXPECT_EQ(window.controller->windowIdentifier(), "0:None");
    EXPECT_TRUE(window.sidebar()->searchController()->searchField()->hasFocus());

    // Another pane takes its place; the same pane again closes the sidebar, and the text has
    // the focus back.
    window.controller->swicthSidebarType(SidebarView::GotoType);
    EXPECT_TRUE(window.sidebar()->gotoController()->gotoField()->hasFocus());
    EXPECT_EQ(window.controller->windowIdentifier(), "1:None");
    window.controller->swicthSidebarType(SidebarView::GotoType);
    QCoreApplication::processEvents();
    EXPECT_FALSE(window.sidebar()->isVisible());
    EXPECT_EQ(window.controller->windowIdentifier(), "None:None");
    EXPECT_TRUE(window.controller->textView()->hasFocus());

    // The identifier's syntax wins over the settings' choice; a window restored with "2:Perl"
    // shows the information pane, and one no identifier of this editor's is put right.
    Window restored(QStringLiteral("x"), QStringLiteral("2:Perl"), false);
    EXPECT_EQ(restored.controller->lastSelectedType(), SidebarView::InfoType);
    EXPECT_EQ(restored.sidebar()->infoController()->syntaxField()->text(), "Perl");
    Window foreign(QString(), QStringLiteral("_NS:60"), false);
    EXPECT_EQ(foreign.document->windowIdentifier(), "None:None");
}

TEST(SidebarView, SearchPaneAndFindCommands)
{
    TestRoot root;
    resetEngine();
    Window window(QStringLiteral("foo bar foo baz foo"));
    window.controller->swicthSidebarType(SidebarView::SearchType);
    SearchController* pane = window.sidebar()->searchController();
    TextView* view = window.controller->textView();

    // Typing and Return: the engine takes the string, finds, shows the count, and the string
    // becomes a recent one.
    QTest::keyClicks(pane->searchField(), "foo");
    QTest::keyClick(pane->searchField(), Qt::Key_Return);
    EXPECT_EQ(pane->findLabel()->text(), "Find String : 3 Matches");
    EXPECT_EQ(pane->recentSearchMenu()->actions().first()->text(), "foo");

    // The Find menu acts on the text.
    view->setSelectedRange({0, 0});
    window.action("findMenu", "Find Next")->trigger();
    EXPECT_EQ(view->selectedRange().location, 8);
    window.action("findMenu", "Find Previous")->trigger();
    EXPECT_EQ(view->selectedRange().location, 0);

    // A second window's pane shows the strings of the first.
    Window other(QStringLiteral("x"));
    other.action("findMenu", "Replace…")->trigger();
    EXPECT_EQ(other.sidebar()->searchController()->searchField()->text(), "foo");

    // Use Selection for Find puts the selected text in the field.
    view->setSelectedRange({4, 3});
    window.action("findMenu", "Use Selection for Find")->trigger();
    EXPECT_EQ(pane->searchField()->text(), "bar");
    resetEngine();
}

TEST(SidebarView, TheHighlightedStateFollowsWhatTheWindowShows)
{
    resetEngine();
    const QString text = QStringLiteral("foo\nbar foo\nbaz foo\n");
    Window window(text);
    window.controller->swicthSidebarType(SidebarView::SearchType);
    SearchController* pane = window.sidebar()->searchController();
    SearchManager& engine = SearchManager::sharedSearchManager();
    TextView* view = window.controller->textView();
    LayoutManager* layout = view->layoutManager();
    QTest::keyClicks(pane->searchField(), "foo");
    QTest::keyClicks(pane->replaceFeild(), "X");

    // Whatever takes the matches' colour away, Replace then has nothing to replace.
    const struct {
        const char* name;
        std::function<void()> removeHighlight;
    } removals[] = {
        {"typing, then undoing it",
         [&] {
             QTest::keyClicks(view, "x");
             EXPECT_FALSE(layout->hasBackgroundHighlights());
             view->undo();
         }},
        {"undoing a Replace All",
         [&] {
             pane->replaceAllCheckButton()->setChecked(true);
             QTest::keyClick(pane->replaceFeild(), Qt::Key_Return);
             EXPECT_EQ(window.document->storedText(), "X\nbar X\nbaz X\n");
             EXPECT_EQ(pane->findLabel()->text(), "Find String :");
             pane->replaceAllCheckButton()->setChecked(false);
             view->undo();
         }},
        {"Wrap Lines", [&] { window.action("viewMenu", "Wrap Lines")->trigger(); }},
        {"closing the preferences",
         [&] {
             window.action("editMenu", "Preferences…")->trigger();
             PreferencesController::sharedPreferencesController().window()->close();
         }},
    };
    for (const auto& removal : removals) {
        SCOPED_TRACE(removal.name);
        QTest::keyClick(pane->searchField(), Qt::Key_Return);
        ASSERT_TRUE(layout->hasBackgroundHighlights());
        ASSERT_TRUE(engine.backgroundHighlight());
        removal.removeHighlight();
        EXPECT_FALSE(layout->hasBackgroundHighlights());
        EXPECT_FALSE(engine.backgroundHighlight());
        QTest::keyClick(pane->replaceFeild(), Qt::Key_Return);
        EXPECT_EQ(window.document->storedText(), text);
    }

    // Find Next after a go-to paints the matches again.
    view->setSelectedRange({0, 0});
    QTest::keyClick(pane->searchField(), Qt::Key_Return);
    window.action("findMenu", "Go to Line…")->trigger();
    GotoController* gotoPane = window.sidebar()->gotoController();
    QTest::keyClicks(gotoPane->gotoField(), "2");
    QTest::keyClick(gotoPane->gotoField(), Qt::Key_Return);
    EXPECT_TRUE(layout->backgroundHighlights({0, 3}).empty());
    window.action("findMenu", "Find Next")->trigger();
    EXPECT_EQ(layout->backgroundHighlights({0, 3}).size(), 1u);
    EXPECT_EQ(layout->backgroundHighlights({16, 3}).size(), 1u);

    // This window's leftover matches going away leave another window's search as it is.
    Window other(QStringLiteral("foo foo\n"));
    other.controller->swicthSidebarType(SidebarView::SearchType);
    SearchController* otherPane = other.sidebar()->searchController();
    QTest::keyClick(otherPane->searchField(), Qt::Key_Return);
    ASSERT_TRUE(layout->hasBackgroundHighlights());
    window.action("viewMenu", "Wrap Lines")->trigger();
    EXPECT_TRUE(engine.backgroundHighlight());
    QTest::keyClick(otherPane->replaceFeild(), Qt::Key_Return);
    EXPECT_EQ(other.document->storedText().count(u'X'), 1);

    resetEngine();
}

TEST(SidebarView, EverySearchPaneShowsTheEnginesOptions)
{
    // The options are written to settings of the test's own.
    TestRoot root;
    resetEngine();
    Window first(QStringLiteral("a"));
    Window second(QStringLiteral("b"));
    first.controller->swicthSidebarType(SidebarView::SearchType);
    second.controller->swicthSidebarType(SidebarView::SearchType);
    SearchController* one = first.sidebar()->searchController();
    SearchController* two = second.sidebar()->searchController();
    SearchManager& engine = SearchManager::sharedSearchManager();
    const auto click = [](QCheckBox* box) { QTest::keyClick(box, Qt::Key_Space); };

    // A box ticked in one window changes that option only, everywhere; a window opened later
    // leaves it as it is.
    click(two->caseSensitiveCheckButton());
    EXPECT_FALSE(engine.caseSensitive());
    EXPECT_FALSE(engine.regularExpressions());
    EXPECT_FALSE(one->caseSensitiveCheckButton()->isChecked());
    Window third(QStringLiteral("c"));
    third.controller->swicthSidebarType(SidebarView::SearchType);
    EXPECT_FALSE(engine.caseSensitive());
    click(one->caseSensitiveCheckButton());

    // Whole Word is a setting like the others, and Replace All follows it.
    click(two->wholeWordCheckButton());
    EXPECT_TRUE(one->wholeWordCheckButton()->isChecked());
    EXPECT_TRUE(UserDefaults::standardUserDefaults().boolForKey("SearchWholeWord"));
    first.document->setLoadedText(QStringLiteral("cat concat cat_ cat"));
    QTest::keyClicks(one->searchField(), "cat");
    QTest::keyClicks(one->replaceFeild(), "dog");
    QTest::keyClick(one->searchField(), Qt::Key_Return);
    first.action("findMenu", "Replace All")->trigger();
    EXPECT_EQ(first.document->string(), "dog concat cat_ dog");
    resetEngine();
}
