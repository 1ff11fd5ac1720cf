// CleanPath in both syntaxes, with and without the limit, on arbitrary
// text: it must end, stay below the root it was given, and honour the
// limit when asked (Windows: under 260 units once the name allows it).
#include <cstddef>
#include <cstdint>

#include "foundation/asciifold.h"
#include "foundation/cleanpath.h"
#include "tests/fuzz/fuzztext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    clString tail = FuzzText(data + 1, size - 1, u'x');
    uint8_t flags = data[0];
    bool posix = (flags & 1) != 0;
    clCleanPathOptions options;
    options.limitLength = (flags & 2) != 0;
    options.hasRoot = (flags & 4) != 0;
    options.table = (flags & 8) != 0 ? clAsciiFoldTable : nullptr;
    clString path(posix ? u"/music/" : u"C:\\Music\\", tail.text);
    CleanPath(path, options, posix ? PosixPathSyntax() : WindowsPathSyntax());
    if (options.hasRoot && path.Compare(posix ? u"/" : u"C:\\", -1) != 0) __builtin_trap();
    return 0;
}
