// ReadLine in its three modes (wide, bytes, bytes as UTF-8) over the same
// file contents: it must end, and every line must be shorter than the file.
#include <cstddef>
#include <cstdint>

#include "foundation/file.h"
#include "foundation/folders.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static clString path;
    static bool made = MakeTempFile(path, "fuzz");
    if (!made) return 0;
    {
        clFile out;
        out.fileName = path;
        out.Open(clAccessWrite, clCreateAlways, false, true);
        out.Write(data, static_cast<uint32_t>(size));
    }
    const bool modes[3][2] = {{true, false}, {false, false}, {false, true}};
    for (const auto& mode : modes) {
        clFile in;
        in.fileName = path;
        in.Open(clAccessRead, clOpenExisting, false, true);
        clString line;
        size_t lines = 0;
        while (in.ReadLine(line, mode[0], mode[1])) {
            if (static_cast<size_t>(line.Length()) > size || ++lines > size + 1) __builtin_trap();
        }
    }
    return 0;
}
