#include "foundation/syncobjects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "tests/support/testfolder.h"

namespace {

// A name no other test run uses.
clString UniqueName(const char16_t* stem) {
    return clString::Formatted(u"qvtest-%s-%s", stem, GetProcessGuidText().text);
}

// Runs the helper program in a second process; its exit code.
int Helper(const char16_t* command, const clString& name) {
    clString folder = GetProgramFolder();
    clString program = JoinPath(folder, clString(u"qv_testhelper"));
    program.Append(PlatformExecutableSuffix());
    clStringList args;
    args.Add(command);
    args.Add(name);
    TestFolder dir;
    int code = -1;
    if (!PlatformRunProcess(program, args, dir.File(u"helper.txt"), &code)) return -1;
    return code;
}

}  // namespace

TEST(XEvent, ManualResetSetResetAndExisted) {
    clString name = UniqueName(u"evt");
    XEvent first;
    ASSERT_TRUE(first.Create(name.text));
    EXPECT_FALSE(first.existed);
    EXPECT_FALSE(first.IsSet());
    XEvent second;
    ASSERT_TRUE(second.Create(name.text));
    EXPECT_TRUE(second.existed);
    first.Set();
    EXPECT_TRUE(second.IsSet());
    EXPECT_TRUE(second.IsSet());  // manual reset: it stays set
    second.Reset();
    EXPECT_FALSE(first.IsSet());
    EXPECT_EQ(first.Wait(30), clWaitTimeout);
    XEvent none;
    EXPECT_FALSE(none.IsSet());
    XEvent unnamedA, unnamedB;
    ASSERT_TRUE(unnamedA.Create(nullptr));
    ASSERT_TRUE(unnamedB.Create(nullptr));
    unnamedA.Set();
    EXPECT_FALSE(unnamedB.IsSet());
}

TEST(XEvent, NameGoesWithItsLastHolder) {
    clString name = UniqueName(u"gone");
    {
        XEvent a;
        a.Create(name.text);
        a.Set();
    }
    XEvent again;
    again.Create(name.text);
    EXPECT_FALSE(again.existed);
    EXPECT_FALSE(again.IsSet());
}

TEST(XEvent, WaitWithoutLimitWakesOnSetFromAnotherThread) {
    clString name = UniqueName(u"wake");
    XEvent waiter;
    waiter.Create(name.text);
    std::thread setter([&] {
        XEvent other;
        other.Create(name.text);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        other.Set();
    });
    EXPECT_EQ(waiter.Wait(clWaitForever), clWaitObject0);
    setter.join();
}

TEST(XEvent, VisibleToAnotherProcess) {
    clString name = UniqueName(u"cross");
    XEvent event;
    ASSERT_TRUE(event.Create(name.text));
    EXPECT_EQ(Helper(u"event-state", name), 10);  // exists, not set
    event.Set();
    EXPECT_EQ(Helper(u"event-state", name), 11);
    event.Reset();
    EXPECT_EQ(Helper(u"event-set", name), 0);
    EXPECT_TRUE(event.IsSet());
    event.Close();
    EXPECT_EQ(Helper(u"event-state", name), 0);  // gone with its last holder
}

TEST(ClMutex, ExcludesThreadsAndProcesses) {
    clString name = UniqueName(u"mtx");
    clMutex mutex;
    ASSERT_TRUE(mutex.Create(name.text));
    EXPECT_FALSE(mutex.existed);
    EXPECT_EQ(Helper(u"mutex-try", name), 1);
    ASSERT_TRUE(mutex.Wait());
    EXPECT_TRUE(mutex.isHeld);
    EXPECT_EQ(Helper(u"mutex-try", name), 0);
    std::atomic<bool> other{true};
    std::thread t([&] {
        clMutex second;
        second.Create(name.text);
        other = second.Wait(20);
    });
    t.join();
    EXPECT_FALSE(other);
    mutex.Release();
    EXPECT_FALSE(mutex.isHeld);
    EXPECT_EQ(Helper(u"mutex-try", name), 1);
}

TEST(ClMutex, UnnamedCountsUnderContention) {
    clMutex mutex;
    ASSERT_TRUE(mutex.Create(nullptr));
    int counter = 0;
    std::thread threads[4];
    for (auto& t : threads) {
        t = std::thread([&] {
            clMutex* m = &mutex;
            for (int i = 0; i < 2000; ++i) {
                PlatformWaitMutex(m->handle, clWaitForever);
                ++counter;
                PlatformReleaseMutex(m->handle);
            }
        });
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(counter, 8000);
}
