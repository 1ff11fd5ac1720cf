// clThread: a thread with a stop event and a bounded stop.
//
// The thread function gets an XEvent of its own that names the same event
// as the owner's `stopEvent`, and polls it with IsSet (or waits on it): a
// set event means "return now". Stop sets the event and waits up to
// `stopTimeout` ms (0: without limit); a thread that has not ended by then
// is parked, not killed (see platform/thread.h), and the next Stop wakes it
// and asks again. Start and Stop belong to the owner's thread only.
#pragma once

#include <cstdint>
#include <functional>

#include "foundation/platform/thread.h"
#include "foundation/syncobjects.h"

using clThreadFunction = void (*)(XEvent& stop, void* argument);

class clThread {
public:
    XEvent stopEvent;
    clThreadHandle threadHandle = 0;
    uint32_t stopTimeout = 0;
    bool isSuspended = false;

    clThread() = default;
    ~clThread() { Close(); }
    clThread(const clThread&) = delete;
    clThread& operator=(const clThread&) = delete;

    // The thread handle, 0 on failure. A running thread is stopped first.
    clThreadHandle Start(clThreadFunction function, void* argument, uint32_t timeoutMs);
    void Stop();
    // Stop, then release both handles.
    void Close();
    // True once the thread function has returned (and the thread ended).
    bool HasEnded() const { return threadHandle == 0 || PlatformWaitThread(threadHandle, 0); }
};

// Runs a function object on `thread` with a stop timeout of 5000 ms. The
// object is copied to the heap and destroyed on the new thread; an
// exception escaping it is caught and dropped there.
clThreadHandle clThreadRunFunction(clThread& thread, std::function<void(XEvent&)> function);

// Names the calling thread where the platform allows it.
void SetThreadNameIfPossible(const char16_t* name);
