#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "foundation/platform/posixsupport_posix.h"
#include "foundation/platform/workerprocess.h"
#include "foundation/utf.h"

extern char** environ;

namespace {

pid_t PidOf(clProcessHandle process) {
    auto* child = reinterpret_cast<ChildProcess*>(process);
    return child == nullptr || child->reaped ? 0 : child->pid;
}

}  // namespace

bool PlatformCreatePipe(clPipeHandle* readEnd, clPipeHandle* writeEnd) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        SetLastErrorFromErrno(errno);
        return false;
    }
    ::fcntl(ends[0], F_SETFL, ::fcntl(ends[0], F_GETFL) | O_NONBLOCK);
    // Above the system's limit for users this fails, and the default
    // 64 KiB stays.
    ::fcntl(ends[0], F_SETPIPE_SZ, static_cast<int>(kPipeBufferBytes));
    *readEnd = ends[0];
    *writeEnd = ends[1];
    return true;
}

void PlatformClosePipe(clPipeHandle pipe) {
    if (pipe >= 0) ::close(static_cast<int>(pipe));
}

int64_t PlatformPipeAvailable(clPipeHandle readEnd) {
    int waiting = 0;
    if (readEnd < 0 || ::ioctl(static_cast<int>(readEnd), FIONREAD, &waiting) != 0) return -1;
    return waiting;
}

int64_t PlatformPipeRead(clPipeHandle readEnd, void* buffer, uint32_t count) {
    for (;;) {
        ssize_t n = ::read(static_cast<int>(readEnd), buffer, count);
        if (n >= 0) return n;
        if (errno == EINTR) continue;
        return errno == EAGAIN ? 0 : -1;
    }
}

std::string PlatformPipeBytes(const char16_t* text, int32_t length) {
    std::string bytes(static_cast<size_t>(Utf8LengthOf(text, length)), '\0');
    Utf16ToUtf8(text, length, bytes.data());
    return bytes;
}

int64_t PlatformPipeText(const unsigned char* bytes, int64_t count, clString& text) {
    // A sequence that its lead byte says is longer than what arrived waits
    // for the rest.
    int64_t used = count;
    for (int64_t back = 1; back <= 3 && back <= count; ++back) {
        unsigned char b = bytes[count - back];
        if ((b & 0xC0) == 0x80) continue;
        int64_t need = b >= 0xF0 ? 4 : b >= 0xE0 ? 3 : b >= 0xC0 ? 2 : 1;
        if (need > back) used = count - back;
        break;
    }
    std::string whole;
    whole.reserve(static_cast<size_t>(used));
    for (int64_t i = 0; i < used; ++i) {
        if (bytes[i] != 0) whole.push_back(static_cast<char>(bytes[i]));
    }
    Utf8ToString(whole.data(), static_cast<int64_t>(whole.size()), text);
    return used;
}

bool PlatformCreateInputPipe(clPipeHandle* readEnd, clPipeHandle* writeEnd) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        SetLastErrorFromErrno(errno);
        return false;
    }
    *readEnd = ends[0];
    *writeEnd = ends[1];
    return true;
}

