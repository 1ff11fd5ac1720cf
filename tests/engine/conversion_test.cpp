// The conversion driven tick by tick with a hand-set clock and scripted
// workers: scheduling order and refill, harvest, pause, cancel, the core
// menu, the overwrite question, multi-encoder jobs and every state.
#include "engine/conversion.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <set>
#include <string>

#include "engine/conversioninput.h"
#include "engine/globals.h"
#include "engine/workerlauncher.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/platform/thread.h"
#include "foundation/settings.h"
#include "foundation/utf.h"
#include "plugins/encoderentries.h"
#include "plugins/sourcefile.h"
#include "tests/engine/fakeworkers.h"

namespace {

class ConversionTest : public ::testing::Test {
protected:
    TestFolder dir;
    FakeLauncher launcher;
    uint32_t now = 5000;
    clConversionInput input;
    clConversionServices services;
    int cancelQuestions = 0;
    bool overwriteAnswer = true;
    int logShowings = 0;
    std::mt19937 random{7};

    ConversionTest() {
        services = ScriptedConversion(launcher, now, 64);
        services.askCancel = [this] {
            ++cancelQuestions;
            return true;
        };
        services.askOverwrite = [this](clOverwriteItems&) { return overwriteAnswer; };
        services.showLogs = [this](const clLogEntries&, const clLogEntries&) { ++logShowings; };
    }

    void SetEntry(const char16_t* name, const clString& value) {
        SetSettingText(value, name, settingsRootHive, EntryKeyPath(globalEncoder, clString()).text);
    }

    void AddSources(int count, const char16_t* extension = u".wav", int bytes = -1) {
        for (int i = 0; i < count; ++i) {
            clString path = dir.File(clString::Formatted(u"src%04d%s", i, extension).text);
            if (bytes >= 0) WriteBytes(path, std::string(static_cast<size_t>(bytes) * (i + 1), 'x'));
            input.sources.Add(new clSourceFile(path));
        }
    }

    // Ticks until the sources are examined and the jobs built.
    void TickPastExamining(clConversion& c) {
        for (int i = 0; i < 20000 && c.state == kStateExamining && !c.closed; ++i) {
            PlatformSleep(1);
            c.Tick();
        }
    }

    // Gives each new worker a random length, and ends those whose time
    // has come.
    size_t seen = 0;
    void RunWorkers(int longest) {
        for (; seen < launcher.started.size(); ++seen) {
            launcher.started[seen]->ticksLeft = 1 + static_cast<int>(random() % static_cast<unsigned>(longest));
        }
        for (auto& w : launcher.started) {
            if (w->alive && !w->ended && --w->ticksLeft <= 0) w->ended = true;
        }
    }

    void Step(clConversion& c, int longest = 1) {
        now += 50;
        c.Tick();
        RunWorkers(longest);
    }
    // Steps on until the conversion closes. The batch's end runs on a real
    // thread, which a loaded machine (Wine, tests in parallel) may keep
    // busy for many fake ticks: this waits for it in real time, up to 20 s.
    void StepUntilClosed(clConversion& c) {
        for (int i = 0; i < 10000 && !c.closed; ++i) {
            Step(c);
            if (!c.closed) PlatformSleep(2);
        }
    }
};

std::u16string InFile(const FakeWorkerState& w) { return OptionOf(w.commandText, u"infile"); }

}  // namespace

