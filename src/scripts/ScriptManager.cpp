#include "scripts/ScriptManager.h"

#include "app/Application.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"

namespace {

const QString kScriptAllItems = QStringLiteral("ScriptAllItems");
const QString kScriptObjects = QStringLiteral("ScriptObjects");

} // namespace

ScriptManager::ScriptManager(QObject* parent)
    : QObject(parent)
{}

ScriptManager& ScriptManager::sharedScriptManager()
{
    static ScriptManager* manager = new ScriptManager(Application::instance());
    return *manager;
}

QByteArray ScriptManager::archivedScriptDataSource(const ScriptObjectList& nodes)
{
    QVariantList list;
    for (const ScriptObjectPtr& node : nodes) {
        list.append(node->encode());
    }
    return PropertyList::toXml(QVariantMap{{kScriptObjects, list}});
}

std::optional<ScriptObjectList> ScriptManager::unarchivedScriptDataSource(const QByteArray& data)
{
    const QVariant root = PropertyList::fromData(data);
    const QVariant nodes = root.toMap().value(kScriptObjects);
    if (nodes.typeId() != QMetaType::QVariantList) {
        return std::nullopt;
    }
    ScriptObjectList result;
    for (const QVariant& item : nodes.toList()) {
        if (ScriptObjectPtr node = ScriptObject::decode(item)) {
            result.append(node);
        }
    }
    return result;
}

void ScriptManager::readScriptDataSource()
{
    const QByteArray data = UserDefaults::standardUserDefaults().dataForKey(kScriptAllItems);
    Application::instance()->setScriptDataSource(
        unarchivedScriptDataSource(data).value_or(ScriptObjectList()));
}

void ScriptManager::writeScriptDataSource()
{
    const auto& nodes = Application::instance()->scriptDataSource();
    UserDefaults::standardUserDefaults().setObject(
        archivedScriptDataSource(nodes.value_or(ScriptObjectList())), kScriptAllItems);
}
