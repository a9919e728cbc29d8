// Spell checking in a document window on a 20 MB text of program source with English
// comments (offscreen): the first check of the shown lines (every word new to the
// dictionary), later checks, a keystroke in the middle of the text with its check, and a
// jump to a far line with its check. The work must not grow with the text.
#include "BenchSupport.h"
#include "app/Application.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "editor/LayoutManager.h"
#include "editor/SpellCheckingController.h"
#include "editor/TextView.h"
#include "platform/Preferences.h"
#include "platform/UserDefaults.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QDir>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTest>
#include <QWindow>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

constexpr qsizetype kTextSize = 20 * 1024 * 1024;

struct Window {
    Document* document = nullptr;
    WindowController* controller = nullptr;
    qsizetype lines = 0;

    TextView* view() const { return controller->textView(); }
    SpellCheckingController* checker() const { return SpellCheckingController::of(view()); }
    qsizetype marks() const
    {
        return view()->layoutManager()->misspelledWords({0, document->length()}).size();
    }
};

Window& window()
{
    static std::unique_ptr<Window> shared;
    if (shared) {
        return *shared;
    }
    shared = std::make_unique<Window>();
    BenchSupport::releaseBeforeApplicationEnds([] { shared.reset(); });
    Window& w = *shared;
    const QString chunk = BenchSupport::mixedSourceText();
    QString text;
    text.reserve(kTextSize + chunk.size());
    while (text.size() < kTextSize) {
        text += chunk;
    }
    UserDefaults::standardUserDefaults().setBool(true, QStringLiteral("AllowSpellChecking"));
    UserDefaults::standardUserDefaults().setObject(QStringLiteral("en_US"),
                                                   QStringLiteral("SpellCheckLanguage"));
    w.document = new Document(EncodingManager::sharedEncodingManager(),
                              Preferences::sharedPreferences().values().document);
    w.document->setLoadedText(text);
    w.lines = w.document->lineCount();
    w.controller = new WindowController(w.document);
    w.controller->windowDidLoad();
    w.controller->window()->resize(1000, 800);
    w.controller->window()->show();
    if (!QTest::qWaitForWindowExposed(w.controller->window(), 10000)) {
        std::fputs("the window was not shown in time\n", stderr);
    }
    return w;
}

void moveToLine(Window& w, int line)
{
    const qsizetype start = w.document->rangeOfLine(line).location;
    w.view()->setSelection(start, start);
    w.view()->centerCursor();
    // The layout follows the jump before the check looks at what is shown.
    QCoreApplication::processEvents();
}

double mean(const std::vector<double>& values)
{
    double sum = 0;
    for (double value : values) {
        sum += value;
    }
    return values.empty() ? 0 : sum / double(values.size());
}

void reportPercentiles(benchmark::State& state, std::vector<double> ms)
{
    std::sort(ms.begin(), ms.end());
    if (ms.empty()) {
        return;
    }
    state.counters["p50_ms"] = ms[ms.size() / 2];
    state.counters["p95_ms"] = ms[std::min(ms.size() - 1, ms.size() * 95 / 100)];
    state.counters["max_ms"] = ms.back();
}

void BM_CheckShownLines(benchmark::State& state)
{
    Window& w = window();
    moveToLine(w, int(w.lines / 3));
    QElapsedTimer timer;
    timer.start();
    w.checker()->checkVisibleText();
    const double firstMs = double(timer.nsecsElapsed()) / 1e6;
    std::vector<double> all;
    for (auto _ : state) {
        for (int i = 0; i < 50; ++i) {
            timer.restart();
            w.checker()->checkVisibleText();
            all.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        state.SetIterationTime(mean(all) / 1000);
    }
    state.counters["first_after_show_ms"] = firstMs;
    state.counters["lines"] = double(w.lines);
    state.counters["marks"] = double(w.marks());
    reportPercentiles(state, all);
}
BENCHMARK(BM_CheckShownLines)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_TypeInTheMiddleChecked(benchmark::State& state)
{
    Window& w = window();
    moveToLine(w, int(w.lines / 2));
    w.checker()->checkVisibleText();
    std::vector<double> all;
    for (auto _ : state) {
        for (int i = 0; i < 200; ++i) {
            const QChar c = QChar(u'a' + i % 26);
            QElapsedTimer timer;
            timer.start();
            QKeyEvent press(QEvent::KeyPress, Qt::Key_A + i % 26, Qt::NoModifier, QString(c));
            QCoreApplication::sendEvent(w.view(), &press);
            // The check the keystroke scheduled, as the next turn of the event loop runs it.
            w.checker()->checkVisibleText();
            all.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        state.SetIterationTime(mean(all) / 1000);
    }
    reportPercentiles(state, all);
}
BENCHMARK(BM_TypeInTheMiddleChecked)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_JumpToFarLineChecked(benchmark::State& state)
{
    Window& w = window();
    std::vector<double> all;
    for (auto _ : state) {
        for (int i = 0; i < 30; ++i) {
            const int line = int((w.lines * (i * 7919 % 30)) / 30);
            QElapsedTimer timer;
            timer.start();
            moveToLine(w, line);
            w.checker()->checkVisibleText();
            all.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        state.SetIterationTime(mean(all) / 1000);
    }
    state.counters["marks"] = double(w.marks());
    reportPercentiles(state, all);
}
BENCHMARK(BM_JumpToFarLineChecked)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
