// Reads and writes of the settings store, one call each as the program
// makes them (open the key, one query, close), nothing cached.
#include <benchmark/benchmark.h>

#include "bench/benchsetup.h"
#include "foundation/settings.h"

namespace {

void Setup() {
    static bool done = false;
    if (done) return;
    done = true;
    UsePrivateSettingsStore();
    SetSettingNumber(42, u"NoMultiCPU");
    SetSettingText(clString(u"[origpath]\\[origfilename]"), u"LastNaming");
}

void ReadNumber(benchmark::State& state) {
    Setup();
    if (GetSettingNumber(u"NoMultiCPU") != 42) state.SkipWithError("the store did not keep the value");
    for (auto _ : state) benchmark::DoNotOptimize(GetSettingNumber(u"NoMultiCPU"));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ReadNumber);

void ReadText(benchmark::State& state) {
    Setup();
    for (auto _ : state) benchmark::DoNotOptimize(GetSettingText(u"LastNaming"));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ReadText);

void WriteNumber(benchmark::State& state) {
    Setup();
    uint32_t value = 0;
    for (auto _ : state) SetSettingNumber(++value, u"Counter");
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(WriteNumber);

void ReadOfAMissingValue(benchmark::State& state) {
    Setup();
    for (auto _ : state) benchmark::DoNotOptimize(GetSettingNumber(u"NeverWritten"));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ReadOfAMissingValue);

}  // namespace

BENCHMARK_MAIN();
