#pragma once

#include <QObject>

/// The application-wide object whose signals stand in for notifications. It lives below
/// every subsystem, so that windows and managers listen to it without knowing the
/// application object that posts.
class NotificationCenter : public QObject
{
    Q_OBJECT

public:
    /// The center of the application's root.
    static NotificationCenter& defaultCenter();

    NotificationCenter() = default;

Q_SIGNALS:
    /// Every open window re-reads the settings (sent when the preferences window closes);
    /// `object` is the sender.
    void NotifUpdatePreferences(QObject* object);
};
