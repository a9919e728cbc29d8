#include "document/TextLoader.h"

#include "document/EncodingManager.h"
#include "document/LineBreakNormalizer.h"
#include "document/TextBuilder.h"
#include "platform/TextCodec.h"
#include "platform/UnicodeText.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <cstring>

namespace {

using Result = TextLoader::Result;
using Status = TextLoader::Status;

constexpr quint64 UTF8 = 4;
constexpr qint64 readSize = qint64(1) << 20;

// UTF-8 decoded a chunk's worth at a time, straight into the chunks the tree keeps.
struct Utf8Stream {
    TextBuilder builder;
    LineBreakNormalizer lineBreaks;
    bool atStart = true;

    // Decodes the whole slices of `bytes`, or all of them when `atEnd`; returns how many
    // bytes it used, or −1 when they are not UTF-8.
    qsizetype feed(QByteArrayView bytes, bool atEnd)
    {
        qsizetype at = 0;
        while (at < bytes.size() && (atEnd || bytes.size() - at >= TextTree::maxLeaf)) {
            qsizetype end = qMin(bytes.size(), at + TextTree::maxLeaf);
            // Slices end between characters: back over the continuation bytes.
            for (int i = 0;
                 i < 3 && end < bytes.size() && end > at + 1 && (uchar(bytes[end]) & 0xC0) == 0x80;
                 ++i) {
                --end;
            }
            QByteArrayView slice = bytes.sliced(at, end - at);
            // U+FEFF is a byte-order mark at the start of the file only; the decoder drops
            // one at the start of whatever it is given.
            qsizetype marks = 0;
            while (!atStart && slice.sliced(3 * marks).startsWith("\xEF\xBB\xBF")) {
                ++marks;
            }
            // Decoded straight into a chunk's buffer: no slice gives more units than bytes.
            QString text = TextTree::chunkBuffer(slice.size());
            if (!UnicodeText::decodeUtf8(slice.sliced(3 * marks), text)) {
                return -1;
            }
            if (marks > 0) {
                text.prepend(QString(marks, QChar(0xFEFF)));
            }
            atStart = false;
            lineBreaks.normalize(text);
            builder.append(std::move(text));
            at = end;
        }
        return at;
    }
};

Result loaded(TextBuilder& builder, quint64 encoding, qsizetype lineBreaks, qint64 bytesRead)
{
    Result result;
    result.status = Status::Loaded;
    result.text = builder.finish();
    result.encoding = encoding;
    result.lineBreaks = lineBreaks;
    result.bytesRead = bytesRead;
    return result;
}

Result failed(Status status, qint64 bytesRead = 0)
{
    Result result;
    result.status = status;
    result.bytesRead = bytesRead;
    return result;
}

Result loadUtf8File(QFile& file)
{
    Utf8Stream stream;
    QByteArray buffer(readSize + TextTree::maxLeaf, Qt::Uninitialized);
    qsizetype kept = 0;
    qint64 bytesRead = 0;
    for (;;) {
        const qint64 got = file.read(buffer.data() + kept, readSize);
        if (got < 0) {
            return failed(Status::Unreadable, bytesRead);
        }
        bytesRead += got;
        const qsizetype available = kept + got;
        const qsizetype used = stream.feed(QByteArrayView(buffer.constData(), available), got == 0);
        if (used < 0) {
            return failed(Status::Undecodable, bytesRead);
        }
        kept = available - used;
        std::memmove(buffer.data(), buffer.constData() + used, size_t(kept));
        if (got == 0) {
            break;
        }
    }
    return loaded(stream.builder, UTF8, stream.lineBreaks.lineBreaks(), bytesRead);
}

// A text EncodingManager decoded, cut into chunks with its line breaks made LF.
Result fromDecoded(DecodedContents contents, quint64 encoding)
{
    if (contents.unreadable) {
        return failed(Status::Unreadable);
    }
    if (!contents.isValid()) {
        if (contents.bytesRead > 0) {
            return failed(Status::Undecodable, contents.bytesRead);
        }
        TextBuilder empty;
        return loaded(empty, encoding, NSNotFound, 0);
    }
    constexpr qsizetype step = qsizetype(1) << 16;
    TextBuilder builder;
    LineBreakNormalizer lineBreaks;
    const QStringView text = contents.text;
    for (qsizetype at = 0; at < text.size(); at += step) {
        const QStringView piece = text.sliced(at, qMin(step, text.size() - at));
        if (lineBreaks.isNormal(piece)) {
            builder.append(piece);
        } else {
            QString normalized = piece.toString();
            lineBreaks.normalize(normalized);
            builder.append(QStringView(normalized));
        }
    }
    return loaded(builder, contents.encoding, lineBreaks.lineBreaks(), contents.bytesRead);
}

} // namespace

TextLoader::Result TextLoader::load(EncodingManager& encodings, const QString& path,
                                    quint64 encoding, bool priority)
{
    // Regular files only: a FIFO would block the reading until some writer appears and a
    // device may never end.
    if (!QFileInfo(path).isFile()) {
        return failed(Status::Unreadable);
    }
    if (encoding != UTF8) {
        return fromDecoded(encodings.contentsOfURL(QUrl::fromLocalFile(path), encoding, priority),
                           encoding);
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return failed(Status::Unreadable);
    }
    return loadUtf8File(file);
}

TextLoader::Result TextLoader::loadData(EncodingManager& encodings, QByteArray data,
                                        quint64 encoding, bool priority)
{
    const qint64 bytes = data.size();
    if (encoding == UTF8) {
        return loadUtf8Data(data);
    }
    DecodedContents contents;
    if (encoding == StringEncoding::NoEncoding) {
        contents = encodings.automaticDistinctionWithData(std::move(data), priority);
    } else if (TextCodec::decode(encoding, data, contents.text)) {
        contents.encoding = encoding;
    }
    contents.bytesRead = bytes;
    return fromDecoded(std::move(contents), encoding);
}

TextLoader::Result TextLoader::loadUtf8Data(QByteArrayView data)
{
    Utf8Stream stream;
    if (stream.feed(data, true) < 0) {
        return failed(Status::Undecodable, data.size());
    }
    return loaded(stream.builder, UTF8, stream.lineBreaks.lineBreaks(), data.size());
}
