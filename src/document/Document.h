#pragma once

#include "document/EncodingManager.h"
#include "document/TextEncodingAttribute.h"
#include "platform/CharacterStandIns.h"
#include "platform/DocumentSettings.h"
#include "platform/FileStamp.h"
#include "platform/Range.h"

#include <QObject>
#include <QPageLayout>
#include <QString>

#include <memory>
#include <vector>

class QTimer;
class TextStore;

/// How a document's read was started, which decides how the file's encoding is chosen.
struct DocumentReadRequest {
    enum Kind {
        Ordinary,  ///< the file's attribute, else detection
        OpenPanel, ///< `encoding`, the open panel's choice; for "Automatic" (all ones) the
                   ///< file's attribute, else detection
        Revert,    ///< the file's attribute, else the document's own encoding
        Reopen,    ///< as Revert: a document brought back at launch
    };
    Kind kind = Ordinary;
    quint64 encoding = ~quint64(0);
};

/// One open plain-text file: its text (shared by every pane of its window), the encoding
/// and line-break style it was read in and will be written in, and its file.
class Document : public QObject
{
    Q_OBJECT

public:
    /// How a save was started.
    enum SaveOperation { Save = 0, SaveAs = 1, SaveTo = 2, Autosave = 3 };

    /// The longest line a file may have to be opened: laying out a line takes time in
    /// proportion to its length at every change, and a longer one would hold the window
    /// still for more than a second. Such files are refused with a message.
    static constexpr qsizetype maximumLineLength = 1'000'000;

    /// A new, empty document with the encoding and line-break style of `settings`, reading
    /// and writing its files through `encodings`.
    Document(EncodingManager& encodings, const DocumentSettings& settings,
             QObject* parent = nullptr);
    ~Document() override;

    /// The text. Every line break in it is one LF, whatever the file holds, except in a file
    /// that does not look like text, whose CRs stay CRs; characters the text storage cannot
    /// hold as they are appear there as their stand-ins (characterStandIns()).
    TextStore* textStore() const { return _textStore; }
    /// The whole text as a string: LF line breaks (CRs kept as read where line breaks are
    /// kept), and every character as the file has it.
    QString string() const;
    /// The characters that stand in the text storage for those it cannot hold (U+2029 and
    /// Qt's text frame marks; CR where line breaks are kept).
    const CharacterStandIns& characterStandIns() const { return _reading.standIns; }

    // The text as the text storage holds it: LF line breaks, stand-ins in place, and only
    // what has gone in so far while a large file is still loading. Positions and lengths are
    // UTF-16 units; lines count from 0.
    qsizetype length() const;
    /// The line breaks plus one.
    qsizetype lineCount() const;
    /// The line holding `position`, a position within the text.
    qsizetype lineOfPosition(qsizetype position) const;
    /// The characters of `line`, its line break excepted.
    Range rangeOfLine(qsizetype line) const;
    /// The characters of `range`.
    QString textInRange(Range range) const;
    /// All of it in one string (the whole file's text: see finishLoading()).
    QString storedText() const;
    /// While the end of a large file is still being decoded: the text holds its start, which
    /// the window shows. Every edit, and everything that reads the whole text (string(),
    /// storedText(), saving), waits for the rest first.
    bool isLoading() const;
    /// Waits for the rest of the file and puts it into the text now.
    void finishLoading();
    /// Changes with every edit of the text, undo and redo included: an unchanged revision
    /// means an unchanged text.
    int revision() const;
    /// Replaces each of `ranges` (positions in the text as it is now, in order) by `string`,
    /// as one undoable step named `stepName`. A range overlapping the one before it is
    /// skipped; one reaching past the end of the text is left alone, with those after it.
    void replaceRanges(const std::vector<Range>& ranges, const QString& string,
                       const QString& stepName);

    quint64 documentEncoding() const { return _documentEncoding; }
    void setDocumentEncoding(quint64 encoding);
    qsizetype documentLineBreaks() const { return _documentLineBreaks; }
    void setDocumentLineBreaks(qsizetype lineBreaks);
    quint64 documentEncodingForSaving() const { return _documentEncodingForSaving; }
    qsizetype documentLineBreaksForSaving() const { return _documentLineBreaksForSaving; }

    /// The file's path; empty for a document never saved.
    QString fileURL() const { return _fileURL; }
    void setFileURL(const QString& path);
    QString fileType() const { return _fileType; }
    void setFileType(const QString& type) { _fileType = type; }
    /// The file's name, or "Untitled" (numbered after the first).
    QString displayName() const;
    bool isDocumentEdited() const;
    /// Marks the text as unsaved (closing asks whether to save it) or as the saved one.
    void setDocumentEdited(bool edited);
    /// Whether undo, or redo, has a step to take.
    bool canUndo() const;
    bool canRedo() const;
    /// Takes back the last undo step, or puts it back again; the views follow the text.
    void undo();
    void redo();
    /// The edits until endUndoGrouping() are one undo step named `actionName` (groupings
    /// nest; the outer one names the step).
    void beginUndoGrouping(const QString& actionName);
    void endUndoGrouping();
    /// The names of the steps undo and redo would take; empty for typing and for none.
    QString undoActionName() const;
    QString redoActionName() const;

