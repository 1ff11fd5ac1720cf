#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

#include "foundation/platform/fileio.h"
#include "foundation/platform/filesystem.h"
#include "foundation/platform/posixsupport_posix.h"
#include "foundation/wildcard.h"

namespace {

struct FindState {
    DIR* dir = nullptr;
    std::string folder;  // with trailing '/', or empty for the current folder
    clString pattern;    // the last component, wildcards allowed
};

constexpr uint32_t kReparsePoint = 0x400;

void FillFromStat(const struct stat& st, const char* name, bool isLink, clFindData& found) {
    found.attributes = isLink ? kReparsePoint : 0;
    if (S_ISDIR(st.st_mode)) found.attributes |= clAttributeDirectory;
    if ((st.st_mode & S_IWUSR) == 0) found.attributes |= clAttributeReadOnly;
    if (name[0] == '.') found.attributes |= clAttributeHidden;
    if (found.attributes == 0) found.attributes = clAttributeNormal;
    found.size = S_ISDIR(st.st_mode) ? 0 : static_cast<uint64_t>(st.st_size);
    found.writeTime = st.st_mtime;
    found.writeNanoseconds = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
    found.creationTicks = static_cast<uint64_t>(st.st_mtime + 11644473600LL) * 10000000ULL +
                          static_cast<uint64_t>(st.st_mtim.tv_nsec / 100);
    FromNative(name, found.name);
}

void TakeBirthTime(const std::string& path, clFindData& found) {
    struct statx birth {};
    if (::statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME, &birth) == 0 && (birth.stx_mask & STATX_BTIME) != 0) {
        found.creationTicks =
            static_cast<uint64_t>(birth.stx_btime.tv_sec + 11644473600LL) * 10000000ULL + birth.stx_btime.tv_nsec / 100;
    }
}

// The facts of `full` (named `name`), a link reported as a reparse point as
// Windows reports a junction, so that tree walks remove it instead of
// following it. False when nothing has that name.
bool StatEntry(const std::string& full, const char* name, clFindData& found) {
    struct stat st {};
    if (::lstat(full.c_str(), &st) != 0) return false;
    bool isLink = S_ISLNK(st.st_mode);
    if (isLink) {
        struct stat target {};
        if (::stat(full.c_str(), &target) == 0) st = target;
    }
    FillFromStat(st, name, isLink, found);
    TakeBirthTime(full, found);
    return true;
}

bool NextMatch(FindState& state, clFindData& found) {
    if (state.dir == nullptr) return false;  // a plain name, found at once
    while (dirent* entry = ::readdir(state.dir)) {
        clString name;
        FromNative(entry->d_name, name);
        if (!clWildcardMatch(state.pattern.text, name.text)) continue;
        if (StatEntry(state.folder + entry->d_name, entry->d_name, found)) return true;
    }
    return false;
}

}  // namespace

clFindHandle PlatformFindFirst(const char16_t* pattern, clFindData& found) {
    std::string native = NativePath(pattern);
    size_t slash = native.rfind('/');
    std::string folder = slash == std::string::npos ? std::string() : native.substr(0, slash + 1);
    std::string last = slash == std::string::npos ? native : native.substr(slash + 1);
    if (last.empty()) {
        PlatformSetLastError(clErrorFileNotFound);
        return clInvalidFind;
    }
    auto* state = new FindState;
    state->folder = folder;
    FromNative(last.c_str(), state->pattern);
    // A name without wildcards that exists as written needs no walk of its
    // folder: asking about one file of 100,000 must not read all of them.
    // Only a name that differs in case from the one on disk is left to the
    // walk, which matches ignoring case as Windows does.
    if (last.find_first_of("*?") == std::string::npos && last != "." && last != ".." &&
        StatEntry(native, last.c_str(), found)) {
        return reinterpret_cast<clFindHandle>(state);
    }
    state->dir = ::opendir(folder.empty() ? "." : folder.c_str());
    if (state->dir == nullptr) {
        SetLastErrorFromErrno(errno == ENOENT ? ENOTDIR : errno);
        delete state;
        return clInvalidFind;
    }
    if (!NextMatch(*state, found)) {
        ::closedir(state->dir);
        delete state;
        PlatformSetLastError(clErrorFileNotFound);
        return clInvalidFind;
    }
    return reinterpret_cast<clFindHandle>(state);
}

bool PlatformFindNext(clFindHandle handle, clFindData& found) {
    if (handle == clInvalidFind) return false;
    return NextMatch(*reinterpret_cast<FindState*>(handle), found);
}

