#include "syntax/CompletionCandidates.h"

#include <QSet>

#include <algorithm>

namespace {

bool lessIgnoringCase(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) < 0;
}

// The text's words longer than the partial word that begin with it, each once, in the order
// they first appear.
QStringList textWordsFor(QStringView text, CompletionWordScanner::Kind kind,
                         const QString& partialWord)
{
    QStringList words;
    QSet<QString> taken;
    CompletionWordScanner::forEachWord(text, kind, [&](qsizetype start, qsizetype length) {
        if (length <= partialWord.size()) {
            return;
        }
        const QStringView word = text.mid(start, length);
        if (CompletionCandidates::startsWithIgnoringCase(word, partialWord)) {
            const QString copy = word.toString();
            if (!taken.contains(copy)) {
                taken.insert(copy);
                words.append(copy);
            }
        }
    });
    return words;
}

} // namespace

CompletionWordScanner::Kind CompletionCandidates::wordKind(const QVariantMap& syntaxDictionary)
{
    const bool plain =
        syntaxDictionary.isEmpty() ||
        syntaxDictionary.value(QStringLiteral("Name")).toString() == QLatin1String("Plain Text");
    return plain ? CompletionWordScanner::Kind::Plain : CompletionWordScanner::Kind::Pattern;
}

QStringList CompletionCandidates::completionsForPartialWord(QStringView text,
                                                            const QString& partialWord,
                                                            const QVariantMap& syntaxDictionary,
                                                            const QStringList& completeWords)
{
    if (partialWord.isEmpty()) {
        return {};
    }
    QStringList words = textWordsFor(text, wordKind(syntaxDictionary), partialWord);
    std::stable_sort(words.begin(), words.end(), lessIgnoringCase);
    return completionsFromTextWords(words, partialWord, syntaxDictionary, completeWords);
}

QStringList CompletionCandidates::plainCompletions(QStringView text, const QString& partialWord)
{
    QStringList words = textWordsFor(text, CompletionWordScanner::Kind::Plain, partialWord);
    std::stable_sort(words.begin(), words.end(), lessIgnoringCase);
    return words;
}

QStringList CompletionCandidates::completionsFromTextWords(QStringList textWords,
                                                           const QString& partialWord,
                                                           const QVariantMap& syntaxDictionary,
                                                           const QStringList& completeWords)
{
    if (partialWord.isEmpty()) {
        return {};
    }
    if (wordKind(syntaxDictionary) == CompletionWordScanner::Kind::Plain) {
        return textWords;
    }
    // The definition's words come after the text's and are sorted in among them; a stable
    // merge keeps the text's words first among words equal but for case, as one stable sort
    // of both lists would.
    // The text's words are sorted ignoring case, so a word is among them when it is in the
    // run of words equal to it but for case: no set of every text word, which for a short
    // partial word holds thousands.
    auto inTextWords = [&textWords](const QString& word) {
        const auto [first, last] =
            std::equal_range(textWords.cbegin(), textWords.cend(), word, lessIgnoringCase);
        return std::find(first, last, word) != last;
    };
    QStringList definitionWords;
    QSet<QString> taken;
    for (const QString& word : completeWords) {
        if (startsWithIgnoringCase(word, partialWord) && !taken.contains(word) &&
            !inTextWords(word)) {
            taken.insert(word);
            definitionWords.append(word);
        }
    }
    if (definitionWords.isEmpty()) {
        return textWords;
    }
    std::stable_sort(definitionWords.begin(), definitionWords.end(), lessIgnoringCase);
    QStringList words;
    words.reserve(textWords.size() + definitionWords.size());
    std::merge(std::make_move_iterator(textWords.begin()), std::make_move_iterator(textWords.end()),
               std::make_move_iterator(definitionWords.begin()),
               std::make_move_iterator(definitionWords.end()), std::back_inserter(words),
               lessIgnoringCase);
    return words;
}
