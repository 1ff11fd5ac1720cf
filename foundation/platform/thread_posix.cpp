#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "foundation/commandlinetext.h"
#include "foundation/platform/posixsupport_posix.h"
#include "foundation/platform/thread.h"
#include "foundation/stringlist.h"

extern char** environ;

namespace {

// Shared by the owner and the thread. Whoever is last frees it: the owner
// in Close when the thread has ended, else the thread when it ends after
// Close.
struct ThreadRecord {
    pthread_t id{};
    void (*entry)(void*) = nullptr;
    void* argument = nullptr;
    std::mutex lock;
    std::condition_variable changed;
    bool ended = false;
    bool parked = false;
    bool closed = false;
};

void* Entry(void* raw) {
    auto* record = static_cast<ThreadRecord*>(raw);
    record->entry(record->argument);
    std::unique_lock<std::mutex> hold(record->lock);
    record->changed.wait(hold, [&] { return !record->parked; });
    record->ended = true;
    record->changed.notify_all();
    bool freeIt = record->closed;
    hold.unlock();
    if (freeIt) delete record;
    return nullptr;
}

ThreadRecord* Of(clThreadHandle h) { return reinterpret_cast<ThreadRecord*>(h); }

// Windows priority classes as nice values.
int NiceOf(uint32_t flags) {
    if ((flags & 0x40) != 0) return 19;    // idle
    if ((flags & 0x4000) != 0) return 10;  // below normal
    if ((flags & 0x8000) != 0) return -5;  // above normal
    if ((flags & 0x80) != 0) return -10;   // high
    return 0;
}

}  // namespace

clThreadHandle PlatformStartThread(void (*entry)(void*), void* argument) {
    auto* record = new ThreadRecord;
    record->entry = entry;
    record->argument = argument;
    if (pthread_create(&record->id, nullptr, Entry, record) != 0) {
        delete record;
        return 0;
    }
    pthread_detach(record->id);
    return reinterpret_cast<clThreadHandle>(record);
}

bool PlatformWaitThread(clThreadHandle thread, uint32_t milliseconds) {
    ThreadRecord* record = Of(thread);
    std::unique_lock<std::mutex> hold(record->lock);
    auto done = [&] { return record->ended; };
    if (milliseconds == 0xFFFFFFFFu) {
        record->changed.wait(hold, done);
        return true;
    }
    return record->changed.wait_for(hold, std::chrono::milliseconds(milliseconds), done);
}

void PlatformSuspendThread(clThreadHandle thread) {
    ThreadRecord* record = Of(thread);
    std::lock_guard<std::mutex> hold(record->lock);
    record->parked = true;
}

void PlatformResumeThread(clThreadHandle thread) {
    ThreadRecord* record = Of(thread);
    std::lock_guard<std::mutex> hold(record->lock);
    record->parked = false;
    record->changed.notify_all();
}

void PlatformCloseThread(clThreadHandle thread) {
    ThreadRecord* record = Of(thread);
    if (record == nullptr) return;
    std::unique_lock<std::mutex> hold(record->lock);
    if (record->ended) {
        hold.unlock();
        delete record;
        return;
    }
    record->closed = true;  // the thread frees the record when it ends
}

void PlatformSetThreadName(const char16_t* name) {
    std::string narrow = NativePath(name);
    if (narrow.size() > 15) narrow.resize(15);
    pthread_setname_np(pthread_self(), narrow.c_str());
}

uint32_t PlatformTickCount() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    uint64_t ms = static_cast<uint64_t>(now.tv_sec) * 1000u + static_cast<uint64_t>(now.tv_nsec) / 1000000u;
    return static_cast<uint32_t>(ms);
}

void PlatformSleep(uint32_t milliseconds) {
    timespec wait{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000L};
    while (nanosleep(&wait, &wait) != 0) {
    }
}

int32_t PlatformProcessorCount() {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof set, &set) == 0) {
        int count = CPU_COUNT(&set);
        if (count > 0) return count;
    }
    long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? static_cast<int32_t>(online) : 1;
}

void PlatformRaiseThreadPriority() {
    auto self = static_cast<id_t>(gettid());
    errno = 0;
    int nice = getpriority(PRIO_PROCESS, self);
    if (errno == 0) setpriority(PRIO_PROCESS, self, nice - 1);
}

void PlatformLowerThreadPriority() { setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 19); }

bool PlatformCreateProcess(const clProcessStart& start, clProcessHandle* process) {
    *process = 0;
    NativeArguments native = SplitNativeArguments(start.commandLine);
    if (native.argv.empty()) return false;
    std::vector<char*>& argv = native.argv;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    std::string folder = start.workingFolder.IsEmpty() ? std::string() : NativePath(start.workingFolder.text);
    if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    // Our descriptors are opened close-on-exec, so without inheritance the
    // child gets only the standard three.
    pid_t pid = 0;
    int rc = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) return false;
    int nice = NiceOf(start.creationFlags);
    if (nice != 0) setpriority(PRIO_PROCESS, static_cast<id_t>(pid), nice);
    *process = reinterpret_cast<clProcessHandle>(new ChildProcess{pid});
    return true;
}

bool PlatformWaitProcess(clProcessHandle process, uint32_t milliseconds) {
    auto* child = reinterpret_cast<ChildProcess*>(process);
    if (child->reaped) return true;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        int status = 0;
        pid_t r = waitpid(child->pid, &status, milliseconds == 0xFFFFFFFFu ? 0 : WNOHANG);
        if (r == child->pid) {
            child->reaped = true;
            return true;
        }
        if (r < 0 && errno != EINTR) return true;  // not ours any more
        if (milliseconds != 0xFFFFFFFFu && std::chrono::steady_clock::now() >= deadline) return false;
        if (r == 0) PlatformSleep(1);
    }
}

void PlatformTerminateProcess(clProcessHandle process, uint32_t /*exitCode*/) {
    auto* child = reinterpret_cast<ChildProcess*>(process);
    if (!child->reaped) kill(child->pid, SIGKILL);
}

void PlatformCloseProcess(clProcessHandle process) {
    auto* child = reinterpret_cast<ChildProcess*>(process);
    if (child == nullptr) return;
    // A child still running is left to run; it is reaped by nobody, which
    // leaves a zombie only until this process ends.
    if (child->pidfd >= 0) ::close(child->pidfd);
    delete child;
}
