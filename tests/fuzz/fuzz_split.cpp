// Split and SplitLines: the pieces joined again give back the text.
#include <cstddef>
#include <cstdint>

#include "foundation/bytebuffer.h"
#include "foundation/stringlist.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    size_t delimiterUnits = data[0] % 4;
    clString all;
    size_t units = (size - 1) / 2;
    all.SetCapacity(static_cast<int32_t>(units + 1));
    for (size_t i = 0; i < units; ++i) {
        char16_t u = static_cast<char16_t>(data[1 + 2 * i] | (data[2 + 2 * i] << 8));
        all.text[i] = u == 0 ? u'\r' : u;
    }
    all.text[units] = 0;
    all.size = static_cast<int32_t>(units + 1);
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
