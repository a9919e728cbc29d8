#include "platform/ColorArchive.h"

#include "TestSupport.h"
#include "platform/UserDefaults.h"

#include <gtest/gtest.h>

TEST(ColorArchive, RoundTripsExactlyThroughTheStoreAndRefusesWhatIsNoArchive)
{
    const QString path = TestSupport::makeTempDir() + "/colors.conf";
    const QList<QColor> colors = {
        QColor::fromRgbF(0.2f, 0.7f, 0.9f),
        QColor::fromRgbF(1.0f / 3, 1.0f / 3, 1.0f / 3),
        QColor::fromRgbF(0.123456f, 0.5f, 0.999f, 0.25f),
        QColor(Qt::transparent),
        QColor::fromHsvF(0.6f, 0.4f, 0.8f, 0.5f),
    };
    {
        UserDefaults defaults(path);
        for (int i = 0; i < colors.size(); ++i) {
            defaults.setObject(ColorArchive::archivedData(colors[i]), QString("Color%1").arg(i));
        }
        defaults.synchronize();
    }
    UserDefaults defaults(path);
    for (int i = 0; i < colors.size(); ++i) {
        const QColor back = ColorArchive::unarchive(defaults.dataForKey(QString("Color%1").arg(i)));
        ASSERT_TRUE(back.isValid()) << i;
        EXPECT_EQ(back.rgba64(), colors[i].toRgb().rgba64()) << i;
        // Archiving what was read gives the same bytes again.
        EXPECT_EQ(ColorArchive::archivedData(back), ColorArchive::archivedData(colors[i])) << i;
    }
    // Data that is not an archive reads as no colour.
    defaults.setObject(QByteArray("srgb 1 0 0"), "Short");
    defaults.setObject(QByteArray("cmyk 1 0 0 1"), "Space");
    defaults.setObject(QByteArray("srgb 1 0 x 1"), "Garbage");
    defaults.setObject(QByteArray("srgb 2 0 0 1"), "OutOfRange");
    defaults.setObject(QStringLiteral("srgb 1 0 0 1"), "NotData");
    for (const char* key : {"Short", "Space", "Garbage", "OutOfRange", "NotData", "Missing"}) {
        EXPECT_FALSE(ColorArchive::unarchive(defaults.dataForKey(key)).isValid()) << key;
    }
    EXPECT_TRUE(ColorArchive::archivedData(QColor()).isEmpty());
}
