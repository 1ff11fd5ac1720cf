// What the jobs of one encoder share: the batch block handed to the
// effects at the end, ids that no two running batches share (in this
// process or another), and scratch folders that never outlive a batch.
#include "engine/encoderbatch.h"

#include <gtest/gtest.h>

#include <set>

#include "foundation/bytebuffer.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/platform/thread.h"
#include "foundation/stringlist.h"
#include "plugins/taglist.h"
#include "tests/support/testfolder.h"

namespace {

clBatchFile* File(const char16_t* in, const char16_t* out, int hadErrors, const char16_t* temporary = u"") {
    auto* file = new clBatchFile;
    file->sourcePath = in;
    file->outputPath = out;
    file->hadErrors = hadErrors;
    file->temporaryOutput = temporary;
    return file;
}

std::u16string Names(const clTagList& list) {
    std::u16string names;
    for (int64_t i = 0; i < list.Count(); ++i) names += U(list[i].name) + u" ";
    return names;
}

// Reads the number a helper wrote, waiting for it to appear.
int ReadId(const clString& path) {
    for (int i = 0; i < 1000; ++i) {
        std::string text = ReadBytes(path);
        if (!text.empty() && text.back() == '\n') return std::atoi(text.c_str());
        PlatformSleep(10);
    }
    return -1;
}

}  // namespace

TEST(EncoderBatch, BlockNumbersFilesFromOneAndMarksTheFailedOnes) {
    clBatchFiles files;
    files.Add(File(u"a.wav", u"a.flac", 0));
    files.Add(File(u"b.wav", u"b.flac", 1, u"b.tmp"));
    files.Add(File(u"c.wav", u"c.flac", 0));
    clByteBuffer block;
    ASSERT_TRUE(BuildBatchBlock(files, block));
    clTagList list;
    list.LoadBlock(block.data, block.size);
    EXPECT_EQ(Names(list),
              u"file1_in file1_out file2_in file2_out file2_outtmp file2_conversionhaderrors file3_in file3_out ");
    EXPECT_EQ(U(list.GetTagValue(u"file3_out")), u"c.flac");
    EXPECT_EQ(U(list.GetTagValue(u"file2_outtmp")), u"b.tmp");
    EXPECT_NE(list.FindTag(u"file2_conversionhaderrors"), nullptr);
    EXPECT_EQ(U(list.GetTagValue(u"file2_conversionhaderrors")), u"");
}

TEST(EncoderBatch, BatchesOfTheSameMillisecondGetTheirOwnIdsAndFolders) {
    // The clock's top bit never shows in an id, and where it wraps the id
    // 0, which means "no batch", is passed over.
    const uint32_t tick = 0xFFFFFFFFu;
    auto clock = [] { return 0xFFFFFFFFu; };
    clString effects;
    clEncoderBatch first, second;
    PrepareEncoderBatch(first, effects, clString(u"none"), clString(), clock);
    PrepareEncoderBatch(second, effects, clString(u"none"), clString(), clock);
    EXPECT_EQ(first.batchId, 0x7FFFFFFF);
    EXPECT_EQ(second.batchId, 1);
    EXPECT_TRUE(PathExists(first.batchFolder));
    EXPECT_TRUE(PathExists(second.batchFolder));
    EXPECT_EQ(U(GetFileName(second.batchFolder)), U(clString::Formatted(u"Qv%d", second.batchId)));

    // Two more processes whose clocks stand at the same value.
    TestFolder dir;
    clString helper = JoinPath(GetProgramFolder(), clString(u"qv_testhelper"));
    helper.Append(PlatformExecutableSuffix());
    std::set<int> ids{first.batchId, second.batchId};
    clString outputs[2] = {dir.File(u"id1.txt"), dir.File(u"id2.txt")};
    for (const clString& output : outputs) {
        clStringList arguments;
        arguments.Add(u"batch-id");
        arguments.Add(clString(static_cast<int64_t>(tick)));
        arguments.Add(output);
        arguments.Add(u"3000");
        ASSERT_TRUE(PlatformStartProcess(helper, arguments));
    }
    for (const clString& output : outputs) ids.insert(ReadId(output));
    EXPECT_EQ(ids.size(), 4u);
    EXPECT_EQ(ids, (std::set<int>{0x7FFFFFFF, 1, 2, 3}));
}

TEST(EncoderBatch, ScratchFoldersGoAtTheEndAndWithACancelledBatch) {
    clString effects;
    clString kept;
    {
        clEncoderBatch batch;
        PrepareEncoderBatch(batch, effects, clString(u"none"), clString(), PlatformTickCount);
        kept = batch.batchFolder;
        WriteBytes(JoinPath(kept, clString(u"scratch.bin")), "effect data");
        ASSERT_TRUE(PathExists(kept));
    }  // never reached its end
    EXPECT_FALSE(PathExists(kept));

    clEncoderBatch batch;
    PrepareEncoderBatch(batch, effects, clString(u"none"), clString(), PlatformTickCount);
    kept = batch.batchFolder;
    clBatchFiles files;
    RunBatchEnd(batch, files);
    EXPECT_FALSE(PathExists(kept));
    EXPECT_EQ(batch.batchId, 0);
}

// Nothing in the program sets `stripEffects`, so this reaches the branch
// by hand: with it, an encoder that is not lossless loses the ReplayGain
// effects (their first settings kept) and every encoder but "Test
// Conversion" the verification; "[ReplayGain]" keeps ReplayGain. Without
// it the chain stays whole. The encoder's required effect comes last.
TEST(EncoderBatch, StrippingTakesReplayGainAndVerificationOutOnlyWhenAsked) {
    const clString chain(
        u" -dspeffect1=\"ReplayGain=-mode={qt}album{qt}\" -dspeffect2=\"Resample=-rate=48000\""
        u" -dspeffect3=\"Verify Output Integrity=\" -dspeffect4=\"ReplayGain=-second\"");
    {
        clEncoderBatch batch;
        clString effects(chain);
        PrepareEncoderBatch(batch, effects, clString(u"Zeta"), clString(), PlatformTickCount);
        EXPECT_EQ(U(effects), U(chain) + u" -dspeffect5=\"Bit Depth=-bits=16\"") << "left whole";
        EXPECT_FALSE(batch.verifyRequested);
        EXPECT_EQ(U(batch.replayGainOptions), u"");
    }
    {
        clEncoderBatch batch;
        batch.stripEffects = true;
        clString effects(chain);
        PrepareEncoderBatch(batch, effects, clString(u"Zeta"), clString(), PlatformTickCount);
        EXPECT_EQ(U(effects), u" -dspeffect1=\"Resample=-rate=48000\" -dspeffect2=\"Bit Depth=-bits=16\"");
        EXPECT_EQ(U(batch.replayGainOptions), u"-mode=\"album\"");
        EXPECT_TRUE(batch.verifyRequested);
        EXPECT_EQ(U(batch.dspEffects), U(effects));
    }
    {
        clEncoderBatch batch;
        batch.stripEffects = true;
        clString effects(chain);
        PrepareEncoderBatch(batch, effects, clString(u"[ReplayGain]"), clString(), PlatformTickCount);
        EXPECT_EQ(U(batch.replayGainOptions), u"");
        EXPECT_NE(U(effects).find(u"ReplayGain=-mode"), std::u16string::npos);
        EXPECT_EQ(U(effects).find(u"Verify Output Integrity"), std::u16string::npos);
    }
}
