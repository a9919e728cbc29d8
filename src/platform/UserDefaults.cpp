#include "platform/UserDefaults.h"

#include "platform/SharedInstance.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

QString defaultSettingsPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Tessaran/Tessaran.conf");
}

bool parsesAsBool(const QVariant& value)
{
    if (value.typeId() == QMetaType::QString) {
        const QString s = value.toString().trimmed().toLower();
        if (s == u"true" || s == u"yes") {
            return true;
        }
        if (s == u"false" || s == u"no" || s.isEmpty()) {
            return false;
        }
        return s.toDouble() != 0;
    }
    return value.toBool();
}

} // namespace

UserDefaults& UserDefaults::standardUserDefaults()
{
    return SharedInstance<UserDefaults>::object();
}

QString UserDefaults::standardPath()
{
    return defaultSettingsPath();
}

UserDefaults::UserDefaults(const QString& path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    _settings = std::make_unique<QSettings>(path, QSettings::IniFormat);
    // The file is parsed lazily; reading the keys makes any format error show now.
    _settings->allKeys();
    if (_settings->status() == QSettings::FormatError) {
        // Keep the user's broken file for them to look at instead of overwriting it with
        // whatever part of it could be read; start from an empty store.
        _settings.reset();
        _setAsidePath = path + QStringLiteral(".unreadable-") +
                        QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
        QFile::rename(path, _setAsidePath);
        qWarning("Tessaran: the settings file %s could not be read; it was moved to %s",
                 qPrintable(path), qPrintable(_setAsidePath));
        _settings = std::make_unique<QSettings>(path, QSettings::IniFormat);
    }
}

UserDefaults::~UserDefaults()
{
    if (_settings) {
        _settings->sync();
    }
}

QString UserDefaults::path() const
{
    return _settings->fileName();
}

void UserDefaults::registerDefaults(const QVariantMap& defaults)
{
    for (auto it = defaults.cbegin(); it != defaults.cend(); ++it) {
        _registered.insert(it.key(), it.value());
    }
}

QVariant UserDefaults::objectForKey(const QString& key) const
{
    const QVariant user = _settings->value(key);
    if (user.isValid()) {
        return user;
    }
    return _registered.value(key);
}

bool UserDefaults::boolForKey(const QString& key) const
{
    const QVariant value = objectForKey(key);
    return value.isValid() && parsesAsBool(value);
}

qint64 UserDefaults::integerForKey(const QString& key) const
{
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::Bool) {
        return value.toBool() ? 1 : 0;
    }
    if (value.typeId() == QMetaType::QString) {
        const QString s = value.toString().trimmed();
        bool ok = false;
        const qint64 v = s.toLongLong(&ok);
        if (ok) {
            return v;
        }
        const quint64 u = s.toULongLong(&ok);
        if (ok) {
            return qint64(u);
        }
        return qint64(s.toDouble());
    }
    return value.toLongLong();
}

quint64 UserDefaults::unsignedIntegerForKey(const QString& key) const
{
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::QString) {
        const QString s = value.toString().trimmed();
        bool ok = false;
        const quint64 u = s.toULongLong(&ok);
        if (ok) {
            return u;
        }
    }
    return quint64(integerForKey(key));
}

double UserDefaults::doubleForKey(const QString& key) const
{
    return objectForKey(key).toDouble();
}

QString UserDefaults::stringForKey(const QString& key) const
{
    const QVariant value = objectForKey(key);
    if (!value.isValid() || !value.canConvert<QString>()) {
        return {};
    }
    return value.toString();
}

QByteArray UserDefaults::dataForKey(const QString& key) const
{
    const QVariant value = objectForKey(key);
    if (value.typeId() != QMetaType::QByteArray) {
        return {};
    }
    return value.toByteArray();
}

void UserDefaults::setObject(const QVariant& value, const QString& key)
{
    if (!value.isValid()) {
        removeObjectForKey(key);
        return;
    }
    _settings->setValue(key, value);
}

void UserDefaults::removeObjectForKey(const QString& key)
{
    _settings->remove(key);
}

bool UserDefaults::hasUserValue(const QString& key) const
{
    return _settings->contains(key);
}

void UserDefaults::synchronize()
{
    _settings->sync();
}
