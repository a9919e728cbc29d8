// The text area over the text store, offscreen, on a 100 MB C file (the headers of
// /usr/include joined): opening (the first screen shown as soon as the first part is in,
// then the whole), the memory it takes, jumps to random lines
// wrapped and not, typing in the middle until the repaint, typing in a 1 MB line, and
// painting screens of the text coloured all over through the pane's colour layers.
#include "BenchSupport.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "document/TextBuilder.h"
#include "document/TextStore.h"
#include "document/Utf8FileReading.h"
#include "editor/TextArea.h"
#include "editor/TextColorLayers.h"
#include "platform/UnicodeText.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <malloc.h>
#include <memory>
#include <optional>
#include <vector>

namespace {

constexpr quint64 UTF8 = 4;
constexpr qint64 kFileSize = 100'000'000;

/// Headers of /usr/include, in a fixed order, joined until the file has `size` bytes (the
/// few that are not UTF-8 left out).
QString cSourceFile(qint64 size)
{
    static QTemporaryDir dir;
    const QString path = dir.path() + QStringLiteral("/large-%1.c").arg(size);
    if (QFile::exists(path)) {
        return path;
    }
    QStringList headers;
    QDirIterator it(QStringLiteral("/usr/include"), {QStringLiteral("*.h")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        headers.append(it.next());
    }
    std::sort(headers.begin(), headers.end());
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly) || headers.isEmpty()) {
        std::abort();
    }
    while (out.size() < size) {
        for (const QString& header : headers) {
            QFile in(header);
            if (in.open(QIODevice::ReadOnly)) {
                const QByteArray bytes = in.readAll().replace('\r', "");
                if (UnicodeText::isValidUtf8(bytes)) {
                    out.write(bytes);
                }
            }
            if (out.size() >= size) {
                break;
            }
        }
    }
    return path;
}

double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

/// Counts the paints of the viewport, so that a measurement can wait for the repaint.
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

struct Pane {
    TextStore store;
    TextArea area;
    PaintCounter paints;
    double firstScreenMs = 0;
    double idleMs = 0;
    double residentMb = 0;
    double peakMb = 0;

    Pane()
    {
        area.resize(1000, 800);
        area.setShowInvisibleCharacters(true);
        area.viewport()->installEventFilter(&paints);
        area.show();
        if (!QTest::qWaitForWindowExposed(&area)) {
            std::fputs("the window was not shown in time\n", stderr);
        }
        area.setFocus();
        QCoreApplication::processEvents();
    }

    /// Processes events until the viewport has painted again (or a second has passed).
    void waitForRepaint(int paintsBefore)
    {
        QElapsedTimer timer;
        timer.start();
        while (paints.count == paintsBefore && timer.elapsed() < 1000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        }
    }
};

