// Effect "ReplayGain", on libebur128: measures each file as it passes
// (the audio is not changed) and writes its gain and peak as tags:
// "replaygain_track_gain" ("-6.48 dB", to a reference of -18 LUFS) and
// "replaygain_track_peak" (the highest sample, 1.0 full scale).
//
// Album gain: in a batch (the worker's batch id is not 0), each file also
// leaves the loudness of its 400 ms gating blocks and its peak in the
// batch's scratch folder (the temporary folder, "Qv" and the id). At the
// end of the batch the blocks of all files are gated together, exactly as
// a single measurement over all of them would be, and
// "replaygain_album_gain" and "replaygain_album_peak" are written through
// TagLib into every output of the batch that converted without error.
//
// Settings: none.
#include <dirent.h>
#include <ebur128.h>
#include <sys/stat.h>
#include <taglib/fileref.h>
#include <taglib/tpropertymap.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

namespace {

constexpr double kReference = -18.0;  // LUFS

std::string BatchFolder(uint64_t batchId) {
    const char* temp = std::getenv("TMPDIR");
    std::string folder = temp != nullptr && temp[0] != 0 ? temp : "/tmp";
    if (folder.back() != '/') folder += '/';
    return folder + "Qv" + std::to_string(batchId);
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

struct Effect : qvc::EffectBase {
    qvc::Owned<ebur128_state, DestroyMeter> meter;
    bool isFloat = true;
    size_t channels = 0;
    uint64_t step = 0;  // frames in 100 ms, as the meter counts them
    uint64_t fed = 0;   // frames given to the meter
    uint32_t batchId = 0;
    std::vector<double> blocks;  // energies of the gating blocks
    std::string tags;            // the tags the file came with

    void Release() override { meter.reset(); }

    bool Begin(qv_begin_record& record, const std::u16string&) {
        Release();
        if (record.format == nullptr) return true;
        qv_audio_format& format = *record.format;
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

    int32_t Pass(const qv_audio_block* in, qv_audio_block* out) {
        if (in == nullptr) return 0;
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
        std::string folder = BatchFolder(batchId);
        ::mkdir(folder.c_str(), 0700);
        char name[64];
        std::snprintf(name, sizeof name, "/replaygain-%d-%p", static_cast<int>(::getpid()), static_cast<void*>(this));
        std::string path = folder + name, partial = path + ".part";
        qvc::OwnedFile file(std::fopen(partial.c_str(), "wb"));
        if (file == nullptr) return;
        bool ok = std::fwrite(&peak, sizeof peak, 1, file.get()) == 1 &&
                  std::fwrite(blocks.data(), sizeof(double), blocks.size(), file.get()) == blocks.size();
        ok = std::fclose(file.release()) == 0 && ok;
        if (!ok || std::rename(partial.c_str(), path.c_str()) != 0) std::remove(partial.c_str());
    }

    bool End() {
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
        if (batchId != 0) LeaveForAlbum(peak);
        return true;
    }

    bool BatchEnd(const qv_batch_end_record& record) {
        std::string folder = BatchFolder(record.batchId);
        std::vector<double> energies;
        double peak = 0;
        if (DIR* dir = ::opendir(folder.c_str())) {
            while (dirent* entry = ::readdir(dir)) {
                std::string name = entry->d_name;
                if (name.rfind("replaygain-", 0) != 0 || name.find(".part") != std::string::npos) continue;
                qvc::OwnedFile file(std::fopen((folder + "/" + name).c_str(), "rb"));
                if (file == nullptr) continue;
                double value = 0;
                if (std::fread(&value, sizeof value, 1, file.get()) == 1) {
                    peak = std::max(peak, value);
                    while (std::fread(&value, sizeof value, 1, file.get()) == 1) energies.push_back(value);
                }
            }
            ::closedir(dir);
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
            TagLib::FileRef file(qvc::FileName(entry.value).c_str(), false);
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

constexpr bool kTwoPass = false;
// What "qvt plugins" shows of the options (see the top of this file).
constexpr const char* kOptionHelp = "(no settings)\n";

}  // namespace

#include "codecs/common/effectexports.h"
