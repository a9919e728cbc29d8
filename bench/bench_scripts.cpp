// Running scripts: a shell script's round trip with a large selection, an in-process
// script over the object model, and rebuilding the Scripts menu and the script pane for
// a large library. With "--screens DIR" it also saves pictures of the Scripts menu and
// the script pane there.
#include "PrivateHome.h"
#include "app/Application.h"
#include "app/DocumentController.h"
#include "app/JavaScriptRunner.h"
#include "app/ScriptMenu.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "scripts/ScriptLibrary.h"
#include "scripts/ScriptManager.h"
#include "window/DocumentWindow.h"
#include "window/ScriptController.h"
#include "window/ScriptTreeModel.h"
#include "window/WindowController.h"

#include <QDir>
#include <QEventLoop>
#include <QMenu>
#include <QMenuBar>
#include <QTimer>
#include <QTreeView>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

namespace {

Document* openDocument(const QString& text)
{
    Document* document = DocumentController::sharedDocumentController().newDocument();
    document->setLoadedText(text);
    return document;
}

TextView* textViewOf(Document* document)
{
    return DocumentController::sharedDocumentController().windowControllerOf(document)->textView();
}

void closeDocument(Document* document)
{
    DocumentWindow* window =
        DocumentController::sharedDocumentController().windowControllerOf(document)->window();
    window->setCloseHandler(nullptr);
    window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// `cat` of a selection of `state.range(0)` kilobytes: written to the child, read back
/// in pieces and inserted in place of the selection.
void BM_ShellScriptRoundTrip(benchmark::State& state)
{
    const QString line =
        QStringLiteral("Some text with a caf\u00e9 and \u65e5\u672c\u8a9e in it.\n");
    QString text;
    while (text.size() < state.range(0) * 1024) {
        text += line;
    }
    Document* document = openDocument(text);
    ScriptManager& manager = ScriptManager::sharedScriptManager();
    for (auto _ : state) {
        textViewOf(document)->selectAll();
        QEventLoop loop;
        bool ended = false;
        QObject::connect(&manager, &ScriptManager::processStopped, &loop, [&] {
            ended = true;
            loop.quit();
        });
        QTimer::singleShot(30000, &loop, &QEventLoop::quit);
        manager.runScriptWithSource(QStringLiteral("#!/bin/sh -c\ncat"),
                                    QStringLiteral("ShellScript"));
        if (!ended) {
            loop.exec();
        }
        if (!ended) {
            state.SkipWithError("the script did not end");
            break;
        }
    }
    if (document->string() != text) {
        state.SkipWithError("the output differs from the input");
    }
    closeDocument(document);
}
BENCHMARK(BM_ShellScriptRoundTrip)->Arg(1)->Arg(1024)->Unit(benchmark::kMillisecond);

void BM_JavaScriptBracket(benchmark::State& state)
{
    Document* document = openDocument(QStringLiteral("xabcx"));
    const QString source = QStringLiteral("const doc = application.frontDocument;\n"
                                          "const range = doc.textRange;\n"
                                          "doc.contents = '[' + doc.selection + ']';\n"
                                          "doc.textRange = [range[0], range[1] + 2];\n");
    for (auto _ : state) {
        JavaScriptRunner::run(source);
    }
    closeDocument(document);
}
BENCHMARK(BM_JavaScriptBracket)->Unit(benchmark::kMillisecond);

/// A library of 20 folders of 50 scripts each.
void makeLargeLibrary()
{
    ScriptManager::sharedScriptManager().setScriptDataSource(ScriptObjectList());
    for (int f = 0; f < 20; ++f) {
        ScriptObjectPtr folder =
            ScriptObject::initWithPath(QStringLiteral("Folder %1").arg(f), false);
        for (int s = 0; s < 50; ++s) {
            folder->addChildren(
                ScriptObject::initWithPath(QStringLiteral("script %1.sh").arg(s), true));
        }
        ScriptObjectList list = ScriptManager::sharedScriptManager().library().entries(nullptr);
        list.append(folder);
        ScriptManager::sharedScriptManager().setScriptDataSource(list);
    }
}

void BM_LibraryChangeRebuildsMenuAndPane(benchmark::State& state)
{
    makeLargeLibrary();
    Document* document = openDocument(QString());
    ScriptController pane(
        DocumentController::sharedDocumentController().windowControllerOf(document));
    for (auto _ : state) {
        ScriptManager::sharedScriptManager().postScriptDataSourceChanged();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    closeDocument(document);
    ScriptManager::sharedScriptManager().setScriptDataSource(ScriptObjectList());
}
BENCHMARK(BM_LibraryChangeRebuildsMenuAndPane)->Unit(benchmark::kMillisecond);

/// Pictures of the Scripts menu with the example library and of the script pane.
void saveScreens(const QString& folder)
{
    QDir().mkpath(folder);
    DocumentController& documents = DocumentController::sharedDocumentController();
    documents.awakeFromNib(); // installs the example scripts
    ScriptManager::sharedScriptManager().library().addScriptFolder(QStringLiteral("My tools"),
                                                                   nullptr);
    Document* document = openDocument(QStringLiteral("echo hello\n"));
    WindowController* controller = documents.windowControllerOf(document);
    QMenu* menu = controller->window()->menuBar()->findChild<QMenu*>(QStringLiteral("scriptsMenu"));
    menu->popup(QPoint(0, 0));
    QMenu* examples = menu->actions()[menu->actions().size() - 6]->menu();
    examples->popup(QPoint(menu->width(), 0));
    QCoreApplication::processEvents();
    menu->grab().save(folder + QStringLiteral("/scripts-menu.png"));
    examples->grab().save(folder + QStringLiteral("/scripts-menu-submenu.png"));
    menu->hide();

    ScriptController pane(controller);
    pane.resize(260, 320);
    pane.outlineView()->expandAll();
    pane.outlineView()->setCurrentIndex(pane.treeController()->index(1, 0));
    pane.show();
    QCoreApplication::processEvents();
    pane.grab().save(folder + QStringLiteral("/script-pane.png"));
    closeDocument(document);
}

} // namespace

int main(int argc, char** argv)
{
    const PrivateHome home("bench");
    Application app(argc, argv);
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::string(argv[i]) == "--screens") {
            saveScreens(QString::fromLocal8Bit(argv[i + 1]));
            return 0;
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
