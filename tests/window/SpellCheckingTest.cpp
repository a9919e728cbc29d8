#include "TestWindow.h"
#include "editor/LayoutManager.h"
#include "editor/SpellCheckingController.h"
#include "editor/TextColorLayers.h"
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
    /// The foreground formats of `line` the pane lays over it.
    QList<QTextLayout::FormatRange> formatsOfLine(qsizetype line) const
    {
        const Range range = document->rangeOfLine(line);
        return view()
            ->layoutManager()
            ->colorLayers()
            .lineFormats(range.location, range.length)
            .foreground;
    }
};

bool isUnderlined(const QList<QTextLayout::FormatRange>& formats, int start, int length)
{
    return std::any_of(formats.begin(), formats.end(), [&](const QTextLayout::FormatRange& r) {
        return r.start == start && r.length == length &&
               r.format.underlineStyle() == QTextCharFormat::WaveUnderline;
    });
}

} // namespace

TEST(SpellChecking, MisspeltWordsAreUnderlinedAndCanBeReplaced)
{
    CheckedWindow window(QStringLiteral("This sentance is wrong.\nEverything here is correct."));
    ASSERT_TRUE(window.controller->allowSpellChecking());
    TextView* view = window.view();
    QTRY_COMPARE_WITH_TIMEOUT(window.marks(), QList<Range>({{5, 8}}), 2000);
    const auto formats = window.formatsOfLine(0);
    EXPECT_TRUE(isUnderlined(formats, 5, 8));
    EXPECT_FALSE(isUnderlined(formats, 0, 4));
    const auto second = window.formatsOfLine(1);
    EXPECT_TRUE(std::none_of(second.begin(), second.end(), [](const auto& range) {
        return range.format.underlineStyle() != QTextCharFormat::NoUnderline;
    }));

    // Typing a misspelling into the shown text marks it.
    view->setSelection(window.document->length(), window.document->length());
    QTest::keyClicks(view, " Nothnig");
    QTRY_COMPARE_WITH_TIMEOUT(window.marks().size(), 2, 2000);

    // The context menu offers the dictionary's guesses above its own items.
    QMenu menu;
    QAction* copy = menu.addAction(QStringLiteral("Copy"));
    SpellCheckingController::addSpellingSuggestions(view, &menu, view->rectForPosition(7).center());
    QAction* guess = nullptr;
    for (QAction* action : menu.actions()) {
        if (action->text() == u"sentence") {
            guess = action;
        }
    }
    ASSERT_NE(guess, nullptr);
    EXPECT_TRUE(menu.actions().indexOf(guess) < menu.actions().indexOf(copy));
    guess->trigger();
    EXPECT_TRUE(window.document->storedText().startsWith("This sentence is"));
    QTRY_COMPARE_WITH_TIMEOUT(window.marks().size(), 1, 2000);
    window.document->undo();
    EXPECT_TRUE(window.document->storedText().startsWith("This sentance is"));

    // No guesses for a word spelt right.
    QMenu plain;
    plain.addAction(QStringLiteral("Copy"));
    SpellCheckingController::addSpellingSuggestions(view, &plain,
                                                    view->rectForPosition(1).center());
    EXPECT_EQ(plain.actions().size(), 1);

    // The window's toggle turns it off and removes every mark.
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
