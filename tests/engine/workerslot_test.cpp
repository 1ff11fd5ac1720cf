// One slot and its worker: the command file, the start's failures, the
// pipes, pause, priority, cancel and the watchdog, with a hand-set clock.
#include "engine/workerslot.h"

#include <gtest/gtest.h>

#include "foundation/folders.h"
#include "foundation/syncobjects.h"
#include "tests/engine/fakeworkers.h"

namespace {

class SlotTest : public ::testing::Test {
protected:
    TestFolder dir;
    FakeLauncher launcher;
    uint32_t now = 1000;
    clWorkerEnvironment env;

    SlotTest() {
        env.tickCount = [this] { return now; };
        env.launcher = &launcher;
        env.workerProgram = u"/opt/qv/ConvertWorker";
    }

    clJobStart Job(const char16_t* encoderOptions = u"-quality=\"5\"", const char16_t* effects = u"") {
        clJobStart job;
        job.lengthMs = 90000;
        job.sourceBytes = 1000;
        job.sourcePath = dir.File(u"in.wav");
        job.outputPath = dir.File(u"out.flac");
        job.encoderName = u"FLAC";
        job.encoderOptions = encoderOptions;
        job.dspEffects = effects;
        job.batchId = 77;
        return job;
    }
};

}  // namespace

TEST_F(SlotTest, CommandFileHoldsTheOptionsInOrderAndEndsInTheEncoderOptions) {
    clWorkerSlot slot(env);
    slot.processor = 3;
    slot.priority = 2;
    slot.StartJob(Job(u"", u"-dspeffect1=\"Resample=-rate=48000\""));
    ASSERT_EQ(slot.running, 1);
    const FakeWorkerState& w = *launcher.started.at(0);
    EXPECT_EQ(w.commandLine.rfind(u"\"/opt/qv/ConvertWorker\" -qvcmd=\"", 0), 0u);
    std::u16string expected = u" -infile=\"" + U(dir.File(u"in.wav")) + u"\" -outfile=\"" + U(dir.File(u"out.flac")) +
                              u"\" -convert_to=\"FLAC\" -evtquit=\"" + U(slot.cancelEvent.name) +
                              u"\" -evtwatchdog=\"" + U(slot.watchdogEvent.name) +
                              u"\" -batchid=\"77\" -processor=\"3\" -priority=\"low\" "
                              u"-dspeffect1=\"Resample=-rate=48000\" ";
    EXPECT_EQ(w.commandText, expected);
    EXPECT_EQ(U(slot.cancelEvent.name).rfind(u"qvevt-cancel-", 0), 0u);
    EXPECT_EQ(U(slot.watchdogEvent.name).rfind(u"qvevt-watch-", 0), 0u);
}

TEST_F(SlotTest, TwoSlotsInTheSameMillisecondGetDifferentEvents) {
    clWorkerSlot first(env), second(env);
    first.StartJob(Job());
    second.StartJob(Job());
    EXPECT_FALSE(first.cancelEvent.name.Equals(second.cancelEvent.name));
    EXPECT_FALSE(first.watchdogEvent.name.Equals(second.watchdogEvent.name));
    // The clock value itself, then the next number.
    EXPECT_EQ(U(first.cancelEvent.name), u"qvevt-cancel-1000");
    EXPECT_EQ(U(second.cancelEvent.name), u"qvevt-cancel-1001");
}

TEST_F(SlotTest, FailedStartLeavesTheSlotIdleWithTheLine) {
    launcher.failure = u"Error running ConvertWorker";
    clWorkerSlot slot(env);
    slot.StartJob(Job());
    EXPECT_EQ(slot.running, 0);
    EXPECT_EQ(U(slot.errorText), u"Error running ConvertWorker");
    EXPECT_EQ(slot.endedLength, -1);  // a failed start doesn't count as an ended file
}

TEST_F(SlotTest, PipesFeedTheReportAndErrorsFailTheJobWhateverFollows) {
    clWorkerSlot slot(env);
    slot.StartJob(Job());
    FakeWorkerState& w = *launcher.started.at(0);
    w.out = u"MSGTO: qvt: PCDone: 50\r\nMSGTO: qvt: Action: Encoding\r\nMSGTO: qvt: msLen: 1234\r\nhello\r\n";
    slot.Tick(false, false, 0);
    EXPECT_EQ(slot.percent, 50);
    EXPECT_EQ(U(slot.action), u"Encoding");
    EXPECT_EQ(slot.lengthMs, 1234);
    // Half a line: the first half still has the prefix and is dropped as
    // a message without a key, the second is plain text.
    w.out = u"MSGTO: qvt: PCDone: 40\r\nMSGTO: qv";
    slot.Tick(false, false, 0);
    w.out = u"t: PCDone: 60\r\n";
    slot.Tick(false, false, 0);
    EXPECT_EQ(slot.percent, 50);
    EXPECT_EQ(U(slot.infoText), u"hello\r\nt: PCDone: 60");
    w.err = u"Error: broken frame\r\n";
    w.out = u"MSGTO: qvt: PCDone: 100\r\n";
    w.ended = true;
    slot.Tick(false, false, 0);
    EXPECT_EQ(slot.running, 0);
    EXPECT_EQ(slot.percent, 100);
    EXPECT_EQ(slot.endedLength, 1234);
    EXPECT_TRUE(slot.finished);
    EXPECT_EQ(U(slot.errorText).find(u"Error: broken frame"), 0u);
    EXPECT_TRUE(slot.action.IsEmpty());
    EXPECT_FALSE(w.alive);
}

