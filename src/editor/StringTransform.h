#pragma once

#include <QString>
#include <QVariantList>

/// Conversions of a copy of a string through ICU's transliterators, and the replacement of
/// characters by entity references.
class StringTransform
{
public:
    /// `string` run through the transliterator named `transform` ("Fullwidth-Halfwidth"…),
    /// or through its inverse; unchanged when the transform does not apply.
    static QString stringTransformWithTransform(const QString& string, const QString& transform,
                                                bool reverse);

    static QString stringToFullwidth(const QString& string);
    static QString stringToHalfwidth(const QString& string);
    static QString stringHiraganaToKatakana(const QString& string);
    static QString stringKatakanaToHiragana(const QString& string);
    static QString stringHiraganaToLatin(const QString& string);
    static QString stringLatinToHiragana(const QString& string);
    static QString stringKatakanaToLatin(const QString& string);
    static QString stringLatinToKatakana(const QString& string);
    static QString stringMandarinToLatin(const QString& string);
    static QString stringToUpperCase(const QString& string);
    static QString stringToLowerCase(const QString& string);
    /// Each word's first letter in upper case, the others in lower case.
    static QString stringCapitalized(const QString& string);

    /// Every "&" becomes "&amp;" first, then each entry's "string" becomes its "character"
    /// (`characterEntity`) or "code" form, entries in list order.
    static QString stringByReplacingEntityReferences(const QString& string,
                                                     const QVariantList& entityReference,
                                                     bool characterEntity);
};
