#pragma once

#include "editor/EditorController.h"

#include <QByteArray>
#include <QString>

#include <functional>

/// Shared helpers for the benchmarks: large input files and memory figures.
namespace BenchSupport {

/// A file of about `bytes` bytes made of `chunk` repeated, in a folder removed when the
/// program ends. Made once per name and program run.
QString largeFile(const QString& name, qint64 bytes, const QByteArray& chunk);

/// About a megabyte of program text: C++ with English and some Japanese, German and
/// Russian comments and strings, as a source tree mixes them.
QString mixedSourceText();
/// About a megabyte of Japanese prose with some ASCII, in lines.
QString japaneseProse();

/// The whole of a benchmark program that needs the application: a private home, the
/// application object, then the benchmarks the command line asks for. Returns main()'s status.
int runWithApplication(int argc, char** argv);

/// Runs `release` when the benchmarks have run, while the application still stands: what
/// a benchmark keeps across runs (windows, documents) must go before the application does.
/// Releases run in the reverse order of their registration.
void releaseBeforeApplicationEnds(std::function<void()> release);

/// An editor pane as a window makes one: the shared managers and the shipped settings.
std::unique_ptr<EditorController> makeEditorController();

/// CPU time of the whole process (every thread) in milliseconds.
double processCpuMilliseconds();

/// What the application did until it was idle again.
struct Idle {
    /// From the call until the last stretch of work ended.
    double busyMs = 0;
    /// CPU time of the process (workers included) in that time.
    double cpuMs = 0;
};
/// Runs the event loop until the process has used no CPU worth counting for `quietMs`
/// (longer than any delayed work of the editor, so timers due later are waited for too),
/// or `limitMs` have passed. What the application did meanwhile is counted up to where
/// the quiet began.
Idle waitUntilIdle(int quietMs = 1200, int limitMs = 120000);

/// Resident memory of the process now, in bytes.
qint64 residentBytes();
/// Forgets the process's high-water mark of resident memory, so that peakResidentBytes()
/// measures from here.
void resetPeakResident();
/// The high-water mark of resident memory, in bytes.
qint64 peakResidentBytes();

} // namespace BenchSupport
