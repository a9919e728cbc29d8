#pragma once

#include "scripts/ScriptObject.h"

#include <QByteArray>
#include <QObject>

class UserDefaults;

/// The application's one script manager: it keeps the script library in the settings
/// between runs.
class ScriptManager : public QObject
{
    Q_OBJECT

public:
    static ScriptManager& sharedScriptManager();

    /// Loads the library from "ScriptAllItems" into the application's scriptDataSource;
    /// an empty library when the setting is missing or cannot be read.
    void readScriptDataSource();
    /// Stores the application's scriptDataSource into "ScriptAllItems".
    void writeScriptDataSource();

    /// The library's stored form: an XML property list whose root dictionary holds the
    /// top-level nodes under "ScriptObjects".
    static QByteArray archivedScriptDataSource(const ScriptObjectList& nodes);
    /// The nodes of an archive; none when `data` is not one.
    static std::optional<ScriptObjectList> unarchivedScriptDataSource(const QByteArray& data);

private:
    explicit ScriptManager(QObject* parent = nullptr);
};
