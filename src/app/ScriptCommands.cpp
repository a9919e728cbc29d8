#include "app/ScriptCommands.h"

#include "app/DocumentController.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "platform/FileManager.h"
#include "platform/PropertyList.h"
#include "scripts/ScriptLibrary.h"
#include "scripts/ScriptManager.h"
#include "window/DocumentWindow.h"
#include "window/ScriptAlert.h"
#include "window/ScriptSheet.h"
#include "window/WindowController.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QUrl>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("ScriptCommands", text);
}

} // namespace

const QStringList& ScriptCommands::scriptSyntaxNames()
{
    static const QStringList names = {QStringLiteral("AppleScript"), QStringLiteral("ShellScript"),
                                      QStringLiteral("Perl"),        QStringLiteral("PHP"),
                                      QStringLiteral("Python"),      QStringLiteral("Ruby")};
    return names;
}

QString ScriptCommands::exampleScriptsAddress()
{
    return QStringLiteral("https://github.com/tessaran/tessaran-scripts");
}

void ScriptCommands::runScript(WindowController* controller)
{
    TextView* view = controller ? controller->textView() : nullptr;
    if (!view) {
        return;
    }
    if (!controller->syntaxColouring()) {
        ScriptAlert::show(tr("Notice"), tr("Selection of syntax colouring is required."), false,
                          false, controller->window());
        return;
    }
    ScriptManager::sharedScriptManager().runScriptWithSource(controller->document()->string(),
                                                             controller->selectedSyntaxName());
}

QString ScriptCommands::firstExtensionOfSyntax(const QVariantMap& dictionary,
                                               const QString& syntaxName)
{
    QVariantMap definition = dictionary;
    if (!definition.contains(QStringLiteral("Extensions"))) {
        for (const QString& path :
             {FileManager::syntaxDefinitionDirectoryPathInPath(syntaxName +
                                                               QStringLiteral(".plist")),
              QStringLiteral(":/SyntaxDefinition/") + syntaxName + QStringLiteral(".plist")}) {
            QFile file(path);
            if (file.open(QIODevice::ReadOnly)) {
                definition = PropertyList::fromData(file.readAll()).toMap();
                break;
            }
        }
    }
    const QVariantList extensions = definition.value(QStringLiteral("Extensions")).toList();
    if (extensions.isEmpty()) {
        return QString();
    }
    const QVariant first = extensions.first();
    return first.typeId() == QMetaType::QVariantMap
               ? first.toMap().value(QStringLiteral("keyString")).toString()
               : first.toString();
}

void ScriptCommands::addScript(WindowController* controller)
{
    TextView* view = controller ? controller->textView() : nullptr;
    if (!view) {
        return;
    }
    QWidget* window = controller->window();
    if (!controller->syntaxColouring()) {
        ScriptAlert::show(tr("Notice"), tr("Selection of syntax colouring is required."), false,
                          false, window);
        return;
    }
    if (!scriptSyntaxNames().contains(controller->selectedSyntaxName())) {
        ScriptAlert::show(tr("Notice"),
                          tr("Add Script to AppleScript and ShellScript, Perl, PHP, Python, Ruby "
                             "Only. \nPlease check syntax colouring."),
                          false, false, window);
        return;
    }
    ScriptSheet sheet(ScriptManager::sharedScriptManager().library(), window, true);
    sheet.makeFolderPopup();
    sheet.scriptLabel()->setText(tr("Add this script to :"));
    sheet.scriptTitleField()->setText(controller->document()->displayName());
    const QString name = sheet.runSheet();
    if (!name.isEmpty()) {
        addScriptNamed(controller, name, sheet.selectedFolder());
    }
}

bool ScriptCommands::addScriptNamed(WindowController* controller, const QString& name,
                                    const ScriptObjectPtr& folder)
{
    // In-process scripts are JavaScript here: keep them as ".js" so that they run.
    const QString extension =
        controller->selectedSyntaxName() == u"AppleScript"
            ? QStringLiteral("js")
            : firstExtensionOfSyntax(controller->textView()->syntaxDictionary(),
                                     controller->selectedSyntaxName());
    if (!ScriptManager::sharedScriptManager().library().addScript(
            name, extension, controller->document()->string(),
            controller->document()->documentEncoding(), folder)) {
        ScriptAlert::show(tr("Notice"), tr("A Script was not able to be created."), true);
        return false;
    }
    return true;
}

void ScriptCommands::addScriptFolder(QWidget* window)
{
    ScriptSheet sheet(ScriptManager::sharedScriptManager().library(), window, true);
    sheet.makeFolderPopup();
    sheet.scriptLabel()->setText(tr("Add script folder :"));
    const QString name = sheet.runSheet();
    if (!name.isEmpty()) {
        ScriptManager::sharedScriptManager().library().addScriptFolder(name,
                                                                       sheet.selectedFolder());
    }
}

void ScriptCommands::importToScript(QWidget* window)
{
    QFileDialog panel(window);
    panel.setOption(QFileDialog::DontUseNativeDialog, true);
    panel.setFileMode(QFileDialog::ExistingFiles);
    QStringList patterns;
    for (const QString& type : ScriptLibrary::importableTypes()) {
        patterns << QStringLiteral("*.") + type;
    }
    panel.setNameFilter(tr("Scripts (%1)").arg(patterns.join(u' ')));
    if (panel.exec() != QDialog::Accepted) {
        return;
    }
    if (!ScriptManager::sharedScriptManager()
             .library()
             .importFiles(panel.selectedFiles())
             .isEmpty()) {
        ScriptAlert::show(tr("Notice"), tr("A Script was not able to be created."), true);
    }
}

void ScriptCommands::readMe()
{
    // The resource is copied out so that it opens as an ordinary file.
    const QString path =
        FileManager::applicationSupportDirectoryPath() + QStringLiteral("/ReadMe.txt");
    QFile resource(QStringLiteral(":/ReadMe.txt"));
    QFile file(path);
    if (!resource.open(QIODevice::ReadOnly)) {
        return;
    }
    const QByteArray text = resource.readAll();
    if (!file.open(QIODevice::ReadOnly) || file.readAll() != text) {
        file.close();
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
            file.write(text) != text.size()) {
            return;
        }
    }
    file.close();
    DocumentController::sharedDocumentController().openDocumentWithContentsOfURL(path);
}

void ScriptCommands::getToScript()
{
    QDesktopServices::openUrl(QUrl(exampleScriptsAddress()));
}
