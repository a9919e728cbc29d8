// Preloaded (LD_PRELOAD) into a test process to make chosen system calls fail on chosen files,
// the way a failing disk, a server or a file system without some feature makes them fail.
// Nothing happens until the environment asks for it, and the environment is read at each
// call, so a test may change it between two saves:
//   TESSARAN_FAULT_PATH   a shell pattern (fnmatch) for the files concerned; for a call made on
//                         a descriptor, the name the kernel gives it ("/dir/#123 (deleted)" for
//                         a file without a name yet)
//   TESSARAN_FAULT_CALLS  the calls to fail, separated by commas: write (write, pwrite),
//                         fsync (fsync, fdatasync), close, rename, fchown, fsetxattr
//   TESSARAN_FAULT_ERRNO  the error number they fail with (EIO when not set)
//   TESSARAN_FAULT_COUNT  how many calls fail before they succeed again (all when not set);
//                         counted afresh whenever one of these four variables changes
// A failed close releases the descriptor all the same, as on Linux; the other calls fail
// without doing anything.
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <unistd.h>

extern "C" {
/// Present when the shim is loaded; tests look it up to make sure of that.
__attribute__((visibility("default"))) int tessaran_fault_shim_loaded = 1;
}

namespace {

std::mutex countLock;
std::string countedFor;
long failuresSoFar = 0;

const char* variable(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

bool listed(const char* calls, const char* call)
{
    const size_t length = std::strlen(call);
    for (const char* at = calls; (at = std::strstr(at, call)) != nullptr; at += length) {
        const bool starts = at == calls || at[-1] == ',';
        const bool ends = at[length] == '\0' || at[length] == ',';
        if (starts && ends) {
            return true;
        }
    }
    return false;
}

// Whether `call` on `path` fails now; sets errno when it does. `path` is resolved only when the
// call is one of those asked for, so that unconcerned calls cost a getenv.
template <typename PathOf> bool injected(const char* call, PathOf pathOf)
{
    const char* pattern = variable("TESSARAN_FAULT_PATH");
    const char* calls = variable("TESSARAN_FAULT_CALLS");
    if (!*pattern || !listed(calls, call)) {
        return false;
    }
    const std::string path = pathOf();
    if (path.empty() || fnmatch(pattern, path.c_str(), 0) != 0) {
        return false;
    }
    const char* error = variable("TESSARAN_FAULT_ERRNO");
    const char* count = variable("TESSARAN_FAULT_COUNT");
    {
        const std::lock_guard<std::mutex> guard(countLock);
        const std::string configuration =
            std::string(pattern) + '\n' + calls + '\n' + error + '\n' + count;
        if (configuration != countedFor) {
            countedFor = configuration;
            failuresSoFar = 0;
        }
        const long limit = std::atol(count);
        if (limit > 0 && failuresSoFar >= limit) {
            return false;
        }
        ++failuresSoFar;
    }
    errno = *error ? std::atoi(error) : EIO;
    return true;
}

std::string descriptorPath(int fd)
{
    char link[64];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    char target[PATH_MAX];
    const ssize_t length = readlink(link, target, sizeof target - 1);
    return length > 0 ? std::string(target, size_t(length)) : std::string();
}

std::string absolutePath(int folder, const char* path)
{
    if (!path || path[0] == '/') {
        return path ? path : "";
    }
    std::string base;
    if (folder == AT_FDCWD) {
        char cwd[PATH_MAX];
        base = getcwd(cwd, sizeof cwd) ? cwd : "";
    } else {
        base = descriptorPath(folder);
    }
    return base + '/' + path;
}

template <typename Function> Function next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool onDescriptor(const char* call, int fd)
{
    return injected(call, [fd] { return descriptorPath(fd); });
}

bool onEitherPath(int fromFolder, const char* from, int toFolder, const char* to)
{
    const std::string source = absolutePath(fromFolder, from);
    const std::string destination = absolutePath(toFolder, to);
    return injected("rename", [&] { return source; }) ||
           injected("rename", [&] { return destination; });
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) ssize_t write(int fd, const void* data, size_t size)
{
    static const auto real = next<ssize_t (*)(int, const void*, size_t)>("write");
    return onDescriptor("write", fd) ? -1 : real(fd, data, size);
}

__attribute__((visibility("default"))) ssize_t pwrite(int fd, const void* data, size_t size,
                                                      off_t offset)
{
    static const auto real = next<ssize_t (*)(int, const void*, size_t, off_t)>("pwrite");
    return onDescriptor("write", fd) ? -1 : real(fd, data, size, offset);
}

__attribute__((visibility("default"))) ssize_t pwrite64(int fd, const void* data, size_t size,
                                                        off_t offset)
{
    static const auto real = next<ssize_t (*)(int, const void*, size_t, off_t)>("pwrite64");
    return onDescriptor("write", fd) ? -1 : real(fd, data, size, offset);
}

__attribute__((visibility("default"))) int fsync(int fd)
{
    static const auto real = next<int (*)(int)>("fsync");
    return onDescriptor("fsync", fd) ? -1 : real(fd);
}

__attribute__((visibility("default"))) int fdatasync(int fd)
{
    static const auto real = next<int (*)(int)>("fdatasync");
    return onDescriptor("fsync", fd) ? -1 : real(fd);
}

__attribute__((visibility("default"))) int close(int fd)
{
    static const auto real = next<int (*)(int)>("close");
    if (onDescriptor("close", fd)) {
        const int error = errno;
        real(fd);
        errno = error;
        return -1;
    }
    return real(fd);
}

__attribute__((visibility("default"))) int rename(const char* from, const char* to) noexcept
{
    static const auto real = next<int (*)(const char*, const char*)>("rename");
    return onEitherPath(AT_FDCWD, from, AT_FDCWD, to) ? -1 : real(from, to);
}

__attribute__((visibility("default"))) int renameat(int fromFolder, const char* from, int toFolder,
                                                    const char* to) noexcept
{
    static const auto real = next<int (*)(int, const char*, int, const char*)>("renameat");
    return onEitherPath(fromFolder, from, toFolder, to) ? -1 : real(fromFolder, from, toFolder, to);
}

__attribute__((visibility("default"))) int renameat2(int fromFolder, const char* from, int toFolder,
                                                     const char* to, unsigned int flags) noexcept
{
    static const auto real =
        next<int (*)(int, const char*, int, const char*, unsigned int)>("renameat2");
    return onEitherPath(fromFolder, from, toFolder, to)
               ? -1
               : real(fromFolder, from, toFolder, to, flags);
}

__attribute__((visibility("default"))) int fchown(int fd, uid_t owner, gid_t group) noexcept
{
    static const auto real = next<int (*)(int, uid_t, gid_t)>("fchown");
    return onDescriptor("fchown", fd) ? -1 : real(fd, owner, group);
}

__attribute__((visibility("default"))) int fsetxattr(int fd, const char* name, const void* value,
                                                     size_t size, int flags) noexcept
{
    static const auto real = next<int (*)(int, const char*, const void*, size_t, int)>("fsetxattr");
    return onDescriptor("fsetxattr", fd) ? -1 : real(fd, name, value, size, flags);
}

} // extern "C"
