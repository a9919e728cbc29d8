// Finding and replacing in a 20 MB and a 100 MB text shown in an editor pane, offscreen: find
// all with a plain string and with a regular expression, highlight and selection included,
// and replace all of the occurrences (5,000 per MB) as one undoable step, then its undo.
#include "BenchSupport.h"
#include "app/Application.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "editor/EditorController.h"
#include "editor/LayoutManager.h"
#include "editor/TextView.h"
#include "search/SearchManager.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>
#include <QWindow>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace {

constexpr qsizetype kOccurrencesPerMB = 5000;

/// About `megabytes` MB of C-like lines with exactly 5,000 identifiers starting "foo_" per MB,
/// spread evenly (one in every few lines).
QString generateText(qsizetype megabytes)
{
    const qsizetype textSize = megabytes * 1024 * 1024;
    const qsizetype wanted = megabytes * kOccurrencesPerMB;
    const QString lines[] = {
        QStringLiteral("static int compute_total(const struct record *items, size_t count)\n"),
        QStringLiteral("{\n"),
        QStringLiteral("    /* Walk the records once; the total wraps like the hardware's. */\n"),
        QStringLiteral("    int total = 0; int widths[8] = {0}; const char *label = \"sum\";\n"),
        QStringLiteral("    for (size_t i = 0; i < count; ++i) total += items[i].value;\n"),
        QStringLiteral("    return total + widths[0] + (label ? 1 : 0); /* done */\n"),
        QStringLiteral("}\n"),
    };
    QString text;
    text.reserve(textSize + 4096);
    qsizetype line = 0;
    qsizetype occurrences = 0;
    // Lines average about 60 characters: one occurrence every 3 lines gives 100,000 in 20 MB.
    const qsizetype linesPerOccurrence = textSize / 62 / wanted;
    while (text.size() < textSize || occurrences < wanted) {
        if (line % linesPerOccurrence == 0 && occurrences < wanted) {
            text += QStringLiteral("    result = foo_%1(total) + 1;\n").arg(occurrences % 997);
            ++occurrences;
        } else {
            text += lines[line % 7];
        }
        ++line;
    }
    return text;
}

/// CPU time of this thread in milliseconds: the machine may be shared, so the wall-clock
/// figures are reported beside what the work itself cost.
double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

struct Pane {
    qsizetype megabytes = 0;
    QString text;
    std::unique_ptr<Document> owner;
    std::unique_ptr<EditorController> controller;
    TextView* view() const { return controller->textView(); }
    LayoutManager* layoutManager() const { return controller->layoutManager(); }
};

/// A pane on a document of `megabytes` MB; one at a time, kept while the size stays.
Pane& pane(qsizetype megabytes)
{
    static std::unique_ptr<Pane> shared;
    static bool registered = false;
    if (shared && shared->megabytes == megabytes) {
        return *shared;
    }
    if (!registered) {
        BenchSupport::releaseBeforeApplicationEnds([] { shared.reset(); });
        registered = true;
    }
    shared.reset();
    shared = std::make_unique<Pane>();
    Pane& p = *shared;
    p.megabytes = megabytes;
    p.text = generateText(megabytes);
    p.owner =
        std::make_unique<Document>(EncodingManager::sharedEncodingManager(), DocumentSettings());
    p.owner->setLoadedText(p.text);
    p.controller = BenchSupport::makeEditorController();
    p.controller->setupInitialTextViewSharedStateWithDocument(p.owner.get());
    p.view()->resize(1000, 800);
    p.view()->show();
    if (!QTest::qWaitForWindowExposed(p.view())) {
        std::fputs("the window was not shown in time\n", stderr);
    }
    QCoreApplication::processEvents();
    return p;
}

SearchManager& engine(const QString& search, const QString& replace, bool regularExpression)
{
    SearchManager& manager = SearchManager::sharedSearchManager();
    manager.searchTextFieldDidChange(search, replace);
    manager.setRegularExpressions(regularExpression);
    manager.setCaseSensitive(true);
    manager.setPrevious(false);
    manager.setReplaceAll(false);
    return manager;
}

