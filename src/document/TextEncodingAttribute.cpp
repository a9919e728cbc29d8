#include "document/TextEncodingAttribute.h"

#include "platform/ExtendedAttributes.h"
#include "platform/StringEncoding.h"

#include <QStringList>

#include <limits>

namespace {

constexpr quint64 kNoEncoding = std::numeric_limits<quint64>::max();

} // namespace

const QString& TextEncodingAttribute::name()
{
    static const QString name = QStringLiteral("com.apple.TextEncoding");
    return name;
}

quint64 TextEncodingAttribute::fromValue(const QByteArray& value)
{
    QByteArray bytes = value;
    const qsizetype zero = bytes.indexOf('\0');
    if (zero >= 0) {
        bytes.truncate(zero);
    }
    const QString text = QString::fromUtf8(bytes);
    if (text.toUtf8() != bytes) {
        return kNoEncoding;
    }
    const QStringList parts = text.split(u';');
    if (parts.size() >= 2 && parts[1].size() > 1) {
        // Like strtol: leading blanks and a sign, digits up to the first other character.
        const QString number = parts[1];
        qsizetype i = 0;
        while (i < number.size() && number[i].isSpace()) {
            ++i;
        }
        bool negative = false;
        if (i < number.size() && (number[i] == u'+' || number[i] == u'-')) {
            negative = number[i] == u'-';
            ++i;
        }
        qint64 value = 0;
        while (i < number.size() && number[i] >= u'0' && number[i] <= u'9' && value < (1LL << 40)) {
            value = value * 10 + (number[i].unicode() - u'0');
            ++i;
        }
        const quint32 cfEncoding = quint32(qint32(negative ? -value : value));
        return StringEncoding::convertEncodingToNSStringEncoding(cfEncoding);
    }
    if (!parts.isEmpty() && parts[0].size() > 1) {
        const quint32 cfEncoding = StringEncoding::convertIANACharSetNameToEncoding(parts[0]);
        if (cfEncoding == StringEncoding::InvalidId) {
            return kNoEncoding;
        }
        return StringEncoding::convertEncodingToNSStringEncoding(cfEncoding);
    }
    return kNoEncoding;
}

quint64 TextEncodingAttribute::ofFile(const QString& path)
{
    if (path.isEmpty()) {
        return kNoEncoding;
    }
    const std::optional<QByteArray> value = ExtendedAttributes::read(path, name());
    // A value that does not fit 127 bytes with its terminating zero is refused.
    if (!value || value->size() > 127) {
        return kNoEncoding;
    }
    return fromValue(*value);
}

bool TextEncodingAttribute::write(quint64 encoding, const QString& path)
{
    if (path.isEmpty()) {
        return false;
    }
    const quint32 cfEncoding = StringEncoding::convertNSStringEncodingToEncoding(encoding);
    if (cfEncoding == StringEncoding::InvalidId) {
        return false;
    }
    const QString charset = StringEncoding::convertEncodingToIANACharSetName(cfEncoding);
    if (charset.isEmpty()) {
        return false;
    }
    const QByteArray value = charset.toUtf8() + ';' + QByteArray::number(qint32(cfEncoding));
    return ExtendedAttributes::write(path, name(), value);
}
