// The editor pane on a 20 MB C text (about half a million lines) with line numbers and
// invisible characters shown, offscreen: opening (fill, attach, first paint), typing in the
// middle until the pane has repainted, and jumping to far lines.
#include "BenchSupport.h"
#include "app/Application.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "editor/CompletionManager.h"
#include "editor/CompletionPanel.h"
#include "editor/EditorController.h"
#include "editor/GutterView.h"
#include "editor/LayoutManager.h"
#include "editor/SyntaxColoringController.h"
#include "editor/TextView.h"
#include "window/DocumentWindow.h"
#include "window/FunctionPopUp.h"
#include "window/WindowController.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <vector>

namespace {

constexpr qsizetype kTextSize = 20 * 1024 * 1024;

/// Headers of /usr/include, in a fixed order, joined until the text reaches `size`.
QString generateCText(qsizetype size)
{
    QStringList files;
    QDirIterator it(QStringLiteral("/usr/include"), {QStringLiteral("*.h")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        files.append(it.next());
    }
    std::sort(files.begin(), files.end());
    QString text;
    text.reserve(size + 1024 * 1024);
    while (text.size() < size && !files.isEmpty()) {
        for (const QString& path : files) {
            QFile file(path);
            if (file.open(QIODevice::ReadOnly)) {
                text += QString::fromUtf8(file.readAll());
            }
            if (text.size() >= size) {
                break;
            }
        }
    }
    text.remove(QLatin1Char('\r'));
    return text;
}

/// The resident memory of this process in MB.
double residentMegabytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields[1].toDouble() * 4096 / (1024 * 1024) : 0;
}

/// Counts the paints of a widget, so that a measurement can wait for the repaint.
class PaintCounter : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            ++count;
        }
        return QObject::eventFilter(watched, event);
    }
};

/// A document as a window makes one, before it reads a file.
std::unique_ptr<Document> makeDocument()
{
    return std::make_unique<Document>(EncodingManager::sharedEncodingManager(), DocumentSettings());
}

/// Puts the insertion point of `view` near the start of `line` of `document` (eight
/// characters in, or at the line's end).
void placeNearLineStart(TextView* view, const Document& document, qsizetype line)
{
    const Range characters = document.rangeOfLine(line);
    const qsizetype position = characters.location + std::min<qsizetype>(8, characters.length);
    view->setSelection(position, position);
}

struct Pane {
    std::unique_ptr<Document> document;
    std::unique_ptr<EditorController> controller;
    PaintCounter viewportPaints;
    double fillMs = 0;
    double attachMs = 0;
    double attachMegabytes = 0;
    double firstPaintMs = 0;
    qsizetype lines = 0;

    TextView* view() const { return controller->textView(); }

    /// Processes events until the viewport has painted again (or a second has passed).
    void waitForRepaint(int paintsBefore)
    {
        QElapsedTimer timer;
        timer.start();
        while (viewportPaints.count == paintsBefore && timer.elapsed() < 1000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        }
    }
};

Pane& pane()
{
    static std::unique_ptr<Pane> shared;
    if (shared) {
        return *shared;
    }
    shared = std::make_unique<Pane>();
    BenchSupport::releaseBeforeApplicationEnds([] { shared.reset(); });
    Pane& p = *shared;
    const QString text = generateCText(kTextSize);

    QElapsedTimer timer;
    timer.start();
    p.document = makeDocument();
    p.document->setLoadedText(text);
    p.fillMs = double(timer.nsecsElapsed()) / 1e6;
    p.lines = p.document->lineCount();

    const double before = residentMegabytes();
    timer.restart();
    p.controller = BenchSupport::makeEditorController();
    p.controller->setupInitialTextViewSharedStateWithDocument(p.document.get());
    p.view()->setInvisibleCharacters(true);
    p.view()->resize(1000, 800);
    p.attachMs = double(timer.nsecsElapsed()) / 1e6;
    p.attachMegabytes = residentMegabytes() - before;

    p.view()->viewport()->installEventFilter(&p.viewportPaints);
    timer.restart();
    const QPixmap first = p.view()->grab();
    p.firstPaintMs = double(timer.nsecsElapsed()) / 1e6;
    benchmark::DoNotOptimize(first);

    p.view()->show();
    if (!QTest::qWaitForWindowExposed(p.view())) {
        std::fputs("the window was not shown in time\n", stderr);
    }
    QCoreApplication::processEvents();
    return p;
}

