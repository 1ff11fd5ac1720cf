#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "foundation/platform/console.h"

bool PlatformIsTerminal(int stream) { return ::isatty(stream) == 1; }

int32_t PlatformTerminalWidth() {
    struct winsize size {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    return 80;
}

void PlatformPrepareTerminal() {}

namespace {

void WriteAll(int stream, const std::string& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = ::write(stream, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;  // a closed pipe: nobody is reading any more
        done += static_cast<size_t>(n);
    }
}

}  // namespace

void PlatformWriteOutput(const std::string& bytes) { WriteAll(STDOUT_FILENO, bytes); }

void PlatformWriteError(const std::string& bytes) { WriteAll(STDERR_FILENO, bytes); }

bool PlatformReadInputLine(std::string& line) {
    line.clear();
    for (;;) {
        char c = 0;
        ssize_t n = ::read(STDIN_FILENO, &c, 1);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return !line.empty();
        if (c == '\n') break;
        line.push_back(c);
    }
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}
