#include "document/Document.h"

#include "document/EncodingManager.h"
#include "document/SaveFailureMessage.h"
#include "document/TextEncodingAttribute.h"
#include "document/TextStore.h"
#include "document/TextTree.h"
#include "document/Utf8FileReading.h"
#include "platform/ExtendedAttributes.h"
#include "platform/FileManager.h"
#include "platform/Range.h"
#include "platform/SafeFileWriter.h"
#include "platform/StringEncoding.h"
#include "platform/TextCodec.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QTimer>
#include <QUndoStack>
#include <QUrl>

#include <algorithm>
#include <limits>

namespace {

constexpr quint64 kNoEncoding = std::numeric_limits<quint64>::max();
constexpr quint64 kUTF8 = 4;
const QString kPlainTextType = QStringLiteral("public.plain-text");

int nextUntitledNumber()
{
    static int counter = 0;
    return ++counter;
}

// The names users know encodings by, for messages.
QString encodingName(quint64 encoding)
{
    const QString name = StringEncoding::localizedNameOfStringEncoding(encoding);
    return name.isEmpty() ? QString::number(encoding) : name;
}

} // namespace

Document::Document(EncodingManager& encodings, const DocumentSettings& settings, QObject* parent)
    : QObject(parent)
    , _encodings(encodings)
    , _settings(settings)
    , _textStore(new TextStore(this))
    , _untitledNumber(nextUntitledNumber())
    , _autosaveTimer(new QTimer(this))
{
    _fileType = kPlainTextType;
    _documentEncoding = settings.defaultsTextEncoding;
    _documentLineBreaks = settings.defaultsLineBreaks;

    // Autosave keeps a recovery copy; the file changes only when the user saves.
    _autosaveTimer->setSingleShot(true);
    connect(_autosaveTimer, &QTimer::timeout, this, [this] {
        if (isDocumentEdited()) {
            Q_EMIT recoveryCopyDue();
        }
    });
    // Whoever follows the text follows the document, whatever holds the text.
    connect(_textStore, &TextStore::contentsChange, this, [this](const TextChange& change) {
        Q_EMIT contentsChange(change.position, change.charsRemoved, change.charsAdded);
    });
    connect(_textStore, &TextStore::contentsChanged, this, [this] {
        Q_EMIT contentsChanged();
        if (isDocumentEdited()) {
            scheduleAutosave();
        }
    });
    connect(_textStore, &TextStore::modificationChanged, this, [this](bool modified) {
        Q_EMIT documentEditedChanged(modified);
        if (modified) {
            scheduleAutosave();
        } else {
            _autosaveTimer->stop();
        }
    });
    connect(_textStore, &TextStore::loadingChanged, this, &Document::loadingChanged);
    QUndoStack* steps = _textStore->undoStack();
    connect(steps, &QUndoStack::canUndoChanged, this, &Document::canUndoChanged);
    connect(steps, &QUndoStack::canRedoChanged, this, &Document::canRedoChanged);
    connect(steps, &QUndoStack::indexChanged, this, &Document::undoStepsChanged);
    connect(steps, &QUndoStack::undoTextChanged, this, &Document::undoStepsChanged);
    connect(steps, &QUndoStack::redoTextChanged, this, &Document::undoStepsChanged);
}

Document::~Document()
{
    // Whatever shows or follows the text (its window's controller, timers) goes before the
    // text itself, so that nothing reacts to the text as it is torn down.
    const QObjectList children = this->children();
    for (QObject* child : children) {
        if (child != _textStore) {
            delete child;
        }
    }
}

void Document::scheduleAutosave()
{
    if (_autosaveTimer->isActive()) {
        return;
    }
    const qint64 delay =
        std::clamp<qint64>(_settings.autosavingDelay, minimumAutosavingDelay, 24 * 3600);
    _autosaveTimer->start(int(delay) * 1000);
}

void Document::setFileStamp(const std::optional<FileStamp>& stamp)
{
    _fileStamp = stamp;
    _changeOnDiskReported = false;
}

QString Document::string() const
{
    QString text = storedText();
    _reading.standIns.restore(text);
    return text;
}

qsizetype Document::length() const
{
    return _textStore->text().length();
}

qsizetype Document::lineCount() const
{
    return _textStore->text().lineCount();
}

