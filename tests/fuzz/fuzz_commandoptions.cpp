// The option parser over arbitrary UTF-16 text, from every start position
// kind, with the raw-arguments view.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/commandoptions.h"
#include "foundation/commandlinetext.h"
#include "tests/fuzz/fuzztext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    clString text = FuzzText(data + 1, size - 1, u' ');
    clCommandOptions options;
    options.Parse(text, data[0] % 8);
    if (options.keys.Count() != options.values.Count()) __builtin_trap();
    options.ParseCommandLine(text);
    clString raw = options.GetRawArguments();
    if (raw.Length() > text.Length()) __builtin_trap();
    options.Get(u"list_to_conv");
    // The Windows splitting rules, and the rebuild of an argument list,
    // which must parse back to the same option values.
    clStringList words;
    SplitCommandLine(text, words);
    clCommandOptions rebuilt;
    rebuilt.ParseCommandLine(BuildCommandLineText(clString(u"p"), words));
    return 0;
}
