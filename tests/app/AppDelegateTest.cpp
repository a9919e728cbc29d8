#include "app/AppDelegate.h"

#include "TestSupport.h"
#include "platform/ColorArchive.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr quint64 kAutomatic = std::numeric_limits<quint64>::max();

QString writeResource(const QVariantMap& map)
{
    const QString path = TestSupport::makeTempDir() + "/DefaultValues.plist";
    PropertyList::writeXml(map, path);
    return path;
}

} // namespace

// Every key of the shipped defaults has its row in the test of the typed settings (see
// PreferencesTest); here, what the registration makes of the values.
TEST(AppDelegate, RegistrationNormalisesAndAddsTheColours)
{
    // The application registered the shipped ones at start, "Automatic" as the unsigned
    // all-ones value.
    const UserDefaults& shipped = UserDefaults::standardUserDefaults();
    EXPECT_EQ(shipped.unsignedIntegerForKey("OpenDefaultsTextEncoding"), kAutomatic);
    EXPECT_EQ(shipped.registeredDefaults().value("OpenDefaultsTextEncoding").typeId(),
              QMetaType::ULongLong);

    const QString dir = TestSupport::makeTempDir();
    {
        UserDefaults defaults(dir + "/a.conf");
        ASSERT_TRUE(AppDelegate::registerDefaults(
            writeResource({{"OpenDefaultsTextEncoding", qint64(-1)},
                           {"KeywordsColor", QByteArray("srgb 1 1 1 1")},
                           {"AutoIndent", true}}),
            defaults));
        EXPECT_EQ(defaults.registeredDefaults().value("OpenDefaultsTextEncoding").toULongLong(),
                  kAutomatic);
        // The registration's colour replaces the resource's, and every colour is there.
        EXPECT_EQ(ColorArchive::unarchive(defaults.dataForKey("KeywordsColor")),
                  QColor::fromRgbF(0.5f, 0.0f, 0.5f));
        for (const auto& [key, color] : AppDelegate::defaultColors()) {
            EXPECT_EQ(ColorArchive::unarchive(defaults.dataForKey(key)), color)
                << key.toStdString();
        }
        // A user's colour still wins.
        AppDelegate::keyedArchiverOfObject(QColor(Qt::red), "KeywordsColor", defaults);
        EXPECT_EQ(ColorArchive::unarchive(defaults.dataForKey("KeywordsColor")), QColor(Qt::red));
    }
    {
        // Any other encoding is registered unchanged.
        UserDefaults defaults(dir + "/b.conf");
        ASSERT_TRUE(AppDelegate::registerDefaults(
            writeResource({{"OpenDefaultsTextEncoding", qint64(8)}}), defaults));
        EXPECT_EQ(defaults.unsignedIntegerForKey("OpenDefaultsTextEncoding"), 8u);
    }
}
