// Encoder "MP3 (Lame)", on libmp3lame: 32-bit float in, one or two
// channels (more need the "Channel Count" effect first, which this encoder
// asks for), any rate LAME can take. A LAME/Xing header states the encoder
// delay and padding, so gapless decoders give back exactly the samples
// that went in. Tags become an ID3v2.4 tag, "picture" tags APIC frames.
//
// Option string:
//   -mode="vbr|cbr|abr"       vbr when not given
//   -quality="0..9"           VBR quality, 0 the best; 2 when not given
//   -bitrate="8..320"         kbit/s of CBR, or the target of ABR; 192
//                             when not given
//   -stereo="joint|stereo|mono"   joint when not given
#include <lame/lame.h>
#include <taglib/mpegfile.h>

#include <cstdio>
#include <string>
#include <vector>

#include "codecs/common/taglibtags.h"

namespace {

struct Settings {
    vbr_mode mode = vbr_mtrh;
    int quality = 2;
    int bitrate = 192;
    MPEG_mode stereo = JOINT_STEREO;
};

// The settings of an option string; a text naming the fault when bad.
const char* ReadSettings(const std::u16string& options, Settings& settings) {
    std::u16string mode = qvc::Option(options, u"mode");
    if (mode == u"cbr") {
        settings.mode = vbr_off;
    } else if (mode == u"abr") {
        settings.mode = vbr_abr;
    } else if (!mode.empty() && mode != u"vbr") {
        return "-mode takes vbr, cbr or abr";
    }
    std::u16string quality = qvc::Option(options, u"quality");
    if (!quality.empty()) {
        settings.quality = std::atoi(qvc::ToUtf8(quality).c_str());
        if (settings.quality < 0 || settings.quality > 9 || quality.size() != 1) return "-quality takes 0 to 9";
    }
    std::u16string bitrate = qvc::Option(options, u"bitrate");
    if (!bitrate.empty()) {
        settings.bitrate = std::atoi(qvc::ToUtf8(bitrate).c_str());
        if (settings.bitrate < 8 || settings.bitrate > 320) return "-bitrate takes 8 to 320 kbit/s";
    }
    std::u16string stereo = qvc::Option(options, u"stereo");
    if (stereo == u"stereo") {
        settings.stereo = STEREO;
    } else if (stereo == u"mono") {
        settings.stereo = MONO;
    } else if (!stereo.empty() && stereo != u"joint") {
        return "-stereo takes joint, stereo or mono";
    }
    return nullptr;
}

struct Encoder : qvc::EncoderBase {
    qvc::Owned<lame_global_flags, lame_close> lame;
    qvc::OwnedFile file;
    qvc::NativeName path;
    int channels = 0;
    std::vector<unsigned char> buffer;
    std::vector<qvc::Tag> tags;

    void Release() override {
        lame.reset();
        file.reset();
    }
    bool Write(const unsigned char* data, int size) {
        if (size < 0) return Fail("the MP3 encoder failed");
        return std::fwrite(data, 1, static_cast<size_t>(size), file.get()) == static_cast<size_t>(size) ||
               Fail("the output file can't be written (is the disk full?)");
    }

    bool Begin(qv_encoder_begin_record& record) {
        qv_audio_format& format = *record.format;
        channels = format.channels;
        if (channels < 1 || channels > 2) return Fail("MP3 takes 1 or 2 channels");
        Settings settings;
        if (const char* bad = ReadSettings(record.optionString != nullptr ? record.optionString : u"", settings)) {
            return Fail(bad);
        }
        lame.reset(lame_init());
        if (lame == nullptr) return Fail("out of memory");
        lame_set_num_channels(lame.get(), channels);
        lame_set_in_samplerate(lame.get(), static_cast<int>(format.samplesPerSecond));
        lame_set_mode(lame.get(), channels == 1 ? MONO : settings.stereo);
        if (channels == 2 && settings.stereo == MONO) lame_set_num_channels(lame.get(), 2);
        lame_set_VBR(lame.get(), settings.mode);
        if (settings.mode == vbr_off) {
            lame_set_brate(lame.get(), settings.bitrate);
        } else if (settings.mode == vbr_abr) {
            lame_set_VBR_mean_bitrate_kbps(lame.get(), settings.bitrate);
        } else {
            lame_set_VBR_quality(lame.get(), static_cast<float>(settings.quality));
        }
        lame_set_write_id3tag_automatic(lame.get(), 0);
        lame_set_bWriteVbrTag(lame.get(), 1);
        if (lame_init_params(lame.get()) < 0) return Fail("LAME can't encode this rate with these settings");
        path = qvc::Native(record.outputPath);
        file.reset(qvc::OpenOutput(record.outputPath, false));
        if (file == nullptr) return Fail("the output file can't be created");
        tags = qvc::ReadTagBlock(record.tags, record.tagsSize);
        format.acceptedTypes = QV_SAMPLES_FLOAT32;
        return true;
    }

