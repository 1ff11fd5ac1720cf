// The conversion window over scripted workers and an injected clock:
// examining, two slots converting, paused, cancelled and finished with an
// error, with what the window shows at each step, its menu, its dragging
// and the memory of its place.
#include "frontend/frmconverting.h"

#include <gtest/gtest.h>

#include "engine/batchsettings.h"
#include "plugins/encoderentries.h"
#include "engine/conversioninput.h"
#include "engine/workerlauncher.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/platform/thread.h"
#include "plugins/sourcefile.h"
#include "tests/engine/fakeworkers.h"
#include "tests/support/toolkittest.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"

namespace {


class ConversionWindowTest : public ::testing::Test {
protected:
    TestFolder dir;
    FakeLauncher launcher;
    uint32_t now = 5000;
    clConversionInput input;
    clConversionServices services;
    int asked = 0;
    bool answer = true;
    int logShowings = 0;

    ConversionWindowTest() {
        services = ScriptedConversion(launcher, now, 2);
        services.askCancel = [this] {
            ++asked;
            return answer;
        };
        services.showLogs = [this](const clLogEntries&, const clLogEntries&) { ++logShowings; };
        SetSettingNumber(0, kSkipFinishSetting.name);
        SetSettingNumber(0, kWindowXSetting.name);
        SetSettingNumber(0, kWindowYSetting.name);
    }
    void AddSources(int count) {
        for (int i = 0; i < count; ++i) {
            clString path = dir.File(clString::Formatted(u"song%02d.wav", i).text);
            WriteBytes(path, std::string(1000, 'x'));
            input.sources.Add(new clSourceFile(path));
        }
    }
    void Tick(frmConverting& window, int times = 1) {
        for (int i = 0; i < times && !window.IsClosed(); ++i) {
            now += 50;
            window.TickNow(true);
        }
    }
    void PastExamining(frmConverting& window) {
        for (int i = 0; i < 20000 && window.Conversion().state == kStateExamining; ++i) {
            PlatformSleep(1);
            window.TickNow(true);
        }
    }
    // The batch end runs on a thread of its own: ticks until it is done.
    void TickUntilFinished(frmConverting& window) {
        for (int i = 0; i < 5000 && !window.IsClosed() && window.Conversion().state != kStateFinished; ++i) {
            PlatformSleep(1);
            Tick(window);
        }
    }
    // A click, and the mouse moving away again.
    void Click(XButton& button) {
        WindowSend(button.controlHandle, kWmLButtonDown, kMkLButton, clMakeLParam(5, 5));
        WindowSend(button.controlHandle, kWmLButtonUp, 0, clMakeLParam(5, 5));
        WindowSend(button.controlHandle, kWmMouseLeave, 0, 0);
    }
    // The window as a test opens it: shown, as Run shows it (a hidden list
    // box paints no rows), and without its timers: the test ticks.
    void Open(frmConverting& window) {
        ASSERT_TRUE(window.Open());
        WindowShow(window.windowHandle, true);
        window.KillTimerEx(kTimerTick);
        window.KillTimerEx(kTimerEarly);
    }
};

}  // namespace

TEST_F(ConversionWindowTest, ExaminingThenTwoSlotsWithRowsBarsAndTheTitle) {
    AddSources(3);
    frmConverting window(input, services);
    Open(window);
    EXPECT_TRUE(WindowGetText(window.windowHandle).Equals(u"Quillotone Track Converter"));
    EXPECT_EQ(window.visibleRows, 2) << "two processors, three files: two rows from the start";
    PastExamining(window);
    Tick(window);
    ASSERT_EQ(launcher.started.size(), 2u);
    launcher.started[0]->out = u"MSGTO: qvt: Action: Encoding\r\nMSGTO: qvt: PCDone: 50\r\n";
    launcher.started[1]->out = u"MSGTO: qvt: Action: Encoding\r\nMSGTO: qvt: PCDone: 20\r\n";
    Tick(window, 2);
    EXPECT_EQ(window.coreDisplay.RowCount(), 2);
    EXPECT_TRUE(window.coreDisplay.Row(0)->name.Equals(u"Encoder 1"));
    EXPECT_TRUE(window.coreDisplay.Row(1)->name.Equals(u"Encoder 2"));
    EXPECT_TRUE(window.coreDisplay.Row(0)->value.Equals(u"Encoding"));
    clString title = WindowGetText(window.windowHandle);
    EXPECT_EQ(title.Find(u"%] Quillotone Converting"), title.Find(u"%]")) << title.ToUtf8();
    EXPECT_EQ(title.CharAt(1), u'[');
    // The overall bar is green at its start once something is done; the
    // first row's bar is half full.
    clRect client = WindowClientRect(window.windowHandle);
    clRect list = WindowScreenRect(window.coreDisplay.listHandle);
    clPoint listBottom = WindowFromScreen(window.windowHandle, clPoint{list.left, list.bottom});
    int32_t barY = listBottom.y + XWindow::ScaleUnits(10) + XWindow::ScaleUnits(9);
    uint32_t bar = PixelOf(window.windowHandle, XWindow::ScaleUnits(12) + 4, barY);
    EXPECT_TRUE(NearColor(bar, clRgb(6, 176, 37), 40)) << std::hex << bar;
    uint32_t emptyBar = PixelOf(window.windowHandle, client.right - XWindow::ScaleUnits(12) - 6, barY);
    EXPECT_FALSE(NearColor(emptyBar, clRgb(6, 176, 37), 40)) << std::hex << emptyBar;
    SaveGrabIfFailed(window.windowHandle);
}

