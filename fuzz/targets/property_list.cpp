// The property-list reader (XML and binary), which reads syntax definitions, the default
// settings and the script library: whatever it returns must write out as XML and read back
// as the same value.
#include "FuzzTarget.h"
#include "platform/PropertyList.h"

#include <cstdlib>

TESSARAN_FUZZ_TARGET(property_list)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const QVariant value = PropertyList::fromData(bytes);
    if (!value.isValid()) {
        return;
    }
    const QByteArray xml = PropertyList::toXml(value);
    if (!xml.isEmpty() && !PropertyList::fromData(xml).isValid()) {
        std::abort();
    }
}
