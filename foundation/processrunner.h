// clProcessRunner: the launcher for child programs other than the
// conversion worker. No shell is involved on any platform: the command line
// is Windows text, which POSIX splits by the same rules.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

class clProcessRunner {
public:
    clString commandLine;  // used as it stands when not empty
    clString program;      // else: program, quoted, a blank, arguments
    clString arguments;
    bool wait = false;       // wait for the child to end
    uint32_t timeoutMs = 0;  // limit of the wait; 0: without limit
    bool inheritHandles = false;
    uint32_t creationFlags = 32;  // normal priority class
    bool terminateOnTimeout = false;
    clString workingFolder;  // empty: the parent's

    // True when started (and, when waiting, ended within the limit).
    bool Run();
};

// A runner with defaults and the given command line.
bool RunCommandLine(const clString& commandLine);
