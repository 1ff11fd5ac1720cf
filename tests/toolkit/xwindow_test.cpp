// The window base: a class of its own per window, placement, timers and
// the order in which messages reach the virtual operations; clFont's
// default face; the main-thread queue woken through the toolkit; the
// loop's watch on a wake or a worker raised on another thread.
#include "toolkit/xwindow.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "foundation/mainthreadsync.h"
#include "foundation/platform/workerprocess.h"
#include "tests/support/toolkittest.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"
#include "toolkit/font.h"

namespace {

class RecordingWindow : public XWindow {
public:
    std::vector<std::string> calls;
    std::vector<uint64_t> timerValues;
    bool takeRaw = false;

    intptr_t OnIdOk() override {
        calls.push_back("OnIdOk");
        return 0;
    }
    intptr_t OnCommand(uint32_t id, clWindowHandle, uint32_t code) override {
        calls.push_back("OnCommand " + std::to_string(id) + "/" + std::to_string(code));
        return 0;
    }
    intptr_t OnTimer(uint64_t id, uint64_t userValue) override {
        timerValues.push_back(id * 1000 + userValue);
        return 0;
    }
    intptr_t OnRawMessage(clWindowHandle, uint32_t message, uintptr_t, intptr_t, uint32_t* handledFlag) override {
        *handledFlag = takeRaw && message == kWmCommand ? 1 : 0;
        if (*handledFlag != 0) calls.push_back("raw");
        return 0;
    }
};

bool MakeWindow(XWindow& window) {
    return window.Create(u"Test", clRect::Sized(40, 30, 200, 120), kWsPopup, 0, nullptr);
}

}  // namespace

TEST(XWindow, EachWindowHasAClassOfItsOwnEvenWithinOneMillisecond) {
    RecordingWindow first, second;
    ASSERT_TRUE(MakeWindow(first));
    ASSERT_TRUE(MakeWindow(second));
    EXPECT_FALSE(first.className.Equals(second.className));
    EXPECT_EQ(first.className.Find(u"XWnd"), 1);
    EXPECT_EQ(XWindow::FromHandle(first.windowHandle), &first);
    first.DestroyWindowObject();
    EXPECT_EQ(first.windowHandle, nullptr);
    EXPECT_TRUE(first.className.IsEmpty());
}

TEST(XWindow, IdCommandsCallTheirOperationFirstAndRawMessagesCanTakeThem) {
    RecordingWindow window;
    ASSERT_TRUE(MakeWindow(window));
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(1, 0), 0);
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(1, 1), 0);
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(12, 0), 0);
    std::vector<std::string> expected = {"OnIdOk", "OnCommand 1/0", "OnCommand 1/1", "OnCommand 12/0"};
    EXPECT_EQ(window.calls, expected);
    window.calls.clear();
    window.takeRaw = true;
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(1, 0), 0);
    EXPECT_EQ(window.calls, std::vector<std::string>{"raw"});
}

TEST(XWindow, PlacementKeepsWhatIsNotGiven) {
    RecordingWindow window;
    ASSERT_TRUE(MakeWindow(window));
    WindowShow(window.windowHandle, true);
    Pump();
    window.SetPlacement(70, 80, kKeepPlacement, kKeepPlacement);
    Pump();
    clRect place = WindowScreenRect(window.windowHandle);
    EXPECT_EQ(place.left, 70);
    EXPECT_EQ(place.top, 80);
    EXPECT_EQ(place.Width(), 200) << "moved without resizing";
    EXPECT_EQ(place.Height(), 120);
    window.SetPlacement(kKeepPlacement, kKeepPlacement, 150, kKeepPlacement);
    Pump();
    place = WindowScreenRect(window.windowHandle);
    EXPECT_EQ(place.left, 70);
    EXPECT_EQ(place.Width(), 150);
    EXPECT_EQ(place.Height(), 120);
}

TEST(XWindow, TimerIdZeroTakesOneMoreThanTheHighestAndTimersCarryTheirValue) {
    RecordingWindow window;
    ASSERT_TRUE(MakeWindow(window));
    EXPECT_EQ(window.SetTimerEx(1000, 0, 3), 3u);
    EXPECT_EQ(window.SetTimerEx(1000, 0, 7), 7u);
    EXPECT_EQ(window.SetTimerEx(20, 42, 0), 8u);
    ToolkitProcessFor(150);
    ASSERT_FALSE(window.timerValues.empty());
    EXPECT_EQ(window.timerValues.front(), 8042u);
    EXPECT_TRUE(window.KillTimerEx(8));
    EXPECT_FALSE(window.KillTimerEx(8));
    window.timerValues.clear();
    ToolkitProcessFor(80);
    EXPECT_TRUE(window.timerValues.empty());
    EXPECT_EQ(window.timers.count, 2);
    EXPECT_EQ(window.timerNames.Count(), 2);
}

