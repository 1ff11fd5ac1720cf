#include <windows.h>

#include "foundation/platform/namedobjects.h"

namespace {
HANDLE H(clSyncHandle h) { return reinterpret_cast<HANDLE>(h); }
LPCWSTR Name(const char16_t* name) {
    return name != nullptr && name[0] != 0 ? reinterpret_cast<LPCWSTR>(name) : nullptr;
}
}  // namespace

clSyncHandle PlatformCreateEvent(const char16_t* name, bool* existed) {
    SetLastError(0);
    HANDLE h = CreateEventW(nullptr, TRUE, FALSE, Name(name));
    if (existed != nullptr) *existed = h != nullptr && GetLastError() == ERROR_ALREADY_EXISTS;
    return reinterpret_cast<clSyncHandle>(h);
}

bool PlatformSetEvent(clSyncHandle event) { return SetEvent(H(event)) != FALSE; }
bool PlatformResetEvent(clSyncHandle event) { return ResetEvent(H(event)) != FALSE; }

uint32_t PlatformWaitEvent(clSyncHandle event, uint32_t milliseconds) {
    return WaitForSingleObject(H(event), milliseconds);
}

clSyncHandle PlatformCreateMutex(const char16_t* name, bool* existed) {
    SetLastError(0);
    HANDLE h = CreateMutexW(nullptr, FALSE, Name(name));
    if (existed != nullptr) *existed = h != nullptr && GetLastError() == ERROR_ALREADY_EXISTS;
    return reinterpret_cast<clSyncHandle>(h);
}

uint32_t PlatformWaitMutex(clSyncHandle mutex, uint32_t milliseconds) {
    DWORD rc = WaitForSingleObject(H(mutex), milliseconds);
    return rc == WAIT_ABANDONED ? clWaitObject0 : rc;  // the holder died: the lock is ours
}

bool PlatformReleaseMutex(clSyncHandle mutex) { return ReleaseMutex(H(mutex)) != FALSE; }

void PlatformCloseSync(clSyncHandle handle) {
    if (handle != 0) CloseHandle(H(handle));
}
