// XEvent and clMutex: the records through which the program holds events
// and mutexes, named (shared with the user's other processes) or unnamed.
//
// XEvent is always a manual-reset event; IsSet tests it with a zero wait,
// and a record without a handle counts as not set. clMutex is taken with
// Wait and given back with Release; `isHeld` says whether this record
// holds it. Both close their handle in the destructor.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/platform/namedobjects.h"

class XEvent {
public:
    clSyncHandle handle = 0;
    bool existed = false;  // creating it found the name taken
    clString name;         // the name it was created with; empty when unnamed

    XEvent() = default;
    ~XEvent() { Close(); }
    XEvent(const XEvent&) = delete;
    XEvent& operator=(const XEvent&) = delete;

    // Creates or opens; false when no handle could be had.
    bool Create(const char16_t* name);
    void Close();
    bool Set() { return handle != 0 && PlatformSetEvent(handle); }
    bool Reset() { return handle != 0 && PlatformResetEvent(handle); }
    bool IsSet() const { return handle != 0 && PlatformWaitEvent(handle, 0) == clWaitObject0; }
    // clWaitObject0 when set in time, clWaitTimeout otherwise.
    uint32_t Wait(uint32_t milliseconds) const {
        return handle == 0 ? clWaitFailed : PlatformWaitEvent(handle, milliseconds);
    }
};

class clMutex {
public:
    clSyncHandle handle = 0;
    bool isHeld = false;
    bool existed = false;

    clMutex() = default;
    ~clMutex() { Destroy(); }
    clMutex(const clMutex&) = delete;
    clMutex& operator=(const clMutex&) = delete;

    // Releases and closes any handle held first. Null name: unnamed.
    bool Create(const char16_t* name);
    void Destroy();
    // True when taken within the time (clWaitForever: no limit).
    bool Wait(uint32_t milliseconds = clWaitForever);
    void Release();
};

// Takes a clMutex for the life of a scope.
class clMutexLock {
public:
    explicit clMutexLock(clMutex& m) : mutex(m) { mutex.Wait(); }
    ~clMutexLock() { mutex.Release(); }
    clMutexLock(const clMutexLock&) = delete;
    clMutexLock& operator=(const clMutexLock&) = delete;

private:
    clMutex& mutex;
};
