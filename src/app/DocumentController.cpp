#include "app/DocumentController.h"

#include "app/Application.h"
#include "app/FilePanelAccessory.h"
#include "app/MainMenu.h"
#include "app/ShippedResources.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "document/RecoveryStore.h"
#include "editor/TextView.h"
#include "platform/FileManager.h"
#include "platform/Preferences.h"
#include "platform/SharedInstance.h"
#include "platform/StringEncoding.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptManager.h"
#include "window/DocumentPrinter.h"
#include "window/DocumentSharing.h"
#include "window/DocumentWindow.h"
#include "window/EncodingPopUp.h"
#include "window/WindowController.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QHash>
#include <QIcon>
#include <QMenu>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>

#include <algorithm>
#include <utility>

DocumentController::DocumentController(QObject* parent)
    : QObject(parent)
    , _autosavingDelay(Preferences::sharedPreferences().current().document.autosavingDelay)
{
    connect(&Preferences::sharedPreferences(), &Preferences::applicationSettingsChanged, this,
            &DocumentController::updatePreferences);
}

DocumentController& DocumentController::sharedDocumentController()
{
    return SharedInstance<DocumentController>::object();
}

void DocumentController::awakeFromNib()
{
    const ApplicationSettings settings = Preferences::sharedPreferences().current().application;
    _openDefaultsTextEncoding = settings.openDefaultsTextEncoding;
    _autosavingDelay = Preferences::sharedPreferences().current().document.autosavingDelay;
    _isOpenPanel = false;

    const QString app = FileManager::applicationName();
    FileManager::findOrCreateDirectory(FileManager::ApplicationSupportDirectory,
                                       FileManager::UserDomainMask,
                                       app + QStringLiteral("/Script"));
    FileManager::findOrCreateDirectory(FileManager::ApplicationSupportDirectory,
                                       FileManager::UserDomainMask,
                                       app + QStringLiteral("/SyntaxDefinition"));

    if (settings.firstStartupApplication) {
        ShippedResources::install();
    } else {
        ScriptManager::sharedScriptManager().readScriptDataSource();
    }
}

// Documents ------------------------------------------------------------------------------

namespace {

const QLatin1StringView kRecentDocuments = SettingsKey::RecentDocumentPaths;
// Triplets of window identifier, encoding and path of the documents open when the last run ended.
const QLatin1StringView kRestorableDocuments = SettingsKey::RestorableDocuments;
// One entry per triplet: empty for a window of its own; for a tab, the number of its tab window,
// followed by "*" for the current tab. The triplets of a tab window's tabs are in tab order.
const QLatin1StringView kRestorableDocumentTabs = SettingsKey::RestorableDocumentTabs;
const QLatin1StringView kOpenPanelFolder = SettingsKey::OpenPanelFolder;
constexpr int kMaximumRecentDocuments = 15;
constexpr quint64 kAutomatic = ~quint64(0);
constexpr quint64 kUTF8 = 4;

QWidget* activeWindowOr(QWidget* fallback)
{
    QWidget* active = QApplication::activeWindow();
    return active ? active : fallback;
}

} // namespace

Document* DocumentController::currentDocument() const
{
    // A tab window is active for each of its tabs; only the current tab is in front.
    const auto inFront = [this](Document* document) {
        WindowController* controller = windowControllerOf(document);
        return controller && controller->window() && controller->window()->isFrontTab();
    };
    for (Document* document : _documents) {
        if (inFront(document) && windowControllerOf(document)->window()->isActiveWindow()) {
            return document;
        }
    }
    for (auto it = _documents.rbegin(); it != _documents.rend(); ++it) {
        if (inFront(*it)) {
            return *it;
        }
    }
    return _documents.empty() ? nullptr : _documents.back();
}

WindowController* DocumentController::windowControllerOf(Document* document) const
{
    return document ? document->findChild<WindowController*>(QString(), Qt::FindDirectChildrenOnly)
                    : nullptr;
}

