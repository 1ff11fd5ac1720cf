// Effect "ReplayGain", on libebur128: measures each file as it passes
// (the audio is not changed) and writes its gain and peak as tags:
// "replaygain_track_gain" ("-6.48 dB", to a reference of -18 LUFS) and
// "replaygain_track_peak" (the highest sample, 1.0 full scale).
//
// Or, with -apply="gain", it applies the track gain to the audio instead,
// in two passes (the analysis pass measures, the live pass scales), never
// lifting the highest sample above full scale; the file then carries no
// gain tags, since any it came with no longer hold. Album gain can't be
// applied: each file is written before the album is measured.
//
// Album gain (-mode="album", the default): in a batch (the worker's batch id is not 0), each file also
// leaves the loudness of its 400 ms gating blocks and its peak in the
// batch's scratch folder (the temporary folder, "Qv" and the id). At the
// end of the batch the blocks of all files are gated together, exactly as
// a single measurement over all of them would be, and
// "replaygain_album_gain" and "replaygain_album_peak" are written through
// TagLib into every output of the batch that converted without error.
//
// Settings:
//   -mode="track|album"     album: album tags too at the end of a batch
//   -apply="tags|gain"      write tags, or change the audio by the gain
#include <ebur128.h>
#include <taglib/fileref.h>
#include <taglib/tpropertymap.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "codecs/common/codecfiles.h"

namespace {

constexpr double kReference = -18.0;  // LUFS

// The program's folder of the batch, where the files of an album leave
// their measurements for its end.
std::u16string BatchFolder(uint64_t batchId) {
    std::string id = "Qv" + std::to_string(batchId);
    return qvc::TempFolder() + std::u16string(id.begin(), id.end());
}

std::string Decibels(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f dB", value);
    return text;
}
std::string PeakText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6f", value);
    return text;
}

// Integrated loudness of gating-block energies, with the absolute gate at
// -70 LUFS and the relative one 10 LU below the absolutely gated mean.
double GatedLoudness(const std::vector<double>& energies) {
    const double absolute = std::pow(10.0, (-70.0 + 0.691) / 10.0);
    double sum = 0;
    size_t count = 0;
    for (double e : energies) {
        if (e >= absolute) {
            sum += e;
            ++count;
        }
    }
    if (count == 0) return -HUGE_VAL;
    const double relative = sum / static_cast<double>(count) * 0.1;
    sum = 0;
    count = 0;
    for (double e : energies) {
        if (e >= absolute && e >= relative) {
            sum += e;
            ++count;
        }
    }
    return count == 0 ? -HUGE_VAL : 10.0 * std::log10(sum / static_cast<double>(count)) - 0.691;
}

// libebur128 frees a meter through a pointer to the handle.
void DestroyMeter(ebur128_state* meter) { ebur128_destroy(&meter); }

struct Settings {
    bool album = true;
    bool applyGain = false;
    const char* error = nullptr;  // why the settings are refused
};

Settings ReadSettings(const std::u16string& text) {
    Settings settings;
    std::u16string mode = qvc::Option(text, u"mode"), apply = qvc::Option(text, u"apply");
    if (!mode.empty() && mode != u"track" && mode != u"album") settings.error = "-mode takes track or album";
    if (!apply.empty() && apply != u"tags" && apply != u"gain") settings.error = "-apply takes tags or gain";
    settings.album = mode != u"track";
    settings.applyGain = apply == u"gain";
    if (settings.error == nullptr && settings.album && settings.applyGain) {
        settings.error =
            "album gain can't be applied to the audio, as each file is written before the album is measured: "
            "choose -mode=\"track\" or -apply=\"tags\"";
    }
    return settings;
}

bool WantsTwoPass(const std::u16string& settings) { return ReadSettings(settings).applyGain; }

struct Effect : qvc::EffectBase {
    qvc::Owned<ebur128_state, DestroyMeter> meter;
    Settings settings;
    bool converting = false;  // false when run for the tags alone
    bool analysed = false;    // blocks of an analysis pass came in
    float gain = 1.0f;      // applied in the live pass
    std::vector<float> scaled;
    bool isFloat = true;
    size_t channels = 0;
    uint64_t step = 0;  // frames in 100 ms, as the meter counts them
    uint64_t fed = 0;   // frames given to the meter
    uint32_t batchId = 0;
    std::vector<double> blocks;  // energies of the gating blocks
    std::string tags;            // the tags the file came with

    void Release() override { meter.reset(); }