/// Find from the top of the text through the pane's find command, then the repaint. The
/// text has just been edited, so this is the cost of a first find.
void findAll(benchmark::State& state, const QString& search, bool regularExpression)
{
    Pane& p = pane(state.range(0));
    SearchManager& manager = engine(search, QString(), regularExpression);
    for (auto _ : state) {
        // An edit first, as a find after typing meets it: the engine's copy of the text is
        // out of date, so the whole text is copied out of the document again.
        const qsizetype end = p.owner->length();
        p.owner->replaceRanges({{end, 0}}, QStringLiteral("x"), QStringLiteral("Typing"));
        p.owner->replaceRanges({{end, 1}}, QString(), QStringLiteral("Typing"));
        p.view()->setSelection(0, 0);
        QElapsedTimer timer;
        const double cpuBefore = threadCpuMs();
        timer.start();
        const QString label = manager.findStringWithLayoutManager(p.layoutManager());
        const double findMs = double(timer.nsecsElapsed()) / 1e6;
        const QPixmap shown = p.view()->viewport()->grab();
        const double totalMs = double(timer.nsecsElapsed()) / 1e6;
        state.counters["with_paint_cpu_ms"] = threadCpuMs() - cpuBefore;
        benchmark::DoNotOptimize(shown);
        state.SetIterationTime(totalMs / 1000);
        state.counters["find_ms"] = findMs;
        state.counters["with_paint_ms"] = totalMs;
        state.counters["matches"] = double(manager.searchMatchesList().size());
        state.SetLabel(label.toStdString());
    }
}

void BM_FindAllPlain(benchmark::State& state)
{
    findAll(state, QStringLiteral("foo_"), false);
}

void BM_FindAllRegularExpression(benchmark::State& state)
{
    findAll(state, QStringLiteral("\\bfoo_\\w+"), true);
}

/// Find Next (Ctrl+G) over and over once the occurrences are highlighted: the search runs
/// again each time, the highlight is left as it is.
void BM_FindNextHighlighted(benchmark::State& state)
{
    Pane& p = pane(state.range(0));
    SearchManager& manager = engine(QStringLiteral("foo_"), QString(), false);
    p.view()->setSelection(0, 0);
    manager.findStringWithLayoutManager(p.layoutManager());
    for (auto _ : state) {
        QElapsedTimer timer;
        const double cpuBefore = threadCpuMs();
        timer.start();
        manager.findNextWithLayoutManager(p.layoutManager());
        const QPixmap shown = p.view()->viewport()->grab();
        benchmark::DoNotOptimize(shown);
        const double totalMs = double(timer.nsecsElapsed()) / 1e6;
        state.SetIterationTime(totalMs / 1000);
        state.counters["with_paint_ms"] = totalMs;
        state.counters["with_paint_cpu_ms"] = threadCpuMs() - cpuBefore;
    }
}

/// Replace all of the occurrences, then undo; both checked against the expected text.
void BM_ReplaceAll(benchmark::State& state)
{
    Pane& p = pane(state.range(0));
    const qsizetype occurrences = p.megabytes * kOccurrencesPerMB;
    const QString replacement = QStringLiteral("quux_");
    QString expected = p.text;
    expected.replace(QStringLiteral("foo_"), replacement);
    for (auto _ : state) {
        SearchManager& manager = engine(QStringLiteral("foo_"), replacement, false);
        p.view()->setSelection(0, 0);
        manager.findStringWithLayoutManager(p.layoutManager());
        if (manager.searchMatchesList().size() != size_t(occurrences)) {
            state.SkipWithError("the text does not hold 5,000 occurrences per MB");
            return;
        }
        QElapsedTimer timer;
        double cpuBefore = threadCpuMs();
        timer.start();
        manager.replacingAllStringWithLayoutManager(p.layoutManager());
        const double replaceMs = double(timer.nsecsElapsed()) / 1e6;
        const QPixmap shown = p.view()->viewport()->grab();
        const double withPaintMs = double(timer.nsecsElapsed()) / 1e6;
        state.counters["with_paint_cpu_ms"] = threadCpuMs() - cpuBefore;
        benchmark::DoNotOptimize(shown);
        if (p.owner->storedText() != expected) {
            state.SkipWithError("replace all did not give the expected text");
            return;
        }
        const QString name = p.owner->undoActionName();
        timer.restart();
        cpuBefore = threadCpuMs();
        p.view()->undo();
        const double undoMs = double(timer.nsecsElapsed()) / 1e6;
        state.counters["undo_cpu_ms"] = threadCpuMs() - cpuBefore;
        // One undo gives the text back: replace all was one step.
        if (p.owner->storedText() != p.text) {
            state.SkipWithError("undo did not restore the text");
            return;
        }
        if (name != u"Replace All") {
            state.SkipWithError("replace all was not one undo step named Replace All");
            return;
        }
        state.SetIterationTime(withPaintMs / 1000);
        state.counters["replace_ms"] = replaceMs;
        state.counters["with_paint_ms"] = withPaintMs;
        state.counters["undo_ms"] = undoMs;
    }
}

} // namespace

// The sizes in MB: the benchmarks of one size run together, so that each text is made once.
BENCHMARK(BM_FindAllPlain)->Arg(20)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_FindAllRegularExpression)
    ->Arg(20)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);
BENCHMARK(BM_FindNextHighlighted)
    ->Arg(20)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);
BENCHMARK(BM_ReplaceAll)->Arg(20)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_FindAllPlain)->Arg(100)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_FindAllRegularExpression)
    ->Arg(100)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK(BM_ReplaceAll)->Arg(100)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
