// How many files convert side by side, and on which processors.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

constexpr int32_t kSlotCount = 64;

struct clSlotPlan {
    int32_t count = 1;                    // slots wanted, 1 to 64
    int32_t processors[kSlotCount] = {};  // per slot, 1-based; 0: any
};

// The smaller of the processors and the expected number of jobs, or one
// slot when the encoder's settings must not run on several cores. A
// "Multi-CPU Force" effect in `effectString` overrules all of that (the
// last one wins): one slot for each key cpu1..cpu64 it has, pinned to that
// processor, or at least one slot; its key "noally" keeps the count but
// drops the pinning. `jobEstimate` 0 means unknown.
clSlotPlan ComputeSlotCount(int32_t processorCount, bool noMultiCpu, int64_t jobEstimate, const clString& effectString);
