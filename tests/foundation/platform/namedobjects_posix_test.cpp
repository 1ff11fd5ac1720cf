// The Linux stand-in for named objects, across processes made by fork:
// death of a holder, stale names, privacy of the folder, and a counter
// shared by four processes under one named mutex.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/syncobjects.h"
#include "tests/support/testfolder.h"

namespace {

clString Name(const char16_t* stem) { return clString::Formatted(u"qvtest-%s-%s", stem, GetProcessGuidText().text); }

// Forks a child that runs `body` and exits with its result.
template <class Body>
pid_t Child(Body body) {
    pid_t pid = fork();
    if (pid == 0) _exit(body());
    return pid;
}

int ExitCode(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

TEST(NamedObjectsPosix, KilledHolderReleasesTheMutexAndLeavesNoLiveName) {
    clString name = Name(u"kill");
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    pid_t holder = Child([&] {
        clMutex m;
        m.Create(name.text);
        m.Wait();
        XEvent e;
        e.Create(Name(u"kill-evt").text);
        e.Set();
        char c = 1;
        if (write(ready[1], &c, 1) != 1) return 1;
        pause();
        return 0;
    });
    char c = 0;
    ASSERT_EQ(read(ready[0], &c, 1), 1);
    {
        clMutex probe;
        probe.Create(name.text);
        EXPECT_TRUE(probe.existed);
        EXPECT_FALSE(probe.Wait(0));
    }
    kill(holder, SIGKILL);
    ExitCode(holder);
    clMutex after;
    after.Create(name.text);
    EXPECT_FALSE(after.existed);  // the dead holder's name is stale, not taken
    EXPECT_TRUE(after.Wait(0));   // and its lock went with it
    XEvent staleEvent;
    staleEvent.Create(Name(u"kill-evt").text);
    EXPECT_FALSE(staleEvent.existed);
    EXPECT_FALSE(staleEvent.IsSet());  // a stale event starts clear
    close(ready[0]);
    close(ready[1]);
}

TEST(NamedObjectsPosix, WaiterInAnotherProcessWakesOnSet) {
    clString name = Name(u"wake");
    XEvent event;
    event.Create(name.text);
    pid_t waiter = Child([&] {
        XEvent e;
        e.Create(name.text);
        return e.Wait(clWaitForever) == clWaitObject0 ? 7 : 1;
    });
    usleep(50000);
    event.Set();
    EXPECT_EQ(ExitCode(waiter), 7);
}

TEST(NamedObjectsPosix, FolderIsPrivateToTheUser) {
    XEvent event;
    event.Create(Name(u"private").text);
    // The test program keeps a settings store of its own, and named objects
    // live beside it then; the user's runtime folder only without one.
    const char* store = std::getenv("QUILLOTONE_CONFIG_DIR");
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    std::string folder = store != nullptr && store[0] == '/'       ? std::string(store) + "/run"
                         : runtime != nullptr && runtime[0] == '/' ? std::string(runtime) + "/quillotone"
                                                                   : "/tmp/quillotone-" + std::to_string(getuid());
    struct stat st {};
    ASSERT_EQ(stat(folder.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
    EXPECT_EQ(st.st_uid, getuid());
}

TEST(NamedObjectsPosix, FourProcessesCountUnderOneMutex) {
    TestFolder dir;
    clString counterFile = dir.File(u"counter");
    ASSERT_TRUE(WriteBytes(counterFile, "0"));
    clString name = Name(u"count");
    pid_t children[4];
    for (pid_t& child : children) {
        child = Child([&] {
            clMutex m;
            m.Create(name.text);
            for (int i = 0; i < 1000; ++i) {
                m.Wait();
                int value = std::atoi(ReadBytes(counterFile).c_str());
                if (!WriteBytes(counterFile, std::to_string(value + 1))) return 1;
                m.Release();
            }
            return 0;
        });
    }
    for (pid_t child : children) EXPECT_EQ(ExitCode(child), 0);
    EXPECT_EQ(ReadBytes(counterFile), "4000");
}
