// clTerminalView: the conversion shown on a terminal, for machines without
// a display and for scripts. It presents the same clConversion a window
// would: the headline, a row per visible slot, the overall bar, elapsed,
// remaining and speed.
//
// On a terminal the block is redrawn in place, at most ten times a second;
// otherwise the changes are appended as plain lines, for logs. Ctrl-C asks
// "Cancel Conversion?" (a second Ctrl-C cancels without asking); the
// overwrite question lists the conflicts and asks once or file by file.
// Without a terminal to ask, a Ctrl-C cancels and existing files are
// skipped, so nothing is overwritten without consent. A request to end
// (SIGTERM, SIGHUP) cancels at once, without a question, and the run ends
// with 128 + the signal's number.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "engine/conversion.h"

class clConversionInput;

// How existing outputs are treated: asked, skipped or overwritten.
enum clOverwriteMode : int32_t {
    kOverwriteAsk = 0,
    kOverwriteSkip = 1,
    kOverwriteAlways = 2,
};

// The terminal as the view uses it; tests give a scripted one.
struct clTerminalIo {
    bool outputIsTerminal = false;
    bool inputIsTerminal = false;
    int32_t width = 80;
    std::function<void(const std::string& utf8)> write;
    // Standard error: the errors of a run, and nothing else.
    std::function<void(const std::string& utf8)> writeError;
    // A line the user typed. When `blocking`, it waits until one comes;
    // otherwise it answers false at once when none is waiting. False also
    // at the end of input.
    std::function<bool(std::string& line, bool blocking)> readLine;
    std::function<uint32_t()> interruptCount;
    // The signal of a request to end (15 or 1), 0 while none came.
    std::function<int()> terminationSignal;
    // The pause between two ticks, at most `milliseconds`: the process's own
    // waits on the conversion's work (clConversion::WaitForWork); a test's
    // moves its clock.
    std::function<void(clConversion& conversion, uint32_t milliseconds)> wait;

    // The process's own terminal: standard output and input, Ctrl-C
    // counted by the platform, input read on a thread of its own.
    static clTerminalIo Process();
};

// Exit codes of a conversion run from the terminal.
constexpr int kExitConverted = 0;
constexpr int kExitSomeFailed = 1;
constexpr int kExitCancelled = 130;

// The block as the terminal shows it, one UTF-8 text per line, none longer
// than `width` - 1 columns.
std::vector<std::string> RenderConversion(const clConversion& conversion, int32_t width);

// A bar of `cells` cells, `hundredths` of a percent of it filled.
std::string ProgressBar(int32_t hundredths, int32_t cells);

// How much the terminal says: only the errors, the usual, or also each
// file's information lines as the file ends.
enum clVerbosity : int32_t { kVerbosityQuiet = -1, kVerbosityNormal = 0, kVerbosityVerbose = 1 };

class clTerminalView {
public:
    clTerminalView(const clTerminalIo& terminalIo, clOverwriteMode overwriteMode);

    clVerbosity verbosity = kVerbosityNormal;

    // Runs the whole conversion with `services` (their questions and log
    // showing are this view's) and answers the exit code.
    int Run(clConversionInput& input, clConversionServices services);

    // The overwrite question, about the items whose file exists; false to
    // cancel the run.
    bool AskOverwrite(clOverwriteItems& items);
    // One line for each job that got a name of its own.
    void TellRenamed(const clOverwriteItems& renamed);

private:
    clTerminalIo io;
    clOverwriteMode overwriteMode;
    const clConversion* current = nullptr;
    std::vector<std::string> drawn;                      // the block now on screen
    std::string lastHeadline, lastStatus, lastProgress;  // as last appended
    uint32_t lastProgressTick = 0;
    std::function<uint32_t()> tickCount;
    bool cancelAsked = false;  // the question is on screen
    bool cancelled = false;
    int terminatedBy = 0;  // the signal that ended the run
    bool logsShown = false;
    bool everDrawn = false;
    uint32_t lastDraw = 0;  // tick count of the last redraw
    int64_t infosTold = 0;  // information entries printed as they came

    void Draw(const clConversion& conversion, bool force);
    void DrawPlain(const clConversion& conversion, bool force);
    void LeaveBlock();
    void OnInterrupt(clConversion& conversion);
    // True when a request to end came; the run is then cancelled.
    bool Terminated(clConversion* conversion);
    void ReadCancelAnswer(clConversion& conversion);
    void ShowLogs(const clLogEntries& errors, const clLogEntries& infos);
    void TellNewInfos(const clConversion& conversion);
    void Say(const std::string& text);
};
