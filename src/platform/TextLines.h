#pragma once

#include "platform/Range.h"

#include <QStringView>

/// Lines of a string the way the editor counts them for navigation: a line ends after
/// LF, CR, CR LF, NEL (U+0085), LINE SEPARATOR or PARAGRAPH SEPARATOR, and its range
/// includes that terminator.
class TextLines
{
public:
    static bool isLineTerminator(QChar c);
    /// The start of the line holding `position` (a position at the very end belongs to
    /// the last line).
    static qsizetype lineStart(QStringView text, qsizetype position);
    /// The end of the line holding `position`, after its terminator.
    static qsizetype lineEnd(QStringView text, qsizetype position);
    /// The whole lines touched by `range`, terminators included.
    static Range lineRangeForRange(QStringView text, Range range);
    /// Where the terminator of the line holding `position` begins (the line's end when it
    /// has none).
    static qsizetype contentsEnd(QStringView text, qsizetype position);
};
