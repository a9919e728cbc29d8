// Strict decoding in each encoding the editor knows: the first byte picks the encoding, the
// rest are the bytes. Text that decodes and encodes again must decode to itself.
#include "FuzzTarget.h"
#include "platform/StringEncoding.h"
#include "platform/TextCodec.h"

#include <QList>

#include <cstdlib>

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
    const std::optional<QString> again = TextCodec::decode(encoding, *encoded);
    if (!again || *again != text) {
        std::abort();
    }
}
