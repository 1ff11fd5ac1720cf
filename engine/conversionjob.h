// The records of a conversion's plan and of its outcome: one job for each
// source and encoder, the overwrite question's items, and the log entries
// the harvest collects.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "foundation/stringlist.h"

class clConversionJob {
public:
    int32_t sourceIndex = 0;
    int32_t encoderIndex = 0;  // 0 with a plain encoder, else the item's index
    clString outputPath;       // the source's chosenOutput, then the computed path
    clString encoderName;
    clString extension;  // with its dot
    clString encoderOptions;
    clString dspEffects;  // as the batch preparation left it
    clString folder;
    clString namingRule;
    int32_t skip = 0;        // dropped before the conversion begins
    int32_t directCopy = 0;  // copied, not converted
    int32_t hadErrors = 0;   // its conversion reported an error
};

using clConversionJobs = clOwningList<clConversionJob>;

// A job whose output exists or is another job's output too. `newPath`
// (and `skip`) are what the overwrite question may change.
class clOverwriteItem {
public:
    clString outputPath;
    clString newPath;
    clString encoderName;
    clString extension;
    int32_t skip = 0;
    int32_t jobIndex = 0;
    // A file exists at the path now.
    int32_t exists = 0;
    // The index of an earlier job of the batch with the same output, or -1.
    // Whatever the answer, the later job will not write over that one's
    // output: it gets a name of its own if both still write.
    int32_t sharedWith = -1;
};

using clOverwriteItems = clOwningList<clOverwriteItem>;

// One job's error or information lines.
class clLogEntry {
public:
    clString encoderName;
    clString sourcePath;
    clString outputPath;
    clStringList lines;
};

using clLogEntries = clOwningList<clLogEntry>;
