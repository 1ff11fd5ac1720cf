// Finding the decoder for a file, at each level of the lookup, with ten
// decoder libraries of three extensions each beside this program
// (bench/decoder). Figures are per file.
//   Wrapper   the wrapper already holds the library for the extension
//   Cache     the settings store names the library (extensions alternate)
//   Scan      nothing remembered: the folder is walked
//   Batch*    10,000 files of three extensions from three libraries, the
//             cache cold at the start, as a batch meets them: grouped by
//             extension (albums) or alternating on every file
#include <benchmark/benchmark.h>

#include "bench/benchsetup.h"
#include "foundation/settings.h"
#include "plugins/decodercache.h"
#include "plugins/xdll.h"

namespace {

const qv_log_record kNoLog{};

void ForgetCache() { DeleteSettingKeyTree(u"Software\\Harrowmere\\Quillotone", u"DecoderCache64"); }

// File name `index` with the extension of library `library`, suffix a-c.
clString FileName(int index, int library, int suffix) {
    return clString::Formatted(u"/music/track%05i.b%i%c", index, library, u'a' + suffix);
}

void Wrapper(benchmark::State& state) {
    UsePrivateSettingsStore();
    clQvDecoder decoder;
    int i = 0;
    for (auto _ : state) {
        if (!LoadForFile(FileName(i++, 9, 0), decoder, &kNoLog)) state.SkipWithError("no decoder found");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Wrapper);

void Cache(benchmark::State& state) {
    UsePrivateSettingsStore();
    clQvDecoder decoder;
    int i = 0;
    for (auto _ : state) {
        ++i;
        if (!LoadForFile(FileName(i, i % 10, i % 3), decoder, &kNoLog)) state.SkipWithError("no decoder found");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Cache);

void Scan(benchmark::State& state) {
    UsePrivateSettingsStore();
    clQvDecoder decoder;
    int i = 0;
    for (auto _ : state) {
        state.PauseTiming();
        ForgetCache();
        state.ResumeTiming();
        ++i;
        if (!LoadForFile(FileName(i, i % 10, i % 3), decoder, &kNoLog)) state.SkipWithError("no decoder found");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Scan);

void Batch(benchmark::State& state, bool alternate) {
    UsePrivateSettingsStore();
    const int files = 10000;
    const int libraries[3] = {0, 4, 9};
    for (auto _ : state) {
        state.PauseTiming();
        ForgetCache();
        state.ResumeTiming();
        clQvDecoder decoder;
        for (int i = 0; i < files; ++i) {
            int kind = alternate ? i % 3 : i * 3 / files;
            if (!LoadForFile(FileName(i, libraries[kind], kind), decoder, &kNoLog)) {
                state.SkipWithError("no decoder found");
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * files);
}
BENCHMARK_CAPTURE(Batch, Grouped, false)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Batch, Alternating, true)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
