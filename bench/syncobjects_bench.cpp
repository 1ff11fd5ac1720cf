// How soon a named event set in one process is seen by a zero-wait test in
// another (the worker's cancel and watchdog events work this way), and the
// cost of the calls themselves. The second process is a fork that spins on
// IsSet; both read the same monotonic clock.
#include <benchmark/benchmark.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>

#include "foundation/folders.h"
#include "foundation/syncobjects.h"

namespace {

int64_t Now() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void SetSeenByAnotherProcess(benchmark::State& state) {
    clString go = clString::Formatted(u"qvbench-go-%s", GetProcessGuidText().text);
    clString ack = clString::Formatted(u"qvbench-ack-%s", GetProcessGuidText().text);
    auto* seenAt = static_cast<std::atomic<int64_t>*>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    XEvent goEvent, ackEvent;
    goEvent.Create(go.text);
    ackEvent.Create(ack.text);
    pid_t child = fork();
    if (child == 0) {
        XEvent g, a;
        g.Create(go.text);
        a.Create(ack.text);
        for (;;) {
            while (!g.IsSet()) {
            }
            seenAt->store(Now());
            g.Reset();
            if (seenAt[1].load() != 0) _exit(0);
            a.Set();
        }
    }
    int64_t worst = 0;
    for (auto _ : state) {
        int64_t setAt = Now();
        goEvent.Set();
        ackEvent.Wait(clWaitForever);
        ackEvent.Reset();
        int64_t latency = seenAt->load() - setAt;
        if (latency > worst) worst = latency;
        state.SetIterationTime(static_cast<double>(latency) / 1e9);
    }
    seenAt[1].store(1);
    goEvent.Set();
    waitpid(child, nullptr, 0);
    state.counters["worst_us"] = static_cast<double>(worst) / 1000.0;
    munmap(seenAt, 4096);
}
BENCHMARK(SetSeenByAnotherProcess)->UseManualTime()->Iterations(2000)->Unit(benchmark::kMicrosecond);

void ZeroWaitTest(benchmark::State& state) {
    XEvent event;
    event.Create(clString::Formatted(u"qvbench-test-%s", GetProcessGuidText().text).text);
    for (auto _ : state) benchmark::DoNotOptimize(event.IsSet());
}
BENCHMARK(ZeroWaitTest);

void CreateAndCloseNamedEvent(benchmark::State& state) {
    clString name = clString::Formatted(u"qvbench-life-%s", GetProcessGuidText().text);
    for (auto _ : state) {
        XEvent event;
        event.Create(name.text);
    }
}
BENCHMARK(CreateAndCloseNamedEvent);

void NamedMutexUncontended(benchmark::State& state) {
    clMutex mutex;
    mutex.Create(clString::Formatted(u"qvbench-mutex-%s", GetProcessGuidText().text).text);
    for (auto _ : state) {
        mutex.Wait();
        mutex.Release();
    }
}
BENCHMARK(NamedMutexUncontended);

}  // namespace

BENCHMARK_MAIN();
