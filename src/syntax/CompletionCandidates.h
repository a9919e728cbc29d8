#pragma once

#include "syntax/CompletionWordScanner.h"

#include <QString>
#include <QStringList>
#include <QStringView>
#include <QVariantMap>

/// The words offered for a partial word: from the text and from the syntax definition.
class CompletionCandidates
{
public:
    /// The candidates for `partialWord`, sorted ignoring case. With a definition (other than
    /// "Plain Text"): the text's words longer than the partial word, then the definition's
    /// `completeWords` at least as long, each beginning with it ignoring case, no word twice.
    /// Without one: plainCompletions(). Reads the whole text: the reference for what
    /// completionsFromTextWords() gives with the words of an index.
    static QStringList completionsForPartialWord(QStringView text, const QString& partialWord,
                                                 const QVariantMap& syntaxDictionary,
                                                 const QStringList& completeWords);
    /// The words (letters, digits and "_") of the text longer than `partialWord` that begin
    /// with it ignoring case, each once, sorted ignoring case.
    static QStringList plainCompletions(QStringView text, const QString& partialWord);

    /// The candidates as completionsForPartialWord() gives them, from `textWords`: the text's
    /// words longer than the partial word that begin with it ignoring case, each once, sorted
    /// ignoring case, words equal but for case in the order they first appear in the text.
    static QStringList completionsFromTextWords(QStringList textWords, const QString& partialWord,
                                                const QVariantMap& syntaxDictionary,
                                                const QStringList& completeWords);
    /// Which words of the text a view with `syntaxDictionary` offers.
    static CompletionWordScanner::Kind wordKind(const QVariantMap& syntaxDictionary);
    static bool startsWithIgnoringCase(QStringView word, QStringView prefix)
    {
        return word.size() >= prefix.size() &&
               word.first(prefix.size()).compare(prefix, Qt::CaseInsensitive) == 0;
    }
};
