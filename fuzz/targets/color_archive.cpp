// The colour settings' archive ("srgb R G B A"): any colour read must archive and read back
// as itself.
#include "FuzzTarget.h"
#include "platform/ColorArchive.h"

#include <cstdlib>

TESSARAN_FUZZ_TARGET(color_archive)
{
    const QColor color =
        ColorArchive::unarchive(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (color.isValid() && ColorArchive::unarchive(ColorArchive::archivedData(color)) != color) {
        std::abort();
    }
}
