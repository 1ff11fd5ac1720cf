#include "foundation/platform/crashdump.h"

#include <execinfo.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/types.h>
#include <ucontext.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "foundation/platform/posixsupport_posix.h"
#include "foundation/stringlist.h"

namespace {

// Everything the handler needs is fixed here at installation: a signal
// handler may neither allocate nor convert text.
char dumpPath[4096];
char programPath[4096];
constexpr int kMostArguments = 8;
char argumentText[kMostArguments][1024];
char* argumentVector[kMostArguments + 2];
alignas(16) char alternateStack[128 * 1024];
constexpr int kFatalSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS};

// The output of the handler, in pieces that need no allocation.
class clRecordWriter {
public:
    explicit clRecordWriter(int descriptor) : fd(descriptor) {}
    void Text(const char* text) {
        size_t length = std::strlen(text);
        while (length > 0) {
            ssize_t written = ::write(fd, text, length);
            if (written <= 0) return;
            text += written;
            length -= static_cast<size_t>(written);
        }
    }
    void Hex(uint64_t value) {
        char digits[19] = "0x";
        for (int i = 0; i < 16; ++i) digits[2 + i] = "0123456789abcdef"[(value >> (60 - 4 * i)) & 15];
        digits[18] = 0;
        Text(digits);
    }
    void Number(int64_t value) {
        char digits[24];
        int at = 23;
        digits[at] = 0;
        bool negative = value < 0;
        uint64_t rest = negative ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
        do {
            digits[--at] = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest != 0);
        if (negative) digits[--at] = '-';
        Text(digits + at);
    }
    void Register(const char* name, uint64_t value) {
        Text(name);
        Text(" ");
        Hex(value);
        Text("\n");
    }

private:
    int fd;
};

const char* SignalName(int signal) {
    switch (signal) {
        case SIGSEGV: return "SIGSEGV (invalid memory access)";
        case SIGBUS: return "SIGBUS (bus error)";
        case SIGFPE: return "SIGFPE (arithmetic fault)";
        case SIGILL: return "SIGILL (illegal instruction)";
        case SIGABRT: return "SIGABRT (abort)";
        case SIGSYS: return "SIGSYS (bad system call)";
        default: return "signal";
    }
}

void WriteRegisters(clRecordWriter& out, const void* context) {
    if (context == nullptr) return;
    out.Text("registers:\n");
#if defined(__x86_64__)
    const auto* uc = static_cast<const ucontext_t*>(context);
    const greg_t* r = uc->uc_mcontext.gregs;
    // The order of the minidump's memory walk: the sixteen general
    // registers, then the instruction pointer.
    const struct {
        const char* name;
        int index;
    } kRegisters[] = {{"RAX", REG_RAX}, {"RBX", REG_RBX}, {"RCX", REG_RCX}, {"RDX", REG_RDX}, {"RSI", REG_RSI},
                      {"RDI", REG_RDI}, {"RSP", REG_RSP}, {"RBP", REG_RBP}, {"R8 ", REG_R8},  {"R9 ", REG_R9},
                      {"R10", REG_R10}, {"R11", REG_R11}, {"R12", REG_R12}, {"R13", REG_R13}, {"R14", REG_R14},
                      {"R15", REG_R15}, {"RIP", REG_RIP}};
    for (const auto& reg : kRegisters) out.Register(reg.name, static_cast<uint64_t>(r[reg.index]));
#elif defined(__aarch64__)
    const auto* uc = static_cast<const ucontext_t*>(context);
    static const char* const kNames[] = {"X0 ", "X1 ", "X2 ", "X3 ", "X4 ", "X5 ", "X6 ", "X7 ", "X8 ", "X9 ", "X10",
                                         "X11", "X12", "X13", "X14", "X15", "X16", "X17", "X18", "X19", "X20", "X21",
                                         "X22", "X23", "X24", "X25", "X26", "X27", "X28", "X29", "X30"};
    for (int i = 0; i < 31; ++i) out.Register(kNames[i], uc->uc_mcontext.regs[i]);
    out.Register("SP ", uc->uc_mcontext.sp);
    out.Register("PC ", uc->uc_mcontext.pc);
#else
    out.Text("(not recorded on this processor)\n");
#endif
}

