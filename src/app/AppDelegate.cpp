#include "app/AppDelegate.h"

#include "app/DocumentController.h"
#include "app/ScriptingService.h"
#include "document/Document.h"
#include "platform/ColorArchive.h"
#include "platform/Preferences.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptManager.h"

#include <QApplication>
#include <QFile>
#include <QPalette>

#include <algorithm>
#include <limits>

AppDelegate::AppDelegate(QObject* parent)
    : QObject(parent)
{}

QList<QPair<QString, QColor>> AppDelegate::defaultColors(int scheme)
{
    const QColor darkGray = QColor::fromRgbF(1.0f / 3, 1.0f / 3, 1.0f / 3);
    const QColor control = qApp ? QApplication::palette().color(QPalette::Button)
                                : QColor::fromRgbF(0.93f, 0.93f, 0.93f);
    const QColor text[] = {Qt::black, Qt::white, Qt::white, darkGray, Qt::black};
    const QColor insertion[] = {Qt::black, Qt::white, Qt::red, Qt::black, Qt::black};
    const QColor background[] = {Qt::white, darkGray, Qt::black, Qt::white, Qt::white};
    scheme = std::clamp(scheme, 0, 4);
    return {
        {SettingsKey::DefaultTextColor, text[scheme]},
        {SettingsKey::DefaultInsertionPointColor, insertion[scheme]},
        {SettingsKey::DefaultBackgroundColor, background[scheme]},
        {SettingsKey::InvisibleCharacterColor, QColor::fromRgbF(0.2f, 0.7f, 0.9f)},
        {SettingsKey::GutterTextColor, darkGray},
        {SettingsKey::GutterBorderColor, darkGray},
        {SettingsKey::GutterBackgroundColor, control},
        {SettingsKey::BlockwordsColor, darkGray},
        {SettingsKey::KeywordsColor, QColor::fromRgbF(0.5f, 0.0f, 0.5f)},
        {SettingsKey::PreprocessorColor, QColor::fromRgbF(0.4f, 0.2f, 0.0f)},
        {SettingsKey::StringsColor, QColor::fromRgbF(0.8f, 0.1f, 0.1f)},
        {SettingsKey::CommentsColor, QColor::fromRgbF(0.0f, 0.5f, 0.0f)},
        {SettingsKey::CommandsColor, QColor::fromRgbF(0.7f, 0.0f, 0.5f)},
        {SettingsKey::ValuesColor, QColor::fromRgbF(0.7f, 0.0f, 0.5f)},
        {SettingsKey::NumbersColor, Qt::blue},
        {SettingsKey::CharactersColor, Qt::blue},
    };
}

bool AppDelegate::registerDefaults(const QString& resourcePath, UserDefaults& defaults)
{
    QFile file(resourcePath);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QVariant value = PropertyList::fromData(file.readAll());
    if (value.typeId() != QMetaType::QVariantMap) {
        return false;
    }
    QVariantMap dictionary = value.toMap();

    // "Automatic" is all ones; the resource may write it as −1.
    const QString openKey = SettingsKey::OpenDefaultsTextEncoding;
    const QVariant open = dictionary.value(openKey);
    if (open.isValid() && open.toULongLong() == std::numeric_limits<quint64>::max()) {
        dictionary.insert(openKey, QVariant::fromValue(std::numeric_limits<quint64>::max()));
    }

    for (const auto& [key, color] : defaultColors()) {
        keyedArchiverOfObject(color, key, dictionary);
    }
    defaults.registerDefaults(dictionary);
    return true;
}

void AppDelegate::keyedArchiverOfObject(const QColor& object, const QString& key,
                                        QVariantMap& withDefaults)
{
    withDefaults.insert(key, ColorArchive::archivedData(object));
}

void AppDelegate::keyedArchiverOfObject(const QColor& object, const QString& key,
                                        UserDefaults& withDefaults)
{
    withDefaults.setObject(ColorArchive::archivedData(object), key);
}

void AppDelegate::applicationDidFinishLaunching()
{
    ScriptingService::sharedScriptingService().registerOnSessionBus();
    ScriptManager::sharedScriptManager().bootUp();
}

void AppDelegate::openScriptDictionary(QObject* sender)
{
    Q_UNUSED(sender);
    const QString xml = ScriptingService::introspectionXml();
    Document* document = DocumentController::sharedDocumentController().newDocument();
    document->setLoadedText(xml);
}

bool AppDelegate::applicationShouldOpenUntitledFile() const
{
    return Preferences::sharedPreferences().current().application.shouldOpenUntitledFile;
}

bool AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows) const
{
    Q_UNUSED(hasVisibleWindows);
    return false;
}

void AppDelegate::applicationWillTerminate()
{
    ScriptManager::sharedScriptManager().writeScriptDataSource();
    UserDefaults::standardUserDefaults().synchronize();
}

void AppDelegate::openUntitledDocument()
{
    DocumentController::sharedDocumentController().newDocument();
}

void AppDelegate::openDocument(const QString& path)
{
    DocumentController::sharedDocumentController().openDocumentWithContentsOfURL(path);
}