void reportPercentiles(benchmark::State& state, std::vector<double> ms)
{
    std::sort(ms.begin(), ms.end());
    auto at = [&](double q) { return ms[std::min(ms.size() - 1, size_t(q * double(ms.size())))]; };
    state.counters["p50_ms"] = at(0.50);
    state.counters["p99_ms"] = at(0.99);
    state.counters["max_ms"] = ms.back();
}

/// The other order: the pane is built on the empty document, then the text is filled in, so
/// the view meets the whole text through the fill's change instead of when it attaches.
void BM_FillAfterAttach(benchmark::State& state)
{
    const QString text = generateCText(kTextSize);
    for (auto _ : state) {
        const auto document = makeDocument();
        const double before = residentMegabytes();
        QElapsedTimer timer;
        timer.start();
        const auto controller = BenchSupport::makeEditorController();
        controller->setupInitialTextViewSharedStateWithDocument(document.get());
        controller->textView()->resize(1000, 800);
        const double attach = double(timer.nsecsElapsed()) / 1e6;
        timer.restart();
        document->setLoadedText(text);
        const double fill = double(timer.nsecsElapsed()) / 1e6;
        timer.restart();
        const QPixmap first = controller->textView()->grab();
        const double paint = double(timer.nsecsElapsed()) / 1e6;
        state.SetIterationTime((attach + fill + paint) / 1000);
        state.counters["attach_ms"] = attach;
        state.counters["fill_ms"] = fill;
        state.counters["first_paint_ms"] = paint;
        state.counters["rss_mb"] = residentMegabytes() - before;
        state.counters["lines"] = double(document->lineCount());
    }
}
BENCHMARK(BM_FillAfterAttach)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_OpenLargeText(benchmark::State& state)
{
    for (auto _ : state) {
        Pane& p = pane();
        state.SetIterationTime((p.fillMs + p.attachMs + p.firstPaintMs) / 1000);
    }
    const Pane& p = pane();
    state.counters["lines"] = double(p.lines);
    state.counters["chars"] = double(p.document->length());
    state.counters["fill_ms"] = p.fillMs;
    state.counters["attach_ms"] = p.attachMs;
    state.counters["attach_rss_mb"] = p.attachMegabytes;
    state.counters["rss_mb"] = residentMegabytes();
    state.counters["first_paint_ms"] = p.firstPaintMs;
}
BENCHMARK(BM_OpenLargeText)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

/// Types `keystrokes` characters in the middle of the text, each timed until the repaint.
/// Every 20 characters the typing moves on to the next line, near its start, so the
/// insertion point never runs off the right edge (that would scroll and repaint the whole
/// view, which BM_JumpToFarLine measures).
std::vector<double> typeInTheMiddle(Pane& p, int keystrokes, int firstLine)
{
    std::vector<double> ms;
    QElapsedTimer timer;
    for (int i = 0; i < keystrokes; ++i) {
        if (i % 20 == 0) {
            placeNearLineStart(p.view(), *p.document, firstLine + i / 20);
            if (i == 0) {
                p.view()->centerCursor();
            }
            QCoreApplication::processEvents();
        }
        const QString letter(QChar(u'a' + i % 26));
        const Qt::Key key = Qt::Key(Qt::Key_A + i % 26);
        const int paints = p.viewportPaints.count;
        timer.start();
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, letter);
        QCoreApplication::sendEvent(p.view(), &press);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, letter);
        QCoreApplication::sendEvent(p.view(), &release);
        p.waitForRepaint(paints);
        ms.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    return ms;
}

