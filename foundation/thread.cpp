#include "foundation/thread.h"

#include <utility>

namespace {

struct clThreadStart {
    char16_t eventName[101];
    clThreadFunction function;
    void* argument;
};

void ThreadEntry(void* raw) {
    auto* start = static_cast<clThreadStart*>(raw);
    {
        XEvent stop;
        stop.Create(start->eventName);
        start->function(stop, start->argument);
    }
    delete start;
}

void RunFunctionObject(XEvent& stop, void* raw) {
    auto* function = static_cast<std::function<void(XEvent&)>*>(raw);
    try {
        (*function)(stop);
    } catch (...) {
        // Nothing may escape a thread: the failure stays with the task.
    }
    delete function;
}

}  // namespace

clThreadHandle clThread::Start(clThreadFunction function, void* argument, uint32_t timeoutMs) {
    if (threadHandle != 0) Close();
    isSuspended = false;
    stopTimeout = timeoutMs;
    auto* start = new clThreadStart{};
    start->function = function;
    start->argument = argument;
    for (uint32_t i = 0;; ++i) {
        clString name = clString::Formatted(u"TRDEVTQ-%d", static_cast<int>(PlatformTickCount() + i));
        stopEvent.Create(name.text);
        if (stopEvent.handle == 0) {
            delete start;
            return 0;
        }
        if (!stopEvent.existed) {
            int32_t n = name.Length() < 100 ? name.Length() : 100;
            for (int32_t k = 0; k < n; ++k) start->eventName[k] = name.text[k];
            start->eventName[n] = 0;
            break;
        }
    }
    threadHandle = PlatformStartThread(ThreadEntry, start);
    if (threadHandle == 0) {
        delete start;
        stopEvent.Close();
    }
    return threadHandle;
}

void clThread::Stop() {
    if (threadHandle == 0) return;
    if (isSuspended) {
        PlatformResumeThread(threadHandle);
        isSuspended = false;
    }
    stopEvent.Set();
    if (stopTimeout == 0) {
        PlatformWaitThread(threadHandle, clWaitForever);
    } else if (!PlatformWaitThread(threadHandle, stopTimeout)) {
        PlatformSuspendThread(threadHandle);
        isSuspended = true;
    }
}

void clThread::Close() {
    Stop();
    PlatformCloseThread(threadHandle);
    threadHandle = 0;
    stopEvent.Close();
}

clThreadHandle clThreadRunFunction(clThread& thread, std::function<void(XEvent&)> function) {
    auto* copy = new std::function<void(XEvent&)>(std::move(function));
    clThreadHandle handle = thread.Start(RunFunctionObject, copy, 5000);
    if (handle == 0) delete copy;
    return handle;
}

void SetThreadNameIfPossible(const char16_t* name) { PlatformSetThreadName(name); }
