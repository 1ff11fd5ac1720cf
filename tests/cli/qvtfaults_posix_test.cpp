// Faults through the real qvt that need POSIX signals and limits: a worker
// killed mid-file, a worker that stops answering, a disk that fills up.
#include <signal.h>

#include <future>

#include "tests/cli/faultfixture.h"

TEST_F(FaultTest, AWorkerKilledMidFileFailsItsJobAndLeavesNoPartialFile) {
    Source(u"long.wav", 20.0);
    Source(u"next.wav", 0.5, 1);
    std::future<QvtRun> qvt = std::async(std::launch::async, [&] {
        return Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                    clString(u"--cores"), clString(u"1"), clString(u"--effect"), Fault(20), src});
    });
    int pid = WaitForWorker(qvt);
    ASSERT_NE(pid, 0) << qvt.get().output;
    // The first worker is mid-file; the next file gets a fresh one that
    // names itself too, and is let go.
    DeleteFileEx(pidFile);
    EXPECT_EQ(::kill(pid, SIGKILL), 0);
    QvtRun run = qvt.get();
    EXPECT_EQ(run.code, 1) << run.output;
    EXPECT_TRUE(Contains(run.output, "ConvertWorker ended before finishing the output")) << run.output;
    EXPECT_TRUE(Contains(run.output, "long.wav")) << run.output;
    EXPECT_FALSE(PathExists(Out(u"long.wav")));
    EXPECT_TRUE(PathExists(Out(u"next.wav"))) << "the batch goes on";
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}

// Deliberately unlike leaving a hung worker to run on unsupervised: the
// watchdog ends it, so that no worker outlives its run.
TEST_F(FaultTest, AWorkerThatStopsAnsweringIsEndedByTheWatchdog) {
    // The engine's clock runs 20 times fast: the minute without a sign of
    // life passes in 3 s.
    PlatformSetEnvironment(u"QUILLOTONE_CLOCK_RATE", u"20");
    Source(u"stuck.wav", 20.0);
    std::future<QvtRun> qvt = std::async(std::launch::async, [&] {
        return Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                    clString(u"--effect"), Fault(20), src});
    });
    int pid = WaitForWorker(qvt);
    ASSERT_NE(pid, 0) << qvt.get().output;
    EXPECT_EQ(::kill(pid, SIGSTOP), 0);
    QvtRun run = qvt.get();
    PlatformSetEnvironment(u"QUILLOTONE_CLOCK_RATE", u"");
    // Ended and reaped before the run ended: no such process any more.
    bool outlived = ::kill(pid, 0) == 0;
    if (outlived) ::kill(pid, SIGKILL);
    EXPECT_FALSE(outlived) << "the hung worker outlived its run";
    EXPECT_EQ(run.code, 1) << run.output;
    EXPECT_TRUE(Contains(run.output, "Error: Watchdog timeout, possible ConvertWorker crash")) << run.output;
    EXPECT_FALSE(PathExists(Out(u"stuck.wav")));
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}

TEST_F(FaultTest, AFullDiskFailsTheJobAndLeavesNoPartialFile) {
    // The file-size limit stands in for a full disk: the output's writes
    // fail part way, as they would with no space left. (The shell counts
    // in blocks of 512 bytes: 400 KB, less than the 1.7 MB output.)
    Source(u"big.wav", 10.0);
    Source(u"small.wav", 0.5, 1);
    QvtRun run =
        RunProgram(clString(u"/bin/sh"),
                   {clString(u"-c"), clString(u"ulimit -f 800 && exec \"$0\" \"$@\""), FaultInstallPath(u"qvt"),
                    clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out, src},
                   dir.File(u"qvt.log"));
    EXPECT_EQ(run.code, 1) << run.output;
    EXPECT_TRUE(Contains(run.output, "big.wav")) << run.output;
    EXPECT_FALSE(PathExists(Out(u"big.wav")));
    EXPECT_TRUE(PathExists(Out(u"small.wav"))) << run.output;
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}
