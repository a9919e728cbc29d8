#include "platform/NotificationCenter.h"

NotificationCenter& NotificationCenter::defaultCenter()
{
    // Never destroyed: receivers may still disconnect from it while static objects go.
    static NotificationCenter* center = new NotificationCenter;
    return *center;
}
