#include "BenchSupport.h"

#include "PrivateHome.h"
#include "app/Application.h"
#include "editor/CompletionManager.h"
#include "editor/TextView.h"
#include "platform/Preferences.h"
#include "platform/SpellChecker.h"
#include "syntax/SyntaxManager.h"

#include <QApplication>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QHash>
#include <QTemporaryDir>
#include <QThread>
#include <QThreadPool>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <ctime>
#include <memory>
#include <utility>
#include <vector>

namespace BenchSupport {

namespace {

qint64 statusField(const char* name)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return -1;
    }
    const QByteArray key = QByteArray(name) + ':';
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(key)) {
            return line.mid(key.size()).trimmed().split(' ').value(0).toLongLong() * 1024;
        }
    }
    return -1;
}

} // namespace

QString largeFile(const QString& name, qint64 bytes, const QByteArray& chunk)
{
    static QTemporaryDir dir;
    static QHash<QString, QString> made;
    if (const auto found = made.constFind(name); found != made.cend()) {
        return *found;
    }
    const QString path = dir.path() + u'/' + name;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || chunk.isEmpty()) {
        return {};
    }
    for (qint64 written = 0; written < bytes; written += chunk.size()) {
        file.write(chunk);
    }
    file.close();
    made.insert(name, path);
    return path;
}

QString mixedSourceText()
{
    const QString lines[] = {
        u"#include <vector>\n"_qs,
        u"// Returns the sum of the values; an empty range sums to zero.\n"_qs,
        u"static int sum(const std::vector<int>& values) {\n"_qs,
        u"    int total = 0; // 合計値を保持する\n"_qs,
        u"    for (int value : values) { total += value; }\n"_qs,
        u"    return total;\n"_qs,
        u"}\n"_qs,
        u"const char* greeting = \"Grüße aus München\"; // приветствие\n"_qs,
        u"\n"_qs,
        u"int main(int argc, char** argv) { return sum({argc, 1, 2, 3}) > 0 ? 0 : 1; }\n"_qs,
    };
    QString text;
    for (int i = 0; text.size() < (1 << 20); ++i) {
        text += lines[i % std::size(lines)];
    }
    return text;
}

QString japaneseProse()
{
    const QString sentences[] = {
        u"吾輩は猫である。名前はまだ無い。"_qs,
        u"どこで生れたかとんと見当がつかぬ。"_qs,
        u"何でも薄暗いじめじめした所でニャーニャー泣いていた事だけは記憶している。\n"_qs,
        u"吾輩はここで始めて人間というものを見た。"_qs,
        u"しかもあとで聞くとそれは書生という人間中で一番獰悪な種族であったそうだ。\n"_qs,
        u"Version 2.0 (2024) では、ＵＴＦ－８と Shift_JIS の両方に対応しています。\n"_qs,
    };
    QString text;
    for (int i = 0; text.size() < (1 << 19); ++i) {
        text += sentences[i % std::size(sentences)];
    }
    return text;
}

qint64 residentBytes()
{
    return statusField("VmRSS");
}

void resetPeakResident()
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly)) {
        clear.write("5");
    }
}

qint64 peakResidentBytes()
{
    return statusField("VmHWM");
}

namespace {

std::vector<std::function<void()>>& releases()
{
    static std::vector<std::function<void()>> waiting;
    return waiting;
}

} // namespace

void releaseBeforeApplicationEnds(std::function<void()> release)
{
    releases().push_back(std::move(release));
}

double processCpuMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

namespace {

// Counts the events the application handles on its own thread, except those of the wait's
// own timer and loop.
class EventCounter : public QObject
{
public:
    explicit EventCounter(const QObject* own)
        : _own(own)
    {
        QCoreApplication::instance()->installEventFilter(this);
    }
    ~EventCounter() override { QCoreApplication::instance()->removeEventFilter(this); }
    int take() { return std::exchange(_events, 0); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched != _own && watched->parent() != _own &&
            event->type() != QEvent::DeferredDelete) {
            ++_events;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    const QObject* _own;
    int _events = 0;
};

} // namespace

Idle waitUntilIdle(int quietMs, int limitMs)
{
    // Slices of waiting in the event loop (which sleeps while nothing happens). A slice is
    // quiet when the application handled no event of its own (a timer, a posted call, a
    // paint), no worker ran and the process used little CPU. CPU alone is no measure on a
    // loaded machine: waking up from the loop's own 50 ms timer sometimes costs more than a
    // millisecond there, so that a strict threshold never saw an idle application go quiet.
    constexpr int kSliceMs = 50;
    constexpr double kBusyCpuMs = 5;
    QElapsedTimer timer;
    timer.start();
    const double cpuStart = processCpuMilliseconds();
    Idle idle;
    double quietSince = 0;
    double cpuAtQuiet = cpuStart;
    bool quiet = false;
    QObject own;
    EventCounter events(&own);
    while (timer.elapsed() < limitMs) {
        const double sliceStart = double(timer.nsecsElapsed()) / 1e6;
        const double cpuBefore = processCpuMilliseconds();
        {
            QEventLoop loop(&own);
            QTimer slice(&own);
            slice.setSingleShot(true);
            QObject::connect(&slice, &QTimer::timeout, &loop, &QEventLoop::quit);
            slice.start(kSliceMs);
            loop.exec();
        }
        const double used = processCpuMilliseconds() - cpuBefore;
        const bool busy = events.take() > 0 || used >= kBusyCpuMs ||
                          QThreadPool::globalInstance()->activeThreadCount() > 0;
        if (busy) {
            quiet = false;
        } else if (!quiet) {
            quiet = true;
            quietSince = sliceStart;
            cpuAtQuiet = cpuBefore;
        }
        if (quiet && double(timer.nsecsElapsed()) / 1e6 - quietSince >= quietMs) {
            break;
        }
    }
    idle.busyMs = quiet ? quietSince : double(timer.nsecsElapsed()) / 1e6;
    idle.cpuMs = (quiet ? cpuAtQuiet : processCpuMilliseconds()) - cpuStart;
    return idle;
}

std::unique_ptr<EditorController> makeEditorController()
{
    const EditorServices services{CompletionManager::sharedCompletionManager(),
                                  SyntaxManager::sharedSyntaxManager(),
                                  SpellChecker::sharedSpellChecker()};
    return std::make_unique<EditorController>(services,
                                              Preferences::sharedPreferences().values().editor);
}

int runWithApplication(int argc, char** argv)
{
    const PrivateHome home("bench");
    Application app(argc, argv);
    // A blinking caret repaints twice a second: waiting until idle would never end, and
    // the keys' figures would carry the blinking's cost.
    QApplication::setCursorFlashTime(0);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    auto& waiting = releases();
    while (!waiting.empty()) {
        const std::function<void()> release = std::move(waiting.back());
        waiting.pop_back();
        release();
    }
    QThreadPool::globalInstance()->waitForDone();
    return 0;
}

} // namespace BenchSupport
