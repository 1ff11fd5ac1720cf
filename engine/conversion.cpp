#include "engine/conversion.h"

#include <cstring>

#include "engine/conversioninput.h"
#include "engine/globals.h"
#include "engine/progresstext.h"
#include "engine/slotcount.h"
#include "engine/workerlauncher.h"
#include "foundation/file.h"
#include "foundation/localeformat.h"
#include "foundation/pathtext.h"
#include "foundation/platform/power.h"
#include "foundation/platform/processinfo.h"
#include "foundation/platform/thread.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "plugins/codechandler.h"
#include "plugins/decodercache.h"
#include "plugins/sourcefile.h"
#include "plugins/xdll.h"

namespace {

constexpr const char16_t* kProgramTitle = u"Quillotone Track Converter";

clString Count(int64_t number) {
    clString text(number);
    LocalizeNumber(text);
    return text;
}

clString FilesTo(int64_t count) { return clString(count == 1 ? u" File to " : u" Files to "); }

bool EncoderRunsAlone(const clString& encoderName, const clString& encoderOptions) {
    clQvEncoder encoder;
    const qv_log_record noLog{};
    if (!clQvCodecHandler::LoadEncoder(encoderName, encoder, &noLog)) return false;
    qv_query_record query{};
    query.text1 = encoderOptions.text;
    return encoder.Get(encoder.instance, u"NoMultiCPU", &query) != 0;
}

// The title, with the first line of OEM.txt when the installation has one.
clString ProgramTitle() {
    clString title(kProgramTitle);
    clFile oem;
    oem.fileName = JoinPath(GetProgramFolder(), clString(u"OEM.txt"));
    oem.Open(clAccessRead, clOpenExisting, false, true);
    clString line;
    if (oem.handle != clInvalidHandle && oem.ReadLine(line, false, true) && !line.IsEmpty()) {
        title.Append(u": ");
        title.Append(line);
    }
    return title;
}

void AddLogEntry(clLogEntries& log, const clString& encoderName, const clWorkerSlot& slot, const clString& text) {
    auto* entry = new clLogEntry;
    entry->encoderName = encoderName;
    entry->sourcePath = slot.sourcePath;
    entry->outputPath = slot.outputPath;
    int32_t start = 1;
    for (;;) {
        int32_t end = text.Find(u"\r\n", start);
        entry->lines.Add(text.Mid(start, end == 0 ? text.Length() : end - 1));
        if (end == 0) break;
        start = end + 2;
    }
    log.Add(entry);
}

}  // namespace

clConversionServices clConversionServices::Defaults() {
    clConversionServices services;
    services.tickCount = PlatformTickCount;
    // QUILLOTONE_CLOCK_RATE runs the engine's clock faster, for the fault
    // tests of the real program: a hung worker is declared after 60 s of
    // engine time, which a rate of 20 makes 3 s. Workers beat every second
    // of real time, so a rate of 50 or more would trip healthy ones.
    clString rateText;
    if (PlatformGetEnvironment(u"QUILLOTONE_CLOCK_RATE", rateText)) {
        int64_t rate = rateText.ToInt64();
        if (rate > 1 && rate < 50) {
            static uint32_t clockRate = 1;
            clockRate = static_cast<uint32_t>(rate);
            services.tickCount = [] { return PlatformTickCount() * clockRate; };
        }
    }
    services.launcher = &ProcessWorkerLauncher();
    services.workerProgram = JoinPath(GetProgramFolder(), clString(u"ConvertWorker"));
    services.workerProgram.Append(PlatformExecutableSuffix());
    services.processorCount = PlatformProcessorCount();
    services.askCancel = [] { return true; };
    services.askOverwrite = [](clOverwriteItems& items) {
        for (int64_t i = 0; i < items.Count(); ++i) items[i].skip = 1;
        return true;
    };
    services.performAfterAction = [](int32_t action) { PlatformPowerAction(action); };
    services.showLogs = [](const clLogEntries&, const clLogEntries&) {};
    return services;
}

