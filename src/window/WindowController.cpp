#include "window/WindowController.h"

#include "document/Document.h"
#include "editor/CompletionManager.h"
#include "editor/EditorController.h"
#include "editor/LayoutManager.h"
#include "editor/SpellCheckingController.h"
#include "editor/TextView.h"
#include "platform/FileManager.h"
#include "platform/Preferences.h"
#include "platform/SpellChecker.h"
#include "platform/StringEncoding.h"
#include "platform/TextCodec.h"
#include "search/SearchManager.h"
#include "syntax/SyntaxManager.h"
#include "window/DiskChangeNotices.h"
#include "window/DocumentWindow.h"
#include "window/FunctionPopUp.h"
#include "window/ReadingNotices.h"
#include "window/SidebarView.h"
#include "window/StatusLine.h"

#include <QAction>
#include <QApplication>
#include <QMessageBox>
#include <QProgressBar>
#include <QSplitter>

namespace {

const QString kNone = QStringLiteral("None");

} // namespace

WindowController::WindowController(Document* document)
    : QObject(document)
    , _document(document)
{
    Preferences& preferences = Preferences::sharedPreferences();
    const PreferencesValues settings = preferences.current();
    _toggles.read(settings);
    _spellCheckLanguage = settings.window.spellCheckLanguage;
    _useVerticalforSplitView = settings.window.useVerticalforSplitView;
    _syntax.read(settings.window);

    _window = new DocumentWindow;
    _sidebarView = new SidebarView(this);
    _sidebarView->placeBeside(_window->splitView());
    _statusLine = new StatusLine(this);
    connect(_statusLine, &StatusLine::changed, this, &WindowController::toolbarInformationChanged);
    // Changed settings reach the panes and the document as they are pushed; after every
    // reading the window's toggles go back to the settings.
    connect(&preferences, &Preferences::editorSettingsChanged, this,
            [this](const EditorSettings& changed) {
                for (TextView* view : textViews()) {
                    view->updatePreferences(changed);
                }
            });
    connect(&preferences, &Preferences::documentSettingsChanged, document,
            &Document::updatePreferences);
    connect(&preferences, &Preferences::reloaded, this, &WindowController::updatePreferences);
    connect(document, &Document::documentInformationChanged, this, [this] {
        _statusLine->fileChanged();
        _syntax.fileChanged();
        for (TextView* view : textViews()) {
            view->layoutManager()->setCharacterStandIns(_document->characterStandIns());
        }
        updateToolbarInformation();
        updateTitle();
    });
    connect(document, &Document::readOnlyChanged, this, [this] {
        for (TextView* view : textViews()) {
            view->setReadOnly(_document->isReadOnly());
        }
    });
    connect(document, &Document::documentEditedChanged, this, &WindowController::updateTitle);
    connect(document, &Document::loadingChanged, this, &WindowController::loadingChanged);
    connect(document, &Document::contentsChanged, this, &WindowController::textDidChange);
    connect(_window, &DocumentWindow::becameActive, this, [this] {
        if (!textView() || textView()->selectedRange().length == 0) {
            _statusLine->showWholeCount();
        }
    });
    if (auto* popUp = qobject_cast<FunctionPopUp*>(_window->functionPopUp())) {
        connect(popUp, &FunctionPopUp::willPopUp, this,
                &WindowController::updateFunctionDefinitionList);
        connect(popUp, &QComboBox::activated, this,
                &WindowController::selectedFunctionDefinitionItem);
    }
}

WindowController::~WindowController()
{
    if (_window) {
        _window->setCloseHandler(nullptr);
        _window->close();
    }
}

DocumentWindow* WindowController::window() const
{
    return _window;
}

TextView* WindowController::textView() const
{
    return _mainTextView;
}

std::vector<TextView*> WindowController::textViews() const
{
    std::vector<TextView*> views;
    for (EditorController* pane : _panes) {
        if (pane->textView()) {
            views.push_back(pane->textView());
        }
    }
    return views;
}

