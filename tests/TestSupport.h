#pragma once

#include <QByteArray>
#include <QString>

/// Shared helpers for the tests.
namespace TestSupport {

/// A fresh folder for one test, removed when the test program ends.
QString makeTempDir();
/// Writes `bytes` to `path`, creating its folder; returns the path.
QString writeFile(const QString& path, const QByteArray& bytes);
QByteArray readFile(const QString& path);

} // namespace TestSupport
