#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

/// The folder of syntax definitions in the support folder, as the choice of a window's
/// definition reads it: its files in the order the folder lists them.
///
/// Every window that opens looks through the definitions for its file's extension, and a
/// user's definition may be megabytes long: a definition is read when first needed and kept,
/// and read again only when its file changes.
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

    /// The dictionary the file at `path` holds, read again only when the file's size, time
    /// or identity changed since it was last read; none when it is not a definition.
    static std::optional<QVariantMap> definition(const QString& path);
};
