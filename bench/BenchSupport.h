#pragma once

#include <QByteArray>
#include <QString>

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

/// Resident memory of the process now, in bytes.
qint64 residentBytes();
/// Forgets the process's high-water mark of resident memory, so that peakResidentBytes()
/// measures from here.
void resetPeakResident();
/// The high-water mark of resident memory, in bytes.
qint64 peakResidentBytes();

} // namespace BenchSupport
