#include "scripts/ScriptManager.h"

#include "document/Document.h"
#include "document/EncodingManager.h"
#include "platform/PreferencesValues.h"
#include "platform/PropertyList.h"
#include "platform/Regex.h"
#include "platform/SharedInstance.h"
#include "platform/TextCodec.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptFolderWatcher.h"
#include "scripts/ScriptLibrary.h"
#include "scripts/ScriptTarget.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QProcess>
#include <QStandardPaths>
#include <QStringDecoder>
#include <QTemporaryFile>
#include <QTimer>
#include <QUrl>

#include <csignal>
#include <sys/types.h>
#include <unistd.h>

namespace {

const QString kScriptObjects = QStringLiteral("ScriptObjects");

const QStringList kProcessKinds = {QStringLiteral("Perl"), QStringLiteral("PHP"),
                                   QStringLiteral("Python"), QStringLiteral("Ruby"),
                                   QStringLiteral("ShellScript")};

qint64& limit()
{
    static qint64 bytes = ScriptManager::DefaultOutputLimit;
    return bytes;
}

/// Sends `signal` to the child's process group, which holds whatever the script started;
/// to the child alone while it has not made its group yet.
void signalProcessGroup(qint64 pid, int signal)
{
    if (pid <= 0) {
        return;
    }
    if (::kill(-pid_t(pid), signal) != 0) {
        ::kill(pid_t(pid), signal);
    }
}

} // namespace

ScriptManager::ScriptManager(UserDefaults& store, EncodingManager& encodings, QObject* parent)
    : QObject(parent)
    , _store(store)
    , _encodings(encodings)
{
    // Every change of the library reaches the settings file at once: a run that ends
    // without the termination step must not take the library with it.
    connect(this, &ScriptManager::scriptDataSourceChanged, this,
            &ScriptManager::writeScriptDataSource);
}

ScriptManager::~ScriptManager() = default;

qint64 ScriptManager::outputLimit()
{
    return limit();
}

void ScriptManager::setOutputLimit(qint64 bytes)
{
    limit() = bytes;
}

ScriptManager& ScriptManager::sharedScriptManager()
{
    return SharedInstance<ScriptManager>::object();
}

QByteArray ScriptManager::archivedScriptDataSource(const ScriptObjectList& nodes)
{
    QVariantList list;
    for (const ScriptObjectPtr& node : nodes) {
        list.append(node->encode());
    }
    return PropertyList::toXml(QVariantMap{{kScriptObjects, list}});
}

std::optional<ScriptObjectList> ScriptManager::unarchivedScriptDataSource(const QByteArray& data)
{
    const QVariant root = PropertyList::fromData(data);
    const QVariant nodes = root.toMap().value(kScriptObjects);
    if (nodes.typeId() != QMetaType::QVariantList) {
        return std::nullopt;
    }
    ScriptObjectList result;
    for (const QVariant& item : nodes.toList()) {
        if (ScriptObjectPtr node = ScriptObject::decode(item)) {
            result.append(node);
        }
    }
    return result;
}

void ScriptManager::readScriptDataSource()
{
    const QByteArray data = _store.dataForKey(SettingsKey::ScriptAllItems);
    setScriptDataSource(unarchivedScriptDataSource(data).value_or(ScriptObjectList()));
}

void ScriptManager::writeScriptDataSource()
{
    const auto& nodes = _scriptDataSource;
    _store.setObject(archivedScriptDataSource(nodes.value_or(ScriptObjectList())),
                     SettingsKey::ScriptAllItems);
    _store.synchronize();
}

// Reading the "#!" line ---------------------------------------------------------------

std::optional<QString> ScriptManager::findString(const QString& string, const QString& pattern)
{
    if (string.isNull()) {
        return std::nullopt;
    }
    const Regex regex(pattern, Regex::CaseInsensitive | Regex::AnchorsMatchLines);
    if (!regex.isValid()) {
        return std::nullopt;
    }
    std::optional<QString> result;
    regex.forEachMatch(string, [&](const Regex::Match& match) {
        if (match.groups.size() > 1 && !match.groups[1].isNotFound()) {
            result = string.mid(match.groups[1].location, match.groups[1].length);
        }
        return true;
    });
    return result;
}