/// Jumps to `count` random lines, each timed until the repaint.
std::vector<double> jumpToFarLines(Pane& p, int count)
{
    QRandomGenerator random(480);
    std::vector<double> ms;
    QElapsedTimer timer;
    for (int i = 0; i < count; ++i) {
        const int line = int(random.bounded(quint32(p.lines)));
        const int paints = p.viewportPaints.count;
        timer.start();
        p.view()->verticalScrollBar()->setValue(line);
        p.waitForRepaint(paints);
        ms.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    return ms;
}

double mean(const std::vector<double>& ms)
{
    double total = 0;
    for (double m : ms) {
        total += m;
    }
    return ms.empty() ? 0 : total / double(ms.size());
}

/// Colours the whole text as a syntax pass would leave it: a run for every word, about
/// two and a half million runs, handed over in one step. Done once; returns the number of
/// runs and how long handing them over took.
std::pair<qsizetype, double> colourWholeText(Pane& p)
{
    static std::pair<qsizetype, double> done{-1, 0};
    if (done.first >= 0) {
        return done;
    }
    const QString text = p.document->storedText();
    const QRgb colors[] = {qRgb(128, 0, 128), qRgb(0, 128, 0), qRgb(200, 30, 30)};
    std::vector<ColorStore::Run> runs;
    for (qsizetype i = 0; i < text.size();) {
        if (text.at(i).isLetter()) {
            qsizetype j = i;
            while (j < text.size() && text.at(j).isLetterOrNumber()) {
                ++j;
            }
            runs.push_back({i, j - i, colors[runs.size() % 3]});
            i = j;
        } else {
            ++i;
        }
    }
    QElapsedTimer timer;
    timer.start();
    p.controller->layoutManager()->setSyntaxColors({0, text.size()}, runs);
    done = {qsizetype(runs.size()), double(timer.nsecsElapsed()) / 1e6};
    QCoreApplication::processEvents();
    return done;
}

void BM_TypeInTheMiddle(benchmark::State& state)
{
    Pane& p = pane();
    std::vector<double> all;
    for (auto _ : state) {
        const std::vector<double> ms = typeInTheMiddle(p, 200, int(p.lines / 2));
        state.SetIterationTime(mean(ms) / 1000);
        all.insert(all.end(), ms.begin(), ms.end());
    }
    reportPercentiles(state, all);
    // The completion each key scheduled runs here, not in the next benchmark.
    BenchSupport::waitUntilIdle();
}
BENCHMARK(BM_TypeInTheMiddle)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_JumpToFarLine(benchmark::State& state)
{
    Pane& p = pane();
    std::vector<double> all;
    for (auto _ : state) {
        const std::vector<double> ms = jumpToFarLines(p, 50);
        state.SetIterationTime(mean(ms) / 1000);
        all.insert(all.end(), ms.begin(), ms.end());
    }
    reportPercentiles(state, all);
}
BENCHMARK(BM_JumpToFarLine)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

/// Typing with the whole text coloured. The first keystroke carries the colour store's gap
/// from the end of the text to the middle (its max).
void BM_TypeInTheMiddleFullyColoured(benchmark::State& state)
{
    Pane& p = pane();
    const auto [runs, colourMs] = colourWholeText(p);
    std::vector<double> all;
    for (auto _ : state) {
        const std::vector<double> ms = typeInTheMiddle(p, 200, int(p.lines / 2) + 100);
        state.SetIterationTime(mean(ms) / 1000);
        all.insert(all.end(), ms.begin(), ms.end());
    }
    state.counters["runs"] = double(runs);
    state.counters["colour_all_ms"] = colourMs;
    reportPercentiles(state, all);
    // The completion each key scheduled runs here, not in the next benchmark.
    BenchSupport::waitUntilIdle();
}
BENCHMARK(BM_TypeInTheMiddleFullyColoured)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void BM_JumpToFarLineFullyColoured(benchmark::State& state)
{
    Pane& p = pane();
    colourWholeText(p);
    std::vector<double> all;
    for (auto _ : state) {
        const std::vector<double> ms = jumpToFarLines(p, 50);
        state.SetIterationTime(mean(ms) / 1000);
        all.insert(all.end(), ms.begin(), ms.end());
    }
    reportPercentiles(state, all);
}
BENCHMARK(BM_JumpToFarLineFullyColoured)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// Wrapping on and off again, each until the pane has repainted: the whole text is laid out
/// again at the new width.
void BM_ToggleWrapLines(benchmark::State& state)
{
    Pane& p = pane();
    double onMs = 0;
    double offMs = 0;
    QElapsedTimer timer;
    for (auto _ : state) {
        for (bool wrap : {true, false}) {
            const int paints = p.viewportPaints.count;
            timer.start();
            p.view()->setWrapLines(wrap);
            p.waitForRepaint(paints);
            (wrap ? onMs : offMs) = double(timer.nsecsElapsed()) / 1e6;
        }
        state.SetIterationTime((onMs + offMs) / 1000);
    }
    state.counters["wrap_on_ms"] = onMs;
    state.counters["wrap_off_ms"] = offMs;
}
BENCHMARK(BM_ToggleWrapLines)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

/// Widening and narrowing the pane, each until it has repainted: whatever a change of width
/// lays out again, wrapped or not.
void BM_ResizeWidth(benchmark::State& state)
{
    Pane& p = pane();
    std::vector<double> all;
    QElapsedTimer timer;
    for (auto _ : state) {
        for (int width : {1100, 1000, 1100, 1000}) {
            const int paints = p.viewportPaints.count;
            timer.start();
            p.view()->resize(width, 800);
            p.waitForRepaint(paints);
            all.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        state.SetIterationTime(mean(all) / 1000);
    }
    reportPercentiles(state, all);
}
BENCHMARK(BM_ResizeWidth)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

/// CPU time of the calling thread, in milliseconds.
double threadCpuMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

/// A real document window on a 20 MB C file, coloured with the shipped "C" definition.
struct ColouredWindow {
    QTemporaryDir folder;
    Document* document = nullptr;
    WindowController* controller = nullptr;
    PaintCounter viewportPaints;
    double documentMs = 0; // read, decoded, in its window (not yet shown)
    double openMs = 0;
    double visibleColouredMs = 0;
    double allColouredMs = 0;
    qsizetype lines = 0;

    TextView* view() const { return controller->textView(); }
};

ColouredWindow& colouredWindow()
{
    static std::unique_ptr<ColouredWindow> shared;
    if (shared) {
        return *shared;
    }
    shared = std::make_unique<ColouredWindow>();
    BenchSupport::releaseBeforeApplicationEnds([] {
        if (shared->document) {
            DocumentController::sharedDocumentController().discardAllDocuments();
        }
        shared.reset();
    });
    ColouredWindow& w = *shared;
    DocumentController& documents = DocumentController::sharedDocumentController();
    documents.awakeFromNib(); // installs the shipped definitions into the private home
    const QString path = w.folder.filePath(QStringLiteral("large.c"));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(generateCText(kTextSize).toUtf8()) < 0) {
            std::abort();
        }
    }

    QElapsedTimer timer;
    timer.start();
    w.document = documents.openDocumentWithContentsOfURL(path);
    if (!w.document) {
        std::abort();
    }
    w.documentMs = double(timer.nsecsElapsed()) / 1e6;
    w.controller = documents.windowControllerOf(w.document);
    w.view()->viewport()->installEventFilter(&w.viewportPaints);
    while (w.viewportPaints.count == 0 && timer.elapsed() < 60000) {
        QCoreApplication::processEvents();
    }
    w.openMs = double(timer.nsecsElapsed()) / 1e6;
    // Coloured and painted: the shown lines carry colours and a paint followed them.
    // (Colours laid before the first paint were painted by it.)
    LayoutManager* layout = w.view()->layoutManager();
    bool colouredLater = false;
    while (layout->temporaryAttributes(w.view()->visibleCharacterRange()).empty() &&
           timer.elapsed() < 60000) {
        colouredLater = true;
        QCoreApplication::processEvents();
    }
    const int paints = w.viewportPaints.count;
    while (colouredLater && w.viewportPaints.count == paints && timer.elapsed() < 60000) {
        QCoreApplication::processEvents();
    }
    w.visibleColouredMs = double(timer.nsecsElapsed()) / 1e6;
    while (w.view()->syntaxColoringController()->isColoringAll() && timer.elapsed() < 120000) {
        QCoreApplication::processEvents();
    }
    w.allColouredMs = double(timer.nsecsElapsed()) / 1e6;
    w.lines = w.document->lineCount();
    return w;
}

