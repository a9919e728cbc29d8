#include "document/Utf8FileReading.h"

#include "document/EncodingManager.h"
#include "document/TextLoader.h"
#include "document/TextTree.h"
#include "platform/StringEncoding.h"
#include "platform/UnicodeText.h"

#include <QByteArrayView>
#include <QStringView>

#include <atomic>
#include <cstring>

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

// Walks the chunks of a text that holds no CR, as the text is in no one string: whether a
// line is longer than `limit` units, or a character needs a stand-in.
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
        // U+2029 and Qt's frame marks U+FDD0 and U+FDD1 (see CharacterStandIns).
        if (chunk.contains(QChar(0x2029)) || chunk.contains(QChar(0xFDD0)) ||
            chunk.contains(QChar(0xFDD1))) {
            return true;
        }
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
    if (EncodingManager::lineLongerThan(bytes, lineByteLimit)) {
        return std::nullopt;
    }
    // A CR makes line breaks to count, perhaps mixed; a NUL makes the file not text.
    if (std::memchr(data.constData(), '\r', size_t(data.size())) ||
        std::memchr(data.constData(), '\0', size_t(data.size()))) {
        return std::nullopt;
    }
    if (encoding == StringEncoding::NoEncoding && !detectedAsUtf8(bytes, priority, encodings)) {
        return std::nullopt;
    }
    TextLoader::Result loaded = TextLoader::loadData(encodings, data, UTF8, priority);
    if (loaded.status != TextLoader::Status::Loaded) {
        return std::nullopt;
    }
    if (ChunkCheck(lineLimit).fails(*loaded.text.root())) {
        return std::nullopt;
    }
    // Besides NUL characters, only the start of a text tells whether it is one.
    const qsizetype head = qMin<qsizetype>(loaded.text.length(), qsizetype(1) << 16);
    if (EncodingManager::nonTextReason(loaded.text.text(Range(0, head))) != NonTextReason::None) {
        return std::nullopt;
    }
    data = QByteArray();
    return Text{loaded.text, loaded.lineBreaks};
}

bool Utf8FileReading::isEnabled()
{
    return enabled.load(std::memory_order_relaxed);
}

void Utf8FileReading::setEnabled(bool on)
{
    enabled.store(on, std::memory_order_relaxed);
}
