// The text store on large C files (the headers of /usr/include joined): loading 20 MB and
// 100 MB with the memory it takes, 10,000 single-character inserts in the middle,
// position ↔ line lookups, and a snapshot read on a worker while the text is edited.
#include "BenchSupport.h"
#include "document/TextChunkIterator.h"
#include "document/TextLoader.h"
#include "document/TextStore.h"
#include "platform/TextCodec.h"
#include "platform/UnicodeText.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QUndoStack>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <malloc.h>
#include <memory>
#include <optional>
#include <random>
#include <thread>
#include <vector>

namespace {

constexpr quint64 UTF8 = 4;

/// Headers of /usr/include, in a fixed order, joined until the file has `size` bytes. The
/// few headers that are not UTF-8 (Latin-1 comments) are left out, so that the whole file is
/// UTF-8 and can be read as such.
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

/// CPU time of this thread: the machine may be shared, so the work's own cost is reported
/// beside the wall-clock figures.
double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

/// CPU time to take and first write as many bytes of fresh memory, in blocks of a chunk's
/// size: the page faults every way of loading the text pays (on a virtual machine they can
/// cost more than the decoding).
double freshMemoryCpuMs(qsizetype bytes)
{
    constexpr qsizetype block = 8192;
    std::vector<std::unique_ptr<char[]>> blocks;
    blocks.reserve(size_t(bytes / block + 1));
    const double cpu = threadCpuMs();
    for (qsizetype done = 0; done < bytes; done += block) {
        blocks.emplace_back(new char[block]);
        std::memset(blocks.back().get(), 1, block);
    }
    const double ms = threadCpuMs() - cpu;
    blocks.clear();
    malloc_trim(0);
    return ms;
}

/// The 100 MB text, loaded once for the benchmarks that edit and read it.
TextStore& largeStore()
{
    static std::unique_ptr<TextStore> store;
    if (!store) {
        QFile file(cSourceFile(100'000'000));
        const std::optional<TextSnapshot> loaded = file.open(QIODevice::ReadOnly)
                                                       ? TextLoader::loadUtf8Data(file.readAll())
                                                       : std::nullopt;
        if (!loaded) {
            std::fprintf(stderr, "The 100 MB file did not load.\n");
            std::abort();
        }
        store = std::make_unique<TextStore>();
        store->setLoadedText(*loaded);
    }
    return *store;
}

void BM_Load(benchmark::State& state)
{
    const QString path = cSourceFile(state.range(0) * 1000 * 1000);
    for (auto _ : state) {
        // Memory freed before (an earlier load) goes back to the system, so that the
        // resident size measures this text.
        malloc_trim(0);
        const qint64 before = BenchSupport::residentBytes();
        BenchSupport::resetPeakResident();
        QElapsedTimer timer;
        timer.start();
        const double cpuBefore = threadCpuMs();
        QFile file(path);
        QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        std::optional<TextSnapshot> result = TextLoader::loadUtf8Data(bytes);
        const qsizetype bytesRead = bytes.size();
        bytes = QByteArray();
        const double ms = timer.nsecsElapsed() / 1e6;
        state.SetIterationTime(ms / 1000);
        if (!result || bytesRead == 0) {
            state.SkipWithError("the file did not load");
            return;
        }
        const double cpuMs = threadCpuMs() - cpuBefore;
        const double held = double(BenchSupport::residentBytes() - before);
        const double peak = double(BenchSupport::peakResidentBytes() - before);
        state.counters["load_ms"] = ms;
        state.counters["load_cpu_ms"] = cpuMs;
        state.counters["MB_per_s"] = double(bytesRead) / 1e6 / (ms / 1000);
        state.counters["store_mb"] = held / 1e6;
        state.counters["store_bytes_per_char"] = held / double(result->length());
        state.counters["peak_above_start_mb"] = peak / 1e6;
        state.counters["lines"] = double(result->lineCount());
        const qsizetype characters = result->length();
        result.reset();
        malloc_trim(0);
        state.counters["fresh_memory_cpu_ms"] = freshMemoryCpuMs(characters * 2);
    }
}
BENCHMARK(BM_Load)->ArgName("MB")->Arg(20)->Arg(100)->Iterations(1)->UseManualTime()->Unit(
    benchmark::kMillisecond);

/// For comparison on the same machine: the same file decoded whole and given to a
/// QTextDocument, as the editor's text is held today.
void BM_QTextDocumentForComparison(benchmark::State& state)
{
    const QString path = cSourceFile(state.range(0) * 1000 * 1000);
    for (auto _ : state) {
        malloc_trim(0);
        const qint64 before = BenchSupport::residentBytes();
        BenchSupport::resetPeakResident();
        const double cpu = threadCpuMs();
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            state.SkipWithError("the file did not open");
            return;
        }
        QTextDocument document;
        document.setPlainText(*TextCodec::decode(UTF8, file.readAll()));
        const double ms = threadCpuMs() - cpu;
        state.SetIterationTime(ms / 1000);
        state.counters["load_cpu_ms"] = ms;
        state.counters["document_mb"] = double(BenchSupport::residentBytes() - before) / 1e6;
        state.counters["peak_above_start_mb"] =
            double(BenchSupport::peakResidentBytes() - before) / 1e6;
    }
}
BENCHMARK(BM_QTextDocumentForComparison)
    ->ArgName("MB")
    ->Arg(20)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// 10,000 characters typed one by one at random places in the middle fifth of the text,
