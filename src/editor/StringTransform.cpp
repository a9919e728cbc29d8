#include "editor/StringTransform.h"

#include <QHash>
#include <QMutex>
#include <QVariantMap>

#include <unicode/translit.h>
#include <unicode/unistr.h>

#include <memory>

namespace {

// Building a transliterator compiles its rules; keep each one once built.
icu::Transliterator* transliterator(const QString& transform, bool reverse)
{
    static QMutex mutex;
    static QHash<QString, std::shared_ptr<icu::Transliterator>> cache;
    const QString key = transform + (reverse ? QStringLiteral("/r") : QStringLiteral("/f"));
    QMutexLocker lock(&mutex);
    if (auto found = cache.find(key); found != cache.end()) {
        return found->get();
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString id(reinterpret_cast<const char16_t*>(transform.utf16()),
                                int32_t(transform.size()));
    std::shared_ptr<icu::Transliterator> made(
        icu::Transliterator::createInstance(id, reverse ? UTRANS_REVERSE : UTRANS_FORWARD, status));
    if (U_FAILURE(status)) {
        made.reset();
    }
    cache.insert(key, made);
    return made.get();
}

} // namespace

QString StringTransform::stringTransformWithTransform(const QString& string,
                                                      const QString& transform, bool reverse)
{
    icu::Transliterator* converter = transliterator(transform, reverse);
    if (!converter || string.isEmpty()) {
        return string;
    }
    icu::UnicodeString text(reinterpret_cast<const char16_t*>(string.utf16()),
                            int32_t(string.size()));
    converter->transliterate(text);
    return QString(reinterpret_cast<const QChar*>(text.getBuffer()), text.length());
}

QString StringTransform::stringToFullwidth(const QString& string)
{
    return stringTransformWithTransform(string, QStringLiteral("Fullwidth-Halfwidth"), true);
}

QString StringTransform::stringToHalfwidth(const QString& string)
{
    return stringTransformWithTransform(string, QStringLiteral("Fullwidth-Halfwidth"), false);
}

QString StringTransform::stringHiraganaToKatakana(const QString& string)
{
    return stringTransformWithTransform(string, QStringLiteral("Hiragana-Katakana"), false);
}

QString StringTransform::stringKatakanaToHiragana(const QString& string)
{
    return stringTransformWithTransform(string, QStringLiteral("Hiragana-Katakana"), true);
}

QString StringTransform::stringHiraganaToLatin(const QString& string)
{
    return stringTransformWithTransform(string, QStringLiteral("Latin-Hiragana"), true);
}

QString StringTransform::stringLatinToHiragana(const QString& string)
{
    return stringTransformWithTransform(string, QStringLiteral("Latin-Hiragana"), false);
}

QString StringTransform::stringKatakanaToLatin(const QString& string)
{
    return stringTransformWithTransform(string, QStringLiteral("Latin-Katakana"), true);
}

QString StringTransform::stringLatinToKatakana(const QString& string)
{
    return stringTransformWithTransform(string, QStringLiteral("Latin-Katakana"), false);
}

QString StringTransform::stringMandarinToLatin(const QString& string)
{
    return stringTransformWithTransform(string, QStringLiteral("Han-Latin"), false);
}

QString StringTransform::stringToUpperCase(const QString& string)
{
    return string.toUpper();
}

QString StringTransform::stringToLowerCase(const QString& string)
{
    return string.toLower();
}

QString StringTransform::stringCapitalized(const QString& string)
{
    icu::UnicodeString text(reinterpret_cast<const char16_t*>(string.utf16()),
                            int32_t(string.size()));
    // ICU's default title-casing finds the words with its word-break rules.
    text.toTitle(nullptr);
    return QString(reinterpret_cast<const QChar*>(text.getBuffer()), text.length());
}

QString StringTransform::stringByReplacingEntityReferences(const QString& string,
                                                           const QVariantList& entityReference,
                                                           bool characterEntity)
{
    QString copy = string;
    copy.replace(QLatin1Char('&'), QStringLiteral("&amp;"));
    const QString formKey = characterEntity ? QStringLiteral("character") : QStringLiteral("code");
    for (const QVariant& entry : entityReference) {
        const QVariantMap map = entry.toMap();
        const QString from = map.value(QStringLiteral("string")).toString();
        if (!from.isEmpty()) {
            copy.replace(from, map.value(formKey).toString(), Qt::CaseSensitive);
        }
    }
    return copy;
}
