#pragma once

#include "document/SnapshotTextSource.h"
#include "document/TextSnapshot.h"
#include "platform/TextSource.h"

#include <QObject>
#include <QString>

class QTextDocument;

/// A plain copy of a document's text (line breaks as LF), kept in step with every edit.
/// Syntax colouring, completion and the recovery copy read the text after edits; asking
/// the document would copy the whole text each time. The copy is a text store's tree: an
/// edit copies one chunk and the path to it, a stretch within one chunk is read where it
/// lies, and the text as it is at any moment is a snapshot that costs O(1) and that a worker
/// may read while the edits go on. One mirror belongs to one document and serves every pane
/// on it.
class TextMirror : public QObject, public TextSource
{
    Q_OBJECT

public:
    /// The document's mirror, made (reading the whole text once) on first request.
    static TextMirror* mirrorOfDocument(QTextDocument* document);

    /// The text as it is now, unchanged by later edits.
    const TextSnapshot& snapshot() const { return _source.snapshot(); }

    qsizetype size() const override { return _source.size(); }
    QStringView view(qsizetype from, qsizetype to) override { return _source.view(from, to); }
    QStringView piece(qsizetype from, qsizetype to) override { return _source.piece(from, to); }
    /// How many characters views across chunks have copied so far: what reading has cost.
    qint64 copiedCharacters() const { return _source.copiedCharacters(); }

Q_SIGNALS:
    /// `removed` units at `location` were replaced by `added`; the mirror already holds
    /// the new text.
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);

private:
    explicit TextMirror(QTextDocument* document);
    void contentsChange(int position, int removed, int added);
    void setText(QStringView text);

    QTextDocument* _document;
    SnapshotTextSource _source;
};