/// Opening the file in a window until its shown lines are coloured and painted, and until
/// the whole text is coloured (in slices, the window repainting meanwhile; a text over 4 MB
/// is coloured where it is shown, so at once).
void BM_WindowOpenAndColour(benchmark::State& state)
{
    for (auto _ : state) {
        ColouredWindow& w = colouredWindow();
        state.SetIterationTime(w.visibleColouredMs / 1000);
    }
    const ColouredWindow& w = colouredWindow();
    state.counters["read_and_window_ms"] = w.documentMs;
    state.counters["open_first_paint_ms"] = w.openMs;
    state.counters["visible_coloured_ms"] = w.visibleColouredMs;
    state.counters["colour_after_first_paint_ms"] = w.visibleColouredMs - w.openMs;
    state.counters["all_coloured_ms"] = w.allColouredMs;
    state.counters["runs"] =
        double(w.view()->layoutManager()->temporaryAttributes({0, kTextSize * 2}).size());
}
BENCHMARK(BM_WindowOpenAndColour)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

/// A keystroke in the middle of the coloured file in its window, until the pane has
/// repainted: the text's change, the window's status count, the colouring of the shown
/// lines (block passes included) and the paint.
void BM_WindowTypeInTheMiddleColoured(benchmark::State& state)
{
    ColouredWindow& w = colouredWindow();
    std::vector<double> all;
    std::vector<double> cpu;
    QElapsedTimer timer;
    const int firstLine = int(w.lines / 2) + 100;
    for (auto _ : state) {
        std::vector<double> ms;
        for (int i = 0; i < 200; ++i) {
            if (i % 20 == 0) {
                placeNearLineStart(w.view(), *w.document, firstLine + i / 20);
                if (i == 0) {
                    w.view()->centerCursor();
                }
                QCoreApplication::processEvents();
            }
            // Now and then a comment opener, so the block passes have something to redo.
            const bool opener = i % 50 == 25;
            const QString letter = opener ? QStringLiteral("/") : QString(QChar(u'a' + i % 26));
            const Qt::Key key = opener ? Qt::Key_Slash : Qt::Key(Qt::Key_A + i % 26);
            const int paints = w.viewportPaints.count;
            const double cpuBefore = threadCpuMilliseconds();
            timer.start();
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, letter);
            QCoreApplication::sendEvent(w.view(), &press);
            QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, letter);
            QCoreApplication::sendEvent(w.view(), &release);
            QElapsedTimer wait;
            wait.start();
            while (w.viewportPaints.count == paints && wait.elapsed() < 1000) {
                QCoreApplication::processEvents(QEventLoop::AllEvents);
            }
            ms.push_back(double(timer.nsecsElapsed()) / 1e6);
            cpu.push_back(threadCpuMilliseconds() - cpuBefore);
        }
        state.SetIterationTime(mean(ms) / 1000);
        all.insert(all.end(), ms.begin(), ms.end());
    }
    state.counters["slowest_keystroke"] =
        double(std::max_element(all.begin(), all.end()) - all.begin());
    // The main thread's own time: what a keystroke costs when the machine is not shared.
    std::sort(cpu.begin(), cpu.end());
    state.counters["cpu_p50_ms"] = cpu[cpu.size() / 2];
    state.counters["cpu_p99_ms"] = cpu[std::min(cpu.size() - 1, cpu.size() * 99 / 100)];
    reportPercentiles(state, all);
    // The completion each key scheduled runs here, not in the next benchmark.
    BenchSupport::waitUntilIdle();
}
BENCHMARK(BM_WindowTypeInTheMiddleColoured)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// Runs the event loop for `ms` milliseconds.
void runEventLoopFor(qint64 ms)
{
    if (ms <= 0) {
        return;
    }
    QEventLoop loop;
    QTimer::singleShot(int(ms), &loop, &QEventLoop::quit);
    loop.exec();
}

