#pragma once

#include "editor/LineShifter.h"
#include "platform/Range.h"

#include <QChar>
#include <QString>

#include <optional>

class QTextCursor;
class QTextDocument;

/// The rules that shape typed text: the automatic indentation of a new line (one level more
/// after "{", with the "}" on a line of its own), the tab unit (a tab or four spaces), deleting
/// a whole unit of spaces at once, shifting lines and the typed closing brackets that look for
/// their opening ones. They work on the document through a cursor, never on a view, so that
/// any pane (or a test) gets the same text; each edit is one edit block, so one undo step.
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

    /// Return: a line break in place of the selection, indented by autoIndent(). Leaves
    /// `cursor` where the insertion point goes, and answers the "}" it put in (not found when
    /// none), which the view shows.
    Range insertNewline(QTextCursor& cursor) const;
    /// Gives the line `cursor` has just begun the leading white space of the line before it,
    /// and after a line ending in "{" one tab unit more and, below, a "}" as indented as that
    /// line. Answers the "}" put in, not found when none.
    Range autoIndent(QTextCursor& cursor) const;
    /// Tab: one tab unit in place of the selection.
    void insertTab(QTextCursor& cursor) const;
    /// Backspace: the selection, else the tab unit of spaces just before the insertion point,
    /// else the character before it.
    void deleteBackward(QTextCursor& cursor) const;

    /// One tab unit more at the start of every line `selection` touches, in document
    /// positions; the view applies it as one named step.
    LineShifter::Replacement shiftRight(QTextDocument* document, Range selection) const;
    /// One tab unit less; none when no line would change.
    std::optional<LineShifter::Replacement> shiftLeft(QTextDocument* document,
                                                      Range selection) const;
    /// Puts `replacement.string` in place of `replacement.range` as one edit block, then has
    /// `cursor` select `replacement.selection`.
    static void replace(QTextCursor& cursor, const LineShifter::Replacement& replacement);

    /// ")", "]", "}" or ">".
    static bool isClosingBracket(const QString& string);
    /// Whether typing `string` asks for the opening bracket it closes to be shown.
    bool matchesTypedBracket(const QString& string) const;
    /// The opening bracket that `closing`, just before `insertion`, closes among the
    /// characters of `shown` (the part of the text on screen); (0, 0) when there is none.
    static Range openingBracket(QTextDocument* document, Range shown, qsizetype insertion,
                                QChar closing);

private:
    Settings _settings;
};
