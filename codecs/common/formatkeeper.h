// Keeps a decoded stream in one format when the file changes its own on
// the way (an MP3 joined from two encodings, a FLAC whose frames change
// their rate): a stream's format is fixed at Open, so the later audio is
// mapped to the first channel count and resampled to the first rate, with
// libsoxr as the Resample effect uses it. Audio in the first format passes
// untouched, bit for bit. Header-only, for decoders that link libsoxr.
#pragma once

#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>
#include <vector>

#include "codecs/common/codecsupport.h"

namespace qvc {

// T is float (full scale +-1) or int32_t (left-justified, `validBits`
// deep: what leaves the resampler is rounded back to that depth).
template <typename T>
class FormatKeeper {
public:
    void Start(uint32_t rate, int channels, int validBits = 32) {
        resampler.reset();
        keptRate = currentRate = rate;
        keptChannels = currentChannels = channels;
        bits = validBits;
        changes.clear();
    }

    // Appends `frames` frames of `samples`, in the format they came in, to
    // `out` in the kept one. `at` is the stream position in kept frames,
    // for the note. False when the resampler fails (`error` says why).
    bool Put(const T* samples, size_t frames, uint32_t rate, int channels, int64_t at, std::vector<T>& out,
             std::u16string& error) {
        if (rate == 0 || channels <= 0) {
            error = FromAscii("the stream names a format it can't have");
            return false;
        }
        if (rate != currentRate || channels != currentChannels) {
            if (!Flush(out, error)) return false;
            NoteChange(rate, channels, at);
            currentRate = rate;
            currentChannels = channels;
            if (rate != keptRate && !Create(error)) return false;
        }
        if (rate == keptRate && channels == keptChannels) {
            out.insert(out.end(), samples, samples + frames * static_cast<size_t>(channels));
            return true;
        }
        const T* mapped = samples;
        if (channels != keptChannels) {
            Map(samples, frames, channels);
            mapped = remapped.data();
        }
        if (rate == keptRate) {
            out.insert(out.end(), mapped, mapped + frames * static_cast<size_t>(keptChannels));
            return true;
        }
        return Resample(mapped, frames, out, error);
    }

    // True when audio in this format can skip Put: it is the kept format
    // and nothing of another is in the resampler.
    bool Passes(uint32_t rate, int channels) const {
        return rate == keptRate && channels == keptChannels && currentRate == keptRate &&
               currentChannels == keptChannels;
    }

    // The resampler's tail at the end of the stream.
    bool Finish(std::vector<T>& out, std::u16string& error) { return Flush(out, error); }

    // One line per change, for the decoder's notes.
    const std::vector<std::string>& Changes() const { return changes; }

private:
    bool Create(std::u16string& error) {
        soxr_error_t failure = nullptr;
        soxr_datatype_t type = std::is_same_v<T, float> ? SOXR_FLOAT32_I : SOXR_INT32_I;
        soxr_io_spec_t io = soxr_io_spec(type, type);
        soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
        resampler.reset(soxr_create(currentRate, keptRate, static_cast<unsigned>(keptChannels), &failure, &io,
                                    &quality, nullptr));
        if (resampler == nullptr || failure != nullptr) {
            error = FromBytes(std::string("the resampler can't start: ") + (failure != nullptr ? failure : "?"));
            return false;
        }
        return true;
    }

    // A mono stream is spread over every kept channel; more channels than
    // kept are mixed down to mono first.
    void Map(const T* samples, size_t frames, int channels) {
        remapped.resize(frames * static_cast<size_t>(keptChannels));
        for (size_t i = 0; i < frames; ++i) {
            const T* frame = samples + i * static_cast<size_t>(channels);
            T* to = remapped.data() + i * static_cast<size_t>(keptChannels);
            if (channels == 1 || keptChannels == 1) {
                double sum = 0;
                for (int c = 0; c < channels; ++c) sum += static_cast<double>(frame[c]);
                T mono = static_cast<T>(std::is_same_v<T, float> ? sum / channels : std::round(sum / channels));
                std::fill(to, to + keptChannels, mono);
            } else {
                // Neither is mono: the channels both have keep their place.
                for (int c = 0; c < keptChannels; ++c) to[c] = c < channels ? frame[c] : T(0);
            }
        }
    }

    bool Resample(const T* samples, size_t frames, std::vector<T>& out, std::u16string& error) {
        const size_t channels = static_cast<size_t>(keptChannels);
        size_t used = 0;
        do {
            size_t room = static_cast<size_t>(static_cast<double>(frames - used) * keptRate / currentRate) + 1024;
            size_t base = out.size();
            out.resize(base + room * channels);
            size_t taken = 0;
            size_t made = 0;
            soxr_error_t failure = soxr_process(resampler.get(), samples != nullptr ? samples + used * channels : nullptr,
                                                frames - used, &taken, out.data() + base, room, &made);
            out.resize(base + made * channels);
            if (failure != nullptr) {
                error = FromBytes(std::string("the resampler failed: ") + failure);
                return false;
            }
            Quantise(out.data() + base, made * channels);
            used += taken;
            if (samples == nullptr && made == 0) break;  // the tail is out
        } while (used < frames || samples == nullptr);
        return true;
    }

    bool Flush(std::vector<T>& out, std::u16string& error) {
        if (resampler == nullptr) return true;
        bool ok = Resample(nullptr, 0, out, error);
        resampler.reset();
        return ok;
    }

    // Integers leave the resampler with bits below the stream's depth:
    // rounded to the nearest step of that depth, kept in range.
    void Quantise(T* samples, size_t count) const {
        if constexpr (std::is_same_v<T, int32_t>) {
            if (bits >= 32) return;
            const int64_t step = int64_t{1} << (32 - bits);
            const int64_t highest = int64_t{INT32_MAX} - step + 1;
            for (size_t i = 0; i < count; ++i) {
                int64_t v = static_cast<int64_t>(samples[i]) + step / 2;
                int64_t rounded = (v >= 0 ? v / step : -((-v + step - 1) / step)) * step;
                samples[i] = static_cast<int32_t>(std::clamp<int64_t>(rounded, INT32_MIN, highest));
            }
        } else {
            (void)samples;
            (void)count;
        }
    }

    void NoteChange(uint32_t rate, int channels, int64_t at) {
        char line[200];
        std::snprintf(line, sizeof line,
                      "the audio changes to %u Hz, %d channel%s at %.1f s; it was converted to the file's first "
                      "format, %u Hz, %d channel%s",
                      rate, channels, channels == 1 ? "" : "s", static_cast<double>(at) / keptRate, keptRate,
                      keptChannels, keptChannels == 1 ? "" : "s");
        if (changes.size() < 5) changes.push_back(line);
    }

    Owned<struct soxr, soxr_delete> resampler;
    uint32_t keptRate = 0;
    int keptChannels = 0;
    uint32_t currentRate = 0;
    int currentChannels = 0;
    int bits = 32;
    std::vector<T> remapped;
    std::vector<std::string> changes;
};

}  // namespace qvc
