// The scripting interface seen by another program: a second connection to the private
// session bus calls the editor's service as gdbus or busctl would.
#include "app/ScriptingService.h"

#include "app/DocumentController.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "scripts/ScriptManager.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>
#include <QProcess>
#include <QTest>
#include <QTextCursor>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace {

const QString kService = QString::fromLatin1(ScriptingService::ServiceName);
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString kDocument = QStringLiteral("org.tessaran.Tessaran.Document");
const QString kApplication = QStringLiteral("org.tessaran.Tessaran.Application");

QDBusConnection client()
{
    // Held by name only, so that nothing outlives the application at exit.
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("client"));
}

/// Sends the call from the client's connection and lets the editor answer meanwhile.
QDBusMessage call(const QString& path, const QString& interface, const QString& method,
                  const QVariantList& arguments = {})
{
    QDBusMessage message = QDBusMessage::createMethodCall(kService, path, interface, method);
    message.setArguments(arguments);
    QDBusPendingCallWatcher watcher(client().asyncCall(message, 5000));
    for (int i = 0; i < 500 && !watcher.isFinished(); ++i) {
        QTest::qWait(10);
    }
    return watcher.reply();
}

QVariant get(const QString& path, const QString& interface, const QString& name)
{
    const QDBusMessage reply = call(path, kProperties, QStringLiteral("Get"), {interface, name});
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

void set(const QString& path, const QString& name, const QVariant& value)
{
    call(path, kProperties, QStringLiteral("Set"),
         {kDocument, name, QVariant::fromValue(QDBusVariant(value))});
}

QList<qlonglong> rangeOf(const QVariant& value)
{
    return qdbus_cast<QList<qlonglong>>(value);
}

QString frontDocumentPath()
{
    return get(QString::fromLatin1(ScriptingService::ApplicationPath), kApplication,
               QStringLiteral("frontDocument"))
        .value<QDBusObjectPath>()
        .path();
}

} // namespace

TEST(ScriptingService, DocumentsOverTheSessionBus)
{
    ASSERT_TRUE(client().isConnected()) << "no session bus";
    ScriptingService& service = ScriptingService::sharedScriptingService();
    service.registerOnSessionBus();
    ASSERT_TRUE(service.isRegistered());
    EXPECT_TRUE(service.ownsServiceName());

    DocumentController& documents = DocumentController::sharedDocumentController();
    Document* document = documents.newDocument();
    document->textStorage()->setPlainText(QStringLiteral("xabcx"));
    TextView* view = documents.windowControllerOf(document)->textView();
    QTextCursor cursor = view->textCursor();
    cursor.setPosition(1);
    cursor.setPosition(4, QTextCursor::KeepAnchor);
    view->setTextCursor(cursor);

    const QString app = QString::fromLatin1(ScriptingService::ApplicationPath);
    EXPECT_EQ(get(app, kApplication, QStringLiteral("count")).toInt(), 1);
    const QString path = frontDocumentPath();
    ASSERT_TRUE(path.startsWith(app + "/Document/")) << path.toStdString();
    const QDBusMessage byIndex = call(app, kApplication, QStringLiteral("document"), {0});
    EXPECT_EQ(byIndex.arguments().value(0).value<QDBusObjectPath>().path(), path);

    EXPECT_EQ(get(path, kDocument, QStringLiteral("selection")).toString(), "abc");
    EXPECT_EQ(rangeOf(get(path, kDocument, QStringLiteral("textRange"))), QList<qlonglong>({1, 3}));
    EXPECT_EQ(get(path, kDocument, QStringLiteral("textEncoding")).toString(), "UTF-8");
    EXPECT_EQ(get(path, kDocument, QStringLiteral("filePath")).toString(), "");
    EXPECT_EQ(get(path, kDocument, QStringLiteral("contents")).toString(), "xabcx");

    // The insertion point at the start: contents go in before the old text.
    set(path, QStringLiteral("textRange"), QVariant::fromValue(QList<qlonglong>{0, 0}));
    set(path, QStringLiteral("contents"), QStringLiteral("new "));
    EXPECT_EQ(document->string(), "new xabcx");
    EXPECT_EQ(rangeOf(get(path, kDocument, QStringLiteral("textRange"))), QList<qlonglong>({4, 0}));
    // Three numbers are refused and change nothing.
    set(path, QStringLiteral("textRange"), QVariant::fromValue(QList<qlonglong>{1, 2, 3}));
    EXPECT_EQ(rangeOf(get(path, kDocument, QStringLiteral("textRange"))), QList<qlonglong>({4, 0}));
    // Everything selected: replaced.
    set(path, QStringLiteral("textRange"), QVariant::fromValue(QList<qlonglong>{0, 9}));
    set(path, QStringLiteral("contents"), QStringLiteral("all"));
    EXPECT_EQ(document->string(), "all");

    // The description other programs read.
    const QString xml = call(path, QStringLiteral("org.freedesktop.DBus.Introspectable"),
                             QStringLiteral("Introspect"))
                            .arguments()
                            .value(0)
                            .toString();
    EXPECT_TRUE(xml.contains("<property name=\"selection\" type=\"s\" access=\"read\"/>"));

    // A second instance of the editor leaves the service to the first.
    const QString owner = client().interface()->serviceOwner(kService);
    QProcess second;
    second.setProgram(QStringLiteral(TESSARAN_EXECUTABLE));
    second.start();
    ASSERT_TRUE(second.waitForStarted(5000));
    QTest::qWait(1500);
    EXPECT_EQ(client().interface()->serviceOwner(kService).value(),
              owner.isEmpty() ? QString() : owner);
    EXPECT_EQ(get(app, kApplication, QStringLiteral("count")).toInt(), 1);
    second.kill();
    second.waitForFinished(5000);

    DocumentWindow* window = documents.windowControllerOf(document)->window();
    window->setCloseHandler(nullptr);
    window->close();
    QDBusConnection::disconnectFromBus(QStringLiteral("client"));
}
