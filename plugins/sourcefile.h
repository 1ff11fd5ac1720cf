// clSourceFile: the batch's record of one source file.
//
// Threads share it without a lock by the order of writes: every field of a
// level is written before `level`, and readers read `level` first.
// The record stores the file's tags and properties as two flat tag blocks;
// tag lists are built from them when needed.
#pragma once

#include <cstdint>

#include "foundation/bytebuffer.h"
#include "foundation/clstring.h"

class clSourceFile {
public:
    clString path;                 // full path of the source
    clString chosenOutput;         // the user's own name for the output, without extension
    uint32_t excluded = 0;         // 1 when the user unchecked the row
    clByteBuffer tagBlock;         // the file's tags (none over 1024 bytes)
    clByteBuffer extraBlock;       // the decoder's properties of the file
    unsigned char facts[68] = {};  // stream facts as the decoder delivered them
    uint32_t level = 0;            // 0 nothing read, 1 size known, 2 tags and facts read
    uint64_t fileSize = 0;
    uint64_t estimatedSize = 0;  // expected output size; 0 when unknown

    explicit clSourceFile(const clString& sourcePath) : path(sourcePath) {}
};
