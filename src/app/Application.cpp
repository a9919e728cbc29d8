#include "app/Application.h"

#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "document/DocumentController.h"
#include "scripts/ScriptCommands.h"

#include <QWidget>

Application::Application(int& argc, char** argv)
    : QApplication(argc, argv)
{
    setApplicationName(QStringLiteral("Tessaran"));
    setOrganizationName(QStringLiteral("Tessaran"));
    setApplicationVersion(QStringLiteral(TESSARAN_VERSION));
    setDesktopFileName(QStringLiteral("tessaran"));
    // The defaults are registered before any other object reads a setting.
    AppDelegate::initialize();
    _delegate = new AppDelegate(this);
}

Application::~Application() = default;

Application* Application::instance()
{
    return qobject_cast<Application*>(QCoreApplication::instance());
}

int Application::run(const CommandLine& commandLine)
{
    DocumentController::sharedDocumentController().awakeFromNib();
    _delegate->applicationDidFinishLaunching();
    if (commandLine.files().empty()) {
        if (_delegate->applicationShouldOpenUntitledFile()) {
            _delegate->openUntitledDocument();
        }
    } else {
        for (const CommandLine::File& file : commandLine.files()) {
            _delegate->openDocument(file.path);
        }
    }
    const int status = exec();
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
