#pragma once

#include <QColor>
#include <QString>

class UserDefaults;

/// Builds and configures an editor pane.
class EditorController
{
public:
    /// The colour stored under `key`; an invalid QColor when the key has no value or its
    /// data is not a colour archive. Every colour setting is read through here.
    static QColor keyedUnarchiverOfUserDefaults(const UserDefaults& defaults, const QString& key);
};
