#pragma once

#include "editor/LineShifter.h"
#include "editor/TextEdit.h"
#include "platform/Range.h"

#include <QChar>
#include <QString>

#include <optional>

class TextSource;

/// The rules that shape typed text: the automatic indentation of a new line (one level more
/// after "{", with the "}" on a line of its own), the tab unit (a tab or four spaces), deleting
/// a whole unit of spaces at once, shifting lines and the typed closing brackets that look for
/// their opening ones. They read the text and answer the edit to make, never making it, so
/// that every view (or a test) gets the same text: the view applies each edit as one undo
/// step. They read only the lines around the selection, however long the text.
class TypingRules
{
public:
    /// What the rules follow: each pane holds its own, as its window's toggles set them.
    struct Settings {
        bool autoIndent = false;
        bool autoIndentBraces = false;
        bool autoIndentClosingBraces = false;
        /// The tab unit is four spaces rather than a tab.
        bool spaceTab = false;
        bool autoBraceMatching = false;
        /// ">" looks for its "<" too.
        bool chevronMatching = false;
    };

    explicit TypingRules(const Settings& settings)
        : _settings(settings)
    {}

    /// One indentation level.
    QString tabUnit() const { return LineShifter::tabUnit(_settings.spaceTab); }

    /// Return: a line break in place of `selection`, followed by the indentation of the line
    /// it ends (see autoIndent()). The edit shows the "}" it puts in.
    TextEdit insertNewline(TextSource& text, Range selection) const;
    /// Gives the line that `selection` has just begun the leading white space of the line
    /// before it, and after a line ending in "{" one tab unit more and, below, a "}" as
    /// indented as that line. None when there is nothing to put in.
    std::optional<TextEdit> autoIndent(TextSource& text, Range selection) const;
    /// Tab: one tab unit in place of the selection.
    TextEdit insertTab(Range selection) const;
    /// Backspace: the selection, else the tab unit of spaces just before the insertion point,
    /// else the character before it. None at the start of the text.
    std::optional<TextEdit> deleteBackward(TextSource& text, Range selection) const;

    /// One tab unit more at the start of every line `selection` touches.
    TextEdit shiftRight(TextSource& text, Range selection) const;
    /// One tab unit less; none when no line would change.
    std::optional<TextEdit> shiftLeft(TextSource& text, Range selection) const;

    /// ")", "]", "}" or ">".
    static bool isClosingBracket(const QString& string);
    /// Whether typing `string` asks for the opening bracket it closes to be shown.
    bool matchesTypedBracket(const QString& string) const;
    /// The opening bracket that `closing`, just before `insertion`, closes among the
    /// characters of `shown` (the part of the text on screen); (0, 0) when there is none.
    static Range openingBracket(TextSource& text, Range shown, qsizetype insertion, QChar closing);

private:
    /// `lead` in place of `range`, then the indentation that follows `line`.
    TextEdit indentedAfter(QStringView line, Range range, const QString& lead) const;

    Settings _settings;
};
