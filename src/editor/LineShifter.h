#pragma once

#include "editor/TextEdit.h"
#include "platform/Range.h"

#include <QString>
#include <QStringView>

#include <optional>

/// Shifting the lines a selection touches one indentation level right or left. Works on the
/// text alone; the text view applies the result as one undoable step.
class LineShifter
{
public:
    /// One indentation level: four spaces, or one tab.
    static QString tabUnit(bool spaceTab)
    {
        return spaceTab ? QStringLiteral("    ") : QStringLiteral("\t");
    }
    /// The lines `range` touches, each with its terminator (a line ends after "\n").
    static Range lineRangeForRange(QStringView text, Range range);

    /// Every touched line, empty ones included, gains one tab unit at its start.
    static TextEdit shiftRight(QStringView text, Range selection, bool spaceTab);
    /// Every touched line loses up to four leading spaces or one tab (`spaceTab` on), or one
    /// space or tab (off). None when nothing would change.
    static std::optional<TextEdit> shiftLeft(QStringView text, Range selection, bool spaceTab);
};
