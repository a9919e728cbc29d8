#include "FuzzTarget.h"

namespace FuzzTarget {

std::vector<Target>& targets()
{
    static std::vector<Target> all;
    return all;
}

bool add(const char* name, Entry entry)
{
    targets().push_back({name, entry});
    return true;
}

} // namespace FuzzTarget
