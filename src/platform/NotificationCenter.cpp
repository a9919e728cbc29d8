#include "platform/NotificationCenter.h"

#include "platform/SharedInstance.h"

NotificationCenter& NotificationCenter::defaultCenter()
{
    return SharedInstance<NotificationCenter>::object();
}
