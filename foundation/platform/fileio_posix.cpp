#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "foundation/platform/fileio.h"
#include "foundation/platform/posixsupport_posix.h"

namespace {
thread_local uint32_t lastError = 0;

// A write past RLIMIT_FSIZE raises SIGXFSZ, which would end the process;
// ignored, the write fails with EFBIG like a full disk instead.
struct IgnoreFileSizeSignal {
    IgnoreFileSizeSignal() { std::signal(SIGXFSZ, SIG_IGN); }
} ignoreFileSizeSignal;
}  // namespace

uint32_t PlatformGetLastError() { return lastError; }
void PlatformSetLastError(uint32_t code) { lastError = code; }

clFileHandle PlatformOpenFile(const char16_t* path, uint32_t access, uint32_t /*share*/, uint32_t disposition) {
    int flags = O_CLOEXEC;
    bool read = (access & clAccessRead) != 0;
    bool write = (access & clAccessWrite) != 0;
    flags |= read && write ? O_RDWR : (write ? O_WRONLY : O_RDONLY);
    switch (disposition) {
        case clCreateNew: flags |= O_CREAT | O_EXCL; break;
        case clCreateAlways: flags |= O_CREAT | O_TRUNC; break;
        case clOpenExisting: break;
        case clOpenAlways: flags |= O_CREAT; break;
        case clTruncateExisting: flags |= O_TRUNC; break;
        default:
            PlatformSetLastError(87);  // invalid parameter
            return clInvalidHandle;
    }
    std::string native = NativePath(path);
    if (native.empty()) {
        PlatformSetLastError(clErrorPathNotFound);
        return clInvalidHandle;
    }
    int fd = ::open(native.c_str(), flags, 0666);
    if (fd < 0) {
        int error = errno;
        // Windows tells a missing folder (3) from a missing file (2).
        if (error == ENOENT && native.find('/') != std::string::npos) {
            std::string folder = native.substr(0, native.rfind('/'));
            struct stat st {};
            if (!folder.empty() && ::stat(folder.c_str(), &st) != 0) {
                PlatformSetLastError(clErrorPathNotFound);
                return clInvalidHandle;
            }
        }
        if (error == EEXIST) {
            PlatformSetLastError(clErrorFileExists);
            return clInvalidHandle;
        }
        SetLastErrorFromErrno(error);
        return clInvalidHandle;
    }
    struct stat st {};
    if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
        ::close(fd);
        PlatformSetLastError(clErrorAccessDenied);
        return clInvalidHandle;
    }
    return fd;
}

bool PlatformReadFile(clFileHandle handle, void* buffer, uint32_t count, uint32_t* done) {
    *done = 0;
    if (handle < 0) {
        PlatformSetLastError(clErrorInvalidHandle);
        return false;
    }
    auto* bytes = static_cast<unsigned char*>(buffer);
    while (*done < count) {
        ssize_t n = ::read(static_cast<int>(handle), bytes + *done, count - *done);
        if (n < 0) {
            if (errno == EINTR) continue;
            SetLastErrorFromErrno(errno);
            return false;
        }
        if (n == 0) break;  // end of file: a short read, no error
        *done += static_cast<uint32_t>(n);
    }
    return true;
}

bool PlatformWriteFile(clFileHandle handle, const void* buffer, uint32_t count, uint32_t* done) {
    *done = 0;
    if (handle < 0) {
        PlatformSetLastError(clErrorInvalidHandle);
        return false;
    }
    const auto* bytes = static_cast<const unsigned char*>(buffer);
    while (*done < count) {
        ssize_t n = ::write(static_cast<int>(handle), bytes + *done, count - *done);
        if (n < 0) {
            if (errno == EINTR) continue;
            SetLastErrorFromErrno(errno);
            return false;
        }
        if (n == 0) {
            PlatformSetLastError(clErrorDiskFull);
            return false;
        }
        *done += static_cast<uint32_t>(n);
    }
    return true;
}

void PlatformCloseFile(clFileHandle handle) {
    if (handle >= 0) ::close(static_cast<int>(handle));
}

int64_t PlatformSeekFile(clFileHandle handle, int64_t offset, int origin) {
    int whence = origin == clSeekBegin ? SEEK_SET : (origin == clSeekCurrent ? SEEK_CUR : SEEK_END);
    off_t result = ::lseek(static_cast<int>(handle), static_cast<off_t>(offset), whence);
    if (result < 0) {
        SetLastErrorFromErrno(errno);
        return -1;
    }
    return result;
}

int64_t PlatformFileSizeOf(clFileHandle handle) {
    struct stat st {};
    if (::fstat(static_cast<int>(handle), &st) != 0) {
        SetLastErrorFromErrno(errno);
        return -1;
    }
    return st.st_size;
}
clFileHandle PlatformStandardHandle(int which) { return which >= 0 && which <= 2 ? which : clInvalidHandle; }

bool PlatformUsesWindowsPaths() { return false; }
