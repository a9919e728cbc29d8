#include "app/SingleInstance.h"

#include "app/Application.h"
#include "app/CommandLineOpener.h"
#include "app/DocumentController.h"
#include "app/ScriptingService.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QFileInfo>
#include <QMessageBox>
#include <QTimer>

namespace {

const QString kInterface = QStringLiteral("org.tessaran.Tessaran.Launcher");

} // namespace

void SingleInstance::listen()
{
    ScriptingService& service = ScriptingService::sharedScriptingService();
    if (!service.ownsServiceName()) {
        return;
    }
    auto* launcher = new SingleInstance(Application::instance());
    QDBusConnection::sessionBus().registerObject(QString::fromLatin1(LauncherPath), launcher,
                                                 QDBusConnection::ExportScriptableSlots);
}

QStringList SingleInstance::canonicalArguments(const CommandLine& commandLine)
{
    QStringList arguments;
    if (!commandLine.encodingName().isEmpty()) {
        arguments << QStringLiteral("--encoding") << commandLine.encodingName();
    }
    arguments << QStringLiteral("--");
    for (const CommandLine::File& file : commandLine.files()) {
        QString argument = QFileInfo(file.path).absoluteFilePath();
        if (file.line > 0) {
            argument += u':' + QString::number(file.line);
            if (file.column > 0) {
                argument += u':' + QString::number(file.column);
            }
        }
        arguments << argument;
    }
    return arguments;
}

bool SingleInstance::handOff(const CommandLine& commandLine, QString* error)
{
    for (const CommandLine::File& file : commandLine.files()) {
        if (file.standardInput) {
            return false;
        }
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QString service = QString::fromLatin1(ScriptingService::ServiceName);
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(service)) {
        return false;
    }
    QDBusMessage message = QDBusMessage::createMethodCall(
        service, QString::fromLatin1(LauncherPath), kInterface, QStringLiteral("Open"));
    message.setArguments({canonicalArguments(commandLine)});
    // The running editor may be busy opening a large file; give it time, then start anew.
    const QDBusReply<QString> reply = bus.call(message, QDBus::Block, 30000);
    if (!reply.isValid()) {
        return false;
    }
    if (error) {
        *error = reply.value();
    }
    return true;
}

QString SingleInstance::Open(const QStringList& arguments)
{
    const CommandLine commandLine = CommandLine::parse(arguments);
    QStringList problems = CommandLineOpener::unreadableFiles(commandLine);
    if (!commandLine.ok()) {
        problems.prepend(commandLine.errorString());
    }
    if (!problems.isEmpty()) {
        const QString text = problems.join(u'\n');
        // Shown without waiting, so the other process has its answer at once.
        auto* alert = new QMessageBox(QMessageBox::Warning, tr("The files could not be opened."),
                                      text, QMessageBox::Ok);
        alert->setAttribute(Qt::WA_DeleteOnClose);
        alert->show();
        return text;
    }
    // Opened once the answer has gone: a file that turns out not to open is reported here
    // in an alert, which must not keep the other process waiting until it is dismissed.
    QTimer::singleShot(0, QCoreApplication::instance(), [commandLine] {
        DocumentController& controller = DocumentController::sharedDocumentController();
        QList<Document*> opened = CommandLineOpener::open(commandLine);
        if (commandLine.files().empty()) {
            opened << controller.newDocument();
        }
        if (!opened.isEmpty()) {
            if (WindowController* window = controller.windowControllerOf(opened.last())) {
                window->window()->show();
                window->window()->raise();
                window->window()->activateWindow();
            }
        }
    });
    return QString();
}
