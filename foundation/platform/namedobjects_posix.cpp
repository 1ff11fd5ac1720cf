#include <fcntl.h>
#include <linux/futex.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <thread>

#include "foundation/platform/fileio.h"
#include "foundation/platform/namedobjects.h"
#include "foundation/platform/posixsupport_posix.h"

// How a name lives on POSIX.
//
// Each name is a file "e-<name>" or "m-<name>" in the runtime folder (the
// name escaped to file-name-safe bytes). Every holder keeps a shared flock
// on its descriptor. Creating and closing run under an exclusive flock of
// the folder's ".lock" file, so they never race each other:
//   - create: open or make the file; if an exclusive flock on it succeeds,
//     nobody else holds it (a new name, or a stale one left by a crash), so
//     the state is reset and `existed` is false; then hold it shared.
//   - close: if an exclusive flock succeeds, this was the last holder and
//     the file goes.
// A crashed holder's flocks vanish with it, which is what makes stale
// names harmless. Event state is a 32-bit word in a shared mapping of the
// file, waited on with a futex, so a Set is seen by every process at once.
// A mutex is an open-file-description lock on the file's first byte,
// which the kernel releases when its holder dies; an in-process lock
// beside it keeps two threads that share one handle apart.

namespace {

enum class Kind { Event, Mutex };

struct SyncObject {
    Kind kind;
    int fd = -1;                           // -1 for unnamed objects
    std::string path;                      // empty for unnamed objects
    std::atomic<int32_t>* word = nullptr;  // event state, shared mapping
    std::timed_mutex local;                // threads of this process
};

constexpr size_t kMapSize = 4096;

long Futex(std::atomic<int32_t>* word, int op, int32_t value, const timespec* timeout) {
    return ::syscall(SYS_futex, reinterpret_cast<int32_t*>(word), op, value, timeout, nullptr, 0);
}

bool SecureFolder(const std::string& folder) {
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return false;
    struct stat st {};
    if (::lstat(folder.c_str(), &st) != 0) return false;
    // Someone else's folder, or a link planted in /tmp, is never used.
    return S_ISDIR(st.st_mode) && st.st_uid == ::getuid() && (st.st_mode & 077) == 0;
}

const std::string& RuntimeFolder() {
    static const std::string folder = [] {
        std::string path;
        // Processes on a settings store of their own (QUILLOTONE_CONFIG_DIR)
        // meet only each other: a test's windows and programs never take
        // another's hand-over or events.
        const char* store = std::getenv("QUILLOTONE_CONFIG_DIR");
        if (store != nullptr && store[0] == '/') {
            ::mkdir(store, 0700);
            path = std::string(store) + "/run";
            if (SecureFolder(path)) return path;
        }
        const char* runtime = std::getenv("XDG_RUNTIME_DIR");
        if (runtime != nullptr && runtime[0] == '/') {
            path = std::string(runtime) + "/quillotone";
            if (SecureFolder(path)) return path;
        }
        path = "/tmp/quillotone-" + std::to_string(::getuid());
        return SecureFolder(path) ? path : std::string();
    }();
    return folder;
}

std::string EscapeName(const char16_t* name) {
    std::string utf8 = NativePath(name);
    std::string out;
    static const char kHex[] = "0123456789ABCDEF";
    for (unsigned char c : utf8) {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
            c == '.') {
            out.push_back(static_cast<char>(c));
        } else {
            out.push_back('%');
            out.push_back(kHex[c >> 4]);
            out.push_back(kHex[c & 15]);
        }
    }
    // A file name has at most 255 bytes; longer names are cut and keep a
    // hash of the whole so that they stay distinct.
    if (out.size() > 200) out = out.substr(0, 180) + "~" + std::to_string(std::hash<std::string>{}(out));
    return out;
}

