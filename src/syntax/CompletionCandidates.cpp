#include "syntax/CompletionCandidates.h"

#include <QSet>

#include <unicode/uchar.h>

#include <algorithm>

namespace {

bool startsWithIgnoringCase(QStringView word, const QString& prefix)
{
    return word.size() >= prefix.size() &&
           word.first(prefix.size()).compare(prefix, Qt::CaseInsensitive) == 0;
}

void sortIgnoringCase(QStringList& words)
{
    std::stable_sort(words.begin(), words.end(), [](const QString& a, const QString& b) {
        return a.compare(b, Qt::CaseInsensitive) < 0;
    });
}

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c.isMark();
}

// The text's words as the pattern "([a-z|A-Z|_].*?)[\W|\s|\)]" finds them, case-insensitive
// and with anchors at every line, scanning from the end of each match, without the cost of
// the regular-expression engine: a word starts at a character of the first set (which,
// ignoring case, also holds the long s and the Kelvin sign) and runs to the first character
// that is not a word character of ICU's "\w", or is "|"; that character ends the match. "."
// stops at a line break, but every line break is such a character, so the match never
// needs to cross one. Past the last such character no word starts.

bool startsWord(char16_t c)
{
    const char16_t lower = c | 0x20;
    return (lower >= u'a' && lower <= u'z') || c == u'_' || c == u'|' || c == 0x017F || c == 0x212A;
}

bool endsWord(char32_t c)
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

// Calls `take(start, length)` for each word of `text` in order.
template <typename Take> void forEachWord(QStringView text, Take take)
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

} // namespace

QStringList CompletionCandidates::completionsForPartialWord(QStringView text,
                                                            const QString& partialWord,
                                                            const QVariantMap& syntaxDictionary,
                                                            const QStringList& completeWords)
{
    if (partialWord.isEmpty()) {
        return {};
    }
    if (syntaxDictionary.isEmpty() ||
        syntaxDictionary.value(QStringLiteral("Name")).toString() == QLatin1String("Plain Text")) {
        return plainCompletions(text, partialWord);
    }
    QStringList words;
    QSet<QString> taken;
    forEachWord(text, [&](qsizetype start, qsizetype length) {
        if (length <= partialWord.size()) {
            return;
        }
        const QStringView word = text.mid(start, length);
        if (startsWithIgnoringCase(word, partialWord)) {
            const QString copy = word.toString();
            if (!taken.contains(copy)) {
                taken.insert(copy);
                words.append(copy);
            }
        }
    });
    for (const QString& word : completeWords) {
        if (startsWithIgnoringCase(word, partialWord) && !taken.contains(word)) {
            taken.insert(word);
            words.append(word);
        }
    }
    sortIgnoringCase(words);
    return words;
}

QStringList CompletionCandidates::plainCompletions(QStringView text, const QString& partialWord)
{
    QStringList words;
    QSet<QString> taken;
    qsizetype i = 0;
    const qsizetype size = text.size();
    while (i < size) {
        if (!isWordCharacter(text[i])) {
            ++i;
            continue;
        }
        qsizetype end = i;
        while (end < size && isWordCharacter(text[end])) {
            ++end;
        }
        const QStringView word = text.mid(i, end - i);
        if (word.size() > partialWord.size() && startsWithIgnoringCase(word, partialWord)) {
            const QString copy = word.toString();
            if (!taken.contains(copy)) {
                taken.insert(copy);
                words.append(copy);
            }
        }
        i = end;
    }
    sortIgnoringCase(words);
    return words;
}
