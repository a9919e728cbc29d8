// Strict decoding in each encoding the editor knows: the first byte picks the encoding, the
// rest are the bytes. Text that decodes and encodes again must decode to itself.
#include "FuzzTarget.h"
#include "platform/StringEncoding.h"
#include "platform/TextCodec.h"

#include <QList>

#include <cstdlib>

namespace {
constexpr quint64 kUTF8 = 4;
}

TESSARAN_FUZZ_TARGET(decoding)
{
    static const QList<quint64> encodings = StringEncoding::availableStringEncodings();
    if (size == 0 || encodings.isEmpty()) {
        return;
    }
    const quint64 encoding = encodings[data[0] % encodings.size()];
    const QByteArrayView bytes(data + 1, qsizetype(size - 1));
    QString text;
    if (!TextCodec::decode(encoding, bytes, text)) {
        return;
    }
    const std::optional<QByteArray> encoded = TextCodec::encode(encoding, text);
    if (!encoded) {
        return;
    }
    // UTF-8 is written without a byte-order mark, and one at the start is dropped when read:
    // a text that starts with U+FEFF (read from bytes holding two marks) loses it on the way
    // back. Every other text comes back as it was.
    const std::optional<QString> again = TextCodec::decode(encoding, *encoded);
    const bool markDropped = encoding == kUTF8 && text.startsWith(QChar(0xFEFF)) && again &&
                             *again == QStringView(text).sliced(1);
    if (!again || (*again != text && !markDropped)) {
        std::abort();
    }
}
