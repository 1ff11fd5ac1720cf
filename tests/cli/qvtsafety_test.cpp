// What a hostile but fair user found through the real qvt, on every
// platform: outputs that replaced their sources or each other, folders
// given with "..", a worker that ends without a word, empty names, a
// number the settings can't hold. Each case failed before its fix.
#include "tests/cli/faultfixture.h"

namespace {

// A WAVE file with a chunk of its own, which the Wave encoder does not
// write again: a source replaced by its conversion no longer reads so.
std::string MarkedWave(int tone) {
    std::string wave = ToneWave(tone, 0.5);
    return Riff(FindChunk(wave, "fmt "), FindChunk(wave, "data"), Chunk("mine", "keep me"));
}

}  // namespace

// Two sources whose names make one output: neither overwrites the other,
// whatever the overwrite choice. The later one gets " (2)", and the run
// says so. (Before: "Skipping 1 file that exists already", one output.)
TEST_F(FaultTest, TwoSourcesWithOneOutputGetNamesOfTheirOwn) {
    clString first = JoinPath(src, clString(u"a"));
    clString second = JoinPath(src, clString(u"b"));
    MakeFolders(first);
    MakeFolders(second);
    WriteBytes(JoinPath(first, clString(u"song.wav")), ToneWave(1, 0.5));
    WriteBytes(JoinPath(second, clString(u"song.wav")), ToneWave(2, 0.5));
    for (const char16_t* mode : {u"skip", u"always"}) {
        DeleteFolderTree(out);
        QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                          clString(u"--overwrite"), clString(mode), clString(u"--recursive"), src});
        EXPECT_EQ(run.code, 0) << run.output;
        EXPECT_FALSE(Contains(run.output, "exist already")) << run.output;
        EXPECT_TRUE(Contains(run.output, "this one goes to")) << run.output;
        std::string one = ReadBytes(Out(u"song.wav"));
        std::string two = ReadBytes(Out(u"song (2).wav"));
        EXPECT_FALSE(one.empty());
        EXPECT_FALSE(two.empty());
        EXPECT_NE(one, two) << "both conversions are kept";
    }
}

// The default location with the source's own format: the output would be
// the source. With --overwrite always it once replaced it; now that job
// fails with a line, and the source stays as it was.
TEST_F(FaultTest, AnOutputNeverReplacesItsSource) {
    clString source = JoinPath(src, clString(u"keep.wav"));
    std::string original = MarkedWave(3);
    WriteBytes(source, original);
    QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--overwrite"),
                      clString(u"always"), source});
    EXPECT_EQ(run.code, 1) << run.output;
    EXPECT_TRUE(Contains(run.output, "it is the source file itself, which is never replaced")) << run.output;
    EXPECT_EQ(ReadBytes(source), original);
    EXPECT_EQ(CountFiles(src, u".qvtmp"), 0);
}

// "--folder x/.." is the folder above x, as everywhere else, not x; the
// folder above the sources with the sources' own names is the sources
// themselves, which stay.
TEST_F(FaultTest, FoldersWithDotsAreResolvedBeforeAnythingElse) {
    Source(u"one.wav", 0.5, 1);
    clString elsewhere = JoinPath(JoinPath(src, clString(u"..")), clString(u"converted"));
    QvtRun run =
        Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), elsewhere, src});
    EXPECT_EQ(run.code, 0) << run.output;
    EXPECT_TRUE(PathExists(JoinPath(dir.File(u"converted"), clString(u"one.wav")))) << run.output;
    EXPECT_FALSE(PathExists(JoinPath(src, clString(u"converted"))));

    clString original = JoinPath(src, clString(u"two.wav"));
    std::string bytes = MarkedWave(2);
    WriteBytes(original, bytes);
    clString up = JoinPath(JoinPath(src, clString(u"sub")), clString(u".."));
    run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), up,
               clString(u"--overwrite"), clString(u"always"), original});
    EXPECT_EQ(run.code, 1) << run.output;
    EXPECT_EQ(ReadBytes(original), bytes);
    EXPECT_FALSE(PathExists(JoinPath(src, clString(u"sub"))));
}

// Deliberately stricter than "no error line is success": a worker that
// ends before it made its output, saying nothing, fails its job.
TEST_F(FaultTest, AWorkerThatEndsWithoutItsOutputFailsItsJob) {
    Source(u"gone.wav", 0.5);
    QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                      clString(u"--effect"), clString(u"Fault Injection=exit=0")});
    EXPECT_EQ(run.code, 2) << "no file given: " << run.output;
    run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
               clString(u"--effect"), clString(u"Fault Injection=exit=0"), src});
    EXPECT_EQ(run.code, 1) << run.output;
    EXPECT_TRUE(Contains(run.output, "ConvertWorker ended before finishing the output")) << run.output;
    EXPECT_FALSE(PathExists(Out(u"gone.wav")));
}

// Deliberately unlike an empty name leaving "<folder>.wav" beside the
// folder, where every such file met: the source's own name, inside.
TEST_F(FaultTest, AnEmptyNameTakesTheSourcesNameInsideTheFolder) {
    Source(u"first.wav", 0.5, 1);
    Source(u"second.wav", 0.5, 2);
    QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                      clString(u"--naming"), clString(u"[album]"), src});
    EXPECT_EQ(run.code, 0) << run.output;
    EXPECT_TRUE(PathExists(Out(u"first.wav"))) << run.output;
    EXPECT_TRUE(PathExists(Out(u"second.wav"))) << run.output;
    clString beside = out;
    RemoveBackslashes(beside);
    beside.Append(u".wav");
    EXPECT_FALSE(PathExists(beside));
}

TEST_F(FaultTest, ANumberSettingRefusesWhatThirtyTwoBitsCantHold) {
    const clString key(u"QvtTestNumbers");
    for (const char16_t* bad : {u"4294967296", u"99999999999", u"+1", u"12x"}) {
        QvtRun run =
            Qvt({clString(u"settings"), clString(u"set"), clString(u"--number"), key, clString(u"N"), clString(bad)});
        EXPECT_EQ(run.code, 2) << run.output;
        EXPECT_TRUE(Contains(run.output, "is not a number from 0 to 4294967295")) << run.output;
    }
    EXPECT_EQ(Qvt({clString(u"settings"), clString(u"get"), key, clString(u"N")}).code, 1) << "nothing was stored";
    EXPECT_EQ(Qvt({clString(u"settings"), clString(u"set"), clString(u"--number"), key, clString(u"N"),
                   clString(u"4294967295")})
                  .code,
              0);
    QvtRun get = Qvt({clString(u"settings"), clString(u"get"), key, clString(u"N")});
    EXPECT_TRUE(Contains(get.output, "4294967295")) << get.output;
    Qvt({clString(u"settings"), clString(u"delete"), key});
}
