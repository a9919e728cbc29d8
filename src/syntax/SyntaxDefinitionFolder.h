#pragma once

#include <QString>
#include <QStringList>

/// The folder of syntax definitions in the support folder, as the choice of a window's
/// definition reads it: its files in the order the folder lists them.
class SyntaxDefinitionFolder
{
public:
    /// The paths of the folder's files, in the folder's own order.
    static QStringList definitionPaths();
    /// The first definition (in folder order) whose "Extensions" holds `extension` exactly
    /// (case counts; the empty string stands for files without extension); files that are
    /// not definitions are skipped. Empty when none does.
    static QString definitionPathForExtension(const QString& extension);
    /// Every definition file whose name without extension is `name`.
    static QStringList definitionPathsNamed(const QString& name);
    /// A definition file's name without its extension ("Objective C").
    static QString syntaxNameOfPath(const QString& path);
};
