#pragma once

#include <QString>

/// Walks a string token by token. Before every step, white space and line breaks
/// (Unicode space separators, line and paragraph separators, TAB, LF, VT, FF, CR and
/// NEL) are skipped, and the skip stands even when the step itself finds nothing. The
/// scanner is at its end when only such characters remain.
class Scanner
{
public:
    explicit Scanner(const QString& string);

    const QString& string() const { return _string; }
    qsizetype scanLocation() const { return _scanLocation; }
    void setScanLocation(qsizetype location);
    bool caseSensitive() const { return _caseSensitive; }
    void setCaseSensitive(bool caseSensitive) { _caseSensitive = caseSensitive; }
    /// Turns the skipping of white space and line breaks off or on (on by default).
    void setSkipsWhitespace(bool skips) { _skipsWhitespace = skips; }

    /// True when the rest of the string holds only skipped characters, or nothing.
    bool isAtEnd() const;

    /// Moves to the next occurrence of `string`, or to the end when there is none.
    /// Returns false when no character was passed over (the occurrence stands here,
    /// or the scanner was at its end); `into` then stays untouched.
    bool scanUpToString(const QString& string, QString* into = nullptr);
    /// Moves past `string` when it stands at the position; returns whether it did.
    bool scanString(const QString& string, QString* into = nullptr);
    /// Reads an optionally signed decimal integer; on overflow the value is clamped.
    bool scanInteger(qint64* value = nullptr);

    static bool isWhitespaceOrNewline(QChar c);

private:
    void skip();

    // Never written: a non-const access would copy a text shared with the caller.
    const QString _string;
    qsizetype _scanLocation = 0;
    bool _caseSensitive = false;
    bool _skipsWhitespace = true;
};
