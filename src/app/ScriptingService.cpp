#include "app/ScriptingService.h"

#include "app/Application.h"
#include "app/ApplicationAdaptor.h"
#include "app/DocumentAdaptor.h"
#include "app/ScriptingDocument.h"
#include "platform/SharedInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QMetaClassInfo>

namespace {

QString classInfo(const QMetaObject& meta, const char* name)
{
    const int index = meta.indexOfClassInfo(name);
    return index < 0 ? QString() : QString::fromUtf8(meta.classInfo(index).value());
}

} // namespace

ScriptingService::ScriptingService(QObject* parent)
    : QObject(parent)
{
    qDBusRegisterMetaType<QList<qlonglong>>();
    qDBusRegisterMetaType<QList<QDBusObjectPath>>();
    new ApplicationAdaptor(this);
}

ScriptingService& ScriptingService::sharedScriptingService()
{
    return SharedInstance<ScriptingService>::object();
}

bool ScriptingService::registerOnSessionBus()
{
    if (_registered) {
        return true;
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return false;
    }
    if (!bus.registerObject(QString::fromLatin1(ApplicationPath), this)) {
        return false;
    }
    _registered = true;
    // Queue for the name: a second instance must not take it from the first.
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
        bus.interface()->registerService(QString::fromLatin1(ServiceName),
                                         QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    _ownsName = reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered;
    return true;
}

QDBusObjectPath ScriptingService::pathOf(Document* document)
{
    ScriptingDocument* scripting = ScriptingDocument::of(document);
    auto* adaptor = scripting->findChild<DocumentAdaptor*>(QString(), Qt::FindDirectChildrenOnly);
    if (!adaptor) {
        adaptor = new DocumentAdaptor(scripting, QString::fromLatin1(ApplicationPath) +
                                                     QStringLiteral("/Document/") +
                                                     QString::number(_nextDocumentNumber++));
        if (_registered) {
            QDBusConnection::sessionBus().registerVirtualObject(adaptor->path(), adaptor);
        }
    }
    return QDBusObjectPath(adaptor->path());
}

QString ScriptingService::introspectionXml()
{
    return QStringLiteral(
               "<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection "
               "1.0//EN\"\n \"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd\">\n"
               "<!-- Service %1: the application at %2, each document at %2/Document/<n> -->\n"
               "<node>\n")
               .arg(QString::fromLatin1(ServiceName), QString::fromLatin1(ApplicationPath)) +
           classInfo(ApplicationAdaptor::staticMetaObject, "D-Bus Introspection") +
           classInfo(DocumentAdaptor::staticMetaObject, "D-Bus Introspection") +
           QStringLiteral("</node>\n");
}