clConversion::clConversion(clConversionInput& conversionInput, const clConversionServices& conversionServices)
    : input(conversionInput), services(conversionServices) {
    wake = PlatformCreateWake();
    environment.wake = wake;
    environment.tickCount = services.tickCount;
    environment.launcher = services.launcher;
    environment.workerProgram = services.workerProgram;
}

clConversion::~clConversion() {
    examineHold = false;
    examineThread.Stop();
    // An examination that did not stop in time still holds the wake and
    // raises it at its end: the wake then stays open.
    const bool examineGone = examineThread.HasEnded();
    examineThread.Close();
    // The batch end can't be stopped half way through a file.
    if (finalizeThread.threadHandle != 0) PlatformWaitThread(finalizeThread.threadHandle, clWaitForever);
    finalizeThread.Close();
    slots.Clear();
    encoderBatches.Clear();
    PlatformKeepAwake(false);
    if (examineGone) PlatformCloseWake(wake);
}

void clConversion::Open() {
    progress = 0;
    bytesDone = audioDoneMs = totalBytes = 0;
    fileNumber = 1;
    nextJob = examinedCount = 0;
    ReadConversionSettings(globalEncoder, globalProfile, settings);
    priorityCode = static_cast<int32_t>(GetSettingNumber(kPrioritySetting.name));
    if (priorityCode < 0 || priorityCode > 3) priorityCode = 0;
    skipFinish = static_cast<int32_t>(GetSettingNumber(kSkipFinishSetting.name));
    windowTitle = ProgramTitle();
    fileCount = 0;
    for (int64_t i = 0; i < input.sources.count; ++i) {
        if (input.Source(i).excluded == 0) ++fileCount;
    }
    headline = u"Converting ";
    headline.Append(Count(fileCount));
    headline.Append(FilesTo(fileCount));
    headline.Append(settings.encoderName);
    cancelButtonText = u"Cancel";
    PlanSlots();
    // The items come first: their rules and naming take part in the
    // question whether stream facts are needed.
    if (IsMultiEncoder(settings.encoderName)) ParseMultiItems(settings.encoderOptions, multiItems);
    needStreamFacts = NeedsStreamFacts(settings.namingRule, settings.dspEffects, multiItems);
    examineDone = false;
    clThreadRunFunction(examineThread, [this](XEvent& stop) {
        ReadSourcesToLevel(input.sources, needStreamFacts ? 2 : 1, &stop, &examineHold);
        examineDone.store(true, std::memory_order_release);
        PlatformRaiseWake(wake);
    });
    // A long run must not be cut short by the machine going to sleep.
    PlatformKeepAwake(true);
}

void clConversion::PlanSlots() {
    processorCount = services.processorCount < 1            ? 1
                     : services.processorCount > kSlotCount ? kSlotCount
                                                            : services.processorCount;
    bool alone = EncoderRunsAlone(settings.encoderName, settings.encoderOptions);
    int64_t estimate = int64_t{CountMultiItems(settings.encoderName, settings.encoderOptions)} * fileCount;
    clSlotPlan plan = ComputeSlotCount(processorCount, alone, estimate, settings.dspEffects);
    targetSlots = activeSlots = plan.count;
    slots.Clear();
    for (int32_t i = 0; i < kSlotCount; ++i) {
        auto* slot = new clWorkerSlot(environment);
        slot->processor = plan.processors[i];
        slot->encoderName = settings.encoderName;
        slot->encoderOptions = settings.encoderOptions;
        slot->dspEffects = settings.dspEffects;
        slot->hidden = i == 0 ? plan.count <= 1 : plan.count < i + 1;
        slots.Add(slot);
    }
}

