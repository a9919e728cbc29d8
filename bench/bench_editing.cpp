// Typing behaviour on a large C text (about 4 MB), offscreen: a typed closing bracket with
// its match searched among the shown lines, Shift Right on one line, and the completion
// candidates for a partial word.
#include "BenchSupport.h"
#include "app/Application.h"
#include "editor/EditorController.h"
#include "editor/TextView.h"
#include "platform/PropertyList.h"
#include "syntax/CompletionCandidates.h"
#include "syntax/SyntaxManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QKeyEvent>
#include <QTextDocument>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

namespace {

QString largeText()
{
    static const QString text = [] {
        QString chunk = BenchSupport::mixedSourceText();
        QString all;
        for (int i = 0; i < 4; ++i) {
            all += chunk;
        }
        return all;
    }();
    return text;
}

struct Pane {
    QTextDocument document;
    std::unique_ptr<EditorController> controller;
    TextView* view = nullptr;

    Pane()
    {
        document.setUndoRedoEnabled(false);
        document.setPlainText(largeText());
        document.setUndoRedoEnabled(true);
        controller = BenchSupport::makeEditorController();
        controller->setupInitialTextViewSharedStateWithTextStorage(&document);
        view = controller->textView();
        view->setAutoComplete(false);
        view->resize(900, 700);
        view->show();
        QCoreApplication::processEvents();
        view->setSelectedRange({document.characterCount() / 2, 0});
        view->centerCursor();
        QCoreApplication::processEvents();
    }
    void press(int key, const QString& text)
    {
        QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(view, &down);
    }
};

void BM_TypeClosingBracket(benchmark::State& state)
{
    Pane pane;
    for (auto _ : state) {
        pane.press(Qt::Key_ParenRight, QStringLiteral(")"));
        state.PauseTiming();
        pane.press(Qt::Key_Backspace, QString());
        state.ResumeTiming();
    }
}
BENCHMARK(BM_TypeClosingBracket)->Unit(benchmark::kMicrosecond);

void BM_ShiftRightOneLine(benchmark::State& state)
{
    Pane pane;
    for (auto _ : state) {
        pane.view->shiftRight();
        state.PauseTiming();
        pane.view->undo();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_ShiftRightOneLine)->Unit(benchmark::kMillisecond);

void BM_CompletionCandidates(benchmark::State& state)
{
    const QString text = BenchSupport::mixedSourceText();
    const QVariantMap definition =
        PropertyList::readFile(QStringLiteral(":/SyntaxDefinition/C.plist")).toMap();
    const QStringList words = SyntaxManager::sharedSyntaxManager()
                                  .makeCompleteWordsFromSyntaxDictionary(definition)
                                  .value();
    qsizetype found = 0;
    for (auto _ : state) {
        found = CompletionCandidates::completionsForPartialWord(text, QStringLiteral("st"),
                                                                definition, words)
                    .size();
        benchmark::DoNotOptimize(found);
    }
    state.counters["candidates"] = double(found);
    state.counters["textMB"] = double(text.size()) * 2 / (1024 * 1024);
}
BENCHMARK(BM_CompletionCandidates)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