    QString windowIdentifier() const { return _windowIdentifier; }
    void setWindowIdentifier(const QString& identifier) { _windowIdentifier = identifier; }

    /// Takes up the settings a document follows while it is open (pushed when they change).
    void updatePreferences(const DocumentSettings& settings);
    const DocumentSettings& documentSettings() const { return _settings; }
    /// Seconds from the first unsaved change to the recovery copy.
    qint64 autosavingDelay() const { return _settings.autosavingDelay; }

    using ReadRequest = DocumentReadRequest;

    /// Reads the file, choosing its encoding as `request` says; on failure the text and the
    /// document's settings stay as they were.
    bool readFromURL(const QString& path, const QString& type, QString* error = nullptr,
                     ReadRequest request = {});
    /// Saves through writeToURL(); Save As takes the encoding and style chosen in the
    /// save panel (setSavePanelChoice), every other save the document's own. A Save or an
    /// autosave into the document's own file fails when another program changed that file
    /// since it was read or saved; a second Save after that message replaces it.
    bool writeSafelyToURL(const QString& path, const QString& type, SaveOperation operation,
                          QString* error = nullptr);
    /// Whether the last Save was refused because another program had changed the file (the
    /// next Save replaces it).
    bool isChangeOnDiskReported() const { return _changeOnDiskReported; }
    /// Whether the last save failed because the text holds a character that the encoding for
    /// saving cannot represent.
    bool isEncodingFailureReported() const { return _encodingFailureReported; }
    /// The state of the file that the text was read from or last saved as; a Save into the
    /// file is refused once when the file no longer has it. None for a document never read
    /// or saved.
    std::optional<FileStamp> fileStamp() const { return _fileStamp; }
    /// Gives the text a file state to be based on: recovered text keeps the one its edits
    /// started from, so that a file another program changed since is not overwritten unasked.
    void setFileStamp(const std::optional<FileStamp>& stamp);
    /// Writes the text in the encoding for saving, with the line breaks for saving, keeping
    /// the file's owner, mode and attributes (see SafeFileWriter): whatever fails, the file
    /// keeps its old bytes, and the message says why.
    bool writeToURL(const QString& path, const QString& type, QString* error = nullptr);
    /// What the save panel's pop-ups show, read by the next Save As.
    void setSavePanelChoice(quint64 encoding, qsizetype lineBreaks);
    bool savePanelExtensionHidden() const { return _settings.savePanelExtensionHidden; }

    bool revertToContentsOfURL(const QString& path, const QString& type, QString* error = nullptr);
    /// A new untitled document with a copy of the text, the encoding and the style.
    std::unique_ptr<Document> duplicateAndReturnError() const;
    /// Replaces the whole text as one undoable step.
    void setTextStorage(const QString& text);
    /// Replaces the whole text without an undo step: the undo history is cleared.
    void setLoadedText(const QString& text);
    /// Adds `text` at the end as text read, not typed: no undo step, and the document stays
    /// unmodified.
    void appendLoadedText(const QString& text);

    /// Replaces the text with what the file holds in `encoding` (reopening it in another
    /// encoding), as one undoable step that undo takes back with the encoding; the document is
    /// then unmodified. False, with nothing changed, when the bytes do not decode in it.
    bool rereadWithEncoding(quint64 encoding, QString* error = nullptr);
    /// Replaces the text with what the file holds now (another program changed it), as one
    /// undoable step that undo takes back; the document is then unmodified and based on the
    /// file as it is. The encoding stays the document's (or the one the file's attribute
    /// names) while the bytes decode in it, and is detected as on opening otherwise; the
    /// line-break style becomes the file's. False, with nothing changed, when the file cannot
    /// be read.
    bool reloadFromFile(QString* error = nullptr);

    /// Why the file read last does not look like text; such a file opens read-only.
    NonTextReason nonTextReason() const { return _reading.nonText; }
    /// A file that does not look like text stays read-only until editAnyway().
    bool isReadOnly() const { return _reading.nonText != NonTextReason::None && !_editAnyway; }
    /// Lets the user edit a file that does not look like text. Its line breaks are written back
    /// as they were read (the style is EncodingManager::KeepLineBreaks) unless the user
    /// chooses a style.
    void editAnyway();
    /// How many line breaks of each kind the file read last held, counted when it held a CR
    /// (without one they are all LFs) and its line breaks are not kept. When it mixed kinds,
    /// a save writes them all in the document's style.
    LineBreakCounts lineBreaksAsRead() const { return _reading.lineBreakCounts; }

    /// The encoding stored in a file's "com.apple.TextEncoding" attribute; all ones when
    /// the file has no usable attribute.
    static quint64 textEncodingAttributeOfURL(const QString& path)
    {
        return TextEncodingAttribute::ofFile(path);
    }
    /// Writes that attribute; false when the encoding has no character-set name or the
    /// attribute cannot be written.
    static bool setTextEncodingAttribute(quint64 encoding, const QString& path)
    {
        return TextEncodingAttribute::write(encoding, path);
    }
    /// The attribute's value parsed as the reader does (for the bytes read from a file).
    static quint64 textEncodingFromAttributeValue(const QByteArray& value)
    {
        return TextEncodingAttribute::fromValue(value);
    }

