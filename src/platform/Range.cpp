#include "platform/Range.h"

#include <algorithm>

Range Range::intersection(Range other) const
{
    const qsizetype start = std::max(location, other.location);
    const qsizetype end = std::min(max(), other.max());
    if (end <= start) {
        return {0, 0};
    }
    return {start, end - start};
}

Range Range::unionWith(Range other) const
{
    const qsizetype start = std::min(location, other.location);
    const qsizetype end = std::max(max(), other.max());
    return {start, end - start};
}

QString NSStringFromRange(Range range)
{
    return QStringLiteral("{%1, %2}").arg(range.location).arg(range.length);
}

Range NSRangeFromString(const QString& text)
{
    qsizetype values[2] = {0, 0};
    int found = 0;
    qsizetype i = 0;
    const qsizetype n = text.size();
    while (i < n && found < 2) {
        if (!text[i].isDigit()) {
            ++i;
            continue;
        }
        qsizetype value = 0;
        while (i < n && text[i].isDigit()) {
            const int digit = text[i].digitValue();
            if (value <= (NSNotFound - digit) / 10) {
                value = value * 10 + digit;
            } else {
                value = NSNotFound;
            }
            ++i;
        }
        values[found++] = value;
    }
    return {values[0], values[1]};
}
