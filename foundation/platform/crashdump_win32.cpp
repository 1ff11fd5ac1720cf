#include "foundation/platform/crashdump.h"

#include <windows.h>
// dbghelp.h needs windows.h ahead of it.
#include <dbghelp.h>
#include <shellapi.h>

#include <cstdint>

#include "foundation/stringlist.h"

namespace {

// Everything the filter needs is fixed here at installation.
wchar_t dumpPath[4096];
wchar_t programPath[4096];
wchar_t argumentLine[8192];

// The state of the memory callback: the sixteen registers first, then the
// first kilobyte of the stack, searched for pointers to readable memory.
struct clDumpMemoryWalk {
    int32_t step = 0;
    CONTEXT context{};
};
clDumpMemoryWalk walk;
constexpr int32_t kStackSteps = 4096;
constexpr int32_t kLastStackStep = 5120;

// A read that a fault can't end: false where nothing is readable.
bool GuardedRead(uint64_t address, void* target, SIZE_T bytes) {
    SIZE_T got = 0;
    return ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(static_cast<uintptr_t>(address)),
                             target, bytes, &got) != 0 &&
           got == bytes;
}

uint64_t RegisterOfStep(const CONTEXT& c, int32_t step) {
#if defined(__x86_64__) || defined(_M_X64)
    const DWORD64 registers[16] = {c.Rax, c.Rbx, c.Rcx, c.Rdx, c.Rsi, c.Rdi, c.Rsp, c.Rbp,
                                   c.R8,  c.R9,  c.R10, c.R11, c.R12, c.R13, c.R14, c.R15};
    return registers[step];
#else
    (void)c;
    (void)step;
    return 0;
#endif
}

uint64_t StackPointer(const CONTEXT& c) {
#if defined(__x86_64__) || defined(_M_X64)
    return c.Rsp;
#else
    (void)c;
    return 0;
#endif
}

// Chooses the next address to keep 1024 bytes around; false ends the walk.
bool NextAddress(clDumpMemoryWalk& state, uint64_t& chosen) {
    if (state.step < 16) {
        chosen = RegisterOfStep(state.context, state.step);
        state.step = state.step == 15 ? kStackSteps : state.step + 1;
        return true;
    }
    while (state.step <= kLastStackStep) {
        uint64_t slot = (StackPointer(state.context) + static_cast<uint64_t>(state.step - kStackSteps)) & ~uint64_t{7};
        uint64_t value = 0;
        if (!GuardedRead(slot, &value, sizeof value)) return false;
        state.step += 4;
        unsigned char probe = 0;
        if (value >= 4096 && GuardedRead(value, &probe, 1)) {
            chosen = value;
            return true;
        }
    }
    return false;
}

BOOL CALLBACK OnDumpCallback(PVOID parameter, PMINIDUMP_CALLBACK_INPUT input, PMINIDUMP_CALLBACK_OUTPUT output) {
    if (input == nullptr || output == nullptr || input->CallbackType != MemoryCallback) return TRUE;
    auto* state = static_cast<clDumpMemoryWalk*>(parameter);
    uint64_t chosen = 0;
    if (!NextAddress(*state, chosen)) return FALSE;
    output->MemoryBase = chosen < 512 ? chosen : chosen - 512;
    output->MemorySize = 1024;
    return TRUE;
}

void WriteCrashDump(EXCEPTION_POINTERS* pointers, DWORD threadId) {
    if (dumpPath[0] == 0) return;
    HANDLE file = CreateFileW(dumpPath, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    MINIDUMP_EXCEPTION_INFORMATION exception{};
    exception.ThreadId = threadId;
    exception.ExceptionPointers = pointers;
    exception.ClientPointers = FALSE;  // the pointers lie in this process
    walk.step = 0;
    if (pointers != nullptr && pointers->ContextRecord != nullptr) walk.context = *pointers->ContextRecord;
    MINIDUMP_CALLBACK_INFORMATION callback{};
    callback.CallbackRoutine = OnDumpCallback;
    callback.CallbackParam = &walk;
    MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpWithUnloadedModules, &exception,
                      nullptr, &callback);
    CloseHandle(file);
    if (argumentLine[0] != 0) ShellExecuteW(nullptr, L"open", programPath, argumentLine, nullptr, SW_SHOW);
}

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* pointers) {
    // Searching on hands the crash to the debugger, as without a filter.
    if (IsDebuggerPresent()) return EXCEPTION_CONTINUE_SEARCH;
    DWORD threadId = GetCurrentThreadId();
    if (pointers != nullptr && pointers->ExceptionRecord != nullptr &&
        pointers->ExceptionRecord->ExceptionCode == EXCEPTION_STACK_OVERFLOW) {
        // The overflowed stack has no room for the writer.
        struct Job {
            EXCEPTION_POINTERS* pointers;
            DWORD threadId;
        } job{pointers, threadId};
        HANDLE writer = CreateThread(
            nullptr, 256 * 1024,
            [](LPVOID parameter) -> DWORD {
                auto* work = static_cast<Job*>(parameter);
                WriteCrashDump(work->pointers, work->threadId);
                return 0;
            },
            &job, 0, nullptr);
        if (writer != nullptr) {
            WaitForSingleObject(writer, INFINITE);
            CloseHandle(writer);
        }
    } else {
        WriteCrashDump(pointers, threadId);
    }
    TerminateProcess(GetCurrentProcess(), 0);
    return EXCEPTION_EXECUTE_HANDLER;
}

bool CopyText(wchar_t* target, size_t size, const clString& text) {
    if (static_cast<size_t>(text.Length()) >= size) return false;
    for (int32_t i = 0; i <= text.Length(); ++i) target[i] = static_cast<wchar_t>(text.text[i]);
    return true;
}

}  // namespace

bool PlatformInstallCrashDump(const clString& dump, const clString& program, const clStringList& arguments) {
    clString line;
    for (int64_t i = 0; i < arguments.Count(); ++i) {
        if (i > 0) line.Append(u" ");
        bool quote = arguments[i].FindChar(u' ') != 0 || arguments[i].IsEmpty();
        if (quote) line.Append(u"\"");
        line.Append(arguments[i]);
        if (quote) line.Append(u"\"");
    }
    if (!CopyText(dumpPath, 4096, dump) || !CopyText(programPath, 4096, program) ||
        !CopyText(argumentLine, 8192, line)) {
        dumpPath[0] = programPath[0] = argumentLine[0] = 0;
        return false;
    }
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    // Room on this thread's stack for the filter once it has overflowed:
    // enough to start the thread that writes the dump.
    ULONG guarantee = 64 * 1024;
    SetThreadStackGuarantee(&guarantee);
    SetUnhandledExceptionFilter(OnUnhandledException);
    return true;
}

uint32_t PlatformProcessId() { return GetCurrentProcessId(); }

bool PlatformDebuggerPresent() { return IsDebuggerPresent() != 0; }