std::optional<ScriptManager::Interpreter> ScriptManager::interpreterOfSource(const QString& source)
{
    const std::optional<QString> line = findString(source, QStringLiteral("(^#!.*$)"));
    const std::optional<QString> command =
        findString(line.value_or(QString()), QStringLiteral("(/.*?)(-|$)"));
    if (!line || !command || command->trimmed().isEmpty()) {
        return std::nullopt;
    }
    Interpreter interpreter;
    interpreter.command = command->trimmed();
    interpreter.options = findString(*line, QStringLiteral("(-.*)$")).value_or(QString()).trimmed();
    return interpreter;
}

QString ScriptManager::Interpreter::program() const
{
    return command.section(u' ', 0, 0, QString::SectionSkipEmpty);
}

bool ScriptManager::Interpreter::takesProgramText() const
{
    const QString last = options.section(u' ', -1, -1, QString::SectionSkipEmpty);
    return last == u"-c" || last == u"-e";
}

QStringList ScriptManager::Interpreter::arguments(const QString& sourceArgument) const
{
    QStringList list = command.split(u' ', Qt::SkipEmptyParts).mid(1);
    if (!options.isEmpty()) {
        list << options;
    }
    list << sourceArgument;
    return list;
}

bool ScriptManager::isRunnable(const Interpreter& interpreter)
{
    const QFileInfo program(interpreter.program());
    if (!program.isFile() || !program.isExecutable()) {
        return false;
    }
    if (program.fileName() != u"env") {
        return true;
    }
    // env starts the first word that is not an option or a setting, found in the PATH.
    for (const QString& word : interpreter.command.split(u' ', Qt::SkipEmptyParts).mid(1)) {
        if (!word.startsWith(u'-') && !word.contains(u'=')) {
            return !QStandardPaths::findExecutable(word).isEmpty();
        }
    }
    return false;
}

QString ScriptManager::decodeOutputPiece(QByteArray& pending, const QByteArray& piece)
{
    QByteArray bytes = pending + piece;
    pending.clear();
    // Keep the lead bytes of a character that the next piece completes.
    qsizetype cut = bytes.size();
    for (qsizetype back = 1; back <= 3 && back <= bytes.size(); ++back) {
        const auto byte = quint8(bytes[bytes.size() - back]);
        if ((byte & 0xC0) == 0x80) {
            continue;
        }
        const int needed = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        if (needed > back) {
            cut = bytes.size() - back;
        }
        break;
    }
    pending = bytes.mid(cut);
    bytes.truncate(cut);
    // Whatever is not UTF-8 shows as replacement characters rather than going missing.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    return decoder.decode(bytes);
}

// Running ------------------------------------------------------------------------------

void ScriptManager::alert(const QString& title, const QString& text, bool caution,
                          bool applicationModal) const
{
    if (_target) {
        _target->showAlert(title, text, caution, applicationModal);
    }
}

void ScriptManager::runScriptWithSource(const QString& source, const QString& scriptName)
{
    if (scriptName == u"AppleScript") {
        const std::optional<QString> error =
            _target ? _target->runInProcessScript(source, QString()) : std::nullopt;
        if (error) {
            alert(tr("Error Script"), *error, true);
        }
        return;
    }
    if (!kProcessKinds.contains(scriptName)) {
        alert(tr("This source cannot be performed."), tr("Notice"));
        return;
    }
    if (_isFindRunning) {
        stopProcess();
    }
    const std::optional<Interpreter> interpreter = interpreterOfSource(source);
    if (source.contains(QStringLiteral("@new"))) {
        _isNewWindow = true;
    }
    if (!interpreter) {
        _isNewWindow = false;
        alert(tr("Notice"), tr("Not Found unix commands."));
        return;
    }
    if (!isRunnable(*interpreter)) {
        _isNewWindow = false;
        alert(tr("Notice"), tr("Not Found unix commands.") + u'\n' + interpreter->command);
        return;
    }
    if (interpreter->takesProgramText()) {
        startProcess(QStringList{interpreter->program()} + interpreter->arguments(source));
        return;
    }
    // An interpreter without "-c" or "-e" reads its program from a file, as when the
    // script is started by its own "#!" line.
    auto file = std::make_unique<QTemporaryFile>(QDir::tempPath() +
                                                 QStringLiteral("/tessaran-script-XXXXXX"));
    const QByteArray bytes = source.toUtf8();
    if (!file->open() || file->write(bytes) != bytes.size() || !file->flush()) {
        _isNewWindow = false;
        alert(
            tr("Notice"),
            tr("The script could not be written to a temporary file: %1").arg(file->errorString()));
        return;
    }
    file->close();
    const QString path = file->fileName();
    _sourceFile = std::move(file);
    startProcess(QStringList{interpreter->program()} + interpreter->arguments(path));
}

