// The conversion worker as a child process: two pipes that this process
// reads without ever blocking, the start with those pipes as the child's
// standard output and error, and the ways to pause it and to change its
// priority while it runs.
//
// Windows: anonymous pipes peeked with PeekNamedPipe, inheritable
// duplicates of the write ends, SuspendThread on the worker's main thread,
// SetThreadPriority with SetPriorityClass. POSIX: pipes whose read end is
// non-blocking and asked with FIONREAD, posix_spawn with every other
// descriptor closed in the child, SIGSTOP / SIGCONT to the whole process,
// and nice values (0, -5, 5, 19); an ordinary user may not lower a nice
// value again, and then the worker keeps the lower priority. Neither
// side's worker hears the terminal's Ctrl-C: on Windows it has no console,
// on POSIX it has a process group of its own.
#pragma once

#include <cstdint>
#include <string>

#include "foundation/clstring.h"
#include "foundation/platform/thread.h"

using clPipeHandle = intptr_t;
constexpr clPipeHandle clNoPipe = -1;

// A pipe whose read end stays with this process and is never inherited.
// It holds kPipeBufferBytes where the system allows: the reader drains it
// on a timer, and a chatty writer blocks whenever it is full.
constexpr uint32_t kPipeBufferBytes = 1u << 20;
bool PlatformCreatePipe(clPipeHandle* readEnd, clPipeHandle* writeEnd);
void PlatformClosePipe(clPipeHandle pipe);
// The bytes waiting in the pipe, without taking them; -1 when the peek
// fails (a closed and empty pipe may answer either 0 or -1).
int64_t PlatformPipeAvailable(clPipeHandle readEnd);
// Reads at most `count` bytes that are waiting; the count, -1 on failure.
int64_t PlatformPipeRead(clPipeHandle readEnd, void* buffer, uint32_t count);

// The text of the worker's pipes. Windows: UTF-16LE, like every text the
// program exchanges. POSIX: UTF-8, because the libraries a worker loads
// write their own messages to the same standard error in UTF-8, and those
// must reach the log as the words they are.
std::string PlatformPipeBytes(const char16_t* text, int32_t length);
// Decodes `count` bytes read from a worker's pipe into `text` and answers
// how many were used: a character cut off at the end (half a UTF-16 unit,
// the start of a UTF-8 sequence) is left for the next read. NULs are
// dropped.
int64_t PlatformPipeText(const unsigned char* bytes, int64_t count, clString& text);

// A pipe for a worker's standard input: the read end is the child's, the
// write end stays here (neither is inherited by anything else). Blocking
// on both sides.
bool PlatformCreateInputPipe(clPipeHandle* readEnd, clPipeHandle* writeEnd);
// Writes all of `count` bytes; false when the reader is gone (no signal
// is raised for it).
bool PlatformPipeWrite(clPipeHandle writeEnd, const void* data, uint32_t count);

// Starts `commandLine` (Windows rules) with the write ends as standard
// output and error, `inRead` as standard input (clNoPipe: an empty one),
// no window, normal priority. The three pipe ends are closed here in any
// case. `thread` is the handle through which the worker is paused (POSIX:
// the process again).
bool PlatformStartWorker(const clString& commandLine, clPipeHandle outWrite, clPipeHandle errWrite,
                         clPipeHandle inRead, clProcessHandle* process, clThreadHandle* thread);
void PlatformSuspendWorker(clProcessHandle process, clThreadHandle thread);
void PlatformResumeWorker(clProcessHandle process, clThreadHandle thread);
// Code 0 normal, 1 above normal, 2 below normal, 3 idle.
void PlatformSetWorkerPriority(clProcessHandle process, clThreadHandle thread, int32_t code);
// Releases the thread handle of PlatformStartWorker (nothing on POSIX).
void PlatformCloseWorkerThread(clThreadHandle thread);

// What the scheduler sleeps on between its ticks, so that the next job
// starts the moment a slot frees rather than at the next look: the end of
// any running worker, or a wake that a thread of the program raises when
// it has finished (a direct copy, the examination, the batch end).
// Windows: an auto-reset event, and the process handles. POSIX: an
// eventfd, and a pidfd per worker; a kernel without pidfds makes the wait
// a short sleep, as before.
using clWakeHandle = intptr_t;
constexpr clWakeHandle clNoWake = 0;
clWakeHandle PlatformCreateWake();
// Safe from any thread; a raise that nobody waits for yet is kept for the
// next wait.
void PlatformRaiseWake(clWakeHandle wake);
void PlatformCloseWake(clWakeHandle wake);
// Waits at most `milliseconds` until one of the `count` workers has ended
// or `wake` is raised (which lowers it again). True when something
// happened, false when the time ran out. Windows waits on at most 63
// workers at once; with more, it looks again every 5 ms.
bool PlatformWaitWorkers(const clProcessHandle* workers, int32_t count, clWakeHandle wake, uint32_t milliseconds);

// What a window's message loop watches in place of PlatformWaitWorkers,
// which would stop it handling the user's clicks: a descriptor that polls
// readable (POSIX) or a handle that is signalled (Windows) once the worker
// has ended or the wake is raised. clNoWaitable when there is none (a
// kernel without pidfds). A loop that has seen a raised wake may have
// lowered it (Windows) or not (POSIX): PlatformWaitWorkers with no time
// lowers it in either case.
using clWaitable = intptr_t;
constexpr clWaitable clNoWaitable = -1;
clWaitable PlatformWorkerWaitable(clProcessHandle worker);
clWaitable PlatformWakeWaitable(clWakeHandle wake);
