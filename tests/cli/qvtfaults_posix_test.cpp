// Faults through the real qvt that need POSIX signals and limits: a worker
// killed mid-file, a worker that stops answering, a disk that fills up.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <future>

#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "plugins/encoderentries.h"
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

namespace {

// The parent of a process, from /proc; 0 when it can't be read.
int ParentOf(int pid) {
    std::string status = ReadBytes(clString::Formatted(u"/proc/%d/status", pid));
    size_t at = status.find("PPid:");
    return at == std::string::npos ? 0 : std::atoi(status.c_str() + at + 5);
}

bool HasRunProfile(int qvtPid) {
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    clStringList profiles;
    EnumSettingKeys(EntryKeyPath(clString(u"Wave"), clString()).text, profiles);
    return profiles.Find(clString::Formatted(u"qvt-%d", qvtPid).text, false);
}

}  // namespace

// A qvt killed mid-run leaves its profile behind; the next run clears it.
TEST_F(FaultTest, AKilledRunsProfileGoesWithTheNextRun) {
    Source(u"long.wav", 20.0);
    std::future<QvtRun> qvt = std::async(std::launch::async, [&] {
        return Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                    clString(u"--effect"), Fault(20), src});
    });
    int worker = WaitForWorker(qvt);
    ASSERT_NE(worker, 0) << qvt.get().output;
    int trackConverter = ParentOf(worker);
    int qvtPid = ParentOf(trackConverter);
    ASSERT_GT(qvtPid, 1);
    EXPECT_TRUE(HasRunProfile(qvtPid));
    for (int pid : {qvtPid, trackConverter, worker}) ::kill(pid, SIGKILL);
    qvt.get();
    EXPECT_TRUE(HasRunProfile(qvtPid)) << "a killed run can't clear up after itself";
    Source(u"short.wav", 0.3, 1);
    QvtRun next = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"),
                       dir.File(u"next"), JoinPath(src, clString(u"short.wav"))});
    EXPECT_EQ(next.code, 0) << next.output;
    EXPECT_FALSE(HasRunProfile(qvtPid));
}

// A TrackConverter that can't run (on Windows a library missing from the
// program folder: the process starts and ends at once with a loader's
// code) is named with its code, not passed on as a silent exit status.
TEST_F(FaultTest, ATrackConverterThatCantRunIsNamed) {
    Source(u"a.wav", 0.2);
    clString folder = dir.File(u"broken");
    MakeFolders(folder);
    clString qvt = JoinPath(folder, clString(u"qvt"));
    ASSERT_TRUE(WriteBytes(qvt, ReadBytes(FaultInstallPath(u"qvt"))));
    clString trackConverter = JoinPath(folder, clString(u"TrackConverter"));
    ASSERT_TRUE(WriteBytes(trackConverter, "#!/bin/sh\nexit 53\n"));
    for (const clString* program : {&qvt, &trackConverter}) {
        ASSERT_EQ(::chmod(StringToUtf8(*program).c_str(), 0755), 0);
    }
    // The plug-ins of the installation, for qvt's own checks.
    clString installation = JoinPath(GetProgramFolder(), clString(u"faultinstall"));
    for (const char16_t* kind : {u"decoder", u"encoder", u"DSPs"}) {
        ASSERT_EQ(::symlink(StringToUtf8(JoinPath(installation, clString(kind))).c_str(),
                            StringToUtf8(JoinPath(folder, clString(kind))).c_str()),
                  0);
    }
    QvtRun run = RunProgram(qvt,
                            {clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out, src},
                            dir.File(u"broken.log"));
    EXPECT_EQ(run.code, 1) << run.output;
    EXPECT_TRUE(Contains(run.output, "TrackConverter ended unexpectedly (exit code 53)")) << run.output;
}
