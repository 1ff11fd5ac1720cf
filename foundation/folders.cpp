#include "foundation/folders.h"

#include <atomic>

#include "foundation/file.h"
#include "foundation/findfiles.h"
#include "foundation/pathtext.h"
#include "foundation/platform/filesystem.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"

namespace {
constexpr int32_t kFolderLimit = 248;
constexpr uint32_t kReparsePoint = 0x400;
// Attempts that fail for another reason than a taken name (a folder that
// can't be written, say) are not repeated for ever.
constexpr int kMaxHardFailures = 100;
std::atomic<int> tempCounter{0};
}  // namespace

bool PathExists(const clString& path, bool* isFolder) {
    if (path.IsEmpty()) return false;
    clFindData data;
    clString longPath = GetLongPath(path, kFolderLimit);
    clFindHandle h = PlatformFindFirst(longPath.text, data);
    if (h != clInvalidFind) {
        PlatformFindClose(h);
        if (isFolder != nullptr) *isFolder = (data.attributes & clAttributeDirectory) != 0;
        return true;
    }
    clString root(path);
    AddBackslash(root);
    if (PlatformGetDriveType(root.text) != clDriveNoRootDir) {
        if (isFolder != nullptr) *isFolder = true;
        return true;
    }
    return false;
}

uint32_t GetFileAttributesOf(const clString& path, bool* failed) {
    clFindData data;
    clString longPath = GetLongPath(path, kFolderLimit);
    clFindHandle h = path.IsEmpty() ? clInvalidFind : PlatformFindFirst(longPath.text, data);
    if (h == clInvalidFind) {
        if (failed != nullptr) *failed = true;
        return 0;
    }
    PlatformFindClose(h);
    if (failed != nullptr) *failed = false;
    return data.attributes;
}

bool DeleteFileEx(const clString& path, bool retried) {
    clString longPath = GetLongPath(path, kFolderLimit);
    PlatformSetLastError(0);
    if (PlatformDeleteFile(longPath.text)) return true;
    if (PlatformGetLastError() != clErrorAccessDenied || retried) return false;
    bool failed = false;
    uint32_t attributes = GetFileAttributesOf(path, &failed);
    if (failed) return false;
    PlatformSetFileAttributes(longPath.text, attributes & ~clAttributeReadOnly);
    return DeleteFileEx(path, true);
}

bool MoveFileEx2(const clString& oldName, const clString& newName) {
    if (oldName.IsEmpty() || newName.IsEmpty()) return false;
    clString from = GetLongPath(oldName, kFolderLimit);
    clString to = GetLongPath(newName, kFolderLimit);
    return PlatformMoveFile(from.text, to.text);
}

bool DeleteFolderTree(const clString& folder, const char16_t* pattern) {
    if (folder.Length() < 3) return false;
    const char16_t* spec = pattern != nullptr ? pattern : u"*.*";
    bool allDeleted = true;
    {
        clFindFiles find{clString(spec), folder};
        while (find.Next()) {
            bool ok;
            bool isLink = (find.found.attributes & kReparsePoint) != 0;
            if (find.IsFolder() && !isLink) {
                ok = DeleteFolderTree(find.fullName, spec);
            } else if (find.IsFolder()) {
                clString longName = GetLongPath(find.fullName, kFolderLimit);
                ok = PlatformRemoveDirectory(longName.text);
            } else {
                ok = DeleteFileEx(find.fullName);
            }
            if (!ok) allDeleted = false;
        }
    }
    if (allDeleted) {
        clString longFolder = GetLongPath(folder, kFolderLimit);
        RemoveBackslashes(longFolder);
        PlatformRemoveDirectory(longFolder.text);
    }
    return allDeleted;
}

bool MakeFolders(const clString& path) {
    clString work = GetLongPath(path, kFolderLimit);
    if (work.IsEmpty()) return false;
    clStringList popped;
    for (;;) {
        clString component = PopLastComponent(work);
        if (component.IsEmpty()) break;
        popped.AddMove(static_cast<clString&&>(component));
    }
    AddBackslash(work);
    for (int64_t k = popped.Count() - 1; k >= 0; --k) {
        work.Append(popped[k]);
        PlatformSetLastError(0);
        if (!PlatformCreateDirectory(work.text) && PlatformGetLastError() != clErrorAlreadyExists) return false;
        AddBackslash(work);
    }
    return true;
}

clString GetTempFolder() {
    clString folder;
    if (!PlatformGetTempPath(folder) || folder.IsEmpty()) {
        folder = NativePathSyntax().IsWindows() ? clString(u"C:\\Temp") : clString(u"/tmp");
    }
    AddBackslash(folder);
    return folder;
}

const clString& GetProcessGuidText() {
    static const clString text = [] {
        unsigned char bytes[16] = {};
        PlatformCreateGuid(bytes);
        static const char16_t kDigits[] = u"0123456789ABCDEF";
        char16_t out[33];
        for (int i = 0; i < 16; ++i) {
            out[2 * i] = kDigits[bytes[i] >> 4];
            out[2 * i + 1] = kDigits[bytes[i] & 0xF];
        }
        out[32] = 0;
        return clString(out);
    }();
    return text;
}

bool MakeTempFile(clString& name, const char* prefix) {
    if (!name.IsEmpty()) DeleteFileEx(name);
    clString prefixText;
    prefixText.AssignAnsi(prefix != nullptr ? prefix : "TMP");
    clString folder = GetTempFolder();
    int hardFailures = 0;
    for (;;) {
        int number = ++tempCounter;
        clString fileName = clString::Formatted(u"%s-%s-%d", prefixText.text, GetProcessGuidText().text, number);
        clFile file;
        file.fileName = JoinPath(folder, fileName);
        PlatformSetLastError(0);
        file.Open(clAccessWrite, clCreateNew, false, true);
        if (file.handle == clInvalidHandle && PlatformGetLastError() == clErrorPathNotFound) {
            MakeFolders(folder);
            file.Open(clAccessWrite, clCreateNew, false, true);
        }
        if (file.handle != clInvalidHandle) {
            file.Close();
            name = file.fileName;
            return true;
        }
        uint32_t error = PlatformGetLastError();
        if (error != clErrorFileExists && error != clErrorAlreadyExists && ++hardFailures >= kMaxHardFailures) {
            name.Clear();
            return false;
        }
    }
}
