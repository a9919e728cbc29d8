#pragma once

#include "document/TextSnapshot.h"
#include "platform/TextSource.h"

#include <QString>

/// A snapshot read as a text source. A stretch within one of the store's chunks is handed
/// out where the chunk holds it; only a stretch across chunks is copied, into a buffer of the
/// source's own. The chunk last read is remembered, so reading near it costs O(1).
class SnapshotTextSource final : public TextSource
{
public:
    explicit SnapshotTextSource(TextSnapshot text = TextSnapshot());

    const TextSnapshot& snapshot() const { return _text; }
    void setSnapshot(TextSnapshot text);

    qsizetype size() const override { return _text.length(); }
    QStringView view(qsizetype from, qsizetype to) override;
    QStringView piece(qsizetype from, qsizetype to) override;

    /// How many characters views across chunks have copied so far: what reading has cost.
    qint64 copiedCharacters() const { return _copied; }

private:
    /// Makes the chunk holding the unit at `position` the current one.
    void seek(qsizetype position);

    TextSnapshot _text;
    const TextTree::Leaf* _leaf = nullptr;
    qsizetype _leafStart = 0;
    QString _buffer;
    qint64 _copied = 0;
};
