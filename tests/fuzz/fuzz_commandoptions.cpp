// The option parser over arbitrary UTF-16 text, from every start position
// kind, with the raw-arguments view.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "engine/commandoptions.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    clString text;
    size_t units = (size - 1) / 2;
    text.SetCapacity(static_cast<int32_t>(units + 1));
    for (size_t i = 0; i < units; ++i) {
        char16_t u = static_cast<char16_t>(data[1 + 2 * i] | (data[2 + 2 * i] << 8));
        text.text[i] = u == 0 ? u' ' : u;
    }
    text.text[units] = 0;
    text.size = static_cast<int32_t>(units + 1);
    clCommandOptions options;
    options.Parse(text, data[0] % 8);
    if (options.keys.Count() != options.values.Count()) __builtin_trap();
    options.ParseCommandLine(text);
    clString raw = options.GetRawArguments();
    if (raw.Length() > text.Length()) __builtin_trap();
    options.Get(u"list_to_conv");
    return 0;
}
