// clConversion: the conversion as logic, apart from how it is shown. It
// examines the sources, builds the jobs, runs them on up to 64 slots,
// collects their logs, ends the batches and finishes. A view (the window,
// or the terminal) calls Tick every 50 ms, passes on the user's pause,
// cancel and menu choices, and shows the texts, rows and numbers it finds
// here. The clock, the worker launcher and every question to the user are
// given in, so tests drive a whole conversion tick by tick.
//
// States: 0 examining, 1 converting, 2 finalizing (the batch-end work on
// its own thread), 3 finished, 4 cancelling. `closed` turns true when the
// view is to close.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "engine/batchsettings.h"
#include "engine/conversionjob.h"
#include "engine/jobbuilder.h"
#include "engine/multiencoder.h"
#include "engine/workerslot.h"
#include "foundation/clstring.h"
#include "foundation/thread.h"

class clConversionInput;

enum clConversionState : int32_t {
    kStateExamining = 0,
    kStateConverting = 1,
    kStateFinalizing = 2,
    kStateFinished = 3,
    kStateCancelling = 4,
};

struct clConversionServices {
    std::function<uint32_t()> tickCount;
    clWorkerLauncher* launcher = nullptr;
    clString workerProgram;
    int32_t processorCount = 1;
    // "Cancel Conversion?"; true for yes.
    std::function<bool()> askCancel;
    clAskOverwrite askOverwrite;
    // The power action of the "After Conversion" choice (1 to 5).
    std::function<void(int32_t action)> performAfterAction;
    // Jobs that shared an output with an earlier job of the run and got a
    // name of their own (output path before, new path after).
    std::function<void(const clOverwriteItems& renamed)> tellRenamed;
    // The view is about to close: it keeps its place (before any power
    // action or log window).
    std::function<void()> closing;
    // The final showing of the logs; called only when one isn't empty.
    std::function<void(const clLogEntries& errors, const clLogEntries& infos)> showLogs;

    // The real clock, launcher and worker; no questions (cancel: yes,
    // overwrite: skip every file), no power action, no log showing.
    static clConversionServices Defaults();
};

// Codes of the after-conversion choice.
enum clAfterAction : int32_t {
    kAfterNothing = 0,
    kAfterPowerOff = 1,
    kAfterHibernate = 2,
    kAfterStandBy = 3,
    kAfterLogOff = 4,
    kAfterRestart = 5,
};

class clConversion {
public:
    clConversionSettings settings;
    int32_t fileCount = 0;
    clMultiEncoderItems multiItems;
    clEncoderBatches encoderBatches;
    clConversionJobs jobs;

    int32_t state = kStateExamining;
    clOwningList<clWorkerSlot> slots;  // always 64 once open
    int32_t processorCount = 1;
    int32_t targetSlots = 1;
    int32_t activeSlots = 1;
    int32_t nextJob = 0;
    int32_t fileNumber = 1;
    int32_t examinedCount = 0;
    clThread examineThread, finalizeThread;
    bool examinePaused = false;
    uint32_t pauseStart = 0;
    int32_t priorityCode = 0;
    int32_t afterAction = kAfterNothing;
    int32_t skipFinish = 0;
    clLogEntries errors, infos;
    bool needStreamFacts = false;

    int32_t progress = 0;  // hundredths of a percent, never falls
    int64_t totalBytes = 0;
    int64_t bytesDone = 0;
    int64_t audioDoneMs = 0;
    uint32_t startTick = 0;

    // What a view shows.
    clString headline;
    clString statusText;
    clString speedText;
    clString elapsedText;
    clString remainingText;
    clString windowTitle;
    clString progressTitle;  // the title strip's text: "[ 4%] Quillotone Converting"
    clString cancelButtonText;
    bool pausePressed = false;
    bool pauseEnabled = true;
    bool closed = false;

    clConversion(clConversionInput& conversionInput, const clConversionServices& conversionServices);
    ~clConversion();
    clConversion(const clConversion&) = delete;
    clConversion& operator=(const clConversion&) = delete;

    // Reads the settings, plans the slots and starts examining.
    void Open();
    // The 50 ms timer. A tick that starts while one is in progress (a
    // question asked from within it) returns at once. An early tick (a
    // view woken by TickDue between two timer ticks) passes `display`
    // false: it harvests and dispatches but leaves the rows alone, so that
    // their texts still turn over every 16 ticks of 50 ms.
    void Tick(bool display = true);
    // True when the next tick has work waiting: the examination is done, a
    // slot is free for a job (a worker gone, a copy done), or the
    // finishing is. A view may tick early then, so that a core does not
    // idle out the rest of the 50 ms before its next file starts.
    bool TickDue();
    // Sleeps at most `milliseconds` (the rest of the view's 50 ms) until
    // TickDue may have turned true: a worker has ended, or a copy, the
    // examination or the batch end has finished. A view calls it between
    // ticks instead of sleeping, so that a freed core gets its next file
    // at once and the run ends the moment its work does.
    void WaitForWork(uint32_t milliseconds);
    // The same wait, for a view whose message loop must go on: what
    // WaitForWork would sleep on, as waitables for the loop to watch
    // (at most kSlotCount + 1 of them). -1 when a worker can't be watched,
    // and the view must look at TickDue every few milliseconds instead.
    int32_t WorkWaitables(intptr_t* waitables);
    // Lowers the wake that a watch has seen.
    void TakeWake();
    // The Pause button.
    void SetPause(bool pressed);
    // The Cancel button and the window's close: "Finish" once finished,
    // else the question, and cancelling on yes.
    void RequestCancel();
    // The core menu: slots above `count` take no new jobs; more slots come
    // in at the next tick.
    void SetTargetSlots(int32_t count);
    // The priority menu; stored as qvtPriority, applied at the next tick.
    void SetPriority(int32_t code);
    // "Skip Finished Message"; stored at once.
    void SetSkipFinish(bool skip);

    // Bytes of source converted: ended jobs, and each running job by its
    // percentage (one more, so a job just begun counts for something).
    int64_t ProgressBytes() const;
    // The jobs of the batch of `encoderIndex`, as the batch end lists them.
    void GatherBatchFiles(int32_t encoderIndex, clBatchFiles& files) const;

private:
    clConversionInput& input;
    clConversionServices services;
    clWorkerEnvironment environment;
    std::atomic<bool> examineHold{false};
    // Set by the examining and the batch-end threads as their last act.
    std::atomic<bool> examineDone{false}, finalizeDone{false};
    clWakeHandle wake = clNoWake;
    bool inTick = false;

    void PlanSlots();
    void ShowExamining();
    void BuildJobs();
    void UpdateProgress();
    void DispatchJobs();
    bool RunningWorkers(clProcessHandle* running, int32_t& count) const;
    void HarvestSlots();
    void BeginFinishing();
    void EndFinishing();
    void CloseWindow();
    void UpdateRow(clWorkerSlot& slot, int32_t percent, const clString& text);
};

// Starts FinalizeBatches on the conversion's own thread: every batch with
// at least one job gets its end.
void FinalizeBatches(clConversion& conversion);
