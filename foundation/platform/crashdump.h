// The program's crash record. Once installed, a fault the process doesn't
// handle writes a record to a file named in advance, starts the program a
// second time with the arguments given (there the report window tells the
// user), and ends the process with exit code 0 at once: nothing of the
// crashed program runs any more. Every failure on the way is silent.
//
// Windows writes a minidump (MiniDumpWriteDump) with the memory around
// the registers and the pointers on the first kilobyte of the stack; a
// stack overflow is written from a thread of its own. POSIX writes a text
// record (signal, fault address, registers, backtrace) from the signal
// handler, on a stack of its own, with async-signal-safe calls only.
// With a debugger attached the crash goes to the debugger as usual.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

class clStringList;

// False when the handler could not be installed (the process then dies
// of a crash as it would have).
bool PlatformInstallCrashDump(const clString& dumpPath, const clString& program, const clStringList& arguments);

// This process's id.
uint32_t PlatformProcessId();

// True while a debugger follows this process.
bool PlatformDebuggerPresent();
