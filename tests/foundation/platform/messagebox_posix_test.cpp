// The POSIX message box asks on the controlling terminal. A child process
// gets a pseudo-terminal as its controlling terminal, is asked, and the
// test answers like a user at the keyboard.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "foundation/platform/messagebox.h"

namespace {

struct Asked {
    std::string prompt;
    int answer = -1;
};

// Runs the question in a child on a fresh terminal, types `typed` once the
// prompt is there, and returns what was shown and answered.
Asked AskOnTerminal(uint32_t type, const std::string& typed) {
    Asked asked;
    int master = -1;
    pid_t pid = forkpty(&master, nullptr, nullptr, nullptr);
    if (pid == 0) {
        int id = PlatformMessageBox(clString(u"Unable to open 'x'"), clString(u"File Read Error"), type);
        _exit(id < 0 ? 200 : id);
    }
    if (pid < 0) return asked;
    char buffer[512];
    while (asked.prompt.find(']') == std::string::npos) {
        ssize_t n = read(master, buffer, sizeof buffer);
        if (n <= 0) break;
        asked.prompt.append(buffer, static_cast<size_t>(n));
    }
    for (char c : typed) {
        if (write(master, &c, 1) != 1) break;
        if (c == '\n') usleep(20000);  // one line per read on the child's side
    }
    int status = 0;
    waitpid(pid, &status, 0);
    close(master);
    asked.answer = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return asked;
}

}  // namespace

TEST(MessageBoxPosix, AsksOnTheTerminalAndRepeatsUntilAValidAnswer) {
    Asked retry = AskOnTerminal(5, "x\nR\n");
    EXPECT_NE(retry.prompt.find("File Read Error: Unable to open 'x' [Retry/Cancel]"), std::string::npos)
        << retry.prompt;
    EXPECT_EQ(retry.answer, 4);
    EXPECT_EQ(AskOnTerminal(4, "n\n").answer, 7);
    EXPECT_EQ(AskOnTerminal(0, "\n").answer, 1);
}

TEST(MessageBoxPosix, NoTerminalMeansNobodyCanBeAsked) {
    pid_t pid = fork();
    if (pid == 0) {
        setsid();  // a new session has no controlling terminal
        int id = PlatformMessageBox(clString(u"q"), clString(u"c"), 5);
        _exit(id == -1 ? 0 : 1);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}
