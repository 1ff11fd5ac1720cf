#include <windows.h>

#include "foundation/platform/fileio.h"

namespace {
HANDLE ToHandle(clFileHandle handle) { return reinterpret_cast<HANDLE>(handle); }
}  // namespace

uint32_t PlatformGetLastError() { return GetLastError(); }
void PlatformSetLastError(uint32_t code) { SetLastError(code); }

clFileHandle PlatformOpenFile(const char16_t* path, uint32_t access, uint32_t share, uint32_t disposition) {
    HANDLE h = CreateFileW(reinterpret_cast<LPCWSTR>(path), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                           nullptr);
    if (h == INVALID_HANDLE_VALUE) return clInvalidHandle;
    return reinterpret_cast<clFileHandle>(h);
}

bool PlatformReadFile(clFileHandle handle, void* buffer, uint32_t count, uint32_t* done) {
    DWORD n = 0;
    BOOL ok = ReadFile(ToHandle(handle), buffer, count, &n, nullptr);
    *done = n;
    return ok != FALSE;
}

bool PlatformWriteFile(clFileHandle handle, const void* buffer, uint32_t count, uint32_t* done) {
    DWORD n = 0;
    BOOL ok = WriteFile(ToHandle(handle), buffer, count, &n, nullptr);
    *done = n;
    return ok != FALSE;
}

void PlatformCloseFile(clFileHandle handle) {
    if (handle != clInvalidHandle) CloseHandle(ToHandle(handle));
}

int64_t PlatformSeekFile(clFileHandle handle, int64_t offset, int origin) {
    LONG high = static_cast<LONG>(offset >> 32);
    SetLastError(0);
    DWORD low =
        SetFilePointer(ToHandle(handle), static_cast<LONG>(offset & 0xFFFFFFFF), &high,
                       origin == clSeekBegin ? FILE_BEGIN : (origin == clSeekCurrent ? FILE_CURRENT : FILE_END));
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != 0) return -1;
    return (static_cast<int64_t>(high) << 32) | low;
}

int64_t PlatformFileSizeOf(clFileHandle handle) {
    DWORD high = 0;
    SetLastError(0);
    DWORD low = GetFileSize(ToHandle(handle), &high);
    if (low == INVALID_FILE_SIZE && GetLastError() != 0) return -1;
    return (static_cast<int64_t>(high) << 32) | low;
}
clFileHandle PlatformStandardHandle(int which) {
    HANDLE handle = which == 0   ? GetStdHandle(STD_INPUT_HANDLE)
                    : which == 1 ? GetStdHandle(STD_OUTPUT_HANDLE)
                    : which == 2 ? GetStdHandle(STD_ERROR_HANDLE)
                                 : nullptr;
    return handle == nullptr || handle == INVALID_HANDLE_VALUE ? clInvalidHandle
                                                               : reinterpret_cast<clFileHandle>(handle);
}

bool PlatformUsesWindowsPaths() { return true; }