Document* DocumentController::addDocument(Document* document, bool display, Placement placement)
{
    _documents.push_back(document);
    RecoveryStore::sharedRecoveryStore().watch(document);
    auto* controller = new WindowController(document);
    controller->windowDidLoad();
    new MainMenu(controller);
    DocumentWindow* window = controller->window();
    window->setCloseHandler([this, document] { return closeDocument(document); });
    connect(window, &QObject::destroyed, document, [this, document] {
        std::erase(_documents, document);
        document->deleteLater();
    });
    if (display && placement.tabGroup) {
        *placement.tabGroup = window->presentAsTab(*placement.tabGroup);
    } else if (display) {
        window->present(placement.bySetting &&
                        Preferences::sharedPreferences().current().application.openDocumentsInTabs);
    }
    return document;
}

Document* DocumentController::makeDocument()
{
    // The settings as the store holds them now: a document opened while the preferences
    // window is open starts from what it shows. The autosave delay is the one the
    // application started with.
    DocumentSettings settings = Preferences::sharedPreferences().current().document;
    settings.autosavingDelay = _autosavingDelay;
    return new Document(EncodingManager::sharedEncodingManager(), settings, this);
}

Document* DocumentController::newDocument()
{
    return addDocument(makeDocument(), true);
}

Document* DocumentController::duplicateDocument(Document* document)
{
    if (!document) {
        return nullptr;
    }
    Document* duplicate = document->duplicateAndReturnError().release();
    duplicate->setParent(this);
    // Its window comes back as the original's stands, as a restored window would.
    duplicate->setWindowIdentifier(document->windowIdentifier());
    // The copy is kept nowhere yet: closing it asks whether to save it.
    duplicate->setDocumentEdited(true);
    return addDocument(duplicate, true);
}

bool DocumentController::presentError(QWidget* parent, const QString& message) const
{
    QMessageBox alert(QMessageBox::Warning, tr("Error"), message, QMessageBox::Ok, parent);
    alert.setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    alert.exec();
    return false;
}

Document* DocumentController::openDocumentWithContentsOfURL(const QString& path, bool display)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    for (Document* document : _documents) {
        if (document->fileURL() == absolute) {
            if (WindowController* controller = windowControllerOf(document);
                controller && display) {
                controller->window()->bringToFront();
            }
            // Nothing was read: the open panel's encoding is still for the next file read.
            return document;
        }
    }
    auto* document = makeDocument();
    // The open panel's choice is for the next file read, once.
    Document::ReadRequest request;
    if (_isOpenPanel) {
        _isOpenPanel = false;
        request = {Document::ReadRequest::OpenPanel, _openPanelEncoding};
    }
    QString error;
    if (!document->readFromURL(absolute, QString(), &error, request)) {
        delete document;
        presentError(activeWindowOr(nullptr), error);
        return nullptr;
    }
    noteNewRecentDocumentURL(absolute);
    return addDocument(document, display);
}

QStringList DocumentController::runModalOpenPanel(QWidget* parent)
{
    QFileDialog panel(parent, QStringLiteral("open for Morvantic"));
    panel.setOption(QFileDialog::DontUseNativeDialog, true);
    panel.setFileMode(QFileDialog::ExistingFiles);
    panel.setAcceptMode(QFileDialog::AcceptOpen);
    if (const QString folder = openPanelDirectory(parent); !folder.isEmpty()) {
        panel.setDirectory(folder);
    }
    const auto accessory = FilePanelAccessory::add(panel, false);
    if (accessory.textEncodingPopUp) {
        EncodingPopUp::makeEncodingOfPopUpMenu(
            accessory.textEncodingPopUp, EncodingManager::sharedEncodingManager().encodingList(),
            _openDefaultsTextEncoding, true);
    }
    if (panel.exec() != QDialog::Accepted) {
        return {};
    }
    UserDefaults::standardUserDefaults().setObject(panel.directory().absolutePath(),
                                                   kOpenPanelFolder);
    _isOpenPanel = true;
    _openPanelEncoding = kAutomatic;
    if (accessory.textEncodingPopUp) {
        const QVariant tag = accessory.textEncodingPopUp->currentData(EncodingManager::TagRole);
        if (!tag.isValid() || tag.toLongLong() != -1) {
            _openPanelEncoding = accessory.textEncodingPopUp->currentData().value<quint64>();
        }
    }
    return panel.selectedFiles();
}

