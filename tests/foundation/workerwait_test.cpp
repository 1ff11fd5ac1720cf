// The scheduler's wait: it ends when a worker ends or the wake is raised,
// not when its time runs out. Each wait is given a minute; a wait that
// only the time ended would take the test past its 30 s check.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/platform/thread.h"
#include "foundation/platform/workerprocess.h"

namespace {

constexpr uint32_t kMinute = 60000;

double SecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The test helper as a worker that lives 100 ms.
bool StartStandIn(clProcessHandle& process, clThreadHandle& thread) {
    clString program = JoinPath(GetProgramFolder(), clString(u"qv_testhelper"));
    program.Append(PlatformExecutableSuffix());
    clString line(u"\"");
    line.Append(program);
    line.Append(u"\" -qvcmd=\"none\"");
    clPipeHandle outRead = clNoPipe, outWrite = clNoPipe, errRead = clNoPipe, errWrite = clNoPipe;
    if (!PlatformCreatePipe(&outRead, &outWrite) || !PlatformCreatePipe(&errRead, &errWrite)) return false;
    bool started = PlatformStartWorker(line, outWrite, errWrite, clNoPipe, &process, &thread);
    PlatformClosePipe(outRead);
    PlatformClosePipe(errRead);
    return started;
}

}  // namespace

TEST(WorkerWait, EndsWhenAWorkerEndsNotWhenItsTimeIsUp) {
    clWakeHandle wake = PlatformCreateWake();
    ASSERT_NE(wake, clNoWake);
    clProcessHandle processes[2] = {0, 0};
    clThreadHandle threads[2] = {0, 0};
    for (int i = 0; i < 2; ++i) ASSERT_TRUE(StartStandIn(processes[i], threads[i]));
    auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(PlatformWaitWorkers(processes, 2, wake, kMinute));
    EXPECT_LT(SecondsSince(start), 30.0) << "the wait ran out its time";
    EXPECT_TRUE(PlatformWaitProcess(processes[0], 0) || PlatformWaitProcess(processes[1], 0));
    // Once both have ended, a wait answers at once.
    for (clProcessHandle process : processes) PlatformWaitProcess(process, kMinute);
    start = std::chrono::steady_clock::now();
    EXPECT_TRUE(PlatformWaitWorkers(processes, 2, wake, kMinute));
    EXPECT_LT(SecondsSince(start), 30.0);
    for (int i = 0; i < 2; ++i) {
        PlatformCloseWorkerThread(threads[i]);
        PlatformCloseProcess(processes[i]);
    }
    PlatformCloseWake(wake);
}

TEST(WorkerWait, TheWakeEndsItFromAnotherThreadAndARaiseIsKeptForTheNextWait) {
    clWakeHandle wake = PlatformCreateWake();
    ASSERT_NE(wake, clNoWake);
    auto start = std::chrono::steady_clock::now();
    std::thread raiser([wake] {
        PlatformSleep(100);
        PlatformRaiseWake(wake);
    });
    EXPECT_TRUE(PlatformWaitWorkers(nullptr, 0, wake, kMinute));
    EXPECT_LT(SecondsSince(start), 30.0) << "the raise did not end the wait";
    raiser.join();
    // Raised while nobody waits: the next wait ends at once, and lowers it.
    PlatformRaiseWake(wake);
    start = std::chrono::steady_clock::now();
    EXPECT_TRUE(PlatformWaitWorkers(nullptr, 0, wake, kMinute));
    EXPECT_LT(SecondsSince(start), 30.0);
    EXPECT_FALSE(PlatformWaitWorkers(nullptr, 0, wake, 20)) << "a wait lowers the wake it ends on";
    PlatformCloseWake(wake);
}
