#include "engine/workerslot.h"

#include "engine/directcopy.h"
#include "engine/outputdiagnosis.h"
#include "engine/workerlauncher.h"
#include "foundation/commandoptions.h"
#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/optionvalue.h"
#include "foundation/pathtext.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "plugins/effectstring.h"

namespace {

void AppendOption(clString& text, const char16_t* option, const clString& value) {
    text.AppendGrowing(option);
    text.AppendGrowing(EscapeOptionValue(value));
    text.AppendGrowing(u"\"");
}

}  // namespace

const char16_t* WorkerPriorityOption(int32_t code) {
    switch (code) {
        case 1: return u"high";
        case 2: return u"low";
        case 3: return u"idle";
        default: return u"";
    }
}

const char16_t* const kEndedEarlyLine =
    u"Error: ConvertWorker ended before finishing the output, possible ConvertWorker crash";

clWorkerSlot::~clWorkerSlot() {
    copyThread.Close();
    DropStandby();
    worker.reset();
    if (!commandFile.IsEmpty()) DeleteFileEx(commandFile);
}

clString clWorkerSlot::WorkerOptions(int32_t batchId, const clString& tempFolder) const {
    clString text;
    AppendOption(text, u" -infile=\"", sourcePath);
    AppendOption(text, u" -outfile=\"", outputPath);
    AppendOption(text, u" -convert_to=\"", encoderName);
    AppendOption(text, u" -evtquit=\"", cancelEvent.name);
    AppendOption(text, u" -evtwatchdog=\"", watchdogEvent.name);
    AppendOption(text, u" -batchid=\"", clString(batchId));
    if (processor != 0) AppendOption(text, u" -processor=\"", clString(processor));
    if (!tempFolder.IsEmpty()) AppendOption(text, u" -tmpfolder=\"", tempFolder);
    if (priority >= 1 && priority <= 3) AppendOption(text, u" -priority=\"", clString(WorkerPriorityOption(priority)));
    // The effects as the worker reads them: each "Name=settings" escaped
    // like every other value, its quotes no longer standing in as {qt}.
    clCommandOptions effectOptions;
    effectOptions.Parse(dspEffects);
    clEffectList effects;
    ParseEffectString(effectOptions, effects);
    for (int64_t i = 0; i < effects.Count(); ++i) {
        clString effect(effects[i].name);
        effect.Append(u"=");
        effect.Append(effects[i].settings);
        clString option = clString::Formatted(u" -dspeffect%d=\"", static_cast<int>(i + 1));
        AppendOption(text, option.text, effect);
    }
    // The encoder's options come last, even when empty: the text then ends
    // in a blank.
    text.AppendGrowing(u" ");
    text.AppendGrowing(encoderOptions);
    return text;
}

// Two slots (or two programs) starting in the same millisecond would meet
// on one name; "already exists" moves on to the next number.
bool clWorkerSlot::MakeEvent(XEvent& event, const char16_t* prefix) {
    for (uint32_t n = 0; n < 100000; ++n) {
        auto number = static_cast<int64_t>(static_cast<int32_t>(env.tickCount() + n));
        clString name(prefix);
        name.Append(clString(number));
        event.Close();
        if (!event.Create(name.text)) continue;
        if (!event.existed) return true;
    }
    event.Close();
    return false;
}

// Into `commandFile`, made new unless a standby worker's file waits there.
void clWorkerSlot::WriteCommandFile(const clString& options) {
    bool written = !commandFile.IsEmpty() || MakeTempFile(commandFile, "QvT");
    if (written) {
        clFile file;
        file.fileName = commandFile;
        file.Open(clAccessWrite, clCreateAlways, false, false);
        written = file.handle != clInvalidHandle;
        uint32_t bytes = static_cast<uint32_t>(options.Length()) * 2;
        if (written && bytes > 0) written = file.Write(options.text, bytes);
    }
    if (!written) {
        AddError(clString::Formatted(u"Error creating qvcmd temporary file '%s'", commandFile.text));
    }
}

clString clWorkerSlot::WorkerCommandLine(const clString& file) const {
    clString commandLine(env.workerProgram);
    QuoteText(commandLine);
    commandLine.Append(u" -qvcmd=\"");
    commandLine.Append(file);
    commandLine.Append(u"\"");
    return commandLine;
}

void clWorkerSlot::PrepareStandby() {
    if (standby != nullptr || env.launcher == nullptr) return;
    standbyCommandFile.Clear();
    if (!MakeTempFile(standbyCommandFile, "QvT")) {
        standbyCommandFile.Clear();
        return;
    }
    clString commandLine = WorkerCommandLine(standbyCommandFile);
    commandLine.Append(u" -standby");
    standby = env.launcher->StartStandby(commandLine);
    if (standby == nullptr) DropStandby();
}

void clWorkerSlot::DropStandby() {
    standby.reset();
    if (!standbyCommandFile.IsEmpty()) DeleteFileEx(standbyCommandFile);
    standbyCommandFile.Clear();
}

