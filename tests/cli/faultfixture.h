// The fixture of the fault tests: a folder of sources, the output folder,
// and qvt of the fault installation, run in the foreground or beside the
// test while it meddles.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>

#include "foundation/findfiles.h"
#include "foundation/utf.h"
#include "tests/cli/qvtrun.h"
#include "tests/codecs/wavefiles.h"

class FaultTest : public ::testing::Test {
protected:
    TestFolder dir;
    clString src = dir.File(u"src");
    clString out = dir.File(u"out");
    clString pidFile = dir.File(u"worker.pid");

    FaultTest() {
        PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"1");
        MakeFolders(src);
    }

    clString Source(const char16_t* name, double seconds, int tone = 0) {
        clString path = JoinPath(src, clString(name));
        WriteBytes(path, ToneWave(tone, seconds));
        return path;
    }
    clString Out(const char16_t* name) const { return JoinPath(out, clString(name)); }
    // The effect setting that makes the worker hold each block for `holdMs`
    // and name itself in pidFile.
    clString Fault(int holdMs, int floodMb = 0) const {
        std::string text = "Fault Injection=pid=" + StringToUtf8(pidFile) + ";hold=" + std::to_string(holdMs);
        if (floodMb > 0) text += ";flood=" + std::to_string(floodMb);
        clString setting;
        Utf8ToString(text.data(), static_cast<int64_t>(text.size()), setting);
        return setting;
    }

    QvtRun Qvt(std::initializer_list<clString> words, const char16_t* log = u"qvt.log") {
        return RunProgram(FaultInstallPath(u"qvt"), words, dir.File(log));
    }

    // Waits for the worker to name itself; 0 if qvt ends first or a
    // minute passes.
    int WaitForWorker(std::future<QvtRun>& qvt) {
        for (int i = 0; i < 60 * 20; ++i) {
            std::string text = ReadBytes(pidFile);
            if (!text.empty()) return std::stoi(text);
            if (qvt.wait_for(std::chrono::milliseconds(50)) == std::future_status::ready) return 0;
        }
        return 0;
    }

    // Every file below `folder` whose name holds `part`.
    static int CountFiles(const clString& folder, const char16_t* part) {
        int count = 0;
        clFindFiles find(clString(u"*"), folder);
        while (find.Next()) {
            if (find.IsFolder()) {
                count += CountFiles(find.fullName, part);
            } else if (find.fullName.Find(part) != 0) {
                ++count;
            }
        }
        return count;
    }
};
