#include "document/DocumentController.h"

#include "app/Application.h"
#include "platform/FileManager.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptManager.h"
#include "scripts/ScriptObject.h"

#include <QFile>

namespace {

const QString kFirstStartupApplication = QStringLiteral("FirstStartupApplication");

// Copies a shipped resource into the user's folder; an existing file is never replaced.
void copyResource(const QString& resource, const QString& destination)
{
    if (destination.isEmpty() || QFile::exists(destination) || !QFile::exists(resource)) {
        return;
    }
    if (QFile::copy(resource, destination)) {
        // Resources are read-only; the user's copy is theirs to edit.
        QFile::setPermissions(destination, QFile::permissions(destination) | QFile::WriteOwner |
                                               QFile::ReadOwner);
    }
}

ScriptObjectPtr installScriptGroup(const QString& title, const QStringList& files)
{
    ScriptObjectPtr group = ScriptObject::initWithPath(title, false);
    for (const QString& file : files) {
        const QString resource = QStringLiteral(":/Script/") + file;
        if (!QFile::exists(resource)) {
            continue;
        }
        const QString destination = FileManager::scriptDirectoryPathInPath(file);
        copyResource(resource, destination);
        if (file.endsWith(QStringLiteral(".sh"))) {
            QFile::setPermissions(destination, QFile::permissions(destination) | QFile::ExeOwner);
        }
        ScriptObjectPtr node = ScriptObject::initWithPath(destination, true);
        node->setInitApp(true);
        group->addChildren(node);
    }
    return group;
}

} // namespace

DocumentController::DocumentController(QObject* parent)
    : QObject(parent)
{}

DocumentController& DocumentController::sharedDocumentController()
{
    static DocumentController* controller = new DocumentController(Application::instance());
    return *controller;
}

const QStringList& DocumentController::shippedSyntaxNames()
{
    static const QStringList names = {
        QStringLiteral("AppleScript"), QStringLiteral("C"),           QStringLiteral("C++"),
        QStringLiteral("CCS"),         QStringLiteral("Haskell"),     QStringLiteral("HTML"),
        QStringLiteral("Java"),        QStringLiteral("JavaScript"),  QStringLiteral("Objective C"),
        QStringLiteral("Perl"),        QStringLiteral("PHP"),         QStringLiteral("Python"),
        QStringLiteral("Ruby"),        QStringLiteral("ShellScript"), QStringLiteral("SQL"),
        QStringLiteral("XML"),         QStringLiteral("Plain Text")};
    return names;
}

const QStringList& DocumentController::shippedInProcessScripts()
{
    static const QStringList names = {
        QStringLiteral("Insert to current date.js"), QStringLiteral("Insert to textEncoding.js"),
        QStringLiteral("Insert to filePath.js"), QStringLiteral("Put a phrase in bracket.js"),
        QStringLiteral("File is open in Safari.js")};
    return names;
}

const QStringList& DocumentController::shippedShellScripts()
{
    static const QStringList names = {QStringLiteral("Put a phrase in brace.sh"),
                                      QStringLiteral("Output to calendar.sh")};
    return names;
}

void DocumentController::awakeFromNib()
{
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    _autosavingDelay = defaults.integerForKey(QStringLiteral("AutosavingDelay"));
    _openDefaultsTextEncoding =
        defaults.unsignedIntegerForKey(QStringLiteral("OpenDefaultsTextEncoding"));
    _isOpenPanel = false;
    _isRevertTo = false;
    _isReopen = false;

    const QString app = FileManager::applicationName();
    FileManager::findOrCreateDirectory(FileManager::ApplicationSupportDirectory,
                                       FileManager::UserDomainMask,
                                       app + QStringLiteral("/Script"));
    FileManager::findOrCreateDirectory(FileManager::ApplicationSupportDirectory,
                                       FileManager::UserDomainMask,
                                       app + QStringLiteral("/SyntaxDefinition"));

    if (defaults.boolForKey(kFirstStartupApplication)) {
        installShippedResources();
    } else {
        ScriptManager::sharedScriptManager().readScriptDataSource();
    }
}

void DocumentController::installShippedResources()
{
    for (const QString& name : shippedSyntaxNames()) {
        const QString file = name + QStringLiteral(".plist");
        copyResource(QStringLiteral(":/SyntaxDefinition/") + file,
                     FileManager::syntaxDefinitionDirectoryPathInPath(file));
    }
    ScriptObjectList library;
    library.append(
        installScriptGroup(QStringLiteral("Exsample for AppleScript"), shippedInProcessScripts()));
    library.append(
        installScriptGroup(QStringLiteral("Exsample for ShellScript"), shippedShellScripts()));
    Application::instance()->setScriptDataSource(library);
    UserDefaults::standardUserDefaults().setBool(false, kFirstStartupApplication);
}
