// Split and SplitLines: the pieces joined again give back the text.
#include <cstddef>
#include <cstdint>

#include "foundation/bytebuffer.h"
#include "foundation/stringlist.h"
#include "tests/fuzz/fuzztext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    size_t delimiterUnits = data[0] % 4;
    clString all = FuzzText(data + 1, size - 1, u'\r');
    clString delimiter = all.Mid(1, static_cast<int32_t>(delimiterUnits));
    clString text = all.Mid(static_cast<int32_t>(delimiterUnits) + 1, all.Length());
    clStringList list;
    list.Split(text.text, delimiter.text);
    if (!delimiter.IsEmpty() && !text.IsEmpty()) {
        clString joined;
        for (int64_t i = 0; i < list.Count(); ++i) {
            if (i > 0) joined.AppendGrowing(delimiter);
            joined.AppendGrowing(list[i]);
        }
        if (!joined.Equals(text)) __builtin_trap();
    }
    list.SplitLines(text);
    clByteBuffer block;
    list.PackMultiString(block);
    clStringList back;
    back.UnpackMultiString(block.data, block.size);
    return 0;
}
