#include "foundation/syncobjects.h"

bool XEvent::Create(const char16_t* eventName) {
    Close();
    handle = PlatformCreateEvent(eventName, &existed);
    if (handle != 0) name = eventName;
    return handle != 0;
}

void XEvent::Close() {
    PlatformCloseSync(handle);
    handle = 0;
    name.Clear();
}

bool clMutex::Create(const char16_t* name) {
    Destroy();
    handle = PlatformCreateMutex(name, &existed);
    return handle != 0;
}

void clMutex::Destroy() {
    if (isHeld) Release();
    PlatformCloseSync(handle);
    handle = 0;
}

bool clMutex::Wait(uint32_t milliseconds) {
    if (handle == 0) return false;
    if (PlatformWaitMutex(handle, milliseconds) != clWaitObject0) return false;
    isHeld = true;
    return true;
}

void clMutex::Release() {
    if (handle == 0 || !isHeld) return;
    isHeld = false;
    PlatformReleaseMutex(handle);
}
