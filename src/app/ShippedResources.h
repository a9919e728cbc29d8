#pragma once

#include <QString>
#include <QStringList>

/// What ships with the application for the user's own folders: the syntax definitions and the
/// example scripts, copied there on the first start, where the user may edit them.
class ShippedResources
{
public:
    /// The syntax definitions, in installation order.
    static const QStringList& syntaxNames();
    /// The example scripts: the in-process group, then the shell group; names with their file
    /// extensions.
    static const QStringList& inProcessScripts();
    static const QStringList& shellScripts();

    /// Copies the definitions and the scripts into the user's folders, makes the script library
    /// of the scripts and writes it, and notes that the first start is over.
    static void install();
    /// Copies a shipped resource into the user's folder; an existing file is never replaced.
    static void copyResource(const QString& resource, const QString& destination);
};
