#include "platform/PropertyList.h"

#include "TestSupport.h"

#include <QDateTime>
#include <QSize>

#include <gtest/gtest.h>

#include <limits>

TEST(PropertyList, RoundTripOfEveryType)
{
    const quint64 allOnes = std::numeric_limits<quint64>::max();
    QVariantMap inner{{"deep", QVariantList{1, "two", 3.5}}};
    QVariantMap map{
        {"bool", true},
        {"false", false},
        {"int", qint64(42)},
        {"negative", qint64(-1)},
        {"unsigned", QVariant::fromValue(allOnes)},
        {"large", QVariant::fromValue(quint64(1) << 63)},
        {"real", 0.125},
        {"string", QStringLiteral("Grüße ✓ & <xml>")},
        {"data", QByteArray("\x00\x01\xff", 3)},
        {"date", QDateTime(QDate(2024, 2, 29), QTime(13, 5, 7), Qt::UTC)},
        {"array", QVariantList{QStringLiteral("a"), qint64(1), inner}},
        {"empty", QVariantMap{}},
    };
    const QString path = TestSupport::makeTempDir() + "/round.plist";
    QString error;
    ASSERT_TRUE(PropertyList::writeXml(map, path, &error)) << error.toStdString();
    const auto back = PropertyList::readDictionary(path);
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(*back, map);
    // Equal numbers of other types would pass the comparison: the types are the ones written.
    EXPECT_EQ(back->value("unsigned").typeId(), QMetaType::ULongLong);
    EXPECT_EQ(back->value("negative").typeId(), QMetaType::LongLong);
    EXPECT_EQ(back->value("false").typeId(), QMetaType::Bool);
    // The XML says which large values are unsigned.
    EXPECT_TRUE(TestSupport::readFile(path).contains("<integer>18446744073709551615</integer>"));
    EXPECT_TRUE(TestSupport::readFile(path).contains("<integer>-1</integer>"));
}

TEST(PropertyList, ReadsBinaryAndRejectsWhatIsNotAList)
{
    // {"a": 1, "s": "x", "u": 5} in the binary format, as Python's plistlib writes it.
    const QByteArray binary = QByteArray::fromHex(
        "62706c6973743030d3010203040506516151735175100151781005080f1113151719000000000000010100"
        "000000000000070000000000000000000000000000001b");
    EXPECT_EQ(PropertyList::fromData(binary).toMap(),
              (QVariantMap{{"a", qint64(1)}, {"s", "x"}, {"u", qint64(5)}}));

    const QString dir = TestSupport::makeTempDir();
    EXPECT_FALSE(PropertyList::readDictionary(dir + "/missing.plist").has_value());
    EXPECT_FALSE(PropertyList::readDictionary(dir).has_value());
    for (const QByteArray& junk :
         {QByteArray(), QByteArray("hello"), QByteArray("<plist><dict><key>a</key>"),
          QByteArray("bplist00\xff\xff\xff"), QByteArray("<?xml version=\"1.0\"?><html/>"),
          QByteArray("<plist version=\"1.0\"><array><string>x</string></array></plist>")}) {
        EXPECT_FALSE(PropertyList::readDictionary(TestSupport::writeFile(dir + "/junk.plist", junk))
                         .has_value())
            << junk.toStdString();
    }

    // A failed write leaves the old file as it was.
    const QString kept = TestSupport::writeFile(dir + "/kept.plist", "old");
    EXPECT_FALSE(PropertyList::writeXml(QVariant::fromValue(QSize(1, 1)), kept));
    EXPECT_EQ(TestSupport::readFile(kept), "old");
    EXPECT_FALSE(PropertyList::writeXml(QVariantMap{{"a", 1}}, dir + "/no/such/folder/x.plist"));
}
