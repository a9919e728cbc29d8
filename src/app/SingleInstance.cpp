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

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

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
    // An absolute path never starts with "-", so the files need no "--" before them.
    for (const CommandLine::File& file : commandLine.files()) {
        if (file.standardInput) {
            arguments << QStringLiteral("-");
            continue;
        }
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
    const bool readsStandardInput =
        std::any_of(commandLine.files().begin(), commandLine.files().end(),
                    [](const CommandLine::File& file) { return file.standardInput; });
    if (readsStandardInput && ::isatty(STDIN_FILENO)) {
        return false;
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QString service = QString::fromLatin1(ScriptingService::ServiceName);
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(service)) {
        return false;
    }
    if (readsStandardInput &&
        !(bus.connectionCapabilities() & QDBusConnection::UnixFileDescriptorPassing)) {
        return false;
    }
    QDBusMessage message = QDBusMessage::createMethodCall(
        service, QString::fromLatin1(LauncherPath), kInterface,
        readsStandardInput ? QStringLiteral("OpenWithStandardInput") : QStringLiteral("Open"));
    QVariantList arguments{canonicalArguments(commandLine)};
    if (readsStandardInput) {
        arguments << QVariant::fromValue(QDBusUnixFileDescriptor(STDIN_FILENO));
    }
    message.setArguments(arguments);
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
    return open(arguments, QDBusUnixFileDescriptor());
}

QString SingleInstance::OpenWithStandardInput(const QStringList& arguments,
                                              const QDBusUnixFileDescriptor& standardInput)
{
    return open(arguments, standardInput);
}

QString SingleInstance::open(const QStringList& arguments,
                             const QDBusUnixFileDescriptor& standardInput)
{
    const CommandLine commandLine = CommandLine::parse(arguments);
    QStringList problems = CommandLineOpener::unreadableFiles(commandLine);
    if (!commandLine.ok()) {
        problems.prepend(commandLine.errorString());
    }
    const bool readsStandardInput =
        std::any_of(commandLine.files().begin(), commandLine.files().end(),
                    [](const CommandLine::File& file) { return file.standardInput; });
    // The descriptor the message carried closes with it; the reader gets its own.
    int input = -1;
    if (readsStandardInput && problems.isEmpty()) {
        if (standardInput.isValid()) {
            input = ::fcntl(standardInput.fileDescriptor(), F_DUPFD_CLOEXEC, 0);
        }
        if (input < 0) {
            // Never this editor's own input, which belongs to whoever started it.
            problems << QStringLiteral("-: the standard input did not come along");
        }
    }
    if (!problems.isEmpty()) {
        const QString text = problems.join(u'\n');
        // Shown without waiting, so the other process has its answer at once.
        auto* alert = new QMessageBox(QMessageBox::Warning, QString(),
                                      tr("The files could not be opened."), QMessageBox::Ok);
        alert->setInformativeText(text);
        alert->setAttribute(Qt::WA_DeleteOnClose);
        alert->show();
        return text;
    }
    // Opened once the answer has gone: a file that turns out not to open is reported here
    // in an alert, which must not keep the other process waiting until it is dismissed.
    QTimer::singleShot(0, QCoreApplication::instance(), [commandLine, input] {
        DocumentController& controller = DocumentController::sharedDocumentController();
        QList<Document*> opened = CommandLineOpener::open(commandLine, input);
        if (commandLine.files().empty()) {
            // Started again from a launcher or a shell: the editor comes forward as it is,
            // with a new window only when it has none.
            Document* front = controller.currentDocument();
            opened << (front ? front : controller.newDocument());
        }
        if (!opened.isEmpty()) {
            if (WindowController* window = controller.windowControllerOf(opened.last())) {
                // A tab is selected in its window, which comes forward.
                window->window()->bringToFront();
            }
        }
    });
    return QString();
}
