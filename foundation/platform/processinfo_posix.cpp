#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "foundation/commandlinetext.h"
#include "foundation/platform/posixsupport_posix.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"

extern char** environ;

namespace {
int savedArgc = 0;
char** savedArgv = nullptr;

volatile sig_atomic_t interrupts = 0;
volatile sig_atomic_t terminationSignal = 0;
// The program PlatformRunProcessAttached waits for, 0 when none.
volatile sig_atomic_t attachedChild = 0;
}  // namespace

void PlatformSetArguments(int argc, char** argv) {
    savedArgc = argc;
    savedArgv = argv;
}

void PlatformGetCommandLine(clString& line) {
    clString program;
    clStringList arguments;
    if (savedArgc > 0 && savedArgv != nullptr) {
        FromNative(savedArgv[0], program);
        for (int i = 1; i < savedArgc; ++i) {
            clString argument;
            FromNative(savedArgv[i], argument);
            arguments.AddMove(static_cast<clString&&>(argument));
        }
    }
    line = BuildCommandLineText(program, arguments);
}

bool PlatformGetModuleFileName(clString& path) {
    char buffer[PATH_MAX + 1];
    ssize_t n = ::readlink("/proc/self/exe", buffer, PATH_MAX);
    if (n <= 0) {
        path.Clear();
        return false;
    }
    buffer[n] = 0;
    FromNative(buffer, path);
    return true;
}

bool PlatformCreateGuid(unsigned char bytes[16]) {
    int fd = ::open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (fd >= 0) {
        ssize_t n = ::read(fd, bytes, 16);
        ::close(fd);
        if (n == 16) return true;
    }
    std::random_device device;
    for (int i = 0; i < 16; ++i) bytes[i] = static_cast<unsigned char>(device());
    return true;
}

namespace {

// Spawns `program` with `arguments`, standard input from /dev/null (or,
// `attached`, this process's own) and, when `outputFile` is given,
// standard output and error into it. No shell.
bool Spawn(const clString& program, const clStringList& arguments, const clString* outputFile, pid_t* pid,
           bool attached = false) {
    std::vector<std::string> words;
    words.push_back(NativePath(program.text));
    for (int64_t i = 0; i < arguments.Count(); ++i) words.push_back(NativePath(arguments[i].text));
    std::vector<char*> argv;
    for (auto& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);
    std::string output = outputFile != nullptr ? NativePath(outputFile->text) : std::string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!attached) posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    if (outputFile != nullptr) {
        posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_adddup2(&actions, 1, 2);
    }
    int rc = posix_spawn(pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return rc == 0;
}

}  // namespace

bool PlatformStartProcess(const clString& program, const clStringList& arguments) {
    pid_t pid = 0;
    return Spawn(program, arguments, nullptr, &pid);
}

bool PlatformOpenDocument(const clString& pathOrAddress) {
    clStringList arguments;
    arguments.Add(pathOrAddress);
    return PlatformStartProcess(clString(u"/usr/bin/xdg-open"), arguments);
}

bool PlatformGetEnvironment(const char16_t* name, clString& value) {
    const char* v = std::getenv(NativePath(name).c_str());
    if (v == nullptr) {
        value.Clear();
        return false;
    }
    FromNative(v, value);
    return true;
}

bool PlatformShowInFolder(const clString& path) {
    std::string native = NativePath(path.text);
    size_t slash = native.rfind('/');
    std::string folder = slash == std::string::npos ? std::string(".") : native.substr(0, slash == 0 ? 1 : slash);
    clString text;
    FromNative(folder.c_str(), text);
    return PlatformOpenDocument(text);
}

const char16_t* PlatformExecutableSuffix() { return u""; }
void PlatformInitializeComponents() {}
void PlatformUninitializeComponents() {}

namespace {

bool WaitForChild(pid_t pid, int* exitCode) {
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return false;
    }
    *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return true;
}

}  // namespace

bool PlatformRunProcess(const clString& program, const clStringList& arguments, const clString& outputFile,
                        int* exitCode) {
    pid_t pid = 0;
    return Spawn(program, arguments, &outputFile, &pid) && WaitForChild(pid, exitCode);
}

