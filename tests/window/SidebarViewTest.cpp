#include "window/SidebarView.h"

#include "TestWindow.h"
#include "app/FindMenu.h"
#include "app/PreferencesController.h"
#include "editor/FindIndicator.h"
#include "editor/LayoutManager.h"
#include "editor/UndoActionNames.h"
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
#include <QMainWindow>
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

} // namespace

TEST(SidebarView, OpeningSwitchingAndClosing)
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
    EXPECT_EQ(window.document->windowIdentifier(), "0:None");
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
    EXPECT_TRUE(window.controller->isSidebarView());
    EXPECT_EQ(window.window()->width(), width + 240);
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

    // Find (Ctrl+F) shows the search pane and never closes it.
    QAction* find = window.action("findMenu", "Find…");
    ASSERT_NE(find, nullptr);
    EXPECT_EQ(find->shortcut(), QKeySequence("Ctrl+F"));
    find->trigger();
    find->trigger();
    EXPECT_TRUE(window.sidebar()->isVisible());
    EXPECT_EQ(window.window()->width(), width + 240);
}

TEST(SidebarView, WindowIdentifierAndFullScreen)
{
    // The identifier's syntax wins over the settings' choice.
    TestRoot root;
    root.userDefaults().setBool(false, SettingsKey::SyntaxColouring);
    // The script pane with Perl applied: "3:Perl", then "None:Perl".
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
    EXPECT_EQ(restored.controller->windowIdentifier(), "2:Perl");
    EXPECT_EQ(restored.sidebar()->infoController()->syntaxField()->text(), "Perl");
    EXPECT_TRUE(restored.controller->syntaxColouring());
    EXPECT_EQ(restored.controller->selectedSyntaxName(), "Perl");
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
    const int width = full.window()->width();
    const int editorWidth = full.window()->splitView()->width();
    full.controller->swicthSidebarType(SidebarView::SearchType);
    QCoreApplication::processEvents();
    EXPECT_EQ(full.window()->width(), width);
    QTRY_COMPARE_WITH_TIMEOUT(full.window()->splitView()->width(), editorWidth - 240, 2000);
    full.controller->swicthSidebarType(SidebarView::SearchType);
    QTRY_COMPARE_WITH_TIMEOUT(full.window()->splitView()->width(), editorWidth, 2000);
}