qsizetype Document::lineOfPosition(qsizetype position) const
{
    const TextSnapshot& text = _textStore->text();
    return text.lineAt(std::clamp<qsizetype>(position, 0, text.length()));
}

Range Document::rangeOfLine(qsizetype line) const
{
    const TextSnapshot& text = _textStore->text();
    if (line < 0 || line >= text.lineCount()) {
        return {0, 0};
    }
    return {text.lineStart(line), text.lineLength(line)};
}

QString Document::textInRange(Range range) const
{
    const TextSnapshot& text = _textStore->text();
    const qsizetype from = std::clamp<qsizetype>(range.location, 0, text.length());
    const qsizetype to = std::clamp<qsizetype>(range.max(), from, text.length());
    return text.text({from, to - from});
}

QString Document::storedText() const
{
    // The text is the file's from the start: what is still being decoded goes in first.
    _textStore->finishLoading();
    return _textStore->text().string();
}

bool Document::isLoading() const
{
    return _textStore->isLoading();
}

void Document::finishLoading()
{
    _textStore->finishLoading();
}

int Document::revision() const
{
    return int(_textStore->revision());
}

void Document::replaceRanges(const std::vector<Range>& ranges, const QString& string,
                             const QString& stepName)
{
    finishLoading();
    std::vector<Range> replaced;
    const qsizetype end = length();
    for (const Range& range : ranges) {
        if (!replaced.empty() && range.location < replaced.back().max()) {
            continue;
        }
        if (range.max() > end) {
            break;
        }
        replaced.push_back(range);
    }
    // One pass over the text, one change told, one undo step.
    _textStore->replaceRanges(replaced, string, stepName);
}

void Document::setDocumentEncoding(quint64 encoding)
{
    _documentEncoding = encoding;
    Q_EMIT documentInformationChanged();
}

void Document::setDocumentLineBreaks(qsizetype lineBreaks)
{
    _documentLineBreaks = lineBreaks;
    Q_EMIT documentInformationChanged();
}

void Document::setFileURL(const QString& path)
{
    _fileURL = path.isEmpty() ? QString() : QFileInfo(path).absoluteFilePath();
    Q_EMIT documentInformationChanged();
}

QString Document::displayName() const
{
    if (!_fileURL.isEmpty()) {
        return QFileInfo(_fileURL).fileName();
    }
    return _untitledNumber <= 1 ? tr("Untitled") : tr("Untitled %1").arg(_untitledNumber);
}

bool Document::isDocumentEdited() const
{
    return _textStore->isModified();
}

void Document::setDocumentEdited(bool edited)
{
    if (edited == isDocumentEdited()) {
        return;
    }
    if (edited) {
        // No step of the history is the saved text any more.
        _textStore->undoStack()->resetClean();
    } else {
        _textStore->setClean();
    }
}

bool Document::canUndo() const
{
    return _textStore->canUndo();
}

bool Document::canRedo() const
{
    return _textStore->canRedo();
}

void Document::undo()
{
    _textStore->undo();
}

void Document::redo()
{
    _textStore->redo();
}

void Document::beginUndoGrouping(const QString& actionName)
{
    _textStore->beginEditBlock(actionName);
}

void Document::endUndoGrouping()
{
    _textStore->endEditBlock();
}

QString Document::undoActionName() const
{
    return _textStore->undoStack()->undoText();
}

QString Document::redoActionName() const
{
    return _textStore->undoStack()->redoText();
}

void Document::updatePreferences(const DocumentSettings& settings)
{
    // The autosave delay stays the one the document was made with: the application takes a
    // new one at its next start.
    const qint64 autosavingDelay = _settings.autosavingDelay;
    _settings = settings;
    _settings.autosavingDelay = autosavingDelay;
}

bool Document::readFromURL(const QString& path, const QString& type, QString* error,
                           ReadRequest request)
{
    quint64 encoding = kNoEncoding;
    if (request.kind == ReadRequest::OpenPanel) {
        encoding = request.encoding;
        if (encoding == kNoEncoding) {
            encoding = textEncodingAttributeOfURL(path);
        }
    } else if (request.kind == ReadRequest::Revert || request.kind == ReadRequest::Reopen) {
        encoding = textEncodingAttributeOfURL(path);
        if (encoding == kNoEncoding) {
            // Given an encoding, the load does not detect one.
            encoding = _documentEncoding;
        }
    } else {
        encoding = textEncodingAttributeOfURL(path);
    }
    if (!loadContents(path, encoding, error)) {
        return false;
    }
    _fileType = type.isEmpty() ? kPlainTextType : type;
    _revertFileTypeToSet = _fileType;
    setFileURL(path);
    return true;
}