/// Presses and releases the key of `c` (a letter or a space) in `view`.
void typeCharacter(QWidget* view, QChar c)
{
    const QString text(c);
    const Qt::Key key =
        c == u' ' ? Qt::Key_Space : Qt::Key(Qt::Key_A + (c.toLower().unicode() - u'a'));
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(view, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(view, &release);
}

/// Types `c` and processes events until the pane has repainted; returns the milliseconds.
double typeUntilRepainted(ColouredWindow& w, QChar c)
{
    QElapsedTimer clock;
    clock.start();
    const int paints = w.viewportPaints.count;
    typeCharacter(w.view(), c);
    while (w.viewportPaints.count == paints && clock.elapsed() < 1000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    }
    return double(clock.nsecsElapsed()) / 1e6;
}

/// Puts the insertion point near the start of line `line` of the coloured window, in sight,
/// and waits until the editor is idle.
void placeInsertionPoint(ColouredWindow& w, int line)
{
    placeNearLineStart(w.view(), *w.document, line);
    w.view()->centerCursor();
    BenchSupport::waitUntilIdle();
}

double percentile(std::vector<double> values, double q)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0
                          : values[std::min(values.size() - 1, size_t(q * double(values.size())))];
}

/// Typing as a person does, in the middle of the coloured file in its window, automatic
/// completion on (the default). First 50 keys about 100 words a minute apart (240 ms): the
/// completion list opens 0.7 s after a key and then follows every key. Then 20 keys each
/// after a pause longer than the completion's delay, so that every key opens the list.
/// Counts all the work the keys cause, on every thread and whenever it runs (the delayed
/// completion included), until the editor is idle again, and how long each key took to
/// reach the screen.
void BM_WindowTypeAtHumanPace(benchmark::State& state)
{
    ColouredWindow& w = colouredWindow();
    w.view()->activateWindow();
    w.view()->setFocus();
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    const QString steady = QStringLiteral("the quick brown fox jumps over the lazy dog again ");
    const QString paused = QStringLiteral("static int counter ");
    std::vector<double> repaint;
    std::vector<double> pausedCpu;
    std::vector<double> steadyKeyCpu;
    double steadyCpu = 0;
    double idleAfterLastKey = 0;
    int listShownSteady = 0;
    int listShownPaused = 0;
    for (auto _ : state) {
        placeInsertionPoint(w, int(w.lines / 2) + 300);
        QElapsedTimer run;
        run.start();
        const double cpuStart = BenchSupport::processCpuMilliseconds();
        qint64 lastKey = 0;
        for (const QChar c : steady) {
            lastKey = run.elapsed();
            const double cpuBefore = BenchSupport::processCpuMilliseconds();
            repaint.push_back(typeUntilRepainted(w, c));
            runEventLoopFor(lastKey + 240 - run.elapsed());
            // All that happened until the next key: this key's work and the delayed work
            // of the keys before it, on every thread.
            steadyKeyCpu.push_back(BenchSupport::processCpuMilliseconds() - cpuBefore);
            listShownSteady += completion.panel()->isVisible() ? 1 : 0;
        }
        const double waitStart = double(run.nsecsElapsed()) / 1e6;
        const double cpuBeforeWait = BenchSupport::processCpuMilliseconds();
        const BenchSupport::Idle idle = BenchSupport::waitUntilIdle();
        steadyCpu = cpuBeforeWait - cpuStart + idle.cpuMs;
        idleAfterLastKey = waitStart + idle.busyMs - double(lastKey);

        for (const QChar c : paused) {
            const double cpuBefore = BenchSupport::processCpuMilliseconds();
            repaint.push_back(typeUntilRepainted(w, c));
            const double cpuAfterRepaint = BenchSupport::processCpuMilliseconds();
            const BenchSupport::Idle after = BenchSupport::waitUntilIdle();
            pausedCpu.push_back(cpuAfterRepaint - cpuBefore + after.cpuMs);
            listShownPaused += completion.panel()->isVisible() ? 1 : 0;
        }
        state.SetIterationTime(steadyCpu / double(steady.size()) / 1000);
    }
    state.counters["steady_cpu_per_key_ms"] = steadyCpu / double(steady.size());
    state.counters["steady_cpu_per_key_p50_ms"] = percentile(steadyKeyCpu, 0.5);
    state.counters["steady_idle_after_last_key_ms"] = idleAfterLastKey;
    state.counters["steady_keys_with_list"] = listShownSteady;
    state.counters["paused_cpu_per_key_p50_ms"] = percentile(pausedCpu, 0.5);
    state.counters["paused_cpu_per_key_max_ms"] = percentile(pausedCpu, 1.0);
    state.counters["paused_keys_with_list"] = listShownPaused;
    state.counters["repaint_p50_ms"] = percentile(repaint, 0.5);
    state.counters["repaint_p99_ms"] = percentile(repaint, 0.99);
    state.counters["repaint_max_ms"] = percentile(repaint, 1.0);
    completion.terminateCompletion();
    BenchSupport::waitUntilIdle();
}
BENCHMARK(BM_WindowTypeAtHumanPace)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

