// Windows opening while the syntax folder holds a very large definition of the user's: what
// reading that definition costs, and what it adds to the first and the later windows.
#include "BenchSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "platform/FileManager.h"
#include "platform/PropertyList.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <benchmark/benchmark.h>

namespace {

constexpr qint64 kDefinitionBytes = 10 * 1000 * 1000;

/// A definition of about 10 MB (a long keyword list) that claims no extension in use.
QString largeDefinition()
{
    static const QString path = [] {
        QByteArray bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n"
                           "<dict><key>Extensions</key><array><string>huge</string></array>\n"
                           "<key>Keywords</key><array>\n";
        for (int i = 0; bytes.size() < kDefinitionBytes; ++i) {
            bytes += "<string>keyword" + QByteArray::number(i) + "</string>\n";
        }
        bytes += "</array></dict></plist>\n";
        QDir().mkpath(FileManager::syntaxDefinitionDirectoryPathInPath());
        const QString file =
            FileManager::syntaxDefinitionDirectoryPathInPath(QStringLiteral("Huge.plist"));
        QFile out(file);
        if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            std::abort();
        }
        out.write(bytes);
        return file;
    }();
    return path;
}

void readLargeDefinition(benchmark::State& state)
{
    const QString path = largeDefinition();
    for (auto _ : state) {
        benchmark::DoNotOptimize(PropertyList::readDictionary(path));
    }
}
BENCHMARK(readLargeDefinition)->Unit(benchmark::kMillisecond)->Iterations(2);

/// Opens windows on a small file whose extension no definition claims, so that every
/// definition is looked through, one after the other: the first pays for what is kept.
void openWindows(benchmark::State& state)
{
    largeDefinition();
    DocumentController& controller = DocumentController::sharedDocumentController();
    int opened = 0;
    for (auto _ : state) {
        const QString file =
            BenchSupport::largeFile(QStringLiteral("small-%1.zzz").arg(opened), 100, "text\n");
        QElapsedTimer timer;
        timer.start();
        Document* document = controller.openDocumentWithContentsOfURL(file, true);
        if (!document) {
            state.SkipWithError("the file did not open");
            return;
        }
        const double ms = timer.nsecsElapsed() / 1e6;
        state.counters[opened++ == 0 ? "first_window_ms" : "later_window_ms"] = ms;
        state.SetIterationTime(ms / 1000);
        controller.closeDocument(document);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}
BENCHMARK(openWindows)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
