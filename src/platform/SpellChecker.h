#pragma once

#include "platform/Range.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

struct str_enchant_broker;
struct str_enchant_dict;

/// The application's spell checker, over Enchant: its list of dictionaries, one chosen
/// language, and the words of a text that its dictionary does not know. Main thread only.
class SpellChecker
{
public:
    static SpellChecker& sharedSpellChecker();

    SpellChecker();
    ~SpellChecker();
    SpellChecker(const SpellChecker&) = delete;
    SpellChecker& operator=(const SpellChecker&) = delete;

    /// The language identifiers of the installed dictionaries ("en_US", "de_DE"), in the
    /// order Enchant lists them.
    QStringList availableLanguages() const;
    /// The name of a language as the language itself names it ("English (United States)").
    static QString displayNameOfLanguage(const QString& identifier);

    /// Chooses the dictionary of `language`; false, leaving no dictionary, when there is none.
    bool setLanguage(const QString& language);
    QString language() const { return _language; }
    bool hasDictionary() const { return _current && _current->dictionary; }

    /// Whether the dictionary knows `word`; every word passes while there is no dictionary.
    bool checkWord(const QString& word);
    /// The dictionary's suggestions for `word`, best first, at most `limit` of them.
    QStringList guessesForWord(const QString& word, int limit = 8);
    /// The misspelt words of text[from, to) as ranges of `text`. Words holding digits or
    /// underscores (identifiers rather than words) are left alone.
    QList<Range> misspelledWords(const QString& text, qsizetype from, qsizetype to);

private:
    struct Dictionary {
        str_enchant_dict* dictionary = nullptr;
        // The answers so far: redrawing the same lines asks about the same words again.
        QHash<QString, bool> known;
    };

    str_enchant_broker* _broker = nullptr;
    // Every dictionary asked for stays loaded, so windows of different languages can take
    // turns without reloading.
    QHash<QString, Dictionary> _dictionaries;
    Dictionary* _current = nullptr;
    QString _language;
};
