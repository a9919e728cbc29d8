#include "platform/ExtendedAttributes.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <sys/xattr.h>

namespace {

QByteArray attributeName(const QString& name)
{
    return name.startsWith(u"user.") ? name.toUtf8() : "user." + name.toUtf8();
}

} // namespace

std::optional<QByteArray> ExtendedAttributes::read(const QString& path, const QString& name)
{
    const QByteArray file = QFile::encodeName(path);
    const QByteArray attr = attributeName(name);
    for (int attempt = 0; attempt < 3; ++attempt) {
        const ssize_t size = ::getxattr(file.constData(), attr.constData(), nullptr, 0);
        if (size < 0) {
            return std::nullopt;
        }
        QByteArray value(size, Qt::Uninitialized);
        const ssize_t got =
            ::getxattr(file.constData(), attr.constData(), value.data(), size_t(size));
        if (got >= 0) {
            value.truncate(got);
            return value;
        }
        if (errno != ERANGE) {
            return std::nullopt;
        }
        // The attribute grew between the two calls; ask again.
    }
    return std::nullopt;
}

bool ExtendedAttributes::write(const QString& path, const QString& name, const QByteArray& value,
                               QString* error)
{
    const QByteArray file = QFile::encodeName(path);
    if (::setxattr(file.constData(), attributeName(name).constData(), value.constData(),
                   size_t(value.size()), 0) != 0) {
        if (error) {
            *error = QString::fromLocal8Bit(std::strerror(errno));
        }
        return false;
    }
    return true;
}

bool ExtendedAttributes::remove(const QString& path, const QString& name)
{
    const QByteArray file = QFile::encodeName(path);
    return ::removexattr(file.constData(), attributeName(name).constData()) == 0;
}
