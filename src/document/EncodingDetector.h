#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>

/// The detection that stands in for the platform's own when a file names no encoding and has
/// no byte-order mark: the encoding its bytes are most likely written in, always one that
/// decodes them all strictly.
///
/// In this order: UTF-16 and UTF-32 without a mark, considered only for data with NUL bytes
/// and answered as the variant of their byte order (UTF-16LE, …) where offered; ASCII and valid
/// UTF-8, both UTF-8; the answer of uchardet, or a close relative of it that reads the bytes
/// better (KOI8-U for KOI8-R, …); and, where uchardet has none (short texts), the encoding among
/// those people used for Japanese, Chinese, Korean, Western and Russian text in which the bytes
/// read most plausibly as text of that language (see plausibility()).
class EncodingDetector
{
public:
    /// The encoding of `data` among `offered`, with the text it decodes to in `text`;
    /// StringEncoding::NoEncoding when there is no answer.
    static quint64 detect(QByteArrayView data, const QList<quint64>& offered, QString& text);

    /// How plausible the bytes are as text written in `encoding`, from 0 to 1: the share of
    /// their characters beyond ASCII that text in the encoding's language commonly has. Kana
    /// and the first level of kanji for Japanese, the first level of hanzi (the common ones)
    /// for Chinese, Hangul for Korean, accented letters within words for Western, frequent
    /// letters in words with vowels for Cyrillic. Negative
    /// for an encoding this judges nothing of, or bytes that do not decode in it.
    static double plausibility(QByteArrayView data, quint64 encoding);
};
