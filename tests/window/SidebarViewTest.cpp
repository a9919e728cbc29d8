#include "window/SidebarView.h"

#include "TestWindow.h"
#include "app/PreferencesController.h"
#include "editor/FindIndicator.h"
#include "editor/LayoutManager.h"
#include "platform/PreferencesValues.h"
#include "platform/UserDefaults.h"
#include "search/SearchManager.h"
#include "window/GotoController.h"
#include "window/InfoController.h"
#include "window/ScriptController.h"
#include "window/SearchController.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QSplitter>

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

/// The ranges the view shows with the indicator a matching brace has.
QList<Range> indicated(TextView* view)
{
    QList<Range> shown;
    for (FindIndicator* indicator : view->viewport()->findChildren<FindIndicator*>()) {
        if (indicator->isVisible()) {
            shown << indicator->range();
        }
    }
    return shown;
}

} // namespace

TEST(SidebarView, OpeningSwitchingClosingAndTheWindowIdentifier)
{
    TestRoot root;
    root.userDefaults().setBool(false, "SyntaxColouring");
    Window window(QStringLiteral("some text"));
    const int width = window.window()->width();
    const int editorWidth = window.window()->splitView()->width();

    // Choosing the search pane opens the sidebar, 240 points wide, and the window grows by
    // as much: the editor keeps its width.
    window.controller->swicthSidebarType(SidebarView::SearchType);
    QCoreApplication::processEvents();
    EXPECT_TRUE(window.sidebar()->isVisible());
    EXPECT_EQ(window.sidebar()->width(), 240);
    EXPECT_EQ(window.window()->width(), width + 240);
    EXPECT_EQ(window.window()->splitView()->width(), editorWidth);
    EXPECT_EQ(window.controller->windowIdentifier(), "0:None");
    SearchController* search = window.sidebar()->searchController();
    EXPECT_TRUE(search->isVisible());
    EXPECT_TRUE(search->searchField()->hasFocus());

    // Another pane slides in from the right, the sidebar stays open, the go-to field has the
    // focus.
    window.controller->swicthSidebarType(SidebarView::GotoType);
    GotoController* gotoPane = window.sidebar()->gotoController();
    EXPECT_TRUE(window.sidebar()->isTransitionRunning());
    EXPECT_GT(gotoPane->x(), 0);
    EXPECT_TRUE(gotoPane->gotoField()->hasFocus());
    QTRY_VERIFY_WITH_TIMEOUT(!window.sidebar()->isTransitionRunning(), 2000);
    EXPECT_EQ(gotoPane->geometry(), window.sidebar()->rect());
    EXPECT_FALSE(search->isVisible());
    EXPECT_EQ(window.controller->windowIdentifier(), "1:None");

    // The same pane again closes it; the window gets its width back and the text the focus.
    window.controller->swicthSidebarType(SidebarView::GotoType);
    QCoreApplication::processEvents();
    EXPECT_FALSE(window.sidebar()->isVisible());
    EXPECT_EQ(window.window()->width(), width);
    EXPECT_EQ(window.controller->windowIdentifier(), "None:None");
    EXPECT_TRUE(window.controller->textView()->hasFocus());

    // Through the View menu's items, whose tag is the pane type: twice opens and closes.
    QMenu* sidebarMenu = window.menu->menuNamed("sidebarMenu");
    ASSERT_NE(sidebarMenu, nullptr);
    QAction* information = sidebarMenu->actions().at(SidebarView::InfoType);
    information->trigger();
    EXPECT_TRUE(window.sidebar()->infoController()->isVisible());
    EXPECT_EQ(window.sidebar()->infoController()->textEncodingField()->text(), "Unicode (UTF-8)");
    information->trigger();
    EXPECT_EQ(window.window()->width(), width);

    // Find shows the search pane and never closes it.
    QAction* find = window.action("findMenu", "Find…");
    find->trigger();
    find->trigger();
    EXPECT_TRUE(window.sidebar()->isVisible());
    EXPECT_EQ(window.window()->width(), width + 240);

    // The identifier's syntax wins over the settings' choice. The script pane with Perl applied:
    // "3:Perl", then "None:Perl".
    Window perl(QStringLiteral("print 1;"), QStringLiteral("None:Perl"));
    EXPECT_FALSE(perl.sidebar()->isVisible());
    perl.controller->swicthSidebarType(SidebarView::ScriptType);
    EXPECT_EQ(perl.controller->windowIdentifier(), "3:Perl");
    EXPECT_TRUE(perl.sidebar()->scriptController()->isVisible());
    perl.controller->swicthSidebarType(SidebarView::ScriptType);
    EXPECT_EQ(perl.controller->windowIdentifier(), "None:Perl");

    // A window restored with "2:Perl" shows the information pane; "0:59" opens nothing.
    Window restored(QStringLiteral("x"), QStringLiteral("2:Perl"), false);
    EXPECT_TRUE(restored.controller->isSidebarView());
    EXPECT_EQ(restored.controller->lastSelectedType(), SidebarView::InfoType);
    EXPECT_EQ(restored.sidebar()->infoController()->syntaxField()->text(), "Perl");
    Window none(QStringLiteral("x"), QStringLiteral("1:59"), false);
    EXPECT_FALSE(none.controller->isSidebarView());
    // One that is no identifier of this editor's is put right.
    Window foreign(QString(), QStringLiteral("_NS:60"), false);
    EXPECT_EQ(foreign.controller->windowIdentifier(), "None:None");
    EXPECT_EQ(foreign.document->windowIdentifier(), "None:None");
    EXPECT_FALSE(foreign.controller->syntaxColouring());

    // In full screen the window keeps its size and the editor gives up the 240 points.
    Window full(QStringLiteral("text"));
    full.window()->showFullScreen();
    QTRY_VERIFY_WITH_TIMEOUT(full.window()->isFullScreen(), 2000);
    QCoreApplication::processEvents();
    const int fullWidth = full.window()->width();
    const int fullEditorWidth = full.window()->splitView()->width();
    full.controller->swicthSidebarType(SidebarView::SearchType);
    QCoreApplication::processEvents();
    EXPECT_EQ(full.window()->width(), fullWidth);
    QTRY_COMPARE_WITH_TIMEOUT(full.window()->splitView()->width(), fullEditorWidth - 240, 2000);
    full.controller->swicthSidebarType(SidebarView::SearchType);
    QTRY_COMPARE_WITH_TIMEOUT(full.window()->splitView()->width(), fullEditorWidth, 2000);
}

