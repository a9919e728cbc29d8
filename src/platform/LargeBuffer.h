#pragma once

#include <QtGlobal>

/// Memory advice for the buffers of whole files and their decoded texts.
class LargeBuffer
{
public:
    /// Asks the kernel to back the buffer with huge pages where it can. Filling a buffer of
    /// hundreds of megabytes page by page costs more in page faults than the decoding
    /// itself; huge pages make that 512 times fewer faults. Pages never written are still
    /// never allocated. Does nothing for buffers under a megabyte.
    static void adviseHugePages(void* data, qsizetype bytes);
};
