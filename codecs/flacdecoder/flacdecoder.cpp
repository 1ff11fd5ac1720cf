// Decoder "FLAC": the stream of flacstream.h, for native FLAC files.
#include "codecs/common/flacstream.h"

namespace {

using Decoder = qvc::FlacStream;

struct Listed {
    const char* extension;
    const char* description;
};
const Listed kDecodes[] = {{".flac", "FLAC"}};

}  // namespace

#include "codecs/common/decoderexports.h"