/// Opens the 100 MB file as a document does: the bytes are checked and the first part decoded
/// and shown (read-only) at once; the rest is decoded on a worker and goes in after it.
std::unique_ptr<Pane> openLarge(bool wrap)
{
    const QString path = cSourceFile(kFileSize);
    malloc_trim(0);
    const qint64 before = BenchSupport::residentBytes();
    BenchSupport::resetPeakResident();
    auto pane = std::make_unique<Pane>();
    pane->area.setWrapLines(wrap);
    QElapsedTimer timer;
    timer.start();
    pane->area.setTextStore(&pane->store);
    QByteArray data;
    std::optional<Utf8FileReading::Text> read;
    if (EncodingManager::readWholeFile(QUrl::fromLocalFile(path), data)) {
        read = Utf8FileReading::read(data, UTF8, false, EncodingManager::sharedEncodingManager(),
                                     Document::maximumLineLength, Document::maximumLineLength * 8);
    }
    if (!read || !read->whole) {
        std::abort();
    }
    pane->area.setLoading(true);
    pane->store.setLoadingText(read->text, *read->whole);
    pane->area.viewport()->repaint();
    pane->firstScreenMs = double(timer.nsecsElapsed()) / 1e6;
    while (pane->store.isLoading()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    pane->area.setLoading(false);
    pane->area.viewport()->repaint();
    // Idle: the rows of a wrapped text are measured in slices after the first paint.
    while (!pane->area.textLayout().heightMap().isMeasured()) {
        QCoreApplication::processEvents();
    }
    pane->idleMs = double(timer.nsecsElapsed()) / 1e6;
    pane->residentMb = double(BenchSupport::residentBytes() - before) / 1e6;
    pane->peakMb = double(BenchSupport::peakResidentBytes() - before) / 1e6;
    return pane;
}

void reportPercentiles(benchmark::State& state, std::vector<double> ms, const char* prefix = "")
{
    std::sort(ms.begin(), ms.end());
    auto at = [&](double q) { return ms[std::min(ms.size() - 1, size_t(q * double(ms.size())))]; };
    state.counters[std::string(prefix) + "p50_ms"] = at(0.50);
    state.counters[std::string(prefix) + "p99_ms"] = at(0.99);
    state.counters[std::string(prefix) + "max_ms"] = ms.back();
}

double mean(const std::vector<double>& ms)
{
    double total = 0;
    for (double m : ms) {
        total += m;
    }
    return ms.empty() ? 0 : total / double(ms.size());
}

void BM_OpenAndFirstPaint(benchmark::State& state)
{
    for (auto _ : state) {
        const std::unique_ptr<Pane> pane = openLarge(state.range(0) != 0);
        state.SetIterationTime(pane->idleMs / 1000);
        state.counters["first_screen_ms"] = pane->firstScreenMs;
        state.counters["idle_ms"] = pane->idleMs;
        state.counters["resident_mb"] = pane->residentMb;
        state.counters["peak_above_start_mb"] = pane->peakMb;
        state.counters["lines"] = double(pane->store.text().lineCount());
        state.counters["layouts"] = double(pane->area.textLayout().cache().layoutsMade());
    }
}
BENCHMARK(BM_OpenAndFirstPaint)
    ->ArgName("wrap")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// Jumps to 300 random lines through the scroll bar, each timed until the repaint.
void BM_ScrollToRandomLines(benchmark::State& state)
{
    const std::unique_ptr<Pane> pane = openLarge(state.range(0) != 0);
    TextArea& area = pane->area;
    QRandomGenerator random(480);
    std::vector<double> ms;
    std::vector<double> cpu;
    for (auto _ : state) {
        for (int i = 0; i < 300; ++i) {
            QScrollBar* bar = area.verticalScrollBar();
            const int value = int(random.bounded(quint32(bar->maximum())));
            const int paints = pane->paints.count;
            QElapsedTimer timer;
            timer.start();
            const double cpuBefore = threadCpuMs();
            bar->setValue(value);
            pane->waitForRepaint(paints);
            ms.push_back(double(timer.nsecsElapsed()) / 1e6);
            cpu.push_back(threadCpuMs() - cpuBefore);
        }
        state.SetIterationTime(mean(ms) / 1000);
    }
    reportPercentiles(state, ms);
    reportPercentiles(state, cpu, "cpu_");
    state.counters["cached_layouts"] = double(area.textLayout().cache().size());
}
BENCHMARK(BM_ScrollToRandomLines)
    ->ArgName("wrap")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// Types `count` letters at `position`, each timed from the key to the repaint.
std::pair<std::vector<double>, std::vector<double>> typeAt(Pane& pane, qsizetype position,
                                                           int count)
{
    TextArea& area = pane.area;
    area.setCursorPosition(position);
    area.ensureCursorVisible();
    QCoreApplication::processEvents();
    std::vector<double> ms;
    std::vector<double> cpu;
    for (int i = 0; i < count; ++i) {
        const QString letter(QChar(u'a' + i % 26));
        const Qt::Key key = Qt::Key(Qt::Key_A + i % 26);
        const int paints = pane.paints.count;
        QElapsedTimer timer;
        timer.start();
        const double cpuBefore = threadCpuMs();
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, letter);
        QCoreApplication::sendEvent(&area, &press);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, letter);
        QCoreApplication::sendEvent(&area, &release);
        pane.waitForRepaint(paints);
        ms.push_back(double(timer.nsecsElapsed()) / 1e6);
        cpu.push_back(threadCpuMs() - cpuBefore);
    }
    return {ms, cpu};
}

