// Decoder "Opus": the stream of opusstream.h, for .opus files.
#include "codecs/common/opusstream.h"

namespace {

using Decoder = qvc::OpusStream;

struct Listed {
    const char* extension;
    const char* description;
};
const Listed kDecodes[] = {{".opus", "Opus"}};

}  // namespace

#include "codecs/common/decoderexports.h"