void ScriptManager::startProcess(const QStringList& arguments)
{
    if (arguments.isEmpty()) {
        return;
    }
    _isFindRunning = true;
    _pendingOutput.clear();
    _outputBytes = 0;
    if (_task && _task->state() == QProcess::NotRunning) {
        _task->deleteLater();
    }
    auto* process = new QProcess(this);
    _task = process;
    process->setProcessChannelMode(QProcess::MergedChannels);
    process->setWorkingDirectory(QDir::homePath());
    process->setProgram(arguments.first());
    process->setArguments(arguments.mid(1));
    // Its own process group, so that stopping it also stops what it started.
    process->setChildProcessModifier([] { ::setpgid(0, 0); });
    connect(process, &QProcess::readyReadStandardOutput, this,
            [this, process] { getData(process->readAllStandardOutput()); });
    connect(process, &QProcess::finished, this, [this, process] {
        // The last output may come with the end.
        const QByteArray rest = process->readAllStandardOutput();
        if (!rest.isEmpty()) {
            getData(rest);
        }
        if (process == _task && _isFindRunning) {
            getData(QByteArray());
        }
    });
    connect(process, &QProcess::errorOccurred, this, [this, process](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart && process == _task) {
            stopProcess();
            alert(tr("Notice"), tr("Not Found unix commands.") + u'\n' + process->program());
        }
    });

    // The output goes to the document in front now, whichever window is in front later.
    setOutputDocument(_target ? _target->currentDocument() : nullptr);
    process->start();
    Q_EMIT processStarted();

    // The selection goes to the standard input, which is then closed: an empty
    // selection is an input that ends at once.
    if (_outputView) {
        process->write(_target->selectedTextOf(_outputDocument).toUtf8());
    }
    process->closeWriteChannel();
}

void ScriptManager::setOutputDocument(Document* document)
{
    _outputDocument = document;
    _outputView = _target ? _target->textViewOf(document) : nullptr;
    _hasOutputWindow = _outputView != nullptr;
    QObject* window = _target ? _target->windowOf(document) : nullptr;
    if (window && _task) {
        // Closing that window ends the script: nothing else may receive its output.
        QProcess* process = _task;
        connect(window, &QObject::destroyed, process, [this, process] {
            if (process == _task && _isFindRunning) {
                stopProcess();
            }
        });
    }
}

void ScriptManager::getData(const QByteArray& data)
{
    if (data.isEmpty()) {
        // A character still incomplete when the output ends will never be completed.
        if (!_pendingOutput.isEmpty()) {
            insertOutput(QString::fromUtf8(std::exchange(_pendingOutput, QByteArray())));
        }
        if (_isFindRunning) {
            stopProcess();
        }
        return;
    }
    const qint64 room = outputLimit() - _outputBytes;
    _outputBytes += data.size();
    const bool overflow = data.size() > room;
    const QString text = decodeOutputPiece(_pendingOutput, overflow ? data.left(room) : data);
    if (!text.isEmpty()) {
        insertOutput(text);
    }
    if (overflow && _isFindRunning) {
        stopProcess();
        alert(tr("Notice"), tr("The script was stopped because its output passed %1.")
                                .arg(QLocale().formattedDataSize(
                                    outputLimit(), 0, QLocale::DataSizeTraditionalFormat)));
    }
}

