#include "search/SearchEngine.h"

#include "platform/Regex.h"
#include "platform/Scanner.h"
#include "platform/TextLines.h"

#include <unicode/uchar.h>

namespace {

/// ICU's `\w`: [\p{Alphabetic}\p{Mark}\p{Decimal_Number}\p{Connector_Punctuation}\u200c\u200d].
bool isWordCharacter(char32_t c)
{
    constexpr uint32_t categories = U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK;
    return u_hasBinaryProperty(UChar32(c), UCHAR_ALPHABETIC) ||
           (U_GET_GC_MASK(UChar32(c)) & categories) != 0 || c == 0x200C || c == 0x200D;
}

/// Whether position `p` of `text` lies inside a word: word characters on both sides.
bool isInsideWord(QStringView text, qsizetype p)
{
    if (p <= 0 || p >= text.size()) {
        return false;
    }
    char32_t before = text[p - 1].unicode();
    if (QChar::isLowSurrogate(before) && p >= 2 && text[p - 2].isHighSurrogate()) {
        before = QChar::surrogateToUcs4(text[p - 2], text[p - 1]);
    }
    char32_t after = text[p].unicode();
    if (QChar::isHighSurrogate(after) && p + 1 < text.size() && text[p + 1].isLowSurrogate()) {
        after = QChar::surrogateToUcs4(text[p], text[p + 1]);
    }
    return isWordCharacter(before) && isWordCharacter(after);
}

} // namespace

bool SearchEngine::isWholeWord(QStringView text, Range range)
{
    return !isInsideWord(text, range.location) && !isInsideWord(text, range.max());
}

QString SearchEngine::wholeWordPattern(const QString& pattarn)
{
    // At each end: no word character before, or none after, as isWholeWord() asks. The group
    // captures nothing, so the pattern's own groups keep their numbers.
    static const QString boundary = QStringLiteral("(?:(?<!\\w)|(?!\\w))");
    return boundary + QStringLiteral("(?:") + pattarn + u')' + boundary;
}

std::vector<Range> SearchEngine::findAllString(const QString& string, const QString& findString,
                                               bool caseSensitive, bool wholeWord)
{
    std::vector<Range> result;
    if (findString.isEmpty()) {
        return result;
    }
    Scanner scanner(string);
    scanner.setCaseSensitive(caseSensitive);
    while (!scanner.isAtEnd()) {
        scanner.scanUpToString(findString);
        const qsizetype start = scanner.scanLocation();
        if (!scanner.scanString(findString)) {
            break;
        }
        if (!wholeWord || isWholeWord(string, {start, findString.size()})) {
            result.push_back({start, findString.size()});
        }
        scanner.setScanLocation(start + 1);
    }
    return result;
}

unsigned SearchEngine::regularExpressionOptions(bool caseSensitive, bool multiLine)
{
    unsigned options = Regex::AnchorsMatchLines | Regex::UseUnixLineSeparators;
    if (!caseSensitive) {
        options |= Regex::CaseInsensitive;
    }
    if (multiLine) {
        options |= Regex::DotMatchesLineSeparators;
    }
    return options;
}

std::vector<Range> SearchEngine::findRegularExpressionOfAllString(const QString& string,
                                                                  const QString& pattarn,
                                                                  bool caseSensitive,
                                                                  bool multiLine, bool wholeWord)
{
    std::vector<Range> result;
    const unsigned options = regularExpressionOptions(caseSensitive, multiLine);
    // A broken pattern finds nothing, even where the parentheses around it would balance it.
    if (wholeWord && !Regex(pattarn, options).isValid()) {
        return result;
    }
    const Regex regex(wholeWord ? wholeWordPattern(pattarn) : pattarn, options);
    regex.forEachMatch(string, [&result](const Regex::Match& match) {
        if (match.groups.size() == 1) {
            result.push_back(match.range());
            return true;
        }
        // Groups that did not take part have no text to show or replace.
        for (size_t g = 1; g < match.groups.size(); ++g) {
            if (!match.groups[g].isNotFound()) {
                result.push_back(match.groups[g]);
            }
        }
        return true;
    });
    return result;
}

Range SearchEngine::selectedMatchingRange(const std::vector<Range>& ranges, Range selectRange,
                                          bool previous, QStringView allString)
{
    if (ranges.empty()) {
        return Range::notFound();
    }
    const qsizetype s = selectRange.location;
    if (!previous) {
        for (const Range& range : ranges) {
            if (range.location > s) {
                return range;
            }
        }
        return ranges.front();
    }
    const Range* chosen = nullptr;
    for (const Range& range : ranges) {
        if (range.location < s) {
            chosen = &range;
        }
    }
    if (!chosen) {
        for (const Range& range : ranges) {
            if (range.location < allString.size()) {
                chosen = &range;
            }
        }
    }
    return chosen ? *chosen : Range::notFound();
}

bool SearchEngine::parseLineDescription(const QString& component, qint64* fromLineSpec,
                                        qint64* toLineSpec, qint64* relative)
{
    Scanner scanner(component);
    scanner.setCaseSensitive(true);
    qint64 rel = 0;
    if (scanner.scanString(QStringLiteral("+"))) {
        rel = 1;
    } else if (scanner.scanString(QStringLiteral("-"))) {
        rel = -1;
    }
    qint64 from = 0;
    if (!scanner.scanInteger(&from)) {
        return false;
    }
    qint64 to = from;
    if (scanner.scanString(QStringLiteral("-"))) {
        if (!scanner.scanInteger(&to) || to < from) {
            return false;
        }
    }
    if (!scanner.isAtEnd()) {
        return false;
    }
    *fromLineSpec = from;
    *toLineSpec = to;
    *relative = rel;
    return true;
}

bool SearchEngine::getRange(Range* range, QStringView text, Range selection, qint64 fromLineSpec,
                            qint64 toLineSpec, qint64 relative)
{
    const qsizetype length = text.size();
    qsizetype r = 0;
    if (relative == 0) {
        if (fromLineSpec == 0) {
            return false;
        }
    } else if (relative > 0) {
        const qsizetype reference = selection.length > 0 ? selection.max() - 1 : selection.location;
        r = TextLines::lineStart(text, reference);
    } else {
        r = TextLines::lineStart(text, selection.location);
    }

    if (relative >= 0) {
        for (qint64 i = relative == 0 ? 1 : 0; i < fromLineSpec; ++i) {
            if (r == length) {
                return false;
            }
            r = TextLines::lineEnd(text, r);
        }
        qsizetype e = r;
        for (qint64 j = fromLineSpec; j <= toLineSpec; ++j) {
            if (e == length) {
                return false;
            }
            e = TextLines::lineEnd(text, e);
        }
        *range = {r, e - r};
        return true;
    }

    for (qint64 i = 1; i < fromLineSpec; ++i) {
        if (r == 0) {
            return false;
        }
        r = TextLines::lineStart(text, r - 1);
    }
    const qsizetype e = r;
    for (qint64 j = fromLineSpec; j <= toLineSpec; ++j) {
        if (r == 0) {
            return false;
        }
        r = TextLines::lineStart(text, r - 1);
    }
    *range = {r, e - r};
    return true;
}

Range SearchEngine::selectLinesUsingDescription(const QString& component, QStringView text,
                                                Range selection)
{
    qint64 from = 0;
    qint64 to = 0;
    qint64 relative = 0;
    Range range;
    if (!parseLineDescription(component, &from, &to, &relative) ||
        !getRange(&range, text, selection, from, to, relative)) {
        return Range::notFound();
    }
    return range;
}
