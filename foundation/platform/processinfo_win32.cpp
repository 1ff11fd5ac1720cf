#include <windows.h>

// After windows.h, which they need.
#include <ntsecapi.h>
#include <tlhelp32.h>

#include <csignal>
#include <string>

#include "foundation/commandlinetext.h"
#include "foundation/platform/lateload_win32.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"

void PlatformSetArguments(int /*argc*/, char** /*argv*/) {}

void PlatformGetCommandLine(clString& line) { line.Assign(reinterpret_cast<const char16_t*>(GetCommandLineW())); }

bool PlatformGetModuleFileName(clString& path) {
    path.SetCapacity(1001);
    DWORD n = GetModuleFileNameW(nullptr, reinterpret_cast<LPWSTR>(path.text), 1000);
    if (n == 0 || n >= 1000) {
        path.text[0] = 0;
        path.size = 1;
        return false;
    }
    path.text[n] = 0;
    path.size = static_cast<int32_t>(n) + 1;
    return true;
}

// The system's random bytes (what a version-4 GUID is made of), from
// advapi32, which every program of ours loads anyway.
bool PlatformCreateGuid(unsigned char bytes[16]) { return RtlGenRandom(bytes, 16) != FALSE; }

namespace {

HINSTANCE ShellOpen(const wchar_t* file, const wchar_t* arguments) {
    static const auto shellExecute =
        LateProc<HINSTANCE(WINAPI*)(HWND, LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR, INT)>(L"shell32.dll", "ShellExecuteW");
    if (shellExecute == nullptr) return nullptr;
    return shellExecute(nullptr, L"open", file, arguments, nullptr, SW_SHOWNORMAL);
}

}  // namespace

bool PlatformStartProcess(const clString& program, const clStringList& arguments) {
    // Our programs read their raw command line with the option parser, so
    // the line is built by the same rule POSIX uses to rebuild it.
    clString line = BuildCommandLineText(program, arguments);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION info{};
    if (!CreateProcessW(reinterpret_cast<LPCWSTR>(program.text), reinterpret_cast<LPWSTR>(line.text), nullptr, nullptr,
                        FALSE, 0, nullptr, nullptr, &startup, &info)) {
        return false;
    }
    CloseHandle(info.hThread);
    CloseHandle(info.hProcess);
    return true;
}

bool PlatformOpenDocument(const clString& pathOrAddress) {
    auto result = reinterpret_cast<intptr_t>(ShellOpen(reinterpret_cast<LPCWSTR>(pathOrAddress.text), nullptr));
    return result > 32;
}

