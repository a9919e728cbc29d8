#include "window/EncodingPopUp.h"

#include "document/EncodingManager.h"
#include "platform/Range.h"
#include "platform/StringEncoding.h"

#include <QComboBox>

#include <gtest/gtest.h>

namespace {

constexpr quint64 None = StringEncoding::NoEncoding;
constexpr quint64 ShiftJIS = 0x80000A01;

} // namespace

TEST(EncodingPopUp, EncodingItemIndexesKeepInStepWithTheList)
{
    const QList<quint64> list = EncodingManager().encodingList();
    QComboBox popUp;
    popUp.addItem(QStringLiteral("stale"));
    const auto encodingAt = [&](int index) {
        return popUp.itemData(index, EncodingManager::RepresentedObjectRole).value<quint64>();
    };
    const auto isSeparator = [&](int index) {
        return popUp.itemData(index, Qt::AccessibleDescriptionRole).toString() ==
               QLatin1String("separator");
    };

    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, 4, true);
    // The list's 64 entries after "Automatic" and its separator, then the other encodings.
    ASSERT_EQ(popUp.count(), 66 + 2 + EncodingManager::otherEncodingList().size());
    EXPECT_EQ(popUp.itemText(0), "Automatic");
    EXPECT_EQ(popUp.itemData(0, EncodingManager::TagRole).toInt(), -1);
    EXPECT_EQ(encodingAt(0), None);
    EXPECT_TRUE(isSeparator(1));
    EXPECT_TRUE(isSeparator(6)); // list entry 4
    EXPECT_EQ(popUp.currentIndex(), 7);
    EXPECT_EQ(popUp.currentText(), "Unicode (UTF-8)");
    EXPECT_EQ(encodingAt(popUp.currentIndex()), 4u);
    EXPECT_EQ(popUp.itemData(7, EncodingManager::TagRole).toInt(), 0);

    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, None, true);
    EXPECT_EQ(popUp.currentIndex(), 0);
    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, 7, true); // the last entry
    EXPECT_EQ(popUp.currentIndex(), 65);
    EXPECT_EQ(popUp.currentText(), "Non-lossy ASCII");

    // After the list, a separator and a heading that cannot be chosen lead the other encodings.
    EXPECT_TRUE(isSeparator(66));
    EXPECT_EQ(popUp.itemText(67), "Other Encodings");
    EXPECT_FALSE(popUp.model()->flags(popUp.model()->index(67, 0)).testFlag(Qt::ItemIsEnabled));
    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, 0x80000502, true);
    EXPECT_GT(popUp.currentIndex(), 67);
    EXPECT_EQ(popUp.currentText(), "Cyrillic (Windows)");
    EXPECT_EQ(encodingAt(popUp.currentIndex()), 0x80000502u);

    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, 0x80000628, false);
    ASSERT_EQ(popUp.count(), 64 + 2 + EncodingManager::otherEncodingList().size());
    EXPECT_EQ(popUp.currentIndex(), 3);
    EXPECT_EQ(encodingAt(3), 0x80000628u);
    EXPECT_TRUE(isSeparator(4));
    // Nothing to select: the first item stays selected, with or without "Automatic".
    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, None, false);
    EXPECT_EQ(popUp.currentIndex(), 0);
    EXPECT_EQ(encodingAt(0), ShiftJIS);
    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, 0x80000A07, true); // VISCII: not offered
    EXPECT_EQ(popUp.currentIndex(), 0);
}

TEST(EncodingPopUp, LineBreakStyles)
{
    QComboBox popUp;
    EncodingPopUp::makeLineBreaksOfPopUpMenu(&popUp, 2);
    ASSERT_EQ(popUp.count(), 3);
    EXPECT_EQ(popUp.itemText(0), "OS X / Unix (LF)");
    EXPECT_EQ(popUp.itemText(1), "Classic Mac (CR)");
    EXPECT_EQ(popUp.itemText(2), "Windows (CRLF)");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(popUp.itemData(i, EncodingManager::TagRole).toInt(), i);
    }
    EXPECT_EQ(popUp.currentIndex(), 2);
    EncodingPopUp::makeLineBreaksOfPopUpMenu(&popUp, 0);
    EXPECT_EQ(popUp.count(), 3);
    EXPECT_EQ(popUp.currentIndex(), 0);
    EncodingPopUp::makeLineBreaksOfPopUpMenu(&popUp, 3);
    EXPECT_EQ(popUp.currentIndex(), -1);
    EncodingPopUp::makeLineBreaksOfPopUpMenu(&popUp, NSNotFound);
    EXPECT_EQ(popUp.currentIndex(), -1);
}
