#include "app/MainMenu.h"

#include "app/DocumentController.h"
#include "app/FindMenu.h"
#include "app/HelpMenu.h"
#include "app/PreferencesController.h"
#include "app/ScriptMenu.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "editor/TransformationsMenu.h"
#include "platform/FileTitles.h"
#include "window/DocumentWindow.h"
#include "window/TabWindow.h"
#include "window/WindowController.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>

MainMenu::MainMenu(WindowController* controller)
    : QObject(controller)
    , _controller(controller)
{
    QMenuBar* bar = controller->window()->menuBar();
    buildFileMenu(bar);
    buildEditMenu(bar);
    buildViewMenu(bar);
    buildFormatMenu(bar);
    ScriptMenu::addScriptsMenu(bar, controller);
    buildWindowMenu(bar);
    new FindMenu(controller);
    new HelpMenu(controller);
}

QMenu* MainMenu::addMenu(QMenuBar* bar, const QString& title, const QString& name)
{
    QMenu* menu = bar->addMenu(title);
    menu->setObjectName(name);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { validate(menu); });
    return menu;
}

QMenu* MainMenu::menuNamed(const QString& objectName) const
{
    return _controller->window()->menuBar()->findChild<QMenu*>(objectName);
}

QAction* MainMenu::actionWithTag(int tag) const
{
    for (QAction* action : _controller->window()->menuBar()->findChildren<QAction*>()) {
        if (action->property("tag").toInt() == tag) {
            return action;
        }
    }
    return nullptr;
}

void MainMenu::validate(QMenu* menu)
{
    for (QAction* action : menu->actions()) {
        if (action->property("tag").isValid()) {
            _controller->validateMenuItem(action);
        }
    }
}

QAction* MainMenu::addToggle(QMenu* menu, const QString& title, int tag, bool checkable,
                             void (WindowController::*toggle)(QObject*))
{
    QAction* action = menu->addAction(title);
    action->setProperty("tag", tag);
    action->setCheckable(checkable);
    connect(action, &QAction::triggered, _controller,
            [controller = _controller, action, toggle] { (controller->*toggle)(action); });
    _controller->validateMenuItem(action);
    return action;
}

void MainMenu::buildFileMenu(QMenuBar* bar)
{
    DocumentController& documents = DocumentController::sharedDocumentController();
    Document* document = _controller->document();
    QWidget* window = _controller->window();
    QMenu* file = addMenu(bar, tr("&File"), QStringLiteral("fileMenu"));
    file->addAction(tr("&New"), QKeySequence::New, this, [&documents] { documents.newDocument(); });
    file->addAction(tr("&Open…"), QKeySequence::Open, this,
                    [&documents, window] { documents.openDocument(window); });
    QMenu* recent = file->addMenu(tr("Open &Recent"));
    recent->setObjectName(QStringLiteral("openRecentMenu"));
    connect(recent, &QMenu::aboutToShow, this, [recent, &documents] {
        recent->clear();
        const QStringList paths = documents.recentDocumentURLs();
        // Files of the same name show where they are.
        const QStringList titles = FileTitles::distinctTitles(paths);
        for (qsizetype i = 0; i < paths.size(); ++i) {
            const QString path = paths[i];
            recent
                ->addAction(titles[i], recent,
                            [&documents, path] { documents.openDocumentWithContentsOfURL(path); })
                ->setToolTip(path);
        }
        recent->addSeparator();
        recent->addAction(tr("Clear Menu"), recent,
                          [&documents] { documents.clearRecentDocuments(); });
    });
    file->addSeparator();
    QAction* close = file->addAction(tr("&Close"), window, &QWidget::close);
    // Ctrl+W closes a tab or a window in every editor, whatever keys the desktop's own
    // scheme gives to closing.
    QList<QKeySequence> closeKeys = {QKeySequence(tr("Ctrl+W"))};
    for (const QKeySequence& keys : QKeySequence::keyBindings(QKeySequence::Close)) {
        if (!closeKeys.contains(keys)) {
            closeKeys.append(keys);
        }
    }
    close->setShortcuts(closeKeys);
    file->addAction(tr("&Save"), QKeySequence::Save, this,
                    [&documents, document] { documents.saveDocument(document); });
    file->addAction(tr("Save &As…"), QKeySequence::SaveAs, this,
                    [&documents, document] { documents.saveDocumentAs(document); });
    file->addAction(tr("&Duplicate"), this,
                    [&documents, document] { documents.duplicateDocument(document); });
    file->addAction(tr("Re&vert to Saved"), this,
                    [&documents, document] { documents.revertDocumentToSaved(document); });
    file->addSeparator();
    file->addAction(tr("&Print…"), QKeySequence::Print, this,
                    [&documents, document] { documents.printDocument(document); });
    file->addAction(tr("Export as PD&F…"), this,
                    [&documents, document] { documents.exportDocumentAsPDF(document); });
    QMenu* share = file->addMenu(tr("S&hare"));
    share->setObjectName(QStringLiteral("shareMenu"));
    documents.makeSharingMenu(share);
    connect(share, &QMenu::triggered, this,
            [this](QAction* item) { _controller->shareUsing(item->property("tag").toInt()); });
    file->addSeparator();
    file->addAction(tr("&Quit"), QKeySequence::Quit, qApp, [&documents] {
        if (documents.reviewUnsavedDocumentsBeforeQuitting()) {
            documents.noteDocumentsForRestoration();
            for (Document* open : std::vector<Document*>(documents.documents())) {
                if (WindowController* controller = documents.windowControllerOf(open)) {
                    controller->window()->setCloseHandler(nullptr);
                    controller->window()->close();
                }
            }
            QApplication::quit();
        }
    });
}