void WindowController::addPane()
{
    const EditorServices services{CompletionManager::sharedCompletionManager(),
                                  SyntaxManager::sharedSyntaxManager(),
                                  SpellChecker::sharedSpellChecker()};
    auto* pane =
        new EditorController(services, Preferences::sharedPreferences().current().editor, this);
    _window->splitView()->addWidget(pane->view());
    pane->setupInitialTextViewSharedStateWithDocument(_document);
    _panes.push_back(pane);
    TextView* view = pane->textView();
    _mainTextView = view;
    connect(view, &TextView::selectionChanged, this,
            [this, view] { _statusLine->selectionChanged(view); });
    connect(view, &TextView::mouseDown, this, &WindowController::textViewMouseDown);
    connect(view, &TextArea::selectionChanged, this, [this, view] {
        if (view == textView()) {
            _statusLine->showCaretPosition();
        }
    });
    // The pane clicked or given the focus last is the one menu commands act on.
    connect(qApp, &QApplication::focusChanged, view, [this, view](QWidget*, QWidget* now) {
        if (now == view) {
            _mainTextView = view;
            _statusLine->showCaretPosition();
        }
    });
    view->setFocus();
    // A pane not yet shown does not take the focus at once, and is in front all the same.
    _statusLine->showCaretPosition();
}

void WindowController::textViewMouseDown(TextView* view)
{
    // A click makes its pane the main text view; the other pane gives up its completion
    // and its selection.
    TextView* main = textView();
    if (main && main != view) {
        CompletionManager& completion = CompletionManager::sharedCompletionManager();
        if (completion.isComplating(main)) {
            completion.terminateCompletionWithCancel(true);
        }
        main->setSelectedRange({0, 0});
    }
    _mainTextView = view;
}

void WindowController::applyStateToPane(TextView* view)
{
    view->setIndicator(_window->indicator());
    for (int toggle = 0; toggle < ViewToggles::ToggleCount; ++toggle) {
        _toggles.applyTo(ViewToggles::Toggle(toggle), view);
    }
    SpellCheckingController::of(view)->setContinuousSpellCheckingEnabled(allowSpellChecking(),
                                                                         _spellCheckLanguage);
    view->layoutManager()->setCharacterStandIns(_document->characterStandIns());
    view->setReadOnly(_document->isReadOnly());
    view->setLoading(_document->isLoading());
}

void WindowController::loadingChanged(bool loading)
{
    for (TextView* view : textViews()) {
        view->setLoading(loading);
    }
    _window->indicator()->setVisible(loading);
    if (loading) {
        QCoreApplication::instance()->installEventFilter(this);
    } else {
        QCoreApplication::instance()->removeEventFilter(this);
    }
}

bool WindowController::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::ContextMenu:
    case QEvent::DragEnter:
    case QEvent::Drop:
        // Finishing removes this filter.
        _document->finishLoading();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void WindowController::windowDidLoad()
{
    addPane();
    TextView* view = textView();
    if (!view) {
        return;
    }
    applyStateToPane(view);
    if (_document->isLoading()) {
        loadingChanged(true);
    }
    toggleSpellChecking(nullptr);
    _notices = new ReadingNotices(_document, _window, this);
    _diskNotices = new DiskChangeNotices(this);

    const QString identifier = _document->windowIdentifier();
    if (identifier.isEmpty() || identifier == u"0:59" || identifier == u"_NS:60") {
        setWindowIdentifier(QStringLiteral("None:None"));
    } else {
        const QStringList fields = identifier.split(u':');
        setWindowIdentifier(identifier);
        const bool namesSyntax = fields.size() >= 2 && fields[1] != kNone && fields[1] != u"59";
        if (namesSyntax) {
            _syntax.restore(fields[1]);
        }
        // After the syntax is known, so that the identifier the sidebar writes keeps it.
        swicthSidebar(nullptr);
        if (!namesSyntax) {
            updateTitle();
            return;
        }
    }
    syntaxSettingToTextView();
    _statusLine->showWholeCount();
    updateTitle();
}

void WindowController::setWindowIdentifier(const QString& identifier)
{
    _windowIdentifier = identifier;
    _document->setWindowIdentifier(identifier);
}

void WindowController::updateTitle()
{
    if (!_window) {
        return;
    }
    _window->setWindowFilePath(_document->fileURL());
    _window->setWindowTitle(
        _document->displayName() + QStringLiteral("[*]") +
        (_statusLine->isFileReadOnly() ? QStringLiteral(" — Read-Only") : QString()));
    _window->setWindowModified(_document->isDocumentEdited());
}

// Syntax -------------------------------------------------------------------------------

void WindowController::syntaxSettingToTextView()
{
    _syntax.syntaxSettingToTextView();
}

void WindowController::selectedSyntaxColoring(QAction* item)
{
    _syntax.selectedSyntaxColoring(item);
}

void WindowController::updateFunctionDefinitionList()
{
    if (auto* popUp = _window ? qobject_cast<FunctionPopUp*>(_window->functionPopUp()) : nullptr) {
        popUp->updateFunctionDefinitionList(textView());
    }
}

