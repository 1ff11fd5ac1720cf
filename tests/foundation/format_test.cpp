#include "foundation/format.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/testfolder.h"

namespace {
clString Own(const char16_t* format, ...) {
    va_list args;
    va_start(args, format);
    clString s;
    s.FormatOwn(format, args);
    va_end(args);
    return s;
}
}  // namespace

TEST(FloatToText, RoundingZerosAndSpecialValues) {
    struct Case {
        double value;
        int decimals;
        bool keep;
        const char16_t* text;
    } cases[] = {
        {1.5, 2, true, u"1.50"},
        {1.5, 2, false, u"1.5"},
        {2.0, 2, false, u"2"},
        {0.05, 1, true, u"0.1"},
        {0.0, 3, true, u"0.000"},
        {-0.5, 0, true, u"-1"},
        {1e120, 2, true, u"NaN"},
        {-1e120, 2, true, u"NaN"},
        {123456.789, 1, true, u"123456.8"},
        {1e18, 0, true, u"1000000000000000000"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(U(FloatToText(c.value, c.decimals, c.keep)), c.text) << c.value;
    }
    EXPECT_EQ(U(FloatToText(std::nan(""), 2, true)), u"NAN");
}

TEST(FormatOwn, NarrowLanguage) {
    EXPECT_EQ(U(Own(u"100%")), u"");
    EXPECT_EQ(U(Own(u"%.2.3f", 1.0)), u"");
    EXPECT_EQ(U(Own(u"%ld|%q5d", 7, 42)), u"7|   42");
    EXPECT_EQ(U(Own(u"%5s|%s|%s", u"ab", static_cast<const char16_t*>(nullptr), u"")), u"ab||");
    EXPECT_EQ(U(Own(u"%05d|%5d|%+d|%+05d", -42, -42, 3, 3)), u"-0042|  -42|+3|+0003");
    EXPECT_EQ(U(Own(u"%04x|%X|%3u|%%|%c%c", 255u, 0xABu, 7u, u'Z', 0)), u"00ff|AB|  7|%|Z");
    EXPECT_EQ(U(Own(u"%.2f|%+.1f|%+.1f", 3.14159, 2.0, -2.0)), u"3.14|+2.0|-2.0");
}

TEST(Format, OrdinaryPathCommonConversions) {
    clString s;
    s.Format(u"%s-%d-%u-%2d%%", u"x", -5, 7u, 9);
    EXPECT_EQ(U(s), u"x--5-7- 9%");
    s.Format(u"[%-4s][%4s][%.2s][%08.3f][%x][%lld]", u"ab", u"ab", u"abc", 3.14159, 255u, 1LL << 40);
    EXPECT_EQ(U(s), u"[ab  ][  ab][ab][0003.142][ff][1099511627776]");
    EXPECT_EQ(U(clString::Formatted(u"%s", u"\U0001F3B5")), u"\U0001F3B5");
}

TEST(Format, GrowsRoomForLongResultsAndArgumentMayBeTarget) {
    clString big;
    big.SetLength(4000);
    clString s;
    s.Format(u"<%s>", big.text);
    EXPECT_EQ(s.Length(), 4002);
    s.Format(u"%s%s", s.text, u"!");  // the target itself as an argument
    EXPECT_EQ(s.Length(), 4003);
    EXPECT_EQ(s.CharAt(clStringLast), u'!');
}
