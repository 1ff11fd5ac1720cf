#include "foundation/localeformat.h"

#include <gtest/gtest.h>

#include "tests/support/testfolder.h"

namespace {
clLocaleInfo English() {
    clLocaleInfo info;
    info.thousandSeparator[0] = u',';
    info.thousandSeparator[1] = 0;
    return info;
}
}  // namespace

TEST(FormatDuration, WordsAndDigits) {
    clLocaleInfo info = English();
    struct Case {
        int64_t ms;
        uint32_t mode;
        const char16_t* text;
    } cases[] = {
        {0, 0, u"0"},
        {1, 0, u"1 mili-second"},
        {2, 0, u"2 mili-seconds"},
        {1, 4, u"0"},
        {1000, 0, u"1 second"},
        {1500, 0, u"1.5 seconds"},
        {1500, 4, u"1 second"},
        {61000, 0, u"1 minute 1 second"},
        {90000, 0, u"1 minute 30 seconds"},
        {3600000, 0, u"1 hour"},
        {3661000, 0, u"1 hour 1 minute"},
        {4 * 3600000 + 59000, 0, u"4 hours"},
        {90000, 1, u"1:30"},
        {3661000, 1, u"1:01:01"},
        {90000, 2, u"00:01:30"},
        {90000, 3, u"00:01:30.000"},
        {90123, 3, u"00:01:30.123"},
        {90000, 7, u""},
    };
    for (const Case& c : cases) EXPECT_EQ(U(FormatDuration(c.ms, c.mode, info)), c.text) << c.ms << " " << c.mode;
    clLocaleInfo german = info;
    german.decimalSeparator[0] = u',';
    german.timeSeparator[0] = u'.';
    EXPECT_EQ(U(FormatDuration(1500, 0, german)), u"1,5 seconds");
    EXPECT_EQ(U(FormatDuration(90000, 1, german)), u"1.30");
}

TEST(FormatSize, UnitsAndRounding) {
    clLocaleInfo info = English();
    struct Case {
        int64_t bytes;
        bool forceKB;
        const char16_t* text;
    } cases[] = {
        {1, false, u"1 byte"},
        {0, false, u"0 bytes"},
        {1023, false, u"1023 bytes"},
        {1024, false, u"1 KB"},
        {1034, false, u"1 KB"},
        {1035, false, u"2 KB"},
        {1536, false, u"2 KB"},
        {1073741824, false, u"1 GB"},
        {1610612736, false, u"1.5 GB"},
        {1048576 * 5 / 4, false, u"1.25 MB"},
        {0, true, u"0 KB"},
        {1073741824, true, u"1,048,576 KB"},
        {1099511627776LL * 3, false, u"3 TB"},
    };
    for (const Case& c : cases) EXPECT_EQ(U(FormatSize(c.bytes, c.forceKB, info)), c.text) << c.bytes;
}

TEST(LocalizeNumber, GroupingSignsAndSeparators) {
    clLocaleInfo info = English();
    clString n(u"1234567");
    LocalizeNumber(n, info);
    EXPECT_EQ(U(n), u"1,234,567");
    clLocaleInfo indian = info;
    indian.indianGrouping = true;
    n = u"1234567";
    LocalizeNumber(n, indian);
    EXPECT_EQ(U(n), u"12,34,567");
    clLocaleInfo parens = info;
    parens.negativeFormat = 0;
    n = u"-1234";
    LocalizeNumber(n, parens);
    EXPECT_EQ(U(n), u"(1,234)");
    const char16_t* expected[] = {u"(1.1)", u"-1.1", u"- 1.1", u"1.1-", u"1.1 -", u"-1.1"};
    for (int format = 0; format <= 5; ++format) {
        clLocaleInfo f = info;
        f.negativeFormat = format;
        n = u"-1.1";
        LocalizeNumber(n, f);
        EXPECT_EQ(U(n), expected[format]) << format;
    }
    n = u"-123";
    LocalizeNumber(n, info);
    EXPECT_EQ(U(n), u"-123");
    clLocaleInfo plus = info;
    plus.positiveSign[0] = u'+';
    n = u"1234.5678";
    LocalizeNumber(n, plus);
    EXPECT_EQ(U(n), u"+1,234.5678");
}

TEST(LocaleInfo, DefaultsOnThisPlatform) {
    const clLocaleInfo& info = GetLocaleInfoRecord();
    EXPECT_EQ(std::u16string(info.decimalSeparator), u".");
    EXPECT_EQ(std::u16string(info.thousandSeparator), u",");
    EXPECT_EQ(&info, &GetLocaleInfoRecord());
}