TEST(SidebarView, SplitPanes)
{
    Window window(QStringLiteral("shared text"));
    TextView* first = window.controller->textView();
    QAction* split = window.menu->actionWithTag(WindowController::SplitPaneTag);
    ASSERT_NE(split, nullptr);
    EXPECT_EQ(split->text(), "Show Split Pane");
    split->trigger();
    ASSERT_EQ(window.controller->textViews().size(), 2u);
    window.controller->validateMenuItem(split);
    EXPECT_EQ(split->text(), "Hide Split Pane");
    TextView* second = window.controller->textViews()[1];
    EXPECT_EQ(window.controller->textView(), second);
    QSplitter* splitter = window.window()->splitView();
    EXPECT_EQ(splitter->orientation(),
              window.controller->useVerticalforSplitView() ? Qt::Horizontal : Qt::Vertical);

    // Typing in one pane shows at once in the other.
    QTest::keyClick(second, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(second, "!");
    EXPECT_EQ(first->toPlainText(), "shared text!");

    // The focus moves to the other pane, which the commands then act on.
    window.controller->toggleFocusOnNextSplitPane(split);
    EXPECT_EQ(window.controller->textView(), first);
    EXPECT_TRUE(first->hasFocus());

    // Side by side and stacked: both panes stay.
    const Qt::Orientation before = splitter->orientation();
    window.controller->toggleUsingVerticalSplitPane(split);
    EXPECT_NE(splitter->orientation(), before);
    EXPECT_EQ(window.controller->textViews().size(), 2u);

    // Closing the split keeps the first pane and its text.
    split->trigger();
    ASSERT_EQ(window.controller->textViews().size(), 1u);
    EXPECT_EQ(window.controller->textView(), first);
    EXPECT_EQ(first->toPlainText(), "shared text!");
    window.controller->toggleFocusOnNextSplitPane(split); // one pane: nothing
    EXPECT_EQ(window.controller->textView(), first);
}

TEST(SidebarView, SearchPaneAndFindCommands)
{
    // The recent search strings are written to settings of the test's own.
    TestRoot root;
    resetEngine();
    Window window(QStringLiteral("foo bar foo baz foo"));
    window.controller->swicthSidebarType(SidebarView::SearchType);
    SearchController* pane = window.sidebar()->searchController();

    // The mode shows in the placeholder and the label at once.
    pane->regularExpressionCheckButton()->setChecked(false);
    EXPECT_EQ(pane->searchField()->placeholderText(), "String Matching");
    EXPECT_EQ(pane->findLabel()->text(), "Find String :");
    pane->regularExpressionCheckButton()->setChecked(true);
    EXPECT_EQ(pane->searchField()->placeholderText(), "Regular Expression");
    EXPECT_EQ(pane->findLabel()->text(), "ICU-comaptible :");
    EXPECT_TRUE(SearchManager::sharedSearchManager().regularExpressions());
    pane->regularExpressionCheckButton()->setChecked(false);
    pane->caseSensitiveCheckButton()->setChecked(true);

    // No recent searches: only the item that clears them.
    QList<QAction*> items = pane->recentSearchMenu()->actions();
    ASSERT_EQ(items.size(), 1);
    EXPECT_EQ(items[0]->text(), "Clear Recent Search Strings");

    // Typing and Return: the engine takes the string, finds, paints, shows the count.
    QTest::keyClicks(pane->searchField(), "foo");
    EXPECT_EQ(SearchManager::sharedSearchManager().searchString(), "foo");
    QTest::keyClick(pane->searchField(), Qt::Key_Return);
    EXPECT_EQ(pane->findLabel()->text(), "Find String : 3 Matches");
    LayoutManager* layout = window.controller->textView()->layoutManager();
    EXPECT_EQ(layout->backgroundHighlights({0, 19}).size(), 3u);
    items = pane->recentSearchMenu()->actions();
    ASSERT_EQ(items.size(), 3);
    EXPECT_EQ(items[0]->text(), "foo");
    EXPECT_TRUE(items[1]->isSeparator());
    EXPECT_EQ(UserDefaults::standardUserDefaults()
                  .objectForKey(SettingsKey::RecentSearchStrings)
                  .toStringList(),
              QStringList{"foo"});

    // Find Next (Ctrl+G) and Find Previous (Ctrl+Shift+G) act on the text; the label stays.
    QTextCursor start = window.controller->textView()->textCursor();
    start.setPosition(0);
    window.controller->textView()->setTextCursor(start);
    QAction* next = window.action("findMenu", "Find Next");
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->shortcut(), QKeySequence("Ctrl+G"));
    EXPECT_EQ(window.action("findMenu", "Find Previous")->shortcut(), QKeySequence("Ctrl+Shift+G"));
    next->trigger();
    EXPECT_EQ(window.controller->textView()->textCursor().selectionStart(), 8);
    window.action("findMenu", "Find Previous")->trigger();
    EXPECT_EQ(window.controller->textView()->textCursor().selectionStart(), 0);

    // A second window's pane shows the strings of the first, and the recent ones.
    Window other(QStringLiteral("x"));
    other.controller->swicthSidebarType(SidebarView::SearchType);
    SearchController* otherPane = other.sidebar()->searchController();
    EXPECT_EQ(otherPane->searchField()->text(), "foo");
    EXPECT_EQ(otherPane->recentSearchMenu()->actions().first()->text(), "foo");

    // A recent string goes into the field without searching.
    SearchManager::sharedSearchManager().searchTextFieldDidChange("zzz", "");
    otherPane->recentSearchMenu()->actions().first()->trigger();
    EXPECT_EQ(otherPane->searchField()->text(), "foo");
    EXPECT_EQ(SearchManager::sharedSearchManager().searchString(), "zzz");

    // Use Selection for Find (Ctrl+E) opens the search pane with the selected text.
    Window third(QStringLiteral("alpha beta"));
    QTextCursor beta = third.controller->textView()->textCursor();
    beta.setPosition(6);
    beta.setPosition(10, QTextCursor::KeepAnchor);
    third.controller->textView()->setTextCursor(beta);
    QAction* useSelection = third.action("findMenu", "Use Selection for Find");
    EXPECT_EQ(useSelection->shortcut(), QKeySequence("Ctrl+E"));
    useSelection->trigger();
    EXPECT_TRUE(third.controller->isSidebarView());
    EXPECT_EQ(third.sidebar()->searchController()->searchField()->text(), "beta");
    EXPECT_EQ(third.controller->textView()->textCursor().selectedText(), "beta");
    EXPECT_EQ(third.action("findMenu", "Jump to Selection")->shortcut(), QKeySequence("Ctrl+J"));
    EXPECT_EQ(third.action("findMenu", "Go to Line…")->shortcut(), QKeySequence("Ctrl+L"));
    resetEngine();
}

