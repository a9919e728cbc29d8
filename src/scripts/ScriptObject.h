#pragma once

#include <QList>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <optional>

class ScriptObject;
using ScriptObjectPtr = std::shared_ptr<ScriptObject>;
using ScriptObjectList = QList<ScriptObjectPtr>;

/// A node of the script library: a script (a leaf naming its file in the Script folder)
/// or a folder, which exists only in the tree.
class ScriptObject
{
public:
    /// Keeps only the last component of `path`; a folder starts with no children.
    ScriptObject(const QString& path, bool isLeaf);
    static ScriptObjectPtr initWithPath(const QString& path, bool isLeaf);

    const QString& path() const { return _path; }
    void setPath(const QString& path);
    /// A folder's entries in display order; none for a leaf.
    const std::optional<ScriptObjectList>& children() const { return _children; }
    void setChildren(std::optional<ScriptObjectList> children) { _children = std::move(children); }
    bool isLeaf() const { return _isLeaf; }
    void setIsLeaf(bool isLeaf) { _isLeaf = isLeaf; }
    /// Installed with the application at first start.
    bool initApp() const { return _initApp; }
    void setInitApp(bool initApp) { _initApp = initApp; }

    /// The file name without its last extension ("tool.min.sh" → "tool.min").
    QString title() const;
    qsizetype numberOfChildren() const;
    /// Null for a leaf or an index past the end.
    ScriptObjectPtr childAtIndex(qsizetype index) const;
    void addChildren(const ScriptObjectPtr& child);

    /// The node as a property-list dictionary with the keys "Path", "Children" (folders
    /// only), "IsLeaf" and "initApp".
    QVariantMap encode() const;
    /// The node read back from encode()'s form; missing flags read as false, missing
    /// objects as none. Null when `dictionary` is not a node.
    static ScriptObjectPtr decode(const QVariant& dictionary);

private:
    QString _path;
    std::optional<ScriptObjectList> _children;
    bool _initApp = false;
    bool _isLeaf = true;
};
