#pragma once

#include "TestSupport.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QProcess>
#include <QTest>

#include <csignal>

/// What the tests of the real editor on the private session bus share: calls made as another
/// program makes them, and the editor started with folders of its own.
namespace DBusTestSupport {

inline const QString kService = QStringLiteral("org.tessaran.Tessaran");
inline const QString kApplicationPath = QStringLiteral("/org/tessaran/Tessaran");
inline const QString kApplication = QStringLiteral("org.tessaran.Tessaran.Application");
inline const QString kDocument = QStringLiteral("org.tessaran.Tessaran.Document");
inline const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

inline QDBusConnection bus()
{
    return QDBusConnection::sessionBus();
}

inline QDBusMessage call(const QString& path, const QString& interface, const QString& method,
                         const QVariantList& arguments = {})
{
    QDBusMessage message = QDBusMessage::createMethodCall(kService, path, interface, method);
    message.setArguments(arguments);
    return bus().call(message, QDBus::Block, 20000);
}

inline QVariant property(const QString& path, const QString& interface, const QString& name)
{
    return call(path, kProperties, QStringLiteral("Get"), {interface, name})
        .arguments()
        .value(0)
        .value<QDBusVariant>()
        .variant();
}

inline QVariant applicationProperty(const QString& name)
{
    return property(kApplicationPath, kApplication, name);
}

inline QVariant documentProperty(const QString& path, const QString& name)
{
    return property(path, kDocument, name);
}

inline QDBusMessage setDocumentProperty(const QString& path, const QString& name,
                                        const QVariant& value)
{
    return call(path, kProperties, QStringLiteral("Set"),
                {kDocument, name, QVariant::fromValue(QDBusVariant(value))});
}

/// The object path of the document at `index` of the application's list.
inline QString documentAt(int index)
{
    return call(kApplicationPath, kApplication, QStringLiteral("document"), {index})
        .arguments()
        .value(0)
        .value<QDBusObjectPath>()
        .path();
}

inline QVariant frontDocumentProperty(const QString& name)
{
    return documentProperty(
        applicationProperty(QStringLiteral("frontDocument")).value<QDBusObjectPath>().path(), name);
}

/// True once an editor holds the service's name.
inline bool listening()
{
    return QTest::qWaitFor([] { return bus().interface()->isServiceRegistered(kService).value(); },
                           30000);
}

/// True once no editor holds the name any more.
inline bool gone()
{
    return QTest::qWaitFor([] { return !bus().interface()->isServiceRegistered(kService).value(); },
                           30000);
}

/// The real editor, with folders of its own for settings and data, so that its runs are first
/// runs and what it leaves behind stays out of the other tests' way. Runs started one after
/// the other share them, as the runs of one user do.
struct Editor {
    QString config = TestSupport::makeTempDir();
    QString data = TestSupport::makeTempDir();
    QProcess process;

    /// Starts it; true once it listens on the bus. With `forwardErrors`, what it prints on
    /// its error output goes to the test's.
    bool start(const QStringList& arguments, bool forwardErrors = true)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config);
        environment.insert(QStringLiteral("XDG_DATA_HOME"), data);
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(forwardErrors ? QProcess::ForwardedErrorChannel
                                                    : QProcess::SeparateChannels);
        process.start(QStringLiteral(TESSARAN_EXECUTABLE), arguments);
        return listening();
    }
    /// Kills it without a word (kill -9); true once its name has left the bus.
    bool kill()
    {
        ::kill(pid_t(process.processId()), SIGKILL);
        process.waitForFinished();
        return gone();
    }
    QString settingsFile() const { return config + QStringLiteral("/Tessaran/Tessaran.conf"); }
};

/// Runs the editor as a second invocation does, and waits for it to end.
inline bool invoke(QProcess& invocation, const QStringList& arguments)
{
    invocation.start(QStringLiteral(TESSARAN_EXECUTABLE), arguments);
    return invocation.waitForFinished(20000);
}

} // namespace DBusTestSupport
