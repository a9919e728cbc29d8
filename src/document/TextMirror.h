#pragma once

#include "document/SnapshotTextSource.h"
#include "document/TextSnapshot.h"
#include "platform/TextSource.h"

#include <QObject>
#include <QString>

class TextStore;
struct TextChange;

/// A text store's text as the engines read it: a TextSource over the store's latest
/// snapshot, and a notice of each change. Syntax colouring, completion and the function
/// list read the text through it after edits; the text as it is at any moment is a snapshot
/// that costs O(1) and that a worker may read while the edits go on. One belongs to one
/// store and serves every pane on it.
class TextMirror : public QObject, public TextSource
{
    Q_OBJECT

public:
    /// The store's mirror, made on first request.
    static TextMirror* mirrorOfStore(TextStore* store);

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
    explicit TextMirror(TextStore* store);
    void contentsChange(const TextChange& change);

    TextStore* _store;
    SnapshotTextSource _source;
};