/// undo steps and change notifications included, then the same through the tree alone.
void BM_InsertsInTheMiddle(benchmark::State& state)
{
    TextStore& store = largeStore();
    const qsizetype length = store.text().length();
    std::mt19937 random(1);
    std::uniform_int_distribution<qsizetype> middle(length * 2 / 5, length * 3 / 5);
    for (auto _ : state) {
        malloc_trim(0);
        const qint64 before = BenchSupport::residentBytes();
        QElapsedTimer timer;
        timer.start();
        double cpu = threadCpuMs();
        for (int i = 0; i < 10'000; ++i) {
            store.insert(middle(random), QStringLiteral("x"), QStringLiteral("Typing"),
                         TextStore::EditKind::Typing);
        }
        const double storeUs = timer.nsecsElapsed() / 1e3 / 10'000;
        const double storeCpuUs = (threadCpuMs() - cpu) * 1e3 / 10'000;
        // What the edits added to the memory in use (the chunks they replaced are freed).
        malloc_trim(0);
        state.counters["store_growth_mb"] = double(BenchSupport::residentBytes() - before) / 1e6;
        TextTree::NodePtr root = store.text().root();
        timer.restart();
        cpu = threadCpuMs();
        for (int i = 0; i < 10'000; ++i) {
            root = TextTree::replace(root, middle(random), 0, u"x");
        }
        const double treeUs = timer.nsecsElapsed() / 1e3 / 10'000;
        const double treeCpuUs = (threadCpuMs() - cpu) * 1e3 / 10'000;
        state.SetIterationTime(storeUs * 10'000 / 1e6);
        state.counters["store_insert_us"] = storeUs;
        state.counters["store_insert_cpu_us"] = storeCpuUs;
        state.counters["tree_insert_us"] = treeUs;
        state.counters["tree_insert_cpu_us"] = treeCpuUs;
        state.counters["undo_steps"] = double(store.undoStack()->count());
    }
}
BENCHMARK(BM_InsertsInTheMiddle)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

/// 10,000 characters typed at one place in the middle, as a user types: one chunk takes
/// them, and the typing merges into undo steps.
void BM_TypingAtOnePlace(benchmark::State& state)
{
    TextStore& store = largeStore();
    const QString word = QStringLiteral("typed ");
    for (auto _ : state) {
        qsizetype at = store.text().length() / 2;
        const double cpu = threadCpuMs();
        for (int i = 0; i < 10'000; ++i) {
            store.insert(at++, word.at(i % word.size()), QStringLiteral("Typing"),
                         TextStore::EditKind::Typing);
        }
        const double us = (threadCpuMs() - cpu) * 1e3 / 10'000;
        state.SetIterationTime(us * 10'000 / 1e6);
        state.counters["insert_cpu_us"] = us;
    }
}
BENCHMARK(BM_TypingAtOnePlace)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_PositionToLine(benchmark::State& state)
{
    const TextSnapshot text = largeStore().text();
    std::mt19937 random(2);
    std::uniform_int_distribution<qsizetype> anywhere(0, text.length());
    qsizetype sum = 0;
    for (auto _ : state) {
        sum += text.lineAt(anywhere(random));
    }
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(BM_PositionToLine);

void BM_LineToPosition(benchmark::State& state)
{
    const TextSnapshot text = largeStore().text();
    std::mt19937 random(3);
    std::uniform_int_distribution<qsizetype> anyLine(0, text.lineCount() - 1);
    qsizetype sum = 0;
    for (auto _ : state) {
        sum += text.lineStart(anyLine(random));
    }
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(BM_LineToPosition);

void BM_LineText(benchmark::State& state)
{
    const TextSnapshot text = largeStore().text();
    std::mt19937 random(4);
    std::uniform_int_distribution<qsizetype> anyLine(0, text.lineCount() - 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.line(anyLine(random)));
    }
}
BENCHMARK(BM_LineText);

void BM_TakeSnapshot(benchmark::State& state)
{
    TextStore& store = largeStore();
    for (auto _ : state) {
        TextSnapshot snapshot = store.text();
        benchmark::DoNotOptimize(snapshot);
    }
}
BENCHMARK(BM_TakeSnapshot);

/// A worker counts the line feeds of a snapshot, chunk by chunk, while this thread makes
/// 10,000 edits: what the worker reads is the text as it was when the snapshot was taken.
void BM_SnapshotReadWhileEditing(benchmark::State& state)
{
    TextStore& store = largeStore();
    std::mt19937 random(5);
    for (auto _ : state) {
        const TextSnapshot snapshot = store.text();
        const qsizetype lines = snapshot.lineCount();
        std::atomic<bool> editing{true};
        std::atomic<int> passes{0};
        std::atomic<bool> same{true};
        double readMs = 0;
        std::thread worker([&] {
            const double cpu = threadCpuMs();
            do {
                qsizetype feeds = 0;
                for (TextChunkIterator chunks(snapshot, 0); !chunks.atEnd(); chunks.next()) {
                    feeds += chunks.chunk().count(u'\n');
                }
                same = same && feeds + 1 == lines;
                ++passes;
            } while (editing);
            readMs = (threadCpuMs() - cpu) / passes;
        });
        QElapsedTimer timer;
        timer.start();
        const double cpu = threadCpuMs();
        for (int i = 0; i < 10'000; ++i) {
            const qsizetype at =
                std::uniform_int_distribution<qsizetype>(0, store.text().length() - 1)(random);
            if (i % 2 == 0) {
                store.insert(at, QStringLiteral("\n"));
            } else {
                store.remove(at, 1);
            }
        }
        const double editUs = timer.nsecsElapsed() / 1e3 / 10'000;
        const double editCpuUs = (threadCpuMs() - cpu) * 1e3 / 10'000;
        editing = false;
        worker.join();
        if (!same) {
            state.SkipWithError("the snapshot changed under the worker");
            return;
        }
        state.SetIterationTime(editUs * 10'000 / 1e6);
        state.counters["edit_us"] = editUs;
        state.counters["edit_cpu_us"] = editCpuUs;
        state.counters["worker_pass_cpu_ms"] = readMs;
        state.counters["worker_passes"] = passes.load();
    }
}
BENCHMARK(BM_SnapshotReadWhileEditing)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return BenchSupport::runWithApplication(argc, argv);
}