TEST_F(ConversionTest, ThousandJobsOnSixtyFourSlotsStartOnceEachInListOrder) {
    AddSources(1000);
    clConversion c(input, services);
    c.Open();
    EXPECT_EQ(c.targetSlots, 64);
    TickPastExamining(c);
    ASSERT_EQ(c.state, kStateConverting);
    size_t most = 0;
    for (int i = 0; i < 100000 && c.state != kStateFinished; ++i) {
        Step(c, 40);
        size_t running = 0;
        for (int64_t s = 0; s < c.slots.Count(); ++s) running += c.slots[s].running != 0;
        most = std::max(most, running);
    }
    ASSERT_EQ(c.state, kStateFinished);
    // A run that closed by itself had errors: name them (seen once under
    // Wine on a loaded machine).
    std::string logged;
    for (int64_t e = 0; e < c.errors.Count(); ++e) {
        logged += StringToUtf8(c.errors[e].sourcePath) + ":";
        for (int64_t l = 0; l < c.errors[e].lines.Count(); ++l) logged += " " + StringToUtf8(c.errors[e].lines[l]);
        logged += "\n";
    }
    EXPECT_FALSE(c.closed) << "without errors the finished message waits for Finish; errors:\n" << logged;
    EXPECT_EQ(U(c.cancelButtonText), u"Finish");
    c.RequestCancel();
    EXPECT_TRUE(c.closed);
    EXPECT_EQ(cancelQuestions, 0);
    EXPECT_EQ(most, 64u);
    ASSERT_EQ(launcher.started.size(), 1000u);
    for (size_t i = 0; i < launcher.started.size(); ++i) {
        EXPECT_EQ(InFile(*launcher.started[i]), U(input.Source(static_cast<int64_t>(i)).path)) << i;
    }
    EXPECT_EQ(c.fileNumber, 1001);
    EXPECT_EQ(c.progress, 10000);
    EXPECT_EQ(c.errors.Count(), 0);
    EXPECT_EQ(c.state, kStateFinished);
    EXPECT_EQ(U(c.headline), u"Converted 1,000 Files to Scripted");
    EXPECT_EQ(logShowings, 0);
}

TEST_F(ConversionTest, FreedSlotIsRefilledAtTheNextTickFromTheLowestIndex) {
    AddSources(10);
    services.processorCount = 4;
    clConversion c(input, services);
    c.Open();
    TickPastExamining(c);
    now += 50;
    c.Tick();
    ASSERT_EQ(launcher.started.size(), 4u);
    launcher.started[2]->ended = true;
    launcher.started[1]->ended = true;
    now += 50;
    c.Tick();  // both end in this tick's slot pass, and are refilled by its dispatch
    ASSERT_EQ(launcher.started.size(), 6u);
    EXPECT_EQ(U(c.slots[1].sourcePath), U(input.Source(4).path));
    EXPECT_EQ(U(c.slots[2].sourcePath), U(input.Source(5).path));
    EXPECT_EQ(c.fileNumber, 3);
}

// A difference from a plain 50 ms timer, on purpose: a worker's end makes a
// tick due at once, and that early tick (which leaves the rows' texts
// alone) starts the next file, so that a core doesn't sit idle for the rest
// of the 50 ms. The texts still turn on the timer's ticks only.
TEST_F(ConversionTest, AWorkersEndMakesATickDueThatStartsTheNextFileAtOnce) {
    AddSources(3);
    services.processorCount = 2;
    clConversion c(input, services);
    c.Open();
    TickPastExamining(c);
    now += 50;
    c.Tick();
    ASSERT_EQ(launcher.started.size(), 2u);
    EXPECT_FALSE(c.TickDue()) << "both workers run";
    const uint32_t rowTurn = c.slots[1].textTick;
    launcher.started[0]->ended = true;
    EXPECT_TRUE(c.TickDue());
    now += 5;
    c.Tick(false);
    ASSERT_EQ(launcher.started.size(), 3u) << "started without waiting for the timer";
    EXPECT_EQ(U(c.slots[0].sourcePath), U(input.Source(2).path));
    EXPECT_EQ(c.slots[1].textTick, rowTurn) << "an early tick leaves the rows alone";
    EXPECT_FALSE(c.TickDue()) << "no slot is free and nothing waits";
}

// The process launcher, counted.
class CountingLauncher : public clWorkerLauncher {
public:
    int starts = 0, standbys = 0;
    std::unique_ptr<clWorkerLink> Start(const clString& commandLine, clString& failure) override {
        ++starts;
        return ProcessWorkerLauncher().Start(commandLine, failure);
    }
    std::unique_ptr<clWorkerLink> StartStandby(const clString& commandLine) override {
        ++standbys;
        return ProcessWorkerLauncher().StartStandby(commandLine);
    }
};