bool clConversion::TickDue() {
    if (pausePressed) return false;
    if (state == kStateExamining) return examineDone.load(std::memory_order_acquire) || examineThread.HasEnded();
    if (state == kStateFinalizing) return finalizeDone.load(std::memory_order_acquire) || finalizeThread.HasEnded();
    if (state != kStateConverting) return false;
    for (int64_t i = 0; i < slots.Count(); ++i) {
        clWorkerSlot& slot = slots[i];
        if (slot.running != 1) {
            if (i < activeSlots && i < targetSlots && nextJob < jobs.Count()) return true;
            continue;
        }
        if (slot.JobEnded()) return true;
    }
    return false;
}

// The running workers' processes, into `running` (kSlotCount of them at
// most); false when one of them can't be waited on. While paused nothing
// is started, whatever ends: the view's own tick is soon enough.
bool clConversion::RunningWorkers(clProcessHandle* running, int32_t& count) const {
    count = 0;
    bool watched = true;
    for (int64_t i = 0; i < slots.Count() && !pausePressed; ++i) {
        const clWorkerSlot& slot = slots[i];
        if (slot.running != 1 || slot.isDirectCopy) continue;
        clProcessHandle process = slot.worker != nullptr ? slot.worker->WaitHandle() : 0;
        if (process == 0) {
            watched = false;
        } else {
            running[count++] = process;
        }
    }
    return watched;
}

void clConversion::WaitForWork(uint32_t milliseconds) {
    if (milliseconds == 0 || TickDue()) return;
    clProcessHandle running[kSlotCount];
    int32_t count = 0;
    // A worker that can't be waited on is looked at every 5 ms.
    if (!RunningWorkers(running, count) && milliseconds > 5) milliseconds = 5;
    PlatformWaitWorkers(running, count, wake, milliseconds);
}

int32_t clConversion::WorkWaitables(intptr_t* waitables) {
    clProcessHandle running[kSlotCount];
    int32_t count = 0;
    if (!RunningWorkers(running, count)) return -1;
    int32_t used = 0;
    for (int32_t i = 0; i < count; ++i) {
        clWaitable waitable = PlatformWorkerWaitable(running[i]);
        if (waitable == clNoWaitable) return -1;
        waitables[used++] = waitable;
    }
    if (wake == clNoWake) return -1;
    waitables[used++] = PlatformWakeWaitable(wake);
    return used;
}

void clConversion::TakeWake() { PlatformWaitWorkers(nullptr, 0, wake, 0); }

void clConversion::Tick(bool display) {
    if (inTick) return;
    inTick = true;
    const bool paused = pausePressed;
    const int32_t stateNow = state;
    if (activeSlots < targetSlots) {
        if (activeSlots == 1) slots[0].hidden = false;
        while (activeSlots < targetSlots) slots[activeSlots++].hidden = false;
    }
    for (int64_t i = 0; i < slots.Count(); ++i) slots[i].Tick(paused, stateNow == kStateCancelling, priorityCode);
    if (state != kStateFinished && display) {
        const uint32_t now = services.tickCount();
        for (int64_t i = 0; i < slots.Count(); ++i) {
            clWorkerSlot& slot = slots[i];
            int32_t percent = slot.running == 1 ? slot.percent : slot.finished ? 100 : 0;
            UpdateRow(slot, percent, slot.RowText(now));
        }
    }
    if (paused) {
        if (state == kStateExamining && !examinePaused) {
            examineHold = true;
            examinePaused = true;
        }
    } else {
        switch (state) {
            case kStateExamining: ShowExamining(); break;
            case kStateConverting:
                UpdateProgress();
                DispatchJobs();
                break;
            case kStateFinalizing:
                if (finalizeDone.load(std::memory_order_acquire) || finalizeThread.HasEnded()) EndFinishing();
                break;
            case kStateCancelling: {
                statusText = u"Cancelling Conversion...";
                bool busy = false;
                for (int64_t i = 0; i < slots.Count(); ++i) busy = busy || slots[i].running != 0;
                if (!busy && finalizeThread.HasEnded()) CloseWindow();
                break;
            }
            default: break;
        }
    }
    inTick = false;
}

