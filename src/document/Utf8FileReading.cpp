#include "document/Utf8FileReading.h"

#include "document/EncodingManager.h"
#include "document/TextLoader.h"
#include "document/TextTree.h"
#include "platform/CharacterStandIns.h"
#include "platform/StringEncoding.h"
#include "platform/UnicodeText.h"

#include <QByteArrayView>
#include <QStringView>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <tuple>

namespace {

constexpr quint64 UTF8 = 4;

std::atomic<bool> enabled{true};

// Whether detection, as EncodingManager::automaticDistinctionWithData and
// EncodingDetector::detect go, takes `data` for UTF-8 when it decodes as UTF-8; `data` has
// no NUL byte, so neither UTF-16 nor UTF-32 is tried before.
bool detectedAsUtf8(QByteArrayView data, bool priority, EncodingManager& encodings)
{
    // The first byte of a UTF-8 byte-order mark in the first three bytes: UTF-8 when it
    // decodes, which the decoding tells.
    if (std::memchr(data.data(), 0xEF, size_t(qMin<qsizetype>(3, data.size()))) != nullptr) {
        return true;
    }
    if (priority || !encodings.offeredEncodings().contains(UTF8)) {
        return false;
    }
    // Seven-bit encodings shift with escapes and tildes. Whether the bytes beyond ASCII are
    // valid UTF-8 (UnicodeText::isValidUtf8) the decoding tells, as it accepts the same ones.
    return !UnicodeText::isAscii(data) || (!data.contains('\x1B') && !data.contains("~{"));
}

// Whether the start of a file says it is text, as the full reading decides it on the text as
// read (CRs included): its first 64 K units come from at most four times as many bytes.
bool looksLikeText(QByteArrayView bytes)
{
    qsizetype end = qMin<qsizetype>(bytes.size(), qsizetype(1) << 18);
    while (end < bytes.size() && end > 0 && (uchar(bytes[end]) & 0xC0) == 0x80) {
        --end;
    }
    QString head;
    return UnicodeText::decodeUtf8(bytes.first(end), head) &&
           EncodingManager::nonTextReason(head) == NonTextReason::None;
}

// The line breaks of UTF-8 bytes, counted as EncodingManager::countLineBreaks counts them in
// the decoded text, and the file's style as EncodingManager::scanLineBreaks tells it.
std::pair<qsizetype, LineBreakCounts> lineBreaksOf(QByteArrayView bytes)
{
    const char* const end = bytes.data() + bytes.size();
    LineBreakCounts counts;
    const qsizetype lineFeeds = std::count(bytes.begin(), bytes.end(), '\n');
    for (const char* p = bytes.data();
         (p = static_cast<const char*>(std::memchr(p, '\r', size_t(end - p)))) != nullptr; ++p) {
        if (p + 1 < end && p[1] == '\n') {
            ++counts.carriageReturnLineFeeds;
        } else {
            ++counts.carriageReturns;
        }
    }
    counts.lineFeeds = lineFeeds - counts.carriageReturnLineFeeds;
    if (counts.carriageReturns == 0 && counts.carriageReturnLineFeeds == 0) {
        // Without a CR there is nothing to count: every line break is an LF.
        return {lineFeeds > 0 ? 0 : NSNotFound, LineBreakCounts()};
    }
    return {counts.carriageReturnLineFeeds > 0 ? 2 : 1, counts};
}

// A large file without NUL, stand-ins or long lines: once its bytes are known to be UTF-8, its
// first part decoded now, the whole on a worker.
std::optional<Utf8FileReading::Text> readOnWorker(QByteArray& data, Utf8FileReading::Text text)
{
    const QByteArrayView bytes(data);
    if (!UnicodeText::isValidUtf8(bytes)) {
        return std::nullopt;
    }
    // A character takes at least one byte for each of its units: the first part grows until
    // it holds enough of them (at the first try when few characters are beyond ASCII). It
    // ends with an LF, so no CR LF is cut in two.
    for (qsizetype at = TextSource::eagerWorkLimit + TextSource::eagerWorkLimit / 8;
         text.text.length() <= TextSource::eagerWorkLimit; at *= 2) {
        // Without a line break further on, the part would be the whole text: read it now.
        const qsizetype lineFeed = bytes.indexOf('\n', at);
        std::optional<TextSnapshot> start =
            TextLoader::loadUtf8Data(lineFeed < 0 ? bytes : bytes.first(lineFeed + 1));
        if (!start) {
            return std::nullopt;
        }
        text.text = std::move(*start);
        if (lineFeed < 0) {
            data = QByteArray();
            return text;
        }
    }
    // The bytes were checked whole above: decoding them cannot fail.
    text.whole = QtConcurrent::run([whole = std::move(data)] {
        return TextLoader::loadUtf8Data(whole).value_or(TextSnapshot());
    });
    data = QByteArray();
    return text;
}

// Walks the chunks of a text whose line breaks are all LF, as the text is in no one string:
// whether a line is longer than `limit` units.
class ChunkCheck
{
public:
    explicit ChunkCheck(qsizetype limit)
        : _limit(limit)
    {}

