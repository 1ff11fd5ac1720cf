// Faults met through the real qvt on every platform: a worker flooding its
// pipes, a source deleted between examining and converting, and two runs
// at once into one folder.
#include <future>

#include "tests/cli/faultfixture.h"

TEST_F(FaultTest, AWorkerFloodingItsPipesEndsAsAFailedJobWithItsLogCut) {
    Source(u"chatty.wav", 1.0);
    QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                      clString(u"--effect"), Fault(0, 100), src});
    // Standard error carried lines, so the job failed, and the log holds
    // what the limit keeps, not 100 MB.
    EXPECT_EQ(run.code, 1) << run.output.substr(0, 2000);
    EXPECT_TRUE(Contains(run.output, "flood flood")) << run.output.substr(0, 2000);
    EXPECT_TRUE(Contains(run.output, "[further output of this job was cut]")) << run.output.substr(0, 2000);
    EXPECT_LT(run.output.size(), 1000000u);
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}

TEST_F(FaultTest, ASourceDeletedBeforeItsTurnFailsAloneAndVisibly) {
    Source(u"a first.wav", 2.0, 1);
    clString second = Source(u"b second.wav", 1.0, 2);
    std::future<QvtRun> qvt = std::async(std::launch::async, [&] {
        return Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                    clString(u"--cores"), clString(u"1"), clString(u"--effect"), Fault(10), src});
    });
    // The first file is mid-conversion, on the only core; the second was
    // examined and waits.
    ASSERT_NE(WaitForWorker(qvt), 0) << qvt.get().output;
    EXPECT_TRUE(DeleteFileEx(second));
    QvtRun run = qvt.get();
    EXPECT_EQ(run.code, 1) << run.output;
    EXPECT_TRUE(PathExists(Out(u"a first.wav"))) << run.output;
    EXPECT_FALSE(PathExists(Out(u"b second.wav")));
    EXPECT_TRUE(Contains(run.output, "Unable to open source file")) << run.output;
    EXPECT_TRUE(Contains(run.output, "b second.wav")) << run.output;
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}

TEST_F(FaultTest, TwoRunsIntoOneFolderCorruptNothingAndKeepTheirOwnOverwriteRules) {
    const int kFiles = 6;
    for (int i = 0; i < kFiles; ++i) Source(clString::Formatted(u"track %d.wav", i).text, 1.5, i);
    // What one run alone makes: the Wave encoder is deterministic.
    clString alone = dir.File(u"alone");
    ASSERT_EQ(Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), alone, src}).code,
              0);

    auto both = [&](const char16_t* first, const char16_t* second, QvtRun& a, QvtRun& b) {
        std::thread one([&] {
            a = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                     clString(u"--overwrite"), clString(first), clString(u"--effect"), Fault(2), src},
                    u"a.log");
        });
        std::thread two([&] {
            b = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                     clString(u"--overwrite"), clString(second), clString(u"--effect"), Fault(2), src},
                    u"b.log");
        });
        one.join();
        two.join();
    };
    QvtRun a, b;
    both(u"skip", u"always", a, b);
    EXPECT_EQ(a.code, 0) << a.output;
    EXPECT_EQ(b.code, 0) << b.output;
    for (int i = 0; i < kFiles; ++i) {
        clString name = clString::Formatted(u"track %d.wav", i);
        EXPECT_EQ(ReadBytes(JoinPath(out, name)), ReadBytes(JoinPath(alone, name))) << name.ToUtf8();
    }
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);

    // Now every output exists. A file the user changed stays with two
    // runs that skip; with one that overwrites, it becomes whole again.
    WriteBytes(Out(u"track 3.wav"), "mine");
    both(u"skip", u"skip", a, b);
    EXPECT_EQ(ReadBytes(Out(u"track 3.wav")), "mine") << a.output << b.output;
    EXPECT_TRUE(Contains(a.output, "exist already")) << a.output;
    both(u"skip", u"always", a, b);
    EXPECT_EQ(ReadBytes(Out(u"track 3.wav")), ReadBytes(JoinPath(alone, clString(u"track 3.wav"))));
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}
