#include "scripts/ScriptObject.h"

#include <QFileInfo>

namespace {

QString lastComponent(const QString& path)
{
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(u'/')) {
        trimmed.chop(1);
    }
    const qsizetype slash = trimmed.lastIndexOf(u'/');
    return slash < 0 ? trimmed : trimmed.mid(slash + 1);
}

} // namespace

ScriptObject::ScriptObject(const QString& path, bool isLeaf)
    : _path(lastComponent(path))
    , _isLeaf(isLeaf)
{
    if (!isLeaf) {
        _children = ScriptObjectList();
    }
}

ScriptObjectPtr ScriptObject::initWithPath(const QString& path, bool isLeaf)
{
    return std::make_shared<ScriptObject>(path, isLeaf);
}

void ScriptObject::setPath(const QString& path)
{
    _path = lastComponent(path);
}

QString ScriptObject::title() const
{
    const qsizetype dot = _path.lastIndexOf(u'.');
    return dot <= 0 ? _path : _path.left(dot);
}

qsizetype ScriptObject::numberOfChildren() const
{
    return _children ? _children->size() : 0;
}

ScriptObjectPtr ScriptObject::childAtIndex(qsizetype index) const
{
    if (!_children || index < 0 || index >= _children->size()) {
        return nullptr;
    }
    return _children->at(index);
}

void ScriptObject::addChildren(const ScriptObjectPtr& child)
{
    if (!_children) {
        _children = ScriptObjectList();
    }
    _children->append(child);
}

QVariantMap ScriptObject::encode() const
{
    QVariantMap map{{QStringLiteral("Path"), _path},
                    {QStringLiteral("IsLeaf"), _isLeaf},
                    {QStringLiteral("initApp"), _initApp}};
    if (_children) {
        QVariantList list;
        for (const ScriptObjectPtr& child : *_children) {
            list.append(child->encode());
        }
        map.insert(QStringLiteral("Children"), list);
    }
    return map;
}

ScriptObjectPtr ScriptObject::decode(const QVariant& dictionary)
{
    if (dictionary.typeId() != QMetaType::QVariantMap) {
        return nullptr;
    }
    const QVariantMap map = dictionary.toMap();
    auto node = std::make_shared<ScriptObject>(map.value(QStringLiteral("Path")).toString(), true);
    node->_isLeaf = map.value(QStringLiteral("IsLeaf")).toBool();
    node->_initApp = map.value(QStringLiteral("initApp")).toBool();
    const QVariant children = map.value(QStringLiteral("Children"));
    if (children.typeId() == QMetaType::QVariantList) {
        ScriptObjectList list;
        for (const QVariant& item : children.toList()) {
            if (ScriptObjectPtr child = decode(item)) {
                list.append(child);
            }
        }
        node->_children = list;
    }
    return node;
}
