#include <windows.h>

#include "foundation/platform/fileio.h"
#include "foundation/platform/filesystem.h"

namespace {

LPCWSTR W(const char16_t* text) { return reinterpret_cast<LPCWSTR>(text); }

void Fill(const WIN32_FIND_DATAW& data, clFindData& found) {
    found.attributes = data.dwFileAttributes;
    found.size = (static_cast<uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    uint64_t ticks =
        (static_cast<uint64_t>(data.ftLastWriteTime.dwHighDateTime) << 32) | data.ftLastWriteTime.dwLowDateTime;
    found.writeTime = static_cast<int64_t>(ticks / 10000000ULL) - 11644473600LL;
    found.writeNanoseconds = (static_cast<int64_t>(ticks) - 116444736000000000LL) * 100;
    found.creationTicks =
        (static_cast<uint64_t>(data.ftCreationTime.dwHighDateTime) << 32) | data.ftCreationTime.dwLowDateTime;
    found.name.Assign(reinterpret_cast<const char16_t*>(data.cFileName));
}

}  // namespace

clFindHandle PlatformFindFirst(const char16_t* pattern, clFindData& found) {
    WIN32_FIND_DATAW data;
    HANDLE h = FindFirstFileW(W(pattern), &data);
    if (h == INVALID_HANDLE_VALUE) return clInvalidFind;
    Fill(data, found);
    return reinterpret_cast<clFindHandle>(h);
}

bool PlatformFindNext(clFindHandle handle, clFindData& found) {
    if (handle == clInvalidFind) return false;
    WIN32_FIND_DATAW data;
    if (!FindNextFileW(reinterpret_cast<HANDLE>(handle), &data)) return false;
    Fill(data, found);
    return true;
}

void PlatformFindClose(clFindHandle handle) {
    if (handle != clInvalidFind) FindClose(reinterpret_cast<HANDLE>(handle));
}

bool PlatformDeleteFile(const char16_t* path) { return DeleteFileW(W(path)) != FALSE; }

bool PlatformMoveFile(const char16_t* from, const char16_t* to) { return MoveFileW(W(from), W(to)) != FALSE; }

bool PlatformReplaceFile(const char16_t* from, const char16_t* to) {
    // Another process that replaces or reads the same target at this
    // moment makes the move fail for a moment (a sharing violation, or
    // access denied while the old file is on its way out), where a POSIX
    // rename would simply win. Such a failure is tried again for about a
    // second before it stands.
    for (int attempt = 0;; ++attempt) {
        if (MoveFileExW(W(from), W(to), MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH)) {
            return true;
        }
        DWORD error = GetLastError();
        bool passing = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED || error == ERROR_LOCK_VIOLATION;
        if (!passing || attempt == 20) {
            SetLastError(error);
            return false;
        }
        Sleep(50);
    }
}

bool PlatformCreateDirectory(const char16_t* path) { return CreateDirectoryW(W(path), nullptr) != FALSE; }

bool PlatformRemoveDirectory(const char16_t* path) { return RemoveDirectoryW(W(path)) != FALSE; }

bool PlatformSetFileAttributes(const char16_t* path, uint32_t attributes) {
    return SetFileAttributesW(W(path), attributes) != FALSE;
}

uint32_t PlatformGetDriveType(const char16_t* root) { return GetDriveTypeW(W(root)); }

bool PlatformIsReadOnlyVolume(const char16_t* root) {
    DWORD flags = 0;
    return GetVolumeInformationW(W(root), nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) &&
           (flags & FILE_READ_ONLY_VOLUME) != 0;
}

namespace {

// The volume and index of a file, which name it whatever path reaches it.
bool FileIdentity(const char16_t* path, BY_HANDLE_FILE_INFORMATION& info) {
    HANDLE file = CreateFileW(W(path), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    bool ok = GetFileInformationByHandle(file, &info) != FALSE;
    CloseHandle(file);
    return ok;
}

}  // namespace

bool PlatformSameFile(const char16_t* first, const char16_t* second) {
    BY_HANDLE_FILE_INFORMATION a{};
    BY_HANDLE_FILE_INFORMATION b{};
    return FileIdentity(first, a) && FileIdentity(second, b) && a.dwVolumeSerialNumber == b.dwVolumeSerialNumber &&
           a.nFileIndexHigh == b.nFileIndexHigh && a.nFileIndexLow == b.nFileIndexLow;
}

clFileKind PlatformFileKind(const char16_t* path) {
    DWORD attributes = GetFileAttributesW(W(path));
    if (attributes == INVALID_FILE_ATTRIBUTES) return clFileKind::Missing;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return clFileKind::Folder;
    if ((attributes & FILE_ATTRIBUTE_DEVICE) != 0) return clFileKind::Other;
    // A name such as "\\.\pipe\x" or "CON" opens a device, not a file.
    HANDLE file = CreateFileW(W(path), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return clFileKind::Regular;
    DWORD type = GetFileType(file);
    CloseHandle(file);
    return type == FILE_TYPE_DISK ? clFileKind::Regular : clFileKind::Other;
}

uint32_t PlatformGetLogicalDrives() { return GetLogicalDrives(); }

bool PlatformGetFreeSpace(const char16_t* path, uint64_t* freeBytes) {
    ULARGE_INTEGER available{};
    if (!GetDiskFreeSpaceExW(W(path), &available, nullptr, nullptr)) return false;
    *freeBytes = available.QuadPart;
    return true;
}

bool PlatformGetVolumeRoot(const char16_t* path, clString& root) {
    root.Clear();
    wchar_t volume[MAX_PATH + 1] = {};
    if (!GetVolumePathNameW(W(path), volume, MAX_PATH)) return false;
    root = reinterpret_cast<const char16_t*>(volume);
    return !root.IsEmpty();
}

bool PlatformGetTempPath(clString& path) {
    path.SetCapacity(261);
    DWORD n = GetTempPathW(260, reinterpret_cast<LPWSTR>(path.text));
    if (n == 0 || n > 260) {
        path.Clear();
        return false;
    }
    path.size = static_cast<int32_t>(n) + 1;
    return true;
}

bool PlatformGetVolumeLabel(const char16_t* root, clString& label) {
    wchar_t buffer[MAX_PATH + 1] = {};
    label.Clear();
    if (!GetVolumeInformationW(W(root), buffer, MAX_PATH + 1, nullptr, nullptr, nullptr, nullptr, 0)) return false;
    label.Assign(reinterpret_cast<const char16_t*>(buffer));
    return !label.IsEmpty();
}
