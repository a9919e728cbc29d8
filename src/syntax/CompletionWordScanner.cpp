#include "syntax/CompletionWordScanner.h"

#include <unicode/uchar.h>

bool CompletionWordScanner::endsWord(char32_t c)
{
    if (c < 0x80) {
        const char32_t lower = c | 0x20;
        const bool word = (lower >= U'a' && lower <= U'z') || (c >= U'0' && c <= U'9') || c == U'_';
        return !word;
    }
    if (c == 0x200C || c == 0x200D || u_hasBinaryProperty(UChar32(c), UCHAR_ALPHABETIC)) {
        return false;
    }
    switch (u_charType(UChar32(c))) {
    case U_NON_SPACING_MARK:
    case U_COMBINING_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_DECIMAL_DIGIT_NUMBER:
    case U_CONNECTOR_PUNCTUATION:
        return false;
    default:
        return true;
    }
}

bool CompletionWordScanner::isBoundary(QChar c, Kind kind)
{
    // Only ASCII: a boundary never falls between the halves of a surrogate pair, and a
    // mark after it cannot be taken for the end of a word.
    const char16_t u = c.unicode();
    if (u >= 0x80) {
        return false;
    }
    const char16_t lower = u | 0x20;
    const bool wordCharacter =
        (lower >= u'a' && lower <= u'z') || (u >= u'0' && u <= u'9') || u == u'_';
    if (kind == Kind::Plain) {
        return !wordCharacter;
    }
    return !wordCharacter && u != u'|';
}
