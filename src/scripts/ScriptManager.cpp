#include "scripts/ScriptManager.h"

#include "app/Application.h"
#include "document/Document.h"
#include "document/DocumentController.h"
#include "document/EncodingManager.h"
#include "editor/TextView.h"
#include "platform/PropertyList.h"
#include "platform/Regex.h"
#include "platform/TextCodec.h"
#include "platform/UserDefaults.h"
#include "scripts/JavaScriptRunner.h"
#include "scripts/ScriptAlert.h"
#include "scripts/ScriptingService.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QStringDecoder>
#include <QTextDocument>
#include <QTimer>
#include <QUrl>

namespace {

const QString kScriptAllItems = QStringLiteral("ScriptAllItems");
const QString kScriptObjects = QStringLiteral("ScriptObjects");

const QStringList kProcessKinds = {QStringLiteral("Perl"), QStringLiteral("PHP"),
                                   QStringLiteral("Python"), QStringLiteral("Ruby"),
                                   QStringLiteral("ShellScript")};

} // namespace

ScriptManager::ScriptManager(QObject* parent)
    : QObject(parent)
{}

ScriptManager& ScriptManager::sharedScriptManager()
{
    static ScriptManager* manager = new ScriptManager(Application::instance());
    return *manager;
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
    const QByteArray data = UserDefaults::standardUserDefaults().dataForKey(kScriptAllItems);
    Application::instance()->setScriptDataSource(
        unarchivedScriptDataSource(data).value_or(ScriptObjectList()));
}

void ScriptManager::writeScriptDataSource()
{
    const auto& nodes = Application::instance()->scriptDataSource();
    UserDefaults::standardUserDefaults().setObject(
        archivedScriptDataSource(nodes.value_or(ScriptObjectList())), kScriptAllItems);
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

QStringList ScriptManager::Interpreter::arguments(const QString& source) const
{
    QStringList list = command.split(u' ', Qt::SkipEmptyParts).mid(1);
    if (!options.isEmpty()) {
        list << options;
    }
    list << source;
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
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    return decoder.hasError() ? QString() : text;
}

// Running ------------------------------------------------------------------------------

TextView* ScriptManager::frontTextView()
{
    DocumentController& documents = DocumentController::sharedDocumentController();
    WindowController* controller = documents.windowControllerOf(documents.currentDocument());
    return controller ? controller->textView() : nullptr;
}

void ScriptManager::runScriptWithSource(const QString& source, const QString& scriptName)
{
    if (scriptName == u"AppleScript") {
        const JavaScriptRunner::Result result = JavaScriptRunner::run(source);
        if (result.outcome == JavaScriptRunner::Outcome::CompileError) {
            ScriptAlert::show(tr("Error Script"), result.errorText(), true);
        }
        return;
    }
    if (!kProcessKinds.contains(scriptName)) {
        ScriptAlert::show(tr("This source cannot be performed."), tr("Notice"));
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
        ScriptAlert::show(tr("Notice"), tr("Not Found unix commands."));
        return;
    }
    if (!isRunnable(*interpreter)) {
        _isNewWindow = false;
        ScriptAlert::show(tr("Notice"),
                          tr("Not Found unix commands.") + u'\n' + interpreter->command);
        return;
    }
    startProcess(QStringList{interpreter->program()} + interpreter->arguments(source));
}

void ScriptManager::startProcess(const QStringList& arguments)
{
    if (arguments.isEmpty()) {
        return;
    }
    _isFindRunning = true;
    _pendingOutput.clear();
    _outputDocument = nullptr;
    if (_task && _task->state() == QProcess::NotRunning) {
        _task->deleteLater();
    }
    auto* process = new QProcess(this);
    _task = process;
    process->setProcessChannelMode(QProcess::MergedChannels);
    process->setWorkingDirectory(QDir::homePath());
    process->setProgram(arguments.first());
    process->setArguments(arguments.mid(1));
    connect(process, &QProcess::readyReadStandardOutput, this,
            [this, process] { getData(process->readAllStandardOutput()); });
    connect(process, &QProcess::finished, this, [this, process] {
        // The last output may come with the end.
        const QByteArray rest = process->readAllStandardOutput();
        if (!rest.isEmpty()) {
            getData(rest);
        }
        getData(QByteArray());
    });
    connect(process, &QProcess::errorOccurred, this, [this, process](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart && process == _task) {
            stopProcess();
            ScriptAlert::show(tr("Notice"),
                              tr("Not Found unix commands.") + u'\n' + process->program());
        }
    });
    process->start();

    // The selection goes to the standard input, which is then closed: an empty
    // selection is an input that ends at once.
    if (TextView* view = frontTextView()) {
        QString selection = view->textCursor().selectedText();
        selection.replace(QChar::ParagraphSeparator, u'\n');
        process->write(selection.toUtf8());
    }
    process->closeWriteChannel();
}

void ScriptManager::getData(const QByteArray& data)
{
    if (data.isEmpty()) {
        stopProcess();
        return;
    }
    const QString text = decodeOutputPiece(_pendingOutput, data);
    if (text.isEmpty()) {
        return;
    }
    if (_isNewWindow) {
        _isNewWindow = false;
        // The new window is the key window from now on, even before the window system
        // has made it active.
        _outputDocument = DocumentController::sharedDocumentController().newDocument();
    }
    insertOutput(text);
}

void ScriptManager::insertOutput(const QString& text)
{
    WindowController* output =
        DocumentController::sharedDocumentController().windowControllerOf(_outputDocument);
    TextView* view = output ? output->textView() : frontTextView();
    if (!view) {
        return;
    }
    view->insertTextAtSelection(text);
}

void ScriptManager::stopProcess()
{
    _isFindRunning = false;
    _isNewWindow = false;
    _pendingOutput.clear();
    if (QProcess* process = _task) {
        // No output of this child is delivered from here on.
        disconnect(process, nullptr, this, nullptr);
        if (process->state() != QProcess::NotRunning) {
            process->terminate();
            QTimer::singleShot(1000, process, [process] { process->kill(); });
            connect(process, &QProcess::finished, process, &QObject::deleteLater);
        }
    }
    Q_EMIT processStopped();
}

std::optional<QString> ScriptManager::sourceOfFilePath(const QString& path)
{
    quint64 encoding = Document::textEncodingAttributeOfURL(path);
    if (encoding == StringEncoding::NoEncoding) {
        encoding =
            EncodingManager::sharedEncodingManager().automaticDistinctionEncodingWithContentsOfURL(
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
    if (TextView* view = frontTextView()) {
        view->setFocus();
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
        ScriptAlert::show(tr("Error"), tr("No entries found."), false, true);
        return;
    }
    const JavaScriptRunner::Result result = JavaScriptRunner::run(*source, path);
    if (result.outcome == JavaScriptRunner::Outcome::CompileError) {
        ScriptAlert::show(tr("Error"), result.errorText(), false, true);
    }
}

// The scripting interface ---------------------------------------------------------------

void ScriptManager::bootUp()
{
    ScriptingService::sharedScriptingService().registerOnSessionBus();
}

void ScriptManager::openScriptDictionary()
{
    const QString xml = ScriptingService::introspectionXml();
    Document* document = DocumentController::sharedDocumentController().newDocument();
    document->textStorage()->setPlainText(xml);
}
