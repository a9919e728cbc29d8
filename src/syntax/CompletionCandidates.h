#pragma once

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
    /// Without one: plainCompletions().
    static QStringList completionsForPartialWord(QStringView text, const QString& partialWord,
                                                 const QVariantMap& syntaxDictionary,
                                                 const QStringList& completeWords);
    /// The words (letters, digits and "_") of the text longer than `partialWord` that begin
    /// with it ignoring case, each once, sorted ignoring case.
    static QStringList plainCompletions(QStringView text, const QString& partialWord);
};