TEST(SidebarView, WholeWordOptionAndTheReplaceShortcut)
{
    // The options are written to settings of the test's own.
    TestRoot root;
    resetEngine();
    Window window(QStringLiteral("cat concat cat_ cat"));
    // Ctrl+H: the search pane, ready to type the replacement.
    QAction* replace = window.action("findMenu", "Replace…");
    ASSERT_NE(replace, nullptr);
    EXPECT_EQ(replace->shortcut(), QKeySequence("Ctrl+H"));
    replace->trigger();
    ASSERT_TRUE(window.controller->isSidebarView());
    EXPECT_EQ(window.controller->lastSelectedType(), SidebarView::SearchType);
    SearchController* pane = window.sidebar()->searchController();
    EXPECT_TRUE(pane->replaceFeild()->hasFocus());

    // The option is a setting, like the others, and the engine follows it.
    QCheckBox* wholeWord = pane->wholeWordCheckButton();
    EXPECT_EQ(wholeWord->text(), "Whole Word");
    EXPECT_FALSE(wholeWord->isChecked());
    wholeWord->click();
    EXPECT_TRUE(SearchManager::sharedSearchManager().wholeWord());
    EXPECT_TRUE(UserDefaults::standardUserDefaults().boolForKey("SearchWholeWord"));

    // Find paints and counts the whole words only; Replace All replaces only them.
    QTest::keyClicks(pane->replaceFeild(), "dog");
    QTest::keyClicks(pane->searchField(), "cat");
    QTest::keyClick(pane->searchField(), Qt::Key_Return);
    EXPECT_EQ(pane->findLabel()->text(), "Find String : 2 Matches");
    LayoutManager* layout = window.controller->textView()->layoutManager();
    EXPECT_EQ(layout->backgroundHighlights({0, 19}).size(), 2u);
    EXPECT_EQ(window.controller->textView()->textCursor().selectionStart(), 16);
    window.action("findMenu", "Replace All")->trigger();
    EXPECT_EQ(window.document->string(), "dog concat cat_ dog");

    // The same in a regular expression; a second window's pane shows the option on.
    pane->regularExpressionCheckButton()->setChecked(true);
    QTest::keyClick(pane->searchField(), Qt::Key_Return);
    EXPECT_EQ(pane->findLabel()->text(), "ICU-comaptible : 0 Matches");
    Window other(QStringLiteral("x"), QString(), false);
    other.controller->swicthSidebarType(SidebarView::SearchType);
    EXPECT_TRUE(other.sidebar()->searchController()->wholeWordCheckButton()->isChecked());

    wholeWord->click();
    pane->regularExpressionCheckButton()->setChecked(false);
}

