#pragma once

#include "platform/Range.h"
#include "platform/Regex.h"
#include "syntax/FunctionMenu.h"

#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>

#include <optional>
#include <vector>

/// The function definitions a syntax definition finds in a text, kept in step with edits:
/// when every "FunctionDefinition" pattern matches within one line, the text is read in
/// chunks of whole lines, each chunk keeps what it found, and an edit has only the chunks it
/// touched read again. Otherwise the whole text is one chunk. What it finds is what
/// SyntaxManager::makeFunctionDefinitionWithString() finds in the whole text.
class FunctionDefinitionIndex
{
public:
    /// Reads the definition's "FunctionDefinition" entries and compiles their patterns.
    explicit FunctionDefinitionIndex(const QVariantMap& syntaxDictionary);

    /// Whether the definition gives a list at all: it has "FunctionDefinition" entries, each
    /// a dictionary with a "regexPattern" string.
    bool hasDefinitions() const { return _valid; }
    /// Whether the text is read in chunks (every pattern matches within one line).
    bool readsInChunks() const { return _inChunks; }
    /// Whether a match of `pattern` can never hold a line break: a conservative reading that
    /// refuses whatever it is not sure of.
    static bool matchesWithinLines(const QString& pattern);

    void build(QStringView text);
    /// `removed` characters at `location` were replaced by `added` others.
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);
    qsizetype pendingCharacters() const;
    /// Whether update() has a change to read, or build() a text to read again: without
    /// one, the definitions are those of the text as it is.
    bool isUpToDate(qsizetype textLength) const;
    /// Reads the chunks that changed; false (nothing read) when `text` has not the length the
    /// changes add up to.
    bool update(QStringView text);
    qsizetype textLength() const;
    /// Characters read since the index was made (a chunk's lines, or the whole text).
    qint64 scannedCharacters() const { return _scanned; }
    void setChunkSize(qsizetype chunkSize) { _chunkSize = chunkSize; }

    /// The definitions in the order of their start, as the definition items of
    /// makeFunctionDefinitionWithString() give them; none where it gives none. After update().
    std::optional<std::vector<FunctionMenu::Definition>> definitions() const;
    /// The same as makeFunctionDefinitionWithString()'s definition items.
    std::optional<QVariantList> definitionItems() const;

private:
    struct Entry {
        Regex regex;
        bool allMatching = false;
        bool bold = false;
        bool hasKeyType = false;
        QVariant keyType;
        QVariant indentationLevel;
    };
    struct Found {
        /// From the chunk's start; NSNotFound for a group that took no part.
        qsizetype location;
        qsizetype length;
        int entry;
    };
    struct Placed {
        qsizetype location;
        qsizetype length;
        int entry;
    };
    struct Chunk {
        qsizetype length = 0;
        std::vector<Found> found;
        bool failed = false;
        bool dirty = false;
    };

    /// The chunks [start, end) of `text` is cut into, read.
    std::vector<Chunk> readChunks(QStringView text, qsizetype start, qsizetype end);
    Chunk readChunk(QStringView text, qsizetype start, qsizetype end);
    size_t chunkAt(qsizetype position) const;
    /// Every definition found, with its entry, in the order of the whole text's list.
    std::optional<std::vector<Placed>> placed() const;

    std::vector<Entry> _entries;
    bool _valid = false;
    bool _inChunks = false;
    qsizetype _chunkSize = 16 * 1024;
    std::vector<Chunk> _chunks;
    qint64 _scanned = 0;
};
