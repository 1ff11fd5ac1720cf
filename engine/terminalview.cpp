#include "engine/terminalview.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <mutex>
#include <thread>

#include "engine/conversioninput.h"
#include "engine/logreport.h"
#include "foundation/platform/console.h"
#include "foundation/platform/processinfo.h"
#include "foundation/platform/thread.h"
#include "foundation/utf.h"

namespace {

// Plain output repeats the progress at most this often.
constexpr uint32_t kPlainProgressMs = 5000;

std::string Utf8(const clString& text) { return StringToUtf8(text); }

// The status line; a run that took less than a second has no time to give,
// and the terminal says so rather than leave "Completed in" hanging (the
// window keeps its own text).
std::string StatusShown(const clConversion& c) {
    std::string status = Utf8(c.statusText);
    if (c.state == kStateFinished && status == "Completed in ") return "Completed in less than a second";
    return status;
}

// Cuts a line to `columns` characters (code points; the texts shown have
// no wide characters that matter for a progress line).
std::string Fit(const std::string& line, int32_t columns) {
    int32_t count = 0;
    for (size_t i = 0; i < line.size(); ++i) {
        if ((static_cast<unsigned char>(line[i]) & 0xC0) == 0x80) continue;
        if (count == columns) return line.substr(0, i);
        ++count;
    }
    return line;
}

std::string Percent(int32_t hundredths) {
    char text[16];
    std::snprintf(text, sizeof text, "%3d.%02d%%", hundredths / 100, hundredths % 100);
    return text;
}

std::string TimesLine(const clConversion& c) {
    std::string line;
    for (const clString* text : {&c.elapsedText, &c.remainingText, &c.speedText}) {
        if (text->IsEmpty()) continue;
        line += line.empty() ? "  " : "   ";
        line += Utf8(*text);
    }
    return line;
}

std::string WithUnixLineEnds(const clString& text) {
    std::string bytes = Utf8(text);
    std::string out;
    for (char c : bytes) {
        if (c != '\r') out.push_back(c);
    }
    return out;
}

// Standard input read on a thread of its own, so that a question can wait
// for an answer while the conversion goes on. The thread blocks in a read
// that nothing can interrupt, so it is left to end with the process.
class InputLines {
public:
    bool Next(std::string& line, bool wait) {
        std::unique_lock<std::mutex> lock(mutex);
        if (!started) {
            started = true;
            std::thread([this] { Read(); }).detach();
        }
        // A request to end must not wait for a line that never comes.
        while (wait && lines.empty() && !ended && PlatformTerminationSignal() == 0) {
            changed.wait_for(lock, std::chrono::milliseconds(50));
        }
        if (lines.empty()) return false;
        line = lines.front();
        lines.pop_front();
        return true;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::string> lines;
    bool started = false;
    bool ended = false;

    void Read() {
        std::string line;
        while (PlatformReadInputLine(line)) {
            std::lock_guard<std::mutex> lock(mutex);
            lines.push_back(line);
            changed.notify_all();
        }
        std::lock_guard<std::mutex> lock(mutex);
        ended = true;
        changed.notify_all();
    }
};

}  // namespace

clTerminalIo clTerminalIo::Process() {
    PlatformPrepareTerminal();
    PlatformCatchInterrupts();
    clTerminalIo io;
    io.outputIsTerminal = PlatformIsTerminal(1);
    io.inputIsTerminal = PlatformIsTerminal(0);
    io.width = PlatformTerminalWidth();
    io.write = PlatformWriteOutput;
    io.writeError = PlatformWriteError;
    // Shared by every view of the process, and never freed: the reading
    // thread may outlive them all.
    static InputLines* input = new InputLines;
    io.readLine = [](std::string& line, bool blocking) { return input->Next(line, blocking); };
    io.interruptCount = PlatformInterruptCount;
    io.terminationSignal = PlatformTerminationSignal;
    io.wait = [](clConversion& conversion, uint32_t milliseconds) { conversion.WaitForWork(milliseconds); };
    return io;
}

std::string ProgressBar(int32_t hundredths, int32_t cells) {
    if (hundredths < 0) hundredths = 0;
    if (hundredths > 10000) hundredths = 10000;
    auto filled = static_cast<int32_t>(int64_t{hundredths} * cells / 10000);
    return "[" + std::string(static_cast<size_t>(filled), '#') + std::string(static_cast<size_t>(cells - filled), '-') +
           "]";
}

std::vector<std::string> RenderConversion(const clConversion& c, int32_t width) {
    if (width < 20) width = 20;
    int32_t cells = width / 4;
    if (cells > 40) cells = 40;
    std::vector<std::string> lines;
    lines.push_back(Utf8(c.headline));
    int32_t row = 0;
    for (int64_t i = 0; i < c.slots.Count(); ++i) {
        const clWorkerSlot& slot = c.slots[i];
        if (slot.hidden) continue;
        char label[32];
        std::snprintf(label, sizeof label, "  Encoder %-3d ", ++row);
        // A row that has shown nothing yet holds -1: an empty bar, no number.
        int32_t shown = slot.displayPercent;
        char percent[24] = "       ";
        if (shown >= 0) std::snprintf(percent, sizeof percent, " %3d%%  ", shown);
        lines.push_back(label + ProgressBar(shown * 100, cells) + percent + Utf8(slot.displayText));
    }
    lines.push_back("  Overall     " + ProgressBar(c.progress, cells) + " " + Percent(c.progress) + "  " +
                    StatusShown(c));
    std::string times = TimesLine(c);
    if (!times.empty()) lines.push_back(times);
    for (std::string& line : lines) line = Fit(line, width - 1);
    return lines;
}

clTerminalView::clTerminalView(const clTerminalIo& terminalIo, clOverwriteMode mode)
    : io(terminalIo), overwriteMode(mode) {}

void clTerminalView::Say(const std::string& text) { io.write(text); }

void clTerminalView::LeaveBlock() { drawn.clear(); }

void clTerminalView::Draw(const clConversion& conversion, bool force) {
    if (verbosity == kVerbosityQuiet) return;
    if (!io.outputIsTerminal) {
        DrawPlain(conversion, force);
        return;
    }
    // Ten redraws a second at most, however often the conversion ticks.
    if (cancelAsked) return;
    const uint32_t now = tickCount ? tickCount() : 0;
    if (!force && everDrawn && now - lastDraw < 100) return;
    everDrawn = true;
    lastDraw = now;
    std::vector<std::string> lines = RenderConversion(conversion, io.width);
    if (lines == drawn) return;
    std::string text;
    // Back to the first line of the block, then each line anew, then
    // whatever an older, longer block left below.
    if (!drawn.empty()) text += "\x1b[" + std::to_string(drawn.size()) + "F";
    for (const std::string& line : lines) text += "\x1b[2K" + line + "\n";
    text += "\x1b[J";
    Say(text);
    drawn = lines;
}

void clTerminalView::DrawPlain(const clConversion& conversion, bool force) {
    std::string text;
    std::string headline = Utf8(conversion.headline);
    if (headline != lastHeadline) text += headline + "\n";
    lastHeadline = headline;
    std::string status = StatusShown(conversion);
    if (status != lastStatus && !status.empty()) text += "  " + status + "\n";
    lastStatus = status;
    uint32_t now = tickCount ? tickCount() : 0;
    std::string progress = Percent(conversion.progress) + TimesLine(conversion);
    if (conversion.state == kStateConverting && progress != lastProgress &&
        (force || now - lastProgressTick >= kPlainProgressMs)) {
        text += "  " + progress + "\n";
        lastProgress = progress;
        lastProgressTick = now;
    }
    if (!text.empty()) Say(text);
}

void clTerminalView::OnInterrupt(clConversion& conversion) {
    if (conversion.state != kStateExamining && conversion.state != kStateConverting) return;
    if (!io.inputIsTerminal || cancelAsked) {
        if (cancelAsked) Say("\n");
        cancelAsked = false;
        cancelled = true;
        conversion.RequestCancel();
        return;
    }
    LeaveBlock();
    Say("Cancel Conversion? [y/N] ");
    cancelAsked = true;
}

void clTerminalView::ReadCancelAnswer(clConversion& conversion) {
    std::string answer;
    if (!cancelAsked || !io.readLine(answer, false)) return;
    cancelAsked = false;
    if (answer.empty() || (answer[0] != 'y' && answer[0] != 'Y')) return;
    if (conversion.state != kStateExamining && conversion.state != kStateConverting) return;
    cancelled = true;
    conversion.RequestCancel();
}

bool clTerminalView::Terminated(clConversion* conversion) {
    int signal = io.terminationSignal ? io.terminationSignal() : 0;
    if (signal == 0) return false;
    if (terminatedBy == 0) {
        terminatedBy = signal;
        cancelAsked = false;
        cancelled = true;
        if (conversion != nullptr) conversion->RequestCancel();
    }
    return true;
}

bool clTerminalView::AskOverwrite(clOverwriteItems& items) {
    // Only files on disk are a question. A job whose output is only another
    // job's output too gets a name of its own afterwards, whatever is
    // answered here (see TellRenamed).
    std::vector<clOverwriteItem*> existing;
    for (int64_t i = 0; i < items.Count(); ++i) {
        if (items[i].exists != 0) existing.push_back(&items[i]);
    }
    if (existing.empty() || overwriteMode == kOverwriteAlways) return true;
    LeaveBlock();
    auto skipAll = [&existing] {
        for (clOverwriteItem* item : existing) item->skip = 1;
    };
    if (overwriteMode == kOverwriteSkip || !io.inputIsTerminal) {
        skipAll();
        if (verbosity != kVerbosityQuiet) {
            Say("Skipping " + std::to_string(existing.size()) +
                (existing.size() == 1 ? " file that exists" : " files that exist") + " already.\n");
        }
        return true;
    }
    Say("These files exist already:\n");
    for (clOverwriteItem* item : existing) Say("  " + Utf8(item->newPath) + "\n");
    for (;;) {
        Say("Overwrite all [o], skip all [s], decide one by one [d], or cancel [c]? ");
        std::string answer;
        // The end of input gives no consent: skip.
        char choice = io.readLine(answer, true) ? (answer.empty() ? ' ' : answer[0]) : 's';
        if (Terminated(nullptr)) return false;
        switch (choice) {
            case 'o':
            case 'O': return true;
            case 's':
            case 'S': skipAll(); return true;
            case 'c':
            case 'C': cancelled = true; return false;
            case 'd':
            case 'D':
                for (clOverwriteItem* item : existing) {
                    Say("Overwrite " + Utf8(item->newPath) + "? [y/N] ");
                    bool yes = io.readLine(answer, true) && !answer.empty() && (answer[0] == 'y' || answer[0] == 'Y');
                    item->skip = yes ? 0 : 1;
                }
                return true;
            default: break;
        }
    }
}

void clTerminalView::TellRenamed(const clOverwriteItems& renamed) {
    if (verbosity == kVerbosityQuiet) return;
    LeaveBlock();
    for (int64_t i = 0; i < renamed.Count(); ++i) {
        Say("Another file of this run is written to " + Utf8(renamed[i].outputPath) + "; this one goes to " +
            Utf8(renamed[i].newPath) + "\n");
    }
}

// Errors go to standard error, the information to standard output (not
// when quiet, nor again when it was told as it came).
void clTerminalView::ShowLogs(const clLogEntries& errors, const clLogEntries& infos) {
    if (current != nullptr) Draw(*current, true);
    LeaveBlock();
    logsShown = true;
    const bool tellInfos = infos.Count() > 0 && verbosity == kVerbosityNormal;
    if (errors.Count() > 0) {
        std::string text = "\n" + Utf8(LogReportTitle(true, false)) + "\n\n" +
                           WithUnixLineEnds(LogReportText(errors, true)) + "\n";
        (io.writeError ? io.writeError : io.write)(text);
    }
    if (tellInfos) {
        Say("\n" + Utf8(LogReportTitle(false, true)) + "\n\n" + WithUnixLineEnds(LogReportText(infos, false)) + "\n");
    }
}

// Verbose: each file's information lines as soon as the file has ended.
void clTerminalView::TellNewInfos(const clConversion& conversion) {
    for (; infosTold < conversion.infos.Count(); ++infosTold) {
        const clLogEntry& entry = conversion.infos[infosTold];
        if (entry.lines.Count() == 0) continue;
        std::string text = Utf8(LogFileItemText(entry, false)) + "\n";
        for (int64_t k = 0; k < entry.lines.Count(); ++k) text += "   " + Utf8(entry.lines[k]) + "\n";
        LeaveBlock();
        Say(text);
    }
}

int clTerminalView::Run(clConversionInput& input, clConversionServices services) {
    tickCount = services.tickCount;
    // The view asked already when it passes a cancel on.
    services.askCancel = [] { return true; };
    services.askOverwrite = [this](clOverwriteItems& items) { return AskOverwrite(items); };
    services.tellRenamed = [this](const clOverwriteItems& renamed) { TellRenamed(renamed); };
    services.showLogs = [this](const clLogEntries& errors, const clLogEntries& infos) { ShowLogs(errors, infos); };
    clConversion conversion(input, services);
    current = &conversion;
    conversion.Open();
    uint32_t interrupts = io.interruptCount();
    uint32_t lastDisplayTick = tickCount() - 50;
    while (!conversion.closed) {
        // A tick every 50 ms, or the moment work waits for it: a freed core
        // gets its next file at once, and the run ends when its work does.
        // Only a tick that closes 50 ms turns the rows' texts. A Ctrl-C
        // ends the wait too (on POSIX it interrupts it), and is answered
        // by this tick.
        for (;;) {
            const uint32_t since = tickCount() - lastDisplayTick;
            if (since >= 50 || conversion.TickDue() || io.interruptCount() != interrupts) break;
            if (io.terminationSignal && io.terminationSignal() != 0) break;
            io.wait(conversion, 50 - since);
        }
        const bool displayTick = tickCount() - lastDisplayTick >= 50;
        if (displayTick) lastDisplayTick = tickCount();
        uint32_t count = io.interruptCount();
        if (Terminated(&conversion)) {
            interrupts = count;
        } else if (count != interrupts) {
            interrupts = count;
            OnInterrupt(conversion);
        }
        ReadCancelAnswer(conversion);
        conversion.Tick(displayTick);
        if (verbosity == kVerbosityVerbose) TellNewInfos(conversion);
        if (conversion.state == kStateFinished && !conversion.closed) {
            // Nobody is there to press "Finish": the last picture stays.
            Draw(conversion, true);
            conversion.RequestCancel();
        } else {
            Draw(conversion, false);
        }
    }
    if (!logsShown) Draw(conversion, true);
    current = nullptr;
    if (terminatedBy != 0) return 128 + terminatedBy;
    if (cancelled) return kExitCancelled;
    for (int64_t j = 0; j < conversion.jobs.Count(); ++j) {
        if (conversion.jobs[j].hadErrors != 0) return kExitSomeFailed;
    }
    return kExitConverted;
}
