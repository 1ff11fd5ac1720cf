// qv_testhelper: a second process for the tests of cross-process objects.
//   event-state NAME   exit code 10 * existed + (event is set)
//   mutex-try NAME     exit code 1 when the mutex could be taken at once
//   event-set NAME     opens the event and sets it
#include <cstring>
#include <string>

#include "foundation/clstring.h"
#include "foundation/syncobjects.h"
#include "foundation/utf.h"

int main(int argc, char** argv) {
    if (argc != 3) return 100;
    clString name;
    Utf8ToString(argv[2], static_cast<int64_t>(std::strlen(argv[2])), name);
    std::string command = argv[1];
    if (command == "event-state") {
        XEvent event;
        if (!event.Create(name.text)) return 101;
        return (event.existed ? 10 : 0) + (event.IsSet() ? 1 : 0);
    }
    if (command == "event-set") {
        XEvent event;
        if (!event.Create(name.text)) return 101;
        return event.Set() ? 0 : 102;
    }
    if (command == "mutex-try") {
        clMutex mutex;
        if (!mutex.Create(name.text)) return 101;
        return mutex.Wait(0) ? 1 : 0;
    }
    return 100;
}
