#include "editor/TypingRules.h"

#include <QTextCursor>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace {

using Settings = TypingRules::Settings;

constexpr Settings kTabs{.autoIndent = true,
                         .autoIndentBraces = true,
                         .autoIndentClosingBraces = true,
                         .spaceTab = false,
                         .autoBraceMatching = true,
                         .chevronMatching = false};
constexpr Settings kSpaces{.autoIndent = true,
                           .autoIndentBraces = true,
                           .autoIndentClosingBraces = true,
                           .spaceTab = true,
                           .autoBraceMatching = true,
                           .chevronMatching = false};

Settings with(Settings settings, bool Settings::*flag, bool value)
{
    settings.*flag = value;
    return settings;
}

// A text with its selection marked: "|" is the insertion point, "«" and "»" the ends of a
// selection.
struct Marked {
    QString text;
    Range selection;
};

Marked unmark(const QString& marked)
{
    QString text = marked;
    const qsizetype caret = text.indexOf(u'|');
    if (caret >= 0) {
        text.remove(caret, 1);
        return {text, {caret, 0}};
    }
    const qsizetype start = text.indexOf(u'«');
    text.remove(start, 1);
    const qsizetype end = text.indexOf(u'»');
    text.remove(end, 1);
    return {text, {start, end - start}};
}

QString mark(const QTextCursor& cursor)
{
    QString text = cursor.document()->toPlainText();
    const int start = cursor.selectionStart();
    const int end = cursor.selectionEnd();
    if (start == end) {
        return text.insert(start, u'|');
    }
    return text.insert(end, u'»').insert(start, u'«');
}

enum class Edit { Return, Tab, Backspace, ShiftRight, ShiftLeft };

// What the rule answered besides the edit: the "}" that Return put in.
Range run(const TypingRules& rules, Edit edit, QTextCursor& cursor)
{
    QTextDocument* document = cursor.document();
    const Range selection(cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart());
    switch (edit) {
    case Edit::Return:
        return rules.insertNewline(cursor);
    case Edit::Tab:
        rules.insertTab(cursor);
        break;
    case Edit::Backspace:
        rules.deleteBackward(cursor);
        break;
    case Edit::ShiftRight:
        TypingRules::replace(cursor, rules.shiftRight(document, selection));
        break;
    case Edit::ShiftLeft:
        if (const auto shift = rules.shiftLeft(document, selection)) {
            TypingRules::replace(cursor, *shift);
        }
        break;
    }
    return Range::notFound();
}

TEST(TypingRules, EachRuleIsOneUndoStepOnTheDocument)
{
    struct Case {
        const char* what;
        Settings settings;
        Edit edit;
        QString before;
        QString after;
        Range closingBrace = Range::notFound();
    };
    const Case cases[] = {
        // Return copies the line's indentation, one level more after "{", and closes it.
        {"brace, tabs", kTabs, Edit::Return, "  if (x) {|", "  if (x) {\n  \t|\n  }", {17, 1}},
        {"brace, spaces",
         kSpaces,
         Edit::Return,
         "  if (x) {|",
         "  if (x) {\n      |\n  }",
         {20, 1}},
        {"brace alone", kTabs, Edit::Return, "{|", "{\n\t|\n}", {4, 1}},
        {"white space after the brace", kTabs, Edit::Return, "x {  |", "x {  \n\t|\n}", {8, 1}},
        {"parenthesis", kTabs, Edit::Return, "\tf(|", "\tf(\n\t|"},
        {"white space only", kSpaces, Edit::Return, " \t |", " \t \n \t |"},
        {"no closing brace", with(kTabs, &Settings::autoIndentClosingBraces, false), Edit::Return,
         "  {|", "  {\n  \t|"},
        {"no brace indentation", with(kTabs, &Settings::autoIndentBraces, false), Edit::Return,
         "  {|", "  {\n  |"},
        {"no indentation", with(kTabs, &Settings::autoIndent, false), Edit::Return, "  {|",
         "  {\n|"},
        {"selection replaced", kTabs, Edit::Return, "\ta«bc»d", "\ta\n\t|d"},
        // Tab and Backspace work in tab units.
        {"tab", kTabs, Edit::Tab, "a«b»c", "a\t|c"},
        {"tab as spaces", kSpaces, Edit::Tab, "x|", "x    |"},
        {"four spaces", kSpaces, Edit::Backspace, "        |", "    |"},
        {"three spaces and a letter", kSpaces, Edit::Backspace, "a   |", "a  |"},
        {"spaces with tabs", kTabs, Edit::Backspace, "    |", "   |"},
        {"selection", kSpaces, Edit::Backspace, "ab«    »", "ab|"},
        {"start of text", kSpaces, Edit::Backspace, "|ab", "|ab"},
        // Shifts: every touched line, the selection kept on the lines.
        {"right, empty text", kSpaces, Edit::ShiftRight, "|", "    |"},
        {"right, middle lines", kTabs, Edit::ShiftRight, "a\n«b\nc»\nd", "a\n\t«b\n\tc»\nd"},
        {"left, caret", kTabs, Edit::ShiftLeft, "a\n\tb|\n\tc\nd", "a\nb|\n\tc\nd"},
        {"left, spaces or a tab", kSpaces, Edit::ShiftLeft, "«  \tx\n\t  x»", "«\tx\n  x»"},
        {"left, nothing to remove", kSpaces, Edit::ShiftLeft, "«a\nb»", "«a\nb»"},
        {"right, an empty line among them", kTabs, Edit::ShiftRight, "«a\n\nc»\nd",
         "\t«a\n\t\n\tc»\nd"},
        {"right, a selection starting with a line break", kSpaces, Edit::ShiftRight, "«\nx»\n",
         "«    \n    x»\n"},
        {"left, one space or one tab", kTabs, Edit::ShiftLeft, "«  a\n\t\tb»", "« a\n\tb»"},
        {"left, empty text", kSpaces, Edit::ShiftLeft, "|", "|"},
        {"left, caret in the leading spaces", kSpaces, Edit::ShiftLeft, "  |  x", "|x"},
        {"left, later lines", kSpaces, Edit::ShiftLeft, "«a\n    b\n    c»", "«a\nb\nc»"},
        // The selection never ends before the start of its last line.
        {"left, into the last line's spaces", kSpaces, Edit::ShiftLeft, "«a\n  »  b\n    c",
         "«a\n»b\n    c"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Marked before = unmark(c.before);
        QTextDocument document;
        document.setPlainText(before.text);
        QTextCursor cursor(&document);
        cursor.setPosition(int(before.selection.location));
        cursor.setPosition(int(before.selection.max()), QTextCursor::KeepAnchor);
        ASSERT_FALSE(document.isUndoAvailable());

        const Range closing = run(TypingRules(c.settings), c.edit, cursor);
        EXPECT_EQ(mark(cursor), c.after);
        EXPECT_EQ(closing, c.closingBrace);
        // One undo takes the whole edit back; no change leaves nothing to undo.
        EXPECT_EQ(document.isUndoAvailable(), document.toPlainText() != before.text);
        document.undo();
        EXPECT_EQ(document.toPlainText(), before.text);
        EXPECT_FALSE(document.isUndoAvailable());
    }
}

TEST(TypingRules, TypedClosingBracketsFindTheirOpeningOnScreen)
{
    struct Typed {
        Settings settings;
        QString string;
        bool matches;
    };
    const Settings chevrons = with(kTabs, &Settings::chevronMatching, true);
    const Settings off = with(kTabs, &Settings::autoBraceMatching, false);
    const Typed typed[] = {
        {kTabs, ")", true},  {kTabs, "]", true},    {kTabs, "}", true},
        {kTabs, ">", false}, {chevrons, ">", true}, {off, ")", false},
        {kTabs, "(", false}, {kTabs, "))", false},  {chevrons, "a", false},
    };
    for (const Typed& t : typed) {
        EXPECT_EQ(TypingRules(t.settings).matchesTypedBracket(t.string), t.matches)
            << t.string.toStdString() << " chevrons " << t.settings.chevronMatching << " matching "
            << t.settings.autoBraceMatching;
    }

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
        // Positions are the document's, whatever part of it is on screen.
        {"xx\n[a]", {3, 3}, u']', {3, 1}},
        // An opening bracket scrolled out of sight is not found.
        {"(\nline\n)", {2, 6}, u')', {0, 0}},
    };
    for (const Case& c : cases) {
        QTextDocument document;
        document.setPlainText(c.text);
        EXPECT_EQ(TypingRules::openingBracket(&document, c.shown, c.shown.max(), c.closing),
                  c.opening)
            << c.text.toStdString();
    }
}

} // namespace
