#pragma once

#include <QString>

#include <limits>

/// "Nothing found": the location of a range that names no text.
inline constexpr qsizetype NSNotFound = std::numeric_limits<qint64>::max();

/// A span of text in UTF-16 code units (QString indices).
struct Range {
    qsizetype location = 0;
    qsizetype length = 0;

    constexpr Range() = default;
    constexpr Range(qsizetype loc, qsizetype len)
        : location(loc)
        , length(len)
    {}

    static constexpr Range notFound() { return {NSNotFound, 0}; }

    constexpr qsizetype max() const { return location + length; }
    constexpr bool isNotFound() const { return location == NSNotFound; }
    constexpr bool contains(qsizetype index) const { return index >= location && index < max(); }
    constexpr bool operator==(const Range&) const = default;

    /// The overlap of two ranges; an empty range at 0 when they do not meet.
    Range intersection(Range other) const;
    /// The smallest range covering both.
    Range unionWith(Range other) const;
};

/// "{location, length}"
QString NSStringFromRange(Range range);
/// Reads the first two integers of the text as location and length; missing ones read as 0.
Range NSRangeFromString(const QString& text);