// A worker removes its temporary output when it fails; one found after
// it ended was left by a death no handler saw (SIGKILL, say).
TEST_F(SlotTest, ATemporaryOutputLeftByAnEndedWorkerFailsTheJobAndGoes) {
    clString temp = dir.File(u".qvtmp0A1B2C3D-0000.flac");
    for (bool leftBehind : {false, true}) {
        clWorkerSlot slot(env);
        slot.StartJob(Job());
        FakeWorkerState& w = *launcher.started.back();
        WriteBytes(temp, "half");
        std::u16string message = u"MSGTO: qvt: TempFile: " + U(temp) + u"\r\n";
        w.out = message;
        slot.Tick(false, false, 0);
        EXPECT_EQ(U(slot.tempFile), U(temp));
        if (!leftBehind) DeleteFileEx(temp);  // renamed into place
        w.ended = true;
        slot.Tick(false, false, 0);
        EXPECT_EQ(slot.running, 0);
        EXPECT_FALSE(PathExists(temp));
        EXPECT_EQ(U(slot.errorText).find(u"Error: ConvertWorker ended before finishing the output"),
                  leftBehind ? 0u : std::u16string::npos)
            << slot.errorText.ToUtf8();
    }
}

// Deliberately stricter than "success is no line on standard error": a
// worker that ends without saying its output is in place (killed before it
// made its temporary file, or one that just exits) fails its job. Only a
// job that was asked to stop may end so quietly.
TEST_F(SlotTest, AWorkerThatEndsWithoutItsOutputFailsItsJob) {
    struct Case {
        bool saysReady;
        bool cancelled;
        bool fails;
    };
    for (Case c : {Case{true, false, false}, Case{false, false, true}, Case{false, true, false}}) {
        clWorkerSlot slot(env);
        slot.StartJob(Job());
        FakeWorkerState& w = *launcher.started.back();
        w.putsOutput = c.saysReady;
        w.out = u"MSGTO: qvt: PCDone: 100\r\n";
        slot.Tick(false, c.cancelled, 0);
        w.ended = true;
        slot.Tick(false, c.cancelled, 0);
        EXPECT_EQ(slot.running, 0);
        EXPECT_EQ(U(slot.errorText), c.fails ? kEndedEarlyLine : u"") << slot.errorText.ToUtf8();
    }
}

TEST_F(SlotTest, WatchdogTripsAfterSixtySecondsOnlyAndPausesNeverTripIt) {
    clWorkerSlot slot(env);
    slot.StartJob(Job());
    FakeWorkerState& w = *launcher.started.at(0);
    now += 60000;
    slot.Tick(false, false, 0);
    EXPECT_EQ(slot.running, 1) << "exactly 60,000 ms is no alarm";
    // A heartbeat through the named event, as the worker sets it.
    XEvent heartbeat;
    ASSERT_TRUE(heartbeat.Create(slot.watchdogEvent.name.text));
    heartbeat.Set();
    now += 30000;
    slot.Tick(false, false, 0);
    EXPECT_FALSE(slot.watchdogEvent.IsSet()) << "the supervisor resets it";
    EXPECT_EQ(slot.lastHeartbeat, now);
    // A pause of ten minutes, ticked through, then released.
    for (int i = 0; i < 600; ++i) {
        now += 1000;
        slot.Tick(true, false, 0);
        EXPECT_TRUE(w.suspended);
    }
    slot.Tick(false, false, 0);
    EXPECT_FALSE(w.suspended);
    EXPECT_EQ(slot.running, 1);
    now += 60001;
    slot.Tick(false, false, 0);
    EXPECT_EQ(slot.running, 0);
    EXPECT_NE(U(slot.errorText).find(u"Error: Watchdog timeout, possible ConvertWorker crash"), std::u16string::npos);
}

TEST_F(SlotTest, WatchdogDifferenceIsUnsignedAcrossTheCounterWrap) {
    now = 0xFFFFFF00u;
    clWorkerSlot slot(env);
    slot.StartJob(Job());
    now = 0x00001000u;  // 4,352 ms later, after the wrap
    slot.Tick(false, false, 0);
    EXPECT_EQ(slot.running, 1);
}

TEST_F(SlotTest, CancelSetsTheEventEachTickAndPriorityChangesReachTheWorker) {
    clWorkerSlot slot(env);
    slot.StartJob(Job());
    FakeWorkerState& w = *launcher.started.at(0);
    slot.Tick(false, false, 3);
    EXPECT_EQ(w.priority, 3);
    EXPECT_EQ(slot.priority, 3);
    XEvent cancel;
    ASSERT_TRUE(cancel.Create(slot.cancelEvent.name.text));
    EXPECT_FALSE(cancel.IsSet());
    slot.Tick(false, true, 3);
    EXPECT_TRUE(cancel.IsSet());
    cancel.Reset();
    slot.Tick(false, true, 3);
    EXPECT_TRUE(cancel.IsSet()) << "repeated until the job ends";
}