QString DocumentController::openPanelDirectory(QWidget* parent) const
{
    const Document* front = currentDocument();
    for (Document* document : _documents) {
        if (WindowController* controller = windowControllerOf(document);
            parent && controller && controller->window() == parent) {
            front = document;
        }
    }
    if (front && !front->fileURL().isEmpty()) {
        return QFileInfo(front->fileURL()).absolutePath();
    }
    const QString last = UserDefaults::standardUserDefaults().stringForKey(kOpenPanelFolder);
    return QFileInfo(last).isDir() ? last : QString();
}

void DocumentController::openDocument(QWidget* parent)
{
    const QStringList files = runModalOpenPanel(parent);
    for (const QString& file : files) {
        openDocumentWithContentsOfURL(file);
    }
    _isOpenPanel = false;
}

bool DocumentController::saveDocument(Document* document)
{
    if (!document) {
        return false;
    }
    if (document->fileURL().isEmpty()) {
        return saveDocumentAs(document);
    }
    QString error;
    WindowController* controller = windowControllerOf(document);
    QWidget* window = controller ? controller->window() : nullptr;
    if (!document->writeSafelyToURL(document->fileURL(), document->fileType(), Document::Save,
                                    &error)) {
        // The message about another program's change says itself what to do.
        if (document->isChangeOnDiskReported()) {
            return presentError(window, error);
        }
        return presentSaveError(window, document, document->fileURL(), Document::Save, error);
    }
    return true;
}

bool DocumentController::presentSaveError(QWidget* parent, Document* document, const QString& path,
                                          int operation, const QString& message)
{
    const QString advice = tr("Use Save As… to choose another encoding or place.");
    if (!document->isEncodingFailureReported()) {
        return presentError(
            parent, operation == Document::Save ? message + QLatin1Char('\n') + advice : message);
    }
    // UTF-8 holds every character, so the text can always be saved without losing any of it.
    QMessageBox alert(QMessageBox::Warning, tr("Error"), message, QMessageBox::Cancel, parent);
    if (operation == Document::Save) {
        alert.setInformativeText(advice);
    }
    QPushButton* inUTF8 = alert.addButton(tr("Save as UTF-8"), QMessageBox::AcceptRole);
    alert.setDefaultButton(inUTF8);
    alert.setEscapeButton(QMessageBox::Cancel);
    alert.setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    alert.exec();
    if (alert.clickedButton() != inUTF8) {
        return false;
    }
    QString error;
    bool saved = false;
    if (operation == Document::SaveAs) {
        document->setSavePanelChoice(kUTF8, document->documentLineBreaksForSaving());
        saved = document->writeSafelyToURL(path, document->fileType(), Document::SaveAs, &error);
    } else {
        // A Save keeps its own checks (another program's change); only the encoding differs.
        const quint64 encoding = document->documentEncoding();
        document->setDocumentEncoding(kUTF8);
        saved = document->writeSafelyToURL(path, document->fileType(),
                                           Document::SaveOperation(operation), &error);
        if (!saved) {
            document->setDocumentEncoding(encoding);
        }
    }
    if (!saved) {
        presentError(parent, error);
    }
    return saved;
}

bool DocumentController::saveDocumentAs(Document* document)
{
    if (!document) {
        return false;
    }
    WindowController* controller = windowControllerOf(document);
    QWidget* window = controller ? controller->window() : nullptr;
    QFileDialog panel(window, tr("Save As"));
    panel.setOption(QFileDialog::DontUseNativeDialog, true);
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    QStringList filters;
    const QVariantMap syntax = controller && controller->textView()
                                   ? controller->textView()->syntaxDictionary()
                                   : QVariantMap();
    QStringList patterns;
    for (const QVariant& extension : syntax.value(QStringLiteral("Extensions")).toList()) {
        patterns << QStringLiteral("*.") + extension.toString();
    }
    if (!patterns.isEmpty()) {
        filters << tr("%1 files (%2)")
                       .arg(syntax.value(QStringLiteral("Name")).toString(), patterns.join(u' '));
    }
    filters << tr("All files (*)");
    panel.setNameFilters(filters);
    if (!document->fileURL().isEmpty()) {
        panel.selectFile(document->fileURL());
    } else {
        panel.selectFile(document->displayName());
    }
    const auto accessory = FilePanelAccessory::add(panel, true);
    FilePanelAccessory::addHideExtensionBox(panel, document->savePanelExtensionHidden());
    EncodingPopUp::makeEncodingOfPopUpMenu(accessory.textEncodingPopUp,
                                           EncodingManager::sharedEncodingManager().encodingList(),
                                           document->documentEncoding(), false);
    EncodingPopUp::makeLineBreaksOfPopUpMenu(accessory.lineBreakPopUp,
                                             document->documentLineBreaks());
    while (panel.exec() == QDialog::Accepted && !panel.selectedFiles().isEmpty()) {
        const QString path = panel.selectedFiles().constFirst();
        document->setSavePanelChoice(accessory.textEncodingPopUp->currentData().value<quint64>(),
                                     accessory.lineBreakPopUp->currentData().toLongLong());
        QString error;
        if (document->writeSafelyToURL(path, document->fileType(), Document::SaveAs, &error) ||
            presentSaveError(window, document, path, Document::SaveAs, error)) {
            noteNewRecentDocumentURL(path);
            return true;
        }
    }
    return false;
}