    bool Begin(qv_begin_record& record, const std::u16string& text) {
        settings = ReadSettings(text);
        if (settings.error != nullptr) return Fail(settings.error);
        converting = record.format != nullptr;
        if (!converting) return true;
        qv_audio_format& format = *record.format;
        if (settings.applyGain) {
            qvc::UseFloat(format);
            if (analysed) {
                // Begun again for the live pass: the measurement is complete.
                analysed = false;
                gain = AppliedGain();
                Release();
                tags.assign(static_cast<const char*>(record.tags), record.tagsSize);
                return true;
            }
            gain = 1.0f;
        }
        Release();
        channels = format.channels;
        isFloat = format.sampleType == QV_SAMPLES_FLOAT32;
        format.acceptedTypes = format.sampleType;  // either kind, untouched
        meter.reset(ebur128_init(static_cast<unsigned>(channels), format.samplesPerSecond,
                                 EBUR128_MODE_I | EBUR128_MODE_M | EBUR128_MODE_SAMPLE_PEAK));
        if (meter == nullptr) return Fail("the loudness meter can't take this rate and channel count");
        step = (format.samplesPerSecond + 5) / 10;
        fed = 0;
        blocks.clear();
        batchId = record.batchId;
        tags.assign(static_cast<const char*>(record.tags), record.tagsSize);
        return true;
    }

    bool Measure(const void* samples, size_t frames) {
        int rc = isFloat ? ebur128_add_frames_float(meter.get(), static_cast<const float*>(samples), frames)
                         : ebur128_add_frames_int(meter.get(), static_cast<const int*>(samples), frames);
        return rc == EBUR128_SUCCESS;
    }

    // The track gain as a factor, lowered so that the highest sample
    // stays within full scale.
    float AppliedGain() {
        double loudness = -HUGE_VAL;
        ebur128_loudness_global(meter.get(), &loudness);
        if (!std::isfinite(loudness)) return 1.0f;  // silence has no gain to give
        double factor = std::pow(10.0, (kReference - loudness) / 20.0);
        double peak = Peak();
        if (peak > 0 && factor * peak > 1.0) factor = 1.0 / peak;
        return static_cast<float>(factor);
    }

    bool Analyse(const qv_audio_block& in) {
        analysed = true;
        if (Measure(in.samples, in.frames)) return true;
        return Fail("the loudness meter failed");
    }

    int32_t Scale(const qv_audio_block* in, qv_audio_block* out) {
        const size_t count = static_cast<size_t>(in->frames) * channels;
        scaled.resize(count);
        const auto* samples = static_cast<const float*>(in->samples);
        for (size_t i = 0; i < count; ++i) scaled[i] = samples[i] * gain;
        *out = *in;
        out->samples = scaled.data();
        return 1;
    }

    int32_t Pass(const qv_audio_block* in, qv_audio_block* out) {
        if (in == nullptr) return 0;
        if (settings.applyGain) return Scale(in, out);
        // Fed up to each 100 ms mark, so that the momentary loudness read
        // there is the block the meter gates.
        const size_t width = isFloat ? sizeof(float) : sizeof(int32_t);
        const auto* bytes = static_cast<const char*>(in->samples);
        size_t done = 0;
        while (done < in->frames) {
            uint64_t toMark = step - fed % step;
            size_t take = static_cast<size_t>(std::min<uint64_t>(toMark, in->frames - done));
            if (!Measure(bytes + done * channels * width, take)) {
                Fail("the loudness meter failed");
                return -1;
            }
            done += take;
            fed += take;
            double momentary = 0;
            if (fed % step == 0 && fed >= 4 * step &&
                ebur128_loudness_momentary(meter.get(), &momentary) == EBUR128_SUCCESS) {
                blocks.push_back(std::isfinite(momentary) ? std::pow(10.0, (momentary + 0.691) / 10.0) : 0.0);
            }
        }
        *out = *in;
        return 1;
    }

    double Peak() const {
        double peak = 0;
        for (unsigned c = 0; c < channels; ++c) {
            double p = 0;
            if (ebur128_sample_peak(meter.get(), c, &p) == EBUR128_SUCCESS) peak = std::max(peak, p);
        }
        return peak;
    }

    // The blocks and the peak for the album, written whole or not at all.
    void LeaveForAlbum(double peak) {
        std::u16string folder = BatchFolder(batchId);
        qvc::MakeFolder(folder);
        char name[64];
        std::snprintf(name, sizeof name, "replaygain-%lu-%p", qvc::ProcessId(), static_cast<void*>(this));
        std::u16string path = folder + qvc::Separator() + qvc::FromBytes(name);
        std::u16string partial = path + u".part";
        qvc::OwnedFile file(qvc::OpenFile(partial.c_str(), "wb"));
        if (file == nullptr) return;
        bool ok = std::fwrite(&peak, sizeof peak, 1, file.get()) == 1 &&
                  std::fwrite(blocks.data(), sizeof(double), blocks.size(), file.get()) == blocks.size();
        ok = std::fclose(file.release()) == 0 && ok;
        if (!ok || !qvc::ReplaceFile(partial, path)) qvc::RemoveFile(partial);
    }