void BM_KeystrokeToRepaint(benchmark::State& state)
{
    const std::unique_ptr<Pane> pane = openLarge(state.range(0) != 0);
    std::vector<double> ms;
    std::vector<double> cpu;
    for (auto _ : state) {
        const TextSnapshot& text = pane->store.text();
        const qsizetype middle = text.lineStart(text.lineCount() / 2);
        std::tie(ms, cpu) = typeAt(*pane, middle, 300);
        state.SetIterationTime(mean(ms) / 1000);
    }
    reportPercentiles(state, ms);
    reportPercentiles(state, cpu, "cpu_");
}
BENCHMARK(BM_KeystrokeToRepaint)
    ->ArgName("wrap")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// A 1 MB line (a minified file): typing in its middle.
void BM_TypeInAMegabyteLine(benchmark::State& state)
{
    Pane pane;
    pane.area.setWrapLines(state.range(0) != 0);
    QString line;
    while (line.size() < 1'000'000) {
        line += QStringLiteral("{\"key\":[1,2,3],\"name\":\"value\",\"flag\":true} ");
    }
    TextBuilder builder;
    builder.append(QStringLiteral("first line\n"));
    builder.append(line);
    builder.append(QStringLiteral("\nlast line\n"));
    pane.store.setLoadedText(builder.finish());
    pane.area.setTextStore(&pane.store);
    QCoreApplication::processEvents();
    std::vector<double> ms;
    std::vector<double> cpu;
    for (auto _ : state) {
        std::tie(ms, cpu) = typeAt(pane, 11 + 500'000, 300);
        state.SetIterationTime(mean(ms) / 1000);
    }
    reportPercentiles(state, ms);
    reportPercentiles(state, cpu, "cpu_");
    state.counters["layouts"] = double(pane.area.textLayout().cache().layoutsMade());
}
BENCHMARK(BM_TypeInAMegabyteLine)
    ->ArgName("wrap")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// Screens of the 100 MB text painted at 300 random lines, with every stretch of it coloured
/// (a run of 5 units in every 16, one of 4 colours), a highlight in every 1,000 units and a
/// misspelt word in every 500, or with no layers (the same screens, plain).
void BM_PaintColouredScreens(benchmark::State& state)
{
    const bool coloured = state.range(0) != 0;
    const std::unique_ptr<Pane> pane = openLarge(false);
    TextArea& area = pane->area;
    const qsizetype length = pane->store.text().length();
    TextColorLayers layers(length);
    QElapsedTimer colouring;
    colouring.start();
    if (coloured) {
        const QRgb colors[] = {qRgb(128, 0, 128), qRgb(0, 128, 0), qRgb(200, 30, 30),
                               qRgb(0, 0, 255)};
        constexpr qsizetype kChunk = 1 << 20;
        std::vector<ColorStore::Run> runs;
        for (qsizetype from = 0; from < length; from += kChunk) {
            const Range chunk(from, std::min(kChunk, length - from));
            runs.clear();
            for (qsizetype at = chunk.location; at + 5 <= chunk.max(); at += 16) {
                runs.push_back({at, 5, colors[(at / 16) % 4]});
            }
            layers.syntaxColors().replaceColors(chunk, runs);
            QList<Range> words;
            for (qsizetype at = chunk.location + 7; at + 6 <= chunk.max(); at += 500) {
                words.append({at, 6});
            }
            layers.replaceMisspellings(chunk, words);
            for (qsizetype at = chunk.location + 3; at + 8 <= chunk.max(); at += 1000) {
                layers.backgroundHighlights().setColor(qRgb(255, 255, 0), {at, 8});
            }
        }
        area.setFormatProvider(&layers);
    }
    const double colouringMs = double(colouring.nsecsElapsed()) / 1e6;
    QRandomGenerator random(480);
    std::vector<double> ms;
    for (auto _ : state) {
        for (int i = 0; i < 300; ++i) {
            QScrollBar* bar = area.verticalScrollBar();
            bar->setValue(int(random.bounded(quint32(bar->maximum()))));
            QElapsedTimer timer;
            timer.start();
            area.viewport()->repaint();
            ms.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        state.SetIterationTime(mean(ms) / 1000);
    }
    reportPercentiles(state, ms);
    state.counters["colouring_ms"] = colouringMs;
    state.counters["runs"] = double(layers.syntaxColors().count());
}
BENCHMARK(BM_PaintColouredScreens)
    ->ArgName("layers")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
