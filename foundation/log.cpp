#include "foundation/log.h"

#include <cstring>

#include "foundation/platform/fileio.h"
#include "foundation/platform/textcodec.h"
#include "foundation/syncobjects.h"

namespace {

struct LogState {
    clMutex mutex;
    clString indent;
    bool atLineStart = true;
    LogState() { mutex.Create(nullptr); }
};

LogState& State() {
    static LogState state;
    return state;
}

bool StartsWith(const char16_t* text, const char16_t* marker) {
    clString t(text);
    return t.Compare(marker, -1) == 0;
}

}  // namespace

void LogWrite(const char16_t* text, const clLogSink* sink, const char* function, bool endOfLine) {
    LogState& state = State();
    clMutexLock hold(state.mutex);
    if (text == nullptr) text = u"";
    if (StartsWith(text, clLogLeave)) {
        int32_t keep = state.indent.Length() - 2;
        if (keep < 0) keep = 0;
        state.indent.SetLength(keep);
    }
    clString output;
    if (state.atLineStart) output.AppendGrowing(state.indent);
    output.AppendGrowing(text);
    if (endOfLine) {
        if (function != nullptr) {
            clString name;
            PlatformAnsiToWide(function, static_cast<int32_t>(std::strlen(function)), name);
            output.AppendGrowing(u"  [");
            output.AppendGrowing(name);
            output.AppendGrowing(u"]");
        }
        output.AppendGrowing(u"\r\n");
    }
    if (sink != nullptr && sink->file != 0 && sink->file != static_cast<uint64_t>(-1)) {
        // Units in memory order are UTF-16LE on every supported platform.
        uint32_t done = 0;
        PlatformWriteFile(static_cast<clFileHandle>(sink->file), output.text,
                          static_cast<uint32_t>(output.Length()) * 2, &done);
    }
    if (StartsWith(text, clLogEnter)) state.indent.Append(u"  ");
    state.atLineStart = endOfLine;
}

clString LogIndent() {
    LogState& state = State();
    clMutexLock hold(state.mutex);
    return state.indent;
}