// Real processes (the test helper standing in for the worker: it waits for
// its go when started ahead, lives 100 ms and ends without output) and a
// clock that never moves: no timer tick ever comes, so the run can only go
// on because each wait ends with the work it waits for. Each wait is given
// a minute.
TEST_F(ConversionTest, WithoutATimerEachJobStartsWhenItsSlotFreesAndTheRunEndsWhenItsWorkDoes) {
    AddSources(3);
    services.processorCount = 1;
    CountingLauncher counting;
    services.launcher = &counting;
    services.workerProgram = JoinPath(GetProgramFolder(), clString(u"qv_testhelper"));
    services.workerProgram.Append(PlatformExecutableSuffix());
    clConversion c(input, services);
    c.Open();
    const auto start = std::chrono::steady_clock::now();
    int waits = 0;
    for (; waits < 100 && !c.closed; ++waits) {
        c.WaitForWork(60000);
        c.Tick(false);
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_TRUE(c.closed);
    EXPECT_LT(seconds, 30.0) << "a wait ran out its minute";
    // Each stand-in ended without putting an output in place.
    ASSERT_EQ(c.errors.Count(), 3);
    for (int64_t i = 0; i < 3; ++i) EXPECT_EQ(U(c.errors[i].sourcePath), U(input.Source(i).path));
    EXPECT_EQ(logShowings, 1);
    EXPECT_EQ(counting.starts, 1) << "the second and third file went to workers started ahead";
    EXPECT_EQ(counting.standbys, 2);
}

// With waiting workers on offer, each busy slot has its next worker
// started while files wait; a freed slot hands its next file to that
// worker (which reads its command file only then), a waiting worker that
// died is replaced by a usual start on the same command file, and none is
// kept once no file waits.
TEST_F(ConversionTest, AWaitingWorkerTakesTheNextFileAndOneThatDiedIsReplacedByAUsualStart) {
    AddSources(4);
    services.processorCount = 1;
    launcher.offerStandbys = true;
    clConversion c(input, services);
    c.Open();
    TickPastExamining(c);
    now += 50;
    c.Tick();
    ASSERT_EQ(launcher.started.size(), 2u);
    EXPECT_FALSE(launcher.started[0]->standby);
    EXPECT_EQ(InFile(*launcher.started[0]), U(input.Source(0).path));
    ASSERT_TRUE(launcher.started[1]->standby) << "the next worker waits while the first file runs";
    EXPECT_NE(launcher.started[1]->commandLine.find(u" -standby"), std::u16string::npos);
    EXPECT_NE(launcher.started[1]->commandFile, launcher.started[0]->commandFile);
    EXPECT_FALSE(launcher.started[1]->released);

    launcher.started[0]->ended = true;
    c.Tick(false);
    ASSERT_EQ(launcher.started.size(), 3u);
    EXPECT_TRUE(launcher.started[1]->released);
    EXPECT_EQ(InFile(*launcher.started[1]), U(input.Source(1).path)) << "its command file was written for it";
    EXPECT_FALSE(launcher.started[0]->alive);
    ASSERT_TRUE(launcher.started[2]->standby);

    // The next waiting worker dies before its file comes.
    launcher.started[2]->canRelease = false;
    launcher.started[1]->ended = true;
    c.Tick(false);
    ASSERT_GE(launcher.started.size(), 4u);
    FakeWorkerState& fresh = *launcher.started[3];
    EXPECT_FALSE(fresh.standby);
    EXPECT_EQ(InFile(fresh), U(input.Source(2).path));
    EXPECT_EQ(fresh.commandFile, launcher.started[2]->commandFile) << "the same command file, started the usual way";
    EXPECT_FALSE(launcher.started[2]->alive);

    ASSERT_EQ(launcher.started.size(), 5u);
    ASSERT_TRUE(launcher.started[4]->standby);
    fresh.ended = true;
    c.Tick(false);
    EXPECT_TRUE(launcher.started[4]->released);
    EXPECT_EQ(InFile(*launcher.started[4]), U(input.Source(3).path));
    EXPECT_EQ(launcher.started.size(), 5u) << "no file waits: no worker is started ahead";
    launcher.started[4]->ended = true;
    for (int i = 0; i < 10000 && c.state != kStateFinished; ++i) {
        Step(c);
        PlatformSleep(1);
    }
    EXPECT_EQ(c.state, kStateFinished);
    for (auto& w : launcher.started) EXPECT_FALSE(w->alive);
    EXPECT_EQ(c.errors.Count(), 0);
}

TEST_F(ConversionTest, ACancelEndsTheWaitingWorkersWithoutAFile) {
    AddSources(3);
    services.processorCount = 2;
    launcher.offerStandbys = true;
    clConversion c(input, services);
    c.Open();
    TickPastExamining(c);
    now += 50;
    c.Tick();
    ASSERT_EQ(launcher.started.size(), 4u) << "two files running, two workers waiting";
    c.RequestCancel();
    now += 50;
    c.Tick();
    for (size_t i : {2u, 3u}) {
        ASSERT_TRUE(launcher.started[i]->standby);
        EXPECT_FALSE(launcher.started[i]->alive);
        EXPECT_FALSE(launcher.started[i]->released);
    }
    EXPECT_EQ(launcher.started.size(), 4u);
}

TEST_F(ConversionTest, FailedJobIsLoggedAndTheBatchGoesOnThenTheLogsShowAtOnce) {
    AddSources(3);
    clConversion c(input, services);
    c.Open();
    TickPastExamining(c);
    now += 50;
    c.Tick();
    ASSERT_EQ(launcher.started.size(), 3u);
    launcher.started[1]->err = u"Unsupported file\r\n";
    launcher.started[1]->out = u"a note\r\n";
    for (auto& w : launcher.started) w->ended = true;
    StepUntilClosed(c);
    ASSERT_TRUE(c.closed);
    ASSERT_EQ(c.errors.Count(), 1);
    EXPECT_EQ(U(c.errors[0].sourcePath), U(input.Source(1).path));
    EXPECT_EQ(U(c.errors[0].lines[0]), u"Unsupported file");
    EXPECT_EQ(c.jobs[1].hadErrors, 1);
    EXPECT_EQ(c.jobs[0].hadErrors, 0);
    EXPECT_EQ(c.infos.Count(), 0) << "the information log is shown only when asked for";
    EXPECT_EQ(logShowings, 1);
}

TEST_F(ConversionTest, PauseStopsDispatchAndTheClockThenCancelReleasesIt) {
    AddSources(6);
    services.processorCount = 2;
    clConversion c(input, services);
    c.Open();
    TickPastExamining(c);
    now += 50;
    c.Tick();
    ASSERT_EQ(launcher.started.size(), 2u);
    now += 10000;
    c.Tick();
    EXPECT_EQ(U(c.elapsedText), u"10 Seconds Elapsed");
    c.SetPause(true);
    launcher.started[0]->ended = true;
    for (int i = 0; i < 100; ++i) {
        now += 1000;
        c.Tick();
    }
    EXPECT_TRUE(launcher.started[1]->suspended);
    EXPECT_EQ(launcher.started.size(), 2u) << "no job starts while paused";
    c.SetPause(false);
    now += 50;
    c.Tick();
    EXPECT_FALSE(launcher.started[1]->suspended);
    EXPECT_EQ(launcher.started.size(), 3u);
    EXPECT_EQ(U(c.elapsedText), u"10 Seconds Elapsed") << "the paused 100 s don't count";
    c.SetPause(true);
    c.RequestCancel();
    EXPECT_EQ(cancelQuestions, 1);
    EXPECT_FALSE(c.pausePressed);
    EXPECT_EQ(c.state, kStateCancelling);
    now += 50;
    c.Tick();
    EXPECT_EQ(U(c.statusText), u"Cancelling Conversion...");
    XEvent cancel;
    ASSERT_TRUE(cancel.Create(c.slots[0].cancelEvent.name.text));
    EXPECT_TRUE(cancel.IsSet());
    for (auto& w : launcher.started) w->ended = true;
    StepUntilClosed(c);
    EXPECT_TRUE(c.closed);
    EXPECT_EQ(launcher.started.size(), 3u) << "nothing starts after a cancel";
}

TEST_F(ConversionTest, FewerCoresDrainTheUpperSlotsAndMoreComeInAtTheNextTick) {
    AddSources(20);
    services.processorCount = 4;
    clConversion c(input, services);
    c.Open();
    TickPastExamining(c);
    now += 50;
    c.Tick();
    ASSERT_EQ(launcher.started.size(), 4u);
    c.SetTargetSlots(2);
    for (auto& w : launcher.started) w->ended = true;
    Step(c);
    EXPECT_EQ(launcher.started.size(), 6u);
    EXPECT_EQ(c.slots[2].running, 0);
    EXPECT_EQ(c.slots[3].running, 0);
    EXPECT_FALSE(c.slots[3].hidden) << "rows stay visible";
    c.SetTargetSlots(1);
    c.SetTargetSlots(4);
    for (auto& w : launcher.started) w->ended = true;
    Step(c);
    EXPECT_EQ(launcher.started.size(), 10u);
}

TEST_F(ConversionTest, OneFileGivesOneHiddenSlotAndTheStatusOfItsRow) {
    AddSources(1);
    services.processorCount = 8;
    clConversion c(input, services);
    c.Open();
    EXPECT_EQ(c.targetSlots, 1);
    EXPECT_TRUE(c.slots[0].hidden);
    TickPastExamining(c);
    now += 50;
    c.Tick();
    launcher.started[0]->out = u"MSGTO: qvt: Action: Encoding 'x'\r\n";
    now += 50;
    c.Tick();
    now += 50;
    c.Tick();
    EXPECT_EQ(U(c.statusText), u"Encoding 'x'");
}

TEST_F(ConversionTest, CancelledOverwriteQuestionEndsWithoutAJob) {
    AddSources(2, u".wav", 10);
    // Both named to one output that exists already: both are asked about.
    input.Source(0).chosenOutput = dir.File(u"same");
    input.Source(1).chosenOutput = dir.File(u"same");
    WriteBytes(dir.File(u"same"), "old");
    int asked = 0;
    services.askOverwrite = [&asked](clOverwriteItems& items) {
        asked = static_cast<int>(items.Count());
        return false;
    };
    clConversion c(input, services);
    c.Open();
    TickPastExamining(c);
    EXPECT_EQ(c.state, kStateFinished);
    EXPECT_TRUE(c.closed);
    EXPECT_TRUE(launcher.started.empty());
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(ReadBytes(dir.File(u"same")), "old");
}

TEST_F(ConversionTest, OverwriteAnswersSetPathsAndSkips) {
    AddSources(3, u".wav", 10);
    for (int i = 0; i < 3; ++i) input.Source(i).chosenOutput = dir.File(u"same");
    services.askOverwrite = [this](clOverwriteItems& items) {
        EXPECT_EQ(items.Count(), 2) << "the first doesn't exist yet";
        items[0].newPath = dir.File(u"renamed");
        items[1].skip = 1;
        return true;
    };
    clConversion c(input, services);
    c.Open();
    TickPastExamining(c);
    ASSERT_EQ(c.jobs.Count(), 2);
    EXPECT_EQ(U(c.jobs[1].outputPath), U(dir.File(u"renamed")));
    EXPECT_EQ(c.totalBytes, 10 + 20);
}

TEST_F(ConversionTest, MultiEncoderMakesJobsSourceBySourceAndCountsBytesForEach) {
    globalEncoder = u"[Multi Encoder]";
    clString folder = dir.File(u"out");
    SetEntry(u"qvt_CLI", clString::Formatted(u"-enc1=\"A=-x={mqt}1{mqt}\" -encMopt1=\"-tofolder={mqt}%s{mqt}\" "
                                             u"-enc2=\"B\" -enc3=\"C=\" -encMopt3=\"-tofolder={mqt}%s{mqt}\"",
                                             folder.text, folder.text));
    AddSources(10, u".wav", 100);
    services.processorCount = 8;
    clConversion c(input, services);
    c.Open();
    EXPECT_EQ(c.targetSlots, 8) << "3 items x 10 files";
    TickPastExamining(c);
    ASSERT_EQ(c.jobs.Count(), 20) << "enc2 without '=' yields no item";
    for (int64_t j = 0; j < 20; ++j) {
        EXPECT_EQ(c.jobs[j].sourceIndex, j / 2);
        EXPECT_EQ(U(c.jobs[j].encoderName), j % 2 == 0 ? u"A" : u"C");
        EXPECT_EQ(c.jobs[j].encoderIndex, j % 2);
    }
    EXPECT_EQ(U(c.jobs[0].encoderOptions), u"-x=\"1\"");
    EXPECT_EQ(c.encoderBatches.Count(), 2);
    EXPECT_NE(c.encoderBatches[0].batchId, c.encoderBatches[1].batchId);
    EXPECT_EQ(c.totalBytes, 2 * 100 * (1 + 10) * 10 / 2);
    EXPECT_EQ(c.fileCount, 20);
    now += 50;
    c.Tick();
    EXPECT_EQ(OptionOf(launcher.started[1]->commandText, u"batchid"), U(clString(c.encoderBatches[1].batchId)));
}

// The end of a run: when the finished state waits for "Finish", when it
// closes by itself, and that a chosen power action comes before the logs.
TEST_F(ConversionTest, FinishingClosesByItselfForSkipErrorsOrAnActionAndTheActionComesFirst) {
    struct Case {
        const char* name;
        int skipFinish, noDisplayError, afterAction;
        bool failOne, closesByItself;
        std::vector<std::string> trail;
    } cases[] = {
        {"plain", 0, 0, 0, false, false, {}},
        {"skip finished", 1, 0, 0, false, true, {}},
        {"error", 0, 0, 0, true, true, {"logs"}},
        {"error, log hidden", 0, 1, 0, true, true, {}},
        {"power off", 0, 0, kAfterPowerOff, true, true, {"action 1", "logs"}},
        {"restart", 0, 0, kAfterRestart, false, true, {"action 5"}},
    };
    for (const Case& k : cases) {
        SetSettingNumber(k.skipFinish, u"qvtSkipedFinish");
        SetSettingNumber(k.noDisplayError, u"qvt-NoDisplayError");
        std::vector<std::string> trail;
        services.performAfterAction = [&](int32_t a) { trail.push_back("action " + std::to_string(a)); };
        services.showLogs = [&](const clLogEntries&, const clLogEntries&) { trail.push_back("logs"); };
        clConversionInput one;
        one.sources.Add(new clSourceFile(dir.File(u"a.wav")));
        one.sources.Add(new clSourceFile(dir.File(u"b.wav")));
        size_t first = launcher.started.size();
        clConversion c(one, services);
        c.Open();
        c.afterAction = k.afterAction;
        TickPastExamining(c);
        for (int i = 0; i < 5 && launcher.started.size() < first + 2; ++i) Step(c);
        ASSERT_EQ(launcher.started.size(), first + 2) << k.name;
        if (k.failOne) launcher.started[first]->err = u"broken\r\n";
        launcher.started[first]->ended = launcher.started[first + 1]->ended = true;
        std::set<int32_t> states;
        // The batch end runs on a thread of its own: the ticks wait for it
        // in real time too, as a loaded machine (or Wine) may start it late.
        for (int i = 0; i < 5000 && c.state != kStateFinished; ++i) {
            Step(c);
            states.insert(c.state);
            if (c.state == kStateFinalizing) {
                EXPECT_EQ(U(c.statusText), u"Finalizing DSP Effects...");
                PlatformSleep(1);
            }
        }
        EXPECT_EQ(c.state, kStateFinished) << k.name;
        EXPECT_EQ(states.count(kStateFinalizing), 1u) << "the batch end runs between converting and finished";
        EXPECT_EQ(c.closed, k.closesByItself) << k.name;
        if (!c.closed) c.RequestCancel();  // "Finish"
        EXPECT_TRUE(c.closed) << k.name;
        EXPECT_EQ(trail, k.trail) << k.name;
    }
    SetSettingNumber(0, u"qvtSkipedFinish");
    SetSettingNumber(0, u"qvt-NoDisplayError");
}

// Remaining time and speed stay away for the first 4 s of a conversion
// (exactly 4 s too), then both show; the row texts of a busy slot turn
// over every 16 ticks of the display, never faster.
TEST_F(ConversionTest, TimesAndSpeedWaitFourSecondsAndRowTextsTurnEverySixteenTicks) {
    AddSources(2, u".wav", 1000);
    clConversion c(input, services);
    c.Open();
    TickPastExamining(c);
    const uint32_t start = c.startTick;
    for (auto& w : launcher.started) w->out = u"MSGTO: qvt: PCDone: 40\r\n";
    now = start + 3000;
    c.Tick();
    ASSERT_EQ(launcher.started.size(), 2u);
    launcher.started[0]->out =
        u"MSGTO: qvt: msLen: 60000\r\nMSGTO: qvt: Action: Converting\r\nMSGTO: qvt: ActionInput: in.wav\r\n"
        u"MSGTO: qvt: PCDone: 40\r\n";
    launcher.started[1]->out = u"MSGTO: qvt: msLen: 60000\r\nMSGTO: qvt: PCDone: 40\r\n";
    c.Tick();
    EXPECT_EQ(U(c.remainingText), u"") << "at 3 s";
    EXPECT_EQ(U(c.speedText), u"") << "at 3 s";
    now = start + 4000;
    c.Tick();
    EXPECT_EQ(U(c.remainingText), u"") << "at exactly 4 s";
    EXPECT_EQ(U(c.speedText), u"") << "at exactly 4 s";
    now = start + 5000;
    c.Tick();
    EXPECT_NE(U(c.remainingText), u"") << "at 5 s";
    EXPECT_NE(U(c.speedText), u"") << "at 5 s";
    // The row: "Converting" until the 16th tick of the slot's text, then
    // the input.
    std::u16string first = U(c.slots[0].displayText);
    int ticks = 0;
    while (U(c.slots[0].displayText) == first && ticks < 40) {
        now += 50;
        c.Tick();
        ++ticks;
    }
    EXPECT_EQ(U(c.slots[0].displayText), u"in.wav");
    // Counted from the job's start: the 16th turn of the slot's text.
    EXPECT_EQ(c.slots[0].textTick, 16u) << "after " << ticks << " more ticks";
}

// Values that only pass through reach the workers: every stored priority
// reaches a newly started worker's options, at the start and after a
// change from the menu.
TEST_F(ConversionTest, EachStoredPriorityReachesTheWorkersStartedAfterIt) {
    const char16_t* expected[] = {u"", u"high", u"low", u"idle"};
    for (uint32_t code = 0; code < 4; ++code) {
        launcher.started.clear();
        clConversionInput fresh;
        for (int i = 0; i < 3; ++i) fresh.sources.Add(new clSourceFile(dir.File(u"a.wav")));
        SetSettingNumber(code, u"qvtPriority");
        services.processorCount = 1;
        clConversion c(fresh, services);
        c.Open();
        TickPastExamining(c);
        now += 50;
        c.Tick();
        ASSERT_EQ(launcher.started.size(), 1u);
        EXPECT_EQ(OptionOf(launcher.started[0]->commandText, u"priority"), expected[code]) << code;
        // A change applies to the running worker and to the next one.
        int32_t next = static_cast<int32_t>((code + 1) % 4);
        c.SetPriority(next);
        now += 50;
        c.Tick();
        EXPECT_EQ(launcher.started[0]->priority, next);
        launcher.started[0]->ended = true;
        now += 50;
        c.Tick();
        ASSERT_EQ(launcher.started.size(), 2u);
        EXPECT_EQ(OptionOf(launcher.started[1]->commandText, u"priority"), expected[next]) << code;
        EXPECT_EQ(GetSettingNumber(u"qvtPriority"), static_cast<uint32_t>(next));
        c.RequestCancel();
        for (auto& w : launcher.started) w->ended = true;
        StepUntilClosed(c);
    }
    SetSettingNumber(0, u"qvtPriority");
}