TEST_F(ConversionWindowTest, RowTextsTurnEverySixteenTicksWhateverTheEarlyTicks) {
    AddSources(3);
    frmConverting window(input, services);
    Open(window);
    PastExamining(window);
    Tick(window);
    ASSERT_EQ(launcher.started.size(), 2u);
    launcher.started[0]->out =
        u"MSGTO: qvt: Action: Converting\r\nMSGTO: qvt: ActionInput: in.wav\r\nMSGTO: qvt: PCDone: 10\r\n";
    int displayTicks = 0;
    while (!window.coreDisplay.Row(0)->value.Equals(u"in.wav") && displayTicks < 40) {
        // Three early ticks between two display ticks, as a busy batch has.
        for (int i = 0; i < 3; ++i) window.TickNow(false);
        Tick(window);
        ++displayTicks;
    }
    EXPECT_EQ(window.Conversion().slots[0].textTick, 16u);
    EXPECT_GE(displayTicks, 14) << "the early ticks did not speed the turn";
}

TEST_F(ConversionWindowTest, PauseLatchesHoldsTheClockAndReleases) {
    AddSources(3);
    frmConverting window(input, services);
    Open(window);
    PastExamining(window);
    Tick(window);
    Click(window.pauseButton);
    EXPECT_TRUE(window.pauseButton.IsLatched());
    EXPECT_TRUE(window.Conversion().pausePressed);
    Tick(window);
    for (auto& w : launcher.started) EXPECT_TRUE(w->suspended) << "the tick after the press suspends";
    clString elapsed = window.Conversion().elapsedText;
    now += 10000;
    Tick(window, 3);
    EXPECT_TRUE(window.Conversion().elapsedText.Equals(elapsed)) << "paused time doesn't count";
    Click(window.pauseButton);
    Tick(window);
    EXPECT_FALSE(window.pauseButton.IsLatched());
    for (auto& w : launcher.started) EXPECT_FALSE(w->suspended);
    SaveGrabIfFailed(window.windowHandle);
}

TEST_F(ConversionWindowTest, CancelAsksAndAYesReleasesPauseAndClosesOnceTheSlotsAreIdle) {
    AddSources(3);
    frmConverting window(input, services);
    Open(window);
    PastExamining(window);
    Tick(window);
    answer = false;
    Click(window.cancelButton);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(window.Conversion().state, kStateConverting);
    Click(window.pauseButton);
    answer = true;
    WindowSend(window.windowHandle, kWmKeyDown, kVkEscape, 0);  // Esc asks as the button does
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(window.Conversion().state, kStateCancelling);
    Tick(window);
    EXPECT_FALSE(window.pauseButton.IsLatched()) << "a cancel releases the pause";
    EXPECT_FALSE(window.IsClosed());
    for (auto& w : launcher.started) w->ended = true;
    Tick(window, 3);
    EXPECT_TRUE(window.IsClosed());
    EXPECT_EQ(launcher.started.size(), 2u) << "the third file never started";
}

TEST_F(ConversionWindowTest, FinishedWithAnErrorGoesToTheLogsWithoutWaitingForFinish) {
    AddSources(2);
    frmConverting window(input, services);
    Open(window);
    PastExamining(window);
    Tick(window);
    ASSERT_EQ(launcher.started.size(), 2u);
    launcher.started[1]->err = u"Unsupported file\r\n";
    for (auto& w : launcher.started) w->ended = true;
    TickUntilFinished(window);
    EXPECT_TRUE(window.IsClosed());
    EXPECT_EQ(logShowings, 1);
    EXPECT_TRUE(window.cancelButton.text.Equals(u"Finish"));
}

