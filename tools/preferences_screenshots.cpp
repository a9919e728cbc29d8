// Shows the preferences window (offscreen, with a private home) and saves a picture of each
// of its tabs, then a document window with spell checking on and the context menu of a
// misspelt word.
// Usage: preferences_screenshots [output folder]   (default: the current folder)
#include "PrivateHome.h"
#include "app/Application.h"
#include "app/DocumentController.h"
#include "app/PreferencesController.h"
#include "app/SyntaxDefinitionEditor.h"
#include "document/Document.h"
#include "editor/SpellCheckingController.h"
#include "editor/TextView.h"
#include "platform/UserDefaults.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QTest>
#include <QWindow>

#include <cstdio>
#include <cstdlib>

namespace {

void settle(QWidget* window)
{
    if (!QTest::qWaitForWindowExposed(window)) {
        std::fputs("the window was not shown in time\n", stderr);
    }
    for (int i = 0; i < 5; ++i) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
}

bool save(QWidget* widget, const QString& path)
{
    const bool saved = widget->grab().save(path);
    std::printf("%s: %s\n", qPrintable(path), saved ? "saved" : "failed");
    return saved;
}

} // namespace

int main(int argc, char** argv)
{
    const PrivateHome home("screens");
    Application app(argc, argv);
    const QString out = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QDir::currentPath();
    QDir().mkpath(out);
    DocumentController::sharedDocumentController().awakeFromNib();

    PreferencesController& preferences = PreferencesController::sharedPreferencesController();
    preferences.showWindow();
    QMainWindow* window = preferences.window();
    settle(window);
    bool ok = true;
    const char* names[] = {"documents", "window", "syntax", "editor"};
    for (int tag = 0; tag < 4; ++tag) {
        preferences.changedTabs(tag);
        if (tag == 2) {
            SyntaxDefinitionEditor* editor = preferences.syntaxEditor();
            editor->syntaxTableView()->setCurrentRow(int(editor->definitions().indexOf("C")));
            editor->definitionPopUp()->setCurrentText(QStringLiteral("Comments"));
        }
        settle(window);
        ok = save(window, out + QStringLiteral("/prefs-%1.png").arg(names[tag])) && ok;
    }
    preferences.changedTabs(2);
    SyntaxDefinitionEditor* editor = preferences.syntaxEditor();
    editor->definitionPopUp()->setCurrentText(QStringLiteral("FunctionDefinition"));
    settle(window);
    ok = save(window, out + QStringLiteral("/prefs-syntax-functions.png")) && ok;
    window->close();

    // Spell checking in a document window.
    UserDefaults::standardUserDefaults().setBool(true, QStringLiteral("AllowSpellChecking"));
    Document* document = DocumentController::sharedDocumentController().newDocument();
    if (document) {
        document->setLoadedText(
            QStringLiteral("Spell checking underlines the wrods it does not know.\n"
                           "Only the lines on the screen are checked, so a large file stays fast.\n"
                           "Right-click a misspelt wrod for the dictionary's guesses.\n"));
        WindowController* controller =
            DocumentController::sharedDocumentController().windowControllerOf(document);
        DocumentWindow* documentWindow = controller->window();
        documentWindow->resize(720, 300);
        settle(documentWindow);
        ok = save(documentWindow, out + QStringLiteral("/prefs-spellcheck.png")) && ok;
        QMenu menu;
        menu.addAction(QStringLiteral("Cut"));
        menu.addAction(QStringLiteral("Copy"));
        menu.addAction(QStringLiteral("Paste"));
        TextView* view = controller->textView();
        const QPoint word = view->rectForPosition(31).center();
        SpellCheckingController::addSpellingSuggestions(view, &menu, word);
        menu.popup(view->viewport()->mapToGlobal(word));
        settle(&menu);
        ok = save(&menu, out + QStringLiteral("/prefs-spellcheck-menu.png")) && ok;
        menu.hide();
    }
    return ok ? 0 : 1;
}
