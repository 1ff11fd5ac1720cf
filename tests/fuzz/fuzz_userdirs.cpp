// The user-dirs.dirs reader over arbitrary file contents.
#include <cstddef>
#include <cstdint>

#include "foundation/userdirs.h"
#include "foundation/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    clString text;
    Utf8ToString(reinterpret_cast<const char*>(data), static_cast<int64_t>(size), text);
    clString folder;
    const char16_t* keys[] = {u"XDG_MUSIC_DIR", u"XDG_DESKTOP_DIR", u"X"};
    for (auto* key : keys) {
        if (FindUserDir(text, key, clString(u"/home/u"), folder) && folder.CharAt(1) != u'/') __builtin_trap();
    }
    return 0;
}