// Real processes (the test helper standing in for the worker: it lives
// 100 ms and ends without an output), a clock that never moves and no
// timers: only the loop's watch on the examination, the workers' ends and
// the batch end can take the run from file to file and to its end.
TEST_F(ConversionWindowTest, WithoutItsTimersTheWindowGoesFromFileToFileOnTheWorkersEnds) {
    AddSources(3);
    services.processorCount = 1;
    services.launcher = &ProcessWorkerLauncher();
    clString folder = GetProgramFolder();
    PopLastComponent(folder);
    services.workerProgram = JoinPath(JoinPath(folder, clString(u"tests")), clString(u"qv_testhelper"));
    services.workerProgram.Append(PlatformExecutableSuffix());
    frmConverting window(input, services);
    Open(window);
    for (int i = 0; i < 3000 && !window.IsClosed(); ++i) ToolkitProcessFor(10);
    EXPECT_TRUE(window.IsClosed()) << "the run stopped at state " << window.Conversion().state;
    EXPECT_EQ(window.Conversion().errors.Count(), 3);
    EXPECT_EQ(logShowings, 1);
}

TEST_F(ConversionWindowTest, FinishedWithoutErrorsWaitsForFinishThenKeepsItsPlace) {
    AddSources(1);
    frmConverting window(input, services);
    Open(window);
    EXPECT_EQ(window.visibleRows, 0) << "one file: the overall bar only";
    PastExamining(window);
    Tick(window);
    for (auto& w : launcher.started) w->ended = true;
    TickUntilFinished(window);
    ASSERT_EQ(window.Conversion().state, kStateFinished);
    Tick(window, 5);
    EXPECT_FALSE(window.IsClosed()) << "waits for the user";
    EXPECT_TRUE(window.cancelButton.text.Equals(u"Finish"));
    EXPECT_FALSE(WindowIsEnabled(window.pauseButton.controlHandle));
    EXPECT_TRUE(WindowGetText(window.windowHandle).Equals(u"[Finished] Quillotone Track Converter"));
    SaveGrab(window.windowHandle, "finished");
    window.SetPlacement(123, 77, kKeepPlacement, kKeepPlacement);
    Pump();
    Click(window.cancelButton);
    EXPECT_TRUE(window.IsClosed());
    EXPECT_EQ(asked, 0) << "Finish asks nothing";
    EXPECT_EQ(GetSettingNumber(kWindowXSetting.name), 123u);
    EXPECT_EQ(GetSettingNumber(kWindowYSetting.name), 77u);
    // The next window opens where this one closed.
    clConversionInput next;
    frmConverting again(next, services);
    ASSERT_TRUE(again.Open());
    clRect place = WindowScreenRect(again.windowHandle);
    EXPECT_EQ(place.left, 123);
    EXPECT_EQ(place.top, 77);
}

TEST_F(ConversionWindowTest, TheTitleStripDragsTheWindowAndTheRestDoesNot) {
    AddSources(2);
    frmConverting window(input, services);
    Open(window);
    window.SetPlacement(100, 100, kKeepPlacement, kKeepPlacement);
    Pump();
    WindowSend(window.windowHandle, kWmLButtonDown, kMkLButton, clMakeLParam(50, 8));
    WindowSend(window.windowHandle, kWmMouseMove, kMkLButton, clMakeLParam(80, 28));
    WindowSend(window.windowHandle, kWmLButtonUp, 0, clMakeLParam(80, 28));
    Pump();
    clRect place = WindowScreenRect(window.windowHandle);
    EXPECT_EQ(place.left, 130);
    EXPECT_EQ(place.top, 120);
    WindowSend(window.windowHandle, kWmLButtonDown, kMkLButton, clMakeLParam(50, 60));
    WindowSend(window.windowHandle, kWmMouseMove, kMkLButton, clMakeLParam(90, 90));
    WindowSend(window.windowHandle, kWmLButtonUp, 0, clMakeLParam(90, 90));
    Pump();
    EXPECT_EQ(WindowScreenRect(window.windowHandle).left, 130);
}