    /// Print settings: fit to the page width, margins 36 points left and right, 72 top
    /// and bottom.
    QPageLayout printInfo();

    /// Shortest time, in seconds, between recovery copies, whatever `SettingsKey::AutosavingDelay`
    /// says: a copy is not written at every key.
    static constexpr qint64 minimumAutosavingDelay = 1;
    /// Starts the autosave clock unless it runs already: `SettingsKey::AutosavingDelay` seconds
    /// after the first unsaved change since the last copy, recoveryCopyDue() asks for a copy. Later
    /// changes do not restart the clock, so continuous typing never puts the copy off.
    void scheduleAutosave();

Q_SIGNALS:
    /// Each change of the text as it happens: at `position`, `removed` units gave way to
    /// `added` units.
    void contentsChange(qsizetype position, qsizetype removed, qsizetype added);
    /// After each edit (an edit block counts as one), once the views have followed it.
    void contentsChanged();
    /// isDocumentEdited() changed.
    void documentEditedChanged(bool edited);
    void canUndoChanged(bool canUndo);
    void canRedoChanged(bool canRedo);
    /// The encoding, line-break style or file changed: status lines and titles refresh.
    void documentInformationChanged();
    /// The end of a large file started or finished going into the text (see isLoading()).
    void loadingChanged(bool loading);
    /// The text has unsaved changes that no recovery copy holds yet, and the autosave delay
    /// has passed: the recovery store writes a copy. Autosave never writes the file itself.
    void recoveryCopyDue();
    /// The text was read from the file anew (opened, reverted, reopened in another encoding,
    /// or such a reopening undone or redone): what the window says about it is out of date.
    void contentsRead();
    /// The document became read-only or editable (see isReadOnly()).
    void readOnlyChanged(bool readOnly);
    /// The steps undo and redo would take, or their names, changed.
    void undoStepsChanged();

private:
    class ReadingUndo;
    /// What reading a file decides about it besides its encoding and line-break style.
    struct Reading {
        NonTextReason nonText = NonTextReason::None;
        LineBreakCounts lineBreakCounts;
        CharacterStandIns standIns;
    };
    /// Everything a read sets, as one value: what undoing a reopening puts back.
    struct ReadState {
        quint64 encoding = 0;
        qsizetype lineBreaks = 0;
        Reading reading;
        bool editAnyway = false;
    };

    bool loadContents(const QString& path, quint64 encoding, QString* error);
    /// Turns decoded contents into the text the storage holds (`storageText`) and the state
    /// that goes with it; false, with `error` set, when the text cannot be held.
    bool prepareReading(DecodedContents& contents, const QString& fileName, ReadState& state,
                        QString& storageText, QString* error) const;
    /// The style of a text read without any line break: the document's own, unless it keeps
    /// line breaks as read, else the settings'.
    qsizetype lineBreaksOfTextWithout() const;
    DecodedContents readFile(quint64 encoding) const;
    /// Replaces the text by the file's `contents`, read in `encoding` (all ones: detected),
    /// as one undoable step, and bases the document on the file's `stamp`. The style becomes
    /// the file's with `fileLineBreaks`, and otherwise stays the document's.
    bool reread(DecodedContents contents, quint64 encoding, bool fileLineBreaks,
                const std::optional<FileStamp>& stamp, QString* error);
    ReadState readState() const;
    /// Sets the state; `announce` says it comes with a new reading of the file (contentsRead).
    void applyReadState(const ReadState& state, bool announce);
    /// Replaces the whole text by `storageText` and the state by `after` as one undoable step,
    /// which undo takes back together with the state.
    void replaceUndoably(const QString& storageText, const ReadState& after, bool announce);

    EncodingManager& _encodings;
    DocumentSettings _settings;
    TextStore* _textStore = nullptr;
    quint64 _documentEncoding = 0;
    quint64 _documentEncodingForSaving = ~quint64(0);
    qsizetype _documentLineBreaks = 0;
    qsizetype _documentLineBreaksForSaving = 0;
    QString _revertFileTypeToSet;
    // The encoding and the line-break style are kept in _documentEncoding and
    // _documentLineBreaks; _reading holds the rest of what the last read decided.
    Reading _reading;
    bool _editAnyway = false;
    bool _setUpDefaultPrintInfo = false;
    QString _windowIdentifier;

    QString _fileURL;
    QString _fileType;
    int _untitledNumber = 0;
    quint64 _savePanelEncoding = ~quint64(0);
    qsizetype _savePanelLineBreaks = 0;
    QPageLayout _printInfo;
    QTimer* _autosaveTimer = nullptr;
    // The file as it was when last read or saved, and whether a Save was refused since
    // because another program had changed it.
    std::optional<FileStamp> _fileStamp;
    bool _changeOnDiskReported = false;
    bool _encodingFailureReported = false;
};
