// qv_testhelper: a second process for the tests of cross-process objects.
//   event-state NAME   exit code 10 * existed + (event is set)
//   mutex-try NAME     exit code 1 when the mutex could be taken at once
//   event-set NAME     opens the event and sets it
//   setting-get KEY NAME            exit code: the DWORD value (0-255)
//   setting-checked KEY NAME        the same, but 200 when the store can't
//                                   be used (it says why on standard error)
//   setting-write-many KEY N TAG    writes N distinct DWORDs TAG-0 ... TAG-(N-1)
//   touch-after MS FILE             sleeps MS milliseconds, then creates FILE
//   unique-counter MUTEX N FILE     N times: under the mutex, read "Unique",
//                                   add 1, write it back; the numbers go to FILE
//   batch-id TICK FILE MS           takes a batch id as a conversion does, with
//                                   the clock standing at TICK; writes it to
//                                   FILE and holds it MS milliseconds
//   unique-tag N FILE               N times AddUniqueTag, as a batch does it
//                                   under the program's own root key; the
//                                   "unique" values go to FILE
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "engine/encoderbatch.h"
#include "foundation/clstring.h"
#include "foundation/platform/fileio.h"
#include "foundation/platform/thread.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/syncobjects.h"
#include "foundation/utf.h"
#include "naming/sourcefacts.h"
#include "plugins/taglist.h"

namespace {

clString Arg(const char* text) {
    clString s;
    Utf8ToString(text, static_cast<int64_t>(std::strlen(text)), s);
    return s;
}

int SettingsCommand(int argc, char** argv) {
    std::string command = argv[1];
    clString key = Arg(argv[2]);
    if (command == "setting-get" && argc == 4) {
        return static_cast<int>(GetSettingNumber(Arg(argv[3]).text, clHiveCurrentUser, key.text) & 0xFF);
    }
    if (command == "setting-checked" && argc == 4) {
        uint32_t value = GetSettingNumber(Arg(argv[3]).text, clHiveCurrentUser, key.text);
        return SettingsStoreProblem().IsEmpty() ? static_cast<int>(value & 0xFF) : 200;
    }
    if (command == "setting-write-many" && argc == 5) {
        int n = std::atoi(argv[3]);
        for (int i = 0; i < n; ++i) {
            clString name = clString::Formatted(u"%s-%d", Arg(argv[4]).text, i);
            if (!SetSettingNumber(static_cast<uint32_t>(i), name.text, clHiveCurrentUser, key.text)) return 1;
        }
        return 0;
    }
    if (command == "touch-after" && argc == 4) {
        PlatformSleep(static_cast<uint32_t>(std::atoi(argv[2])));
        std::FILE* out = std::fopen(argv[3], "w");
        if (out == nullptr) return 102;
        std::fclose(out);
        return 0;
    }
    if (command == "unique-counter" && argc == 5) {
        clMutex mutex;
        if (!mutex.Create(key.text)) return 101;
        int n = std::atoi(argv[3]);
        std::FILE* out = std::fopen(argv[4], "w");
        if (out == nullptr) return 102;
        SetSettingsRoot(clHiveCurrentUser, u"Software\\QuillotoneTests\\Unique");
        for (int i = 0; i < n; ++i) {
            mutex.Wait();
            uint32_t value = GetSettingNumber(u"Unique") + 1;
            SetSettingNumber(value, u"Unique");
            mutex.Release();
            std::fprintf(out, "%u\n", value);
        }
        std::fclose(out);
        return 0;
    }
    return 100;
}

int UniqueTagCommand(char** argv) {
    int n = std::atoi(argv[2]);
    std::FILE* out = std::fopen(argv[3], "w");
    if (out == nullptr) return 102;
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    for (int i = 0; i < n; ++i) {
        clTagList tags;
        AddUniqueTag(tags);
        std::fprintf(out, "%s\n", tags.GetTagValue(u"unique").ToUtf8());
    }
    std::fclose(out);
    return 0;
}

}  // namespace

int BatchIdCommand(char** argv) {
    auto tick = static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 10));
    clEncoderBatch batch;
    clString effects;
    PrepareEncoderBatch(batch, effects, clString(u"none"), clString(), [tick] { return tick; });
    std::FILE* out = std::fopen(argv[3], "w");
    if (out == nullptr) return 101;
    std::fprintf(out, "%d\n", static_cast<int>(batch.batchId));
    std::fclose(out);
    PlatformSleep(static_cast<uint32_t>(std::atoi(argv[4])));
    return 0;
}

int main(int argc, char** argv) {
    if (argc == 5 && std::string(argv[1]) == "batch-id") return BatchIdCommand(argv);
    if (argc == 4 && std::string(argv[1]) == "unique-tag") return UniqueTagCommand(argv);
    if (argc >= 4) return SettingsCommand(argc, argv);
    // A stand-in worker for the scheduler's tests: it lives a tenth of a
    // second and ends without a word; started ahead (-standby), it first
    // waits for its go on standard input.
    if ((argc == 2 || argc == 3) && std::strncmp(argv[1], "-qvcmd=", 7) == 0) {
        if (argc == 3) {
            if (std::strcmp(argv[2], "-standby") != 0) return 100;
            char go = 0;
            uint32_t got = 0;
            if (!PlatformReadFile(PlatformStandardHandle(0), &go, 1, &got) || got != 1) return 3;
        }
        PlatformSleep(100);
        return 0;
    }
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