void DocumentController::revertDocumentToSaved(Document* document)
{
    if (!document || document->fileURL().isEmpty()) {
        return;
    }
    WindowController* controller = windowControllerOf(document);
    QWidget* window = controller ? controller->window() : nullptr;
    QMessageBox question(QMessageBox::Question, QString(),
                         tr("Do you want to revert to the most recently saved version of “%1”?")
                             .arg(document->displayName()),
                         QMessageBox::Cancel, window);
    question.setInformativeText(tr("Your current changes will be lost."));
    QPushButton* revert = question.addButton(tr("Revert"), QMessageBox::DestructiveRole);
    question.setWindowModality(Qt::WindowModal);
    question.exec();
    if (question.clickedButton() != revert) {
        return;
    }
    QString error;
    if (!document->revertToContentsOfURL(document->fileURL(), document->fileType(), &error)) {
        presentError(window, error);
        return;
    }
    if (controller) {
        controller->resetupInitialTextViewSharedState();
    }
}

namespace {

// The font the document's window shows its text in; printing uses the same.
QFont shownFont(const WindowController* controller)
{
    const TextView* view = controller ? controller->textView() : nullptr;
    return view ? view->textFont() : QFont();
}

} // namespace

void DocumentController::printDocument(Document* document)
{
    if (!document) {
        return;
    }
    WindowController* controller = windowControllerOf(document);
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageLayout(document->printInfo());
    printer.setDocName(document->displayName());
    QPrintDialog dialog(&printer, controller ? controller->window() : nullptr);
    if (dialog.exec() == QDialog::Accepted) {
        DocumentPrinter::printOperationWithSettings(*document, &printer, shownFont(controller));
    }
}

void DocumentController::exportDocumentAsPDF(Document* document)
{
    if (!document) {
        return;
    }
    WindowController* controller = windowControllerOf(document);
    QWidget* window = controller ? controller->window() : nullptr;
    const QString base = document->fileURL().isEmpty()
                             ? QDir::home().filePath(document->displayName())
                             : document->fileURL();
    const QString path = QFileDialog::getSaveFileName(
        window, tr("Export as PDF"),
        QFileInfo(base).path() + u'/' + QFileInfo(base).completeBaseName() + QStringLiteral(".pdf"),
        tr("PDF files (*.pdf)"), nullptr, QFileDialog::DontUseNativeDialog);
    if (path.isEmpty()) {
        return;
    }
    QString error;
    if (!DocumentPrinter::exportAsPDFTo(*document, path, &error, shownFont(controller))) {
        presentError(window, error);
    }
}

bool DocumentController::closeDocument(Document* document)
{
    if (!document) {
        return true;
    }
    WindowController* controller = windowControllerOf(document);
    QWidget* window = controller ? controller->window() : nullptr;
    if (document->isDocumentEdited()) {
        // The question is about the tab the user sees.
        if (controller && controller->window()) {
            controller->window()->selectTab();
        }
        QMessageBox question(
            QMessageBox::Warning, QString(),
            tr("Do you want to save the changes you made in “%1”?").arg(document->displayName()),
            QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, window);
        question.setInformativeText(tr("Your changes will be lost if you don’t save them."));
        question.button(QMessageBox::Discard)->setText(tr("Don’t Save"));
        question.setDefaultButton(QMessageBox::Save);
        question.setWindowModality(Qt::WindowModal);
        const int answer = question.exec();
        if (answer == QMessageBox::Cancel) {
            return false;
        }
        if (answer == QMessageBox::Save && !saveDocument(document)) {
            return false;
        }
    }
    return true;
}

