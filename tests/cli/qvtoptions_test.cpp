// What each option of "qvt convert" does to the run, through the real
// programs: extensions matched in any case, the core limit (at most N
// workers at once, and the stored choice), and the encoder options,
// effects, folder and naming as the workers receive them.
#include <algorithm>
#include <sstream>
#include <vector>

#include "tests/cli/faultfixture.h"

namespace {

// The most workers that ran at once, from the spans the fault effect left
// in `folder` (first block to end, in milliseconds).
int MostAtOnce(const clString& folder, int* spans) {
    std::vector<std::pair<long long, int>> edges;
    clFindFiles find(clString(u"*.span"), folder);
    *spans = 0;
    while (find.Next()) {
        std::istringstream text(ReadBytes(find.fullName));
        long long start = 0, end = 0;
        if (!(text >> start >> end)) continue;
        ++*spans;
        edges.emplace_back(start, 1);
        edges.emplace_back(end, -1);
    }
    // An end and a start at the same millisecond do not overlap.
    std::sort(edges.begin(), edges.end());
    int running = 0, most = 0;
    for (const auto& edge : edges) most = std::max(most, running += edge.second);
    return most;
}

}  // namespace

TEST_F(FaultTest, UpperCaseExtensionsAreAudioFilesNamedOrFound) {
    Source(u"TONE.WAV", 0.2, 1);
    clString sub = JoinPath(src, clString(u"Sub"));
    MakeFolders(sub);
    WriteBytes(JoinPath(sub, clString(u"Loud.Wav")), ToneWave(2, 0.2));
    WriteBytes(JoinPath(sub, clString(u"notes.TXT")), "not audio");
    QvtRun named = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                        JoinPath(src, clString(u"TONE.WAV"))});
    EXPECT_EQ(named.code, 0) << named.output;
    EXPECT_TRUE(PathExists(Out(u"TONE.wav"))) << named.output;
    DeleteFolderTree(out);
    QvtRun found = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                        clString(u"--recursive"), src});
    EXPECT_EQ(found.code, 0) << found.output;
    EXPECT_TRUE(PathExists(Out(u"TONE.wav"))) << found.output;
    EXPECT_TRUE(PathExists(Out(u"Loud.wav"))) << found.output;
    EXPECT_EQ(CountFiles(out, u"notes"), 0);
}

// --cores N: never more than N workers at once, and the choice is what the
// entry stores for the conversion ("Multi-CPU Force").
TEST_F(FaultTest, CoresLimitTheWorkersAtOnce) {
    for (int i = 0; i < 4; ++i) Source(clString::Formatted(u"t%d.wav", i).text, 0.6, i);
    for (int cores : {1, 2}) {
        clString trace = dir.File(clString::Formatted(u"trace%d", cores).text);
        MakeFolders(trace);
        std::string setting = "Fault Injection=hold=4;trace=" + StringToUtf8(trace);
        clString effect;
        Utf8ToString(setting.data(), static_cast<int64_t>(setting.size()), effect);
        QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                          clString(u"--overwrite"), clString(u"always"), clString(u"--cores"), clString(cores),
                          clString(u"--effect"), effect, src});
        EXPECT_EQ(run.code, 0) << run.output;
        int spans = 0;
        int most = MostAtOnce(trace, &spans);
        EXPECT_EQ(spans, 4) << run.output;
        EXPECT_LE(most, cores) << "with --cores " << cores;
        if (cores == 1) {
            EXPECT_EQ(most, 1);
        }
    }
}

// The encoder's options, the effects, the folder and the naming reach the
// workers: an 8-bit output, the effect's own trace, the path made.
TEST_F(FaultTest, EncoderOptionsEffectsFolderAndNamingReachTheWorkers) {
    Source(u"song.wav", 0.3, 3);
    clString trace = dir.File(u"trace");
    MakeFolders(trace);
    std::string setting = "Fault Injection=trace=" + StringToUtf8(trace);
    clString effect;
    Utf8ToString(setting.data(), static_cast<int64_t>(setting.size()), effect);
    QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--options"),
                      clString(u"-bits=\"8\""), clString(u"--effect"), effect, clString(u"--folder"), out,
                      clString(u"--naming"), clString(u"kept\\[origfilename] copy"), src});
    EXPECT_EQ(run.code, 0) << run.output;
    std::string written = ReadBytes(JoinPath(JoinPath(out, clString(u"kept")), clString(u"song copy.wav")));
    ASSERT_FALSE(written.empty()) << run.output;
    std::string format = FindChunk(written, "fmt ");
    ASSERT_GE(format.size(), 16u);
    EXPECT_EQ(static_cast<unsigned char>(format[14]), 8) << "bits per sample";
    int spans = 0;
    MostAtOnce(trace, &spans);
    EXPECT_EQ(spans, 1) << "the effect ran in the worker";
}
