// What a recovery copy costs the window: writing the copy of a modified 20 MB document, which
// happens on the main thread once per autosave delay while the document has unsaved changes.
#include "BenchSupport.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "document/RecoveryStore.h"
#include "platform/Preferences.h"

#include <QTemporaryDir>
#include <QTextDocument>

#include <benchmark/benchmark.h>

namespace {

void BM_RecoveryCopyOf20MB(benchmark::State& state)
{
    QString text;
    while (text.size() < 20'000'000) {
        text += BenchSupport::mixedSourceText();
    }
    Document document(EncodingManager::sharedEncodingManager(),
                      Preferences::sharedPreferences().values().document);
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
    QString text;
    while (text.size() < 20'000'000) {
        text += BenchSupport::mixedSourceText();
    }
    Document document(EncodingManager::sharedEncodingManager(),
                      Preferences::sharedPreferences().values().document);
    document.setTextStorage(text);
    for (auto _ : state) {
        benchmark::DoNotOptimize(document.string().toUtf8());
    }
}
BENCHMARK(BM_RecoverySnapshotOf20MB)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
