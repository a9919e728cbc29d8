// Typing behaviour on a large C text (about 4 MB), offscreen: a typed closing bracket with
// its match searched among the shown lines, Shift Right on one line, and the completion
// candidates for a partial word.
#include "BenchSupport.h"
#include "app/Application.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "editor/EditorController.h"
#include "editor/TextView.h"
#include "platform/PropertyList.h"
#include "syntax/CompletionCandidates.h"
#include "syntax/CompletionWordIndex.h"
#include "syntax/SyntaxManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QKeyEvent>

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
    Document document{EncodingManager::sharedEncodingManager(), DocumentSettings()};
    std::unique_ptr<EditorController> controller;
    TextView* view = nullptr;

    Pane()
    {
        document.setLoadedText(largeText());
        controller = BenchSupport::makeEditorController();
        controller->setupInitialTextViewSharedStateWithDocument(&document);
        view = controller->textView();
        view->setAutoComplete(false);
        view->resize(900, 700);
        view->show();
        QCoreApplication::processEvents();
        view->setSelectedRange({document.length() / 2, 0});
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

/// A keystroke in the middle of a 20 MB text while the completion list is open: the word
/// index follows the edit, reads what changed and lists the words of a two-letter prefix.
/// The argument is the index's chunk size.
void BM_CompletionIndexKeystroke(benchmark::State& state)
{
    QString text;
    const QString source = BenchSupport::mixedSourceText();
    while (text.size() < 10 * 1024 * 1024) {
        text += source;
    }
    CompletionWordIndex index;
    index.setChunkSize(qsizetype(state.range(0)));
    index.build(text);
    const qsizetype middle = text.indexOf(u'\n', text.size() / 2) + 1;
    const QString typed = QStringLiteral("qu");
    qsizetype at = middle;
    qsizetype found = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const bool remove = at - middle == typed.size();
        if (remove) {
            text.remove(middle, typed.size());
        } else {
            text.insert(at, typed[at - middle]);
        }
        state.ResumeTiming();
        if (remove) {
            index.textDidChange(middle, typed.size(), 0);
            at = middle;
        } else {
            index.textDidChange(at, 0, 1);
            ++at;
        }
        index.update(text);
        found = index.wordsForPartialWord(QStringLiteral("st")).size();
        benchmark::DoNotOptimize(found);
    }
    state.counters["candidates"] = double(found);
    state.counters["chunks"] = double(index.chunkCount());
}
BENCHMARK(BM_CompletionIndexKeystroke)
    ->Arg(16 * 1024)
    ->Arg(4 * 1024)
    ->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
