// The likely cause of a failed job, in plain words, from the state of the
// output's drive: missing, a CD drive, read-only, full, a name too long for
// it, or not writable. It runs only
// after a job has failed, and prevents nothing.
//
// Windows looks at the drive letter of the output path and leaves network
// paths alone. POSIX has no drive letters: the "drive" is the volume that
// holds the output's nearest existing folder, named by its mount point.
#pragma once

#include <cstdint>
#include <functional>

#include "foundation/clstring.h"

// Below this many free bytes a drive counts as full.
constexpr uint64_t kFullDriveBytes = 256000;

struct clDriveFacts {
    bool exists = false;
    bool cdRom = false;
    bool readOnly = false;  // mounted (or reporting itself) read-only
    uint64_t freeBytes = 0;
    // A name in the output path, or the whole path, is longer than the
    // file system takes.
    bool nameTooLong = false;
    // Creates and deletes a file in the output's folder; false when that
    // fails.
    std::function<bool()> writeTest;
};

// The line to add for the drive named `drive`, or empty.
clString DiagnoseDrive(const clString& drive, const clDriveFacts& facts);

// The line to add under the worker's own error for `outputPath`, or empty.
clString DiagnoseOutput(const clString& outputPath);