/// Opening the function pop-up of the coloured file, until the list shows, three times:
/// after opening the file, after an edit, and again without one.
void BM_WindowFunctionPopUp(benchmark::State& state)
{
    ColouredWindow& w = colouredWindow();
    BenchSupport::waitUntilIdle();
    auto* popUp = qobject_cast<FunctionPopUp*>(w.controller->window()->functionPopUp());
    std::vector<double> ms;
    std::vector<double> cpu;
    int items = 0;
    for (auto _ : state) {
        for (int round = 0; round < 3; ++round) {
            if (round == 1) {
                placeInsertionPoint(w, int(w.lines / 3));
                typeUntilRepainted(w, u'x');
                BenchSupport::waitUntilIdle();
            }
            QElapsedTimer timer;
            timer.start();
            const double cpuBefore = threadCpuMilliseconds();
            popUp->showPopup();
            QCoreApplication::processEvents();
            ms.push_back(double(timer.nsecsElapsed()) / 1e6);
            cpu.push_back(threadCpuMilliseconds() - cpuBefore);
            items = popUp->count();
            popUp->hidePopup();
            BenchSupport::waitUntilIdle();
        }
        state.SetIterationTime(ms.front() / 1000);
    }
    state.counters["first_ms"] = ms[0];
    state.counters["after_edit_ms"] = ms[1];
    state.counters["again_ms"] = ms[2];
    // The main thread's own time: the figure when the machine is not shared.
    state.counters["first_cpu_ms"] = cpu[0];
    state.counters["after_edit_cpu_ms"] = cpu[1];
    state.counters["again_cpu_ms"] = cpu[2];
    state.counters["items"] = items;
}
BENCHMARK(BM_WindowFunctionPopUp)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
