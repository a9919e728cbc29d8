#include "platform/StringEncoding.h"

#include <QSet>

#include <gtest/gtest.h>

TEST(StringEncoding, TheTwoNumberingsConvertBothWays)
{
    // Every encoding offered converts both ways; the numbers that end up in files (the
    // encoding attribute, the settings) are pinned for the classic and the derived ones.
    for (const quint64 ns : StringEncoding::availableStringEncodings()) {
        const quint32 cf = StringEncoding::convertNSStringEncodingToEncoding(ns);
        EXPECT_NE(cf, StringEncoding::InvalidId) << ns;
        EXPECT_EQ(StringEncoding::convertEncodingToNSStringEncoding(cf), ns) << ns;
    }
    const std::pair<quint32, quint64> pinned[] = {{0x8000100, 4},
                                                  {0x600, 1},
                                                  {0x0, 30},
                                                  {0x920, 3},
                                                  {0xA01, 0x80000A01},
                                                  {0x502, 0x80000502},
                                                  {0xFFFFFFFF, 0xFFFFFFFF}};
    for (const auto& [cf, ns] : pinned) {
        EXPECT_EQ(StringEncoding::convertEncodingToNSStringEncoding(cf), ns) << cf;
        EXPECT_EQ(StringEncoding::convertNSStringEncodingToEncoding(ns), cf) << ns;
    }
    // Numbers that no Core Foundation encoding becomes.
    for (quint64 ns :
         {quint64(0), quint64(6), quint64(11), quint64(0x7FFFFFFF), StringEncoding::NoEncoding}) {
        EXPECT_EQ(StringEncoding::convertNSStringEncodingToEncoding(ns), StringEncoding::InvalidId)
            << ns;
    }
}

TEST(StringEncoding, NamesAreUniqueAndIanaNamesConvertBothWays)
{
    QSet<QString> displayNames;
    QSet<QString> ianaNames;
    for (const quint64 encoding : StringEncoding::availableStringEncodings()) {
        const QString name = StringEncoding::localizedNameOfStringEncoding(encoding);
        EXPECT_FALSE(name.isEmpty());
        EXPECT_FALSE(displayNames.contains(name)) << name.toStdString();
        displayNames.insert(name);

        const quint32 cf = StringEncoding::convertNSStringEncodingToEncoding(encoding);
        const QString iana = StringEncoding::convertEncodingToIANACharSetName(cf);
        EXPECT_FALSE(iana.isEmpty()) << name.toStdString();
        EXPECT_FALSE(ianaNames.contains(iana.toLower())) << iana.toStdString();
        ianaNames.insert(iana.toLower());
        EXPECT_EQ(StringEncoding::convertIANACharSetNameToEncoding(iana), cf) << iana.toStdString();
        EXPECT_EQ(StringEncoding::convertIANACharSetNameToEncoding(iana.toUpper()), cf);
    }
    EXPECT_EQ(displayNames.size(), 51 + 22);
    EXPECT_EQ(StringEncoding::localizedNameOfStringEncoding(4), "Unicode (UTF-8)");
    EXPECT_TRUE(StringEncoding::localizedNameOfStringEncoding(0x80000A07).isEmpty()); // VISCII

    EXPECT_EQ(StringEncoding::convertEncodingToIANACharSetName(0x8000100), "UTF-8");
    EXPECT_EQ(StringEncoding::convertEncodingToIANACharSetName(0xA01), "Shift_JIS");
    EXPECT_EQ(StringEncoding::convertEncodingToIANACharSetName(0x0), "macintosh");
    EXPECT_EQ(StringEncoding::convertEncodingToIANACharSetName(0x502), "windows-1251");
    EXPECT_TRUE(StringEncoding::convertEncodingToIANACharSetName(0xA07).isNull());

    const std::pair<const char*, quint32> aliases[] = {
        {"utf-8", 0x8000100}, {"UTF8", 0x8000100}, {"shift_jis", 0xA01},    {"SJIS", 0xA01},
        {"x-mac-roman", 0x0}, {"Latin1", 0x201},   {"euc-jp", 0x920},       {"windows-31j", 0x420},
        {"big5", 0x423},      {"gbk", 0x421},      {" iso-8859-5 ", 0x205}, {"us-ascii", 0x600},
        {"cp1251", 0x502},    {"koi8-u", 0xA08},   {"cp866", 0x41B},        {"latin-9", 0x20F},
    };
    for (const auto& [alias, cf] : aliases) {
        EXPECT_EQ(StringEncoding::convertIANACharSetNameToEncoding(alias), cf) << alias;
    }
    EXPECT_EQ(StringEncoding::convertIANACharSetNameToEncoding("klingon"),
              StringEncoding::InvalidId);
    EXPECT_EQ(StringEncoding::convertIANACharSetNameToEncoding(""), StringEncoding::InvalidId);
}