void clConversion::UpdateRow(clWorkerSlot& slot, int32_t percent, const clString& text) {
    if (percent != slot.displayPercent) slot.displayPercent = percent;
    if (!text.Equals(slot.displayText) && !text.Equals(kKeepRowText)) slot.displayText = text;
}

void clConversion::ShowExamining() {
    const int64_t count = input.sources.count;
    while (examinedCount < count && std::atomic_ref<uint32_t>(input.Source(examinedCount).level).load() != 0) {
        ++examinedCount;
    }
    statusText = ExaminingText(examinedCount, count);
    if (examinedCount >= count) BuildJobs();
}

void clConversion::BuildJobs() {
    MakeJobs(input, settings, multiItems, jobs, encoderBatches, services.tickCount);
    clOverwriteItems renamed;
    if (!ExamineJobs(input, jobs, services.askOverwrite, &renamed)) {
        state = kStateFinished;
        CloseWindow();
        return;
    }
    if (renamed.Count() > 0 && services.tellRenamed) services.tellRenamed(renamed);
    RemoveSkippedJobs(jobs);
    fileCount = static_cast<int32_t>(jobs.Count());
    totalBytes = 0;
    for (int64_t j = 0; j < jobs.Count(); ++j)
        totalBytes += static_cast<int64_t>(input.Source(jobs[j].sourceIndex).fileSize);
    statusText.Clear();
    PlatformRaiseThreadPriority();
    startTick = services.tickCount();
    state = kStateConverting;
}

int64_t clConversion::ProgressBytes() const {
    int64_t done = bytesDone;
    for (int64_t i = 0; i < slots.Count(); ++i) {
        const clWorkerSlot& slot = slots[i];
        if (slot.running != 1) continue;
        int64_t part = slot.percent + 1 > 100 ? 100 : slot.percent + 1;
        done += slot.sourceBytes * part / 100;
    }
    return done;
}

void clConversion::UpdateProgress() {
    headline = u"Converting File ";
    headline.Append(Count(fileNumber));
    headline.Append(u" of ");
    headline.Append(Count(fileCount));
    headline.Append(u" to ");
    headline.Append(settings.encoderName);
    clString status;
    if (fileCount < 2) {
        status = slots[0].displayText;
    } else {
        status = clString::Formatted(u"Encoding using %d Core%s", activeSlots, activeSlots > 1 ? u"s" : u"");
    }
    if (!status.IsEmpty()) statusText = status;
    HarvestSlots();
    const int64_t doneBytes = ProgressBytes();
    int32_t now = ProgressHundredths(doneBytes, totalBytes);
    if (now > progress) progress = now;
    // The window's text, and the title strip's form of it (the number in
    // two places).
    windowTitle = clString::Formatted(u"[%d%%] Quillotone Converting", progress / 100);
    progressTitle = clString::Formatted(u"[%2d%%] Quillotone Converting", progress / 100);
    const uint32_t tick = services.tickCount();
    int64_t elapsed = ElapsedMs(tick, startTick, pausePressed, pauseStart);
    elapsedText = TimeText(elapsed / 1000, true);
    if (!elapsedText.IsEmpty()) elapsedText.Append(u" Elapsed");
    if (elapsed <= 4000) return;
    int64_t remaining = RemainingMs(elapsed, doneBytes, totalBytes);
    if (remaining >= 0) {
        remainingText = TimeText(remaining / 1000, false);
        if (!remainingText.IsEmpty()) remainingText.Append(u" Remaining");
    }
    int64_t audio = audioDoneMs;
    for (int64_t i = 0; i < slots.Count(); ++i) {
        const clWorkerSlot& slot = slots[i];
        if (slot.running != 1 || slot.isDirectCopy) continue;
        int64_t part = slot.percent + 1 > 100 ? 100 : slot.percent + 1;
        audio += slot.lengthMs * part / 100;
    }
    speedText = SpeedText(audio, elapsed);
}

