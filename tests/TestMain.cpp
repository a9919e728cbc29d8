// Every test program runs offscreen with a private HOME and private XDG folders, so no
// test ever reads or writes a real user's settings or files.
#include "app/Application.h"

#include <QDir>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

std::string makePrivateHome()
{
    char pattern[] = "/tmp/tessaran-test-XXXXXX";
    const char* dir = mkdtemp(pattern);
    if (!dir) {
        std::abort();
    }
    const std::string home(dir);
    const std::string folders[][2] = {
        {"HOME", home},
        {"XDG_CONFIG_HOME", home + "/.config"},
        {"XDG_DATA_HOME", home + "/.local/share"},
        {"XDG_CACHE_HOME", home + "/.cache"},
        {"XDG_STATE_HOME", home + "/.local/state"},
        {"XDG_RUNTIME_DIR", home + "/runtime"},
    };
    for (const auto& [name, path] : folders) {
        QDir().mkpath(QString::fromStdString(path));
        setenv(name.c_str(), path.c_str(), 1);
    }
    QFile::setPermissions(QString::fromStdString(home + "/runtime"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return home;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string home = makePrivateHome();
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::testing::InitGoogleTest(&argc, argv);
    Application app(argc, argv);
    const int status = RUN_ALL_TESTS();
    QDir(QString::fromStdString(home)).removeRecursively();
    return status;
}