    // The tags of a file whose audio the gain changed: the gain tags it
    // came with no longer hold.
    bool EndApplied() {
        std::vector<qvc::Tag> list = qvc::ReadTagBlock(tags.data(), tags.size());
        list.erase(std::remove_if(list.begin(), list.end(),
                                  [](const qvc::Tag& tag) {
                                      return qvc::LowerTag(tag.name).rfind(u"replaygain_", 0) == 0;
                                  }),
                   list.end());
        finalTags = qvc::WriteTagBlock(list);
        hasFinalTags = true;
        return true;
    }

    bool End() {
        if (settings.applyGain) return converting ? EndApplied() : true;
        if (meter == nullptr) return true;
        double loudness = -HUGE_VAL;
        ebur128_loudness_global(meter.get(), &loudness);
        double peak = Peak();
        Release();
        std::vector<qvc::Tag> list = qvc::ReadTagBlock(tags.data(), tags.size());
        list.erase(std::remove_if(list.begin(), list.end(),
                                  [](const qvc::Tag& tag) {
                                      std::u16string name = qvc::LowerTag(tag.name);
                                      return name == u"replaygain_track_gain" || name == u"replaygain_track_peak";
                                  }),
                   list.end());
        if (std::isfinite(loudness)) {  // silence has no gain to give
            list.push_back({u"replaygain_track_gain", qvc::FromBytes(Decibels(kReference - loudness)), std::string()});
        }
        list.push_back({u"replaygain_track_peak", qvc::FromBytes(PeakText(peak)), std::string()});
        finalTags = qvc::WriteTagBlock(list);
        hasFinalTags = true;
        if (batchId != 0 && settings.album) LeaveForAlbum(peak);
        return true;
    }

    bool BatchEnd(const qv_batch_end_record& record) {
        Settings given = ReadSettings(record.settings != nullptr ? std::u16string(record.settings) : std::u16string());
        if (!given.album || given.error != nullptr) return true;
        std::u16string folder = BatchFolder(record.batchId);
        std::vector<double> energies;
        double peak = 0;
        for (const std::u16string& name : qvc::FolderEntries(folder)) {
            if (name.rfind(u"replaygain-", 0) != 0 || name.find(u".part") != std::u16string::npos) continue;
            qvc::OwnedFile file(qvc::OpenFile((folder + qvc::Separator() + name).c_str(), "rb"));
            if (file == nullptr) continue;
            double value = 0;
            if (std::fread(&value, sizeof value, 1, file.get()) == 1) {
                peak = std::max(peak, value);
                while (std::fread(&value, sizeof value, 1, file.get()) == 1) energies.push_back(value);
            }
        }
        double loudness = GatedLoudness(energies);
        std::vector<qvc::Tag> files = qvc::ReadTagBlock(record.block, record.blockSize);
        auto has = [&files](const std::u16string& name) {
            return std::any_of(files.begin(), files.end(), [&name](const qvc::Tag& t) { return t.name == name; });
        };
        for (const qvc::Tag& entry : files) {
            const std::u16string suffix = u"_out";
            if (entry.name.size() <= suffix.size() ||
                entry.name.compare(entry.name.size() - suffix.size(), suffix.size(), suffix) != 0) {
                continue;
            }
            std::u16string stem = entry.name.substr(0, entry.name.size() - suffix.size());
            if (has(stem + u"_conversionhaderrors")) continue;
            TagLib::FileRef file(qvc::Native(entry.value).c_str(), false);
            if (file.isNull()) continue;
            TagLib::PropertyMap properties = file.file()->properties();
            if (std::isfinite(loudness)) {
                properties.replace("REPLAYGAIN_ALBUM_GAIN",
                                   TagLib::StringList(TagLib::String(Decibels(kReference - loudness))));
            }
            properties.replace("REPLAYGAIN_ALBUM_PEAK", TagLib::StringList(TagLib::String(PeakText(peak))));
            file.file()->setProperties(properties);
            file.save();
        }
        return true;
    }
};

// Its settings page.
constexpr qvc::OptionSpec kOptionSpecs[] = {
    {"mode", qvc::OptionKind::Choice, "album", "track=Track gain only,album=Track and album gain", "Mode",
     "album: album gain and peak too, at the end of a batch"},
    {"apply", qvc::OptionKind::Choice, "tags", "tags=Write tags,gain=Apply the gain to the audio", "Gain",
     "write the gain as tags, or apply the track gain to the audio (track mode)"},
};

}  // namespace

#define QVC_EFFECT_TWO_PASS_BY_SETTINGS
#define QVC_EFFECT_HAS_SPECS
#include "codecs/common/effectexports.h"
