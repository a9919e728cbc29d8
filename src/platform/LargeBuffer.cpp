#include "platform/LargeBuffer.h"

#include <cstdint>
#include <sys/mman.h>

void LargeBuffer::adviseHugePages(void* data, qsizetype bytes)
{
    constexpr std::uintptr_t page = 4096;
    if (bytes < (qsizetype(1) << 20)) {
        return;
    }
    const auto start = (reinterpret_cast<std::uintptr_t>(data) + page - 1) & ~(page - 1);
    const auto end = (reinterpret_cast<std::uintptr_t>(data) + std::uintptr_t(bytes)) & ~(page - 1);
    if (end > start) {
        ::madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
    }
}
