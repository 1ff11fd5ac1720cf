// The file calls a few plug-ins make beyond reading and writing one open
// file (codecsupport.h): names in the form each platform's libraries take,
// a folder of their own in the temporary folder, and its entries. Names
// come and go as UTF-16, the ABI's form, so a plug-in opens exactly the
// file the program named on both platforms.
#pragma once

#include <cerrno>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace qvc {

#ifdef _WIN32
// Wide on Windows, where TagLib and the C library read narrow names in
// the ANSI code page, which can't hold every name.
using NativeName = std::wstring;
inline NativeName Native(const std::u16string& name) { return NativeName(name.begin(), name.end()); }
inline std::u16string FromNative(const NativeName& name) { return std::u16string(name.begin(), name.end()); }
#else
using NativeName = std::string;
inline NativeName Native(const std::u16string& name) { return FileName(name); }
inline std::u16string FromNative(const NativeName& name) { return FromBytes(name); }
#endif

// The temporary folder, ending with its separator.
inline std::u16string TempFolder() {
#ifdef _WIN32
    wchar_t path[MAX_PATH + 1];
    DWORD length = GetTempPathW(MAX_PATH + 1, path);
    if (length == 0 || length > MAX_PATH) return u"C:\\Windows\\Temp\\";
    return FromNative(NativeName(path, length));
#else
    const char* temp = std::getenv("TMPDIR");
    std::string folder = temp != nullptr && temp[0] != 0 ? temp : "/tmp";
    if (folder.back() != '/') folder += '/';
    return FromNative(folder);
#endif
}

inline char16_t Separator() {
#ifdef _WIN32
    return u'\\';
#else
    return u'/';
#endif
}

// Makes a folder only the user reads; true when it exists afterwards.
inline bool MakeFolder(const std::u16string& folder) {
#ifdef _WIN32
    return CreateDirectoryW(Native(folder).c_str(), nullptr) != 0 || GetLastError() == ERROR_ALREADY_EXISTS;
#else
    return ::mkdir(Native(folder).c_str(), 0700) == 0 || errno == EEXIST;
#endif
}

// Puts `from` in the place of `to`, replacing it.
inline bool ReplaceFile(const std::u16string& from, const std::u16string& to) {
#ifdef _WIN32
    return MoveFileExW(Native(from).c_str(), Native(to).c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
#else
    return std::rename(Native(from).c_str(), Native(to).c_str()) == 0;
#endif
}

inline void RemoveFile(const std::u16string& name) {
#ifdef _WIN32
    DeleteFileW(Native(name).c_str());
#else
    std::remove(Native(name).c_str());
#endif
}

// The names in a folder, without "." and "..".
inline std::vector<std::u16string> FolderEntries(const std::u16string& folder) {
    std::vector<std::u16string> names;
#ifdef _WIN32
    WIN32_FIND_DATAW found;
    HANDLE find = FindFirstFileW(Native(folder + u"\\*").c_str(), &found);
    if (find == INVALID_HANDLE_VALUE) return names;
    do {
        std::u16string name = FromNative(found.cFileName);
        if (name != u"." && name != u"..") names.push_back(name);
    } while (FindNextFileW(find, &found));
    FindClose(find);
#else
    if (DIR* dir = ::opendir(Native(folder).c_str())) {
        while (dirent* entry = ::readdir(dir)) {
            std::string name = entry->d_name;
            if (name != "." && name != "..") names.push_back(FromNative(name));
        }
        ::closedir(dir);
    }
#endif
    return names;
}

inline unsigned long ProcessId() {
#ifdef _WIN32
    return GetCurrentProcessId();
#else
    return static_cast<unsigned long>(::getpid());
#endif
}

}  // namespace qvc
