// BuildCommandLineText: the one rule by which an argument list becomes a
// command-line text. POSIX hands a program its arguments as argv, but the
// option parser reads one Windows-style command-line text; and on Windows a
// program we start reads its raw line with that same parser. So POSIX
// rebuilds the line from argv by this rule, and the Windows launcher builds
// the line it passes by it too:
//   - the program name is always quoted: "name";
//   - an argument without a blank is written as it is;
//   - an argument `-key=value` whose value holds a blank is written
//     -key="value", as a Windows user would type it, so that the parser
//     keeps the value whole;
//   - any other argument holding a blank is quoted whole: "a b".
// Arguments are joined by one blank. A `"` inside an argument cannot be
// represented and is kept as it is (the option texts avoid it by design).
#pragma once

#include "foundation/clstring.h"

class clStringList;

clString BuildCommandLineText(const clString& program, const clStringList& arguments);

// Splits a command-line text into its arguments by the Windows rules
// (CommandLineToArgvW): blanks and tabs separate, quotes group, 2n
// backslashes before a quote give n and the quote groups, 2n+1 give n and a
// literal quote; "" inside a quoted run is a literal quote.
void SplitCommandLine(const clString& line, clStringList& arguments);
