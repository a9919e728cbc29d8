#pragma once

#include <QStringList>

/// Titles for a list of files, as menus show them: each file's name, and where two files
/// share a name, as much of their folders' paths as tells them apart ("main.cpp — src/app",
/// "main.cpp — tests/app").
class FileTitles
{
public:
    /// One title per path, in the same order. The paths are absolute and distinct.
    static QStringList distinctTitles(const QStringList& paths);
    /// The folder's path with the home folder written as "~".
    static QString abbreviatedPath(const QString& path);
};
