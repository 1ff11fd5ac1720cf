// The report window: its four rows, its links and its Exit button.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "crash/dlgcrashreport.h"
#include "foundation/platform/processinfo.h"
#include "foundation/utf.h"
#include "tests/support/testfolder.h"
#include "tests/support/toolkittest.h"
#include "toolkit/controls.h"

namespace {


void LookGrabAndExit(XWindow& window, void*) {
    auto* report = dynamic_cast<dlgCrashReport*>(&window);
    ASSERT_NE(report, nullptr);
    Pump();
    ASSERT_EQ(report->list.RowCount(), 4);
    EXPECT_EQ(U(report->list.Row(0)->name), u"Quillotone Track Converter has stopped working");
    EXPECT_TRUE(report->list.Row(0)->nameBold);
    EXPECT_EQ(U(report->list.Row(1)->name), u"Something unexpected happend which led to a crash.");
    EXPECT_EQ(U(report->list.Row(2)->name), u"1) Report on support forum");
    clString forum;
    Utf8ToString(QV_SUPPORT_FORUM_URL, static_cast<int64_t>(std::strlen(QV_SUPPORT_FORUM_URL)), forum);
    EXPECT_EQ(U(report->list.Row(2)->buttonText), U(forum));
    EXPECT_EQ(U(report->list.Row(3)->name), u"2) Send crash dump, helping fix the issue");
    EXPECT_EQ(U(report->list.Row(3)->buttonText), u"Crash Dump Location");
    EXPECT_TRUE(static_cast<bool>(report->list.Row(3)->onButton)) << "the link does something";
    ASSERT_NE(report->exitButton, nullptr);
    EXPECT_EQ(U(WindowGetText(report->exitButton)), u"Exit");
    // The program's mark: the blue of its tile.
    EXPECT_TRUE(NearColor(PixelOf(window.windowHandle, XWindow::ScaleUnits(14) + 16, XWindow::ScaleUnits(16) + 3),
                          0x914F1D))
        << std::hex << PixelOf(window.windowHandle, XWindow::ScaleUnits(14) + 16, XWindow::ScaleUnits(16) + 3);
    SaveGrab(window.windowHandle, "crashreport");
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(1, kBnClicked),
               reinterpret_cast<intptr_t>(report->exitButton));
}

}  // namespace

TEST(CrashReportWindow, ShowsWhatHappenedAndWhereTheRecordLiesAndEndsWithExit) {
    TestFolder dir;
    clString record = dir.File(u"crash-1234.dmp");
    WriteBytes(record, "record");
    PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"0");
    SetModalHook(LookGrabAndExit, nullptr);
    dlgCrashReport report(record);
    SetModalHook(nullptr, nullptr);
    PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"1");
    EXPECT_TRUE(report.closed) << "the constructor returns once the user has left";
    EXPECT_EQ(report.exitButton, nullptr) << "closing takes the button and the list away";
    EXPECT_EQ(U(report.crashReportDumpPath), U(record));
}

// Told to ask nobody, the report goes to the terminal and no window waits.
TEST(CrashReportWindow, ToldToAskNobodyItShowsNoWindow) {
    TestFolder dir;
    clString record = dir.File(u"crash-1234.dmp");
    WriteBytes(record, "record");
    PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"1");
    dlgCrashReport report(record);
    EXPECT_EQ(report.windowHandle, nullptr);
    EXPECT_FALSE(report.closed);
}
