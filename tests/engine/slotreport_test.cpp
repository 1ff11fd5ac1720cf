#include "engine/slotreport.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::u16string Text(const clString& text) { return std::u16string(text.text); }

}  // namespace

TEST(SlotReport, SplitAtColonTakesOneBlankAfterTheFirstColon) {
    clString left, right;
    ASSERT_TRUE(SplitAtColon(clString(u"a: b: c"), left, right));
    EXPECT_EQ(Text(left), u"a");
    EXPECT_EQ(Text(right), u"b: c");
    ASSERT_TRUE(SplitAtColon(clString(u":  x"), left, right));
    EXPECT_EQ(Text(left), u"");
    EXPECT_EQ(Text(right), u" x");  // only one blank goes
    ASSERT_TRUE(SplitAtColon(clString(u"end:"), left, right));
    EXPECT_EQ(Text(right), u"");
    EXPECT_FALSE(SplitAtColon(clString(u"no colon"), left, right));
    EXPECT_FALSE(SplitAtColon(clString(u""), left, right));
}

TEST(SlotReport, MessagesErrorsAndInformationGoWhereTheyBelong) {
    clSlotReport report;
    report.Reset(1000);
    report.TakeOutput(
        clString(u"MSGTO: qvt: msLen: 61234\r\nMSGTO: qvt: PCDone: 50\r\nMSGTO: qvt: PCDone: 40\r\n"
                 u"xyzMSGTO: qvt: PCDone: 55\r\nMSGTO: other: PCDone: 90\r\nMSGTO: qvt: Unknown: 1\r\n"
                 u"MSGTO: qvt: ActionInput: C:\\Music\\a.flac\r\nMSGTO: qvt: Action: Converting\r\n"
                 u"plain words\r\n\r\nmore words"));
    EXPECT_EQ(report.lengthMs, 61234);
    EXPECT_EQ(report.percent, 55);                              // never falls; the prefix may stand anywhere
    EXPECT_EQ(Text(report.actionInput), u"C:\\Music\\a.flac");  // colons in the value stay
    EXPECT_EQ(Text(report.action), u"Converting");
    // Dropped messages leave no trace; other lines are information.
    EXPECT_EQ(Text(report.infoText), u"plain words\r\nmore words");
    report.TakeErrors(clString(u"first\r\n\r\nsecond"));
    report.TakeErrors(clString(u"third"));
    EXPECT_EQ(Text(report.errorText), u"first\r\nsecond\r\nthird");
    // A line cut by a drain is two lines, and its second half no message.
    report.TakeOutput(clString(u"MSGTO: qvt: PCD"));
    report.TakeOutput(clString(u"one: 99\r\n"));
    EXPECT_EQ(report.percent, 55);
    EXPECT_EQ(Text(report.infoText), u"plain words\r\nmore words\r\none: 99");
    report.Reset(5);
    EXPECT_EQ(report.percent, 0);
    EXPECT_EQ(report.lengthMs, 5);
    EXPECT_TRUE(report.errorText.IsEmpty());
}

TEST(SlotReport, WatchdogTripsAfterSixtySecondsEvenAcrossTheWrap) {
    EXPECT_FALSE(WatchdogTripped(160000, 100000));
    EXPECT_TRUE(WatchdogTripped(160001, 100000));
    EXPECT_FALSE(WatchdogTripped(59000, 0xFFFFFFF0u));  // the counter wrapped: 59,016 ms
    EXPECT_TRUE(WatchdogTripped(60100, 0xFFFFFFF0u));
    EXPECT_FALSE(WatchdogTripped(5, 5));
}

TEST(SlotReport, RowTextTurnsEverySixteenTicksAndKeepsTheOldTextBriefly) {
    clSlotReport report;
    report.action = clString(u"Converting");
    report.actionInput = clString(u"in.wav");
    report.actionOutput = clString(u"out.flac");
    std::u16string seen[48];
    for (std::u16string& text : seen) text = Text(report.RowText(1000));
    EXPECT_EQ(seen[0], u"Converting");   // tick 1
    EXPECT_EQ(seen[15], u"in.wav");      // tick 16
    EXPECT_EQ(seen[31], u"out.flac");    // tick 32
    EXPECT_EQ(seen[47], u"Converting");  // tick 48
    // No input: the output takes index 1; "...source" texts yield to the action.
    report.textTick = 15;
    report.actionInput.Clear();
    EXPECT_EQ(Text(report.RowText(1000)), u"out.flac");
    report.actionOutput = clString(u"...Source file");
    report.textTick = 15;
    EXPECT_EQ(Text(report.RowText(1000)), u"Converting");
    // Empty: "keep" for 2 s, then really empty; a text resets the clock.
    report.action.Clear();
    EXPECT_EQ(Text(report.RowText(5000)), kKeepRowText);
    EXPECT_EQ(Text(report.RowText(6999)), kKeepRowText);
    EXPECT_EQ(Text(report.RowText(7000)), u"");
    report.action = clString(u"Finishing");
    EXPECT_EQ(Text(report.RowText(7050)), u"Finishing");
    EXPECT_EQ(report.textEmptySince, 0u);
}

// On purpose, a job's log text has a limit (kReportTextLimit characters a
// log): a worker that floods its pipes would otherwise grow the program
// without end and make a log no one can read. The cut is said once, and
// the program's own lines (the watchdog's, the output diagnosis) always
// stay.
TEST(SlotReport, AFloodOfLinesIsCutOnceAtTheLimitButTheProgramsOwnLinesStay) {
    clSlotReport report;
    report.Reset(0);
    std::u16string line(99, u'x');
    std::u16string flood;
    for (int i = 0; i < 2000; ++i) flood += line + u"\r\n";  // 200,000 characters
    report.TakeErrors(clString(flood.c_str()));
    report.TakeErrors(clString(flood.c_str()));
    report.TakeOutput(clString(flood.c_str()));
    std::u16string errors = Text(report.errorText);
    EXPECT_LE(errors.size(), static_cast<size_t>(kReportTextLimit) + 100);
    EXPECT_EQ(errors.find(kReportCutLine), errors.rfind(kReportCutLine)) << "said once";
    EXPECT_NE(Text(report.infoText).find(kReportCutLine), std::u16string::npos);
    const std::u16string own = u"\r\nError: Watchdog timeout, possible ConvertWorker crash";
    report.AddError(clString(own.c_str() + 2));
    errors = Text(report.errorText);
    EXPECT_EQ(errors.substr(errors.size() - own.size()), own);
    // A new job starts with room again.
    report.Reset(0);
    report.TakeErrors(clString(u"one\r\n"));
    EXPECT_EQ(Text(report.errorText), u"one");
}
