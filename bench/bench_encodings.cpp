// Opening large files: detection, decoding and the line-break scan in one pass, as a
// document's reading does it. Reports throughput and the peak of resident memory over the
// file's bytes plus its decoded text (the target is at most 1.10).
#include "BenchSupport.h"
#include "document/EncodingManager.h"
#include "platform/TextCodec.h"

#include <QFileInfo>

#include <benchmark/benchmark.h>

namespace {

void openFile(benchmark::State& state, const QString& path, qint64 fileBytes, bool priority,
              quint64 expected)
{
    EncodingManager& manager = EncodingManager::sharedEncodingManager();
    const QUrl url = QUrl::fromLocalFile(path);
    qint64 textBytes = 0;
    qint64 peakOverBaseline = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const qint64 baseline = BenchSupport::residentBytes();
        BenchSupport::resetPeakResident();
        state.ResumeTiming();

        DecodedContents contents = manager.contentsOfURL(url, StringEncoding::NoEncoding, priority);
        benchmark::DoNotOptimize(contents.lineBreaks);

        state.PauseTiming();
        if (contents.encoding != expected || contents.lineBreaks != 0) {
            state.SkipWithError("wrong encoding or line breaks");
        }
        textBytes = contents.text.size() * 2;
        peakOverBaseline = qMax(peakOverBaseline, BenchSupport::peakResidentBytes() - baseline);
        contents = DecodedContents();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * fileBytes);
    state.counters["file_MB"] = double(fileBytes) / 1e6;
    state.counters["text_MB"] = double(textBytes) / 1e6;
    state.counters["peak_MB"] = double(peakOverBaseline) / 1e6;
    state.counters["peak_ratio"] = double(peakOverBaseline) / double(fileBytes + textBytes);
}

void BM_OpenUtf8_100MB(benchmark::State& state)
{
    const QByteArray chunk = BenchSupport::mixedSourceText().toUtf8();
    const qint64 size = 100'000'000;
    const QString path = BenchSupport::largeFile(u"utf8.txt"_qs, size, chunk);
    openFile(state, path, QFileInfo(path).size(), false, 4);
}

void BM_OpenShiftJis_50MB_Priority(benchmark::State& state)
{
    const QByteArray chunk = *TextCodec::encode(0x80000A01, BenchSupport::japaneseProse());
    const qint64 size = 50'000'000;
    const QString path = BenchSupport::largeFile(u"sjis.txt"_qs, size, chunk);
    openFile(state, path, QFileInfo(path).size(), true, 0x80000A01);
}

} // namespace

BENCHMARK(BM_OpenUtf8_100MB)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseRealTime();
BENCHMARK(BM_OpenShiftJis_50MB_Priority)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0)
    ->UseRealTime();

BENCHMARK_MAIN();