TEST_F(ConversionWindowTest, TheOptionsMenuSetsCoresPriorityAndTheFinishingChoices) {
    AddSources(3);
    frmConverting window(input, services);
    Open(window);
    clMenu menu;
    window.BuildMenu(menu);
    ASSERT_NE(menu.Find(kMenuCoresBase + 2), nullptr);
    EXPECT_TRUE(menu.Find(kMenuCoresBase + 2)->checked);
    EXPECT_TRUE(menu.Find(kMenuCoresBase + 1)->text.Equals(u"Using 1 Core"));
    EXPECT_TRUE(menu.Find(kMenuCoresBase + 2)->text.Equals(u"Using 2 Cores"));
    EXPECT_EQ(menu.Find(kMenuCoresBase + 3), nullptr);
    EXPECT_FALSE(menu.Find(kMenuViewLogs)->enabled) << "no logs yet";
    window.ChooseMenu(kMenuCoresBase + 1);
    EXPECT_EQ(window.Conversion().targetSlots, 1);
    window.ChooseMenu(kMenuPriorityBase + 3);
    EXPECT_EQ(GetSettingNumber(kPrioritySetting.name), 3u);
    window.ChooseMenu(kMenuAfterBase + 2);
    EXPECT_EQ(window.Conversion().afterAction, 2);
    window.ChooseMenu(kMenuSkipFinish);
    EXPECT_EQ(GetSettingNumber(kSkipFinishSetting.name), 1u);
    clMenu after;
    window.BuildMenu(after);
    EXPECT_TRUE(after.Find(kMenuPriorityBase + 3)->checked);
    EXPECT_FALSE(after.Find(kMenuPriorityBase + 0)->checked);
    EXPECT_TRUE(after.Find(kMenuAfterBase + 2)->checked);
    EXPECT_TRUE(after.Find(kMenuSkipFinish)->checked);
    // The Options button opens it; the handler answers as a user would.
    static uint32_t offered = 0;
    SetMenuHandler(
        [](const clMenu& shown, void*) {
            offered = static_cast<uint32_t>(shown.Count());
            return kMenuCoresBase + 2;
        },
        nullptr);
    Click(window.optionsButton);
    SetMenuHandler(nullptr, nullptr);
    EXPECT_GT(offered, 3u);
    EXPECT_EQ(window.Conversion().targetSlots, 2);
    SetSettingNumber(0, kPrioritySetting.name);
}

namespace {

// A 16 x 16 icon file of one colour (0x00BBGGRR), as a .ico beside a
// library is.
std::string IconFile(uint32_t color) {
    std::string out;
    auto le = [&out](uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    };
    le(0, 2), le(1, 2), le(1, 2);                              // the directory: one icon
    out += std::string{16, 16, 0, 0}, le(1, 2), le(32, 2);     // 16 x 16, 32 bits
    le(40 + 16 * 16 * 4 + 16 * 4, 4), le(22, 4);               // its size and place
    le(40, 4), le(16, 4), le(32, 4), le(1, 2), le(32, 2);      // the bitmap, twice as high for the mask
    le(0, 4), le(16 * 16 * 4 + 16 * 4, 4), le(0, 4), le(0, 4), le(0, 4), le(0, 4);
    for (int i = 0; i < 16 * 16; ++i) le(0xFF000000u | (clRed(color) << 16) | (clGreen(color) << 8) | clBlue(color), 4);
    out += std::string(16 * 4, '\0');  // the mask: all shown
    return out;
}

}  // namespace

