#include <windows.h>

#include "foundation/platform/console.h"

namespace {

HANDLE StreamHandle(int stream) {
    return GetStdHandle(stream == 0 ? STD_INPUT_HANDLE : stream == 1 ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

}  // namespace

bool PlatformIsTerminal(int stream) {
    DWORD mode = 0;
    return GetConsoleMode(StreamHandle(stream), &mode) != 0;
}

int32_t PlatformTerminalWidth() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(StreamHandle(1), &info)) return info.srWindow.Right - info.srWindow.Left + 1;
    return 80;
}

void PlatformPrepareTerminal() {
    SetConsoleOutputCP(CP_UTF8);
    HANDLE out = StreamHandle(1);
    DWORD mode = 0;
    if (GetConsoleMode(out, &mode)) SetConsoleMode(out, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

namespace {

void WriteAll(int stream, const std::string& bytes) {
    HANDLE out = StreamHandle(stream);
    size_t done = 0;
    while (done < bytes.size()) {
        DWORD n = 0;
        if (!WriteFile(out, bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &n, nullptr) || n == 0)
            return;
        done += n;
    }
}

}  // namespace

void PlatformWriteOutput(const std::string& bytes) { WriteAll(1, bytes); }

void PlatformWriteError(const std::string& bytes) { WriteAll(2, bytes); }

bool PlatformReadInputLine(std::string& line) {
    line.clear();
    HANDLE in = StreamHandle(0);
    for (;;) {
        char c = 0;
        DWORD n = 0;
        if (!ReadFile(in, &c, 1, &n, nullptr) || n == 0) return !line.empty();
        if (c == '\n') break;
        line.push_back(c);
    }
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}
