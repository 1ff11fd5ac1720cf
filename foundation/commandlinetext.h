// The two ways a command line becomes text.
//
// BuildCommandLineText: POSIX hands a program its arguments as argv, but
// the option parser reads one Windows-style command-line text. The text is
// rebuilt by one rule, so that what a user typed in a shell means on Linux
// what it means on Windows:
//   - the program name is always quoted: "name";
//   - an argument without a blank is written as it is;
//   - an argument `-key=value` whose value holds a blank is written
//     -key="value", as a Windows user would type it, so that the parser
//     keeps the value whole;
//   - any other argument holding a blank is quoted whole: "a b".
// Arguments are joined by one blank. A `"` inside an argument cannot be
// represented and is kept as it is (the option texts avoid it by design).
//
// QuoteCommandLineArgument: the reverse direction on Windows, quoting one
// argument so that CreateProcessW's receiver (CommandLineToArgvW rules)
// gets it back unchanged: backslashes before a quote are doubled, quotes
// escaped, and the whole quoted when it holds a blank, a tab or is empty.
#pragma once

#include "foundation/clstring.h"

class clStringList;

clString BuildCommandLineText(const clString& program, const clStringList& arguments);
clString QuoteCommandLineArgument(const clString& argument);
