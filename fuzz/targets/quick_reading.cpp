// The quick reading of UTF-8 files against the full one: whatever bytes it takes (the first
// byte chooses automatic detection or UTF-8 asked for, and the priority to Japanese
// encodings), the full reading must take them as UTF-8 and refuse nothing, and give the same
// text, line-break style and line-break counts. Lines are limited to 64 units here, so that
// short inputs meet the limit.
#include "FuzzTarget.h"
#include "document/EncodingManager.h"
#include "document/Utf8FileReading.h"
#include "platform/CharacterStandIns.h"
#include "platform/StringEncoding.h"
#include "platform/TextCodec.h"

#include <cstdlib>

namespace {
constexpr quint64 kUTF8 = 4;
constexpr qsizetype kLineLimit = 64;
} // namespace

TESSARAN_FUZZ_TARGET(quick_reading)
{
    if (size == 0) {
        return;
    }
    const bool priority = data[0] & 1;
    const quint64 asked = (data[0] & 2) ? kUTF8 : StringEncoding::NoEncoding;
    const QByteArray bytes(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    QByteArray taken = bytes;
    const std::optional<Utf8FileReading::Text> quick =
        Utf8FileReading::read(taken, asked, priority, manager, kLineLimit, kLineLimit * 8);
    if (!quick) {
        return;
    }
    const QString text = quick->whole ? quick->whole->result().string() : quick->text.string();
    DecodedContents full;
    if (asked == kUTF8) {
        if (const std::optional<QString> decoded = TextCodec::decode(kUTF8, bytes)) {
            full.text = *decoded;
            full.encoding = kUTF8;
        }
    } else {
        full = manager.automaticDistinctionWithData(bytes, priority);
    }
    const qsizetype style = EncodingManager::scanLineBreaks(full.text);
    const bool counted = style == 1 || style == 2;
    const LineBreakCounts counts =
        counted ? EncodingManager::countLineBreaks(full.text) : LineBreakCounts();
    const std::optional<CharacterStandIns> standIns = CharacterStandIns::forText(full.text, false);
    if (!full.isValid() || full.encoding != kUTF8 ||
        EncodingManager::nonTextReason(full.text) != NonTextReason::None ||
        EncodingManager::lineLongerThan(full.text, kLineLimit) || !standIns ||
        !standIns->isEmpty() || quick->lineBreaks != style ||
        text != manager.replaceLineBreaks(0, full.text) ||
        quick->lineBreakCounts.lineFeeds != counts.lineFeeds ||
        quick->lineBreakCounts.carriageReturns != counts.carriageReturns ||
        quick->lineBreakCounts.carriageReturnLineFeeds != counts.carriageReturnLineFeeds) {
        std::abort();
    }
}
