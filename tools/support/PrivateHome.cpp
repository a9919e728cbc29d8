#include "PrivateHome.h"

#include <QByteArray>
#include <QDir>
#include <QFile>

#include <cstdio>
#include <cstdlib>

PrivateHome::PrivateHome(const char* prefix)
{
    // In the temporary folder (TMPDIR or /tmp), where a parent that runs this program can
    // choose to put it.
    QByteArray pattern =
        QFile::encodeName(QDir::tempPath() + QStringLiteral("/tessaran-")) + prefix + "-XXXXXX";
    if (!mkdtemp(pattern.data())) {
        std::perror("cannot make a private home folder in the temporary folder");
        std::exit(1);
    }
    _path = QString::fromLocal8Bit(pattern);
    const std::pair<const char*, QString> folders[] = {
        {"HOME", _path},
        {"XDG_CONFIG_HOME", _path + QStringLiteral("/.config")},
        {"XDG_DATA_HOME", _path + QStringLiteral("/.local/share")},
        {"XDG_CACHE_HOME", _path + QStringLiteral("/.cache")},
        {"XDG_STATE_HOME", _path + QStringLiteral("/.local/state")},
        {"XDG_RUNTIME_DIR", _path + QStringLiteral("/runtime")},
    };
    for (const auto& [name, path] : folders) {
        QDir().mkpath(path);
        setenv(name, QFile::encodeName(path).constData(), 1);
    }
    // The runtime folder must be private to its owner, or Qt ignores it.
    QFile::setPermissions(_path + QStringLiteral("/runtime"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
}

PrivateHome::~PrivateHome()
{
    QDir(_path).removeRecursively();
}
