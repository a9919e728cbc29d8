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
    for (const char* bad : {"srgb 1 0 0", "cmyk 1 0 0 1", "srgb 1 0 x 1", "srgb 2 0 0 1"}) {
        EXPECT_FALSE(ColorArchive::unarchive(QByteArray(bad)).isValid()) << bad;
    }
    EXPECT_TRUE(ColorArchive::archivedData(QColor()).isEmpty());
}
