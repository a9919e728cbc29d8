#pragma once

#include "document/TextSnapshot.h"
#include "platform/Range.h"
#include "platform/StringEncoding.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <atomic>
#include <functional>

class EncodingManager;
class QThread;

/// Reads a file into a text store's form: decoded, with its line breaks made LF, chunk by
/// chunk into a tree built bottom-up, with no second copy of the whole text. UTF-8 files
/// are decoded as they are read, a few kilobytes at a time; other encodings, and the
/// automatic choice of one, go through EncodingManager as a document's reading does, and
/// their text is then cut into chunks.
///
/// A load may run on a worker thread (start()); the text read so far is offered on the way
/// (partLoaded), so a window can show the start of a large file at once. The finished text is
/// what the store takes (TextStore::setLoadedText) and what edits go into.
class TextLoader : public QObject
{
    Q_OBJECT

public:
    enum class Status { Loaded, Unreadable, Undecodable, Canceled };

    struct Result {
        Status status = Status::Unreadable;
        TextSnapshot text;
        /// The encoding the text was read in; for an empty file, the one asked for.
        quint64 encoding = StringEncoding::NoEncoding;
        /// The file's own line-break style: 0 LF, 1 CR, 2 CR LF, NSNotFound without any.
        qsizetype lineBreaks = NSNotFound;
        qint64 bytesRead = 0;
    };

    /// Called with the text read so far, a few times as it grows (first after
    /// firstPartLength units, then at four times as much each time).
    using PartFunction = std::function<void(const TextSnapshot&)>;
    static constexpr qsizetype firstPartLength = qsizetype(1) << 18;

    /// Loads with `encodings` (detection, and the encodings read by a converter).
    explicit TextLoader(EncodingManager& encodings, QObject* parent = nullptr);
    /// Stops a load still running and waits for its thread.
    ~TextLoader() override;

    /// Reads the file in `encoding` (StringEncoding::NoEncoding: detected as
    /// EncodingManager does, Japanese first when `priority`), on the calling thread.
    static Result load(EncodingManager& encodings, const QString& path, quint64 encoding,
                       bool priority, const PartFunction& part = {},
                       const std::atomic<bool>* canceled = nullptr);
    /// The same for bytes already in memory.
    static Result loadData(EncodingManager& encodings, QByteArray data, quint64 encoding,
                           bool priority);
    /// The same for UTF-8 bytes; it needs no encoding manager, so any thread may call it.
    static Result loadUtf8Data(QByteArrayView data);

    /// Loads on a worker thread; partLoaded and finished come on this object's thread. A
    /// load still running is canceled first and its signals never come.
    void start(const QString& path, quint64 encoding, bool priority);
    void cancel();
    bool isRunning() const;
    /// Blocks until the worker is done (its signals are delivered by the event loop).
    void wait();

Q_SIGNALS:
    /// The text read so far, growing; a window may show it, read-only.
    void partLoaded(const TextSnapshot& text);
    void finished(const TextLoader::Result& result);

private:
    EncodingManager& _encodings;
    QThread* _thread = nullptr;
    std::atomic<bool> _canceled{false};
    int _generation = 0;
};
