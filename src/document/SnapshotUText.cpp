#include "document/SnapshotUText.h"

#include "document/TextChunkIterator.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

// What a UText over a snapshot keeps in its extra space: the snapshot, which holds the
// chunks the UText points into.
struct State {
    TextSnapshot text;
};

const TextSnapshot& textOf(const UText* ut)
{
    return static_cast<const State*>(ut->pExtra)->text;
}

void setChunk(UText* ut, const TextTree::Hit& hit)
{
    ut->chunkContents = reinterpret_cast<const UChar*>(hit.leaf->text.utf16());
    ut->chunkLength = int32_t(hit.leaf->length);
    ut->chunkNativeStart = hit.start;
    ut->chunkNativeLimit = hit.start + hit.leaf->length;
    // Native indexes are UTF-16 positions throughout.
    ut->nativeIndexingLimit = ut->chunkLength;
}

UText* U_CALLCONV cloneText(UText* dest, const UText* src, UBool, UErrorCode* status)
{
    // A deep clone is a shallow one: the text never changes.
    dest = SnapshotUText::open(dest, textOf(src), status);
    if (U_SUCCESS(*status)) {
        dest->chunkContents = src->chunkContents;
        dest->chunkLength = src->chunkLength;
        dest->chunkNativeStart = src->chunkNativeStart;
        dest->chunkNativeLimit = src->chunkNativeLimit;
        dest->nativeIndexingLimit = src->nativeIndexingLimit;
        dest->chunkOffset = src->chunkOffset;
    }
    return dest;
}

int64_t U_CALLCONV nativeLength(UText* ut)
{
    return textOf(ut).length();
}

UBool U_CALLCONV access(UText* ut, int64_t index, UBool forward)
{
    const TextSnapshot& text = textOf(ut);
    const int64_t length = text.length();
    index = qBound(int64_t(0), index, length);
    const bool inChunk = forward ? index >= ut->chunkNativeStart && index < ut->chunkNativeLimit
                                 : index > ut->chunkNativeStart && index <= ut->chunkNativeLimit;
    if (!inChunk) {
        // At either end of the text there is nothing in the direction asked, but the chunk
        // at that end still gives the position.
        setChunk(ut, TextTree::leafAt(*text.root(), index, forward));
    }
    ut->chunkOffset = int32_t(index - ut->chunkNativeStart);
    return forward ? index < length : index > 0;
}

int32_t U_CALLCONV extract(UText* ut, int64_t start, int64_t limit, UChar* dest, int32_t capacity,
                           UErrorCode* status)
{
    if (U_FAILURE(*status)) {
        return 0;
    }
    if (capacity < 0 || (!dest && capacity > 0) || start > limit) {
        *status = U_ILLEGAL_ARGUMENT_ERROR;
        return 0;
    }
    const TextSnapshot& text = textOf(ut);
    const int64_t length = text.length();
    start = qBound(int64_t(0), start, length);
    limit = qBound(start, limit, length);
    // Whole code points only: neither end splits a surrogate pair.
    const auto splitsPair = [&text](int64_t at) {
        return text.at(at).isLowSurrogate() && text.at(at - 1).isHighSurrogate();
    };
    if (start > 0 && start < length && splitsPair(start)) {
        --start;
    }
    if (limit > 0 && limit < length && splitsPair(limit)) {
        ++limit;
    }
    if (limit - start > INT32_MAX) {
        *status = U_INDEX_OUTOFBOUNDS_ERROR;
        return 0;
    }
    int32_t copied = 0;
    for (TextChunkIterator chunks(text, start);
         !chunks.atEnd() && chunks.start() < limit && copied < capacity; chunks.next()) {
        const QStringView piece = chunks.chunk();
        const auto count = int32_t(std::min(
            {piece.size(), qsizetype(limit - chunks.start()), qsizetype(capacity - copied)}));
        std::memcpy(dest + copied, piece.utf16(), size_t(count) * sizeof(UChar));
        copied += count;
    }
    access(ut, limit, true);
    // The length is the whole range's even when it did not fit, for preflighting; the text
    // ends with NUL where there is room for one.
    const auto extracted = int32_t(limit - start);
    if (extracted < capacity) {
        dest[extracted] = 0;
    } else if (extracted == capacity) {
        *status = U_STRING_NOT_TERMINATED_WARNING;
    } else {
        *status = U_BUFFER_OVERFLOW_ERROR;
    }
    return extracted;
}

void U_CALLCONV close(UText* ut)
{
    static_cast<State*>(ut->pExtra)->~State();
}

const UTextFuncs functions = {
    sizeof(UTextFuncs),
    0,
    0,
    0,
    cloneText,
    nativeLength,
    access,
    extract,
    nullptr, // replace: read-only
    nullptr, // copy: read-only
    nullptr, // mapOffsetToNative: native indexes are UTF-16 positions
    nullptr, // mapNativeIndexToUTF16: likewise
    close,
    nullptr,
    nullptr,
    nullptr,
};

} // namespace

UText* SnapshotUText::open(UText* ut, const TextSnapshot& text, UErrorCode* status)
{
    if (U_FAILURE(*status)) {
        return ut;
    }
    ut = utext_setup(ut, int32_t(sizeof(State)), status);
    if (U_FAILURE(*status)) {
        return ut;
    }
    new (ut->pExtra) State{text};
    ut->pFuncs = &functions;
    // The chunks stay where they are as long as the UText lives, not only until the next
    // access.
    ut->providerProperties = 1 << UTEXT_PROVIDER_STABLE_CHUNKS;
    setChunk(ut, TextTree::leafAt(*text.root(), 0, true));
    ut->chunkOffset = 0;
    return ut;
}

SnapshotUText::SnapshotUText(const TextSnapshot& text)
{
    UErrorCode status = U_ZERO_ERROR;
    _utext = open(nullptr, text, &status);
    if (U_FAILURE(status)) {
        utext_close(_utext);
        _utext = nullptr;
    }
}

SnapshotUText::~SnapshotUText()
{
    utext_close(_utext);
}