bool DocumentController::reviewUnsavedDocumentsBeforeQuitting()
{
    const std::vector<Document*> documents = _documents;
    for (Document* document : documents) {
        if (!closeDocument(document)) {
            return false;
        }
    }
    return true;
}

void DocumentController::discardAllDocuments()
{
    const std::vector<Document*> documents = std::exchange(_documents, {});
    for (Document* document : documents) {
        WindowController* controller = windowControllerOf(document);
        QWidget* window = controller ? controller->window() : nullptr;
        delete document;
        delete window;
    }
}

void DocumentController::noteDocumentsForRestoration()
{
    // Windows in the order their first document was opened, the tabs of a window in their order.
    struct Place {
        int window;
        int tab;
        bool isTab;
        bool front;
        Document* document;
    };
    std::vector<Place> places;
    QHash<const void*, int> windowNumbers;
    for (Document* document : _documents) {
        WindowController* controller = windowControllerOf(document);
        DocumentWindow* window = controller ? controller->window() : nullptr;
        const void* tabs = window ? static_cast<const void*>(window->tabWindow()) : nullptr;
        const void* key = tabs ? tabs : document;
        if (!windowNumbers.contains(key)) {
            windowNumbers.insert(key, int(windowNumbers.size()));
        }
        places.push_back({windowNumbers.value(key), tabs ? window->tabIndex() : 0, tabs != nullptr,
                          window && window->isFrontTab(), document});
    }
    std::stable_sort(places.begin(), places.end(), [](const Place& a, const Place& b) {
        return std::pair(a.window, a.tab) < std::pair(b.window, b.tab);
    });
    QStringList entries;
    QStringList tabs;
    for (const Place& place : places) {
        Document* document = place.document;
        if (document->fileURL().isEmpty()) {
            continue;
        }
        entries << document->windowIdentifier() << QString::number(document->documentEncoding())
                << document->fileURL();
        tabs << (place.isTab ? QString::number(place.window) +
                                   (place.front ? QStringLiteral("*") : QString())
                             : QString());
    }
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    defaults.setObject(entries, kRestorableDocuments);
    defaults.setObject(tabs, kRestorableDocumentTabs);
}

int DocumentController::reopenDocumentsOfLastRun()
{
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    const QStringList entries = defaults.objectForKey(kRestorableDocuments).toStringList();
    const QStringList tabs = defaults.objectForKey(kRestorableDocumentTabs).toStringList();
    defaults.removeObjectForKey(kRestorableDocuments);
    defaults.removeObjectForKey(kRestorableDocumentTabs);
    int reopened = 0;
    QHash<QString, TabWindow*> tabWindows;
    QList<DocumentWindow*> frontTabs;
    for (qsizetype i = 0; i + 2 < entries.size(); i += 3) {
        // A file that went away since is simply not brought back.
        if (!QFileInfo(entries[i + 2]).isFile()) {
            continue;
        }
        QString place = tabs.value(i / 3);
        const bool front = place.endsWith(u'*');
        place.chop(front ? 1 : 0);
        Document* document =
            reopenDocument(entries[i + 2], entries[i + 1].toULongLong(), entries[i],
                           {false, place.isEmpty() ? nullptr : &tabWindows[place]});
        if (!document) {
            continue;
        }
        ++reopened;
        if (WindowController* controller = windowControllerOf(document); controller && front) {
            frontTabs << controller->window();
        }
    }
    for (DocumentWindow* window : frontTabs) {
        window->selectTab();
    }
    return reopened;
}

Document* DocumentController::reopenDocumentForURL(const QString& path, quint64 encoding,
                                                   const QString& identifier)
{
    return reopenDocument(path, encoding, identifier, {true, nullptr});
}

