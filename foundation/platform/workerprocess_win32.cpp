#include <windows.h>

#include "foundation/platform/workerprocess.h"

std::string PlatformPipeBytes(const char16_t* text, int32_t length) {
    std::string bytes;
    bytes.reserve(static_cast<size_t>(length > 0 ? length : 0) * 2);
    for (int32_t i = 0; i < length; ++i) {
        bytes.push_back(static_cast<char>(text[i] & 0xFF));
        bytes.push_back(static_cast<char>(text[i] >> 8));
    }
    return bytes;
}

int64_t PlatformPipeText(const unsigned char* bytes, int64_t count, clString& text) {
    // An odd byte at the end is half a unit; it waits for its other half.
    int64_t used = count & ~int64_t{1};
    int32_t units = 0;
    text.SetCapacity(static_cast<int32_t>(used / 2 + 1));
    for (int64_t i = 0; i < used; i += 2) {
        auto unit = static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8));
        if (unit != 0) text.text[units++] = unit;
    }
    text.text[units] = 0;
    text.size = units + 1;
    return used;
}

namespace {

HANDLE H(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

}  // namespace

bool PlatformCreatePipe(clPipeHandle* readEnd, clPipeHandle* writeEnd) {
    SECURITY_ATTRIBUTES security{};
    security.nLength = sizeof security;
    security.bInheritHandle = FALSE;
    HANDLE readHandle = nullptr;
    HANDLE writeHandle = nullptr;
    if (!CreatePipe(&readHandle, &writeHandle, &security, kPipeBufferBytes)) return false;
    *readEnd = reinterpret_cast<clPipeHandle>(readHandle);
    *writeEnd = reinterpret_cast<clPipeHandle>(writeHandle);
    return true;
}

void PlatformClosePipe(clPipeHandle pipe) {
    if (pipe != clNoPipe && pipe != 0) CloseHandle(H(pipe));
}

int64_t PlatformPipeAvailable(clPipeHandle readEnd) {
    DWORD waiting = 0;
    if (!PeekNamedPipe(H(readEnd), nullptr, 0, nullptr, &waiting, nullptr)) return -1;
    return waiting;
}

int64_t PlatformPipeRead(clPipeHandle readEnd, void* buffer, uint32_t count) {
    DWORD read = 0;
    if (!ReadFile(H(readEnd), buffer, count, &read, nullptr)) return -1;
    return read;
}

bool PlatformCreateInputPipe(clPipeHandle* readEnd, clPipeHandle* writeEnd) {
    HANDLE readHandle = nullptr;
    HANDLE writeHandle = nullptr;
    if (!CreatePipe(&readHandle, &writeHandle, nullptr, 0)) return false;
    *readEnd = reinterpret_cast<clPipeHandle>(readHandle);
    *writeEnd = reinterpret_cast<clPipeHandle>(writeHandle);
    return true;
}

bool PlatformPipeWrite(clPipeHandle writeEnd, const void* data, uint32_t count) {
    if (writeEnd == clNoPipe || writeEnd == 0) return false;
    const auto* bytes = static_cast<const char*>(data);
    while (count > 0) {
        DWORD written = 0;
        if (!WriteFile(H(writeEnd), bytes, count, &written, nullptr) || written == 0) return false;
        bytes += written;
        count -= written;
    }
    return true;
}

bool PlatformStartWorker(const clString& commandLine, clPipeHandle outWrite, clPipeHandle errWrite,
                         clPipeHandle inRead, clProcessHandle* process, clThreadHandle* thread) {
    *process = 0;
    *thread = 0;
    HANDLE self = GetCurrentProcess();
    HANDLE inheritOut = nullptr;
    HANDLE inheritErr = nullptr;
    HANDLE inheritIn = nullptr;
    // Inheritable copies; DUPLICATE_CLOSE_SOURCE | DUPLICATE_SAME_ACCESS
    // closes the originals even when the copy fails, so only the copies
    // remain to be closed.
    bool haveOut = DuplicateHandle(self, H(outWrite), self, &inheritOut, 0, TRUE, 3) != FALSE;
    bool haveErr = DuplicateHandle(self, H(errWrite), self, &inheritErr, 0, TRUE, 3) != FALSE;
    const bool wantIn = inRead != clNoPipe && inRead != 0;
    bool haveIn = wantIn && DuplicateHandle(self, H(inRead), self, &inheritIn, 0, TRUE, 3) != FALSE;
    bool started = false;
    if (haveOut && haveErr && haveIn == wantIn) {
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = inheritOut;
        startup.hStdError = inheritErr;
        startup.hStdInput = inheritIn;
        PROCESS_INFORMATION info{};
        clString line(commandLine);
        // DETACHED_PROCESS | NORMAL_PRIORITY_CLASS: the worker talks through
        // its pipes and needs no console. A hidden one of its own
        // (CREATE_NO_WINDOW) costs a console host process per worker, under
        // Wine a whole second program start per file.
        if (CreateProcessW(nullptr, reinterpret_cast<LPWSTR>(line.text), nullptr, nullptr, TRUE, 0x00000028, nullptr,
                           nullptr, &startup, &info)) {
            *process = reinterpret_cast<clProcessHandle>(info.hProcess);
            *thread = reinterpret_cast<clThreadHandle>(info.hThread);
            started = true;
        }
    }
    if (haveOut) CloseHandle(inheritOut);
    if (haveErr) CloseHandle(inheritErr);
    if (haveIn) CloseHandle(inheritIn);
    return started;
}

void PlatformSuspendWorker(clProcessHandle /*process*/, clThreadHandle thread) {
    if (thread != 0) SuspendThread(H(thread));
}

void PlatformResumeWorker(clProcessHandle /*process*/, clThreadHandle thread) {
    if (thread != 0) ResumeThread(H(thread));
}

void PlatformSetWorkerPriority(clProcessHandle process, clThreadHandle thread, int32_t code) {
    static const int kThreadPriority[] = {0, 1, -1, -15};
    static const DWORD kClass[] = {0x20, 0x20, 0x20, 0x40};
    if (code < 0 || code > 3) return;
    if (thread != 0) SetThreadPriority(H(thread), kThreadPriority[code]);
    if (process != 0) SetPriorityClass(H(process), kClass[code]);
}

void PlatformCloseWorkerThread(clThreadHandle thread) {
    if (thread != 0) CloseHandle(H(thread));
}

clWakeHandle PlatformCreateWake() {
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    return event == nullptr ? clNoWake : reinterpret_cast<clWakeHandle>(event);
}

void PlatformRaiseWake(clWakeHandle wake) {
    if (wake != clNoWake) SetEvent(H(wake));
}

void PlatformCloseWake(clWakeHandle wake) {
    if (wake != clNoWake) CloseHandle(H(wake));
}

clWaitable PlatformWorkerWaitable(clProcessHandle worker) {
    return worker == 0 ? clNoWaitable : static_cast<clWaitable>(worker);
}

clWaitable PlatformWakeWaitable(clWakeHandle wake) {
    return wake == clNoWake ? clNoWaitable : static_cast<clWaitable>(wake);
}

bool PlatformWaitWorkers(const clProcessHandle* workers, int32_t count, clWakeHandle wake, uint32_t milliseconds) {
    HANDLE handles[MAXIMUM_WAIT_OBJECTS];
    DWORD used = 0;
    if (wake != clNoWake) handles[used++] = H(wake);
    bool partial = false;
    for (int32_t i = 0; i < count; ++i) {
        if (workers[i] == 0) continue;
        if (used == MAXIMUM_WAIT_OBJECTS) {
            partial = true;
            break;
        }
        handles[used++] = H(workers[i]);
    }
    // The workers left out are looked at again after 5 ms.
    DWORD timeout = partial && milliseconds > 5 ? 5 : milliseconds;
    if (used == 0) {
        Sleep(timeout);
        return false;
    }
    DWORD result = WaitForMultipleObjects(used, handles, FALSE, timeout);
    return result < WAIT_OBJECT_0 + used;
}