void Relaunch() {
    if (programPath[0] == 0) return;
    pid_t child = ::fork();
    if (child != 0) return;
    // The new program starts clean: the crashed one's blocked signals and
    // handlers stay behind.
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::setsid();
    ::execv(programPath, argumentVector);
    ::_exit(127);
}

void OnCrash(int signal, siginfo_t* info, void* context) {
    if (PlatformDebuggerPresent()) {
        // The debugger sees the fault as if nothing were installed.
        ::signal(signal, SIG_DFL);
        ::raise(signal);
        return;
    }
    int fd = dumpPath[0] != 0 ? ::open(dumpPath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600) : -1;
    if (fd >= 0) {
        clRecordWriter out(fd);
        out.Text("Quillotone Track Converter crash record\n");
        out.Text("process: ");
        out.Number(::getpid());
        out.Text("\nsignal: ");
        out.Number(signal);
        out.Text(" ");
        out.Text(SignalName(signal));
        out.Text("\ncode: ");
        out.Number(info != nullptr ? info->si_code : 0);
        out.Text("\nfault address: ");
        out.Hex(info != nullptr ? reinterpret_cast<uint64_t>(info->si_addr) : 0);
        out.Text("\n");
        WriteRegisters(out, context);
        out.Text("backtrace:\n");
        void* frames[64];
        int count = ::backtrace(frames, 64);
        ::backtrace_symbols_fd(frames, count, fd);
        ::close(fd);
    }
    Relaunch();
    ::_exit(0);
}

bool CopyText(char* target, size_t size, const std::string& text) {
    if (text.size() >= size) return false;
    std::memcpy(target, text.c_str(), text.size() + 1);
    return true;
}

}  // namespace

bool PlatformInstallCrashDump(const clString& dump, const clString& program, const clStringList& arguments) {
    if (arguments.Count() > kMostArguments || !CopyText(dumpPath, sizeof dumpPath, NativePath(dump.text)) ||
        !CopyText(programPath, sizeof programPath, NativePath(program.text))) {
        dumpPath[0] = programPath[0] = 0;
        return false;
    }
    argumentVector[0] = programPath;
    for (int64_t i = 0; i < arguments.Count(); ++i) {
        if (!CopyText(argumentText[i], sizeof argumentText[i], NativePath(arguments[i].text))) return false;
        argumentVector[i + 1] = argumentText[i];
    }
    argumentVector[arguments.Count() + 1] = nullptr;
    // The first backtrace loads the unwinder, which allocates: done here,
    // not in the handler.
    void* frames[4];
    ::backtrace(frames, 4);
    // A stack overflow leaves no stack to handle it on.
    stack_t stack{};
    stack.ss_sp = alternateStack;
    stack.ss_size = sizeof alternateStack;
    if (::sigaltstack(&stack, nullptr) != 0) return false;
    struct sigaction action {};
    action.sa_sigaction = OnCrash;
    sigemptyset(&action.sa_mask);
    for (int signal : kFatalSignals) sigaddset(&action.sa_mask, signal);
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESETHAND;
    for (int signal : kFatalSignals) {
        if (::sigaction(signal, &action, nullptr) != 0) return false;
    }
    return true;
}

uint32_t PlatformProcessId() { return static_cast<uint32_t>(::getpid()); }

bool PlatformDebuggerPresent() {
    // "TracerPid:" in the process status names the tracer; 0 is none.
    int fd = ::open("/proc/self/status", O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    char buffer[4096];
    ssize_t got = ::read(fd, buffer, sizeof buffer - 1);
    ::close(fd);
    if (got <= 0) return false;
    buffer[got] = 0;
    const char* key = std::strstr(buffer, "TracerPid:");
    if (key == nullptr) return false;
    key += 10;
    while (*key == ' ' || *key == '\t') ++key;
    return *key >= '1' && *key <= '9';
}