bool PlatformShowInFolder(const clString& path) {
    wchar_t windows[MAX_PATH];
    UINT length = GetWindowsDirectoryW(windows, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return false;
    std::wstring explorer = std::wstring(windows) + L"\\Explorer.exe";
    std::wstring arguments = L" /n, /e, /select, \"" + std::wstring(reinterpret_cast<const wchar_t*>(path.text)) + L"\"";
    auto result = reinterpret_cast<intptr_t>(ShellOpen(explorer.c_str(), arguments.c_str()));
    return result > 32;
}

bool PlatformGetEnvironment(const char16_t* name, clString& value) {
    DWORD n = GetEnvironmentVariableW(reinterpret_cast<LPCWSTR>(name), nullptr, 0);
    if (n == 0) {
        value.Clear();
        return false;
    }
    value.SetCapacity(static_cast<int32_t>(n) + 1);
    DWORD got = GetEnvironmentVariableW(reinterpret_cast<LPCWSTR>(name), reinterpret_cast<LPWSTR>(value.text), n);
    if (got >= n) got = 0;
    value.text[got] = 0;
    value.size = static_cast<int32_t>(got) + 1;
    return true;
}

const char16_t* PlatformExecutableSuffix() { return u".exe"; }
void PlatformInitializeComponents() {
    static const auto initialize = LateProc<HRESULT(WINAPI*)(LPVOID)>(L"ole32.dll", "CoInitialize");
    if (initialize != nullptr) initialize(nullptr);
}

void PlatformUninitializeComponents() {
    static const auto uninitialize = LateProc<void(WINAPI*)()>(L"ole32.dll", "CoUninitialize");
    if (uninitialize != nullptr) uninitialize();
}

namespace {

// A failure a moment's wait may cure: a file held by a process that just
// ended (the system, a virus scanner or an indexer closing after it), or a
// system short of resources for a moment (seen under Wine on a loaded
// machine, where starting a process now and then fails once). A name that
// does not exist or a file that is no program stays so.
bool MayPass(DWORD error) {
    switch (error) {
        case ERROR_SUCCESS:
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_EXE_FORMAT:
        case ERROR_DIRECTORY:
        case ERROR_INVALID_PARAMETER:
            return false;
        default:
            return true;
    }
}

}  // namespace

bool PlatformRunProcess(const clString& program, const clStringList& arguments, const clString& outputFile,
                        int* exitCode) {
    // Our programs read their raw command line with the option parser, so
    // the line is built by the same rule POSIX uses to rebuild it.
    clString line = BuildCommandLineText(program, arguments);
    SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    // A file that a process which just ended wrote to can stay held for a
    // moment, so a failure that may pass is waited out for up to a second.
    HANDLE out = INVALID_HANDLE_VALUE;
    for (int attempt = 0; attempt < 50; ++attempt) {
        out = CreateFileW(reinterpret_cast<LPCWSTR>(outputFile.text), GENERIC_WRITE,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherit, CREATE_ALWAYS,
                          FILE_ATTRIBUTE_NORMAL, nullptr);
        DWORD error = out == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
        if (!MayPass(error)) break;
        Sleep(20);
    }
    if (out == INVALID_HANDLE_VALUE) return false;
    HANDLE in =
        CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit, OPEN_EXISTING, 0, nullptr);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in;
    startup.hStdOutput = out;
    startup.hStdError = out;
    PROCESS_INFORMATION info{};
    // The same holds for a program file that was just written or scanned,
    // and for the start of the process itself.
    BOOL started = FALSE;
    for (int attempt = 0; attempt < 50 && !started; ++attempt) {
        started = CreateProcessW(reinterpret_cast<LPCWSTR>(program.text), reinterpret_cast<LPWSTR>(line.text), nullptr,
                                 nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr, &startup, &info);
        DWORD error = started ? ERROR_SUCCESS : GetLastError();
        if (!MayPass(error)) break;
        Sleep(20);
    }
    CloseHandle(out);
    if (in != INVALID_HANDLE_VALUE) CloseHandle(in);
    if (!started) return false;
    WaitForSingleObject(info.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(info.hProcess, &code);
    CloseHandle(info.hThread);
    CloseHandle(info.hProcess);
    *exitCode = static_cast<int>(code);
    return true;
}

bool PlatformSetEnvironment(const char16_t* name, const char16_t* value) {
    return SetEnvironmentVariableW(reinterpret_cast<LPCWSTR>(name), reinterpret_cast<LPCWSTR>(value)) != FALSE;
}

bool PlatformSetOwnProcessor(int processor) {
    if (processor < 1 || processor > 64) return false;
    return SetProcessAffinityMask(GetCurrentProcess(), DWORD_PTR{1} << (processor - 1)) != FALSE;
}

bool PlatformSetOwnPriority(int code) {
    static const DWORD kClass[] = {NORMAL_PRIORITY_CLASS, ABOVE_NORMAL_PRIORITY_CLASS, BELOW_NORMAL_PRIORITY_CLASS,
                                   IDLE_PRIORITY_CLASS};
    if (code < 0 || code > 3) return false;
    return SetPriorityClass(GetCurrentProcess(), kClass[code]) != FALSE;
}

namespace {

const void* volatile crashMessage = nullptr;
volatile uint32_t crashBytes = 0;

wchar_t crashFile[4001];
volatile LONG crashFileSet = 0;

void WriteCrashMessage() {
    // Fails while another module of the process still holds the file open
    // without sharing its deletion; then it stays, as after a power cut.
    if (crashFileSet != 0) DeleteFileW(crashFile);
    const void* message = crashMessage;
    HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    if (message == nullptr || error == nullptr || error == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    WriteFile(error, message, crashBytes, &written, nullptr);
}

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS*) {
    WriteCrashMessage();
    return EXCEPTION_EXECUTE_HANDLER;  // the process ends
}

void OnAbort(int) {
    WriteCrashMessage();
    TerminateProcess(GetCurrentProcess(), 3);
}

}  // namespace

void PlatformInstallCrashMessage(const void* message, uint32_t bytes) {
    crashMessage = nullptr;
    crashBytes = bytes;
    crashMessage = message;
    static bool installed = false;
    if (installed) return;
    installed = true;
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    SetUnhandledExceptionFilter(OnUnhandledException);
    std::signal(SIGABRT, OnAbort);
}

void PlatformSetCrashRemovesFile(const char16_t* path) {
    crashFileSet = 0;
    if (path == nullptr) return;
    int32_t length = clTextLength(path);
    if (length > 4000) return;
    for (int32_t i = 0; i <= length; ++i) crashFile[i] = static_cast<wchar_t>(path[i]);
    crashFileSet = 1;
}

namespace {

volatile LONG interrupts = 0;
volatile LONG terminationSignal = 0;

BOOL WINAPI OnConsoleEvent(DWORD kind) {
    if (kind == CTRL_C_EVENT || kind == CTRL_BREAK_EVENT) {
        InterlockedIncrement(&interrupts);
        return TRUE;
    }
    if (kind == CTRL_CLOSE_EVENT || kind == CTRL_LOGOFF_EVENT || kind == CTRL_SHUTDOWN_EVENT) {
        InterlockedExchange(&terminationSignal, kind == CTRL_CLOSE_EVENT ? 1 : 15);
        // The process ends when this handler returns: the program gets a
        // few seconds to stop its workers and remove their files.
        Sleep(4000);
        return TRUE;
    }
    return FALSE;
}

HANDLE OpenParent() {
    DWORD self = GetCurrentProcessId();
    DWORD parent = 0;
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return nullptr;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot, &entry); more; more = Process32NextW(snapshot, &entry)) {
        if (entry.th32ProcessID == self) parent = entry.th32ParentProcessID;
    }
    CloseHandle(snapshot);
    if (parent == 0) return nullptr;
    HANDLE handle = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, parent);
    if (handle == nullptr) return nullptr;
    // A process id is reused: the parent was made before this process.
    FILETIME parentMade{}, ownMade{}, unused{};
    if (!GetProcessTimes(handle, &parentMade, &unused, &unused, &unused) ||
        !GetProcessTimes(GetCurrentProcess(), &ownMade, &unused, &unused, &unused) ||
        CompareFileTime(&parentMade, &ownMade) > 0) {
        CloseHandle(handle);
        return nullptr;
    }
    return handle;
}

}  // namespace