bool Document::loadContents(const QString& path, quint64 encoding, QString* error)
{
    QFileInfo info(path);
    const auto refuse = [&](const QString& message) {
        if (error) {
            *error = message;
        }
        return false;
    };
    if (info.isDir()) {
        return refuse(tr("“%1” is a folder, not a text file.").arg(info.fileName()));
    }
    if (info.exists() && !info.isFile()) {
        // A pipe, a device or a socket: reading it could block or never end.
        return refuse(
            tr("“%1” is not a regular file, so it cannot be opened as text.").arg(info.fileName()));
    }
    const QString unreadable =
        tr("The file “%1” could not be opened because it cannot be read.").arg(info.fileName());
    if (!info.exists() || !info.isReadable()) {
        return refuse(unreadable);
    }
    // Taken before reading, so that a change made while the file is read is noticed too.
    const std::optional<FileStamp> stamp = FileStamp::ofFile(path);
    QByteArray data;
    if (!EncodingManager::readWholeFile(QUrl::fromLocalFile(path), data)) {
        return refuse(unreadable);
    }
    // No encoding takes more than 8 bytes a character (escape sequences included): a longer
    // run of bytes without a line break is refused before the time to decode it is spent.
    const bool priority = _settings.priorityToJapaneseEncoding;
    if (auto read = Utf8FileReading::read(data, encoding, priority, _encodings, maximumLineLength,
                                          maximumLineLength * 8)) {
        ReadState state;
        state.encoding = kUTF8;
        state.lineBreaks =
            read->lineBreaks == NSNotFound ? lineBreaksOfTextWithout() : read->lineBreaks;
        state.reading.lineBreakCounts = read->lineBreakCounts;
        if (read->whole) {
            _textStore->setLoadingText(read->text, *read->whole);
        } else {
            _textStore->setLoadedText(read->text);
        }
        setFileStamp(stamp);
        applyReadState(state, true);
        return true;
    }
    DecodedContents contents =
        _encodings.contentsOfData(std::move(data), encoding, priority, maximumLineLength * 8);
    if (contents.longLine > 0) {
        const QLocale locale;
        return refuse(tr("The file “%1” could not be opened: line %2 is %3 bytes long, and "
                         "lines longer than %4 characters cannot be edited.")
                          .arg(info.fileName(), locale.toString(qlonglong(contents.longLine)),
                               locale.toString(qlonglong(contents.longLineBytes)),
                               locale.toString(qlonglong(maximumLineLength))));
    }
    if (const auto line = EncodingManager::lineLongerThan(contents.text, maximumLineLength)) {
        const QLocale locale;
        return refuse(tr("The file “%1” could not be opened: line %2 is %3 characters long, and "
                         "lines longer than %4 characters cannot be edited.")
                          .arg(info.fileName(), locale.toString(qlonglong(line->first)),
                               locale.toString(qlonglong(line->second)),
                               locale.toString(qlonglong(maximumLineLength))));
    }
    if (!contents.isValid()) {
        if (contents.bytesRead > 0) {
            if (error) {
                *error = encoding == kNoEncoding
                             ? tr("The file “%1” could not be opened: its text encoding was not "
                                  "recognised. Choose one in the Open dialog.")
                                   .arg(info.fileName())
                             : tr("The file “%1” could not be opened using text encoding %2.")
                                   .arg(info.fileName(), encodingName(encoding));
            }
            return false;
        }
        // An empty file keeps the document's own encoding.
        contents.encoding = encoding == kNoEncoding ? _documentEncoding : encoding;
        contents.lineBreaks = NSNotFound;
    }

    ReadState state;
    QString storageText;
    if (!prepareReading(contents, info.fileName(), state, storageText, error)) {
        return false;
    }

    setLoadedText(storageText);
    storageText = QString();

    setFileStamp(stamp);
    applyReadState(state, true);
    return true;
}

