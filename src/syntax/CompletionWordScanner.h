#pragma once

#include <QChar>
#include <QStringView>

/// Finds the words completion offers from a text. With a syntax definition, a word is what
/// the pattern "([a-z|A-Z|_].*?)[\W|\s|\)]" captures (case-insensitive, anchors at every
/// line), scanning on from the end of each match; without one, a word is a run of letters,
/// digits, marks and "_".
class CompletionWordScanner
{
public:
    enum class Kind {
        /// The definition's pattern: a word at the very end of the text is not one.
        Pattern,
        /// Runs of word characters.
        Plain,
    };

    /// Calls `take(start, length)` for each word of `text`, in order.
    template <typename Take> static void forEachWord(QStringView text, Kind kind, Take take)
    {
        if (kind == Kind::Plain) {
            forEachPlainWord(text, take);
        } else {
            forEachPatternWord(text, take);
        }
    }

    /// Whether a scan that starts just after `c` finds the same words from there on as a
    /// scan of the whole text does: `c` ends any word and starts none.
    static bool isBoundary(QChar c, Kind kind);

    static bool isPlainWordCharacter(QChar c)
    {
        return c.isLetterOrNumber() || c == QLatin1Char('_') || c.isMark();
    }

private:
    // The pattern, without the cost of the regular-expression engine: a word starts at a
    // character of the first set (which, ignoring case, also holds the long s and the
    // Kelvin sign) and runs to the first character that is not a word character of ICU's
    // "\w", or is "|"; that character ends the match. "." stops at a line break, but every
    // line break is such a character, so the match never needs to cross one. Past the last
    // such character no word starts.
    static bool startsWord(char16_t c)
    {
        const char16_t lower = c | 0x20;
        return (lower >= u'a' && lower <= u'z') || c == u'_' || c == u'|' || c == 0x017F ||
               c == 0x212A;
    }
    static bool endsWord(char32_t c);

    template <typename Take> static void forEachPatternWord(QStringView text, Take& take)
    {
        const qsizetype size = text.size();
        qsizetype position = 0;
        while (position < size) {
            qsizetype start = position;
            while (start < size && !startsWord(text[start].unicode())) {
                ++start;
            }
            if (start == size) {
                return;
            }
            qsizetype end = start + 1;
            qsizetype next = -1;
            while (end < size) {
                char32_t c = text[end].unicode();
                qsizetype units = 1;
                if (QChar::isHighSurrogate(c) && end + 1 < size && text[end + 1].isLowSurrogate()) {
                    c = QChar::surrogateToUcs4(char16_t(c), text[end + 1].unicode());
                    units = 2;
                }
                if (c == U'|' || endsWord(c)) {
                    next = end + units;
                    break;
                }
                end += units;
            }
            if (next < 0) {
                return;
            }
            take(start, end - start);
            position = next;
        }
    }

    template <typename Take> static void forEachPlainWord(QStringView text, Take& take)
    {
        const qsizetype size = text.size();
        qsizetype i = 0;
        while (i < size) {
            if (!isPlainWordCharacter(text[i])) {
                ++i;
                continue;
            }
            qsizetype end = i + 1;
            while (end < size && isPlainWordCharacter(text[end])) {
                ++end;
            }
            take(i, end - i);
            i = end;
        }
    }
};
