#include "TestSupport.h"

#include "platform/Preferences.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <memory>
#include <vector>

namespace TestSupport {

QString makeTempDir()
{
    static std::vector<std::unique_ptr<QTemporaryDir>> dirs;
    dirs.push_back(std::make_unique<QTemporaryDir>());
    return dirs.back()->path();
}

QString writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        file.write(bytes);
    }
    return path;
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

EncodingManager& encodings()
{
    return EncodingManager::sharedEncodingManager();
}

DocumentSettings documentSettings()
{
    return Preferences::sharedPreferences().current().document;
}

} // namespace TestSupport