void WindowController::selectedFunctionDefinitionItem(int index)
{
    if (auto* popUp = _window ? qobject_cast<FunctionPopUp*>(_window->functionPopUp()) : nullptr) {
        popUp->selectedFunctionDefinitionItem(textView(), index);
    }
}

// Toggles ------------------------------------------------------------------------------

void WindowController::toggle(ViewToggles::Toggle toggle, QObject* sender)
{
    if (sender) {
        _toggles.invert(toggle);
    }
    for (TextView* view : textViews()) {
        _toggles.applyTo(toggle, view);
    }
}

void WindowController::toggleGutterView(QObject* sender)
{
    toggle(ViewToggles::LineNumbers, sender);
}

void WindowController::toggleInvisibleCharacters(QObject* sender)
{
    toggle(ViewToggles::InvisibleCharacters, sender);
}

void WindowController::toggleWrapLines(QObject* sender)
{
    toggle(ViewToggles::WrapLines, sender);
    if (TextView* main = textView()) {
        main->setFocus();
    }
}

void WindowController::toggleAutoIndent(QObject* sender)
{
    toggle(ViewToggles::AutoIndent, sender);
}

void WindowController::toggleAutoBraceMatching(QObject* sender)
{
    toggle(ViewToggles::BraceMatching, sender);
}

void WindowController::toggleAutoComplete(QObject* sender)
{
    toggle(ViewToggles::AutoComplete, sender);
}

void WindowController::toggleSpellChecking(QObject* sender)
{
    if (sender) {
        _toggles.invert(ViewToggles::SpellChecking);
    }
    SpellChecker::sharedSpellChecker().setLanguage(_spellCheckLanguage);
    for (TextView* view : textViews()) {
        SpellCheckingController::of(view)->setContinuousSpellCheckingEnabled(allowSpellChecking(),
                                                                             _spellCheckLanguage);
    }
}

// Menus --------------------------------------------------------------------------------

bool WindowController::validateMenuItem(QAction* item) const
{
    if (_toggles.validate(item)) {
        return true;
    }
    switch (item->property("tag").toInt()) {
    case SplitPaneTag:
        item->setText(_isSplitView ? tr("Hide Split Pane") : tr("Show Split Pane"));
        break;
    case VerticalSplitTag:
        item->setChecked(_useVerticalforSplitView);
        break;
    case EncodingTag:
        item->setChecked(item->text() == StringEncoding::localizedNameOfStringEncoding(
                                             _document->documentEncoding()));
        break;
    case LineBreaksTag:
        item->setChecked(item->data().toLongLong() == _document->documentLineBreaks());
        break;
    case SyntaxTag:
        _syntax.validate(item);
        break;
    default:
        break;
    }
    return true;
}

// Status line --------------------------------------------------------------------------

void WindowController::updateSelectCharacterInformation(const QString& text)
{
    _statusLine->countCharacters(text);
}

QString WindowController::toolbarInformation() const
{
    return _statusLine->text();
}

qint64 WindowController::infoCharacters() const
{
    return _statusLine->characters();
}

void WindowController::updateToolbarInformation()
{
    _statusLine->update();
}

void WindowController::textDidChange()
{
    // An edit takes the search and go-to highlights away; the engine's own replacements
    // keep them, so that replacing can go on to the next occurrence.
    SearchManager& search = SearchManager::sharedSearchManager();
    if (!search.isReplacing()) {
        search.setBackgroundHighlight(false);
        if (textView() && textView()->layoutManager()->hasBackgroundHighlights()) {
            textView()->layoutManager()->removeBackgroundHighlights();
        }
    }
    for (TextView* view : textViews()) {
        view->textDidChanged();
    }
    if (!textView() || textView()->selectedRange().length == 0) {
        _statusLine->showWholeCount();
    }
}

void WindowController::resetupInitialTextViewSharedState()
{
    for (TextView* view : textViews()) {
        view->setupInitialTextViewSharedState();
        applyStateToPane(view);
    }
    syntaxSettingToTextView();
    toggleSpellChecking(nullptr);
    _statusLine->showWholeCount();
}