// The encoder's icon and the effects' stand on the headline's level, the
// effects behind "DSPs: ", from the .ico files beside the libraries.
TEST_F(ConversionWindowTest, TheEncoderAndTheEffectsShowTheirIcons) {
    clString folder = GetProgramFolder();
    clString encoderIcon = JoinPath(JoinPath(folder, clString(u"encoder")), clString(u"Scripted.ico"));
    clString effectIcon = JoinPath(JoinPath(folder, clString(u"DSPs")), clString(u"Test Gain.ico"));
    MakeFolders(JoinPath(folder, clString(u"encoder")));
    MakeFolders(JoinPath(folder, clString(u"DSPs")));
    ASSERT_TRUE(WriteBytes(encoderIcon, IconFile(clRgb(200, 30, 30))));
    ASSERT_TRUE(WriteBytes(effectIcon, IconFile(clRgb(30, 30, 200))));
    SetSettingText(clString(u"-dspeffect1=\"Test Gain=\" -dspeffect2=\"No Icon=\""), kEntryEffectsSetting.name,
                   kSettingsHive, EntryKeyPath(clString(u"Scripted"), clString()).text);
    AddSources(2);
    frmConverting window(input, services);
    Open(window);
    clRect client = WindowClientRect(window.windowHandle);
    int32_t top = XWindow::ScaleUnits(26 + 6);
    int32_t right = client.right - XWindow::ScaleUnits(12);
    uint32_t encoder = PixelOf(window.windowHandle, right - XWindow::ScaleUnits(16), top + XWindow::ScaleUnits(16));
    EXPECT_TRUE(NearColor(encoder, clRgb(200, 30, 30), 40)) << std::hex << encoder;
    int32_t effectLeft = right - XWindow::ScaleUnits(32) - XWindow::ScaleUnits(8) - 16;
    uint32_t effect = PixelOf(window.windowHandle, effectLeft + 8, XWindow::ScaleUnits(26 + 10) + 8);
    EXPECT_TRUE(NearColor(effect, clRgb(30, 30, 200), 40)) << std::hex << effect;
    SaveGrabIfFailed(window.windowHandle);
    DeleteFileEx(encoderIcon);
    DeleteFileEx(effectIcon);
    SetSettingText(clString(), kEntryEffectsSetting.name, kSettingsHive,
                   EntryKeyPath(clString(u"Scripted"), clString()).text);
}

// The window in each state a user meets, kept as pictures for the
// screenshots (scripts/screenshots copies them from grabs/).
TEST_F(ConversionWindowTest, PicturesOfEveryState) {
    AddSources(4);
    frmConverting window(input, services);
    Open(window);
    window.SetPlacement(0, 0, kKeepPlacement, kKeepPlacement);
    window.TickNow(true);
    EXPECT_FALSE(SaveGrab(window.windowHandle, "conversion-1-examining").empty());
    PastExamining(window);
    Tick(window);
    ASSERT_EQ(launcher.started.size(), 2u);
    launcher.started[0]->out =
        u"MSGTO: qvt: msLen: 240000\r\nMSGTO: qvt: Action: Encoding '東京の夜 (Live).wav'\r\n"
        u"MSGTO: qvt: PCDone: 62\r\n";
    launcher.started[1]->out =
        u"MSGTO: qvt: msLen: 180000\r\nMSGTO: qvt: Action: Encoding 'A Very Long Title Of A Track That Goes On And "
        u"On.wav'\r\nMSGTO: qvt: PCDone: 35\r\n";
    now += 6000;
    Tick(window, 2);
    EXPECT_FALSE(window.Conversion().speedText.IsEmpty());
    SaveGrab(window.windowHandle, "conversion-2-converting");
    Click(window.pauseButton);
    Tick(window);
    SaveGrab(window.windowHandle, "conversion-3-paused");
    Click(window.pauseButton);
    launcher.started[1]->err = u"Unsupported file\r\n";
    launcher.started[1]->ended = true;
    Tick(window, 2);
    SaveGrab(window.windowHandle, "conversion-4-with-an-error");
    answer = true;
    Click(window.cancelButton);
    Tick(window);
    SaveGrab(window.windowHandle, "conversion-5-cancelling");
    for (auto& w : launcher.started) w->ended = true;
    Tick(window, 3);
    EXPECT_TRUE(window.IsClosed());

    clConversionInput second;
    for (int i = 0; i < 2; ++i) {
        clString path = dir.File(clString::Formatted(u"b%02d.wav", i).text);
        WriteBytes(path, std::string(1000, 'x'));
        second.sources.Add(new clSourceFile(path));
    }
    frmConverting finished(second, services);
    Open(finished);
    PastExamining(finished);
    Tick(finished);
    now += 65000;  // a minute's work
    for (auto& w : launcher.started) w->ended = true;
    TickUntilFinished(finished);
    SaveGrab(finished.windowHandle, "conversion-6-finished");
}

// Menu choices also arrive as commands: "Normal", the lowest id, too.
TEST_F(ConversionWindowTest, MenuCommandsReachTheConversion) {
    AddSources(3);
    frmConverting window(input, services);
    Open(window);
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(kMenuPriorityBase + 3, 0), 0);
    EXPECT_EQ(window.Conversion().priorityCode, 3);
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(kMenuPriorityBase + 0, 0), 0);
    EXPECT_EQ(window.Conversion().priorityCode, 0);
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(kMenuCoresBase + 1, 0), 0);
    EXPECT_EQ(window.Conversion().targetSlots, 1);
}