TEST(SidebarView, UndoOfReplaceAllRestoresTheTextAndTakesTheHighlightAway)
{
    resetEngine();
    const QString text = QStringLiteral("one two one three one\nfour one");
    Window window(text);
    window.controller->swicthSidebarType(SidebarView::SearchType);
    SearchController* pane = window.sidebar()->searchController();
    pane->caseSensitiveCheckButton()->setChecked(true);
    pane->regularExpressionCheckButton()->setChecked(false);
    pane->replaceAllCheckButton()->setChecked(true);
    QTest::keyClicks(pane->searchField(), "one");
    QTest::keyClicks(pane->replaceFeild(), "1");
    QTest::keyClick(pane->searchField(), Qt::Key_Return);
    TextView* view = window.controller->textView();
    LayoutManager* layout = view->layoutManager();
    EXPECT_TRUE(layout->hasBackgroundHighlights());

    QTest::keyClick(pane->replaceFeild(), Qt::Key_Return);
    EXPECT_EQ(window.document->textStorage()->toPlainText(), "1 two 1 three 1\nfour 1");
    EXPECT_EQ(pane->findLabel()->text(), "Find String :");

    QMenu* edit = window.menu->menuNamed("editMenu");
    QMetaObject::invokeMethod(edit, "aboutToShow");
    EXPECT_EQ(edit->actions().first()->text(), "Undo Replace All");
    edit->actions().first()->trigger();
    EXPECT_EQ(window.document->textStorage()->toPlainText(), text);
    EXPECT_FALSE(layout->hasBackgroundHighlights());
    EXPECT_FALSE(SearchManager::sharedSearchManager().backgroundHighlight());

    // Typing after a find takes the highlight away too.
    QTest::keyClick(pane->searchField(), Qt::Key_Return);
    EXPECT_TRUE(layout->hasBackgroundHighlights());
    QTest::keyClicks(view, "x");
    EXPECT_FALSE(layout->hasBackgroundHighlights());
    pane->replaceAllCheckButton()->setChecked(false);
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
        {"Wrap Lines", [&] { window.action("viewMenu", "Wrap Lines")->trigger(); }},
        {"closing the preferences",
         [] {
             QMainWindow* preferences =
                 PreferencesController::sharedPreferencesController().window();
             PreferencesController::sharedPreferencesController().showWindow();
             preferences->close();
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
        EXPECT_EQ(window.document->textStorage()->toPlainText(), text);
    }

    // Find Next after a go-to paints the matches again over the line gone to.
    QTest::keyClick(pane->searchField(), Qt::Key_Return);
    window.action("findMenu", "Go to Line…")->trigger();
    GotoController* gotoPane = window.sidebar()->gotoController();
    QTest::keyClicks(gotoPane->gotoField(), "2");
    QTest::keyClick(gotoPane->gotoField(), Qt::Key_Return);
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
    EXPECT_EQ(other.document->textStorage()->toPlainText().count(u'X'), 1);
    resetEngine();
}

TEST(SidebarView, EverySearchPaneShowsTheEnginesOptions)
{
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
    resetEngine();
}

TEST(SidebarView, FoundAndGoneToRangesShowTheSameIndicatorAsABrace)
{
    resetEngine();
    Window window(QStringLiteral("alpha\nbeta alpha\ngamma\n"));
    TextView* view = window.controller->textView();
    const auto indicated = [view] {
        QList<Range> shown;
        for (FindIndicator* indicator : view->viewport()->findChildren<FindIndicator*>()) {
            if (indicator->isVisible()) {
                shown << indicator->range();
            }
        }
        return shown;
    };
    window.controller->swicthSidebarType(SidebarView::SearchType);
    SearchController* search = window.sidebar()->searchController();
    view->setSelectedRange({0, 0});
    QTest::keyClicks(search->searchField(), "alpha");
    QTest::keyClick(search->searchField(), Qt::Key_Return);
    EXPECT_EQ(indicated(), QList<Range>({Range(11, 5)}));

    window.action("findMenu", "Go to Line…")->trigger();
    GotoController* gotoPane = window.sidebar()->gotoController();
    EXPECT_TRUE(gotoPane->isVisible());
    EXPECT_TRUE(gotoPane->gotoField()->hasFocus());
    QTest::keyClicks(gotoPane->gotoField(), "3");
    QTest::keyClick(gotoPane->gotoField(), Qt::Key_Return);
    EXPECT_EQ(indicated(), QList<Range>({Range(17, 6)}));

    // In an empty document there is no line to go to: nothing happens.
    Window empty;
    empty.controller->swicthSidebarType(SidebarView::GotoType);
    empty.sidebar()->gotoController()->gotoField()->setText("1");
    empty.sidebar()->gotoController()->gotoLine(nullptr);
    EXPECT_FALSE(empty.view()->layoutManager()->hasBackgroundHighlights());
    resetEngine();
}
