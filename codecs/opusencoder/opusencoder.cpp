// Encoder "Opus", on libopusenc: 32-bit float in, 1 to 8 channels
// (reordered from WAVE to Vorbis order), any rate (Opus codes at 48 kHz;
// the header keeps the original rate). The header's pre-skip and the last
// granule position make a decoder give back exactly the samples that went
// in at 48 kHz. Tags become the stream's comments (see vorbiscomments.h),
// "picture" tags METADATA_BLOCK_PICTURE comments; tags that change during
// the conversion are written into the finished file through TagLib.
//
// Option string:
//   -bitrate="6..510"     kbit/s, 128 when not given
//   -mode="vbr|cvbr|cbr"  variable, constrained variable or constant
//                         bitrate; vbr when not given
//   -complexity="0..10"   10 when not given
#include <opus/opusenc.h>
#include <taglib/opusfile.h>

#include <cstdio>
#include <string>
#include <vector>

#include "codecs/common/taglibtags.h"

namespace {

int WriteToFile(void* user, const unsigned char* data, opus_int32 length) {
    auto* file = static_cast<FILE*>(user);
    return std::fwrite(data, 1, static_cast<size_t>(length), file) == static_cast<size_t>(length) ? 0 : 1;
}
int CloseFile(void*) { return 0; }  // the encoder closes its file itself

// A whole number from `low` to `high`, or `fallback` when not given; -1
// when the text is not such a number.
int Number(const std::u16string& text, int fallback, int low, int high) {
    if (text.empty()) return fallback;
    int value = 0;
    for (char16_t c : text) {
        if (c < u'0' || c > u'9' || value > 100000) return -1;
        value = value * 10 + (c - u'0');
    }
    return value >= low && value <= high ? value : -1;
}

struct Encoder : qvc::EncoderBase {
    qvc::OwnedFile file;
    // Declared after the file it writes to, so it goes first.
    qvc::Owned<OggOpusEnc, ope_encoder_destroy> opus;
    qvc::NativeName path;
    int channels = 0;
    std::string beginTags;
    std::vector<float> reordered;

    void Release() override {
        opus.reset();
        file.reset();
    }

    bool Begin(qv_encoder_begin_record& record) {
        qv_audio_format& format = *record.format;
        channels = format.channels;
        if (channels < 1 || channels > 8) return Fail("Opus takes 1 to 8 channels");
        std::u16string options = record.optionString != nullptr ? record.optionString : u"";
        int bitrate = Number(qvc::Option(options, u"bitrate"), 128, 6, 510);
        if (bitrate < 0) return Fail("-bitrate takes 6 to 510 kbit/s");
        int complexity = Number(qvc::Option(options, u"complexity"), 10, 0, 10);
        if (complexity < 0) return Fail("-complexity takes 0 to 10");
        std::u16string mode = qvc::Option(options, u"mode");
        if (mode.empty()) mode = u"vbr";
        if (mode != u"vbr" && mode != u"cvbr" && mode != u"cbr") return Fail("-mode takes vbr, cvbr or cbr");
        qvc::Owned<OggOpusComments, ope_comments_destroy> comments(ope_comments_create());
        if (comments == nullptr) return Fail("out of memory");
        for (const std::string& line : qvc::OggCommentsFromTags(qvc::ReadTagBlock(record.tags, record.tagsSize))) {
            ope_comments_add_string(comments.get(), line.c_str());
        }
        beginTags.assign(static_cast<const char*>(record.tags), record.tagsSize);
        path = qvc::Native(record.outputPath);
        file.reset(qvc::OpenOutput(record.outputPath, false));
        if (file == nullptr) return Fail("the output file can't be created");
        OpusEncCallbacks callbacks = {WriteToFile, CloseFile};
        int rc = 0;
        opus.reset(ope_encoder_create_callbacks(&callbacks, file.get(), comments.get(),
                                                static_cast<opus_int32>(format.samplesPerSecond), channels,
                                                channels <= 2 ? 0 : 1, &rc));
        if (opus == nullptr) return Fail("libopusenc can't encode this rate and channel count");
        ope_encoder_ctl(opus.get(), OPUS_SET_BITRATE(bitrate * 1000));
        ope_encoder_ctl(opus.get(), OPUS_SET_COMPLEXITY(complexity));
        ope_encoder_ctl(opus.get(), OPUS_SET_VBR(mode == u"cbr" ? 0 : 1));
        ope_encoder_ctl(opus.get(), OPUS_SET_VBR_CONSTRAINT(mode == u"cvbr" ? 1 : 0));
        format.acceptedTypes = QV_SAMPLES_FLOAT32;
        return true;
    }

    bool Encode(const qv_audio_block& block) {
        const auto* samples = static_cast<const float*>(block.samples);
        const float* in = samples;
        if (channels > 2) {
            reordered.assign(samples, samples + static_cast<size_t>(block.frames) * static_cast<size_t>(channels));
            qvc::ReorderChannels(reordered.data(), block.frames, channels, false);
            in = reordered.data();
        }
        if (ope_encoder_write_float(opus.get(), in, static_cast<int>(block.frames)) != OPE_OK) {
            return Fail("the output file can't be written (is the disk full?)");
        }
        return true;
    }

    bool End(const qv_encoder_end_record& record) {
        if (opus == nullptr) return record.aborted != 0 || Fail("the output file is not open");
        if (record.aborted != 0) {
            Release();
            return true;
        }
        if (ope_encoder_drain(opus.get()) != OPE_OK)
            return Fail("the output file can't be written (is the disk full?)");
        opus.reset();
        if (!CloseOutput(file)) return false;
        const char* fault = qvc::RewriteOggTags<TagLib::Ogg::Opus::File>(path, beginTags, record.tags, record.tagsSize);
        return fault == nullptr || Fail(fault);
    }
};

constexpr const char* kExtension = ".opus";
// What "qvt plugins" shows of the options (see the top of this file).
constexpr qvc::OptionSpec kOptionList[] = {
    {"bitrate", qvc::OptionKind::Integer, "128", "6..510", "Bitrate (kbit/s)", "kbit/s"},
    {"mode", qvc::OptionKind::Choice, "vbr", "vbr=Variable (VBR),cvbr=Constrained variable (CVBR),cbr=Constant (CBR)",
     "Bitrate mode", "variable, constrained variable or constant bitrate"},
    {"complexity", qvc::OptionKind::Integer, "10", "0..10", "Complexity (10 best)", "encoder effort, 10 the best"},
};
constexpr qvc::OptionTable kOptions{kOptionList, std::size(kOptionList), nullptr};
constexpr bool kLossless = false;
constexpr const char* kRequiredEffect = nullptr;
// At the default 128 kbit/s.
uint64_t EstimatedSize(uint64_t lengthMs, const qv_stream_facts*) { return lengthMs * 128 / 8; }

}  // namespace

#include "codecs/common/encoderexports.h"
