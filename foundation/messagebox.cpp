#include "foundation/messagebox.h"

#include <cstdio>

#include "foundation/platform/messagebox.h"
#include "foundation/platform/processinfo.h"

namespace {

clMessageBoxHandler& Handler() {
    static clMessageBoxHandler handler;
    return handler;
}

const char* AnswerName(int id) {
    switch (id) {
        case clIdOk: return "OK";
        case clIdCancel: return "Cancel";
        case clIdAbort: return "Abort";
        case clIdRetry: return "Retry";
        case clIdYes: return "Yes";
        case clIdNo: return "No";
        default: return "?";
    }
}

}  // namespace

int DefaultMessageBoxAnswer(uint32_t type) {
    switch (type & 0xF) {
        case 1: return clIdCancel;  // OK / Cancel
        case 2: return clIdAbort;   // Abort / Retry / Ignore
        case 3: return clIdCancel;  // Yes / No / Cancel
        case 4: return clIdNo;      // Yes / No
        case 5: return clIdCancel;  // Retry / Cancel
        default: return clIdOk;
    }
}

void SetMessageBoxHandler(clMessageBoxHandler handler) { Handler() = std::move(handler); }

int clMessageBox(const clString& text, const clString& caption, uint32_t type) {
    if (Handler()) return Handler()(text, caption, type);
    clString flag;
    int answer = -1;
    if (!PlatformGetEnvironment(u"QUILLOTONE_NONINTERACTIVE", flag) || !flag.Equals(u"1")) {
        answer = PlatformMessageBox(text, caption, type);
    }
    if (answer > 0) return answer;
    answer = DefaultMessageBoxAnswer(type);
    clString c(caption);
    clString t(text);
    std::fprintf(stderr, "%s: %s [%s]\n", c.ToUtf8(), t.ToUtf8(), AnswerName(answer));
    std::fflush(stderr);
    return answer;
}
