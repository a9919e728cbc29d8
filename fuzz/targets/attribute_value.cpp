// The value of a file's text-encoding attribute ("utf-8;134217984"), as read from any file.
#include "FuzzTarget.h"
#include "document/Document.h"

TESSARAN_FUZZ_TARGET(attribute_value)
{
    Document::textEncodingFromAttributeValue(
        QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
}