class FolderLock {
public:
    FolderLock() {
        const std::string& folder = RuntimeFolder();
        if (folder.empty()) return;
        fd = ::open((folder + "/.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (fd >= 0) {
            while (::flock(fd, LOCK_EX) != 0 && errno == EINTR) {
            }
        }
    }
    ~FolderLock() {
        if (fd >= 0) ::close(fd);  // closing drops the flock
    }
    bool Ok() const { return fd >= 0; }

private:
    int fd = -1;
};

SyncObject* OpenNamed(Kind kind, const char16_t* name, bool* existed) {
    FolderLock lock;
    if (!lock.Ok()) {
        PlatformSetLastError(clErrorAccessDenied);
        return nullptr;
    }
    auto* object = new SyncObject;
    object->kind = kind;
    object->path = RuntimeFolder() + (kind == Kind::Event ? "/e-" : "/m-") + EscapeName(name);
    object->fd = ::open(object->path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (object->fd < 0) {
        SetLastErrorFromErrno(errno);
        delete object;
        return nullptr;
    }
    bool alone = ::flock(object->fd, LOCK_EX | LOCK_NB) == 0;
    if (alone && ::ftruncate(object->fd, 0) != 0) {
        // An unusable file: nothing else can be done with it.
    }
    if (alone && ::ftruncate(object->fd, kMapSize) != 0) {
        SetLastErrorFromErrno(errno);
        ::close(object->fd);
        delete object;
        return nullptr;
    }
    ::flock(object->fd, LOCK_SH);
    if (kind == Kind::Event) {
        void* map = ::mmap(nullptr, kMapSize, PROT_READ | PROT_WRITE, MAP_SHARED, object->fd, 0);
        if (map == MAP_FAILED) {
            SetLastErrorFromErrno(errno);
            ::close(object->fd);
            delete object;
            return nullptr;
        }
        object->word = static_cast<std::atomic<int32_t>*>(map);
    }
    if (existed != nullptr) *existed = !alone;
    PlatformSetLastError(alone ? 0 : clErrorAlreadyExists);
    return object;
}

SyncObject* OpenUnnamed(Kind kind) {
    auto* object = new SyncObject;
    object->kind = kind;
    if (kind == Kind::Event) {
        void* map = ::mmap(nullptr, kMapSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (map == MAP_FAILED) {
            delete object;
            return nullptr;
        }
        object->word = static_cast<std::atomic<int32_t>*>(map);
    }
    return object;
}

SyncObject* Open(Kind kind, const char16_t* name, bool* existed) {
    if (existed != nullptr) *existed = false;
    if (name == nullptr || name[0] == 0) return OpenUnnamed(kind);
    return OpenNamed(kind, name, existed);
}

SyncObject* Of(clSyncHandle handle) { return reinterpret_cast<SyncObject*>(handle); }

// Milliseconds left until `deadline`, for slices of a bounded wait.
timespec Remaining(std::chrono::steady_clock::time_point deadline) {
    auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() < 0) left = std::chrono::nanoseconds(0);
    timespec ts{};
    ts.tv_sec = static_cast<time_t>(left.count() / 1000000000);
    ts.tv_nsec = static_cast<long>(left.count() % 1000000000);
    return ts;
}

bool TryFileLock(int fd, bool wait) {
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_start = 0;
    range.l_len = 1;
    for (;;) {
        if (::fcntl(fd, wait ? F_OFD_SETLKW : F_OFD_SETLK, &range) == 0) return true;
        if (errno != EINTR) return false;
    }
}

}  // namespace

clSyncHandle PlatformCreateEvent(const char16_t* name, bool* existed) {
    return reinterpret_cast<clSyncHandle>(Open(Kind::Event, name, existed));
}

bool PlatformSetEvent(clSyncHandle event) {
    SyncObject* object = Of(event);
    if (object == nullptr || object->word == nullptr) return false;
    object->word->store(1);
    Futex(object->word, FUTEX_WAKE, INT_MAX, nullptr);
    return true;
}

bool PlatformResetEvent(clSyncHandle event) {
    SyncObject* object = Of(event);
    if (object == nullptr || object->word == nullptr) return false;
    object->word->store(0);
    return true;
}

uint32_t PlatformWaitEvent(clSyncHandle event, uint32_t milliseconds) {
    SyncObject* object = Of(event);
    if (object == nullptr || object->word == nullptr) return clWaitFailed;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (object->word->load() == 0) {
        if (milliseconds == 0) return clWaitTimeout;
        if (milliseconds == clWaitForever) {
            Futex(object->word, FUTEX_WAIT, 0, nullptr);
            continue;
        }
        timespec left = Remaining(deadline);
        if (left.tv_sec == 0 && left.tv_nsec == 0) return clWaitTimeout;
        Futex(object->word, FUTEX_WAIT, 0, &left);
    }
    return clWaitObject0;
}

clSyncHandle PlatformCreateMutex(const char16_t* name, bool* existed) {
    return reinterpret_cast<clSyncHandle>(Open(Kind::Mutex, name, existed));
}

uint32_t PlatformWaitMutex(clSyncHandle mutex, uint32_t milliseconds) {
    SyncObject* object = Of(mutex);
    if (object == nullptr || object->kind != Kind::Mutex) return clWaitFailed;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    if (milliseconds == clWaitForever) {
        object->local.lock();
    } else if (!object->local.try_lock_until(deadline)) {
        return clWaitTimeout;
    }
    if (object->fd < 0) return clWaitObject0;
    if (milliseconds == clWaitForever) {
        if (TryFileLock(object->fd, true)) return clWaitObject0;
        object->local.unlock();
        return clWaitFailed;
    }
    // A bounded wait polls the lock; the waits in use are 0 ms or unbounded.
    for (;;) {
        if (TryFileLock(object->fd, false)) return clWaitObject0;
        if (std::chrono::steady_clock::now() >= deadline) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    object->local.unlock();
    return clWaitTimeout;
}

bool PlatformReleaseMutex(clSyncHandle mutex) {
    SyncObject* object = Of(mutex);
    if (object == nullptr || object->kind != Kind::Mutex) return false;
    if (object->fd >= 0) {
        struct flock range {};
        range.l_type = F_UNLCK;
        range.l_whence = SEEK_SET;
        range.l_start = 0;
        range.l_len = 1;
        ::fcntl(object->fd, F_OFD_SETLK, &range);
    }
    object->local.unlock();
    return true;
}

void PlatformCloseSync(clSyncHandle handle) {
    SyncObject* object = Of(handle);
    if (object == nullptr) return;
    if (object->word != nullptr) ::munmap(object->word, kMapSize);
    if (object->fd >= 0) {
        FolderLock lock;
        if (::flock(object->fd, LOCK_EX | LOCK_NB) == 0) ::unlink(object->path.c_str());
        ::close(object->fd);
    }
    delete object;
}
