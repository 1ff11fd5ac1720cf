// clWorkerSlot: one of the conversion's 64 places where a job runs, with
// the supervision of its worker. A job is started on an idle slot, the
// slot is ticked every 50 ms from the main thread, and the job ends when
// the worker ends, the watchdog trips, or the direct copy is done.
//
// The slot reaches its worker only through a clWorkerLink (pipes, end,
// pause, priority) and two named events: cancel, which the worker
// honours, and watchdog, which the worker sets to show it lives and the
// slot resets. Success is no error line and the worker's word that its
// output is in place; the exit code is never read. A worker is ended from
// here only when it stops answering (the watchdog) or ignores a cancel.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

#include "engine/slotreport.h"
#include "engine/workerlauncher.h"
#include "foundation/platform/workerprocess.h"
#include "foundation/clstring.h"
#include "foundation/syncobjects.h"
#include "foundation/thread.h"

// What every slot of a conversion shares: its clock (GetTickCount), the
// launcher of workers and the worker program.
struct clWorkerEnvironment {
    std::function<uint32_t()> tickCount;
    clWorkerLauncher* launcher = nullptr;
    clString workerProgram;  // full path of ConvertWorker
    // Raised when a slot's copy thread has finished, so that the scheduler
    // waiting for work wakes at once.
    clWakeHandle wake = clNoWake;
};

// One job as the slot is given it.
struct clJobStart {
    int64_t lengthMs = 0;
    int64_t sourceBytes = 0;
    clString sourcePath;
    clString outputPath;
    bool directCopy = false;
    clString encoderName;
    clString encoderOptions;
    clString dspEffects;
    int32_t batchId = 0;
};

constexpr uint32_t kWatchdogLimitMs = 60000;
// A worker asked to stop has this long to do so before it is ended.
constexpr uint32_t kCancelGraceMs = 10000;
// The line of a job whose worker ended without putting its output in place.
extern const char16_t* const kEndedEarlyLine;

class clWorkerSlot : public clSlotReport {
public:
    int32_t displayPercent = 0;  // last given to the row
    clString displayText;        // last given to the row
    bool isDirectCopy = false;
    clThread copyThread;
    clString encoderName, encoderOptions, dspEffects;
    bool hidden = false;    // no row of its own
    int32_t processor = 0;  // 1-based; 0: any
    int32_t running = 0;    // 1 while a job is in hand
    bool finished = false;  // a job has ended here
    int64_t sourceBytes = 0;
    clString sourcePath, outputPath;
    std::unique_ptr<clWorkerLink> worker;  // the running worker's process and pipes
    clString commandFile;
    // The next worker, started while this one runs and waiting for its job
    // (see PrepareStandby), and the command file it will read.
    std::unique_ptr<clWorkerLink> standby;
    clString standbyCommandFile;
    std::atomic<bool> paused{false};  // read by the copy thread
    bool cancelSent = false;          // the running job was asked to stop
    uint32_t cancelSentAt = 0;        // tick count of the first request
    int32_t priority = 0;
    XEvent cancelEvent, watchdogEvent;
    uint32_t lastHeartbeat = 0;
    int64_t endedLength = -1;  // lengthMs of the job that ended, until harvested
    clString errorSource, errorOutput, errorCopy;
    clString infoSource, infoOutput, infoCopy;
    // The copy thread's progress; the tick takes it into `percent`.
    std::atomic<int32_t> copyPercent{0};
    // The copy thread's error lines, read once it has ended.
    clString copyErrors;
    // Set by the copy thread as its last act: its results are in place.
    std::atomic<bool> copyDone{false};

    explicit clWorkerSlot(const clWorkerEnvironment& environment) : env(environment) {}
    ~clWorkerSlot();
    clWorkerSlot(const clWorkerSlot&) = delete;
    clWorkerSlot& operator=(const clWorkerSlot&) = delete;

    // Success shows as `running` = 1, failure as a line in `errorText`.
    void StartJob(const clJobStart& job);
    // One timer tick: pipes, end, priority, pause, cancel, watchdog.
    void Tick(bool pausePressed, bool cancelRequested, int32_t wantedPriority);
    // Reads both pipes; unless `final`, ends the job when the worker has.
    void DrainPipes(bool final);
    void EndJob();
    // Starts the slot's next worker now, to wait until StartJob gives it a
    // job: its process start, which costs a fixed time per file (most of
    // all under Wine), then overlaps the running job instead of following
    // it. Nothing when one waits already or the launcher can't.
    void PrepareStandby();
    // Ends a waiting worker that will get no job.
    void DropStandby();
    // True when the running job's worker or copy has ended and the next
    // tick would end the job.
    bool JobEnded() const;
    // The worker's option text for the running job (the command file).
    clString WorkerOptions(int32_t batchId, const clString& tempFolder) const;

private:
    const clWorkerEnvironment& env;

    bool MakeEvent(XEvent& event, const char16_t* prefix);
    clString WorkerCommandLine(const clString& file) const;
    void WriteCommandFile(const clString& options);
};

// The priority codes' worker option values; empty for normal.
const char16_t* WorkerPriorityOption(int32_t code);
