#pragma once

#include <QObject>
#include <QString>

#include <optional>

class Document;
class SurrogatePairCount;

/// Keeps the status line's character count of a whole document without walking the text
/// on each keystroke: the count is every code point except the line feeds, which is the
/// document's UTF-16 length, less one per line break, less one per surrogate pair (see
/// SurrogatePairCount). Selections are counted the same way, or on a worker when the text
/// holds pairs.
class CharacterCounter : public QObject
{
    Q_OBJECT

public:
    explicit CharacterCounter(Document* document);

    /// Characters of the whole document, line feeds excepted.
    qint64 count() const;

    /// Counts the characters of [start, end) of the document (line feeds excepted, or all
    /// white space and line ends too) and answers with rangeCounted(): at once when the
    /// document holds no surrogate pair, else from a worker over a copy of the range, one
    /// worker at a time. Only the newest request answers: an older count still running when
    /// a new one is asked for, or when cancelRangeCount() is called, never lands.
    void countRange(qsizetype start, qsizetype end, bool allowWhitespace);
    /// Drops the range counts asked for so far (the whole text's count is the newest).
    void cancelRangeCount();
    /// Whether a worker is counting.
    bool isCounting() const { return _counting; }

    /// Characters of `text` except line feeds (whitespace counted), or except all white
    /// space and line ends.
    static qint64 countCharacters(QStringView text, bool allowWhitespace);

Q_SIGNALS:
    /// The answer to the newest countRange().
    void rangeCounted(qint64 count);

private:
    void startWaitingCount();

    struct RangeRequest {
        qsizetype start;
        qsizetype end;
        bool allowWhitespace;
    };
    Document* _document;
    SurrogatePairCount* _surrogatePairs;
    quint64 _newestRequest = 0;
    std::optional<RangeRequest> _waiting;
    bool _counting = false;
};
