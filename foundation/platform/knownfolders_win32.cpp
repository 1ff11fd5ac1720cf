#include <shlobj.h>
#include <windows.h>

#include "foundation/platform/knownfolders.h"

namespace {

bool ReadMachineText(const wchar_t* name, clString& path) {
    wchar_t buffer[1024];
    DWORD bytes = sizeof buffer;
    LSTATUS rc = RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion", name, RRF_RT_REG_SZ,
                              nullptr, buffer, &bytes);
    if (rc != ERROR_SUCCESS) return false;
    path.Assign(reinterpret_cast<const char16_t*>(buffer));
    return !path.IsEmpty();
}

bool FromBuffer(UINT (*call)(LPWSTR, UINT), clString& path) {
    wchar_t buffer[261];
    UINT n = call(buffer, 260);
    if (n == 0 || n > 260) return false;
    path.Assign(reinterpret_cast<const char16_t*>(buffer));
    return true;
}

UINT TempPath(LPWSTR buffer, UINT size) { return GetTempPathW(size, buffer); }

}  // namespace

bool PlatformGetKnownFolder(int32_t id, clString& path) {
    path.Clear();
    switch (id) {
        case 20480: return ReadMachineText(L"ProgramFilesDir", path);
        case 20481: return FromBuffer(GetWindowsDirectoryW, path);
        case 20482: return FromBuffer(GetSystemDirectoryW, path);
        case 20483: return FromBuffer(TempPath, path);
        case 20484: return ReadMachineText(L"ProgramW6432Dir", path) || ReadMachineText(L"ProgramFilesDir", path);
        default: break;
    }
    LPITEMIDLIST list = nullptr;
    if (SHGetSpecialFolderLocation(nullptr, id, &list) != S_OK || list == nullptr) return false;
    wchar_t buffer[MAX_PATH + 1];
    bool ok = SHGetPathFromIDListW(list, buffer) != FALSE;
    CoTaskMemFree(list);
    if (!ok) return false;
    path.Assign(reinterpret_cast<const char16_t*>(buffer));
    return !path.IsEmpty();
}
