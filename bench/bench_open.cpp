// Opening a large C file the way the editor does (the document controller reads it, a window
// shows it): the time until the window's first paint, until the whole text is in, and the
// process's peak memory.
#include "BenchSupport.h"
#include "app/Application.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>

namespace {

/// Headers of /usr/include, in a fixed order, joined until the file has `size` bytes.
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
                out.write(in.readAll().replace('\r', ""));
            }
            if (out.size() >= size) {
                break;
            }
        }
    }
    return path;
}

/// Paints of one widget, counted from outside it.
class PaintWatcher : public QObject
{
public:
    bool painted = false;
    bool eventFilter(QObject*, QEvent* event) override
    {
        painted = painted || event->type() == QEvent::Paint;
        return false;
    }
};

void BM_OpenLargeCFile(benchmark::State& state)
{
    const QString path = cSourceFile(state.range(0) * 1000 * 1000);
    DocumentController& controller = DocumentController::sharedDocumentController();
    for (auto _ : state) {
        BenchSupport::resetPeakResident();
        QElapsedTimer timer;
        timer.start();
        Document* document = controller.openDocumentWithContentsOfURL(path, true);
        if (!document) {
            state.SkipWithError("the file did not open");
            return;
        }
        const double readMs = timer.nsecsElapsed() / 1e6;
        QWidget* window = controller.windowControllerOf(document)->window();
        QWidget* view = controller.windowControllerOf(document)->textView()->viewport();
        PaintWatcher watcher;
        view->installEventFilter(&watcher);
        while (!watcher.painted) {
            QCoreApplication::processEvents();
        }
        const double firstPaintMs = timer.nsecsElapsed() / 1e6;
        while (document->isLoading()) {
            QCoreApplication::processEvents();
        }
        const double loadedMs = timer.nsecsElapsed() / 1e6;
        state.SetIterationTime(firstPaintMs / 1000);
        state.counters["read_and_window_ms"] = readMs;
        state.counters["first_paint_ms"] = firstPaintMs;
        state.counters["whole_text_ms"] = loadedMs;
        state.counters["peak_rss_mb"] = BenchSupport::peakResidentBytes() / 1e6;
        view->removeEventFilter(&watcher);
        delete window;
        QCoreApplication::processEvents();
    }
}
BENCHMARK(BM_OpenLargeCFile)
    ->Arg(20)
    ->Arg(100)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