Document* DocumentController::reopenDocument(const QString& path, quint64 encoding,
                                             const QString& identifier, Placement placement)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    for (Document* open : _documents) {
        if (open->fileURL() == absolute) {
            // Already back (recovered with its unsaved changes, say): it joins its tab window.
            if (WindowController* controller = windowControllerOf(open);
                controller && placement.tabGroup) {
                *placement.tabGroup = controller->window()->presentAsTab(*placement.tabGroup);
            }
            return open;
        }
    }
    auto* document = makeDocument();
    document->setDocumentEncoding(encoding);
    document->setWindowIdentifier(identifier);
    QString error;
    if (!document->readFromURL(absolute, QString(), &error, {Document::ReadRequest::Reopen})) {
        delete document;
        presentError(activeWindowOr(nullptr), error);
        return nullptr;
    }
    return addDocument(document, true, placement);
}

QStringList DocumentController::recentDocumentURLs() const
{
    return UserDefaults::standardUserDefaults().objectForKey(kRecentDocuments).toStringList();
}

void DocumentController::noteNewRecentDocumentURL(const QString& path)
{
    QStringList recent = recentDocumentURLs();
    recent.removeAll(path);
    recent.prepend(path);
    while (recent.size() > kMaximumRecentDocuments) {
        recent.removeLast();
    }
    UserDefaults::standardUserDefaults().setObject(recent, kRecentDocuments);
}

void DocumentController::clearRecentDocuments()
{
    UserDefaults::standardUserDefaults().removeObjectForKey(kRecentDocuments);
}

// Menus -----------------------------------------------------------------------------------

void DocumentController::makeEncodingMenuItems(QMenu* menu)
{
    menu->clear();
    const auto addItems = [](QMenu* to, const QList<quint64>& encodings) {
        for (const quint64 encoding : encodings) {
            if (encoding == EncodingManager::Separator) {
                to->addSeparator();
                continue;
            }
            QAction* item = to->addAction(StringEncoding::localizedNameOfStringEncoding(encoding));
            item->setCheckable(true);
            item->setData(QVariant::fromValue(encoding));
            item->setProperty("tag", 200);
        }
    };
    addItems(menu, EncodingManager::sharedEncodingManager().encodingList());
    // A submenu keeps the list's items where users know them; its items trigger the menu's
    // own triggered signal too, since it is the submenu's parent.
    menu->addSeparator();
    QMenu* others = menu->addMenu(EncodingManager::otherEncodingsTitle());
    others->setObjectName(QStringLiteral("otherEncodingsMenu"));
    addItems(others, EncodingManager::otherEncodingList());
}

void DocumentController::makeLineBreaksMenuItems(QMenu* menu)
{
    menu->clear();
    for (qsizetype style = 0; style < 3; ++style) {
        QAction* item = menu->addAction(EncodingManager::lineBreaksLongTitle(style));
        item->setCheckable(true);
        item->setData(qint64(style));
        item->setProperty("tag", 300);
    }
}

void DocumentController::makeSyntaxMenuItems(QMenu* menu)
{
    menu->clear();
    for (const QString& title : {QStringLiteral("Default For File Type"), QStringLiteral("None")}) {
        QAction* item = menu->addAction(title);
        item->setCheckable(true);
        item->setProperty("tag", 500);
    }
    menu->addSeparator();
    const QString folder = FileManager::syntaxDefinitionDirectoryPathInPath();
    QFileIconProvider icons;
    const QStringList entries = QDir(folder).entryList(
        QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Unsorted);
    for (const QString& entry : entries) {
        if (entry.startsWith(u'.') || entry == u"Plain Text.plist") {
            continue;
        }
        const QString path = folder + u'/' + entry;
        QAction* item =
            menu->addAction(icons.icon(QFileInfo(path)), QFileInfo(entry).completeBaseName());
        item->setCheckable(true);
        item->setData(path);
        item->setProperty("tag", 500);
    }
    const QString plainText =
        FileManager::syntaxDefinitionDirectoryPathInPath(QStringLiteral("Plain Text.plist"));
    ShippedResources::copyResource(QStringLiteral(":/SyntaxDefinition/Plain Text.plist"),
                                   plainText);
    menu->addSeparator();
    QAction* item = menu->addAction(icons.icon(QFileInfo(plainText)), QStringLiteral("Plain Text"));
    item->setCheckable(true);
    item->setData(plainText);
    item->setProperty("tag", 500);
}

void DocumentController::makeSharingMenu(QMenu* menu)
{
    DocumentSharing::makeSharingMenu(menu);
}

void DocumentController::updatePreferences(const ApplicationSettings& settings)
{
    _openDefaultsTextEncoding = settings.openDefaultsTextEncoding;
}
