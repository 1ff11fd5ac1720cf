// Effect "Bit Depth": gives the stream a number of bits per sample. Going
// down (from more bits, or from float) adds triangular (TPDF) dither of
// one step peak to peak before rounding, so the error is noise rather than
// distortion; going up only widens. The dither is seeded the same for
// every file, so a conversion repeats exactly.
//
// Settings:
//   -bits="8|16|24|32"   the output depth, 16 when not given
//   -dither="0"          round without dither
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

namespace {

struct Effect : qvc::EffectBase {
    int bits = 16;
    bool dither = true;
    bool isFloat = false;
    int inBits = 32;
    bool reducing = false;
    uint64_t state = 0;
    std::vector<int32_t> buffer;
    uint16_t channels = 0;

    // Uniform in [0, 1).
    double Random() {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return static_cast<double>(state >> 11) * (1.0 / 9007199254740992.0);
    }

    bool Begin(qv_begin_record& record, const std::u16string& settings) {
        if (record.format == nullptr) return true;
        qv_audio_format& format = *record.format;
        std::u16string wanted = qvc::Option(settings, u"bits");
        bits = wanted.empty() ? 16 : std::atoi(qvc::ToUtf8(wanted).c_str());
        if (bits != 8 && bits != 16 && bits != 24 && bits != 32) return Fail("-bits takes 8, 16, 24 or 32");
        dither = qvc::Option(settings, u"dither") != u"0";
        isFloat = format.sampleType == QV_SAMPLES_FLOAT32;
        inBits = isFloat ? 32 : format.validBits;
        reducing = isFloat || inBits > bits;
        state = 0x9E3779B97F4A7C15ull;
        channels = format.channels;
        format.acceptedTypes = format.sampleType;  // either kind, as it comes
        format.sampleType = QV_SAMPLES_INT32;
        format.validBits = static_cast<uint16_t>(bits);
        return true;
    }

    int32_t Pass(const qv_audio_block* in, qv_audio_block* out) {
        if (in == nullptr) return 0;
        if (!reducing) return EffectBase::Pass(in, out);  // samples stay; the depth is only relabelled
        const size_t count = static_cast<size_t>(in->frames) * channels;
        buffer.resize(count);
        const double top = std::ldexp(1.0, bits - 1) - 1, bottom = -std::ldexp(1.0, bits - 1);
        const double scale = isFloat ? std::ldexp(1.0, bits - 1) : std::ldexp(1.0, bits - 32);
        const int shift = 32 - bits;
        for (size_t i = 0; i < count; ++i) {
            double v = isFloat ? static_cast<const float*>(in->samples)[i] * scale
                               : static_cast<const int32_t*>(in->samples)[i] * scale;
            if (dither) v += Random() - Random();
            v = std::clamp(std::floor(v + 0.5), bottom, top);  // halves up, as the encoders round
            buffer[i] = static_cast<int32_t>(static_cast<uint32_t>(static_cast<int64_t>(v)) << shift);
        }
        *out = *in;
        out->samples = buffer.data();
        return 1;
    }
};

constexpr bool kTwoPass = false;
// Its settings page.
constexpr qvc::OptionSpec kOptionSpecs[] = {
    {"bits", qvc::OptionKind::Choice, "16", "8=8-bit,16=16-bit,24=24-bit,32=32-bit", "Output depth",
     "the output depth"},
    {"dither", qvc::OptionKind::Choice, "", "=Triangular dither,0=Round without dither", "Reducing",
     "0: round without dither; triangular dither when not given"},
};
}  // namespace

#define QVC_EFFECT_HAS_SPECS
#include "codecs/common/effectexports.h"
