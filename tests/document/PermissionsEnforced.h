#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

// Root writes anywhere, whatever the permissions say. For as long as this lives, the calling
// thread (the one that saves) gives up that privilege, so permissions count for it as for
// everyone else; nothing changes for other users.
class PermissionsEnforced
{
public:
    PermissionsEnforced()
    {
        if (geteuid() != 0 || syscall(SYS_capget, &_header, _saved) != 0) {
            return;
        }
        __user_cap_data_struct reduced[2] = {_saved[0], _saved[1]};
        const unsigned mask = (1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH);
        reduced[0].effective &= ~mask;
        _active = syscall(SYS_capset, &_header, reduced) == 0;
    }
    ~PermissionsEnforced()
    {
        if (_active) {
            syscall(SYS_capset, &_header, _saved);
        }
    }
    PermissionsEnforced(const PermissionsEnforced&) = delete;
    PermissionsEnforced& operator=(const PermissionsEnforced&) = delete;

private:
    __user_cap_header_struct _header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct _saved[2]{};
    bool _active = false;
};