void PlatformFindClose(clFindHandle handle) {
    if (handle == clInvalidFind) return;
    auto* state = reinterpret_cast<FindState*>(handle);
    if (state->dir != nullptr) ::closedir(state->dir);
    delete state;
}

bool PlatformDeleteFile(const char16_t* path) {
    std::string native = NativePath(path);
    struct stat st {};
    if (::lstat(native.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
        PlatformSetLastError(clErrorAccessDenied);
        return false;
    }
    if (::unlink(native.c_str()) != 0) {
        SetLastErrorFromErrno(errno);
        return false;
    }
    return true;
}

bool PlatformMoveFile(const char16_t* from, const char16_t* to) {
    std::string target = NativePath(to);
    // MoveFileW never replaces an existing target; rename(2) would.
    struct stat st {};
    if (::lstat(target.c_str(), &st) == 0) {
        PlatformSetLastError(clErrorAlreadyExists);
        return false;
    }
    if (::rename(NativePath(from).c_str(), target.c_str()) != 0) {
        SetLastErrorFromErrno(errno);
        return false;
    }
    return true;
}

namespace {

// Copies `from` to the new file `to`, whole or not at all.
bool CopyWhole(const std::string& from, const std::string& to) {
    int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0) return false;
    int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (out < 0) {
        ::close(in);
        return false;
    }
    char buffer[65536];
    bool ok = true;
    for (;;) {
        ssize_t got = ::read(in, buffer, sizeof buffer);
        if (got == 0) break;
        if (got < 0) {
            if (errno == EINTR) continue;
            ok = false;
            break;
        }
        for (ssize_t done = 0; done < got;) {
            ssize_t put = ::write(out, buffer + done, static_cast<size_t>(got - done));
            if (put < 0 && errno == EINTR) continue;
            if (put <= 0) {
                ok = false;
                break;
            }
            done += put;
        }
        if (!ok) break;
    }
    int saved = errno;
    ::close(in);
    if (::fsync(out) != 0) ok = false;
    if (::close(out) != 0) ok = false;
    if (!ok) {
        ::unlink(to.c_str());
        errno = saved != 0 ? saved : EIO;
    }
    return ok;
}

}  // namespace

bool PlatformReplaceFile(const char16_t* from, const char16_t* to) {
    std::string source = NativePath(from);
    std::string target = NativePath(to);
    if (::rename(source.c_str(), target.c_str()) == 0) return true;
    if (errno != EXDEV) {
        SetLastErrorFromErrno(errno);
        return false;
    }
    // Another volume: a copy beside the target first, so the target itself
    // is only ever replaced by a rename.
    // A short name of fixed length beside the target: the target's own
    // name may already be as long as a name can be.
    size_t slash = target.find_last_of('/');
    std::string beside = (slash == std::string::npos ? std::string() : target.substr(0, slash + 1)) + ".qvcopy" +
                         std::to_string(static_cast<long>(::getpid()));
    ::unlink(beside.c_str());
    if (!CopyWhole(source, beside) || ::rename(beside.c_str(), target.c_str()) != 0) {
        int saved = errno;
        ::unlink(beside.c_str());
        SetLastErrorFromErrno(saved);
        return false;
    }
    ::unlink(source.c_str());
    return true;
}

bool PlatformCreateDirectory(const char16_t* path) {
    if (::mkdir(NativePath(path).c_str(), 0777) != 0) {
        SetLastErrorFromErrno(errno == ENOENT ? ENOTDIR : errno);
        return false;
    }
    return true;
}

bool PlatformRemoveDirectory(const char16_t* path) {
    if (::rmdir(NativePath(path).c_str()) != 0) {
        SetLastErrorFromErrno(errno);
        return false;
    }
    return true;
}

bool PlatformSetFileAttributes(const char16_t* path, uint32_t attributes) {
    std::string native = NativePath(path);
    struct stat st {};
    if (::stat(native.c_str(), &st) != 0) {
        SetLastErrorFromErrno(errno);
        return false;
    }
    mode_t mode = st.st_mode & 07777;
    if ((attributes & clAttributeReadOnly) != 0) {
        mode &= ~static_cast<mode_t>(S_IWUSR | S_IWGRP | S_IWOTH);
    } else {
        mode |= S_IWUSR;
    }
    if (::chmod(native.c_str(), mode) != 0) {
        SetLastErrorFromErrno(errno);
        return false;
    }
    return true;
}

