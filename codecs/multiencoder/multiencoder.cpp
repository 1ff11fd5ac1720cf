// Encoder "[Multi Encoder]": a name to choose and a place for settings.
// Its option string holds the items -enc1="Encoder=options",
// -enc2="...", ... (double quotes inside written as {mqt}); the front end
// makes one job per source and item, each converted by the item's own
// encoder, so this library never encodes. It has no extension of its own.
#include <string>

#include "codecs/common/codecsupport.h"

namespace {

struct Encoder : qvc::EncoderBase {
    bool Begin(qv_encoder_begin_record&) {
        error = u"[Multi Encoder] converts through the encoders of its items; choose one of them";
        return false;
    }
    bool Encode(const qv_audio_block&) { return false; }
    bool End(const qv_encoder_end_record&) { return true; }
};

constexpr const char* kExtension = "";
// What "qvt plugins" shows of the options (see the top of this file).
constexpr qvc::OptionTable kOptions{
    nullptr, 0,
    "-enc1=\"Encoder=options\" -enc2=\"...\" ...   one item per encoder, in order;\n"
    "                                          double quotes inside written as {mqt}\n"};
constexpr bool kLossless = false;
constexpr const char* kRequiredEffect = nullptr;
uint64_t EstimatedSize(uint64_t, const qv_stream_facts*) { return 0; }

}  // namespace

// Each item has its own folder and naming rule.
#define QVC_NO_OUTPUT_LOCATION
#include "codecs/common/encoderexports.h"
