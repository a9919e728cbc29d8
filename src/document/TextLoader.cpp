#include "document/TextLoader.h"

#include "document/LineBreakNormalizer.h"
#include "document/TextBuilder.h"
#include "platform/UnicodeText.h"

std::optional<TextSnapshot> TextLoader::loadUtf8Data(QByteArrayView bytes)
{
    // Decoded a chunk's worth at a time, straight into the chunks the tree keeps.
    TextBuilder builder;
    LineBreakNormalizer lineBreaks;
    for (qsizetype at = 0; at < bytes.size();) {
        qsizetype end = qMin(bytes.size(), at + TextTree::maxLeaf);
        // Slices end between characters: back over the continuation bytes.
        for (int i = 0;
             i < 3 && end < bytes.size() && end > at + 1 && (uchar(bytes[end]) & 0xC0) == 0x80;
             ++i) {
            --end;
        }
        QByteArrayView slice = bytes.sliced(at, end - at);
        // U+FEFF is a byte-order mark at the start of the file only; the decoder drops one at
        // the start of whatever it is given.
        qsizetype marks = 0;
        while (at > 0 && slice.sliced(3 * marks).startsWith("\xEF\xBB\xBF")) {
            ++marks;
        }
        // Decoded straight into a chunk's buffer: no slice gives more units than bytes.
        QString text = TextTree::chunkBuffer(slice.size());
        if (!UnicodeText::decodeUtf8(slice.sliced(3 * marks), text)) {
            return std::nullopt;
        }
        if (marks > 0) {
            text.prepend(QString(marks, QChar(0xFEFF)));
        }
        lineBreaks.normalize(text);
        builder.append(std::move(text));
        at = end;
    }
    return builder.finish();
}
