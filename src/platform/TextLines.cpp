#include "platform/TextLines.h"

#include <algorithm>

bool TextLines::isLineTerminator(QChar c)
{
    const char16_t u = c.unicode();
    return u == u'\n' || u == u'\r' || u == 0x0085 || u == 0x2028 || u == 0x2029;
}

qsizetype TextLines::lineStart(QStringView text, qsizetype position)
{
    qsizetype p = std::clamp(position, qsizetype(0), text.size());
    // A position between CR and LF still belongs to the line the CR ends.
    if (p > 0 && p < text.size() && text[p] == u'\n' && text[p - 1] == u'\r') {
        --p;
    }
    while (p > 0 && !isLineTerminator(text[p - 1])) {
        --p;
    }
    return p;
}

qsizetype TextLines::lineEnd(QStringView text, qsizetype position)
{
    const qsizetype n = text.size();
    qsizetype p = std::clamp(position, qsizetype(0), n);
    if (p > 0 && p < n && text[p] == u'\n' && text[p - 1] == u'\r') {
        return p + 1;
    }
    while (p < n && !isLineTerminator(text[p])) {
        ++p;
    }
    if (p < n) {
        if (text[p] == u'\r' && p + 1 < n && text[p + 1] == u'\n') {
            ++p;
        }
        ++p;
    }
    return p;
}

qsizetype TextLines::contentsEnd(QStringView text, qsizetype position)
{
    const qsizetype start = lineStart(text, position);
    qsizetype end = lineEnd(text, position);
    if (end > start && isLineTerminator(text[end - 1])) {
        --end;
        if (end > start && text[end] == u'\n' && text[end - 1] == u'\r') {
            --end;
        }
    }
    return end;
}

Range TextLines::lineRangeForRange(QStringView text, Range range)
{
    const qsizetype start = lineStart(text, range.location);
    qsizetype last = range.max();
    // A range that ends right after a terminator does not reach into the next line.
    if (range.length > 0) {
        last = lineEnd(text, range.max() - 1);
    } else {
        last = lineEnd(text, range.location);
    }
    return {start, std::max(last, start) - start};
}
