// Decoder "Ogg Vorbis": .ogg and .oga files, by what their first packet
// says rather than by their name. Vorbis goes through vorbisstream.h; Opus
// and FLAC in Ogg, which people save as .ogg too, through the streams of
// the Opus and FLAC decoders. A file that is not Ogg at all is left to
// libvorbisfile, for its message. No options.
#include <cstdio>
#include <cstring>
#include <string>

#include "codecs/common/flacstream.h"
#include "codecs/common/opusstream.h"
#include "codecs/common/vorbisstream.h"

namespace {

enum class Codec { kVorbis, kOpus, kFlac };

// The codec of an Ogg file's first packet: it starts after the first
// page's header (27 bytes) and its segment table.
Codec SniffOgg(const qv_char* name) {
    qvc::OwnedFile file(qvc::OpenFile(name, "rb"));
    if (file == nullptr) return Codec::kVorbis;
    unsigned char head[27 + 255 + 8] = {};
    size_t got = std::fread(head, 1, sizeof head, file.get());
    if (got < 27 || std::memcmp(head, "OggS", 4) != 0) return Codec::kVorbis;
    size_t packet = 27 + head[26];
    if (got < packet + 8) return Codec::kVorbis;
    if (std::memcmp(head + packet, "OpusHead", 8) == 0) return Codec::kOpus;
    if (std::memcmp(head + packet, "\x7F" "FLAC", 5) == 0) return Codec::kFlac;
    return Codec::kVorbis;
}

struct Decoder : qvc::DecoderBase {
    qvc::VorbisStream vorbis;
    qvc::OpusStream opus;
    qvc::FlacStream flac;
    Codec codec = Codec::kVorbis;

    Decoder() { flac.ogg = true; }

    // Calls `act` with the stream of the open file's codec.
    template <typename Act>
    decltype(auto) With(Act&& act) {
        switch (codec) {
            case Codec::kOpus: return act(static_cast<qvc::DecoderBase&>(opus), opus);
            case Codec::kFlac: return act(static_cast<qvc::DecoderBase&>(flac), flac);
            default: return act(static_cast<qvc::DecoderBase&>(vorbis), vorbis);
        }
    }
    template <typename Act>
    decltype(auto) With(Act&& act) const {
        return const_cast<Decoder*>(this)->With(std::forward<Act>(act));
    }

    void Close() override {
        vorbis.Close();
        opus.Close();
        flac.Close();
    }

    bool Open(const qv_char* name) {
        Close();
        codec = SniffOgg(name);
        return With([&](qvc::DecoderBase& base, auto& stream) {
            base.error.clear();
            bool opened = stream.Open(name);
            if (!opened) error = base.error;
            return opened;
        });
    }

    int32_t Decode(qv_audio_block* block) {
        return With([&](qvc::DecoderBase& base, auto& stream) {
            int32_t rc = stream.Decode(block);
            if (rc < 0) error = base.error;
            if (rc == 0) notes = base.notes;
            return rc;
        });
    }

    bool Rewind(uint64_t frame) {
        return With([&](qvc::DecoderBase&, auto& stream) { return stream.Rewind(frame); });
    }
    bool Format(qv_audio_format& format) const {
        return With([&](qvc::DecoderBase&, auto& stream) { return stream.Format(format); });
    }
    void Facts(qv_stream_facts& facts) const {
        With([&](qvc::DecoderBase&, auto& stream) { stream.Facts(facts); });
    }
    std::vector<qvc::Tag> Tags() const {
        return With([&](qvc::DecoderBase&, auto& stream) { return stream.Tags(); });
    }
    std::vector<qvc::Tag> Properties() const {
        return With([&](qvc::DecoderBase&, auto& stream) { return stream.Properties(); });
    }
};

struct Listed {
    const char* extension;
    const char* description;
};
const Listed kDecodes[] = {{".ogg", "Ogg Vorbis"}, {".oga", "Ogg Vorbis"}};

}  // namespace

#include "codecs/common/decoderexports.h"
