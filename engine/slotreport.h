// What a running worker tells its slot, and how the slot shows it: the
// lines of its two pipes (messages, errors and information), the
// watchdog's verdict, and the rotating text of the slot's row. Plain
// logic: the pipes, the clock and the row are the caller's.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

// Splits at the first ':'; the right part loses one blank right behind
// it. False for an empty line or one without a colon.
bool SplitAtColon(const clString& line, clString& left, clString& right);

// True once more than 60,000 ms have passed since the last heartbeat. The
// difference is taken unsigned, so a wrapping tick counter is no alarm.
bool WatchdogTripped(uint32_t now, uint32_t lastHeartbeat);

// The text a row shows while the previous text is kept (see RowText).
extern const char16_t* const kKeepRowText;

// A job keeps at most this many characters of error and of information
// text; a worker that floods its pipes must not flood the logs, nor the
// memory that holds them. The line that says so is added once.
constexpr int32_t kReportTextLimit = 65536;
extern const char16_t* const kReportCutLine;

class clSlotReport {
public:
    int32_t percent = 0;   // 0..100, never falls while a job runs
    int64_t lengthMs = 0;  // the source's length until the worker says "msLen"
    clString action, actionInput, actionOutput;
    clString errorText, infoText;  // lines joined by CR LF
    // The worker's temporary output ("TempFile"), while it writes it.
    clString tempFile;
    // The worker put its output in place ("OutputReady"): the only proof of
    // a converted file, as a worker that dies early says nothing at all.
    bool outputReady = false;
    uint32_t textTick = 0;
    uint32_t textEmptySince = 0;

    // For a new job: everything but the row's rotation counters.
    void Reset(int64_t sourceLengthMs);
    // What one drain read from standard error: every non-empty line is
    // an error. Nothing carries over to the next drain: a half-written
    // line is two lines.
    void TakeErrors(const clString& text);
    // What one drain read from standard output: "MSGTO: " lines are
    // messages, other non-empty lines information.
    void TakeOutput(const clString& text);
    void AddError(const clString& line);
    // The row's text on this tick: the action, then the input, then the
    // output, each for 16 ticks; kKeepRowText during the first 2 s of
    // an empty text.
    clString RowText(uint32_t now);

private:
    bool errorCut = false, infoCut = false;

    void TakeMessage(const clString& line);
};
