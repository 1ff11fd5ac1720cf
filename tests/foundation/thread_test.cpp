#include "foundation/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

#include "foundation/folders.h"
#include "foundation/mainthreadsync.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/processrunner.h"
#include "foundation/platform/thread.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/resource.h>
#include <unistd.h>
#endif
#include "tests/support/testfolder.h"

namespace {

void PollUntilStopped(XEvent& stop, void* argument) {
    auto* loops = static_cast<std::atomic<int>*>(argument);
    while (!stop.IsSet()) {
        ++*loops;
        PlatformSleep(1);
    }
}

clString HelperLine(const char16_t* command, int ms, const clString& file) {
    clString program = JoinPath(GetProgramFolder(), clString(u"qv_testhelper"));
    program.Append(PlatformExecutableSuffix());
    QuoteText(program);
    return clString::Formatted(u"%s %s %d \"%s\"", program.text, command, ms, file.text);
}

}  // namespace

TEST(ClThread, StopOfANeverStartedThreadReturnsAtOnce) {
    clThread thread;
    thread.Stop();
    thread.Close();
    EXPECT_EQ(thread.threadHandle, 0);
}

TEST(ClThread, StartRunsUntilAskedToStop) {
    std::atomic<int> loops{0};
    clThread thread;
    ASSERT_NE(thread.Start(PollUntilStopped, &loops, 5000), 0);
    EXPECT_FALSE(thread.stopEvent.existed);
    while (loops < 3) PlatformSleep(1);
    thread.Stop();
    EXPECT_FALSE(thread.isSuspended);
    EXPECT_TRUE(thread.HasEnded());
    thread.Close();
}

TEST(ClThread, ALateThreadIsParkedAndTheNextStopReleasesIt) {
    std::atomic<bool> release{false};
    std::atomic<bool> returned{false};
    clThread thread;
    clThreadRunFunction(thread, [&](XEvent&) {
        while (!release) PlatformSleep(1);
        returned = true;
    });
    thread.stopTimeout = 30;
    thread.Stop();
    EXPECT_TRUE(thread.isSuspended);
    EXPECT_FALSE(thread.HasEnded());
    release = true;
    PlatformSleep(50);
    EXPECT_FALSE(thread.HasEnded());  // parked: it does not end behind its owner's back
    thread.stopTimeout = 5000;
    thread.Stop();
    EXPECT_FALSE(thread.isSuspended);
    EXPECT_TRUE(thread.HasEnded());
    EXPECT_TRUE(returned);
}

TEST(ClThread, RunFunctionDropsAnEscapingException) {
    clThread thread;
    std::atomic<bool> ran{false};
    clThreadRunFunction(thread, [&](XEvent&) {
        ran = true;
        SetThreadNameIfPossible(u"ThreadToolTip");
        throw std::runtime_error("task failed");
    });
    thread.Stop();
    EXPECT_TRUE(ran);
    EXPECT_TRUE(thread.HasEnded());
}

TEST(MainThreadSync, BurstGivesOneWakeAndTasksRunInOrder) {
    XMainThreadSync sync;
    int wakes = 0;
    std::vector<int> order;
    sync.Post([&] { order.push_back(0); });  // no wake installed yet: it only queues
    sync.SetWake([&] {
        ++wakes;
        return true;
    });
    sync.Post([&] { order.push_back(1); });
    sync.Post([&] { throw std::runtime_error("dropped"); });
    sync.Post([&] { order.push_back(3); });
    EXPECT_EQ(wakes, 1);
    sync.RunPending();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 3}));
    sync.Post([&] { order.push_back(4); });
    EXPECT_EQ(wakes, 2);
    sync.RunPending();
    EXPECT_EQ(order.back(), 4);
}

TEST(ProcessRunner, WaitWithoutLimitReturnsWhenTheChildHasEnded) {
    TestFolder dir;
    clString marker = dir.File(u"done");
    clProcessRunner runner;
    runner.commandLine = HelperLine(u"touch-after", 200, marker);
    runner.program = u"does-not-exist";  // the command line wins
    runner.wait = true;
    EXPECT_TRUE(runner.Run());
    EXPECT_TRUE(PathExists(marker));
}

TEST(ProcessRunner, TimeoutWithoutTerminateLeavesTheChildRunning) {
    TestFolder dir;
    clString marker = dir.File(u"late");
    clProcessRunner runner;
    runner.commandLine = HelperLine(u"touch-after", 1500, marker);
    runner.wait = true;
    runner.timeoutMs = 200;
    EXPECT_FALSE(runner.Run());
    EXPECT_FALSE(PathExists(marker));
    for (int i = 0; i < 100 && !PathExists(marker); ++i) PlatformSleep(50);
    EXPECT_TRUE(PathExists(marker));
}

TEST(ProcessRunner, TimeoutWithTerminateEndsTheChild) {
    TestFolder dir;
    clString marker = dir.File(u"never");
    clProcessRunner runner;
    runner.commandLine = HelperLine(u"touch-after", 1000, marker);
    runner.wait = true;
    runner.timeoutMs = 200;
    runner.terminateOnTimeout = true;
    EXPECT_FALSE(runner.Run());
    PlatformSleep(1500);
    EXPECT_FALSE(PathExists(marker));
    EXPECT_FALSE(RunCommandLine(clString(u"\"/no/such/program\" x")));
}

// A background reader's thread goes to the lowest priority, and only that
// thread does.
TEST(ThreadPriority, LoweringTakesTheCallingThreadToTheLowest) {
    std::atomic<int> seen{-100};
    clThread thread;
    thread.Start(
        [](XEvent&, void* argument) {
            PlatformLowerThreadPriority();
#ifdef _WIN32
            static_cast<std::atomic<int>*>(argument)->store(GetThreadPriority(GetCurrentThread()));
#else
            errno = 0;
            static_cast<std::atomic<int>*>(argument)->store(getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())));
#endif
        },
        &seen, 5000);
    thread.Close();
#ifdef _WIN32
    EXPECT_EQ(seen.load(), THREAD_PRIORITY_LOWEST);
    EXPECT_EQ(GetThreadPriority(GetCurrentThread()), THREAD_PRIORITY_NORMAL);
#else
    EXPECT_EQ(seen.load(), 19);
    EXPECT_LT(getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())), 19);
#endif
}
