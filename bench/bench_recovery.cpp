// What a recovery copy costs the window: writing the copy of a modified 20 MB document, which
// happens on the main thread once per autosave delay while the document has unsaved changes.
#include "BenchSupport.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "document/RecoveryStore.h"
#include "platform/Preferences.h"

#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

namespace {

/// 20 MB of source text, made once.
const QString& sourceText()
{
    static const QString text = [] {
        QString made;
        while (made.size() < 20'000'000) {
            made += BenchSupport::mixedSourceText();
        }
        return made;
    }();
    return text;
}

void BM_RecoveryCopyOf20MB(benchmark::State& state)
{
    Document document(EncodingManager::sharedEncodingManager(),
                      Preferences::sharedPreferences().values().document);
    const QString& text = sourceText();
    document.setTextStorage(text);
    const QTemporaryDir root;
    RecoveryStore store(root.path());
    for (auto _ : state) {
        if (!store.writeCopy(&document)) {
            state.SkipWithError(store.errorString().toStdString().c_str());
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(BM_RecoveryCopyOf20MB)->Unit(benchmark::kMillisecond);

// The part of a copy that must be made where the text lives: taking the text out of the
// document and encoding it.
void BM_RecoverySnapshotOf20MB(benchmark::State& state)
{
    Document document(EncodingManager::sharedEncodingManager(),
                      Preferences::sharedPreferences().values().document);
    const QString& text = sourceText();
    document.setTextStorage(text);
    for (auto _ : state) {
        benchmark::DoNotOptimize(document.string().toUtf8());
    }
}
BENCHMARK(BM_RecoverySnapshotOf20MB)->Unit(benchmark::kMillisecond);

// The autosave of a modified 20 MB document, from its start until the copy is on disk. The
// CPU column is the main thread's: what the copy costs typing, whatever workers do beside.
void BM_RecoveryAutosaveOf20MB(benchmark::State& state)
{
    Document document(EncodingManager::sharedEncodingManager(),
                      Preferences::sharedPreferences().values().document);
    const QString& text = sourceText();
    document.setTextStorage(text);
    document.setDocumentEdited(true);
    const QTemporaryDir root;
    RecoveryStore store(root.path());
    // The event loop sleeps between its turns, as a window's does, so that waiting for the
    // worker costs the main thread nothing.
    QEventLoop loop;
    QTimer poll;
    poll.setInterval(1);
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (!store.isCopying(&document)) {
            loop.quit();
        }
    });
    poll.start();
    for (auto _ : state) {
        store.startCopy(&document);
        loop.exec();
    }
    if (store.copyFile(&document).isEmpty()) {
        state.SkipWithError("no copy was written");
    }
}
BENCHMARK(BM_RecoveryAutosaveOf20MB)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