void clConversion::DispatchJobs() {
    HarvestSlots();
    while (nextJob < jobs.Count() && jobs[nextJob].skip == 1) ++nextJob;
    for (int32_t i = 0; nextJob < jobs.Count() && i < kSlotCount && i < targetSlots && i < activeSlots; ++i) {
        clWorkerSlot& slot = slots[i];
        if (slot.running != 0) continue;
        const clConversionJob& job = jobs[nextJob];
        const clSourceFile& source = input.Source(job.sourceIndex);
        qv_stream_facts facts{};
        std::memcpy(&facts, source.facts, sizeof facts);
        clJobStart start;
        start.lengthMs = static_cast<int64_t>(facts.lengthMs);
        start.sourceBytes = static_cast<int64_t>(source.fileSize);
        start.sourcePath = source.path;
        start.outputPath = job.outputPath;
        start.directCopy = job.directCopy != 0;
        start.encoderName = job.encoderName;
        start.encoderOptions = job.encoderOptions;
        start.dspEffects = job.dspEffects;
        start.batchId = encoderBatches[job.encoderIndex].batchId;
        slot.StartJob(start);
        ++nextJob;
    }
    // While files wait, each busy slot has its next worker started and
    // waiting, so that a freed core begins its next file at once.
    const bool more = nextJob < jobs.Count();
    for (int32_t i = 0; i < kSlotCount && i < slots.Count(); ++i) {
        clWorkerSlot& slot = slots[i];
        if (more && i < targetSlots && i < activeSlots) {
            if (slot.running == 1 && !slot.isDirectCopy) slot.PrepareStandby();
        } else {
            slot.DropStandby();
        }
    }
    if (more) return;
    for (int64_t i = 0; i < slots.Count(); ++i) {
        if (slots[i].running != 0) return;
    }
    HarvestSlots();
    BeginFinishing();
}

void clConversion::HarvestSlots() {
    for (int64_t i = 0; i < slots.Count(); ++i) {
        clWorkerSlot& slot = slots[i];
        if (slot.running != 0) continue;
        int64_t ended = slot.endedLength;
        slot.endedLength = -1;
        if (ended != -1) {
            audioDoneMs += slot.isDirectCopy ? 0 : ended;
            bytesDone += slot.sourceBytes;
            ++fileNumber;
        }
        if (!slot.errorText.IsEmpty()) {
            slot.errorCopy = slot.errorText;
            slot.errorSource = slot.sourcePath;
            slot.errorOutput = slot.outputPath;
            slot.errorText.Clear();
            AddLogEntry(errors, settings.encoderName, slot, slot.errorCopy);
            for (int64_t j = 0; j < jobs.Count(); ++j) {
                if (jobs[j].outputPath.Equals(slot.outputPath)) jobs[j].hadErrors = 1;
            }
        }
        if (!slot.infoText.IsEmpty()) {
            slot.infoCopy = slot.infoText;
            slot.infoSource = slot.sourcePath;
            slot.infoOutput = slot.outputPath;
            slot.infoText.Clear();
            AddLogEntry(infos, settings.encoderName, slot, slot.infoCopy);
        }
    }
}

void clConversion::GatherBatchFiles(int32_t encoderIndex, clBatchFiles& files) const {
    for (int64_t j = 0; j < jobs.Count(); ++j) {
        const clConversionJob& job = jobs[j];
        if (job.encoderIndex != encoderIndex) continue;
        auto* file = new clBatchFile;
        file->sourcePath = input.Source(job.sourceIndex).path;
        file->outputPath = job.outputPath;
        file->hadErrors = job.hadErrors;
        files.Add(file);
    }
}

