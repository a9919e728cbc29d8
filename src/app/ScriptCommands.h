#pragma once

#include "scripts/ScriptObject.h"

#include <QString>

class QWidget;
class WindowController;

/// The script commands of the menus and the script pane that need a window: running the
/// document itself or a library entry, saving the document as a script, adding a folder,
/// importing files, and the two help commands.
class ScriptCommands
{
public:
    /// The syntaxes whose documents can be run or kept as scripts.
    static const QStringList& scriptSyntaxNames();

    /// Runs the window's whole text as a script of the window's syntax (runScript:).
    static void runScript(WindowController* controller);
    /// Saves the window's text as a new library script through the sheet (addScript:).
    static void addScript(WindowController* controller);
    /// The same after the sheet: `name` in `folder`; false after the alert when the file
    /// could not be created.
    static bool addScriptNamed(WindowController* controller, const QString& name,
                               const ScriptObjectPtr& folder);
    /// Adds a folder through the sheet on `window` (addScriptFolder:).
    static void addScriptFolder(QWidget* window);
    /// Asks for files of the importable types and adds them (importToScript:).
    static void importToScript(QWidget* window);
    /// Opens the shipped ReadMe as a document (readMe:).
    static void readMe();
    /// Opens the web page of example scripts (getToScript:).
    static void getToScript();
    static QString exampleScriptsAddress();

    /// The first extension of the syntax definition named `syntaxName`.
    static QString firstExtensionOfSyntax(const QVariantMap& dictionary, const QString& syntaxName);
};
