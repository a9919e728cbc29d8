#include "editor/LineShifter.h"

#include <QList>

#include <algorithm>

Range LineShifter::lineRangeForRange(QStringView text, Range range)
{
    const qsizetype size = text.size();
    qsizetype start = std::clamp<qsizetype>(range.location, 0, size);
    qsizetype end = std::clamp<qsizetype>(range.max(), start, size);
    while (start > 0 && text[start - 1] != QLatin1Char('\n')) {
        --start;
    }
    // An empty range at a line start, or a range ending just after a line break, still
    // takes the line it stands in.
    if (end > start && text[end - 1] == QLatin1Char('\n') && range.length > 0) {
        return {start, end - start};
    }
    while (end < size && text[end] != QLatin1Char('\n')) {
        ++end;
    }
    if (end < size) {
        ++end;
    }
    return {start, end - start};
}

TextEdit LineShifter::shiftRight(QStringView text, Range selection, bool spaceTab)
{
    Range lines = lineRangeForRange(text, selection);
    if (lines.length > 1) {
        lines.length -= 1;
    }
    const QString unit = tabUnit(spaceTab);
    const qsizetype unitLength = unit.size();
    QString block = unit;
    qsizetype count = 0;
    for (QChar c : text.mid(lines.location, lines.length)) {
        block.append(c);
        if (c == QLatin1Char('\n')) {
            block.append(unit);
            ++count;
        }
    }
    Range newSelection;
    const bool startsWithBreak =
        selection.length > 0 && text.mid(selection.location).startsWith(QLatin1Char('\n'));
    if (selection.location == lines.location && selection.length > 0 && startsWithBreak) {
        newSelection = {selection.location, selection.length + unitLength * (count + 1)};
    } else {
        newSelection = {selection.location + unitLength, selection.length + unitLength * count};
    }
    return {lines, block, newSelection};
}

std::optional<TextEdit> LineShifter::shiftLeft(QStringView text, Range selection, bool spaceTab)
{
    Range lines = lineRangeForRange(text, selection);
    if (lines.max() == 0) {
        return std::nullopt;
    }
    if (lines.length > 1 && text[lines.max() - 1] == QLatin1Char('\n')) {
        lines.length -= 1;
    }
    const qsizetype width = spaceTab ? 4 : 1;
    const QList<QStringView> split =
        text.mid(lines.location, lines.length).split(QLatin1Char('\n'));
    qsizetype start = selection.location;
    qsizetype length = selection.length;
    QString block;
    qsizetype total = 0;
    for (qsizetype i = 0; i < split.size(); ++i) {
        const QStringView line = split[i];
        qsizetype removed = 0;
        bool spaceRemoved = false;
        for (qsizetype j = 0; j < width && j < line.size(); ++j) {
            const QChar c = line[j];
            if (c == QLatin1Char(' ')) {
                ++removed;
                spaceRemoved = true;
            } else {
                if (c == QLatin1Char('\t') && !spaceRemoved) {
                    ++removed;
                }
                break;
            }
        }
        if (i == 0) {
            start -= removed;
            if (start < lines.location) {
                length -= lines.location - start;
                length = std::max<qsizetype>(length, 0);
                start = lines.location;
            }
        } else {
            length -= removed;
            const qsizetype lineStart = lines.location + block.size();
            if (start + length < lineStart) {
                length = lineStart - start;
            }
        }
        block.append(line.mid(removed));
        if (i + 1 < split.size()) {
            block.append(QLatin1Char('\n'));
        }
        total += removed;
    }
    if (total == 0) {
        return std::nullopt;
    }
    return TextEdit{lines, block, {start, length}};
}
