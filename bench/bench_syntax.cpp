// Colouring and function-list speed on a large C text made of this machine's system
// headers: the full colouring, the recolouring of the visible lines after a one-character
// edit in the middle (the case that runs after every keystroke), and the function list.
#include "platform/PropertyList.h"
#include "syntax/SyntaxColoringEngine.h"
#include "syntax/SyntaxManager.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace {

constexpr qsizetype TextSize = 20 * 1024 * 1024;
constexpr int VisibleLines = 60;

// The headers of /usr/include, in a fixed order, repeated until the text is large enough.
const QString& largeCText()
{
    static const QString text = [] {
        QStringList paths;
        QDirIterator it(QStringLiteral("/usr/include"), {QStringLiteral("*.h")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            paths.append(it.next());
        }
        paths.sort();
        QString result;
        result.reserve(TextSize + 1024 * 1024);
        while (result.size() < TextSize && !paths.isEmpty()) {
            for (const QString& path : paths) {
                QFile file(path);
                if (file.open(QIODevice::ReadOnly)) {
                    QString part = QString::fromUtf8(file.readAll());
                    part.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
                    result += part;
                }
                if (result.size() >= TextSize) {
                    break;
                }
            }
        }
        return result;
    }();
    return text;
}

const QVariantMap& cDefinition()
{
    static const QVariantMap definition =
        PropertyList::readDictionary(QStringLiteral(":/SyntaxDefinition/C.plist"))
            .value_or(QVariantMap());
    return definition;
}

// The range of `lines` lines that starts at the line holding `location`.
Range linesFrom(const QString& text, qsizetype location, int lines)
{
    const qsizetype start = text.lastIndexOf(u'\n', location) + 1;
    qsizetype end = start;
    for (int i = 0; i < lines && end < text.size(); ++i) {
        const qsizetype newline = text.indexOf(u'\n', end);
        end = newline < 0 ? text.size() : newline + 1;
    }
    return {start, end - start};
}

void reportPercentiles(benchmark::State& state, std::vector<double>& millis)
{
    if (millis.empty()) {
        return;
    }
    std::sort(millis.begin(), millis.end());
    auto at = [&](double q) {
        return millis[std::min(millis.size() - 1, size_t(q * millis.size()))];
    };
    state.counters["p50_ms"] = at(0.50);
    state.counters["p99_ms"] = at(0.99);
    state.counters["max_ms"] = millis.back();
}

void fullColouring(benchmark::State& state)
{
    const QString& text = largeCText();
    if (cDefinition().isEmpty()) {
        state.SkipWithError("the C definition cannot be read");
        return;
    }
    size_t runs = 0;
    bool interrupted = false;
    for (auto _ : state) {
        SyntaxColoringEngine engine(cDefinition());
        const SyntaxColoring coloring = engine.coloringRange(text, Range(0, text.size()));
        runs = coloring.rangeRuns().size();
        interrupted = coloring.wasInterrupted();
        benchmark::DoNotOptimize(runs);
    }
    state.counters["MB"] = double(text.size()) * 2 / (1024 * 1024);
    state.counters["runs"] = double(runs);
    state.counters["interrupted"] = interrupted;
}

// Types a character in the middle, then takes it back, recolouring the visible lines
// after each keystroke, as a text view does.
void visibleAfterEditIn(benchmark::State& state, QString text, const QString& typed)
{
    if (cDefinition().isEmpty()) {
        state.SkipWithError("the C definition cannot be read");
        return;
    }
    text.reserve(text.size() + 16);
    SyntaxColoringEngine engine(cDefinition());
    engine.coloringRange(text, Range(0, text.size()));
    const qsizetype middle = text.indexOf(u'\n', text.size() / 2) + 1;
    std::vector<double> millis;
    bool inserted = false;
    for (auto _ : state) {
        // Only the engine's share of a keystroke is timed: the text's own change is the
        // editor component's.
        state.PauseTiming();
        if (inserted) {
            text.remove(middle, typed.size());
        } else {
            text.insert(middle, typed);
        }
        state.ResumeTiming();
        const auto begin = std::chrono::steady_clock::now();
        if (inserted) {
            engine.textDidChange(middle, typed.size(), 0);
        } else {
            engine.textDidChange(middle, 0, typed.size());
        }
        inserted = !inserted;
        const SyntaxColoring coloring =
            engine.coloringRange(text, linesFrom(text, middle, VisibleLines));
        benchmark::DoNotOptimize(coloring.rangeRuns().data());
        millis.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
                .count());
    }
    reportPercentiles(state, millis);
}

void visibleAfterEdit(benchmark::State& state, const QString& typed)
{
    visibleAfterEditIn(state, largeCText(), typed);
}

// The same text without block comments after its first line: the search for the next
// block runs from the edit to the end of the text.
void visibleAfterEditPastTheLastBlock(benchmark::State& state)
{
    QString text = largeCText();
    text.replace(QStringLiteral("/*"), QStringLiteral("//"));
    visibleAfterEditIn(state, QStringLiteral("/* only block */\n") + text, QStringLiteral("x"));
}

// A fresh engine asked for the middle lines: the block passes over the whole text run once.
void visibleCold(benchmark::State& state)
{
    const QString& text = largeCText();
    const qsizetype middle = text.indexOf(u'\n', text.size() / 2) + 1;
    for (auto _ : state) {
        SyntaxColoringEngine engine(cDefinition());
        const SyntaxColoring coloring =
            engine.coloringRange(text, linesFrom(text, middle, VisibleLines));
        benchmark::DoNotOptimize(coloring.rangeRuns().data());
    }
}

void functionList(benchmark::State& state)
{
    const QString& text = largeCText();
    SyntaxManager manager;
    qsizetype items = 0;
    for (auto _ : state) {
        const auto list = manager.makeFunctionDefinitionWithString(text, cDefinition());
        items = list ? list->size() : -1;
        benchmark::DoNotOptimize(items);
    }
    state.counters["items"] = double(items);
}

} // namespace

BENCHMARK(fullColouring)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_CAPTURE(visibleAfterEdit, letter, QStringLiteral("x"))
    ->Unit(benchmark::kMillisecond)
    ->Iterations(400);
BENCHMARK_CAPTURE(visibleAfterEdit, commentOpener, QStringLiteral("/*"))
    ->Unit(benchmark::kMillisecond)
    ->Iterations(400);
BENCHMARK(visibleAfterEditPastTheLastBlock)->Unit(benchmark::kMillisecond)->Iterations(200);
BENCHMARK(visibleCold)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(functionList)->Unit(benchmark::kMillisecond)->Iterations(3);

BENCHMARK_MAIN();