    bool fails(const TextTree::Node& node)
    {
        if (node.height == 0) {
            return failsIn(TextTree::leaf(node).text, node.lineFeeds);
        }
        const TextTree::Branch& branch = TextTree::branch(node);
        for (int i = 0; i < branch.count; ++i) {
            if (fails(*branch.children[i])) {
                return true;
            }
        }
        return false;
    }

private:
    bool failsIn(QStringView chunk, qsizetype lineFeeds)
    {
        if (lineFeeds == 0) {
            _line += chunk.size();
            return _line > _limit;
        }
        // A line within a chunk is shorter than any limit as long as a chunk: only the lines
        // that run over chunks are measured.
        if (_limit < TextTree::maxLeaf) {
            for (qsizetype at = 0;;) {
                const qsizetype lf = chunk.indexOf(QChar(u'\n'), at);
                if (_line + ((lf < 0 ? chunk.size() : lf) - at) > _limit) {
                    return true;
                }
                if (lf < 0) {
                    _line += chunk.size() - at;
                    return false;
                }
                _line = 0;
                at = lf + 1;
            }
        }
        if (_line + chunk.indexOf(QChar(u'\n')) > _limit) {
            return true;
        }
        _line = chunk.size() - chunk.lastIndexOf(QChar(u'\n')) - 1;
        return false;
    }

    qsizetype _limit;
    qsizetype _line = 0;
};

} // namespace

std::optional<Utf8FileReading::Text>
Utf8FileReading::read(QByteArray& data, quint64 encoding, bool priority, EncodingManager& encodings,
                      qsizetype lineLimit, qint64 lineByteLimit)
{
    // An empty file takes the document's encoding, which the full reading knows.
    if (!isEnabled() || data.isEmpty() ||
        (encoding != UTF8 && encoding != StringEncoding::NoEncoding)) {
        return std::nullopt;
    }
    const QByteArrayView bytes(data);
    // No line has more units than bytes: one look at the bytes usually settles both limits.
    const bool longLines = EncodingManager::lineLongerThan(bytes, lineLimit).has_value();
    if (longLines && EncodingManager::lineLongerThan(bytes, lineByteLimit)) {
        return std::nullopt;
    }
    // A NUL makes the file not text.
    if (std::memchr(data.constData(), '\0', size_t(data.size())) ||
        CharacterStandIns::neededInUtf8(bytes) ||
        (encoding == StringEncoding::NoEncoding && !detectedAsUtf8(bytes, priority, encodings)) ||
        !looksLikeText(bytes)) {
        return std::nullopt;
    }
    Text text;
    std::tie(text.lineBreaks, text.lineBreakCounts) = lineBreaksOf(bytes);
    if (!longLines && data.size() > workerBytes) {
        return readOnWorker(data, std::move(text));
    }
    std::optional<TextSnapshot> loaded = TextLoader::loadUtf8Data(bytes);
    if (!loaded || (longLines && ChunkCheck(lineLimit).fails(*loaded->root()))) {
        return std::nullopt;
    }
    data = QByteArray();
    text.text = std::move(*loaded);
    return text;
}

bool Utf8FileReading::isEnabled()
{
    return enabled.load(std::memory_order_relaxed);
}

void Utf8FileReading::setEnabled(bool on)
{
    enabled.store(on, std::memory_order_relaxed);
}
