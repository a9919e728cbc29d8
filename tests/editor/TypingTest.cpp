#include "EditorTestSupport.h"
#include "editor/FindIndicator.h"
#include "platform/SystemBeep.h"

#include <QSignalSpy>

using namespace EditorTest;

namespace {

/// A pane on its own document with the typing settings given.
struct Typing {
    QTextDocument document;
    std::unique_ptr<EditorController> pane;
    TextView* view = nullptr;

    explicit Typing(bool spaceTab, const QString& text = QString())
    {
        EditorSettings settings = shippedSettings();
        settings.spaceTab = spaceTab;
        settings.autoComplete = false;
        document.setPlainText(text);
        pane = makePane(&document, settings);
        view = pane->textView();
        view->setFocus();
        view->setSelectedRange({text.size(), 0});
    }
    QString text() const { return document.toPlainText(); }
    qsizetype caret() const { return view->textCursor().position(); }
    /// The range of the find indicator shown now, if any.
    Range indicated() const
    {
        const auto shown = view->viewport()->findChildren<FindIndicator*>();
        for (FindIndicator* indicator : shown) {
            if (indicator->isVisible()) {
                return indicator->range();
            }
        }
        return Range::notFound();
    }
};

TEST(Typing, ReturnIndentsAndClosesBraces)
{
    for (bool spaceTab : {false, true}) {
        Typing typing(spaceTab, QStringLiteral("  if (x) {"));
        QTest::keyClick(typing.view, Qt::Key_Return);
        const QString unit = spaceTab ? QStringLiteral("    ") : QStringLiteral("\t");
        EXPECT_EQ(typing.text(), QStringLiteral("  if (x) {\n  ") + unit + QStringLiteral("\n  }"))
            << spaceTab;
        // The insertion point ends the indented middle line, and the "}" is flashed.
        EXPECT_EQ(typing.caret(), 10 + 1 + 2 + unit.size());
        EXPECT_EQ(typing.indicated(), Range(typing.text().size() - 1, 1));
    }

    // A line of only "{" without spaceTab: one tab, then "}" alone.
    Typing brace(false, QStringLiteral("{"));
    QTest::keyClick(brace.view, Qt::Key_Return);
    EXPECT_EQ(brace.text(), QStringLiteral("{\n\t\n}"));
    EXPECT_EQ(brace.caret(), 3);

    // Trailing white space after "{" still indents; "(" does not.
    Typing trailing(false, QStringLiteral("x {  "));
    QTest::keyClick(trailing.view, Qt::Key_Return);
    EXPECT_EQ(trailing.text(), QStringLiteral("x {  \n\t\n}"));
    Typing paren(false, QStringLiteral("\tf("));
    QTest::keyClick(paren.view, Qt::Key_Return);
    EXPECT_EQ(paren.text(), QStringLiteral("\tf(\n\t"));

    // A line of white space only is copied and nothing more.
    Typing blank(true, QStringLiteral(" \t "));
    QTest::keyClick(blank.view, Qt::Key_Return);
    EXPECT_EQ(blank.text(), QStringLiteral(" \t \n \t "));

    // Without automatic indentation the new line is empty.
    Typing off(false, QStringLiteral("  {"));
    off.view->setAutoIndent(false);
    QTest::keyClick(off.view, Qt::Key_Return);
    EXPECT_EQ(off.text(), QStringLiteral("  {\n"));
}

TEST(Typing, TabAndDeleteWorkInTabUnits)
{
    Typing spaces(true);
    QTest::keyClick(spaces.view, Qt::Key_Tab);
    QTest::keyClick(spaces.view, Qt::Key_Tab);
    EXPECT_EQ(spaces.text(), QStringLiteral("        "));
    // Delete after eight spaces removes four, then four more.
    QTest::keyClick(spaces.view, Qt::Key_Backspace);
    EXPECT_EQ(spaces.text(), QStringLiteral("    "));
    QTest::keyClick(spaces.view, Qt::Key_Backspace);
    EXPECT_EQ(spaces.text(), QString());

    // Three spaces, or spaces after other characters, go one at a time.
    Typing three(true, QStringLiteral("a   "));
    QTest::keyClick(three.view, Qt::Key_Backspace);
    EXPECT_EQ(three.text(), QStringLiteral("a  "));

    Typing tabs(false);
    QTest::keyClick(tabs.view, Qt::Key_Tab);
    EXPECT_EQ(tabs.text(), QStringLiteral("\t"));
}

TEST(Typing, ClosingBracketsFlashTheirOpeningOrBeep)
{
    Typing typing(false, QStringLiteral("((a)(b)"));
    QTest::keyClicks(typing.view, QStringLiteral(")"));
    EXPECT_EQ(typing.indicated(), Range(1, 1));

    // No "(" in the visible text: a beep and no flash.
    Typing lone(false, QStringLiteral("a"));
    const int beeps = SystemBeep::count();
    QTest::keyClicks(lone.view, QStringLiteral(")"));
    EXPECT_EQ(SystemBeep::count(), beeps + 1);
    EXPECT_TRUE(lone.indicated().isNotFound());
    EXPECT_EQ(lone.text(), QStringLiteral("a)"));

    // A "(" scrolled out of view is not found.
    QString many = QStringLiteral("(\n");
    for (int i = 0; i < 200; ++i) {
        many += QStringLiteral("line\n");
    }
    Typing far(false, many);
    far.view->ensureCursorVisible();
    QTest::keyClicks(far.view, QStringLiteral(")"));
    EXPECT_EQ(SystemBeep::count(), beeps + 2);

    // Chevrons only when their matching is on.
    Typing chevron(false, QStringLiteral("<a"));
    QTest::keyClicks(chevron.view, QStringLiteral(">"));
    EXPECT_EQ(SystemBeep::count(), beeps + 2);
    EXPECT_TRUE(chevron.indicated().isNotFound());
    chevron.view->setUsedChevronMatching(true);
    QTest::keyClicks(chevron.view, QStringLiteral("<b>"));
    EXPECT_EQ(chevron.indicated(), Range(3, 1));

    // Brace matching off: the bracket is only inserted.
    Typing off(false, QStringLiteral("x"));
    off.view->setAutoBraceMatching(false);
    QTest::keyClicks(off.view, QStringLiteral("]"));
    EXPECT_EQ(off.text(), QStringLiteral("x]"));
    EXPECT_EQ(SystemBeep::count(), beeps + 2);

    // The "}" of automatic indentation is not matched.
    Typing automatic(false, QStringLiteral("}"));
    automatic.view->setUsedIndentClosingBraces(true);
    automatic.view->insertText(QStringLiteral("}"));
    EXPECT_EQ(SystemBeep::count(), beeps + 2);
}

TEST(Typing, ShiftsAreUndoableSteps)
{
    Typing empty(true);
    empty.view->shiftRight();
    EXPECT_EQ(empty.text(), QStringLiteral("    "));
    EXPECT_EQ(empty.view->selectedRange(), Range(4, 0));

    // Lines in the middle of the text, the selection kept on them.
    Typing middle(false, QStringLiteral("a\nb\nc\nd"));
    middle.view->setSelectedRange({2, 3});
    middle.view->shiftRight();
    EXPECT_EQ(middle.text(), QStringLiteral("a\n\tb\n\tc\nd"));
    EXPECT_EQ(middle.view->selectedRange(), Range(3, 4));
    middle.view->setSelectedRange({4, 0});
    middle.view->shiftLeft();
    EXPECT_EQ(middle.text(), QStringLiteral("a\nb\n\tc\nd"));
    EXPECT_EQ(middle.view->selectedRange(), Range(3, 0));

    Typing lines(true, QStringLiteral("  \tx\n\t  x"));
    lines.view->selectAll();
    lines.view->shiftLeft();
    EXPECT_EQ(lines.text(), QStringLiteral("\tx\n  x"));
    lines.view->undo();
    EXPECT_EQ(lines.text(), QStringLiteral("  \tx\n\t  x"));

    // Nothing to remove records no step.
    Typing flat(true, QStringLiteral("a\nb"));
    flat.view->selectAll();
    const int steps = flat.document.availableUndoSteps();
    flat.view->shiftLeft();
    EXPECT_EQ(flat.document.availableUndoSteps(), steps);
    EXPECT_EQ(flat.text(), QStringLiteral("a\nb"));
}

TEST(Typing, AClickTellsTheWindowFirst)
{
    Typing typing(false, QStringLiteral("abc"));
    QSignalSpy spy(typing.view, &TextView::mouseDown);
    QTest::mouseClick(typing.view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy.first().first().value<TextView*>(), typing.view);
    EXPECT_EQ(typing.caret(), 0);
}

} // namespace
