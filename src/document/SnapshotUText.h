#pragma once

#include "document/TextSnapshot.h"

#include <unicode/utext.h>

/// An ICU UText over a snapshot's chunks, so that ICU (regular expressions, break
/// iterators) reads a store's text where it lies, without a copy of the whole. Native
/// indexes are the snapshot's UTF-16 positions. Read-only; clones are shallow (they share
/// the snapshot) and may be used on other threads.
class SnapshotUText
{
public:
    explicit SnapshotUText(const TextSnapshot& text);
    ~SnapshotUText();
    SnapshotUText(const SnapshotUText&) = delete;
    SnapshotUText& operator=(const SnapshotUText&) = delete;

    /// The UText; null when ICU could not set it up.
    UText* utext() const { return _utext; }

    /// Opens `ut` (or a new UText when null) over the text, as ICU's utext_open functions do.
    static UText* open(UText* ut, const TextSnapshot& text, UErrorCode* status);

private:
    UText* _utext = nullptr;
};
