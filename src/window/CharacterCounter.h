#pragma once

#include <QObject>
#include <QString>

#include <memory>

class QTextDocument;

/// Keeps the status line's character count of a whole document without walking the text
/// on each keystroke: the count is every code point except the line feeds, which is the
/// document's UTF-16 length, less one per line break, less one per surrogate pair. The
/// pairs are counted per block and only the blocks an edit touches are counted again.
class CharacterCounter : public QObject
{
    Q_OBJECT

public:
    explicit CharacterCounter(QTextDocument* document);

    /// Characters of the whole document, line feeds excepted.
    qint64 count() const;

    /// Characters of `text` except line feeds (whitespace counted), or except all white
    /// space and line ends.
    static qint64 countCharacters(QStringView text, bool allowWhitespace);

private:
    void recount(int position, int removed, int added);

    QTextDocument* _document;
    std::shared_ptr<qint64> _surrogatePairs = std::make_shared<qint64>(0);
};
