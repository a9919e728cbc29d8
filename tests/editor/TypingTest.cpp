#include "EditorTestSupport.h"
#include "editor/FindIndicator.h"
#include "platform/SystemBeep.h"

using namespace EditorTest;

namespace {

EditorSettings typingSettings(bool spaceTab)
{
    EditorSettings settings = shippedSettings();
    settings.spaceTab = spaceTab;
    settings.autoComplete = false;
    return settings;
}

/// A pane with the focus and the insertion point at the end of its text.
struct Typing : Pane {
    explicit Typing(bool spaceTab, const QString& text = QString())
        : Pane(text, typingSettings(spaceTab))
    {
        view()->setFocus();
        select({text.size(), 0});
    }
    qsizetype caret() const { return view()->cursorPosition(); }
    /// The range of the find indicator shown now, if any.
    Range indicated() const
    {
        for (FindIndicator* indicator : view()->viewport()->findChildren<FindIndicator*>()) {
            if (indicator->isVisible()) {
                return indicator->range();
            }
        }
        return Range::notFound();
    }
};

TEST(Typing, KeysRunTheTypingRulesWithThePanesSettings)
{
    // The rules themselves are TypingRules' (see its tests); here the keys reach them.
    Typing typing(true, QStringLiteral("  if (x) {"));
    QTest::keyClick(typing.view(), Qt::Key_Return);
    EXPECT_EQ(typing.text(), QStringLiteral("  if (x) {\n      \n  }"));
    EXPECT_EQ(typing.caret(), 17);
    // The "}" put in is shown, as a typed one's opening bracket would be.
    EXPECT_EQ(typing.indicated(), Range(typing.text().size() - 1, 1));
    QTest::keyClick(typing.view(), Qt::Key_Tab);
    EXPECT_EQ(typing.caret(), 21);
    QTest::keyClick(typing.view(), Qt::Key_Backspace);
    QTest::keyClick(typing.view(), Qt::Key_Backspace);
    EXPECT_EQ(typing.text(), QStringLiteral("  if (x) {\n  \n  }"));

    Typing off(false, QStringLiteral("  {"));
    off.view()->setAutoIndent(false);
    QTest::keyClick(off.view(), Qt::Key_Return);
    EXPECT_EQ(off.text(), QStringLiteral("  {\n"));
}

TEST(Typing, EachRuleIsOneUndoStepNamedAsTheViewsCommand)
{
    Typing typing(false, QStringLiteral("a\n\tb\nc"));
    const Document* names = &typing.document;
    typing.view()->setSelectedRange({2, 4});
    typing.view()->shiftRight();
    EXPECT_EQ(typing.text(), QStringLiteral("a\n\t\tb\n\tc"));
    EXPECT_EQ(typing.view()->selectedRange(), Range(3, 5));
    EXPECT_EQ(names->undoActionName(), QStringLiteral("Shift Right"));
    // Nothing to shift left on the first line: no step at all, so undo takes back the shift
    // right.
    typing.view()->setSelectedRange({0, 1});
    typing.view()->shiftLeft();
    EXPECT_EQ(names->undoActionName(), QStringLiteral("Shift Right"));
    typing.document.undo();
    EXPECT_EQ(typing.text(), QStringLiteral("a\n\tb\nc"));
    typing.document.redo();

    // Return with its indentation and closing brace is one unnamed step; typing undoes a
    // word at a time (the blank, then the brace that starts a new word).
    typing.view()->setAutoIndentClosingBraces(true);
    typing.view()->setSelectedRange({typing.text().size(), 0});
    const QString shifted = typing.text();
    QTest::keyClicks(typing.view(), QStringLiteral(" {"));
    const QString typed = typing.text();
    QTest::keyClick(typing.view(), Qt::Key_Return);
    EXPECT_EQ(typing.text(), typed + QStringLiteral("\n\t\t\n\t}"));
    EXPECT_TRUE(names->undoActionName().isEmpty());
    typing.document.undo();
    EXPECT_EQ(typing.text(), typed);
    typing.document.undo();
    EXPECT_EQ(typing.text(), shifted + u' ');
    typing.document.undo();
    EXPECT_EQ(typing.text(), shifted);
    typing.document.undo();
    EXPECT_EQ(typing.text(), QStringLiteral("a\n\tb\nc"));
    EXPECT_FALSE(typing.document.canUndo());
}

TEST(Typing, ClosingBracketsFlashTheirOpeningOrBeep)
{
    Typing typing(false, QStringLiteral("((a)(b)"));
    QTest::keyClicks(typing.view(), QStringLiteral(")"));
    EXPECT_EQ(typing.indicated(), Range(1, 1));

    // No "(" in the visible text: a beep and no flash.
    Typing lone(false, QStringLiteral("a"));
    const int beeps = SystemBeep::count();
    QTest::keyClicks(lone.view(), QStringLiteral(")"));
    EXPECT_EQ(SystemBeep::count(), beeps + 1);
    EXPECT_TRUE(lone.indicated().isNotFound());
    EXPECT_EQ(lone.text(), QStringLiteral("a)"));
}

} // namespace
