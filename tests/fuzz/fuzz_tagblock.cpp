// The tag block reader over arbitrary bytes: it must stop, and what it
// read must write back to a block that reads the same again.
#include <cstddef>
#include <cstdint>

#include "plugins/taglist.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    clTagList list;
    list.LoadBlock(data, size);
    clByteBuffer block;
    if (!list.SaveBlock(block)) return 0;
    clTagList again;
    again.LoadBlock(block.data, block.size);
    if (again.Count() > list.Count()) __builtin_trap();
    for (int64_t i = 0; i < again.Count(); ++i) {
        if (!again[i].value.Equals(list[i].value) || again[i].binary.size != list[i].binary.size) __builtin_trap();
    }
    return 0;
}
