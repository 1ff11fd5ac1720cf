// The naming language and output paths, with the usual library rule
//   [IFCOMP]Compilations\[][album artist]\[album]\[IFMULTI]Disc [disc]\[][track] [title]
// over a realistic tag list of 25 tags.
//   Expand              ExpandNaming alone, per expansion
//   OutputPath/N        ComputeOutputPath over N examined sources whose
//                       files exist on disk (empty files in a scratch
//                       folder), per path; the time per path must not grow
//                       with N
//   BytesPerSource      what one examined source holds (its record, path,
//                       25-tag block, properties and stream facts), as the
//                       heap grows when 100,000 of them are built
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstring>
#include <memory>
#include <vector>

#include "bench/benchsetup.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/fileio.h"
#include "foundation/platform/processinfo.h"
#include "naming/expandnaming.h"
#include "naming/outputpath.h"
#include "plugins/quillotone_plugin.h"
#include "plugins/sourcefile.h"
#include "plugins/taglist.h"

namespace {

const char16_t* kRule = u"[IFCOMP]Compilations\\[][album artist]\\[album]\\[IFMULTI]Disc [disc]\\[][track] [title]";

void AddRealisticTags(clTagList& tags, int index) {
    clString title = clString::Formatted(u"Song Number %d (Extended Mix)", index);
    clString track = clString::Formatted(u"%d/12", index % 12 + 1);
    const char16_t* pairs[][2] = {{u"artist", u"The Example Orchestra"},
                                  {u"album artist", u"Various Artists"},
                                  {u"album", u"Collected Recordings, Volume Two"},
                                  {u"title", title.text},
                                  {u"track", track.text},
                                  {u"disc", u"2/3"},
                                  {u"year", u"1998"},
                                  {u"genre", u"Classical"},
                                  {u"composer", u"A. Composer"},
                                  {u"conductor", u"B. Conductor"},
                                  {u"compilation", u"1"},
                                  {u"publisher", u"Example Records"},
                                  {u"comment", u"Remastered from the original tapes"},
                                  {u"sort artist", u"Example Orchestra, The"},
                                  {u"sort album", u"Collected Recordings 2"},
                                  {u"isrc", u"XX-ABC-98-00001"},
                                  {u"bpm", u"120"},
                                  {u"lyricist", u"C. Writer"},
                                  {u"mood", u"Calm"},
                                  {u"language", u"eng"},
                                  {u"copyright", u"(c) 1998 Example"},
                                  {u"encoded by", u"Quillotone"},
                                  {u"original year", u"1975"},
                                  {u"catalog", u"EX-0042"},
                                  {u"barcode", u"0123456789012"}};
    for (const auto& pair : pairs) tags.AddTag(pair[0], pair[1]);
}

std::unique_ptr<clSourceFile> ExaminedSource(const clString& path, int index) {
    auto source = std::make_unique<clSourceFile>(path);
    clTagList tags;
    AddRealisticTags(tags, index);
    tags.SaveBlock(source->tagBlock);
    clTagList properties;
    properties.AddTag(u"Encoder", u"reference 1.4.2");
    properties.AddTag(u"Audio Quality", u"Lossless");
    properties.SaveBlock(source->extraBlock);
    qv_stream_facts facts{};
    facts.samplesPerSecond = 44100;
    facts.channels = 2;
    facts.bitsPerSample = 16;
    facts.bitrate = 1411200;
    facts.lengthMs = 215000;
    std::memcpy(source->facts, &facts, sizeof facts);
    source->level = 2;
    return source;
}

// A scratch folder with 100,000 empty source files, made once.
class SourceFiles {
public:
    static SourceFiles& Get() {
        static SourceFiles files;
        return files;
    }
    clString Path(int index) const { return JoinPath(folder, clString::Formatted(u"track%06d.flac", index)); }
    ~SourceFiles() { DeleteFolderTree(folder); }

    static constexpr int kCount = 100000;

private:
    SourceFiles() {
        folder = JoinPath(GetTempFolder(), clString::Formatted(u"qvbench-sources-%s", GetProcessGuidText().text));
        MakeFolders(folder);
        for (int i = 0; i < kCount; ++i) {
            clFileHandle handle = PlatformOpenFile(Path(i).text, clAccessWrite, 0, clCreateAlways);
            if (handle != clInvalidHandle) PlatformCloseFile(handle);
        }
    }
    clString folder;
};

void Expand(benchmark::State& state) {
    clTagList tags;
    AddRealisticTags(tags, 7);
    clString rule(kRule);
    for (auto _ : state) {
        clString name = ExpandNaming(rule, tags, nullptr);
        benchmark::DoNotOptimize(name.text);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Expand);

// One pass over the first N sources per run: the time per path is the
// figure, and it must not grow with N.
void OutputPath(benchmark::State& state) {
    UsePrivateSettingsStore();
    int count = static_cast<int>(state.range(0));
    SourceFiles& files = SourceFiles::Get();
    std::vector<std::unique_ptr<clSourceFile>> sources;
    for (int i = 0; i < count; ++i) sources.push_back(ExaminedSource(files.Path(i), i));
    clString folder = JoinPath(GetTempFolder(), clString(u"qvbench-out"));
    clString rule(kRule);
    clString extension(u".flac");
    for (auto _ : state) {
        for (const auto& source : sources) {
            clString path = ComputeOutputPath(*source, folder, rule, extension, clString(), clString());
            benchmark::DoNotOptimize(path.text);
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(OutputPath)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BytesPerSource(benchmark::State& state) {
    constexpr int kSources = 100000;
    double perSource = 0;
    for (auto _ : state) {
        struct mallinfo2 before = mallinfo2();
        std::vector<std::unique_ptr<clSourceFile>> sources;
        sources.reserve(kSources);
        for (int i = 0; i < kSources; ++i) {
            clString path = clString::Formatted(u"/home/someone/Music/Example Orchestra/Collected/track%06d.flac", i);
            sources.push_back(ExaminedSource(path, i));
        }
        struct mallinfo2 after = mallinfo2();
        perSource = static_cast<double>(after.uordblks - before.uordblks) / kSources;
    }
    state.counters["bytes_per_source"] = perSource;
}
BENCHMARK(BytesPerSource)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