void MainMenu::buildEditMenu(QMenuBar* bar)
{
    QMenu* edit = addMenu(bar, tr("&Edit"), QStringLiteral("editMenu"));
    Document* text = _controller->document();
    QAction* undo = edit->addAction(tr("&Undo"), QKeySequence::Undo, this, [this] {
        if (TextView* view = _controller->textView()) {
            view->undo();
        }
    });
    QAction* redo = edit->addAction(tr("&Redo"), QKeySequence(tr("Ctrl+Shift+Z")), this, [this] {
        if (TextView* view = _controller->textView()) {
            view->redo();
        }
    });
    undo->setEnabled(text->canUndo());
    redo->setEnabled(text->canRedo());
    connect(text, &Document::canUndoChanged, undo, &QAction::setEnabled);
    connect(text, &Document::canRedoChanged, redo, &QAction::setEnabled);
    // The items name the step they take back or make again ("Undo Shift Right").
    const auto nameItems = [undo, redo, text] {
        const QString undoName = text->undoActionName();
        const QString redoName = text->redoActionName();
        const QString undoTitle = undoName.isEmpty() ? tr("&Undo") : tr("Undo %1").arg(undoName);
        const QString redoTitle = redoName.isEmpty() ? tr("&Redo") : tr("Redo %1").arg(redoName);
        if (undo->text() != undoTitle) {
            undo->setText(undoTitle);
        }
        if (redo->text() != redoTitle) {
            redo->setText(redoTitle);
        }
    };
    connect(text, &Document::undoStepsChanged, this, nameItems);
    connect(edit, &QMenu::aboutToShow, this, nameItems);
    edit->addSeparator();
    const auto forward = [this](void (TextView::*method)()) {
        return [this, method] {
            if (TextView* view = _controller->textView()) {
                (view->*method)();
            }
        };
    };
    edit->addAction(tr("Cu&t"), QKeySequence::Cut, this, forward(&TextView::cut));
    edit->addAction(tr("&Copy"), QKeySequence::Copy, this, forward(&TextView::copy));
    edit->addAction(tr("&Paste"), QKeySequence::Paste, this, forward(&TextView::paste));
    edit->addAction(tr("Select &All"), QKeySequence::SelectAll, this,
                    forward(&TextView::selectAll));
    edit->addSeparator();
    edit->addAction(tr("Preferences…"), QKeySequence(tr("Ctrl+,")), this,
                    [] { PreferencesController::sharedPreferencesController().showWindow(); });
}

void MainMenu::buildViewMenu(QMenuBar* bar)
{
    QMenu* view = addMenu(bar, tr("&View"), QStringLiteral("viewMenu"));
    addToggle(view, tr("Show Line Numbers"), WindowController::LineNumbersTag, false,
              &WindowController::toggleGutterView);
    addToggle(view, tr("Show Invisible Characters"), WindowController::InvisibleCharactersTag,
              false, &WindowController::toggleInvisibleCharacters);
    addToggle(view, tr("Wrap Lines"), WindowController::WrapLinesTag, true,
              &WindowController::toggleWrapLines);
    view->addSeparator();
    addToggle(view, tr("Auto Indent"), WindowController::AutoIndentTag, true,
              &WindowController::toggleAutoIndent);
    addToggle(view, tr("Brace Matching"), WindowController::BraceMatchingTag, true,
              &WindowController::toggleAutoBraceMatching);
    addToggle(view, tr("Auto Complete"), WindowController::CompletionTag, true,
              &WindowController::toggleAutoComplete);
    addToggle(view, tr("Check Spelling While Typing"), WindowController::SpellCheckingTag, true,
              &WindowController::toggleSpellChecking);
}

