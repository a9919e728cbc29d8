#pragma once

#include "platform/Range.h"

#include <QChar>
#include <QStringView>

/// Finds the opening bracket that a typed closing bracket closes, within the text shown.
class BraceMatcher
{
public:
    /// The opening bracket of `closing` (")", "]", "}" or ">"); a null QChar for others.
    static QChar openingBracketFor(QChar closing);

    /// Within `visible` (the shown text), the opening bracket closed by the `closing`
    /// character just before `insertion`. Only the closing brackets after the nearest
    /// opening bracket are counted. (0, 0) when there is none.
    static Range autoBraceMatching(QStringView visible, qsizetype insertion, QChar closing);
};
