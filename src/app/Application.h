#pragma once

#include <QApplication>

#include <memory>

class AppDelegate;
class AppRoot;
class CommandLine;

/// The application object: one per process. It runs the editor from start to end and posts
/// the application-wide notifications (NotificationCenter).
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
    /// closes, as NotificationCenter's NotifUpdatePreferences); `object` is the sender.
    void postUpdatePreferences(QObject* object);

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

private:
    /// Shows a warning without waiting for it to be dismissed.
    void showAlert(const QString& title, const QString& text, const QString& informativeText);

    /// The shared objects of the editor: built with the application, gone before it.
    std::unique_ptr<AppRoot> _root;
    AppDelegate* _delegate = nullptr;
    bool _terminating = false;
};
