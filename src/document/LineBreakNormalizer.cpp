#include "document/LineBreakNormalizer.h"

void LineBreakNormalizer::normalize(QString& piece)
{
    if (piece.isEmpty()) {
        return;
    }
    // Searching runs at memory speed: most pieces have nothing to change.
    if (!(_afterCarriageReturn && piece.front() == u'\n') && !piece.contains(u'\r')) {
        _afterCarriageReturn = false;
        return;
    }
    QChar* const begin = piece.data();
    const QChar* const end = begin + piece.size();
    QChar* out = begin;
    for (const QChar* in = begin; in < end; ++in) {
        const QChar c = *in;
        if (c == u'\n' && _afterCarriageReturn) {
            // The LF of a CR LF whose CR is already an LF.
            _afterCarriageReturn = false;
            continue;
        }
        _afterCarriageReturn = c == u'\r';
        *out++ = _afterCarriageReturn ? QChar(u'\n') : c;
    }
    piece.truncate(out - begin);
}