void MainMenu::buildFormatMenu(QMenuBar* bar)
{
    DocumentController& documents = DocumentController::sharedDocumentController();
    QMenu* format = addMenu(bar, tr("F&ormat"), QStringLiteral("formatMenu"));
    QMenu* encoding = format->addMenu(tr("&Encoding"));
    encoding->setObjectName(QStringLiteral("encodingMenu"));
    documents.makeEncodingMenuItems(encoding);
    connect(encoding, &QMenu::aboutToShow, this, [this, encoding] { validate(encoding); });
    if (auto* others = encoding->findChild<QMenu*>(QStringLiteral("otherEncodingsMenu"))) {
        connect(others, &QMenu::aboutToShow, this, [this, others] { validate(others); });
    }
    connect(encoding, &QMenu::triggered, this, [this](QAction* item) {
        _controller->reopenUsingEncoding(item->data().toULongLong());
    });

    QMenu* lineBreaks = format->addMenu(tr("&Line Breaks"));
    lineBreaks->setObjectName(QStringLiteral("lineBreaksMenu"));
    documents.makeLineBreaksMenuItems(lineBreaks);
    connect(lineBreaks, &QMenu::aboutToShow, this, [this, lineBreaks] { validate(lineBreaks); });
    connect(lineBreaks, &QMenu::triggered, this,
            [this](QAction* item) { _controller->setLineBreaks(item->data().toLongLong()); });

    QMenu* syntax = format->addMenu(tr("&Syntax"));
    syntax->setObjectName(QStringLiteral("syntaxMenu"));
    documents.makeSyntaxMenuItems(syntax);
    connect(syntax, &QMenu::aboutToShow, this, [this, syntax, &documents] {
        documents.makeSyntaxMenuItems(syntax);
        validate(syntax);
    });
    connect(syntax, &QMenu::triggered, this,
            [this](QAction* item) { _controller->selectedSyntaxColoring(item); });

    format->addSeparator();
    format->addAction(tr("Shift Right"), QKeySequence(tr("Ctrl+]")), this, [this] {
        if (TextView* view = _controller->textView()) {
            view->shiftRight(view);
        }
    });
    format->addAction(tr("Shift Left"), QKeySequence(tr("Ctrl+[")), this, [this] {
        if (TextView* view = _controller->textView()) {
            view->shiftLeft(view);
        }
    });
    QMenu* transformations = format->addMenu(tr("Transformations"));
    transformations->setObjectName(QStringLiteral("transformationsMenu"));
    TransformationsMenu::addItems(transformations, [this] { return _controller->textView(); });
}

void MainMenu::buildWindowMenu(QMenuBar* bar)
{
    QMenu* window = addMenu(bar, tr("&Window"), QStringLiteral("windowMenu"));
    DocumentWindow* own = _controller->window();
    // A tab minimizes the window it is in.
    window->addAction(tr("Mi&nimize"), QKeySequence(tr("Ctrl+M")), own,
                      [own] { own->window()->showMinimized(); });
    // The tab commands, shown while the window is a tab. Several keys each: those of the
    // usual editors and browsers.
    const auto addTabItem = [window, own](const QString& title, const QString& name,
                                          const QList<QKeySequence>& keys,
                                          void (TabWindow::*command)()) {
        QAction* item = window->addAction(title, own, [own, command] {
            if (TabWindow* tabs = own->tabWindow()) {
                (tabs->*command)();
            }
        });
        item->setObjectName(name);
        item->setShortcuts(keys);
        return item;
    };
    QAction* separator = window->addSeparator();
    QAction* next = addTabItem(tr("Show Next Tab"), QStringLiteral("showNextTab"),
                               {QKeySequence(tr("Ctrl+Tab")), QKeySequence(tr("Ctrl+PgDown"))},
                               &TabWindow::selectNextTab);
    // Shift+Tab arrives as Backtab, which the shortcut map also tries as Shift+Tab.
    QAction* previous =
        addTabItem(tr("Show Previous Tab"), QStringLiteral("showPreviousTab"),
                   {QKeySequence(tr("Ctrl+Shift+Tab")), QKeySequence(tr("Ctrl+PgUp"))},
                   &TabWindow::selectPreviousTab);
    QAction* moveTab = window->addAction(tr("Move Tab to New Window"), own, [own] {
        if (TabWindow* tabs = own->tabWindow()) {
            tabs->moveTabToNewWindow(own);
        }
    });
    moveTab->setObjectName(QStringLiteral("moveTabToNewWindow"));
    const QList<QAction*> tabItems = {separator, next, previous, moveTab};
    const auto showTabItems = [tabItems, own] {
        for (QAction* item : tabItems) {
            item->setVisible(own->tabWindow() != nullptr);
        }
    };
    showTabItems();
    connect(own, &DocumentWindow::tabWindowChanged, this, showTabItems);
    window->addSeparator();
    const qsizetype fixedItems = window->actions().size();
    connect(window, &QMenu::aboutToShow, this, [window, own, moveTab, fixedItems] {
        if (TabWindow* tabs = own->tabWindow()) {
            moveTab->setEnabled(tabs->count() > 1);
        }
        // The open documents, below the fixed items.
        const QList<QAction*> actions = window->actions();
        for (qsizetype i = fixedItems; i < actions.size(); ++i) {
            window->removeAction(actions[i]);
            actions[i]->deleteLater();
        }
        for (Document* document : DocumentController::sharedDocumentController().documents()) {
            WindowController* controller =
                DocumentController::sharedDocumentController().windowControllerOf(document);
            if (!controller) {
                continue;
            }
            DocumentWindow* target = controller->window();
            QAction* item = window->addAction(document->displayName(), target,
                                              [target] { target->bringToFront(); });
            item->setCheckable(true);
            item->setChecked(target == own);
        }
    });
}
