#pragma once

#include "document/TextSnapshot.h"

#include <QObject>

class Document;
struct TextChange;

/// How many surrogate pairs a document's text holds, kept as the text changes without
/// walking the whole text on each keystroke: each change takes off the pairs of the text it
/// removed (read from the text as it was) and adds those of the text it put in.
class SurrogatePairCount : public QObject
{
    Q_OBJECT

public:
    /// Counts the pairs of `document`'s text now and after each change.
    explicit SurrogatePairCount(const Document& document, QObject* parent = nullptr);

    qint64 count() const { return _total; }

private:
    void recount(const TextChange& change);

    const Document& _document;
    /// The text as it was after the last change counted.
    TextSnapshot _text;
    qint64 _total = 0;
};
