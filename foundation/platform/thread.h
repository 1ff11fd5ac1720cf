// Threads, child processes, ticks and sleeping.
//
// Suspending a thread: Windows freezes it with SuspendThread. POSIX has no
// such call; there a "suspended" thread is parked: it runs on, but when its
// function returns it blocks before it ends, until it is resumed. For the
// one use, a thread that did not stop in time, that is what matters: it
// never ends behind its owner's back and is asked again at the next stop.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

using clThreadHandle = intptr_t;   // 0 when none
using clProcessHandle = intptr_t;  // 0 when none

clThreadHandle PlatformStartThread(void (*entry)(void*), void* argument);
// True when the thread has ended within the time (clWaitForever: no limit).
bool PlatformWaitThread(clThreadHandle thread, uint32_t milliseconds);
void PlatformSuspendThread(clThreadHandle thread);
void PlatformResumeThread(clThreadHandle thread);
// Releases the handle; a thread still running (or parked) goes on alone.
void PlatformCloseThread(clThreadHandle thread);
// Names the calling thread where the platform can (at most 15 bytes on Linux).
void PlatformSetThreadName(const char16_t* name);

// GetTickCount: milliseconds of a monotonic clock as unsigned 32 bits,
// wrapping after 49.7 days. Differences are taken unsigned.
uint32_t PlatformTickCount();
void PlatformSleep(uint32_t milliseconds);

// The processors this process may run on (GetSystemInfo's count); at least 1.
int32_t PlatformProcessorCount();
// Raises the calling thread to above-normal priority. POSIX lowers its
// nice value by one where the user's limits allow, else nothing changes.
void PlatformRaiseThreadPriority();
// Lowers the calling thread to the lowest priority for background reading:
// THREAD_PRIORITY_LOWEST on Windows, nice 19 on POSIX.
void PlatformLowerThreadPriority();

struct clProcessStart {
    clString commandLine;  // Windows rules; POSIX splits it the same way
    bool inheritHandles = false;
    uint32_t creationFlags = 32;  // priority class; POSIX maps it to a nice value
    clString workingFolder;       // empty: the parent's
};

bool PlatformCreateProcess(const clProcessStart& start, clProcessHandle* process);
// True when the process has ended within the time.
bool PlatformWaitProcess(clProcessHandle process, uint32_t milliseconds);
void PlatformTerminateProcess(clProcessHandle process, uint32_t exitCode);
void PlatformCloseProcess(clProcessHandle process);
