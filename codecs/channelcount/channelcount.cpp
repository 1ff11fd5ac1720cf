// Effect "Channel Count": mixes the stream to another number of channels.
// Channels are known by their WAVE speaker positions (the stream's channel
// mask, or the default layout of its count). A speaker the output has gets
// its channel as it is; a side or back speaker it lacks goes to the other
// of the two; anything else folds into the front pair with the standard
// coefficients (centre and surrounds at -3 dB, the LFE left out), or into
// the one channel of a mono output. A mono input goes to the centre when
// the output has one, else to both front channels. A downmix is scaled
// down as a whole so that no output can clip.
//
// Settings:
//   -channels="1..8"   the output's channel count
//   -max="1..8"        mix down only a stream with more channels than this
#include <cmath>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

namespace {

// WAVE speaker positions.
constexpr uint32_t FL = 0x1, FR = 0x2, FC = 0x4, LFE = 0x8, BL = 0x10, BR = 0x20, FLC = 0x40, FRC = 0x80, BC = 0x100,
                   SL = 0x200, SR = 0x400;

uint32_t DefaultMask(int channels) {
    static const uint32_t kMasks[9] = {0,
                                       FC,
                                       FL | FR,
                                       FL | FR | FC,
                                       FL | FR | BL | BR,
                                       FL | FR | FC | BL | BR,
                                       FL | FR | FC | LFE | BL | BR,
                                       FL | FR | FC | LFE | BC | SL | SR,
                                       FL | FR | FC | LFE | BL | BR | SL | SR};
    return channels >= 1 && channels <= 8 ? kMasks[channels] : 0;
}

// The speakers of a layout in channel order.
std::vector<uint32_t> Speakers(uint32_t mask) {
    std::vector<uint32_t> out;
    for (uint32_t bit = 1; bit != 0 && bit <= 0x20000; bit <<= 1) {
        if ((mask & bit) != 0) out.push_back(bit);
    }
    return out;
}

int Count(const std::u16string& text) {
    if (text.size() != 1 || text[0] < u'1' || text[0] > u'8') return -1;
    return text[0] - u'0';
}

// matrix[out * inCount + in]
std::vector<float> MixMatrix(const std::vector<uint32_t>& in, const std::vector<uint32_t>& out) {
    const float kHalfPower = 0.70710678f;
    std::vector<float> m(in.size() * out.size(), 0.0f);
    auto index = [&out](uint32_t speaker) {
        for (size_t o = 0; o < out.size(); ++o) {
            if (out[o] == speaker) return static_cast<int>(o);
        }
        return -1;
    };
    auto add = [&](uint32_t speaker, size_t i, float weight) {
        int o = index(speaker);
        if (o < 0) return false;
        m[static_cast<size_t>(o) * in.size() + i] += weight;
        return true;
    };
    const bool monoOut = out.size() == 1;
    for (size_t i = 0; i < in.size(); ++i) {
        uint32_t s = in[i];
        if (add(s, i, 1.0f)) continue;
        if (in.size() == 1) {  // mono: centre, else both fronts
            add(FL, i, 1.0f);
            add(FR, i, 1.0f);
            continue;
        }
        if (s == LFE) continue;
        const uint32_t partner = s == SL ? BL : s == BL ? SL : s == SR ? BR : s == BR ? SR : 0;
        if (partner != 0 && add(partner, i, 1.0f)) continue;
        float left = 0, right = 0;
        if (s == FL || s == FLC) {
            left = 1;
        } else if (s == FR || s == FRC) {
            right = 1;
        } else if (s == FC) {
            left = right = kHalfPower;
        } else if (s == BL || s == SL) {
            left = kHalfPower;
        } else if (s == BR || s == SR) {
            right = kHalfPower;
        } else {  // the back centre and the rarer positions
            left = right = 0.5f;
        }
        if (monoOut) {
            add(out[0], i, (left + right) * 0.5f);
        } else {
            add(FL, i, left);
            add(FR, i, right);
        }
    }
    if (out.size() < in.size()) {
        float largest = 0;
        for (size_t o = 0; o < out.size(); ++o) {
            float sum = 0;
            for (size_t i = 0; i < in.size(); ++i) sum += std::fabs(m[o * in.size() + i]);
            largest = std::max(largest, sum);
        }
        if (largest > 1.0f) {
            for (float& w : m) w /= largest;
        }
    }
    return m;
}

struct Effect : qvc::EffectBase {
    bool mixing = false;
    size_t inCount = 0, outCount = 0;
    std::vector<float> matrix;
    std::vector<float> buffer;

    bool Begin(qv_begin_record& record, const std::u16string& settings) {
        mixing = false;
        if (record.format == nullptr) return true;
        qv_audio_format& format = *record.format;
        std::u16string exact = qvc::Option(settings, u"channels"), most = qvc::Option(settings, u"max");
        int wanted = format.channels;
        if (!exact.empty()) {
            wanted = Count(exact);
            if (wanted < 0) return Fail("-channels takes 1 to 8");
        } else if (!most.empty()) {
            int limit = Count(most);
            if (limit < 0) return Fail("-max takes 1 to 8");
            if (format.channels > limit) wanted = limit;
        }
        if (wanted == format.channels) return true;  // nothing to do: blocks pass as they are
        if (format.channels < 1 || format.channels > 18) return Fail("the stream has no channels to mix");
        uint32_t inMask = format.channelMask;
        if (inMask == 0 || static_cast<int>(Speakers(inMask).size()) != format.channels) {
            inMask = DefaultMask(format.channels);
        }
        std::vector<uint32_t> in = Speakers(inMask);
        if (in.size() != format.channels) return Fail("the stream's channel layout is not known");
        std::vector<uint32_t> out = Speakers(DefaultMask(wanted));
        matrix = MixMatrix(in, out);
        inCount = in.size();
        outCount = out.size();
        mixing = true;
        qvc::UseFloat(format);
        format.channels = static_cast<uint16_t>(wanted);
        format.channelMask = 0;
        return true;
    }

    int32_t Pass(const qv_audio_block* in, qv_audio_block* out) {
        if (!mixing) return EffectBase::Pass(in, out);
        if (in == nullptr) return 0;
        const auto* samples = static_cast<const float*>(in->samples);
        buffer.resize(static_cast<size_t>(in->frames) * outCount);
        for (size_t f = 0; f < in->frames; ++f) {
            const float* frame = samples + f * inCount;
            for (size_t o = 0; o < outCount; ++o) {
                const float* row = matrix.data() + o * inCount;
                float sum = 0;
                for (size_t i = 0; i < inCount; ++i) sum += row[i] * frame[i];
                buffer[f * outCount + o] = sum;
            }
        }
        *out = *in;
        out->samples = buffer.data();
        return 1;
    }
};

constexpr bool kTwoPass = false;
// Its settings page.
constexpr qvc::OptionSpec kOptionSpecs[] = {
    {"channels", qvc::OptionKind::Choice, "",
     "=As the source,1=1 (mono),2=2 (stereo),3=3,4=4,5=5,6=6 (5.1),7=7,8=8 (7.1)", "Channels",
     "the output's channel count"},
    {"max", qvc::OptionKind::Choice, "", "=No limit,1=1 (mono),2=2 (stereo),3=3,4=4,5=5,6=6 (5.1),7=7,8=8 (7.1)",
     "At most", "mix down only a stream with more channels than this"},
};
}  // namespace

#define QVC_EFFECT_HAS_SPECS
#include "codecs/common/effectexports.h"
