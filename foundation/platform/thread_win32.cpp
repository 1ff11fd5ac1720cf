#include <process.h>
#include <windows.h>

#include <initializer_list>

#include "foundation/platform/thread.h"

namespace {

struct Start {
    void (*entry)(void*);
    void* argument;
};

unsigned __stdcall Entry(void* raw) {
    Start start = *static_cast<Start*>(raw);
    delete static_cast<Start*>(raw);
    start.entry(start.argument);
    return 0;
}

HANDLE H(intptr_t h) { return reinterpret_cast<HANDLE>(h); }

}  // namespace

clThreadHandle PlatformStartThread(void (*entry)(void*), void* argument) {
    auto* start = new Start{entry, argument};
    uintptr_t h = _beginthreadex(nullptr, 0, Entry, start, 0, nullptr);
    if (h == 0) delete start;
    return static_cast<clThreadHandle>(h);
}

bool PlatformWaitThread(clThreadHandle thread, uint32_t milliseconds) {
    return WaitForSingleObject(H(thread), milliseconds) == WAIT_OBJECT_0;
}

void PlatformSuspendThread(clThreadHandle thread) { SuspendThread(H(thread)); }
void PlatformResumeThread(clThreadHandle thread) { ResumeThread(H(thread)); }

void PlatformCloseThread(clThreadHandle thread) {
    if (thread != 0) CloseHandle(H(thread));
}

void PlatformSetThreadName(const char16_t* name) {
    using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    for (const wchar_t* library : {L"KernelBase.dll", L"kernel32.dll"}) {
        HMODULE module = GetModuleHandleW(library);
        if (module == nullptr) continue;
        auto call =
            reinterpret_cast<SetDescription>(reinterpret_cast<void*>(GetProcAddress(module, "SetThreadDescription")));
        if (call != nullptr) {
            call(GetCurrentThread(), reinterpret_cast<PCWSTR>(name));
            return;
        }
    }
}

uint32_t PlatformTickCount() { return GetTickCount(); }
void PlatformSleep(uint32_t milliseconds) { Sleep(milliseconds); }

int32_t PlatformProcessorCount() {
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return info.dwNumberOfProcessors > 0 ? static_cast<int32_t>(info.dwNumberOfProcessors) : 1;
}

void PlatformRaiseThreadPriority() { SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_ABOVE_NORMAL); }

void PlatformLowerThreadPriority() { SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_LOWEST); }

bool PlatformCreateProcess(const clProcessStart& start, clProcessHandle* process) {
    *process = 0;
    clString line(start.commandLine);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION info{};
    if (!CreateProcessW(nullptr, reinterpret_cast<LPWSTR>(line.text), nullptr, nullptr,
                        start.inheritHandles ? TRUE : FALSE, start.creationFlags, nullptr,
                        start.workingFolder.IsEmpty() ? nullptr : reinterpret_cast<LPCWSTR>(start.workingFolder.text),
                        &startup, &info)) {
        return false;
    }
    CloseHandle(info.hThread);
    *process = reinterpret_cast<clProcessHandle>(info.hProcess);
    return true;
}

bool PlatformWaitProcess(clProcessHandle process, uint32_t milliseconds) {
    return WaitForSingleObject(H(process), milliseconds) == WAIT_OBJECT_0;
}

void PlatformTerminateProcess(clProcessHandle process, uint32_t exitCode) { TerminateProcess(H(process), exitCode); }

void PlatformCloseProcess(clProcessHandle process) {
    if (process != 0) CloseHandle(H(process));
}
