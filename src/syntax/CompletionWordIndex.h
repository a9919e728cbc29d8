#pragma once

#include "platform/TextSource.h"
#include "syntax/CompletionWordScanner.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <map>
#include <unordered_map>
#include <vector>

/// The words of a text as completion finds them, kept in step with edits without reading
/// the text again: the text is cut into chunks of a few thousand characters at places where
/// a scan can start afresh, each chunk remembers its words, and an edit only has the chunks
/// it touched read again. Asking for the words of a partial word then costs time in
/// proportion to the words found, not to the text.
class CompletionWordIndex
{
public:
    using Kind = CompletionWordScanner::Kind;

    explicit CompletionWordIndex(Kind kind = Kind::Pattern);
    CompletionWordIndex(CompletionWordIndex&&) noexcept;
    CompletionWordIndex& operator=(CompletionWordIndex&&) noexcept;
    CompletionWordIndex(const CompletionWordIndex&) = delete;
    CompletionWordIndex& operator=(const CompletionWordIndex&) = delete;
    ~CompletionWordIndex();

    Kind kind() const { return _kind; }

    /// Forgets everything and reads every word of `text`.
    void build(QStringView text);
    /// `removed` characters at `location` were replaced by `added` others. The words there
    /// are read again by the next update().
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);
    /// How many characters the next update() reads.
    qsizetype pendingCharacters() const;
    /// Reads the words of the parts that changed. `text` is the whole text after every
    /// change told; false (and nothing read) when its length is not the one the changes
    /// add up to, which only a change not told can cause: build() again then.
    bool update(TextSource& text);
    bool update(QStringView text);
    /// The length of the text the chunks hold.
    qsizetype textLength() const;

    /// The words longer than `partialWord` that begin with it ignoring case, each once,
    /// sorted ignoring case; words equal but for case in the order they first appear in
    /// the text. Only after update(): a changed stretch offers none of its words before.
    QStringList wordsForPartialWord(const QString& partialWord) const;

    /// Characters read since the index was made: what edits and builds cost.
    qint64 scannedCharacters() const { return _scannedCharacters; }
    /// How many chunks the text is cut into.
    qsizetype chunkCount() const { return qsizetype(_chunks.size()); }

    /// Chunks are cut near this many characters; a test may make them smaller.
    void setChunkSize(qsizetype chunkSize) { _chunkSize = chunkSize; }

private:
    struct Occurrence {
        quint32 word;
        quint32 count;
        /// The word's first appearance in the chunk, counted in words.
        quint32 first;
    };
    struct Chunk {
        qsizetype length = 0;
        /// Orders the chunks in the text and stays while the chunk does, whatever happens
        /// to the chunks around it: where words first appear is kept by it, not by index.
        quint64 order = 0;
        /// By word number. Only for a clean chunk: a dirty one holds what it counted before.
        std::vector<Occurrence> words;
        /// The occurrences counted for this stretch of text before it changed, still to be
        /// taken off once it has been read again.
        std::vector<std::vector<Occurrence>> counted;
        bool dirty = false;
    };
    struct Group;
    struct Word {
        QString text;
        qint64 count = 0;
        Group* group = nullptr;
    };
    struct Hash {
        using is_transparent = void;
        size_t operator()(QStringView text) const { return qHash(text); }
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(QStringView a, QStringView b) const { return a == b; }
    };
    struct LessIgnoringCase {
        using is_transparent = void;
        bool operator()(QStringView a, QStringView b) const
        {
            return a.compare(b, Qt::CaseInsensitive) < 0;
        }
    };
    /// Words equal but for case.
    struct Group {
        std::vector<quint32> members;
        /// The members in the order they first appear, while `ordered` holds.
        mutable std::vector<quint32> inOrder;
        mutable bool ordered = false;
    };

    /// The chunks `text` (a stretch between two boundaries) is cut into, their words read.
    std::vector<Chunk> readChunks(QStringView text);
    std::vector<Occurrence> readWords(QStringView text);
    quint32 wordNumber(QStringView text);
    void count(const std::vector<Occurrence>& occurrences, int sign);
    void dropUnusedWords(const std::vector<Occurrence>& occurrences);
    /// The chunk holding `position`: the last one for the end of the text.
    size_t chunkAt(qsizetype position, qsizetype* start) const;
    /// Where `word` first appears: its chunk's order and its place among the chunk's words.
    std::pair<quint64, quint32> firstAppearance(quint32 word) const;
    /// The chunks [from, to) were read in place of a stretch of chunks whose orders ran
    /// from `first` to just before `end` and which held `before`: what is known of where
    /// their words first appear follows.
    void noteFirstAppearances(size_t from, size_t to, quint64 first, quint64 end,
                              const std::vector<std::vector<Occurrence>>& before);
    /// Gives the chunks [from, to) orders between those of their neighbours; false when
    /// there was no room and every chunk was ordered anew, forgetting first appearances.
    bool orderChunks(size_t from, size_t to);

    Kind _kind;
    // What a keystroke reads again while the list is open: small, as a chunk costs only a
    // few bytes to keep.
    qsizetype _chunkSize = 4 * 1024;
    std::vector<Chunk> _chunks;
    std::vector<Word> _words;
    std::vector<quint32> _freeWords;
    std::unordered_map<QString, quint32, Hash, Equal> _numbers;
    /// Words equal but for case share one entry; the key is the text of one of them.
    std::map<QString, Group, LessIgnoringCase> _groups;
    qint64 _scannedCharacters = 0;

    /// Where words equal but for case to another first appear, kept until a chunk holding
    /// the word is read again.
    struct FirstSeen {
        quint64 order = 0;
        quint32 ordinal = 0;
        /// The stretch read last that held the word.
        quint64 stretch = 0;
        bool known = false;
        /// Made by the reading under way: where it is read first is where it first appears.
        bool fresh = false;
    };
    mutable std::vector<FirstSeen> _firstSeen;
    quint64 _stretches = 0;
};
