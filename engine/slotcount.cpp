#include "engine/slotcount.h"

#include "foundation/commandoptions.h"
#include "plugins/effectstring.h"

clSlotPlan ComputeSlotCount(int32_t processorCount, bool noMultiCpu, int64_t jobEstimate,
                            const clString& effectString) {
    clSlotPlan plan;
    int64_t count = processorCount < 1 ? 1 : processorCount > kSlotCount ? kSlotCount : processorCount;
    if (noMultiCpu) count = 1;
    if (jobEstimate > 0 && jobEstimate < count) count = jobEstimate;
    clCommandOptions options;
    options.Parse(effectString);
    clEffectList effects;
    ParseEffectString(options, effects);
    for (int64_t e = 0; e < effects.Count(); ++e) {
        if (!effects[e].name.Equals(u"Multi-CPU Force")) continue;
        clCommandOptions force;
        force.Parse(effects[e].settings);
        count = 0;
        for (int32_t cpu = 1; cpu <= kSlotCount; ++cpu) {
            clString key = clString::Formatted(u"cpu%d", cpu);
            if (force.Has(key.text)) plan.processors[count++] = cpu;
        }
        if (count < 1) count = 1;
        if (force.Has(u"noally")) {
            for (int32_t& processor : plan.processors) processor = 0;
        }
    }
    plan.count = static_cast<int32_t>(count);
    return plan;
}
