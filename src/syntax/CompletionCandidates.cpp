#include "syntax/CompletionCandidates.h"

#include "platform/Regex.h"

#include <QSet>

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
    static const Regex pattern(QStringLiteral("([a-z|A-Z|_].*?)[\\W|\\s|\\)]"),
                               Regex::CaseInsensitive | Regex::AnchorsMatchLines);
    pattern.forEachMatch(text, [&](const Regex::Match& match) {
        const Range group = match.groups.size() > 1 ? match.groups[1] : Range::notFound();
        if (group.isNotFound() || group.length <= partialWord.size()) {
            return true;
        }
        const QStringView word = text.mid(group.location, group.length);
        if (startsWithIgnoringCase(word, partialWord)) {
            const QString copy = word.toString();
            if (!taken.contains(copy)) {
                taken.insert(copy);
                words.append(copy);
            }
        }
        return true;
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