    bool Encode(const qv_audio_block& block) {
        buffer.resize(block.frames * 5 / 4 + 7200);  // LAME's worst case
        const auto* samples = static_cast<const float*>(block.samples);
        int bytes = channels == 2
                        ? lame_encode_buffer_interleaved_ieee_float(lame.get(), samples, static_cast<int>(block.frames),
                                                                    buffer.data(), static_cast<int>(buffer.size()))
                        : lame_encode_buffer_ieee_float(lame.get(), samples, samples, static_cast<int>(block.frames),
                                                        buffer.data(), static_cast<int>(buffer.size()));
        return Write(buffer.data(), bytes);
    }

    bool End(const qv_encoder_end_record& record) {
        if (lame == nullptr) return record.aborted != 0 || Fail("the output file is not open");
        if (record.aborted != 0) {
            Release();
            return true;
        }
        buffer.resize(7200);
        if (!Write(buffer.data(), lame_encode_flush(lame.get(), buffer.data(), static_cast<int>(buffer.size())))) {
            return false;
        }
        // The LAME/Xing frame, now that the lengths are known, over the
        // placeholder LAME left at the start.
        std::vector<unsigned char> frame(2880);
        size_t frameBytes = lame_get_lametag_frame(lame.get(), frame.data(), frame.size());
        if (frameBytes > 0 && frameBytes <= frame.size()) {
            if (!qvc::Seek(file.get(), 0)) return Fail("the output file can't be written (is the disk full?)");
            if (!Write(frame.data(), static_cast<int>(frameBytes))) return false;
        }
        lame.reset();
        if (!CloseOutput(file)) return false;
        if (record.tags != nullptr) tags = qvc::ReadTagBlock(record.tags, record.tagsSize);
        if (tags.empty()) return true;
        TagLib::MPEG::File mp3(path.c_str(), false);
        if (!mp3.isValid()) return Fail("the tags can't be written");
        qvc::WriteId3v2(*mp3.ID3v2Tag(true), tags);
        if (!mp3.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripOthers, TagLib::ID3v2::v4,
                      TagLib::File::DoNotDuplicate)) {
            return Fail("the tags can't be written (is the disk full?)");
        }
        return true;
    }
};

constexpr const char* kExtension = ".mp3";
// What "qvt plugins" shows of the options (see the top of this file).
constexpr qvc::OptionSpec kOptionList[] = {
    {"mode", qvc::OptionKind::Choice, "vbr", "vbr=Variable bitrate (VBR),cbr=Constant bitrate (CBR),abr=Average bitrate (ABR)",
     "Bitrate mode", "variable, constant or average bitrate"},
    {"quality", qvc::OptionKind::Integer, "2", "0..9", "VBR quality (0 best)", "VBR quality, 0 the best"},
    {"bitrate", qvc::OptionKind::Integer, "192", "8..320", "CBR / ABR bitrate (kbit/s)",
     "kbit/s of CBR, or the target of ABR"},
    {"stereo", qvc::OptionKind::Choice, "joint", "joint=Joint stereo,stereo=Stereo,mono=Mono", "Channels",
     "joint stereo, plain stereo or mono"},
};
constexpr qvc::OptionTable kOptions{kOptionList, std::size(kOptionList), nullptr};
constexpr bool kLossless = false;
// At about 190 kbit/s, the usual rate of the default VBR quality.
uint64_t EstimatedSize(uint64_t lengthMs, const qv_stream_facts*) { return lengthMs * 190 / 8; }

// More than two channels have to be mixed down first.
constexpr const char* kRequiredEffect = "Channel Count=-max=2";

}  // namespace

#include "codecs/common/encoderexports.h"
