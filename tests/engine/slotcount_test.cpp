#include "engine/slotcount.h"

#include <gtest/gtest.h>

TEST(SlotCount, TheSmallerOfProcessorsAndJobsUnlessTheEncoderForbids) {
    EXPECT_EQ(ComputeSlotCount(8, false, 1, clString()).count, 1);      // one file: one slot
    EXPECT_EQ(ComputeSlotCount(8, false, 3 * 1, clString()).count, 3);  // 3 multi-encoder items, 1 file
    EXPECT_EQ(ComputeSlotCount(8, false, 1000, clString()).count, 8);
    EXPECT_EQ(ComputeSlotCount(8, false, 0, clString()).count, 8);  // no estimate
    EXPECT_EQ(ComputeSlotCount(128, false, 1000, clString()).count, 64);
    EXPECT_EQ(ComputeSlotCount(8, true, 1000, clString()).count, 1);
    clSlotPlan plan = ComputeSlotCount(8, false, 1000, clString());
    for (int32_t processor : plan.processors) EXPECT_EQ(processor, 0);
}

TEST(SlotCount, MultiCpuForceOverrulesEverythingAndTheLastOneWins) {
    clSlotPlan plan = ComputeSlotCount(8, true, 1, clString(u" -dspeffect1=\"Multi-CPU Force=-cpu2=1 -cpu5=1\""));
    EXPECT_EQ(plan.count, 2);
    EXPECT_EQ(plan.processors[0], 2);
    EXPECT_EQ(plan.processors[1], 5);
    EXPECT_EQ(plan.processors[2], 0);
    // Without any cpu key: one slot, no pinning.
    plan = ComputeSlotCount(8, false, 100, clString(u" -dspeffect1=\"Multi-CPU Force=\""));
    EXPECT_EQ(plan.count, 1);
    EXPECT_EQ(plan.processors[0], 0);
    // noally keeps the count and drops the pinning; the last effect wins.
    plan = ComputeSlotCount(2, false, 100,
                            clString(u" -dspeffect1=\"Multi-CPU Force=-cpu1=1\" -dspeffect2=\"Resample=-rate=48000\""
                                     u" -dspeffect3=\"Multi-CPU Force=-cpu1=1 -cpu2=1 -cpu3=1 -noally=1\""));
    EXPECT_EQ(plan.count, 3);
    for (int32_t processor : plan.processors) EXPECT_EQ(processor, 0);
    // The name is compared exactly.
    EXPECT_EQ(ComputeSlotCount(8, false, 100, clString(u" -dspeffect1=\"multi-cpu force=-cpu1=1\"")).count, 8);
}
