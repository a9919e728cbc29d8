#pragma once

#include "document/TextSnapshot.h"
#include "platform/Range.h"
#include "platform/StringEncoding.h"

#include <QByteArray>
#include <QString>

class EncodingManager;

/// Reads a file into a text store's form: decoded, with its line breaks made LF, chunk by
/// chunk into a tree built bottom-up, with no second copy of the whole text. UTF-8 files
/// are decoded as they are read, a megabyte at a time; other encodings, and the automatic
/// choice of one, go through EncodingManager as a document's reading does, and their text is
/// then cut into chunks. The UTF-8 functions need no encoding manager, so a worker thread may
/// call them (a document decodes the rest of a large file that way).
class TextLoader
{
public:
    enum class Status { Loaded, Unreadable, Undecodable };

    struct Result {
        Status status = Status::Unreadable;
        TextSnapshot text;
        /// The encoding the text was read in; for an empty file, the one asked for.
        quint64 encoding = StringEncoding::NoEncoding;
        /// The file's own line-break style: 0 LF, 1 CR, 2 CR LF, NSNotFound without any.
        qsizetype lineBreaks = NSNotFound;
        qint64 bytesRead = 0;
    };

    /// Reads the file in `encoding` (StringEncoding::NoEncoding: detected as
    /// EncodingManager does, Japanese first when `priority`).
    static Result load(EncodingManager& encodings, const QString& path, quint64 encoding,
                       bool priority);
    /// The same for bytes already in memory.
    static Result loadData(EncodingManager& encodings, QByteArray data, quint64 encoding,
                           bool priority);
    /// The same for UTF-8 bytes.
    static Result loadUtf8Data(QByteArrayView data);
};
