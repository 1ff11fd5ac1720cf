// The real qvt on a pseudo-terminal, typed at as a user would: Ctrl-C and
// its question, and the overwrite question answered file by file. The
// terminal's Ctrl-C goes to every process of the foreground group, which
// the scripted terminal of the view's own tests cannot show.
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/cli/faultfixture.h"

namespace {

// A program on the far side of a pseudo-terminal.
class TerminalRun {
public:
    ~TerminalRun() {
        if (pid > 0) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        if (master >= 0) ::close(master);
    }

    bool Start(const std::vector<std::string>& words) {
        std::vector<char*> argv;
        for (const std::string& w : words) argv.push_back(const_cast<char*>(w.c_str()));
        argv.push_back(nullptr);
        struct winsize size {};
        size.ws_row = 30;
        size.ws_col = 100;
        pid = ::forkpty(&master, nullptr, nullptr, &size);
        if (pid == 0) {
            ::execv(argv[0], argv.data());
            _exit(127);
        }
        return pid > 0;
    }

    // Reads what the program writes until `text` has come, the program
    // closed the terminal, or `seconds` passed.
    bool WaitFor(const std::string& text, int seconds) {
        auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
        while (output.find(text, seen) == std::string::npos) {
            if (closed || std::chrono::steady_clock::now() > end) return false;
            ReadSome(100);
        }
        seen = output.find(text, seen) + text.size();
        return true;
    }

    void Type(const std::string& keys) {
        ssize_t written = ::write(master, keys.data(), keys.size());
        (void)written;
    }

    // Reads to the end and answers the exit code; -1 if the program has
    // not ended within `seconds`.
    int Finish(int seconds) {
        auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
        while (!closed && std::chrono::steady_clock::now() < end) ReadSome(100);
        int status = 0;
        while (std::chrono::steady_clock::now() < end) {
            if (::waitpid(pid, &status, WNOHANG) == pid) {
                pid = 0;
                return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            }
            ::usleep(20000);
        }
        return -1;
    }

    std::string output;

private:
    void ReadSome(int milliseconds) {
        struct pollfd ready {};
        ready.fd = master;
        ready.events = POLLIN;
        if (::poll(&ready, 1, milliseconds) <= 0) return;
        char buffer[4096];
        ssize_t n = ::read(master, buffer, sizeof buffer);
        // Linux answers EIO once the last process holding the terminal is gone.
        if (n <= 0) {
            closed = true;
            return;
        }
        output.append(buffer, static_cast<size_t>(n));
    }

    pid_t pid = 0;
    int master = -1;
    bool closed = false;
    size_t seen = 0;
};

class TerminalTest : public FaultTest {
protected:
    // qvt convert into `out`, one file at a time, every block held
    // `holdMs`.
    bool StartConvert(TerminalRun& run, int holdMs, const char* overwrite = "ask") {
        return run.Start({StringToUtf8(FaultInstallPath(u"qvt")), "convert", "--to", "Wave", "--folder",
                          StringToUtf8(out), "--cores", "1", "--overwrite", overwrite, "--effect",
                          StringToUtf8(Fault(holdMs)), StringToUtf8(src)});
    }

    // Waits until the first worker has named itself, mid-file.
    bool WorkerRunning() {
        for (int i = 0; i < 60 * 20; ++i) {
            if (!ReadBytes(pidFile).empty()) return true;
            ::usleep(50000);
        }
        return false;
    }

    // Converts a.wav of `seconds` and a short b.wav, types Ctrl-C while
    // the first worker is mid-file, and answers the question.
    void InterruptAndAnswer(TerminalRun& run, double seconds, int holdMs, const char* answer) {
        Source(u"a.wav", seconds);
        Source(u"b.wav", 0.5, 1);
        ASSERT_TRUE(StartConvert(run, holdMs));
        ASSERT_TRUE(WorkerRunning()) << run.output;
        run.Type("\x03");
        ASSERT_TRUE(run.WaitFor("Cancel Conversion? [y/N] ", 30)) << run.output;
        run.Type(answer);
    }
};

TEST_F(TerminalTest, CtrlCAnsweredNoLeavesTheConversionUntouched) {
    TerminalRun run;
    ASSERT_NO_FATAL_FAILURE(InterruptAndAnswer(run, 10.0, 50, "n\r"));
    // The worker did not hear the Ctrl-C: its file, and the next, are whole.
    EXPECT_EQ(run.Finish(60), 0) << run.output;
    EXPECT_FALSE(Contains(run.output, "Error")) << run.output;
    EXPECT_EQ(FindChunk(ReadBytes(Out(u"a.wav")), "data"), FindChunk(ToneWave(0, 10.0), "data"));
    EXPECT_TRUE(PathExists(Out(u"b.wav")));
}

TEST_F(TerminalTest, CtrlCAnsweredYesCancelsWith130AndLeavesNoPartialFile) {
    TerminalRun run;
    ASSERT_NO_FATAL_FAILURE(InterruptAndAnswer(run, 20.0, 20, "y\r"));
    EXPECT_EQ(run.Finish(60), 130) << run.output;
    EXPECT_FALSE(PathExists(Out(u"a.wav")));
    EXPECT_FALSE(PathExists(Out(u"b.wav")));
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}

TEST_F(TerminalTest, TheOverwriteQuestionDecidedOneByOne) {
    Source(u"a.wav", 0.5);
    Source(u"b.wav", 0.5, 1);
    MakeFolders(out);
    WriteBytes(Out(u"a.wav"), "the user's a");
    WriteBytes(Out(u"b.wav"), "the user's b");
    TerminalRun run;
    ASSERT_TRUE(StartConvert(run, 0));
    ASSERT_TRUE(run.WaitFor("or cancel [c]? ", 30)) << run.output;
    run.Type("d\r");
    ASSERT_TRUE(run.WaitFor("a.wav? [y/N] ", 30)) << run.output;
    run.Type("y\r");
    ASSERT_TRUE(run.WaitFor("b.wav? [y/N] ", 30)) << run.output;
    run.Type("\r");
    EXPECT_EQ(run.Finish(60), 0) << run.output;
    EXPECT_EQ(FindChunk(ReadBytes(Out(u"a.wav")), "data"), FindChunk(ToneWave(0, 0.5), "data"));
    EXPECT_EQ(ReadBytes(Out(u"b.wav")), "the user's b");
}

}  // namespace