bool PlatformRunProcessAttached(const clString& program, const clStringList& arguments, int* exitCode) {
    pid_t pid = 0;
    if (!Spawn(program, arguments, nullptr, &pid, true)) return false;
    attachedChild = pid;
    // A request to end that came while the program was starting.
    if (terminationSignal != 0) ::kill(pid, static_cast<int>(terminationSignal));
    bool waited = WaitForChild(pid, exitCode);
    attachedChild = 0;
    return waited;
}

bool PlatformSetEnvironment(const char16_t* name, const char16_t* value) {
    return ::setenv(NativePath(name).c_str(), NativePath(value).c_str(), 1) == 0;
}

bool PlatformSetOwnProcessor(int processor) {
    if (processor < 1 || processor > CPU_SETSIZE) return false;
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(processor - 1, &set);
    return ::sched_setaffinity(0, sizeof set, &set) == 0;
}

bool PlatformSetOwnPriority(int code) {
    static const int kNice[] = {0, -5, 5, 19};
    if (code < 0 || code > 3) return false;
    return ::setpriority(PRIO_PROCESS, 0, kNice[code]) == 0;
}

namespace {

const void* volatile crashMessage = nullptr;
volatile uint32_t crashBytes = 0;
// The file to delete, converted ahead: a signal handler may not convert.
char crashFile[16384];
volatile sig_atomic_t crashFileSet = 0;

void OnFatalSignal(int signal) {
    if (crashFileSet != 0) ::unlink(crashFile);
    const void* message = crashMessage;
    if (message != nullptr) {
        ssize_t ignored = ::write(2, message, crashBytes);
        (void)ignored;
    }
    // The default action then ends the process as the signal would have.
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

}  // namespace

void PlatformInstallCrashMessage(const void* message, uint32_t bytes) {
    crashMessage = nullptr;
    crashBytes = bytes;
    crashMessage = message;
    static bool installed = false;
    if (installed) return;
    installed = true;
    struct sigaction action {};
    action.sa_handler = OnFatalSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESETHAND | SA_NODEFER;
    for (int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS}) ::sigaction(signal, &action, nullptr);
    // A file-size limit or a closed pipe is a failed write to report, not
    // a silent death.
    ::signal(SIGXFSZ, SIG_IGN);
    ::signal(SIGPIPE, SIG_IGN);
}

void PlatformSetCrashRemovesFile(const char16_t* path) {
    crashFileSet = 0;
    if (path == nullptr) return;
    std::string native = NativePath(path);
    if (native.size() >= sizeof crashFile || clTextLength(path) > 4000) return;
    std::memcpy(crashFile, native.c_str(), native.size() + 1);
    crashFileSet = 1;
}

namespace {

void OnInterrupt(int) { interrupts = interrupts + 1; }

void OnTermination(int signal) {
    terminationSignal = signal;
    // Passed on from here, so no moment between a check and a wait loses
    // it; kill is safe in a signal handler.
    pid_t child = static_cast<pid_t>(attachedChild);
    if (child > 0) ::kill(child, signal);
}

}  // namespace

void PlatformCatchInterrupts() {
    struct sigaction action {};
    action.sa_handler = OnInterrupt;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, nullptr);
    struct sigaction ending {};
    ending.sa_handler = OnTermination;
    sigemptyset(&ending.sa_mask);
    ::sigaction(SIGTERM, &ending, nullptr);
    ::sigaction(SIGHUP, &ending, nullptr);
}

uint32_t PlatformInterruptCount() { return static_cast<uint32_t>(interrupts); }

int PlatformTerminationSignal() { return static_cast<int>(terminationSignal); }

bool PlatformParentEnded() {
    // The parent this process had when first asked; a new one means the
    // old one ended.
    static const pid_t first = ::getppid();
    return ::getppid() != first;
}

bool PlatformProcessRunning(uint32_t processId) {
    if (processId == 0 || processId > static_cast<uint32_t>(INT_MAX)) return false;
    // Signal 0 only asks; a process of another user answers EPERM.
    return ::kill(static_cast<pid_t>(processId), 0) == 0 || errno == EPERM;
}
