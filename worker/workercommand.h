// The options of one conversion, as the front end writes them into the
// worker's command file: one line of UTF-16LE text, every value in double
// quotes, in this order:
//   -infile="..." -outfile="..." -convert_to="..." -evtquit="..."
//   -evtwatchdog="..." -batchid="..." [-processor="n"] [-tmpfolder="..."]
//   [-priority="high|low|idle"] [-dspeffect1="Name=settings" ...]
// and, behind one blank, the encoder's own option string as it stands.
// Inside the quotes every `"`, `%` and control character is written as
// `%` and two hex digits (foundation/optionvalue.h), so a value carries any
// file name whole; an effect's settings hold their quotes as they are.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

struct WorkerCommand {
    std::u16string inFile;
    std::u16string outFile;
    std::u16string encoderName;
    std::u16string quitEvent;
    std::u16string watchdogEvent;
    std::u16string tmpFolder;
    uint32_t batchId = 0;
    int processor = 0;                                               // 0: any processor
    int priorityCode = 0;                                            // 0 normal, 1 high, 2 low, 3 idle
    std::vector<std::pair<std::u16string, std::u16string>> effects;  // name, settings; chain order
    std::u16string encoderOptions;
};

// Fills `command` from the option text; false with `error` saying what is
// missing or malformed.
bool ParseWorkerCommand(const std::u16string& text, WorkerCommand& command, std::u16string& error);

// The text of a command file (UTF-16LE, a byte-order mark tolerated).
bool ReadCommandFile(const std::u16string& path, std::u16string& text, std::u16string& error);
