#pragma once

#include <QObject>

#include <memory>

class Document;
class QTextDocument;

/// How many surrogate pairs a document's text holds, kept as the text changes without
/// walking the whole text on each keystroke: each line remembers the pairs it held when last
/// counted, a line that goes away takes its share with it, and only the lines an edit
/// touches are counted again.
class SurrogatePairCount : public QObject
{
    Q_OBJECT

public:
    /// Counts the pairs of `document`'s text now and after each change.
    explicit SurrogatePairCount(const Document& document, QObject* parent = nullptr);

    qint64 count() const { return *_total; }

private:
    void recount(int position, int removed, int added);

    QTextDocument* _textStorage;
    // Shared with the lines, which the text storage destroys after this counter is gone.
    std::shared_ptr<qint64> _total = std::make_shared<qint64>(0);
};
