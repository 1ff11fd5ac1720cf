#include "engine/progresstext.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::u16string Text(const clString& text) { return std::u16string(text.text); }

clLocaleInfo Plain() { return clLocaleInfo(); }

}  // namespace

TEST(ProgressText, TimesInWordsKeepTheNextUnitBelowFourOrWhenAsked) {
    const clLocaleInfo locale = Plain();
    struct Case {
        int64_t seconds;
        bool both;
        const char16_t* expected;
    } cases[] = {
        {0, true, u""},
        {1, true, u"1 Second"},
        {59, false, u"59 Seconds"},
        {60, false, u"1 Minute 0 Seconds"},  // the next unit shows even when 0
        {90, true, u"1 Minute 30 Seconds"},
        {90, false, u"1 Minute 30 Seconds"},
        {3 * 3600 + 5 * 60, false, u"3 Hours 5 Minutes"},
        {4 * 3600 + 5 * 60, false, u"4 Hours"},  // remaining time drops it from 4 on
        {4 * 3600 + 5 * 60, true, u"4 Hours 5 Minutes"},
        {4 * 3600 + 60, true, u"4 Hours 1 Minute"},
        {4 * 60 + 59, false, u"4 Minutes"},
        {86400 + 3600, false, u"1 Day 1 Hour"},
        {5 * 86400 + 7 * 3600, false, u"5 Days"},
        {3600 + 30, true, u"1 Hour 0 Minutes"},  // never a third unit
        {-5, true, u""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Text(TimeText(c.seconds, c.both, locale)), c.expected) << c.seconds << " " << c.both;
    }
    clLocaleInfo grouped = Plain();
    grouped.thousandSeparator[0] = u'.';
    grouped.thousandSeparator[1] = 0;
    EXPECT_EQ(Text(TimeText(1234 * 86400, true, grouped)), u"1.234 Days 0 Hours");
}

TEST(ProgressText, SpeedHasOneDecimalUpToFourAndWholeNumbersAbove) {
    const clLocaleInfo locale = Plain();
    EXPECT_EQ(Text(SpeedText(25000, 10000, locale)), u"2.5x Encoding Speed");
    EXPECT_EQ(Text(SpeedText(40000, 10000, locale)), u"4.0x Encoding Speed");  // exactly 4 keeps the decimal
    EXPECT_EQ(Text(SpeedText(41000, 10000, locale)), u"4x Encoding Speed");
    EXPECT_EQ(Text(SpeedText(169000, 10000, locale)), u"17x Encoding Speed");  // 16.9 rounds half up
    EXPECT_EQ(Text(SpeedText(0, 10000, locale)), u"0.0x Encoding Speed");      // only direct copies
    EXPECT_EQ(Text(SpeedText(3, 0, locale)), u"3.0x Encoding Speed");          // no time yet counts as 1 ms
    clLocaleInfo comma = Plain();
    comma.decimalSeparator[0] = u',';
    EXPECT_EQ(Text(SpeedText(25000, 10000, comma)), u"2,5x Encoding Speed");
}

TEST(ProgressText, TheExaminingMarkWalksTwentyPlaces) {
    auto markAt = [](int64_t examined, int64_t sources) {
        std::u16string text = Text(ExaminingText(examined, sources));
        EXPECT_EQ(text.rfind(u"Examining Source & Overwrite Check      [", 0), 0u);
        EXPECT_EQ(text.size(), 41u + 21u);
        return static_cast<int>(text.find(u'+')) - 41;
    };
    EXPECT_EQ(markAt(0, 100), 0);
    EXPECT_EQ(markAt(9, 100), 1);
    EXPECT_EQ(markAt(50, 100), 10);
    EXPECT_EQ(markAt(99, 100), 19);
    EXPECT_EQ(markAt(100, 100), 19);  // never past the last place
    EXPECT_EQ(markAt(0, 0), 0);
}

TEST(ProgressText, ProgressElapsedAndRemainingFollowTheBytesAndThePauses) {
    EXPECT_EQ(ProgressHundredths(0, 0), 0);  // files of size 0: stays at 0 until the end
    EXPECT_EQ(ProgressHundredths(1, 3), 3333);
    EXPECT_EQ(ProgressHundredths(3, 3), 10000);
    // A pause that is on holds the elapsed time where it stood.
    EXPECT_EQ(ElapsedMs(10000, 4000, false, 0), 6000u);
    EXPECT_EQ(ElapsedMs(15000, 4000, true, 10000), 6000u);
    EXPECT_EQ(ElapsedMs(5000, 0xFFFFF000u, false, 0), 5000u + 4096u);  // across the wrap
    // A quarter done in 10 s: 30 s to go.
    EXPECT_EQ(RemainingMs(10000, 250, 1000), 30000);
    EXPECT_EQ(RemainingMs(10000, 0, 1000), -1);
    EXPECT_EQ(RemainingMs(10000, 1000, 1000), 0);
}
