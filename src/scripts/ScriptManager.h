#pragma once

#include "document/Document.h"
#include "scripts/ScriptLibrary.h"
#include "scripts/ScriptObject.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QProcess>
#include <QStringList>

#include <memory>
#include <optional>

class Document;
class EncodingManager;
class QTemporaryFile;
class ScriptFolderWatcher;
class ScriptTarget;
class UserDefaults;

/// The application's one script manager: it keeps the script library in the settings store
/// (written whenever it changes) and runs scripts, one child process at a time for the
/// whole application. A child gets its source as its last argument (itself after "-c" or
/// "-e", else the path of a temporary file holding it) and the front document's selection
/// on its standard input; what it writes (output and errors together) is inserted piece
/// by piece at the selection of the document that was in front when it started, or into a
/// new document for "@new". Output stops the child when it passes the output limit, and
/// closing the window that receives it stops the child too.
class ScriptManager : public QObject
{
    Q_OBJECT

public:
    static ScriptManager& sharedScriptManager();

    /// Keeps the library in `store`; reads script files through `encodings`.
    ScriptManager(UserDefaults& store, EncodingManager& encodings, QObject* parent = nullptr);
    ~ScriptManager() override;

    /// The commands that change the library.
    ScriptLibrary& library() { return _library; }

    /// What scripts act on; none until the application sets it, and then scripts find no
    /// document.
    ScriptTarget* target() const { return _target; }
    void setTarget(ScriptTarget* target) { _target = target; }

    /// The top-level entries of the script library; none until the library is read.
    const std::optional<ScriptObjectList>& scriptDataSource() const { return _scriptDataSource; }
    void setScriptDataSource(std::optional<ScriptObjectList> nodes)
    {
        _scriptDataSource = std::move(nodes);
    }
    /// Tells every Scripts menu and script pane that the library changed.
    void postScriptDataSourceChanged() { Q_EMIT scriptDataSourceChanged(); }

    /// The command and options of a script's "#!" line.
    struct Interpreter {
        QString command; ///< from the last "#!" line: the text from a "/" to a "-" or the end
        QString options; ///< from the first "-" to the end of that line; empty for none
        /// The program to start and the arguments before the source. A command that holds
        /// blanks ("/usr/bin/env python3") starts its first word with the others first.
        QString program() const;
        /// Whether the options end with an option that takes the program text itself ("-c",
        /// "-e"); other interpreters are given a file to read.
        bool takesProgramText() const;
        /// The arguments, with `sourceArgument` (the source, or the path of a file holding
        /// it) last.
        QStringList arguments(const QString& sourceArgument) const;
    };
    /// The "#!" line read with the patterns of findString(); none without a command.
    static std::optional<Interpreter> interpreterOfSource(const QString& source);
    /// The last capture of group 1 of `pattern` (case-insensitive, anchors at every line)
    /// over `string`; none when it never matched.
    static std::optional<QString> findString(const QString& string, const QString& pattern);
    /// Whether `interpreter` names a program that can be started (for env, also the
    /// program env is asked to find).
    static bool isRunnable(const Interpreter& interpreter);
    /// Decodes one piece of UTF-8 output. Bytes of a character cut at the end of the piece
    /// are kept in `pending` for the next one; bytes that are not UTF-8 become replacement
    /// characters (U+FFFD).
    static QString decodeOutputPiece(QByteArray& pending, const QByteArray& piece);

    static constexpr qint64 DefaultOutputLimit = qint64(64) << 20;
    /// The most output, in bytes, one script may write; beyond it the script is stopped
    /// with a message (the tests lower it).
    static qint64 outputLimit();
    static void setOutputLimit(qint64 bytes);

    /// Runs a script given as text, of the kind named by a syntax name ("AppleScript",
    /// "Perl", "PHP", "Python", "Ruby", "ShellScript"); any other kind is refused.
    void runScriptWithSource(const QString& source, const QString& scriptName);
    /// Runs a script file, choosing the kind by the file's extension.
    void runRegisterScriptWithPath(const QString& path);
    /// Runs an in-process script file (".js"); other files cannot be loaded here.
    void runRegisterAppleScriptWithPath(const QString& path);
    /// Runs a library script after checking that its file exists (runRegisterScript:).
    void runRegisterScript(const ScriptObjectPtr& node);
    /// Starts the child: `arguments` is the program followed by its arguments.
    void startProcess(const QStringList& arguments);
    /// Receives one piece of output; an empty piece is the end of the output.
    void getData(const QByteArray& data);
    /// Ends the child process and every process it started; none of its output arrives
    /// after this, and its temporary source file is removed.
    void stopProcess();
    /// A script file's text in the encoding of its attribute, or the detected one.
    std::optional<QString> sourceOfFilePath(const QString& path) const;

    bool isFindRunning() const { return _isFindRunning; }
    bool isNewWindow() const { return _isNewWindow; }
    /// The process started last (kept after it ends); null before the first.
    QProcess* task() const { return _task; }

    /// Starts watching the Script folder for scripts put there by hand (once, at launch).
    void bootUp();

    /// Loads the library from `SettingsKey::ScriptAllItems` into the application's
    /// scriptDataSource; an empty library when the setting is missing or cannot be read.
    void readScriptDataSource();
    /// Stores the application's scriptDataSource into `SettingsKey::ScriptAllItems` and writes the
    /// settings out, so that the library outlives a crash.
    void writeScriptDataSource();

    /// The library's stored form: an XML property list whose root dictionary holds the
    /// top-level nodes under "ScriptObjects".
    static QByteArray archivedScriptDataSource(const ScriptObjectList& nodes);
    /// The nodes of an archive; none when `data` is not one.
    static std::optional<ScriptObjectList> unarchivedScriptDataSource(const QByteArray& data);

Q_SIGNALS:
    /// A child process was started.
    void processStarted();
    /// The running child ended (after its last output was inserted) or was stopped.
    void processStopped();
    /// The script library changed: menus are rebuilt, panes reloaded.
    void scriptDataSourceChanged();

private:
    /// Makes the window of `document` the one that receives the output.
    void setOutputDocument(Document* document);
    void insertOutput(const QString& text);
    /// Tells the user through the target; without one nobody is there to tell.
    void alert(const QString& title, const QString& text, bool caution = false,
               bool applicationModal = false) const;

    UserDefaults& _store;
    EncodingManager& _encodings;
    ScriptLibrary _library{*this};
    ScriptTarget* _target = nullptr;
    std::optional<ScriptObjectList> _scriptDataSource;
    QPointer<QProcess> _task;
    bool _isFindRunning = false;
    bool _isNewWindow = false;
    QByteArray _pendingOutput;
    qint64 _outputBytes = 0;
    /// Where the output goes: the document in front when the child started, or the one
    /// opened for "@new". Without one, the output is dropped; once its window is closed,
    /// the child is stopped.
    QPointer<Document> _outputDocument;
    QPointer<QObject> _outputView;
    bool _hasOutputWindow = false;
    /// The source handed to an interpreter as a file, removed when the child ends.
    std::unique_ptr<QTemporaryFile> _sourceFile;
    ScriptFolderWatcher* _folderWatcher = nullptr;
};
