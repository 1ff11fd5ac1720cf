// The terminal the process was started from, for the views that show a
// conversion without a window.
#pragma once

#include <cstdint>
#include <string>

// Streams: 0 standard input, 1 standard output, 2 standard error.
bool PlatformIsTerminal(int stream);

// Columns of the terminal on standard output; 80 when unknown.
int32_t PlatformTerminalWidth();

// Makes standard output take UTF-8 and the cursor and erase sequences of
// VT100 terminals. POSIX terminals do both already; a Windows console is
// switched to them.
void PlatformPrepareTerminal();

// Writes the bytes to standard output at once (no buffering).
void PlatformWriteOutput(const std::string& bytes);
// The same to standard error.
void PlatformWriteError(const std::string& bytes);

// One line typed on standard input, without its line end; blocks until a
// line comes. False at the end of input.
bool PlatformReadInputLine(std::string& line);
