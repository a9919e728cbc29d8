#pragma once

#include "syntax/CompletionWordIndex.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

class TextStore;
class TextMirror;

/// The words of one document for completion, kept in step with its edits. The first build,
/// and a build after a change too large to read again on the spot (a load, a paste of a
/// whole file), runs on a worker over a copy of the text (a short text is read at once);
/// the edits made meanwhile are replayed on its result. A document keeps the words of one kind at a
/// time.
class CompletionDocumentWords : public QObject
{
    Q_OBJECT

public:
    using Kind = CompletionWordScanner::Kind;

    /// The words of `kind` of `document`, made (and their build started) on first request.
    static CompletionDocumentWords* of(TextStore* document, Kind kind);
    /// The document's words of whichever kind, or none.
    static CompletionDocumentWords* existing(TextStore* document);

    Kind kind() const { return _index.kind(); }
    /// Reads what changed since the words were last asked for. False when the words cannot
    /// be asked for now: a build runs, or has just been started for a large change; ready()
    /// follows.
    bool prepare();
    /// The text's words longer than `partialWord` that begin with it ignoring case, as
    /// CompletionWordIndex::wordsForPartialWord() gives them, after prepare(); none while it
    /// answers false.
    std::optional<QStringList> wordsForPartialWord(const QString& partialWord);

    /// Characters read on this thread since the words were made; builds on the worker are
    /// not counted.
    qint64 scannedCharacters() const { return _index.scannedCharacters(); }
    /// How many builds over the whole text have started.
    int builds() const { return _builds; }
    /// Changes larger than this are read again by a build on a worker; a test may lower it.
    void setLargeChange(qsizetype characters) { _largeChange = characters; }
    void setChunkSize(qsizetype characters);

Q_SIGNALS:
    /// A build ended: the words can be asked for.
    void ready();

private:
    CompletionDocumentWords(TextStore* document, Kind kind);
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);
    void startBuild();
    void buildDidEnd(std::shared_ptr<CompletionWordIndex> built);

    struct Edit {
        qsizetype location;
        qsizetype removed;
        qsizetype added;
    };
    TextMirror* _mirror;
    CompletionWordIndex _index;
    bool _building = false;
    bool _built = false;
    /// Waits for large changes to settle (a large file goes in piece by piece).
    QTimer* _buildTimer;
    std::vector<Edit> _editsDuringBuild;
    qsizetype _largeChange = 1024 * 1024;
    /// A text this short is read at once, on this thread.
    qsizetype _smallText = 64 * 1024;
    qsizetype _chunkSize = 0;
    int _builds = 0;
};
