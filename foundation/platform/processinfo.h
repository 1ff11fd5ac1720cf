// Facts about the running process and the launching of another one.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

class clStringList;

// POSIX keeps argv here for PlatformGetCommandLine; Windows ignores it and
// asks GetCommandLineW.
void PlatformSetArguments(int argc, char** argv);

// The process command line as one text, as the option parser expects it.
// POSIX rebuilds it from argv with BuildCommandLineText.
void PlatformGetCommandLine(clString& line);

// The full path of the running executable; false when unknown.
bool PlatformGetModuleFileName(clString& path);

// 16 random bytes (CoCreateGuid on Windows).
bool PlatformCreateGuid(unsigned char bytes[16]);

// Starts `program` with `arguments` and does not wait for it. No shell is
// involved: POSIX spawns with an argument vector, Windows passes the line
// that BuildCommandLineText makes of them. False when nothing was started.
bool PlatformStartProcess(const clString& program, const clStringList& arguments);
// Opens a document or an address with the desktop's program for it (the
// shell on Windows, xdg-open elsewhere), not waiting; false when nothing
// could be started.
bool PlatformOpenDocument(const clString& pathOrAddress);
// Opens a window of the file's folder with the file selected (Explorer on
// Windows; on Linux the desktop's file manager shows the folder, as not
// every one can select a file); false when nothing could be started.
bool PlatformShowInFolder(const clString& path);

// An environment variable's value; false (and empty) when it is not set.
bool PlatformGetEnvironment(const char16_t* name, clString& value);

// ".exe" on Windows, "" on POSIX.
const char16_t* PlatformExecutableSuffix();

// COM on Windows (CoInitialize / CoUninitialize); nothing on POSIX.
void PlatformInitializeComponents();
void PlatformUninitializeComponents();

// Runs `program` with `arguments`, standard output and error both into
// `outputFile` (created or replaced), standard input empty, and waits for
// it. False when it could not be started; otherwise `exitCode` is its exit
// code (on POSIX, 128 + the signal number when a signal ended it).
bool PlatformRunProcess(const clString& program, const clStringList& arguments, const clString& outputFile,
                        int* exitCode);

// Runs `program` with `arguments` on this process's own standard input,
// output and error, and waits for it. False when it could not be started;
// otherwise `exitCode` is its exit code (POSIX: 128 + the signal number
// when a signal ended it). An interrupt while waiting doesn't end the wait.
bool PlatformRunProcessAttached(const clString& program, const clStringList& arguments, int* exitCode);

// Sets an environment variable for this process and the ones it starts.
bool PlatformSetEnvironment(const char16_t* name, const char16_t* value);

// True while a process of that id runs (one of another user counts).
bool PlatformProcessRunning(uint32_t processId);

// Binds this process to one processor, numbered from 1; false when the
// system refused (the process then runs wherever it is put).
bool PlatformSetOwnProcessor(int processor);

// The priority of this process: 0 normal, 1 above normal, 2 below normal,
// 3 idle. POSIX uses nice values -5, 5 and 19; raising the priority needs
// rights an ordinary user lacks, and then nothing changes.
bool PlatformSetOwnPriority(int code);

// From now on a crash of this process (a fatal signal, an unhandled
// exception, an abort) writes `message` to standard error before the
// process ends, so that whoever reads that stream sees a failure. The
// bytes are written as they are and must stay valid; a later call replaces
// them. On POSIX a file-size limit and a closed pipe then fail the write
// instead of ending the process.
void PlatformInstallCrashMessage(const void* message, uint32_t bytes);
// A file the crash handler deletes before the process ends (a half-written
// output); null for none. Paths longer than 4,000 units are not kept.
void PlatformSetCrashRemovesFile(const char16_t* path);

// From now on an interrupt from the terminal (Ctrl-C; on Windows also
// Ctrl-Break) no longer ends the process but is counted, for the program
// to act on, and so is a request to end (POSIX: SIGTERM, SIGHUP; Windows:
// the console's close, log-off and shut-down), which the program answers
// by stopping at once, leaving nothing half-written. While this process
// waits in PlatformRunProcessAttached, a request to end is passed on to
// the program it waits for.
void PlatformCatchInterrupts();
uint32_t PlatformInterruptCount();
// The request to end, as the number of its signal: 15 (SIGTERM; Windows:
// log-off or shut-down) or 1 (SIGHUP; Windows: the console closed); 0
// while none came. The exit code for it is 128 + that number.
int PlatformTerminationSignal();

// True once the process that started this one has ended (POSIX: this
// process was handed to another parent; Windows: the parent's handle is
// signalled). A worker whose program is gone stops.
bool PlatformParentEnded();
