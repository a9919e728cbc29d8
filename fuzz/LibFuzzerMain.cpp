// The libFuzzer side of one fuzz target: a private home for the settings, the application
// object the code expects, and the one target linked in.
#include "FuzzTarget.h"
#include "app/Application.h"

#include <QByteArray>
#include <QDir>

#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    char pattern[] = "/tmp/tessaran-fuzz-XXXXXX";
    const char* home = mkdtemp(pattern);
    if (!home) {
        std::abort();
    }
    const std::string base(home);
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        const std::string path = std::string(name) == "HOME" ? base : base + "/" + name;
        QDir().mkpath(QString::fromStdString(path));
        setenv(name, path.c_str(), 1);
    }
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static Application application(*argc, *argv);
    if (FuzzTarget::targets().size() != 1) {
        std::abort();
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzTarget::targets().front().entry(data, size);
    return 0;
}
