#include "foundation/processrunner.h"

#include "foundation/pathtext.h"
#include "foundation/platform/thread.h"

bool clProcessRunner::Run() {
    clProcessStart start;
    if (commandLine.IsEmpty()) {
        start.commandLine = program;
        QuoteText(start.commandLine);
        start.commandLine.Append(u" ");
        start.commandLine.Append(arguments);
    } else {
        start.commandLine = commandLine;
    }
    start.inheritHandles = inheritHandles;
    start.creationFlags = creationFlags;
    start.workingFolder = workingFolder;
    clProcessHandle process = 0;
    if (!PlatformCreateProcess(start, &process)) return false;
    bool result = true;
    if (wait) {
        if (timeoutMs == 0) {
            PlatformWaitProcess(process, 0xFFFFFFFFu);
        } else {
            uint32_t started = PlatformTickCount();
            for (;;) {
                if (PlatformWaitProcess(process, 250)) break;
                // Unsigned difference: a wrap of the tick counter does no harm.
                if (PlatformTickCount() - started > timeoutMs) {
                    if (terminateOnTimeout) PlatformTerminateProcess(process, 0);
                    result = false;
                    break;
                }
                PlatformSleep(25);
            }
        }
    }
    PlatformCloseProcess(process);
    return result;
}

bool RunCommandLine(const clString& commandLine) {
    clProcessRunner runner;
    runner.commandLine = commandLine;
    return runner.Run();
}