void clWorkerSlot::StartJob(const clJobStart& job) {
    encoderName = job.encoderName;
    encoderOptions = job.encoderOptions;
    dspEffects = job.dspEffects;
    displayPercent = -1;
    displayText.Clear();
    copyThread.Close();
    Reset(job.lengthMs);
    sourceBytes = job.sourceBytes;
    sourcePath = job.sourcePath;
    outputPath = job.outputPath;
    isDirectCopy = job.directCopy;
    textTick = 0;
    paused = false;
    cancelSent = false;
    copyPercent = 0;
    copyErrors.Clear();
    copyDone = false;

    if (isDirectCopy) {
        action = clString::Formatted(u"Copying '%s'", GetFileName(outputPath).text);
        running = 1;
        copyThread.Start(
            [](XEvent& stop, void* argument) {
                auto& slot = *static_cast<clWorkerSlot*>(argument);
                RunDirectCopy(stop, slot);
                slot.copyDone.store(true, std::memory_order_release);
                PlatformRaiseWake(slot.env.wake);
            },
            this, 0);
        return;
    }

    // A slot keeps its two events from job to job: making and removing a
    // named object is file-system work that, beside busy encoders, could
    // hold the next start up for milliseconds. The ended worker set them
    // last; they start each job lowered.
    for (auto [event, prefix] : {std::pair{&cancelEvent, u"qvevt-cancel-"}, std::pair{&watchdogEvent, u"qvevt-watch-"}}) {
        if (event->handle != 0) {
            event->Reset();
        } else {
            MakeEvent(*event, prefix);
        }
    }
    // The last job's command file goes only once this job's worker runs:
    // removing a file still being written back to disk can take the file
    // system milliseconds beside busy encoders, and a core would wait.
    clString previousCommandFile = commandFile;
    commandFile.Clear();
    const bool fromStandby = standby != nullptr;
    if (fromStandby) {
        commandFile = standbyCommandFile;
        standbyCommandFile.Clear();
    }
    WriteCommandFile(WorkerOptions(job.batchId, GetSettingText(kTempFileLocationSetting.name)));
    if (fromStandby && standby->Release()) {
        worker = std::move(standby);
    } else {
        // No standby, or one that died waiting: the usual start, on the
        // same command file.
        standby.reset();
        clString failure;
        worker = env.launcher->Start(WorkerCommandLine(commandFile), failure);
        if (worker == nullptr) AddError(failure);
    }
    if (!previousCommandFile.IsEmpty()) DeleteFileEx(previousCommandFile);
    if (worker == nullptr) return;
    lastHeartbeat = env.tickCount();
    running = 1;
}

void clWorkerSlot::DrainPipes(bool final) {
    if (worker == nullptr || running != 1) return;
    TakeErrors(worker->Read(true));
    TakeOutput(worker->Read(false));
    if (!final && worker->HasEnded()) EndJob();
}

bool clWorkerSlot::JobEnded() const {
    if (running != 1) return false;
    if (isDirectCopy) return copyDone.load(std::memory_order_acquire) || copyThread.HasEnded();
    return worker != nullptr && worker->HasEnded();
}

void clWorkerSlot::EndJob() {
    if (worker != nullptr) {
        DrainPipes(true);
        const bool workerEnded = worker->HasEnded();
        worker.reset();
        // A worker removes its temporary output itself, by renaming it into
        // place or on failure; one still there was left by a worker that
        // died mid-file (killed, say), which no crash handler can report.
        if (!tempFile.IsEmpty() && PathExists(tempFile)) {
            DeleteFileEx(tempFile);
            if (workerEnded) AddError(clString(kEndedEarlyLine));
        }
        // Deliberately stricter than "no error line is success": a worker
        // killed before it made its temporary file, or one that simply
        // exits, says nothing, and its job would count as converted with
        // no output at all. A job asked to stop may end so, as cancelled.
        if (workerEnded && errorText.IsEmpty() && !outputReady && !cancelSent) AddError(clString(kEndedEarlyLine));
    }
    if (isDirectCopy) {
        percent = copyPercent;
        if (!copyErrors.IsEmpty()) AddError(copyErrors);
    }
    running = 0;
    action.Clear();
    endedLength = lengthMs;
    finished = true;
    if (!errorText.IsEmpty()) {
        clString reason = DiagnoseOutput(outputPath);
        if (!reason.IsEmpty()) AddError(reason);
    }
}

void clWorkerSlot::Tick(bool pausePressed, bool cancelRequested, int32_t wantedPriority) {
    if (cancelRequested) DropStandby();
    if (!isDirectCopy) {
        DrainPipes(false);
        if (priority != wantedPriority) {
            priority = wantedPriority;
            if (worker != nullptr) {
                if (running != 1) return;
                worker->SetPriority(priority);
            }
        }
    } else if (running == 1) {
        percent = copyPercent;
        if (JobEnded()) EndJob();
    }
    if (running != 1) return;

    if (pausePressed) {
        lastHeartbeat = env.tickCount();
        if (!paused) {
            paused = true;
            if (worker != nullptr) worker->Suspend();
        }
    } else if (paused) {
        paused = false;
        if (worker != nullptr) worker->Resume();
    }
    if (cancelRequested && cancelEvent.handle != 0) {
        cancelEvent.Set();
        if (!cancelSent) cancelSentAt = env.tickCount();
        cancelSent = true;
        // A worker stuck in a plug-in call beats on but never stops.
        if (worker != nullptr && env.tickCount() - cancelSentAt > kCancelGraceMs) {
            worker->Terminate();
            AddError(clString(u"Error: ConvertWorker did not stop when asked and was ended"));
            EndJob();
            return;
        }
    }
    if (isDirectCopy) return;
    if (watchdogEvent.handle != 0 && watchdogEvent.IsSet()) {
        lastHeartbeat = env.tickCount();
        watchdogEvent.Reset();
    }
    if (WatchdogTripped(env.tickCount(), lastHeartbeat)) {
        AddError(clString(u"Error: Watchdog timeout, possible ConvertWorker crash"));
        // Deliberately unlike leaving it to run on unsupervised: a hung
        // worker would outlive its run, holding its files and a core.
        if (worker != nullptr) worker->Terminate();
        EndJob();
    }
}