bool Document::prepareReading(DecodedContents& contents, const QString& fileName, ReadState& state,
                              QString& storageText, QString* error) const
{
    state.encoding = contents.encoding;
    state.reading.nonText = EncodingManager::nonTextReason(contents.text);
    // A file that is not text keeps each line break as it is, CRs included: rewriting them
    // would change bytes the user never touched.
    const bool keepLineBreaks = state.reading.nonText != NonTextReason::None;
    if (keepLineBreaks) {
        state.lineBreaks = EncodingManager::KeepLineBreaks;
    } else {
        state.lineBreaks =
            contents.lineBreaks != NSNotFound ? contents.lineBreaks : lineBreaksOfTextWithout();
        // Without a CR, every line break is an LF: nothing to mix, nothing to count.
        if (contents.lineBreaks == 1 || contents.lineBreaks == 2) {
            state.reading.lineBreakCounts = EncodingManager::countLineBreaks(contents.text);
        }
    }
    std::optional<CharacterStandIns> standIns =
        CharacterStandIns::forText(contents.text, keepLineBreaks);
    if (!standIns) {
        if (error) {
            *error = tr("The file “%1” could not be opened: it uses nearly every character "
                        "there is, and the editor needs one of them for its own use.")
                         .arg(fileName);
        }
        return false;
    }
    state.reading.standIns = std::move(*standIns);
    storageText = std::move(contents.text);
    contents.text = QString();
    if (!keepLineBreaks && storageText.contains(u'\r')) {
        // The text keeps line feeds only; the file's own style is applied again on saving.
        storageText = _encodings.replaceLineBreaks(0, storageText);
    }
    state.reading.standIns.substitute(storageText);
    return true;
}

qsizetype Document::lineBreaksOfTextWithout() const
{
    return _documentLineBreaks != EncodingManager::KeepLineBreaks ? _documentLineBreaks
                                                                  : _settings.defaultsLineBreaks;
}

Document::ReadState Document::readState() const
{
    return {_documentEncoding, _documentLineBreaks, _reading, _editAnyway};
}

void Document::applyReadState(const ReadState& state, bool announce)
{
    const bool wasReadOnly = isReadOnly();
    _documentEncoding = state.encoding;
    _documentLineBreaks = state.lineBreaks;
    _reading = state.reading;
    _editAnyway = state.editAnyway;
    Q_EMIT documentInformationChanged();
    if (announce) {
        Q_EMIT contentsRead();
    }
    if (wasReadOnly != isReadOnly()) {
        Q_EMIT readOnlyChanged(isReadOnly());
    }
}

void Document::editAnyway()
{
    if (!isReadOnly()) {
        return;
    }
    _editAnyway = true;
    Q_EMIT readOnlyChanged(false);
}

void Document::setSavePanelChoice(quint64 encoding, qsizetype lineBreaks)
{
    _savePanelEncoding = encoding;
    _savePanelLineBreaks = lineBreaks;
}

bool Document::writeSafelyToURL(const QString& path, const QString& type, SaveOperation operation,
                                QString* error)
{
    _encodingFailureReported = false;
    if (operation == SaveAs) {
        _documentEncodingForSaving = _savePanelEncoding;
        _documentLineBreaksForSaving = _savePanelLineBreaks;
    } else {
        _documentEncodingForSaving = _documentEncoding;
        _documentLineBreaksForSaving = _documentLineBreaks;
    }
    const bool ownFile = !_fileURL.isEmpty() && QFileInfo(path).absoluteFilePath() == _fileURL;
    if (ownFile && (operation == Save || operation == Autosave) && _fileStamp) {
        const std::optional<FileStamp> now = FileStamp::ofFile(_fileURL);
        // A file deleted meanwhile is simply written again.
        if (now && *now != *_fileStamp && !(operation == Save && _changeOnDiskReported)) {
            if (operation == Save) {
                _changeOnDiskReported = true;
            }
            if (error) {
                *error = tr("The file “%1” has been changed by another application since you "
                            "opened or saved it. Save again to replace it with this document.")
                             .arg(displayName());
            }
            return false;
        }
    }
    if (!writeToURL(path, type, error)) {
        return false;
    }
    if (operation != SaveTo) {
        if (!type.isEmpty()) {
            _fileType = type;
        }
        setFileStamp(FileStamp::ofFile(path));
        setFileURL(path);
        _textStore->setClean();
    }
    return true;
}

