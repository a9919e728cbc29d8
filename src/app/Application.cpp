#include "app/Application.h"

#include "app/AppDelegate.h"
#include "app/AppRoot.h"
#include "app/CommandLine.h"
#include "app/CommandLineOpener.h"
#include "app/DocumentController.h"
#include "app/ScriptCommands.h"
#include "app/SingleInstance.h"
#include "app/TerminationSignals.h"
#include "document/Document.h"
#include "document/RecoveryStore.h"
#include "platform/NotificationCenter.h"
#include "platform/SystemBeep.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptManager.h"
#include "window/TabWindow.h"

#include <QIcon>
#include <QMessageBox>
#include <QPointer>
#include <QProcess>
#include <QWidget>

Application::Application(int& argc, char** argv)
    : QApplication(argc, argv)
{
    setApplicationName(QStringLiteral("Tessaran"));
    setOrganizationName(QStringLiteral("Tessaran"));
    setApplicationVersion(QStringLiteral(TESSARAN_VERSION));
    setDesktopFileName(QStringLiteral("tessaran"));
    SystemBeep::setSound(&QApplication::beep);
    // The installed theme icon when there is one, else the copy built into the program.
    setWindowIcon(QIcon::fromTheme(QStringLiteral("tessaran"),
                                   QIcon(QStringLiteral(":/Images/tessaran.png"))));
    _root = std::make_unique<AppRoot>(UserDefaults::standardPath());
    _delegate = new AppDelegate(this);
}

Application::~Application()
{
    // Windows and their panes must go while the application object can still take them down.
    DocumentController::sharedDocumentController().discardAllDocuments();
    // Tab windows left without tabs are on their way out; no event loop is left to finish it.
    qDeleteAll(TabWindow::tabWindows());
    // The shared objects go now, while the application can still take their windows down.
    _root.reset();
}

Application* Application::instance()
{
    return qobject_cast<Application*>(QCoreApplication::instance());
}

int Application::run(const CommandLine& commandLine)
{
    DocumentController::sharedDocumentController().awakeFromNib();
    _delegate->applicationDidFinishLaunching();
    SingleInstance::listen();
    DocumentController& documents = DocumentController::sharedDocumentController();
    // The session ending or a shutdown ends the editor without questions, as a crash would,
    // but with every unsaved change in a copy that the next start offers back.
    auto* termination = new TerminationSignals(this);
    connect(termination, &TerminationSignals::received, this,
            &Application::terminateKeepingUnsavedDocuments);
    RecoveryStore& recovery = RecoveryStore::sharedRecoveryStore();
    connect(&recovery, &RecoveryStore::recoveryFailed, this,
            [this](const QString& message) { showAlert(tr("Error"), message, QString()); });
    // Unsaved text left behind by an editor that crashed or was killed comes back first.
    const RecoveryStore::Recovery recovered = recovery.recoverOrphans(documents);
    if (!recovered.notices.isEmpty()) {
        showAlert(tr("Notice"), tr("Unsaved changes of the last run were recovered."),
                  recovered.notices.join(QStringLiteral("\n\n")));
    }
    if (commandLine.files().empty()) {
        // The windows open when the last run ended come back; a new one only when none does.
        if (documents.reopenDocumentsOfLastRun() + recovered.count == 0 &&
            _delegate->applicationShouldOpenUntitledFile()) {
            _delegate->openUntitledDocument();
        }
    } else {
        // Files named on the command line take the place of the last run's windows.
        documents.noteDocumentsForRestoration();
        CommandLineOpener::open(commandLine);
    }
    const int status = exec();
    // Quitting from the menu noted the windows before closing them; an end that leaves
    // them open (the session ending, say) notes them here.
    if (!documents.documents().empty()) {
        documents.noteDocumentsForRestoration();
    }
    _delegate->applicationWillTerminate();
    return status;
}

void Application::terminateKeepingUnsavedDocuments()
{
    if (_terminating) {
        return;
    }
    _terminating = true;
    DocumentController& documents = DocumentController::sharedDocumentController();
    RecoveryStore::sharedRecoveryStore().keepCopiesForNextStart(documents.documents());
    documents.noteDocumentsForRestoration();
    // A script's process ends with the editor rather than run on unattended.
    ScriptManager& scripts = ScriptManager::sharedScriptManager();
    const QPointer<QProcess> task = scripts.task();
    if (task && task->state() != QProcess::NotRunning) {
        scripts.stopProcess();
        if (task && !task->waitForFinished(1000)) {
            task->kill();
            task->waitForFinished(1000);
        }
    }
    // Not quit(): that closes the windows, and closing a window asks about unsaved changes.
    // exit() also ends an alert's or a dialog's loop that is running now.
    QCoreApplication::exit(0);
}

void Application::showAlert(const QString& title, const QString& text,
                            const QString& informativeText)
{
    auto* alert =
        new QMessageBox(QMessageBox::Warning, title, text, QMessageBox::Ok, activeWindow());
    alert->setInformativeText(informativeText);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->open();
}

void Application::postUpdatePreferences(QObject* object)
{
    Q_EMIT NotificationCenter::defaultCenter().NotifUpdatePreferences(object);
}

void Application::importToScript(QObject* sender)
{
    ScriptCommands::importToScript(qobject_cast<QWidget*>(sender));
}

void Application::getToScript(QObject* sender)
{
    Q_UNUSED(sender);
    ScriptCommands::getToScript();
}

void Application::readMe(QObject* sender)
{
    Q_UNUSED(sender);
    ScriptCommands::readMe();
}
