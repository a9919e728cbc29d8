#include "app/Application.h"

#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/CommandLineOpener.h"
#include "app/SingleInstance.h"
#include "document/DocumentController.h"
#include "document/RecoveryStore.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptCommands.h"

#include <QIcon>
#include <QWidget>

Application::Application(int& argc, char** argv)
    : QApplication(argc, argv)
{
    setApplicationName(QStringLiteral("Tessaran"));
    setOrganizationName(QStringLiteral("Tessaran"));
    setApplicationVersion(QStringLiteral(TESSARAN_VERSION));
    setDesktopFileName(QStringLiteral("tessaran"));
    // The installed theme icon when there is one, else the copy built into the program.
    setWindowIcon(QIcon::fromTheme(QStringLiteral("tessaran"),
                                   QIcon(QStringLiteral(":/Images/tessaran.png"))));
    // The defaults are registered before any other object reads a setting.
    AppDelegate::initialize();
    _delegate = new AppDelegate(this);
}

Application::~Application()
{
    // Windows and their panes must go while the application object can still take them down.
    DocumentController::sharedDocumentController().discardAllDocuments();
    // The settings reach the disk now, while the program's folders are certain to be there,
    // not from a static destructor after main() has returned.
    UserDefaults::standardUserDefaults().synchronize();
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
    // Unsaved text left behind by an editor that crashed or was killed comes back first.
    const int recovered = RecoveryStore::sharedRecoveryStore().recoverOrphans().count;
    if (commandLine.files().empty()) {
        // The windows open when the last run ended come back; a new one only when none does.
        if (documents.reopenDocumentsOfLastRun() + recovered == 0 &&
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

void Application::postUpdatePreferences(QObject* object)
{
    Q_EMIT NotifUpdatePreferences(object);
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
