#pragma once

#include "scripts/ScriptObject.h"

#include <QPair>
#include <QString>
#include <QStringList>

class ScriptManager;

/// The commands that change the script library: the tree held by the script manager as
/// scriptDataSource and the files in the Script folder. A null folder stands for the top
/// level. Every change tells the script manager, which has the Scripts menus rebuilt and
/// the script panes reloaded.
class ScriptLibrary
{
public:
    /// The library of `manager` (which owns it).
    explicit ScriptLibrary(ScriptManager& manager);

    /// The entries of `folder` (the top level for null).
    ScriptObjectList entries(const ScriptObjectPtr& folder) const;
    /// The folder holding `node` (null for the top level) and its index there; false when
    /// the node is not in the library.
    bool locate(const ScriptObjectPtr& node, ScriptObjectPtr& folder, qsizetype& index) const;
    /// Every folder, depth first, with its depth (0 at the top level).
    QList<QPair<ScriptObjectPtr, int>> folders() const;
    /// The full path of a script's file in the Script folder.
    static QString filePathOf(const ScriptObjectPtr& script);

    /// Writes `text` in `encoding` to the Script folder as `name`.`extension` and adds
    /// the script at the end of `folder`. False, changing nothing, when that file name is
    /// taken or the file cannot be written.
    bool addScript(const QString& name, const QString& extension, const QString& text,
                   quint64 encoding, const ScriptObjectPtr& folder);
    /// Adds a folder node at the end of `folder`.
    ScriptObjectPtr addScriptFolder(const QString& name, const ScriptObjectPtr& folder);
    /// Copies each file of an importable type ("sh", "js", "scpt", "applescript") into the
    /// Script folder and adds it at the end of the top level. Returns the files refused
    /// (their name is taken in the Script folder, or the copy failed).
    QStringList importFiles(const QStringList& paths);
    static const QStringList& importableTypes();
    /// Gives a folder a new name, or a script a new file name (the typed name with its old
    /// extension) and moves its file. False, changing nothing, when the file name is taken
    /// or the file cannot be moved.
    bool rename(const ScriptObjectPtr& node, const QString& name);
    /// Removes the node; the files of a script, or of every script below a folder at any
    /// depth, are deleted.
    void remove(const ScriptObjectPtr& node);
    /// Adds an entry at the end of the top level for every script file of the Script folder
    /// that no entry names (files put there by hand), in the order of their names; returns
    /// their file names. Hidden files and files of other types are left out.
    QStringList adoptScriptFiles();
    /// The extensions of the files the library runs.
    static const QStringList& scriptTypes();
    /// Moves the nodes, in order, to `index` of `folder`; false when a folder would go into
    /// itself or the index is out of range. Files never move.
    bool move(const ScriptObjectList& nodes, const ScriptObjectPtr& folder, qsizetype index);

private:
    void setEntries(const ScriptObjectPtr& folder, const ScriptObjectList& list);
    static void removeChildScriptObject(const ScriptObjectPtr& folder);
    void changed();

    ScriptManager& _manager;
};
