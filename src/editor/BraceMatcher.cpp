#include "editor/BraceMatcher.h"

#include <algorithm>

QChar BraceMatcher::openingBracketFor(QChar closing)
{
    switch (closing.unicode()) {
    case ')':
        return QLatin1Char('(');
    case ']':
        return QLatin1Char('[');
    case '}':
        return QLatin1Char('{');
    case '>':
        return QLatin1Char('<');
    default:
        return {};
    }
}

Range BraceMatcher::autoBraceMatching(QStringView visible, qsizetype insertion, QChar closing)
{
    const QChar opening = openingBracketFor(closing);
    const qsizetype q = std::clamp<qsizetype>(insertion, 0, visible.size());
    if (opening.isNull() || q == 0) {
        return {0, 0};
    }
    const qsizetype nearest = visible.first(q).lastIndexOf(opening);
    if (nearest < 0) {
        return {0, 0};
    }
    const qsizetype closings = visible.mid(nearest, q - nearest).count(closing);
    qsizetype found = q;
    for (qsizetype i = 0; i < closings; ++i) {
        found = found > 0 ? visible.first(found).lastIndexOf(opening) : -1;
        if (found < 0) {
            return {0, 0};
        }
    }
    return {found, 1};
}
