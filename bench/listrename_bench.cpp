// List and rename over 10,000 sources, as a user meets it: how long until
// the window is there, until the first rows are complete, and how long
// closing it takes while the reader is still at work. Each is the time of
// one window, reported as the benchmark's time (open) and as counters
// (first rows, closing), in milliseconds. Headless: Qt's offscreen
// platform unless the caller chose one.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include "bench/benchsetup.h"
#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "frontend/frmlistnrename.h"
#include "plugins/sourcefile.h"
#include "toolkit/application.h"
#include "toolkit/messages.h"
#include "toolkit/controls.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kSources = 10000;

double Ms(Clock::time_point from) { return std::chrono::duration<double, std::milli>(Clock::now() - from).count(); }

// A hundredth of a second of silence, as a WAVE file.
std::string TinyWave() {
    const uint32_t frames = 441, data = frames * 4;
    std::string out = "RIFF";
    auto le = [&out](uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    };
    le(36 + data, 4);
    out += "WAVEfmt ";
    le(16, 4), le(1, 2), le(2, 2), le(44100, 4), le(44100 * 4, 4), le(4, 2), le(16, 2);
    out += "data";
    le(data, 4);
    out.append(data, '\0');
    return out;
}

// The generated sources, removed with their folder when the run ends.
struct clBenchSources {
    clOwningList<clSourceFile> list;
    clString folder;
    ~clBenchSources() {
        if (!folder.IsEmpty()) DeleteFolderTree(folder);
    }
};

clOwningList<clSourceFile>& Sources() {
    static clBenchSources made;
    clOwningList<clSourceFile>& sources = made.list;
    if (sources.Count() > 0) return sources;
    clString& folder = made.folder;
    folder = GetTempFolder();
    folder.Append(clString::Formatted(u"qvbench-listrename-%s", GetProcessGuidText().text));
    MakeFolders(folder);
    std::string wave = TinyWave();
    for (int i = 0; i < kSources; ++i) {
        clString path = JoinPath(folder, clString::Formatted(u"t%05d.wav", i));
        clFile file;
        file.fileName = path;
        file.Open(clAccessWrite, clCreateAlways, false, true);
        file.Write(wave.data(), static_cast<uint32_t>(wave.size()));
        sources.Add(new clSourceFile(path));
    }
    return sources;
}

void ListRenameTenThousand(benchmark::State& state) {
    UsePrivateSettingsStore();
    if (std::getenv("QT_QPA_PLATFORM") == nullptr) PlatformSetEnvironment(u"QT_QPA_PLATFORM", u"offscreen");
    if (!ToolkitStart()) {
        state.SkipWithError("no window can be made here");
        return;
    }
    clOwningList<clSourceFile>& sources = Sources();
    double firstRows = 0, closing = 0;
    for (auto _ : state) {
        for (int i = 0; i < kSources; ++i) sources[i].level = 0;
        int32_t result = 0;
        auto started = Clock::now();
        frmListNRename form(&result, sources.entries, u"Wave", GetTempFolder(), u"", u"[title]", u"");
        if (!form.Open(nullptr)) {
            state.SkipWithError("the window could not be made");
            return;
        }
        state.SetIterationTime(Ms(started) / 1000.0);
        while (form.nextRow == 0 && Clock::now() - started < std::chrono::seconds(20)) ToolkitProcessFor(5);
        firstRows += Ms(started);
        auto closed = Clock::now();
        WindowSend(form.windowHandle, kWmClose, 0, 0);
        form.reader.Stop();
        closing += Ms(closed);
    }
    double n = static_cast<double>(state.iterations());
    state.counters["first_rows_ms"] = firstRows / n;
    state.counters["close_ms"] = closing / n;
}
BENCHMARK(ListRenameTenThousand)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
BENCHMARK_MAIN();
