// Events and mutexes, named (visible to every process of the user) or
// unnamed (this process only), with the semantics of the Windows objects:
//   - creating a name that exists opens it and reports `existed` (the
//     "already exists", error 183, of CreateEventW / CreateMutexW);
//   - a name disappears when its last holder closes it or dies (also by
//     SIGKILL); a stale name never blocks a later run;
//   - events are manual-reset: Set, Reset, and Wait (0 ms tests);
//   - mutexes: Wait, Release; a holder's death releases the lock
//     (the wait then still succeeds, as WAIT_ABANDONED does on Windows).
// Windows uses the real objects. POSIX keeps each name as a file in the
// per-user runtime folder ($XDG_RUNTIME_DIR/quillotone, else
// /tmp/quillotone-<uid>, mode 0700), see namedobjects_posix.cpp.
//
// A mutex is owned by the thread that took it; the POSIX side does not
// let the same thread take it twice without releasing.
#pragma once

#include <cstdint>

using clSyncHandle = intptr_t;  // 0 when none

constexpr uint32_t clWaitForever = 0xFFFFFFFFu;
constexpr uint32_t clWaitObject0 = 0;
constexpr uint32_t clWaitTimeout = 258;
constexpr uint32_t clWaitFailed = 0xFFFFFFFFu;

// Null or empty name: an unnamed object. 0 on failure.
clSyncHandle PlatformCreateEvent(const char16_t* name, bool* existed);
bool PlatformSetEvent(clSyncHandle event);
bool PlatformResetEvent(clSyncHandle event);
uint32_t PlatformWaitEvent(clSyncHandle event, uint32_t milliseconds);

clSyncHandle PlatformCreateMutex(const char16_t* name, bool* existed);
uint32_t PlatformWaitMutex(clSyncHandle mutex, uint32_t milliseconds);
bool PlatformReleaseMutex(clSyncHandle mutex);

void PlatformCloseSync(clSyncHandle handle);
