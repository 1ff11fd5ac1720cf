// Running the real qvt from a test: its exit code and everything it wrote,
// with Windows' CR LF read as LF.
#pragma once

#include <initializer_list>
#include <string>

#include "foundation/clstring.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "tests/support/testfolder.h"

struct QvtRun {
    int code = -1;
    std::string output;
};

inline QvtRun RunProgram(const clString& program, std::initializer_list<clString> words, const clString& log) {
    clStringList arguments;
    for (const clString& w : words) arguments.Add(w);
    QvtRun run;
    if (!PlatformRunProcess(program, arguments, log, &run.code)) run.code = -2;
    for (char c : ReadBytes(log)) {
        if (c != '\r') run.output.push_back(c);
    }
    return run;
}

// A program of the fault tests' own installation (see tests/cli/CMakeLists.txt).
inline clString FaultInstallPath(const char16_t* name) {
    clString path = JoinPath(JoinPath(GetProgramFolder(), clString(u"faultinstall")), clString(name));
    path.Append(PlatformExecutableSuffix());
    return path;
}

inline bool Contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }
