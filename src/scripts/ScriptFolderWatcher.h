#pragma once

#include <QObject>

class QFileSystemWatcher;
class ScriptLibrary;

/// Watches the Script folder: a script file put there by another program or by hand joins
/// the library (at the end of the top level) at once, without a restart, and so appears in
/// the Scripts menus and the script panes. Files already there when it starts join too.
class ScriptFolderWatcher : public QObject
{
    Q_OBJECT

public:
    /// Adds the files to `library`.
    explicit ScriptFolderWatcher(ScriptLibrary& library, QObject* parent = nullptr);

private:
    void folderChanged();

    ScriptLibrary& _library;
    QFileSystemWatcher* _watcher;
};