void PlatformCatchInterrupts() { SetConsoleCtrlHandler(OnConsoleEvent, TRUE); }

uint32_t PlatformInterruptCount() { return static_cast<uint32_t>(interrupts); }

int PlatformTerminationSignal() { return static_cast<int>(terminationSignal); }

bool PlatformParentEnded() {
    static HANDLE parent = OpenParent();
    return parent != nullptr && WaitForSingleObject(parent, 0) == WAIT_OBJECT_0;
}

bool PlatformRunProcessAttached(const clString& program, const clStringList& arguments, int* exitCode) {
    clString line = BuildCommandLineText(program, arguments);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    // Passed on by name, so that redirected streams reach the child too.
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION info{};
    if (!CreateProcessW(reinterpret_cast<LPCWSTR>(program.text), reinterpret_cast<LPWSTR>(line.text), nullptr, nullptr,
                        TRUE, 0, nullptr, nullptr, &startup, &info)) {
        return false;
    }
    CloseHandle(info.hThread);
    WaitForSingleObject(info.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(info.hProcess, &code);
    CloseHandle(info.hProcess);
    *exitCode = static_cast<int>(code);
    return true;
}

bool PlatformProcessRunning(uint32_t processId) {
    if (processId == 0) return false;
    HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId);
    if (process == nullptr) return GetLastError() == ERROR_ACCESS_DENIED;
    DWORD code = 0;
    bool running = GetExitCodeProcess(process, &code) != FALSE && code == STILL_ACTIVE;
    CloseHandle(process);
    return running;
}