void ScriptManager::insertOutput(const QString& text)
{
    if (_isNewWindow) {
        _isNewWindow = false;
        // The new window receives the rest of the output, even before the window system
        // has made it the key window.
        setOutputDocument(_target ? _target->newDocument() : nullptr);
    }
    if (!_hasOutputWindow) {
        // No document was in front when the script started.
        return;
    }
    if (!_outputView || !_outputDocument || !_target->isShown(_outputDocument)) {
        // Its window was closed; it goes away a moment later.
        stopProcess();
        return;
    }
    // Output put in while the end of the file still goes in would be taken for part of it.
    _outputDocument->finishLoading();
    _target->insertTextAtSelection(_outputDocument, text);
}

void ScriptManager::stopProcess()
{
    _isFindRunning = false;
    _isNewWindow = false;
    _pendingOutput.clear();
    _outputDocument = nullptr;
    _outputView = nullptr;
    _hasOutputWindow = false;
    if (QProcess* process = _task) {
        // No output of this child is delivered from here on.
        disconnect(process, nullptr, this, nullptr);
        if (process->state() == QProcess::Running) {
            const qint64 pid = process->processId();
            signalProcessGroup(pid, SIGTERM);
            QTimer::singleShot(1000, process, [pid] { signalProcessGroup(pid, SIGKILL); });
            connect(process, &QProcess::finished, process, &QObject::deleteLater);
        } else if (process->state() == QProcess::Starting) {
            process->kill();
            connect(process, &QProcess::finished, process, &QObject::deleteLater);
        }
    }
    // The interpreter has the file open already; the name can go.
    _sourceFile.reset();
    Q_EMIT processStopped();
}

std::optional<QString> ScriptManager::sourceOfFilePath(const QString& path) const
{
    quint64 encoding = Document::textEncodingAttributeOfURL(path);
    if (encoding == StringEncoding::NoEncoding) {
        encoding = _encodings.automaticDistinctionEncodingWithContentsOfURL(
            QUrl::fromLocalFile(path), false);
    }
    QFile file(path);
    if (encoding == StringEncoding::NoEncoding || !file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return TextCodec::decode(encoding, file.readAll());
}

void ScriptManager::runRegisterScriptWithPath(const QString& path)
{
    const QString extension = QFileInfo(path).suffix();
    QString kind;
    if (extension == u"applescript" || extension == u"scpt" || extension == u"js") {
        runRegisterAppleScriptWithPath(path);
    } else if (extension == u"pl" || extension == u"cgi") {
        kind = QStringLiteral("Perl");
    } else if (extension == u"php" || extension == u"php3") {
        kind = QStringLiteral("PHP");
    } else if (extension == u"py" || extension == u"pyw") {
        kind = QStringLiteral("Python");
    } else if (extension == u"rb") {
        kind = QStringLiteral("Ruby");
    } else if (extension == u"sh") {
        kind = QStringLiteral("ShellScript");
    }
    if (!kind.isEmpty()) {
        if (const std::optional<QString> source = sourceOfFilePath(path)) {
            runScriptWithSource(*source, kind);
        }
    }
    // Give the editor its focus back.
    if (_target) {
        _target->focusTextView(_target->currentDocument());
    }
}

void ScriptManager::runRegisterAppleScriptWithPath(const QString& path)
{
    const QFileInfo info(path);
    std::optional<QString> source;
    if (info.suffix() == u"js" && info.isFile()) {
        source = sourceOfFilePath(path);
    }
    if (!source) {
        alert(tr("Error"), tr("No entries found."), false, true);
        return;
    }
    const std::optional<QString> error =
        _target ? _target->runInProcessScript(*source, path) : std::nullopt;
    if (error) {
        alert(tr("Error"), *error, false, true);
    }
}

void ScriptManager::runRegisterScript(const ScriptObjectPtr& node)
{
    if (!node || !node->isLeaf()) {
        return;
    }
    const QFileInfo file(ScriptLibrary::filePathOf(node));
    if (!file.exists() || file.isDir()) {
        alert(tr("No such file or directory."), tr("Notice"));
        return;
    }
    runRegisterScriptWithPath(file.filePath());
}

// Watching the Script folder -----------------------------------------------------------

void ScriptManager::bootUp()
{
    if (!_folderWatcher) {
        _folderWatcher = new ScriptFolderWatcher(_library, this);
    }
}
