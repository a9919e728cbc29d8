#pragma once

#include "document/TextSnapshot.h"

#include <QByteArrayView>

#include <optional>

/// Decodes UTF-8 bytes into a text store's form: with its line breaks made LF, chunk by
/// chunk into a tree built bottom-up, with no whole string of the text on the way. It needs
/// no encoding manager, so a worker thread may call it (a document decodes the rest of a
/// large file that way).
class TextLoader
{
public:
    /// The text of `bytes`, or nothing when the bytes are not UTF-8.
    static std::optional<TextSnapshot> loadUtf8Data(QByteArrayView bytes);
};
