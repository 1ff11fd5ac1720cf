// How a slot reaches its worker process: the start, the two pipes, the
// end, pause and priority. The conversion is given a launcher, so that
// tests can put scripted workers in the place of real processes.
#pragma once

#include <cstdint>
#include <memory>

#include "foundation/clstring.h"
#include "foundation/platform/thread.h"

// One started worker, as its slot sees it. Nothing here blocks.
class clWorkerLink {
public:
    virtual ~clWorkerLink() = default;
    // Everything waiting on standard output (or error) now, as text. What
    // the worker has not finished writing stays for the next read, and a
    // line may so come in two parts.
    virtual clString Read(bool standardError) = 0;
    virtual bool HasEnded() = 0;
    virtual void Suspend() = 0;
    virtual void Resume() = 0;
    // Code 0 normal, 1 above normal, 2 below normal, 3 idle.
    virtual void SetPriority(int32_t code) = 0;
    // Ends the worker at once (a paused one too) and waits for its end: for
    // a worker past the watchdog, or one that ignores a cancel.
    virtual void Terminate() = 0;
    // The process whose end the scheduler waits on; 0 for a worker that
    // can't be waited on (a scripted one), which the scheduler then looks
    // at every few milliseconds.
    virtual clProcessHandle WaitHandle() { return 0; }
    // Lets a worker started in standby begin: it reads its command file
    // now. False when it can't be reached (it has died).
    virtual bool Release() { return false; }
};

class clWorkerLauncher {
public:
    virtual ~clWorkerLauncher() = default;
    // Starts `commandLine`; the caller owns the link. Null on failure, with
    // the line that tells it in `failure` ("Error creating StdOut Pipe",
    // "Error creating StdErr Pipe" or "Error running ConvertWorker").
    virtual std::unique_ptr<clWorkerLink> Start(const clString& commandLine, clString& failure) = 0;
    // Starts a worker that waits on its standard input before it reads its
    // command file (the command line carries -standby), so that its start
    // is done before its job is known. Null when the launcher can't; a
    // slot then starts its next worker the usual way.
    virtual std::unique_ptr<clWorkerLink> StartStandby(const clString& /*commandLine*/) { return nullptr; }
};

// The launcher of real child processes.
clWorkerLauncher& ProcessWorkerLauncher();
