// Detecting the encoding of any bytes, with and without the priority to Japanese encodings
// (the first byte's lowest bit): the text found must be the bytes decoded in the encoding
// found, and its line-break style the one a scan of that text finds.
#include "FuzzTarget.h"
#include "document/EncodingManager.h"
#include "platform/TextCodec.h"

#include <cstdlib>

TESSARAN_FUZZ_TARGET(detection)
{
    if (size == 0) {
        return;
    }
    const bool priority = data[0] & 1;
    const QByteArray bytes(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    const DecodedContents contents = manager.automaticDistinctionWithData(bytes, priority);
    if (!contents.isValid()) {
        return;
    }
    const std::optional<QString> text = TextCodec::decode(contents.encoding, bytes);
    if (!text || *text != contents.text ||
        contents.lineBreaks != EncodingManager::scanLineBreaks(contents.text)) {
        std::abort();
    }
}
