#include "platform/Scanner.h"

#include <limits>

Scanner::Scanner(const QString& string)
    : _string(string)
{}

void Scanner::setScanLocation(qsizetype location)
{
    _scanLocation = qBound(qsizetype(0), location, _string.size());
}

bool Scanner::isWhitespaceOrNewline(QChar c)
{
    // QChar::isSpace covers the separators (Zs, Zl, Zp), TAB to CR and NEL.
    return c.isSpace();
}

void Scanner::skip()
{
    if (!_skipsWhitespace) {
        return;
    }
    const qsizetype n = _string.size();
    while (_scanLocation < n && isWhitespaceOrNewline(_string[_scanLocation])) {
        ++_scanLocation;
    }
}

bool Scanner::isAtEnd() const
{
    qsizetype i = _scanLocation;
    const qsizetype n = _string.size();
    if (!_skipsWhitespace) {
        return i >= n;
    }
    while (i < n && isWhitespaceOrNewline(_string[i])) {
        ++i;
    }
    return i >= n;
}

bool Scanner::scanUpToString(const QString& string, QString* into)
{
    skip();
    const qsizetype start = _scanLocation;
    if (start >= _string.size()) {
        return false;
    }
    const Qt::CaseSensitivity cs = _caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    qsizetype found = string.isEmpty() ? -1 : _string.indexOf(string, start, cs);
    if (found < 0) {
        found = _string.size();
    }
    if (found == start) {
        return false;
    }
    if (into) {
        *into = _string.mid(start, found - start);
    }
    _scanLocation = found;
    return true;
}

bool Scanner::scanString(const QString& string, QString* into)
{
    skip();
    if (string.isEmpty()) {
        return false;
    }
    const Qt::CaseSensitivity cs = _caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const QStringView rest = QStringView(_string).mid(_scanLocation);
    if (!rest.startsWith(string, cs)) {
        return false;
    }
    if (into) {
        *into = _string.mid(_scanLocation, string.size());
    }
    _scanLocation += string.size();
    return true;
}

bool Scanner::scanInteger(qint64* value)
{
    skip();
    qsizetype i = _scanLocation;
    const qsizetype n = _string.size();
    bool negative = false;
    if (i < n && (_string[i] == u'+' || _string[i] == u'-')) {
        negative = _string[i] == u'-';
        ++i;
    }
    if (i >= n || _string[i] < u'0' || _string[i] > u'9') {
        return false;
    }
    constexpr qint64 max = std::numeric_limits<qint64>::max();
    qint64 result = 0;
    bool overflow = false;
    for (; i < n && _string[i] >= u'0' && _string[i] <= u'9'; ++i) {
        const int digit = _string[i].unicode() - u'0';
        if (result > (max - digit) / 10) {
            overflow = true;
        } else {
            result = result * 10 + digit;
        }
    }
    if (value) {
        if (overflow) {
            *value = negative ? std::numeric_limits<qint64>::min() : max;
        } else {
            *value = negative ? -result : result;
        }
    }
    _scanLocation = i;
    return true;
}
