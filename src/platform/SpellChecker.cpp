#include "platform/SpellChecker.h"

#include "platform/SharedInstance.h"

#include <QLocale>
#include <QTextBoundaryFinder>

#include <enchant.h>

namespace {

void addLanguage(const char* tag, const char*, const char*, const char*, void* data)
{
    auto* languages = static_cast<QStringList*>(data);
    const QString language = QString::fromUtf8(tag);
    if (!languages->contains(language)) {
        languages->append(language);
    }
}

bool isWordToCheck(QStringView word)
{
    bool hasLetter = false;
    for (QChar c : word) {
        if (c.isDigit() || c == u'_') {
            return false;
        }
        hasLetter = hasLetter || c.isLetter();
    }
    return hasLetter;
}

} // namespace

SpellChecker& SpellChecker::sharedSpellChecker()
{
    return SharedInstance<SpellChecker>::object();
}

SpellChecker::SpellChecker()
    : _broker(enchant_broker_init())
{}

SpellChecker::~SpellChecker()
{
    if (_broker) {
        for (const Dictionary& entry : std::as_const(_dictionaries)) {
            if (entry.dictionary) {
                enchant_broker_free_dict(_broker, entry.dictionary);
            }
        }
        enchant_broker_free(_broker);
    }
}

QStringList SpellChecker::availableLanguages() const
{
    QStringList languages;
    if (_broker) {
        enchant_broker_list_dicts(_broker, addLanguage, &languages);
    }
    return languages;
}

QString SpellChecker::displayNameOfLanguage(const QString& identifier)
{
    const QLocale locale(identifier);
    if (locale.language() == QLocale::C) {
        return identifier;
    }
    QString name = locale.nativeLanguageName();
    if (name.isEmpty()) {
        name = QLocale::languageToString(locale.language());
    }
    // A bare language ("en") names no territory, though QLocale picks a likely one.
    if (identifier.contains(u'_') || identifier.contains(u'-')) {
        QString territory = locale.nativeTerritoryName();
        if (territory.isEmpty()) {
            territory = QLocale::territoryToString(locale.territory());
        }
        name += QStringLiteral(" (") + territory + u')';
    }
    if (!name.isEmpty()) {
        name[0] = name[0].toUpper();
    }
    return name;
}

bool SpellChecker::setLanguage(const QString& language)
{
    _language = language;
    auto it = _dictionaries.find(language);
    if (it == _dictionaries.end()) {
        Dictionary entry;
        if (_broker && !language.isEmpty()) {
            entry.dictionary = enchant_broker_request_dict(_broker, language.toUtf8().constData());
        }
        it = _dictionaries.insert(language, entry);
    }
    _current = &*it;
    return hasDictionary();
}

bool SpellChecker::checkWord(const QString& word)
{
    if (!hasDictionary() || word.isEmpty()) {
        return true;
    }
    auto it = _current->known.constFind(word);
    if (it != _current->known.constEnd()) {
        return *it;
    }
    const QByteArray utf8 = word.toUtf8();
    const bool known = enchant_dict_check(_current->dictionary, utf8.constData(), utf8.size()) == 0;
    _current->known.insert(word, known);
    return known;
}

QStringList SpellChecker::guessesForWord(const QString& word, int limit)
{
    QStringList guesses;
    if (!hasDictionary() || word.isEmpty()) {
        return guesses;
    }
    const QByteArray utf8 = word.toUtf8();
    size_t count = 0;
    char** list = enchant_dict_suggest(_current->dictionary, utf8.constData(), utf8.size(), &count);
    for (size_t i = 0; i < count && guesses.size() < limit; ++i) {
        guesses.append(QString::fromUtf8(list[i]));
    }
    if (list) {
        enchant_dict_free_string_list(_current->dictionary, list);
    }
    return guesses;
}

QList<Range> SpellChecker::misspelledWords(const QString& text, qsizetype from, qsizetype to)
{
    QList<Range> misspelled;
    from = std::clamp<qsizetype>(from, 0, text.size());
    to = std::clamp<qsizetype>(to, from, text.size());
    if (!hasDictionary() || from == to) {
        return misspelled;
    }
    const QStringView part = QStringView(text).mid(from, to - from);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, part.data(), int(part.size()));
    qsizetype start = -1;
    for (qsizetype position = finder.position(); position >= 0;
         position = finder.toNextBoundary()) {
        const auto reasons = finder.boundaryReasons();
        if (start >= 0 && (reasons & QTextBoundaryFinder::EndOfItem)) {
            const QStringView word = part.mid(start, position - start);
            if (isWordToCheck(word) && !checkWord(word.toString())) {
                misspelled.append({from + start, position - start});
            }
            start = -1;
        }
        if (reasons & QTextBoundaryFinder::StartOfItem) {
            start = position;
        }
    }
    return misspelled;
}
