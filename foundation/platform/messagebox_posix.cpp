#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "foundation/platform/messagebox.h"

// Without a window toolkit the question goes to the controlling terminal
// (/dev/tty), so it reaches the user even when standard input and output
// are redirected. With no terminal nobody can answer: -1.

namespace {

struct Choice {
    char key;
    const char* label;
    int id;
};

int Ask(int fd, const std::string& question, const Choice* choices, int count) {
    for (;;) {
        std::string prompt = question + " [";
        for (int i = 0; i < count; ++i) {
            if (i > 0) prompt += "/";
            prompt += choices[i].label;
        }
        prompt += "] ";
        if (::write(fd, prompt.data(), prompt.size()) < 0) return -1;
        char line[64];
        ssize_t n = ::read(fd, line, sizeof line);
        if (n <= 0) return -1;
        char c = line[0];
        if (count == 1 && (c == '\n' || c == '\r')) return choices[0].id;  // Enter takes the only choice
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
        for (int i = 0; i < count; ++i) {
            if (choices[i].key == c) return choices[i].id;
        }
    }
}

}  // namespace

int PlatformMessageBox(const clString& text, const clString& caption, uint32_t type) {
    int fd = ::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return -1;
    clString t(text);
    clString c(caption);
    std::string question = std::string(c.ToUtf8()) + ": " + t.ToUtf8();
    static const Choice kOk[] = {{'o', "OK", 1}};
    static const Choice kOkCancel[] = {{'o', "OK", 1}, {'c', "Cancel", 2}};
    static const Choice kAbort[] = {{'a', "Abort", 3}, {'r', "Retry", 4}, {'i', "Ignore", 5}};
    static const Choice kYesNoCancel[] = {{'y', "Yes", 6}, {'n', "No", 7}, {'c', "Cancel", 2}};
    static const Choice kYesNo[] = {{'y', "Yes", 6}, {'n', "No", 7}};
    static const Choice kRetryCancel[] = {{'r', "Retry", 4}, {'c', "Cancel", 2}};
    int answer;
    switch (type & 0xF) {
        case 1: answer = Ask(fd, question, kOkCancel, 2); break;
        case 2: answer = Ask(fd, question, kAbort, 3); break;
        case 3: answer = Ask(fd, question, kYesNoCancel, 3); break;
        case 4: answer = Ask(fd, question, kYesNo, 2); break;
        case 5: answer = Ask(fd, question, kRetryCancel, 2); break;
        default: answer = Ask(fd, question, kOk, 1); break;
    }
    ::close(fd);
    return answer;
}
