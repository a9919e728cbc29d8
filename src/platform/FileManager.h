#pragma once

#include <QString>

/// The paths of the user's support folder, $XDG_DATA_HOME/Tessaran, and of the folders
/// inside it. A null QString means the folder could not be found or created.
class FileManager
{
public:
    /// Search-path directories and domains understood by findOrCreateDirectory().
    enum SearchPathDirectory { ApplicationSupportDirectory = 14 };
    enum SearchPathDomain { UserDomainMask = 1 };

    /// The folder for `directory` in `domain`, with `appendPathComponent` joined when it is
    /// not empty; the folder is created with its parents. Null when there is no such folder
    /// or it cannot be created.
    static QString findOrCreateDirectory(int directory, int domain,
                                         const QString& appendPathComponent = {});
    /// The support folder, created when missing.
    static QString applicationSupportDirectoryPath();
    /// The syntax folder, or the file of that name inside it (neither is created).
    static QString syntaxDefinitionDirectoryPathInPath(const QString& fileName = {});
    /// The script folder, or the file of that name inside it (neither is created).
    static QString scriptDirectoryPathInPath(const QString& fileName = {});

    /// The folder a save keeps the old bytes of a file in while it writes the file in place.
    static QString backupDirectoryPath();
    /// Whether this process may write the file: its permissions, ACLs and a read-only mount
    /// all count. A missing file counts as writable when its folder is.
    static bool isWritableFile(const QString& path);

    static QString applicationName() { return QStringLiteral("Tessaran"); }
};