TEST(SidebarView, SearchPaneAndFindCommands)
{
    // The recent search strings are written to settings of the test's own.
    TestRoot root;
    resetEngine();
    Window window(QStringLiteral("foo bar foo baz foo"));
    window.controller->swicthSidebarType(SidebarView::SearchType);
    SearchController* pane = window.sidebar()->searchController();
    TextView* view = window.controller->textView();

    // The mode shows in the placeholder and the label at once.
    pane->regularExpressionCheckButton()->setChecked(true);
    EXPECT_EQ(pane->searchField()->placeholderText(), "Regular Expression");
    EXPECT_EQ(pane->findLabel()->text(), "ICU-comaptible :");
    pane->regularExpressionCheckButton()->setChecked(false);
    EXPECT_EQ(pane->searchField()->placeholderText(), "String Matching");
    EXPECT_EQ(pane->recentSearchMenu()->actions().size(), 1); // only "Clear Recent…"

    // Typing and Return: the engine takes the string, finds, paints, shows the count, and the
    // string becomes a recent one, in the settings too.
    QTest::keyClicks(pane->searchField(), "foo");
    QTest::keyClick(pane->searchField(), Qt::Key_Return);
    EXPECT_EQ(pane->findLabel()->text(), "Find String : 3 Matches");
    EXPECT_EQ(view->layoutManager()->backgroundHighlights({0, 19}).size(), 3u);
    EXPECT_EQ(pane->recentSearchMenu()->actions().first()->text(), "foo");
    EXPECT_EQ(UserDefaults::standardUserDefaults()
                  .objectForKey(SettingsKey::RecentSearchStrings)
                  .toStringList(),
              QStringList{"foo"});

    // The Find menu acts on the text.
    view->setSelectedRange({0, 0});
    window.action("findMenu", "Find Next")->trigger();
    EXPECT_EQ(view->selectedRange().location, 8);
    window.action("findMenu", "Find Previous")->trigger();
    EXPECT_EQ(view->selectedRange().location, 0);

    // A second window's pane shows the strings of the first; a recent string goes into the
    // field without searching.
    Window other(QStringLiteral("x"));
    other.action("findMenu", "Replace…")->trigger();
    SearchController* otherPane = other.sidebar()->searchController();
    EXPECT_TRUE(otherPane->replaceFeild()->hasFocus());
    EXPECT_EQ(otherPane->searchField()->text(), "foo");
    SearchManager::sharedSearchManager().searchTextFieldDidChange("zzz", "");
    otherPane->recentSearchMenu()->actions().first()->trigger();
    EXPECT_EQ(otherPane->searchField()->text(), "foo");
    EXPECT_EQ(SearchManager::sharedSearchManager().searchString(), "zzz");

    // Use Selection for Find opens the search pane with the selected text.
    Window third(QStringLiteral("alpha beta"));
    third.view()->setSelectedRange({6, 4});
    third.action("findMenu", "Use Selection for Find")->trigger();
    EXPECT_TRUE(third.controller->isSidebarView());
    EXPECT_EQ(third.sidebar()->searchController()->searchField()->text(), "beta");
    EXPECT_EQ(third.view()->selectedText(), "beta");
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

    // Find Next after a go-to paints the matches again over the line gone to. What is found,
    // and the line gone to, show the indicator a matching brace shows.
    view->setSelectedRange({0, 0});
    QTest::keyClick(pane->searchField(), Qt::Key_Return);
    EXPECT_EQ(indicated(view), QList<Range>({Range(8, 3)}));
    window.action("findMenu", "Go to Line…")->trigger();
    GotoController* gotoPane = window.sidebar()->gotoController();
    EXPECT_TRUE(gotoPane->gotoField()->hasFocus());
    QTest::keyClicks(gotoPane->gotoField(), "2");
    QTest::keyClick(gotoPane->gotoField(), Qt::Key_Return);
    EXPECT_EQ(indicated(view), QList<Range>({Range(4, 8)}));
    EXPECT_TRUE(layout->backgroundHighlights({0, 3}).empty());
    window.action("findMenu", "Find Next")->trigger();
    const std::vector<ColorStore::Run> first = layout->backgroundHighlights({0, 3});
    ASSERT_EQ(first.size(), 1u);
    EXPECT_EQ(first.front().color, SearchManager::highlightColor().rgba());
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

    // In an empty document there is no line to go to: nothing happens.
    Window empty;
    empty.controller->swicthSidebarType(SidebarView::GotoType);
    empty.sidebar()->gotoController()->gotoField()->setText("1");
    empty.sidebar()->gotoController()->gotoLine(nullptr);
    EXPECT_FALSE(empty.view()->layoutManager()->hasBackgroundHighlights());
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

    click(two->regularExpressionCheckButton());
    ASSERT_TRUE(engine.regularExpressions());
    EXPECT_TRUE(one->regularExpressionCheckButton()->isChecked());
    EXPECT_EQ(one->findLabel()->text(), "ICU-comaptible :");
    // A box ticked in one window changes that option only, everywhere.
    click(one->caseSensitiveCheckButton());
    EXPECT_FALSE(engine.caseSensitive());
    EXPECT_TRUE(engine.regularExpressions());
    for (SearchController* pane : {one, two}) {
        EXPECT_FALSE(pane->caseSensitiveCheckButton()->isChecked());
        EXPECT_TRUE(pane->regularExpressionCheckButton()->isChecked());
    }
    // A window opened later shows them too, and leaves them as they are.
    Window third(QStringLiteral("c"));
    third.controller->swicthSidebarType(SidebarView::SearchType);
    EXPECT_TRUE(third.sidebar()->searchController()->regularExpressionCheckButton()->isChecked());
    EXPECT_FALSE(third.sidebar()->searchController()->caseSensitiveCheckButton()->isChecked());
    EXPECT_TRUE(engine.regularExpressions());
    EXPECT_FALSE(engine.caseSensitive());

    // Whole Word is a setting like the others, and Replace All follows it.
    click(one->regularExpressionCheckButton());
    click(one->caseSensitiveCheckButton());
    click(two->wholeWordCheckButton());
    EXPECT_TRUE(one->wholeWordCheckButton()->isChecked());
    EXPECT_TRUE(UserDefaults::standardUserDefaults().boolForKey("SearchWholeWord"));
    first.document->setLoadedText(QStringLiteral("cat concat cat_ cat"));
    QTest::keyClicks(one->searchField(), "cat");
    QTest::keyClicks(one->replaceFeild(), "dog");
    QTest::keyClick(one->searchField(), Qt::Key_Return);
    EXPECT_EQ(one->findLabel()->text(), "Find String : 2 Matches");
    first.action("findMenu", "Replace All")->trigger();
    EXPECT_EQ(first.document->string(), "dog concat cat_ dog");
    resetEngine();
}
