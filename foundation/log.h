// LogWrite: the passive trace of plug-in loading.
//
// Text goes to the file handle in a clLogSink, indented by the function
// entry and exit markers "->->" and "<-<-", under one process-wide lock so
// several threads can trace at once (the indentation is shared, not per
// thread). A sink whose `file` is 0 or -1 writes nothing, and that is the
// normal state: the program's own callers pass a zeroed sink. Output is
// UTF-16LE without byte-order mark, lines ending in CR LF.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

// Three 64-bit words, as handed to plug-ins: two not read here, then the
// platform file handle (0 or -1: silent).
struct clLogSink {
    uint64_t reserved[2];
    uint64_t file;
};
static_assert(sizeof(clLogSink) == 24, "clLogSink is three 64-bit words");

constexpr const char16_t* clLogEnter = u"->->";
constexpr const char16_t* clLogLeave = u"<-<-";

// `function` is 8-bit text in the system code page, or null; with
// `endOfLine` it follows the text as "  [function]" before CR LF.
void LogWrite(const char16_t* text, const clLogSink* sink, const char* function, bool endOfLine);
// The current indentation, for tests.
clString LogIndent();
