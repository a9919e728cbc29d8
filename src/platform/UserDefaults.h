#pragma once

#include <QObject>
#include <QSettings>
#include <QString>
#include <QVariant>

#include <memory>

/// The one persistent settings store, in two layers: the registered defaults (in memory,
/// rebuilt at every start, never written) and the user's values (an INI file, persistent,
/// winning over the registered ones). A key with no value in either layer reads as
/// false, 0 or none.
class UserDefaults
{
public:
    /// The store of the application's root (normally at standardPath()).
    static UserDefaults& standardUserDefaults();
    /// $XDG_CONFIG_HOME/Tessaran/Tessaran.conf.
    static QString standardPath();

    explicit UserDefaults(const QString& path);
    ~UserDefaults();

    QString path() const;

    void registerDefaults(const QVariantMap& defaults);
    const QVariantMap& registeredDefaults() const { return _registered; }

    /// The user's value, else the registered one, else an invalid QVariant.
    QVariant objectForKey(const QString& key) const;
    bool boolForKey(const QString& key) const;
    qint64 integerForKey(const QString& key) const;
    quint64 unsignedIntegerForKey(const QString& key) const;
    double doubleForKey(const QString& key) const;
    QString stringForKey(const QString& key) const;
    QByteArray dataForKey(const QString& key) const;

    void setObject(const QVariant& value, const QString& key);
    void setBool(bool value, const QString& key) { setObject(value, key); }
    void setInteger(qint64 value, const QString& key) { setObject(value, key); }
    void setUnsignedInteger(quint64 value, const QString& key) { setObject(value, key); }
    void setValue(const QVariant& value, const QString& key) { setObject(value, key); }
    /// Removes the user's value, so the registered one shows again.
    void removeObjectForKey(const QString& key);
    bool hasUserValue(const QString& key) const;

    /// Writes pending changes to the file.
    void synchronize();

    /// Where a settings file that could not be parsed was set aside (empty when none was).
    QString setAsidePath() const { return _setAsidePath; }

private:
    std::unique_ptr<QSettings> _settings;
    QVariantMap _registered;
    QString _setAsidePath;
};
