#include "app/ShippedResources.h"

#include "platform/FileManager.h"
#include "platform/PreferencesValues.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptManager.h"
#include "scripts/ScriptObject.h"

#include <QFile>

namespace {

ScriptObjectPtr installScriptGroup(const QString& title, const QStringList& files)
{
    ScriptObjectPtr group = ScriptObject::initWithPath(title, false);
    for (const QString& file : files) {
        const QString resource = QStringLiteral(":/Script/") + file;
        if (!QFile::exists(resource)) {
            continue;
        }
        const QString destination = FileManager::scriptDirectoryPathInPath(file);
        ShippedResources::copyResource(resource, destination);
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

const QStringList& ShippedResources::syntaxNames()
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

const QStringList& ShippedResources::inProcessScripts()
{
    static const QStringList names = {
        QStringLiteral("Insert to current date.js"), QStringLiteral("Insert to textEncoding.js"),
        QStringLiteral("Insert to filePath.js"), QStringLiteral("Put a phrase in bracket.js"),
        QStringLiteral("File is open in Safari.js")};
    return names;
}

const QStringList& ShippedResources::shellScripts()
{
    static const QStringList names = {QStringLiteral("Put a phrase in brace.sh"),
                                      QStringLiteral("Output to calendar.sh")};
    return names;
}

void ShippedResources::copyResource(const QString& resource, const QString& destination)
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

void ShippedResources::install()
{
    for (const QString& name : syntaxNames()) {
        const QString file = name + QStringLiteral(".plist");
        copyResource(QStringLiteral(":/SyntaxDefinition/") + file,
                     FileManager::syntaxDefinitionDirectoryPathInPath(file));
    }
    ScriptObjectList library;
    library.append(
        installScriptGroup(QStringLiteral("Exsample for AppleScript"), inProcessScripts()));
    library.append(installScriptGroup(QStringLiteral("Exsample for ShellScript"), shellScripts()));
    ScriptManager::sharedScriptManager().setScriptDataSource(library);
    UserDefaults::standardUserDefaults().setBool(false, SettingsKey::FirstStartupApplication);
    // Written now, with the flag above: a first run that never quits cleanly must not leave
    // the next one an empty library.
    ScriptManager::sharedScriptManager().writeScriptDataSource();
}
