#pragma once

#include "platform/TextSource.h"

#include <QObject>
#include <QString>

#include <memory>

class QTextDocument;

/// A plain copy of a document's text (line breaks as LF), kept in step with every edit.
/// Syntax colouring, completion and the recovery copy read the text after edits; asking
/// the document would copy the whole text each time. The copy is a gap buffer: the gap
/// follows the edits, so a keystroke moves only what lies between the last edit and this
/// one, and a reader asking for a stretch moves at most that stretch. One mirror belongs
/// to one document and serves every pane on it.
class TextMirror : public QObject, public TextSource
{
    Q_OBJECT

public:
    /// The document's mirror, made (reading the whole text once) on first request.
    static TextMirror* mirrorOfDocument(QTextDocument* document);

    qsizetype size() const override { return _capacity - gapLength(); }
    QStringView view(qsizetype from, qsizetype to) override;
    /// The whole text in one piece: moves the gap to an end, which costs up to the whole
    /// text. For passes over everything, not for work per keystroke.
    QStringView text() { return view(0, size()); }
    /// How many characters edits and views have moved so far, across the gap or into a
    /// larger buffer: what keeping the copy has cost.
    qint64 movedCharacters() const { return _moved; }
    /// Makes room for a text of `length` characters at once, so that a text that goes in
    /// piece by piece (a large file being read) is not copied into a larger buffer again and
    /// again as it grows.
    void reserve(qsizetype length);

Q_SIGNALS:
    /// `removed` units at `location` were replaced by `added`; the mirror already holds
    /// the new text.
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);

private:
    explicit TextMirror(QTextDocument* document);
    void contentsChange(int position, int removed, int added);
    void setText(const QString& text);
    qsizetype gapLength() const { return _gapEnd - _gapStart; }
    void moveGap(qsizetype position);
    void remove(qsizetype location, qsizetype length);
    void insert(qsizetype location, QStringView text);
    /// Moves the text into a buffer whose gap holds `gap` characters.
    void regrow(qsizetype gap);

    QTextDocument* _document;
    // Left uninitialised: the gap's pages cost no memory until text is written into them.
    std::unique_ptr<char16_t[]> _buffer;
    qsizetype _capacity = 0;
    qsizetype _gapStart = 0;
    qsizetype _gapEnd = 0;
    qint64 _moved = 0;
};
