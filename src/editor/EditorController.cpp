#include "editor/EditorController.h"

#include "platform/ColorArchive.h"
#include "platform/UserDefaults.h"

QColor EditorController::keyedUnarchiverOfUserDefaults(const UserDefaults& defaults,
                                                       const QString& key)
{
    return ColorArchive::unarchive(defaults.dataForKey(key));
}
