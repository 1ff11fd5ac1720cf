// Effect "Volume Normalize", in two passes: the analysis pass measures the
// file, the live pass applies one gain to all of it. Float in and out.
// The gain never lifts the file's highest sample above full scale, so a
// loudness target on a quiet, peaky file stops where it would clip.
//
// Settings:
//   -mode="peak|loudness"   peak: the highest sample reaches the target;
//                           loudness: the EBU R128 integrated loudness
//                           does. peak when not given
//   -target="dB"            dBFS for peak (-1 when not given), LUFS for
//                           loudness (-23 when not given)
#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

namespace {

// libebur128 frees a meter through a pointer to the handle.
void DestroyMeter(ebur128_state* meter) { ebur128_destroy(&meter); }

struct Effect : qvc::EffectBase {
    bool loudnessMode = false;
    double target = -1.0;
    qvc::Owned<ebur128_state, DestroyMeter> meter;
    size_t channels = 0;
    float peak = 0;
    float gain = 1.0f;
    bool analysed = false;  // blocks of an analysis pass came in
    std::vector<float> buffer;

    void Release() override { meter.reset(); }

    bool Begin(qv_begin_record& record, const std::u16string& settings) {
        if (record.format == nullptr) return true;
        qv_audio_format& format = *record.format;
        std::u16string mode = qvc::Option(settings, u"mode");
        if (!mode.empty() && mode != u"peak" && mode != u"loudness") return Fail("-mode takes peak or loudness");
        loudnessMode = mode == u"loudness";
        std::u16string targetText = qvc::Option(settings, u"target");
        std::string targetBytes = qvc::ToUtf8(targetText);
        char* end = nullptr;
        target = targetText.empty() ? (loudnessMode ? -23.0 : -1.0) : std::strtod(targetBytes.c_str(), &end);
        if ((!targetText.empty() && *end != 0) || target > 0 || target < -70) return Fail("-target takes -70 to 0 dB");
        channels = format.channels;
        qvc::UseFloat(format);
        if (analysed) {
            // Begun again for the live pass, after the analysis.
            ComputeGain();
            analysed = false;
            return true;
        }
        peak = 0;
        gain = 1.0f;
        Release();
        if (loudnessMode) {
            meter.reset(ebur128_init(static_cast<unsigned>(channels), format.samplesPerSecond, EBUR128_MODE_I));
            if (meter == nullptr) return Fail("the loudness meter can't take this rate and channel count");
        }
        return true;
    }

    bool Analyse(const qv_audio_block& in) {
        analysed = true;
        const auto* samples = static_cast<const float*>(in.samples);
        for (size_t i = 0; i < in.frames * channels; ++i) peak = std::max(peak, std::fabs(samples[i]));
        if (meter != nullptr && ebur128_add_frames_float(meter.get(), samples, in.frames) != EBUR128_SUCCESS) {
            return Fail("the loudness meter failed");
        }
        return true;
    }

    void ComputeGain() {
        double db = 0;
        if (loudnessMode) {
            double loudness = -HUGE_VAL;
            if (meter != nullptr) ebur128_loudness_global(meter.get(), &loudness);
            db = std::isfinite(loudness) ? target - loudness : 0.0;  // silence stays silence
        } else {
            db = peak > 0 ? target - 20.0 * std::log10(peak) : 0.0;
        }
        double limit = peak > 0 ? -20.0 * std::log10(peak) : 0.0;
        gain = static_cast<float>(std::pow(10.0, std::min(db, limit) / 20.0));
        Release();
    }

    int32_t Pass(const qv_audio_block* in, qv_audio_block* out) {
        if (in == nullptr) return 0;
        const auto* samples = static_cast<const float*>(in->samples);
        buffer.resize(static_cast<size_t>(in->frames) * channels);
        for (size_t i = 0; i < buffer.size(); ++i) buffer[i] = samples[i] * gain;
        *out = *in;
        out->samples = buffer.data();
        return 1;
    }
};

constexpr bool kTwoPass = true;
// Its settings page.
constexpr qvc::OptionSpec kOptionSpecs[] = {
    {"mode", qvc::OptionKind::Choice, "peak", "peak=Peak level,loudness=Loudness (EBU R128)", "Normalize by",
     "peak or loudness"},
    {"target", qvc::OptionKind::Decimal, "", "-70..0", "Target (dB)",
     "dBFS for peak, LUFS for loudness; -1 and -23 when not given"},
};
}  // namespace

#define QVC_EFFECT_HAS_SPECS
#include "codecs/common/effectexports.h"
