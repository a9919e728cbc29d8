#include "document/LineBreakNormalizer.h"

#include "platform/Range.h"

bool LineBreakNormalizer::isNormal(QStringView piece)
{
    if (piece.isEmpty()) {
        return true;
    }
    if ((_afterCarriageReturn && piece.front() == u'\n') || piece.contains(u'\r')) {
        return false;
    }
    _afterCarriageReturn = false;
    // Searching runs at memory speed; once an LF is seen, there is nothing more to learn.
    if (!_sawLineFeed) {
        _sawLineFeed = piece.contains(u'\n');
    }
    return true;
}

void LineBreakNormalizer::normalize(QString& piece)
{
    if (isNormal(piece)) {
        return;
    }
    QChar* const begin = piece.data();
    const QChar* const end = begin + piece.size();
    QChar* out = begin;
    for (const QChar* in = begin; in < end; ++in) {
        const QChar c = *in;
        if (c == u'\n') {
            if (_afterCarriageReturn) {
                // The LF of a CR LF whose CR is already an LF.
                _sawCarriageReturnLineFeed = true;
                _afterCarriageReturn = false;
                continue;
            }
            _sawLineFeed = true;
            *out++ = c;
        } else if (c == u'\r') {
            _sawCarriageReturn = true;
            _afterCarriageReturn = true;
            *out++ = QChar(u'\n');
        } else {
            _afterCarriageReturn = false;
            *out++ = c;
        }
    }
    piece.truncate(out - begin);
}

qsizetype LineBreakNormalizer::lineBreaks() const
{
    if (_sawCarriageReturnLineFeed) {
        return 2;
    }
    if (_sawCarriageReturn) {
        return 1;
    }
    return _sawLineFeed ? 0 : NSNotFound;
}