TEST(XWindow, AFailedWindowIsInert) {
    RecordingWindow window;
    EXPECT_EQ(window.Dispatch(kWmCommand, clMakeWParam(1, 0), 0), 0);
    EXPECT_TRUE(window.calls.empty());
    EXPECT_EQ(window.SetTimerEx(10, 0, 0), 0u);
}

TEST(XWindow, ScaleUnitsUsesTheScreensDensity) {
    int32_t dpi = ToolkitScreenDpi();
    EXPECT_EQ(XWindow::ScaleUnits(96), dpi);
    EXPECT_EQ(XWindow::ScaleUnits(38), 38 * dpi / 96);
}

TEST(ClFont, AnEmptyOrOverLongFaceIsTahoma) {
    clFont font;
    font.CreateFont(nullptr, "", 13, 0, 0, false, false, false);
    EXPECT_TRUE(font.font.face.Equals(u"Tahoma"));
    font.CreateFont(nullptr, "An Extremely Long Font Family Name", 13, 0, 0, true, false, false);
    EXPECT_TRUE(font.font.face.Equals(u"Tahoma"));
    EXPECT_TRUE(font.font.bold);
    font.CreateFont(nullptr, "DejaVu Sans", 13, 0, 0, false, false, false);
    EXPECT_TRUE(font.font.face.Equals(u"DejaVu Sans"));
}

// Deliberate: the main-thread queue is woken by a queued call into the
// toolkit's loop (Qt) or a message to a hidden window (Win32), not by a
// window of the posting thread.
TEST(XMainThreadSync, APostFromAnotherThreadRunsInTheToolkitsLoop) {
    bool ran = false;
    std::thread poster([&ran] { XMainThreadSync::Instance().Post([&ran] { ran = true; }); });
    poster.join();
    for (int i = 0; i < 50 && !ran; ++i) ToolkitProcessFor(10);
    EXPECT_TRUE(ran);
}

namespace {

constexpr uint32_t kWatchMessage = 0x8020;

class WatchingWindow : public XWindow {
public:
    int seen = 0;
    intptr_t OnRawMessage(clWindowHandle, uint32_t message, uintptr_t, intptr_t, uint32_t* handledFlag) override {
        *handledFlag = message == kWatchMessage ? 1 : 0;
        seen += *handledFlag;
        return 0;
    }
};

// The loop for up to five seconds, until the window has seen `count`.
void PumpUntilSeen(const WatchingWindow& window, int count) {
    for (int i = 0; i < 500 && window.seen < count; ++i) ToolkitProcessFor(10);
}

}  // namespace

// A wake raised from another thread reaches the window once, as its
// message; the watch then ends though the wake stays raised, until it is
// watched again. A watch of nothing ends the last.
TEST(ToolkitWatch, AWakeRaisedElsewherePostsTheMessageOnceAndEndsTheWatch) {
    WatchingWindow window;
    ASSERT_TRUE(MakeWindow(window));
    clWakeHandle wake = PlatformCreateWake();
    ASSERT_NE(wake, clNoWake);
    intptr_t waitables[] = {PlatformWakeWaitable(wake)};
    ToolkitWatch(window.windowHandle, waitables, 1, kWatchMessage);
    ToolkitProcessFor(30);
    EXPECT_EQ(window.seen, 0) << "nothing was raised";

    std::thread raiser([wake] { PlatformRaiseWake(wake); });
    raiser.join();
    PumpUntilSeen(window, 1);
    ToolkitProcessFor(30);
    EXPECT_EQ(window.seen, 1);

    PlatformRaiseWake(wake);
    ToolkitWatch(window.windowHandle, waitables, 1, kWatchMessage);
    PumpUntilSeen(window, 2);
    EXPECT_EQ(window.seen, 2);

    PlatformWaitWorkers(nullptr, 0, wake, 0);
    ToolkitWatch(window.windowHandle, waitables, 1, kWatchMessage);
    ToolkitWatch(window.windowHandle, nullptr, 0, kWatchMessage);
    PlatformRaiseWake(wake);
    ToolkitProcessFor(30);
    ToolkitProcessPending();
    EXPECT_EQ(window.seen, 2) << "the watch was ended";
    PlatformCloseWake(wake);
    window.DestroyWindowObject();
}