void FinalizeBatches(clConversion& conversion) {
    for (int64_t b = 0; b < conversion.encoderBatches.Count(); ++b) {
        clBatchFiles files;
        conversion.GatherBatchFiles(static_cast<int32_t>(b), files);
        if (files.Count() > 0) RunBatchEnd(conversion.encoderBatches[b], files);
    }
}

void clConversion::BeginFinishing() {
    headline = u"Converted ";
    headline.Append(Count(fileCount));
    headline.Append(FilesTo(fileCount));
    headline.Append(settings.encoderName);
    progress = 10000;
    statusText = u"Finalizing DSP Effects...";
    finalizeDone = false;
    clThreadRunFunction(finalizeThread, [this](XEvent&) {
        FinalizeBatches(*this);
        finalizeDone.store(true, std::memory_order_release);
        PlatformRaiseWake(wake);
    });
    state = kStateFinalizing;
}

void clConversion::EndFinishing() {
    state = kStateFinished;
    windowTitle = u"[Finished] ";
    windowTitle.Append(kProgramTitle);
    elapsedText.Clear();
    remainingText.Clear();
    uint32_t total = services.tickCount() - startTick;
    statusText = u"Completed in ";
    statusText.Append(TimeText(total / 1000, true));
    for (int64_t i = 0; i < slots.Count(); ++i) {
        clWorkerSlot& slot = slots[i];
        slot.action.Clear();
        slot.actionInput.Clear();
        slot.actionOutput.Clear();
        slot.displayPercent = 100;
        slot.displayText.Clear();
    }
    speedText = SpeedText(audioDoneMs, total);
    cancelButtonText = u"Finish";
    pausePressed = false;
    pauseEnabled = false;
    if (skipFinish != 0 || errors.Count() > 0 || afterAction != kAfterNothing) CloseWindow();
}

void clConversion::CloseWindow() {
    if (services.closing) services.closing();
    if (afterAction != kAfterNothing) {
        // The action goes first; the logs show only if the system still
        // lets this program do so. A refused action is passed over.
        PlatformKeepAwake(false);
        if (services.performAfterAction) services.performAfterAction(afterAction);
    }
    if (GetSettingNumber(kDisplayInfoSetting.name) == 0) infos.Clear();
    if (GetSettingNumber(kNoDisplayErrorSetting.name) != 0) errors.Clear();
    if ((errors.Count() > 0 || infos.Count() > 0) && services.showLogs) services.showLogs(errors, infos);
    closed = true;
}

void clConversion::SetPause(bool pressed) {
    if (pressed == pausePressed || !pauseEnabled) return;
    const uint32_t now = services.tickCount();
    if (pressed) {
        pauseStart = now;
    } else {
        if (state == kStateConverting) startTick += now - pauseStart;
        if (state == kStateExamining && examinePaused) {
            examineHold = false;
            examinePaused = false;
        }
    }
    pausePressed = pressed;
}

void clConversion::RequestCancel() {
    if (state == kStateFinished) {
        CloseWindow();
        return;
    }
    if (state == kStateCancelling) return;
    if (services.askCancel && !services.askCancel()) return;
    state = kStateCancelling;
    // Suspended workers must run to see the cancel event.
    if (pausePressed) SetPause(false);
    if (examinePaused) {
        examineHold = false;
        examinePaused = false;
    }
}

void clConversion::SetTargetSlots(int32_t count) {
    if (count < 1 || count > processorCount) return;
    targetSlots = count;
}

void clConversion::SetPriority(int32_t code) {
    if (code < 0 || code > 3) return;
    priorityCode = code;
    SetSettingNumber(static_cast<uint32_t>(code), kPrioritySetting.name);
}

void clConversion::SetSkipFinish(bool skip) {
    skipFinish = skip ? 1 : 0;
    SetSettingNumber(static_cast<uint32_t>(skipFinish), kSkipFinishSetting.name);
}