void WindowController::updatePreferences(const PreferencesValues& settings)
{
    for (TextView* view : textViews()) {
        // An edit saved by the definitions' editor reaches the window, coloured anew.
        const QString name = view->syntaxDictionary().value(QStringLiteral("Name")).toString();
        if (!view->syntaxDictionary().isEmpty()) {
            view->setSyntaxDictionay(
                FileManager::syntaxDefinitionDirectoryPathInPath(name + QStringLiteral(".plist")));
        }
    }
    _toggles.read(settings);
    _spellCheckLanguage = settings.window.spellCheckLanguage;
    _useVerticalforSplitView = settings.window.useVerticalforSplitView;
    toggleWrapLines(nullptr);
    toggleGutterView(nullptr);
    toggleInvisibleCharacters(nullptr);
    toggleAutoIndent(nullptr);
    toggleAutoBraceMatching(nullptr);
    toggleAutoComplete(nullptr);
    toggleSpellChecking(nullptr);
    if (_window) {
        _window->splitView()->setOrientation(_useVerticalforSplitView ? Qt::Horizontal
                                                                      : Qt::Vertical);
    }
}

// Document commands --------------------------------------------------------------------

void WindowController::reopenUsingEncoding(quint64 encoding)
{
    const auto alert = [this](const QString& message, const QString& informative) {
        QMessageBox box(QMessageBox::Warning, QString(), message, QMessageBox::Ok, _window);
        box.setInformativeText(informative);
        box.setWindowModality(Qt::ApplicationModal);
        box.exec();
    };
    const QString advice = QStringLiteral("If possible, select a different text encoding.");
    const bool hasFile = !_document->fileURL().isEmpty();
    // Unsaved edits come back with undo, so they must be writable in the new encoding; a text
    // that is the file's own is checked against the file's bytes by the reading itself.
    if ((!hasFile || _document->isDocumentEdited()) &&
        !TextCodec::canBeConvertedToEncoding(_document->string(), encoding)) {
        alert(QStringLiteral("The document could not be convert."), advice);
    } else if (!hasFile) {
        _document->setDocumentEncoding(encoding);
    } else {
        _document->beginUndoGrouping(tr("Reopen with Encoding"));
        QString error;
        const bool reread = _document->rereadWithEncoding(encoding, &error);
        _document->endUndoGrouping();
        if (reread) {
            resetupInitialTextViewSharedState();
        } else {
            alert(error, advice);
        }
    }
    updateToolbarInformation();
}

void WindowController::setLineBreaks(qsizetype lineBreaks)
{
    _document->setDocumentLineBreaks(lineBreaks);
}

void WindowController::shareUsing(int tag)
{
    if (textView()) {
        DocumentSharing::share(tag, *_document, _window);
    }
}

// Sidebar and split panes ----------------------------------------------------------------

void WindowController::doTransition(QWidget* newView, QWidget* oldView, SidebarView* sidebarView)
{
    sidebarView->doTransition(newView, oldView);
}

void WindowController::reloadData()
{
    _sidebarView->reloadData();
}

void WindowController::toggleSplitView(QObject* sender)
{
    if (sender) {
        _isSplitView = !_isSplitView;
    }
    if (!_window || _panes.empty()) {
        return;
    }
    QSplitter* split = _window->splitView();
    split->setOrientation(_useVerticalforSplitView ? Qt::Horizontal : Qt::Vertical);
    if (_isSplitView) {
        if (_panes.size() < 2) {
            const QVariantMap syntaxDictionary = _panes.front()->textView()->syntaxDictionary();
            addPane();
            if (TextView* view = textView()) {
                view->setSyntaxDictionary(syntaxDictionary);
                applyStateToPane(view);
            }
            toggleSpellChecking(nullptr);
        }
        const int length =
            split->orientation() == Qt::Horizontal ? split->width() : split->height();
        split->setSizes({length / 2, length / 2});
    } else if (_panes.size() > 1) {
        delete _panes.back();
        _panes.pop_back();
        TextView* first = _panes.front()->textView();
        _mainTextView = first;
        first->setFocus(Qt::OtherFocusReason);
    }
}

void WindowController::toggleUsingVerticalSplitPane(QObject* sender)
{
    Q_UNUSED(sender);
    _useVerticalforSplitView = !_useVerticalforSplitView;
    if (!_window) {
        return;
    }
    QSplitter* split = _window->splitView();
    split->setOrientation(_useVerticalforSplitView ? Qt::Horizontal : Qt::Vertical);
    if (_isSplitView) {
        const int length =
            split->orientation() == Qt::Horizontal ? split->width() : split->height();
        split->setSizes({length / 2, length / 2});
    }
}

void WindowController::toggleFocusOnNextSplitPane(QObject* sender)
{
    Q_UNUSED(sender);
    if (_panes.size() < 2) {
        return;
    }
    for (TextView* view : textViews()) {
        if (view != textView()) {
            _mainTextView = view;
            view->setFocus(Qt::OtherFocusReason);
            return;
        }
    }
}
