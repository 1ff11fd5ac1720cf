// ParseEffectString over arbitrary option text: the list it reads must
// survive the worker and the stored form unchanged.
#include <cstddef>
#include <cstdint>

#include "foundation/commandoptions.h"
#include "plugins/effectstring.h"
#include "tests/fuzz/fuzztext.h"

namespace {

bool Same(const clEffectList& a, const clEffectList& b) {
    if (a.Count() != b.Count()) return false;
    for (int64_t i = 0; i < a.Count(); ++i) {
        if (!a[i].name.Equals(b[i].name) || !a[i].settings.Equals(b[i].settings)) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    clString text = FuzzText(data, size, u'"');
    clCommandOptions options;
    options.Parse(text);
    clEffectList list;
    ParseEffectString(options, list);
    for (bool stored : {false, true}) {
        clString form = stored ? BuildStoredEffectText(list) : BuildEffectString(list);
        clCommandOptions again;
        again.Parse(form);
        clEffectList back;
        ParseEffectString(again, back);
        if (!Same(list, back)) __builtin_trap();
    }
    return 0;
}
