#include "foundation/datetime.h"

#include <gtest/gtest.h>

#include "foundation/findfiles.h"
#include "tests/support/testfolder.h"

namespace {

std::u16string Fields(const clSystemTime& t) {
    return U(clString::Formatted(u"%i-%i-%i %i:%i:%i.%i w%i", t.year, t.month, t.day, t.hour, t.minute, t.second,
                                 t.milliseconds, t.dayOfWeek));
}

}  // namespace

TEST(DateTime, TicksBecomeCalendarTimeInUtc) {
    EXPECT_EQ(Fields(TicksToSystemTime(0)), u"1601-1-1 0:0:0.0 w1");
    // 2024-03-07 09:05:04.012, a Thursday.
    EXPECT_EQ(Fields(TicksToSystemTime(UnixSecondsToTicks(1709802304) + 120000)), u"2024-3-7 9:5:4.12 w4");
    EXPECT_EQ(Fields(TicksToSystemTime(UnixSecondsToTicks(951782400))), u"2000-2-29 0:0:0.0 w2");
    EXPECT_EQ(Fields(TicksToSystemTime(UnixSecondsToTicks(4107542399))), u"2100-2-28 23:59:59.0 w0");
    EXPECT_EQ(UnixSecondsToTicks(-20000000000), 0u);
}

TEST(DateTime, PicturesAsTheLocaleFormatterAppliesThem) {
    clSystemTime t;
    t.year = 2026, t.month = 3, t.day = 7, t.dayOfWeek = 6, t.hour = 0, t.minute = 5, t.second = 9;
    EXPECT_EQ(U(FormatDatePicture(t, clString(u"M/d/yyyy"))), u"3/7/2026");
    EXPECT_EQ(U(FormatDatePicture(t, clString(u"dd.MM.yy"))), u"07.03.26");
    EXPECT_EQ(U(FormatDatePicture(t, clString(u"dddd d MMMM, ddd MMM"))), u"Saturday 7 March, Sat Mar");
    EXPECT_EQ(U(FormatDatePicture(t, clString(u"yyyy'y' 'it''s'"))), u"2026y it's");
    EXPECT_EQ(U(FormatTimePicture(t, clString(u"hh':'mm':'ss tt"))), u"12:05:09 AM");
    t.hour = 13;
    EXPECT_EQ(U(FormatTimePicture(t, clString(u"h:m:s t|HH"))), u"1:5:9 P|13");
}

TEST(DateTime, FindRecordsCarryACreationTime) {
    TestFolder dir;
    ASSERT_TRUE(WriteBytes(dir.File(u"new.txt"), "x"));
    clFindFiles find(dir.File(u"new.txt"));
    ASSERT_TRUE(find.Next());
    clSystemTime made = TicksToSystemTime(find.found.creationTicks);
    clSystemTime written = TicksToSystemTime(UnixSecondsToTicks(find.found.writeTime));
    EXPECT_EQ(made.year, written.year);
    EXPECT_GE(made.year, 2024);
}