uint32_t PlatformGetDriveType(const char16_t* root) {
    std::string native = NativePath(root);
    struct stat st {};
    if (::stat(native.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return clDriveNoRootDir;
    struct statfs system {};
    constexpr long kIso9660 = 0x9660;
    constexpr long kUdf = 0x15013346;
    if (::statfs(native.c_str(), &system) == 0 && (system.f_type == kIso9660 || system.f_type == kUdf)) {
        return clDriveCdRom;
    }
    return 3;
}

bool PlatformIsReadOnlyVolume(const char16_t* root) {
    struct statvfs volume {};
    return ::statvfs(NativePath(root).c_str(), &volume) == 0 && (volume.f_flag & ST_RDONLY) != 0;
}

bool PlatformSameFile(const char16_t* first, const char16_t* second) {
    struct stat a {};
    struct stat b {};
    return ::stat(NativePath(first).c_str(), &a) == 0 && ::stat(NativePath(second).c_str(), &b) == 0 &&
           a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

clFileKind PlatformFileKind(const char16_t* path) {
    struct stat st {};
    if (::stat(NativePath(path).c_str(), &st) != 0) return clFileKind::Missing;
    if (S_ISREG(st.st_mode)) return clFileKind::Regular;
    if (S_ISDIR(st.st_mode)) return clFileKind::Folder;
    return clFileKind::Other;
}

uint32_t PlatformGetLogicalDrives() { return 0; }

bool PlatformGetFreeSpace(const char16_t* path, uint64_t* freeBytes) {
    struct statvfs space {};
    if (::statvfs(NativePath(path).c_str(), &space) != 0) return false;
    // Pseudo file systems (proc, sysfs) have no size at all; their free
    // space is unknown rather than none.
    if (space.f_blocks == 0) return false;
    *freeBytes = static_cast<uint64_t>(space.f_bavail) * space.f_frsize;
    return true;
}

bool PlatformGetVolumeRoot(const char16_t* path, clString& root) {
    root.Clear();
    std::string folder = NativePath(path);
    struct stat place {};
    // The nearest existing folder: drop components until one exists.
    for (;;) {
        if (!folder.empty() && ::stat(folder.c_str(), &place) == 0 && S_ISDIR(place.st_mode)) break;
        size_t slash = folder.find_last_of('/');
        if (slash == std::string::npos) return false;
        folder.resize(slash == 0 ? 1 : slash);
        if (folder == "/" && ::stat("/", &place) != 0) return false;
    }
    // Then up while the parent is on the same device.
    char resolved[PATH_MAX];
    if (::realpath(folder.c_str(), resolved) == nullptr) return false;
    std::string mount = resolved;
    while (mount != "/") {
        size_t slash = mount.find_last_of('/');
        std::string parent = slash == 0 ? "/" : mount.substr(0, slash);
        struct stat above {};
        if (::stat(parent.c_str(), &above) != 0 || above.st_dev != place.st_dev) break;
        mount = parent;
    }
    FromNative(mount.c_str(), root);
    if (root.CharAt(clStringLast) != u'/') root.Append(u"/");
    return true;
}

bool PlatformGetTempPath(clString& path) {
    const char* dir = std::getenv("TMPDIR");
    if (dir == nullptr || dir[0] == 0) dir = "/tmp";
    FromNative(dir, path);
    if (path.CharAt(clStringLast) != u'/') path.Append(u"/");
    return true;
}

bool PlatformGetVolumeLabel(const char16_t* root, clString& label) {
    label.Clear();
    struct stat place {};
    if (::stat(NativePath(root).c_str(), &place) != 0) return false;
    DIR* labels = ::opendir("/dev/disk/by-label");
    if (labels == nullptr) return false;
    bool found = false;
    while (dirent* entry = ::readdir(labels)) {
        if (entry->d_name[0] == '.') continue;
        struct stat device {};
        std::string link = std::string("/dev/disk/by-label/") + entry->d_name;
        if (::stat(link.c_str(), &device) != 0 || !S_ISBLK(device.st_mode) || device.st_rdev != place.st_dev) continue;
        // udev writes a blank and other bytes as \x20-style escapes.
        std::string name;
        for (const char* p = entry->d_name; *p != 0; ++p) {
            if (p[0] == '\\' && p[1] == 'x' && std::isxdigit(static_cast<unsigned char>(p[2])) &&
                std::isxdigit(static_cast<unsigned char>(p[3]))) {
                name.push_back(static_cast<char>(std::stoi(std::string(p + 2, 2), nullptr, 16)));
                p += 3;
            } else {
                name.push_back(*p);
            }
        }
        FromNative(name.c_str(), label);
        found = true;
        break;
    }
    ::closedir(labels);
    return found;
}