bool PlatformPipeWrite(clPipeHandle writeEnd, const void* data, uint32_t count) {
    if (writeEnd < 0) return false;
    // A reader that is gone makes the write fail with EPIPE; the SIGPIPE
    // that comes with it is held back and taken here, whatever the
    // process's disposition of it.
    sigset_t pipeSignal, previous;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, &previous);
    const auto* bytes = static_cast<const char*>(data);
    bool written = true;
    while (count > 0) {
        ssize_t n = ::write(static_cast<int>(writeEnd), bytes, count);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            written = false;
            break;
        }
        bytes += n;
        count -= static_cast<uint32_t>(n);
    }
    if (!written && errno == EPIPE) {
        timespec none{};
        while (sigtimedwait(&pipeSignal, nullptr, &none) < 0 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return written;
}

bool PlatformStartWorker(const clString& commandLine, clPipeHandle outWrite, clPipeHandle errWrite,
                         clPipeHandle inRead, clProcessHandle* process, clThreadHandle* thread) {
    *process = 0;
    *thread = 0;
    NativeArguments native = SplitNativeArguments(commandLine);
    std::vector<char*>& argv = native.argv;
    bool started = false;
    if (!argv.empty() && outWrite >= 0 && errWrite >= 0) {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        if (inRead >= 0) {
            posix_spawn_file_actions_adddup2(&actions, static_cast<int>(inRead), 0);
        } else {
            posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        }
        posix_spawn_file_actions_adddup2(&actions, static_cast<int>(outWrite), 1);
        posix_spawn_file_actions_adddup2(&actions, static_cast<int>(errWrite), 2);
        // The worker inherits nothing else, whatever the caller forgot to
        // mark close-on-exec.
        posix_spawn_file_actions_addclosefrom_np(&actions, 3);
        // A process group of its own: a Ctrl-C typed at the terminal goes
        // to the foreground group, and must reach the program, which asks
        // whether to cancel, not kill the workers before anyone answered.
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        posix_spawnattr_setpgroup(&attributes, 0);
        pid_t pid = 0;
        int rc = posix_spawn(&pid, argv[0], &actions, &attributes, argv.data(), environ);
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
        if (rc == 0) {
            auto* child = new ChildProcess{pid};
#ifdef SYS_pidfd_open
            // Linux 5.3 and later; a sandbox may refuse it, and then the
            // scheduler polls.
            child->pidfd = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
            if (child->pidfd >= 0) ::fcntl(child->pidfd, F_SETFD, FD_CLOEXEC);
#endif
            *process = reinterpret_cast<clProcessHandle>(child);
            *thread = *process;
            started = true;
        } else {
            SetLastErrorFromErrno(rc);
        }
    }
    PlatformClosePipe(outWrite);
    PlatformClosePipe(errWrite);
    PlatformClosePipe(inRead);
    return started;
}

void PlatformSuspendWorker(clProcessHandle process, clThreadHandle /*thread*/) {
    pid_t pid = PidOf(process);
    if (pid > 0) ::kill(pid, SIGSTOP);
}

void PlatformResumeWorker(clProcessHandle process, clThreadHandle /*thread*/) {
    pid_t pid = PidOf(process);
    if (pid > 0) ::kill(pid, SIGCONT);
}

void PlatformSetWorkerPriority(clProcessHandle process, clThreadHandle /*thread*/, int32_t code) {
    static const int kNice[] = {0, -5, 5, 19};
    pid_t pid = PidOf(process);
    if (pid > 0 && code >= 0 && code <= 3) ::setpriority(PRIO_PROCESS, static_cast<id_t>(pid), kNice[code]);
}

void PlatformCloseWorkerThread(clThreadHandle /*thread*/) {}

clWakeHandle PlatformCreateWake() {
    int fd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    // Handle 0 means none; a descriptor 0 (standard input closed) is kept
    // one above it.
    return fd < 0 ? clNoWake : static_cast<clWakeHandle>(fd) + 1;
}

void PlatformRaiseWake(clWakeHandle wake) {
    if (wake == clNoWake) return;
    uint64_t one = 1;
    while (::write(static_cast<int>(wake - 1), &one, sizeof one) < 0 && errno == EINTR) {
    }
}

void PlatformCloseWake(clWakeHandle wake) {
    if (wake != clNoWake) ::close(static_cast<int>(wake - 1));
}

clWaitable PlatformWorkerWaitable(clProcessHandle worker) {
    auto* child = reinterpret_cast<ChildProcess*>(worker);
    return child == nullptr || child->pidfd < 0 ? clNoWaitable : child->pidfd;
}

clWaitable PlatformWakeWaitable(clWakeHandle wake) {
    return wake == clNoWake ? clNoWaitable : static_cast<clWaitable>(wake - 1);
}

bool PlatformWaitWorkers(const clProcessHandle* workers, int32_t count, clWakeHandle wake, uint32_t milliseconds) {
    std::vector<pollfd> fds;
    fds.reserve(static_cast<size_t>(count) + 1);
    if (wake != clNoWake) fds.push_back({static_cast<int>(wake - 1), POLLIN, 0});
    bool blind = false;
    for (int32_t i = 0; i < count; ++i) {
        auto* child = reinterpret_cast<ChildProcess*>(workers[i]);
        if (child == nullptr) continue;
        if (child->reaped) return true;
        if (child->pidfd < 0) {
            blind = true;
            continue;
        }
        fds.push_back({child->pidfd, POLLIN, 0});
    }
    // A worker that can't be watched is looked at every 5 ms.
    int timeout = blind && milliseconds > 5 ? 5 : static_cast<int>(milliseconds);
    // A signal (Ctrl-C) ends the wait early too, which is what the caller
    // wants: it looks at its counts after every wait.
    int ready = ::poll(fds.data(), static_cast<nfds_t>(fds.size()), timeout);
    if (ready <= 0) return false;
    if (wake != clNoWake && (fds[0].revents & POLLIN) != 0) {
        uint64_t value = 0;
        ssize_t got = ::read(static_cast<int>(wake - 1), &value, sizeof value);
        (void)got;
    }
    return true;
}
