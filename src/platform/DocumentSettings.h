#pragma once

#include <QtGlobal>

/// What a document takes from the settings: the encoding and line-break style a new one
/// starts with, and how it reads, saves and keeps its recovery copy.
struct DocumentSettings {
    quint64 defaultsTextEncoding = 0;
    /// 0 LF, 1 CR, 2 CR LF.
    qint64 defaultsLineBreaks = 0;
    /// Detection prefers the Japanese encodings.
    bool priorityToJapaneseEncoding = false;
    /// UTF-8 is written with a byte-order mark.
    bool UTF8AppendByBOM = false;
    bool savePanelExtensionHidden = false;
    /// Seconds from the first unsaved change to the recovery copy.
    qint64 autosavingDelay = 0;

    bool operator==(const DocumentSettings&) const = default;
};
