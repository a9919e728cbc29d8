#pragma once

#include "document/TextSnapshot.h"
#include "platform/Range.h"

#include <QByteArray>

#include <optional>

class EncodingManager;

/// The quick way to read the commonest file: UTF-8 text with LF line breaks that needs
/// nothing special. Its bytes are decoded straight into the text store's chunks, with no
/// whole string of the text on the way, and the reading gives exactly what the full one
/// (EncodingManager::contentsOfData, then the document's checks) would: the full reading
/// is left every file where that is not certain.
class Utf8FileReading
{
public:
    struct Text {
        TextSnapshot text;
        /// 0 when the text has a line break (all of them LF), NSNotFound when it has none.
        qsizetype lineBreaks = NSNotFound;
    };

    /// Reads `data`, asked for in `encoding` (StringEncoding::NoEncoding: detected, the
    /// Japanese encodings first with `priority`), when the full reading would surely take it
    /// as UTF-8 and refuse nothing: no line longer than `lineByteLimit` bytes or `lineLimit`
    /// characters, no CR, nothing that needs a stand-in, nothing that looks like anything but
    /// text. Then `data` is released; otherwise nothing, and `data` is left as it was.
    static std::optional<Text> read(QByteArray& data, quint64 encoding, bool priority,
                                    EncodingManager& encodings, qsizetype lineLimit,
                                    qint64 lineByteLimit);

    /// Whether read() reads at all (it does unless told not to): off, every file takes the
    /// full reading, which is what the quick one is compared with.
    static bool isEnabled();
    static void setEnabled(bool enabled);
};
