#pragma once

#include "scripts/ScriptObject.h"

#include <QApplication>

#include <optional>

class AppDelegate;
class CommandLine;

/// The application object: one per process. It carries the application-wide signals
/// that stand in for notifications.
class Application : public QApplication
{
    Q_OBJECT

public:
    Application(int& argc, char** argv);
    ~Application() override;

    /// The running application; null before it is created.
    static Application* instance();

    AppDelegate& delegate() { return *_delegate; }

    /// Runs the editor: start-up, the event loop, termination. Returns the exit status.
    int run(const CommandLine& commandLine);

    /// Tells every open window to re-read the settings (sent when the preferences window
    /// closes); `object` is the sender.
    void postUpdatePreferences(QObject* object);

    /// The top-level entries of the script library; none until the library is read.
    const std::optional<ScriptObjectList>& scriptDataSource() const { return _scriptDataSource; }
    void setScriptDataSource(std::optional<ScriptObjectList> nodes)
    {
        _scriptDataSource = std::move(nodes);
    }
    /// Tells every Scripts menu and script pane that the library changed.
    void postScriptDataSourceChanged() { Q_EMIT scriptDataSourceChanged(); }

    /// Asks for script files and adds them to the library.
    void importToScript(QObject* sender);
    /// Opens the web page of example scripts.
    void getToScript(QObject* sender);
    /// Opens the shipped ReadMe as a document.
    void readMe(QObject* sender);

    /// Ends the run without asking anything, as when the session ends: keeps recovery copies
    /// of the documents with unsaved changes for the next start, notes the windows for
    /// restoration and ends a running script's process. Called for SIGTERM and SIGHUP.
    void terminateKeepingUnsavedDocuments();

Q_SIGNALS:
    void NotifUpdatePreferences(QObject* object);
    /// The script library changed: menus are rebuilt, panes reloaded.
    void scriptDataSourceChanged();

private:
    /// Shows a warning without waiting for it to be dismissed.
    void showAlert(const QString& title, const QString& text, const QString& informativeText);

    AppDelegate* _delegate = nullptr;
    bool _terminating = false;
    std::optional<ScriptObjectList> _scriptDataSource;
};
