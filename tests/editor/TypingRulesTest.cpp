#include "editor/TypingRules.h"

#include "platform/StringTextSource.h"

#include <gtest/gtest.h>

namespace {

using Settings = TypingRules::Settings;

constexpr Settings kTabs{.autoIndent = true,
                         .autoIndentBraces = true,
                         .autoIndentClosingBraces = true,
                         .spaceTab = false,
                         .autoBraceMatching = true,
                         .chevronMatching = false};

Settings with(Settings settings, bool Settings::*flag, bool value)
{
    settings.*flag = value;
    return settings;
}

const Settings kSpaces = with(kTabs, &Settings::spaceTab, true);

// "|" marks the insertion point, "«" and "»" the ends of a selection.
QString unmark(QString text, Range* selection)
{
    const qsizetype caret = text.indexOf(u'|');
    if (caret >= 0) {
        *selection = {caret, 0};
        return text.remove(caret, 1);
    }
    const qsizetype start = text.indexOf(u'«');
    text.remove(start, 1);
    const qsizetype end = text.indexOf(u'»');
    *selection = {start, end - start};
    return text.remove(end, 1);
}

QString mark(QString text, Range selection)
{
    if (selection.length == 0) {
        return text.insert(selection.location, u'|');
    }
    return text.insert(selection.max(), u'»').insert(selection.location, u'«');
}

enum class Key { Return, AutoIndent, Tab, Backspace, ShiftRight, ShiftLeft };

std::optional<TextEdit> run(const TypingRules& rules, Key key, TextSource& text, Range selection)
{
    switch (key) {
    case Key::Return:
        return rules.insertNewline(text, selection);
    case Key::AutoIndent:
        return rules.autoIndent(text, selection);
    case Key::Tab:
        return rules.insertTab(selection);
    case Key::Backspace:
        return rules.deleteBackward(text, selection);
    case Key::ShiftRight:
        return rules.shiftRight(text, selection);
    case Key::ShiftLeft:
        return rules.shiftLeft(text, selection);
    }
    return std::nullopt;
}

TEST(TypingRules, EachKeyAnswersTheEditTheTextAroundTheSelectionCallsFor)
{
    const QString x300(300, u'x');
    struct Row {
        const char* what;
        Settings settings;
        Key key;
        QString before;
        QString after;
        Range shown = Range::notFound();
    };
    const Row rows[] = {
        // Return copies the line's indentation, one level more after "{", and closes it.
        {"brace, tabs", kTabs, Key::Return, "  if (x) {|", "  if (x) {\n  \t|\n  }", {17, 1}},
        {"brace, spaces", kSpaces, Key::Return, "  if (x) {|", "  if (x) {\n      |\n  }", {20, 1}},
        {"white space after the brace", kTabs, Key::Return, "x {  |y", "x {  \n\t|\n}y", {8, 1}},
        {"parenthesis", kTabs, Key::Return, "\tf(|", "\tf(\n\t|"},
        {"white space only", kSpaces, Key::Return, " \t |", " \t \n \t |"},
        {"no closing brace", with(kTabs, &Settings::autoIndentClosingBraces, false), Key::Return,
         "  {|", "  {\n  \t|"},
        {"no brace indentation", with(kTabs, &Settings::autoIndentBraces, false), Key::Return,
         "  {|", "  {\n  |"},
        {"no indentation", with(kTabs, &Settings::autoIndent, false), Key::Return, "  {|",
         "  {\n|"},
        {"selection across lines", kTabs, Key::Return, "\ta«b\nc»d", "\ta\n\t|d"},
        {"a line longer than one read", kTabs, Key::Return, "  y\n\t" + x300 + "|",
         "  y\n\t" + x300 + "\n\t|"},
        // The same for a line just begun, from the line before it.
        {"line begun", kTabs, Key::AutoIndent, "  {\n|x", "  {\n  \t|\n  }x", {10, 1}},
        {"first line", kTabs, Key::AutoIndent, "  |x", "  |x"},
        {"nothing to indent by", kTabs, Key::AutoIndent, "a\n|", "a\n|"},
        // Tab and Backspace work in tab units.
        {"tab", kTabs, Key::Tab, "a«b»c", "a\t|c"},
        {"tab as spaces", kSpaces, Key::Tab, "x|", "x    |"},
        {"four spaces", kSpaces, Key::Backspace, "        |", "    |"},
        {"three spaces and a letter", kSpaces, Key::Backspace, "a   |", "a  |"},
        {"spaces with tabs", kTabs, Key::Backspace, "    |", "   |"},
        {"selection", kSpaces, Key::Backspace, "ab«    »", "ab|"},
        {"surrogate pair", kTabs, Key::Backspace, "a\U0001F600|b", "a|b"},
        {"start of text", kSpaces, Key::Backspace, "|ab", "|ab"},
        // Shifts: every touched line, the selection kept on the lines.
        {"right, empty text", kSpaces, Key::ShiftRight, "|", "    |"},
        {"right, middle lines", kTabs, Key::ShiftRight, "a\n«b\nc»\nd", "a\n\t«b\n\tc»\nd"},
        {"right, an empty line among them", kTabs, Key::ShiftRight, "«a\n\nc»\nd",
         "\t«a\n\t\n\tc»\nd"},
        {"right, a selection starting with a line break", kSpaces, Key::ShiftRight, "«\nx»\n",
         "«    \n    x»\n"},
        {"right, lines longer than one read", kTabs, Key::ShiftRight,
         "a\n" + x300 + "|" + x300 + "\nb", "a\n\t" + x300 + "|" + x300 + "\nb"},
        {"left, caret", kTabs, Key::ShiftLeft, "a\n\tb|\n\tc\nd", "a\nb|\n\tc\nd"},
        {"left, spaces or a tab", kSpaces, Key::ShiftLeft, "«  \tx\n\t  x»", "«\tx\n  x»"},
        {"left, one space or one tab", kTabs, Key::ShiftLeft, "«  a\n\t\tb»", "« a\n\tb»"},
        {"left, nothing to remove", kSpaces, Key::ShiftLeft, "«a\nb»", "«a\nb»"},
        {"left, empty text", kSpaces, Key::ShiftLeft, "|", "|"},
        {"left, caret in the leading spaces", kSpaces, Key::ShiftLeft, "  |  x", "|x"},
        // The selection never ends before the start of its last line.
        {"left, into the last line's spaces", kSpaces, Key::ShiftLeft, "«a\n  »  b\n    c",
         "«a\n»b\n    c"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Range selection;
        QString text = unmark(row.before, &selection);
        StringTextSource source(text);
        const std::optional<TextEdit> edit =
            run(TypingRules(row.settings), row.key, source, selection);
        Range shown = Range::notFound();
        if (edit) {
            // An edit that would change nothing is none, so that it leaves no undo step.
            EXPECT_FALSE(edit->range.length == 0 && edit->string.isEmpty());
            text.replace(edit->range.location, edit->range.length, edit->string);
            selection = edit->selection;
            shown = edit->shown;
        }
        EXPECT_EQ(mark(text, selection).toStdString(), row.after.toStdString());
        EXPECT_EQ(shown, row.shown);
    }
}

TEST(TypingRules, TypedClosingBracketsFindTheirOpeningOnScreen)
{
    const Settings chevrons = with(kTabs, &Settings::chevronMatching, true);
    const Settings off = with(kTabs, &Settings::autoBraceMatching, false);
    EXPECT_TRUE(TypingRules(kTabs).matchesTypedBracket(")"));
    EXPECT_TRUE(TypingRules(kTabs).matchesTypedBracket("}"));
    EXPECT_TRUE(TypingRules(chevrons).matchesTypedBracket(">"));
    EXPECT_FALSE(TypingRules(kTabs).matchesTypedBracket(">"));
    EXPECT_FALSE(TypingRules(off).matchesTypedBracket(")"));
    EXPECT_FALSE(TypingRules(kTabs).matchesTypedBracket("("));
    EXPECT_FALSE(TypingRules(kTabs).matchesTypedBracket("))"));

    struct Case {
        QString text;
        Range shown;
        QChar closing;
        Range opening;
    };
    const Case cases[] = {
        // The last ")" goes with the second "(".
        {"((a)(b))", {0, 8}, u')', {1, 1}},
        {"<b>", {0, 3}, u'>', {0, 1}},
        {"a)", {0, 2}, u')', {0, 0}},
        {"(a))", {0, 4}, u')', {0, 0}},
        // Positions are the text's, whatever part of it is on screen.
        {"xx\n[a]", {3, 3}, u']', {3, 1}},
        // An opening bracket scrolled out of sight is not found.
        {"(\nline\n)", {2, 6}, u')', {0, 0}},
    };
    for (const Case& c : cases) {
        StringTextSource source(c.text);
        EXPECT_EQ(TypingRules::openingBracket(source, c.shown, c.shown.max(), c.closing), c.opening)
            << c.text.toStdString();
    }
}

} // namespace
