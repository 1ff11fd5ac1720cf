// Effect "Resample", on libsoxr at its very high quality: gives the stream
// another sample rate. Float in and out. What the resampler has ready is
// handed on in blocks of at most 65,536 frames; a block that leaves more
// is followed by the rest on the next calls, and the end of the stream
// drains the resampler's delay, so no sample is lost or added beyond the
// rate change itself.
//
// Settings:
//   -rate="N"   the output rate in Hz, 1,000 to 768,000; 44,100 when not given
#include <soxr.h>

#include <algorithm>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

namespace {

constexpr size_t kMaxFrames = 65536;

struct Effect : qvc::EffectBase {
    qvc::Owned<struct soxr, soxr_delete> resampler;
    size_t channels = 0;
    std::vector<float> pending;  // resampled, not yet handed out
    size_t pendingAt = 0;        // in samples
    std::vector<float> block;
    uint64_t produced = 0;
    bool drained = false;

    void Release() override { resampler.reset(); }

    bool Begin(qv_begin_record& record, const std::u16string& settings) {
        Release();
        if (record.format == nullptr) return true;
        qv_audio_format& format = *record.format;
        std::u16string rateText = qvc::Option(settings, u"rate");
        // Not given: the rate of most music on disc, as the settings page
        // shows it.
        long rate = rateText.empty() ? 44100 : std::atol(qvc::ToUtf8(rateText).c_str());
        if (rate < 1000 || rate > 768000) return Fail("-rate takes 1,000 to 768,000 Hz");
        channels = format.channels;
        pending.clear();
        pendingAt = 0;
        produced = 0;
        drained = false;
        qvc::UseFloat(format);
        if (static_cast<uint32_t>(rate) == format.samplesPerSecond) return true;  // blocks pass as they are
        soxr_error_t failure = nullptr;
        soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
        soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
        resampler.reset(soxr_create(format.samplesPerSecond, static_cast<double>(rate), static_cast<unsigned>(channels),
                                    &failure, &io, &quality, nullptr));
        if (resampler == nullptr || failure != nullptr) {
            return Fail("the resampler can't take this rate and channel count");
        }
        format.samplesPerSecond = static_cast<uint32_t>(rate);
        return true;
    }

    // Runs `frames` frames (or the end, for null) through the resampler
    // into `pending`.
    bool Feed(const float* samples, size_t frames) {
        if (pendingAt > 0) {
            pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(pendingAt));
            pendingAt = 0;
        }
        size_t used = 0;
        for (;;) {
            size_t start = pending.size();
            pending.resize(start + kMaxFrames * channels);
            size_t idone = 0, odone = 0;
            soxr_error_t failure =
                soxr_process(resampler.get(), samples != nullptr ? samples + used * channels : nullptr, frames - used,
                             &idone, pending.data() + start, kMaxFrames, &odone);
            pending.resize(start + odone * channels);
            if (failure != nullptr) return Fail("the resampler failed");
            used += idone;
            // Input left, or a full output buffer: there is more to get.
            if (used < frames || odone == kMaxFrames) continue;
            if (samples == nullptr && odone > 0) continue;
            return true;
        }
    }

    int32_t Pass(const qv_audio_block* in, qv_audio_block* out) {
        if (resampler == nullptr) return EffectBase::Pass(in, out);
        if (in != nullptr) {
            if (!Feed(static_cast<const float*>(in->samples), in->frames)) return -1;
        } else if (!drained) {
            if (!Feed(nullptr, 0)) return -1;
            drained = true;
        }
        size_t frames = std::min((pending.size() - pendingAt) / channels, kMaxFrames);
        if (frames == 0) return 0;
        block.assign(pending.begin() + static_cast<std::ptrdiff_t>(pendingAt),
                     pending.begin() + static_cast<std::ptrdiff_t>(pendingAt + frames * channels));
        pendingAt += frames * channels;
        out->samples = block.data();
        out->frames = static_cast<uint32_t>(frames);
        out->position = produced;
        out->flags = 0;
        produced += frames;
        return 1;
    }
};

constexpr bool kTwoPass = false;
// Its settings page.
constexpr qvc::OptionSpec kOptionSpecs[] = {
    {"rate", qvc::OptionKind::Integer, "44100", "1000..768000", "Rate (Hz)", "the output rate in Hz"},
};
}  // namespace

#define QVC_EFFECT_HAS_SPECS
#include "codecs/common/effectexports.h"
