#pragma once

#include "document/EncodingManager.h"
#include "document/TextSnapshot.h"
#include "platform/Range.h"
#include "platform/TextSource.h"

#include <QByteArray>
#include <QFuture>

#include <optional>

/// The quick way to read the commonest file: UTF-8 text that needs nothing special. Its bytes
/// are decoded straight into the text store's chunks, with no whole string of the text on the
/// way (line breaks made LF as they go), and the reading gives exactly what the full one
/// (EncodingManager::contentsOfData, then the document's checks) would: the full reading
/// is left every file where that is not certain.
class Utf8FileReading
{
public:
    struct Text {
        /// The whole text, or only its start while `whole` is being decoded.
        TextSnapshot text;
        /// The file's line-break style: 0 LF, 1 CR, 2 CR LF, NSNotFound without any. The text
        /// holds LFs only.
        qsizetype lineBreaks = NSNotFound;
        /// How many of each kind the file holds, counted when it holds a CR.
        LineBreakCounts lineBreakCounts;
        /// For a large file, the whole text, decoded on a worker thread (a pool's): `text` is
        /// then its first part, ending with a line break, for a window to show meanwhile. That
        /// part is longer than TextSource::eagerWorkLimit, so whatever treats a large text
        /// apart (colouring where shown, words read when asked for) does so from the start.
        std::optional<QFuture<TextSnapshot>> whole;
    };

    /// Files larger than this are decoded on a worker, all but their first part.
    static constexpr qsizetype workerBytes = 2 * TextSource::eagerWorkLimit;

    /// Reads `data`, asked for in `encoding` (StringEncoding::NoEncoding: detected, the
    /// Japanese encodings first with `priority`), when the full reading would surely take it
    /// as UTF-8 and refuse nothing: no line longer than `lineByteLimit` bytes or `lineLimit`
    /// characters, nothing that needs a stand-in, nothing that looks like anything but text.
    /// Then `data` is released; otherwise nothing, and `data` is left as it was.
    ///
    /// A large file is checked whole on its bytes (everything that could refuse it), and only
    /// its first part is decoded at once: decoding the rest on a worker cannot fail.
    static std::optional<Text> read(QByteArray& data, quint64 encoding, bool priority,
                                    EncodingManager& encodings, qsizetype lineLimit,
                                    qint64 lineByteLimit);

    /// Whether read() reads at all (it does unless told not to): off, every file takes the
    /// full reading, which is what the quick one is compared with.
    static bool isEnabled();
    static void setEnabled(bool enabled);
};