bool Document::writeToURL(const QString& path, const QString& type, QString* error)
{
    Q_UNUSED(type);
    const QString text = _encodings.replaceLineBreaks(_documentLineBreaksForSaving, string());

    const QFileInfo target(path);
    const QString name = target.fileName();
    const auto fail = [&](const QString& message) {
        if (error) {
            *error = message;
        }
        return false;
    };

    std::optional<QByteArray> bytes = TextCodec::encode(_documentEncodingForSaving, text);
    _encodingFailureReported = !bytes;
    if (!bytes) {
        return fail(tr("The document “%1” could not be saved in the encoding “%2”. Some "
                       "characters cannot be written in this encoding.")
                        .arg(name, encodingName(_documentEncodingForSaving)));
    }
    if (_documentEncodingForSaving == kUTF8 && _settings.UTF8AppendByBOM) {
        bytes->prepend("\xEF\xBB\xBF");
    }
    SafeFileWriter writer(FileManager::backupDirectoryPath());
    if (!writer.write(path, *bytes)) {
        return fail(SaveFailureMessage::of(name, writer));
    }
    // The file's other attributes are kept as they were; an encoding attribute among them
    // must now name the encoding the text was written in.
    const QString& attribute = TextEncodingAttribute::name();
    if (ExtendedAttributes::read(writer.targetPath(), attribute) &&
        !TextEncodingAttribute::write(_documentEncodingForSaving, writer.targetPath())) {
        ExtendedAttributes::remove(writer.targetPath(), attribute);
    }
    _documentEncoding = _documentEncodingForSaving;
    _documentLineBreaks = _documentLineBreaksForSaving;
    Q_EMIT documentInformationChanged();
    return true;
}

bool Document::revertToContentsOfURL(const QString& path, const QString& type, QString* error)
{
    if (!readFromURL(path, type, error, {ReadRequest::Revert})) {
        return false;
    }
    if (!_revertFileTypeToSet.isEmpty()) {
        _fileType = _revertFileTypeToSet;
        _revertFileTypeToSet.clear();
    }
    return true;
}

std::unique_ptr<Document> Document::duplicateAndReturnError() const
{
    auto duplicate = std::make_unique<Document>(_encodings, _settings);
    QString text = string();
    // The copy holds the same characters, so the same stand-ins serve it.
    _reading.standIns.substitute(text);
    duplicate->_reading.standIns = _reading.standIns;
    duplicate->setLoadedText(text);
    duplicate->_documentEncoding = _documentEncoding;
    duplicate->_documentLineBreaks = _documentLineBreaks;
    return duplicate;
}

void Document::replaceUndoably(const QString& storageText, const ReadState& after, bool announce)
{
    // The state that went with each text (encoding, line-break style, stand-ins, what the
    // window says about the file) comes back with it: undone before the text, redone after.
    _textStore->beginEditBlock();
    _textStore->replace(0, length(), storageText);
    _textStore->addToStep(
        [this, before = readState(), announce] { applyReadState(before, announce); },
        [this, after, announce] { applyReadState(after, announce); });
    _textStore->endEditBlock();
    applyReadState(after, announce);
}

void Document::setLoadedText(const QString& text)
{
    _textStore->setLoadedText(TextSnapshot(TextTree::fromText(text)));
}

void Document::appendLoadedText(const QString& text)
{
    // Text read, not typed: no undo step, and the history before it no longer fits the text.
    finishLoading();
    const TextSnapshot& now = _textStore->text();
    _textStore->setLoadedText(TextSnapshot(TextTree::replace(now.root(), now.length(), 0, text)));
}

void Document::setTextStorage(const QString& text)
{
    ReadState after = readState();
    // The new text may hold characters the old one did not, which need stand-ins of their own;
    // when it uses nearly every character, those become line breaks as typed ones would.
    const bool keepLineBreaks = _documentLineBreaks == EncodingManager::KeepLineBreaks;
    after.reading.standIns =
        CharacterStandIns::forText(text, keepLineBreaks).value_or(CharacterStandIns());
    QString storageText = text;
    after.reading.standIns.substitute(storageText);
    if (after.reading.standIns == _reading.standIns) {
        finishLoading();
        _textStore->replace(0, length(), storageText);
        return;
    }
    replaceUndoably(storageText, after, false);
}

