#pragma once

#include "app/ShippedResources.h"
#include "document/DocumentOpener.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <vector>

struct ApplicationSettings;
class Document;
class QComboBox;
class QMenu;
class QWidget;
class TabWindow;
class WindowController;

/// The application's one document controller: it sets the application up at start and
/// tells a document how it is being read.
class DocumentController : public QObject, public DocumentOpener
{
    Q_OBJECT

public:
    static DocumentController& sharedDocumentController();

    explicit DocumentController(QObject* parent = nullptr);

    /// The start-up set-up, run once when the application has started: the open panel's
    /// default encoding and flag, the support folders, and either the first-start
    /// installation or the restoration of the script library.
    void awakeFromNib();

    quint64 openDefaultsTextEncoding() const { return _openDefaultsTextEncoding; }
    /// The seconds between recovery copies of a modified document, read when the application
    /// starts (a change takes effect at the next start, as the preferences say).
    qint64 autosavingDelay() const { return _autosavingDelay; }

    /// The encoding chosen in the open panel's pop-up when it was confirmed; all ones for
    /// "Automatic".
    quint64 openPanelEncoding() const { return _openPanelEncoding; }
    void setOpenPanelEncoding(quint64 encoding) { _openPanelEncoding = encoding; }
    /// Whether the next file read takes the open panel's encoding (the flag is cleared by
    /// that read).
    bool isOpenPanel() const { return _isOpenPanel; }
    void setIsOpenPanel(bool value) { _isOpenPanel = value; }

    // Documents ---------------------------------------------------------------------------

    /// The open documents, oldest first.
    const std::vector<Document*>& documents() const override { return _documents; }
    /// The document of the active window (its current tab), else the most recent document that
    /// its window shows.
    Document* currentDocument() const override;
    WindowController* windowControllerOf(Document* document) const;

    /// Opens a new untitled document in its own window.
    Document* newDocument() override;
    /// Opens an untitled copy of the document (its text, encoding, line breaks, syntax and
    /// sidebar) in a window of its own.
    Document* duplicateDocument(Document* document);
    /// Opens the file in a window (or brings its window forward when it is open already);
    /// null after showing why it could not be opened.
    Document* openDocumentWithContentsOfURL(const QString& path, bool display = true) override;
    /// Shows the open panel with its encoding pop-up and opens what the user chose.
    void openDocument(QWidget* parent);
    /// Asks the open panel's question; returns the chosen files (empty when cancelled) and
    /// sets isOpenPanel and the chosen encoding when the user confirms.
    QStringList runModalOpenPanel(QWidget* parent);
    /// The folder the open panel of `parent` starts in: that of the file of the document the
    /// window shows (the front document when `parent` shows none), else the one the panel was
    /// last confirmed in (kept between runs); empty when there is neither.
    QString openPanelDirectory(QWidget* parent) const;

    bool saveDocument(Document* document);
    bool saveDocumentAs(Document* document);
    void revertDocumentToSaved(Document* document);
    void printDocument(Document* document);
    void exportDocumentAsPDF(Document* document);
    /// Closes the document's window, asking first when it has unsaved changes; false when
    /// the user cancelled.
    bool closeDocument(Document* document);
    /// Asks about every modified document; false when the user cancelled.
    bool reviewUnsavedDocumentsBeforeQuitting();
    /// Closes every document and its window without asking; used when the application ends.
    void discardAllDocuments();

    /// Remembers the documents open now (file, encoding, window identifier, and for a tab its
    /// tab window and whether it is the current tab) so that the next launch can bring their
    /// windows back; untitled documents are not remembered.
    void noteDocumentsForRestoration();
    /// Reopens the documents remembered by the last run, each through the reopening path with
    /// its window identifier, tabs in their tab windows in their order; returns how many came
    /// back.
    int reopenDocumentsOfLastRun();
    /// Reads the file as a document restored at launch: its extended attribute, else
    /// `encoding`, without detection; the window is set up with `identifier`.
    Document* reopenDocumentForURL(const QString& path, quint64 encoding,
                                   const QString& identifier);

    QStringList recentDocumentURLs() const;
    void noteNewRecentDocumentURL(const QString& path);
    void clearRecentDocuments();

    // Menus -------------------------------------------------------------------------------

    /// Fills a menu with the encoding list (tag 200, the encoding as data), then a submenu
    /// "Other Encodings" (objectName "otherEncodingsMenu") with the other encodings, alike.
    void makeEncodingMenuItems(QMenu* menu);
    /// Fills a menu with the three line-break styles (tag 300, the style as data).
    void makeLineBreaksMenuItems(QMenu* menu);
    /// Fills a menu with "Default For File Type", "None", the definitions of the syntax
    /// folder and "Plain Text" (tag 500, the definition's path as data).
    void makeSyntaxMenuItems(QMenu* menu);
    /// Fills the sharing menu: e-mail (tag 0), messages (1), a separator, Twitter (2),
    /// Facebook (3) and Sina Weibo (4).
    void makeSharingMenu(QMenu* menu);
    /// Takes up the open panel's encoding when the settings change.
    void updatePreferences(const ApplicationSettings& settings);

    /// The syntax definitions that ship with the application, in installation order.
    static const QStringList& shippedSyntaxNames() { return ShippedResources::syntaxNames(); }
    /// The example scripts that ship with the application: the in-process group, then
    /// the shell group; names with their file extensions.
    static const QStringList& shippedInProcessScripts()
    {
        return ShippedResources::inProcessScripts();
    }
    static const QStringList& shippedShellScripts() { return ShippedResources::shellScripts(); }

private:
    /// A new document of this controller, with the shared encoding manager and the
    /// document settings.
    Document* makeDocument();
    /// Where a document's window shows: as the setting `SettingsKey::OpenDocumentsInTabs` says, or,
    /// for a window brought back from the last run, as it was: a window of its own, or the last tab
    /// of `*tabGroup` (of a new tab window when it holds null, which it then holds).
    struct Placement {
        bool bySetting;
        TabWindow** tabGroup;
    };
    Document* addDocument(Document* document, bool display, Placement placement = {true, nullptr});
    Document* reopenDocument(const QString& path, quint64 encoding, const QString& identifier,
                             Placement placement);
    bool presentError(QWidget* parent, const QString& message) const;
    /// Shows why a save (`operation`, a Document::SaveOperation) failed; when a character
    /// could not be encoded, offers to save in UTF-8 instead and does so when asked. True when
    /// that second save succeeded.
    bool presentSaveError(QWidget* parent, Document* document, const QString& path, int operation,
                          const QString& message);

    std::vector<Document*> _documents;

    quint64 _openDefaultsTextEncoding = 0;
    qint64 _autosavingDelay = 0;
    quint64 _openPanelEncoding = ~quint64(0);
    bool _isOpenPanel = false;
};
