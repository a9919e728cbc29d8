#include "TestWindow.h"
#include "editor/LayoutManager.h"
#include "editor/SpellCheckingController.h"
#include "platform/UserDefaults.h"

#include <QScrollBar>

namespace {

/// Settings of the test's own, with spell checking on in American English.
struct SpellingSettings {
    TestRoot root;
    SpellingSettings()
    {
        root.userDefaults().setBool(true, "AllowSpellChecking");
        root.userDefaults().setObject(QStringLiteral("en_US"), "SpellCheckLanguage");
    }
};

/// A shown window on them.
struct CheckedWindow : SpellingSettings, TestWindow {
    explicit CheckedWindow(const QString& text)
        : TestWindow(text)
    {
        window()->resize(640, 420);
        window()->show();
    }
    QList<Range> marks() const
    {
        return view()->layoutManager()->misspelledWords({0, document->length()});
    }
};

} // namespace

// How a pane underlines, and replaces with a guess, is the editor's; here, that the settings
// turn it on in a window and the window's toggle turns it off.
TEST(SpellChecking, TheSettingsTurnItOnAndTheWindowsToggleTurnsItOff)
{
    CheckedWindow window(QStringLiteral("This sentance is wrong.\nEverything here is correct."));
    ASSERT_TRUE(window.controller->allowSpellChecking());
    TextView* view = window.view();
    QTRY_COMPARE_WITH_TIMEOUT(window.marks(), QList<Range>({{5, 8}}), 2000);

    // No guesses for a word spelt right.
    QMenu plain;
    plain.addAction(QStringLiteral("Copy"));
    SpellCheckingController::addSpellingSuggestions(view, &plain,
                                                    view->rectForPosition(1).center());
    EXPECT_EQ(plain.actions().size(), 1);

    window.controller->toggleSpellChecking(window.controller);
    EXPECT_FALSE(window.controller->allowSpellChecking());
    EXPECT_TRUE(window.marks().isEmpty());
}

TEST(SpellChecking, OnlyTheShownLinesAreChecked)
{
    QString text;
    for (int i = 0; i < 20000; ++i) {
        text += QStringLiteral("Wrongg line\n");
    }
    CheckedWindow window(text);
    QTRY_VERIFY_WITH_TIMEOUT(!window.marks().isEmpty(), 2000);
    const qsizetype shown = window.marks().size();
    EXPECT_LT(shown, 100);
    EXPECT_EQ(window.marks().first(), Range(0, 6));

    // Scrolling to the end checks the lines that come into view.
    QScrollBar* bar = window.view()->verticalScrollBar();
    bar->setValue(bar->maximum());
    const qsizetype last = window.document->length() - 13;
    QTRY_VERIFY_WITH_TIMEOUT(!window.view()->layoutManager()->misspelledWords({last, 12}).isEmpty(),
                             2000);
    EXPECT_LT(window.marks().size(), 2 * shown + 2);
}
