#include "TestSupport.h"

#include "platform/Preferences.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>

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

void answerAlerts(const QStringList& buttons, QList<Alert>* seen)
{
    if (seen) {
        seen->clear();
    }
    auto* poll = new QTimer;
    poll->setInterval(10);
    auto remaining = std::make_shared<QStringList>(buttons);
    QObject::connect(poll, &QTimer::timeout, [poll, remaining, seen] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* alert = qobject_cast<QMessageBox*>(widget);
            if (!alert || !alert->isVisible() || alert->property("answered").toBool()) {
                continue;
            }
            alert->setProperty("answered", true);
            Alert shown{alert->windowTitle(), alert->text(), alert->informativeText(), {}};
            QAbstractButton* chosen = nullptr;
            const QString title = remaining->takeFirst();
            for (QAbstractButton* button : alert->buttons()) {
                shown.buttons << button->text();
                chosen = button->text() == title ? button : chosen;
            }
            if (seen) {
                seen->append(shown);
            }
            if (remaining->isEmpty()) {
                poll->stop();
                poll->deleteLater();
            }
            if (chosen) {
                chosen->click();
            } else {
                alert->reject();
            }
            return;
        }
    });
    poll->start();
}

} // namespace TestSupport
