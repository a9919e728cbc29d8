#pragma once

#include "platform/Range.h"

#include <QString>
#include <QStringView>

#include <vector>

/// The search and go-to computations, on plain strings: what the shared search manager
/// and its panes call to find occurrences, choose the next one, plan a replace-all and
/// read line descriptions.
class SearchEngine
{
public:
    /// Every occurrence of `findString`, overlapping ones included, in ascending order.
    /// The text is walked like a scanner that skips white space and line breaks before
    /// each step, so a search string that begins with one of those is never found.
    /// With `wholeWord`, only the occurrences that cut no word in two (isWholeWord()).
    static std::vector<Range> findAllString(const QString& string, const QString& findString,
                                            bool caseSensitive, bool wholeWord = false);
    /// Every match of `pattarn` (ICU, anchors at every line, LF the only line separator).
    /// When the pattern has capture groups, the groups that took part are listed in group
    /// order instead of the whole match. A pattern that does not compile finds nothing.
    /// With `wholeWord`, only matches that cut no word in two count: the expression may
    /// then match differently (a longer alternative) rather than lose the occurrence.
    static std::vector<Range> findRegularExpressionOfAllString(const QString& string,
                                                               const QString& pattarn,
                                                               bool caseSensitive, bool multiLine,
                                                               bool wholeWord = false);
    /// Whether `range` cuts no word of `text` in two: at each of its ends, the characters on
    /// both sides are not both word characters. Word characters are those of ICU's `\w`
    /// (letters and marks of every script, decimal digits, connector punctuation such as
    /// '_'), so plain text and regular expressions agree.
    static bool isWholeWord(QStringView text, Range range);
    /// `pattarn` made to match only where isWholeWord() holds for its match.
    static QString wholeWordPattern(const QString& pattarn);
    /// The option bits a search uses: 48, plus 1 without case sensitivity, plus 8 when
    /// the dot crosses lines.
    static unsigned regularExpressionOptions(bool caseSensitive, bool multiLine);
    /// The occurrence after (or before) the selection's location, wrapping around at
    /// either end; NSNotFound for an empty list.
    static Range selectedMatchingRange(const std::vector<Range>& ranges, Range selectRange,
                                       bool previous, QStringView allString);

    /// Reads one go-to component: "[+|-]from[-to]" with blanks allowed around tokens.
    static bool parseLineDescription(const QString& component, qint64* fromLineSpec,
                                     qint64* toLineSpec, qint64* relative);
    /// The lines named by from, to and relative in `text`, measured from the selection;
    /// false when they do not all exist.
    static bool getRange(Range* range, QStringView text, Range selection, qint64 fromLineSpec,
                         qint64 toLineSpec, qint64 relative);
    /// One component's lines, or NSNotFound when it is malformed or names no line.
    static Range selectLinesUsingDescription(const QString& component, QStringView text,
                                             Range selection);
};
