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

    // "Automatic" and its separator, the list's 64 entries, then the other encodings after a
    // separator and a heading that cannot be chosen.
    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, 4, true);
    ASSERT_EQ(popUp.count(), 66 + 2 + EncodingManager::otherEncodingList().size());
    EXPECT_EQ(popUp.itemText(0), "Automatic");
    EXPECT_EQ(encodingAt(0), None);
    EXPECT_TRUE(isSeparator(1));
    EXPECT_TRUE(isSeparator(6)); // list entry 4
    EXPECT_EQ(popUp.currentIndex(), 7);
    EXPECT_EQ(popUp.currentText(), "Unicode (UTF-8)");
    EXPECT_TRUE(isSeparator(66));
    EXPECT_EQ(popUp.itemText(67), "Other Encodings");
    EXPECT_FALSE(popUp.model()->flags(popUp.model()->index(67, 0)).testFlag(Qt::ItemIsEnabled));

    // Each choice selects its own row, wherever it is; nothing to select leaves the first.
    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, 7, true); // the list's last entry
    EXPECT_EQ(popUp.currentText(), "Non-lossy ASCII");
    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, 0x80000502, true);
    EXPECT_GT(popUp.currentIndex(), 67);
    EXPECT_EQ(popUp.currentText(), "Cyrillic (Windows)");
    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, 0x80000A07, true); // VISCII: not offered
    EXPECT_EQ(popUp.currentIndex(), 0);
    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, 0x80000628, false);
    EXPECT_EQ(popUp.currentIndex(), 3);
    EncodingPopUp::makeEncodingOfPopUpMenu(&popUp, list, None, false);
    EXPECT_EQ(popUp.count(), 64 + 2 + EncodingManager::otherEncodingList().size());
    EXPECT_EQ(popUp.currentIndex(), 0);
    EXPECT_EQ(encodingAt(0), ShiftJIS);
}

TEST(EncodingPopUp, LineBreakStyles)
{
    QComboBox popUp;
    EncodingPopUp::makeLineBreaksOfPopUpMenu(&popUp, 2);
    EXPECT_EQ(popUp.currentText(), "Windows (CRLF)");
    EXPECT_EQ(popUp.currentData(EncodingManager::TagRole).toInt(), 2);
    EncodingPopUp::makeLineBreaksOfPopUpMenu(&popUp, NSNotFound);
    EXPECT_EQ(popUp.currentIndex(), -1);
}
