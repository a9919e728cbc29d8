#include "TestWindow.h"
#include "editor/LayoutManager.h"
#include "platform/UserDefaults.h"

// How a pane underlines, and replaces with a guess, is the editor's; here, that the settings
// turn it on in a window and the window's toggle turns it off.
TEST(SpellChecking, TheSettingsTurnItOnAndTheWindowsToggleTurnsItOff)
{
    TestRoot root;
    root.userDefaults().setBool(true, "AllowSpellChecking");
    root.userDefaults().setObject(QStringLiteral("en_US"), "SpellCheckLanguage");
    TestWindow window(QStringLiteral("This sentance is wrong.\nEverything here is correct."),
                      QString(), true);
    ASSERT_TRUE(window.controller->allowSpellChecking());
    TextView* view = window.view();
    const auto marks = [&] {
        return view->layoutManager()->misspelledWords({0, window.document->length()});
    };
    QTRY_COMPARE_WITH_TIMEOUT(marks(), QList<Range>({{5, 8}}), 2000);

    window.controller->toggleSpellChecking(window.controller);
    EXPECT_FALSE(window.controller->allowSpellChecking());
    EXPECT_TRUE(marks().isEmpty());
}