bool Document::rereadWithEncoding(quint64 encoding, QString* error)
{
    if (_fileURL.isEmpty()) {
        return false;
    }
    const std::optional<FileStamp> stamp = FileStamp::ofFile(_fileURL);
    return reread(readFile(encoding), encoding, false, stamp, error);
}

bool Document::reloadFromFile(QString* error)
{
    if (_fileURL.isEmpty()) {
        return false;
    }
    // Taken before reading, so that a change made while the file is read is noticed too.
    const std::optional<FileStamp> stamp = FileStamp::ofFile(_fileURL);
    quint64 encoding = textEncodingAttributeOfURL(_fileURL);
    if (encoding == kNoEncoding) {
        encoding = _documentEncoding;
    }
    DecodedContents contents = readFile(encoding);
    if (!contents.isValid() && contents.bytesRead > 0 && !contents.unreadable &&
        contents.longLine == 0) {
        // The other program wrote bytes the document's encoding cannot read: detect, as an
        // opening does.
        encoding = kNoEncoding;
        contents = readFile(encoding);
    }
    if (!contents.isValid() && contents.bytesRead == 0 && !contents.unreadable) {
        contents.encoding = _documentEncoding;
        contents.lineBreaks = NSNotFound;
    }
    return reread(std::move(contents), encoding, true, stamp, error);
}

DecodedContents Document::readFile(quint64 encoding) const
{
    return _encodings.contentsOfURL(QUrl::fromLocalFile(_fileURL), encoding,
                                    _settings.priorityToJapaneseEncoding, maximumLineLength * 8);
}

bool Document::reread(DecodedContents contents, quint64 encoding, bool fileLineBreaks,
                      const std::optional<FileStamp>& stamp, QString* error)
{
    const auto fail = [&](const QString& message) {
        if (error) {
            *error = message;
        }
        return false;
    };
    const QString how = encoding == kNoEncoding
                            ? QString()
                            : u' ' + tr("using text encoding %1").arg(encodingName(encoding));
    const auto tooLong = [&](qsizetype line) {
        return fail(tr("The file “%1” could not be read%2: line %3 is longer than %4 characters.")
                        .arg(displayName(), how, QLocale().toString(qlonglong(line)),
                             QLocale().toString(qlonglong(maximumLineLength))));
    };
    if (contents.unreadable) {
        return fail(tr("The file “%1” could not be read.").arg(displayName()));
    }
    if (contents.longLine > 0) {
        return tooLong(contents.longLine);
    }
    if (!contents.isValid()) {
        return fail(encoding == kNoEncoding
                        ? tr("The file “%1” could not be read: its text encoding was not "
                             "recognised.")
                              .arg(displayName())
                        : tr("The file “%1” could not be read%2.").arg(displayName(), how));
    }
    if (const auto line = EncodingManager::lineLongerThan(contents.text, maximumLineLength)) {
        return tooLong(line->first);
    }
    ReadState after;
    QString storageText;
    if (!prepareReading(contents, displayName(), after, storageText, error)) {
        return false;
    }
    // Reopening in another encoding leaves the style the user's, unless the file turns out to
    // be text or not text only now; reloading takes the file's, as an opening does.
    const bool keptBefore = _documentLineBreaks == EncodingManager::KeepLineBreaks;
    const bool keptAfter = after.lineBreaks == EncodingManager::KeepLineBreaks;
    if (!fileLineBreaks && keptBefore == keptAfter) {
        after.lineBreaks = _documentLineBreaks;
    }
    after.editAnyway = _editAnyway && keptAfter;
    replaceUndoably(storageText, after, true);
    setFileStamp(stamp);
    // The text is the file's once more; undo brings the edits back, and marks them unsaved.
    _textStore->setClean();
    return true;
}

QPageLayout Document::printInfo()
{
    if (!_setUpDefaultPrintInfo) {
        _setUpDefaultPrintInfo = true;
        _printInfo = QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                                 QMarginsF(36, 72, 36, 72), QPageLayout::Point);
    }
    return _printInfo;
}
