// Encoder "Ogg Vorbis", on libvorbisenc: 32-bit float in, 1 to 8 channels
// (reordered from WAVE to Vorbis order), any rate from 8 kHz. Tags become
// the stream's comments (see vorbiscomments.h), "picture" tags
// METADATA_BLOCK_PICTURE comments. Tags that change during the conversion
// are written into the finished file through TagLib.
//
// Option string:
//   -quality="-1..10"   VBR quality, decimals allowed; 5 when not given
#include <taglib/vorbisfile.h>
#include <vorbis/vorbisenc.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "codecs/common/taglibtags.h"

namespace {

constexpr size_t kLargestHeaderComments = 1 << 20;

struct Encoder : qvc::EncoderBase {
    qvc::OwnedFile file;
    qvc::NativeName path;
    int channels = 0;
    bool described = false;  // info and comment are initialised
    bool started = false;    // and so are dsp, block and stream
    vorbis_info info{};
    vorbis_comment comment{};
    vorbis_dsp_state dsp{};
    vorbis_block block{};
    ogg_stream_state stream{};
    std::string beginTags;
    std::vector<float> reordered;

    // libvorbis keeps its state in records of ours, cleared by hand.
    ~Encoder() override { Release(); }
    void Release() override {
        if (started) {
            ogg_stream_clear(&stream);
            vorbis_block_clear(&block);
            vorbis_dsp_clear(&dsp);
        }
        if (described) {
            vorbis_comment_clear(&comment);
            vorbis_info_clear(&info);
        }
        started = described = false;
        file.reset();
    }
    bool WritePage(const ogg_page& out) {
        if (std::fwrite(out.header, 1, static_cast<size_t>(out.header_len), file.get()) ==
                static_cast<size_t>(out.header_len) &&
            std::fwrite(out.body, 1, static_cast<size_t>(out.body_len), file.get()) ==
                static_cast<size_t>(out.body_len)) {
            return true;
        }
        return Fail("the output file can't be written (is the disk full?)");
    }
    // Writes out the pages of what the analysis has ready.
    bool Drain() {
        while (vorbis_analysis_blockout(&dsp, &block) == 1) {
            vorbis_analysis(&block, nullptr);
            vorbis_bitrate_addblock(&block);
            ogg_packet packet;
            while (vorbis_bitrate_flushpacket(&dsp, &packet) != 0) {
                ogg_stream_packetin(&stream, &packet);
                ogg_page oggPage;
                while (ogg_stream_pageout(&stream, &oggPage) != 0) {
                    if (!WritePage(oggPage)) return false;
                }
            }
        }
        return true;
    }

    bool Begin(qv_encoder_begin_record& record) {
        qv_audio_format& format = *record.format;
        channels = format.channels;
        if (channels < 1 || channels > 8) return Fail("Ogg Vorbis takes 1 to 8 channels");
        if (format.samplesPerSecond < 8000 || format.samplesPerSecond > 192000) {
            return Fail("Ogg Vorbis takes rates of 8 to 192 kHz");
        }
        std::u16string qualityText =
            qvc::Option(record.optionString != nullptr ? record.optionString : u"", u"quality");
        char* end = nullptr;
        std::string qualityBytes = qvc::ToUtf8(qualityText);
        double quality = qualityText.empty() ? 5.0 : std::strtod(qualityBytes.c_str(), &end);
        if ((!qualityText.empty() && (end == nullptr || *end != 0)) || quality < -1.0 || quality > 10.0) {
            return Fail("-quality takes -1 to 10");
        }
        vorbis_info_init(&info);
        vorbis_comment_init(&comment);
        described = true;
        if (vorbis_encode_init_vbr(&info, channels, static_cast<long>(format.samplesPerSecond),
                                   static_cast<float>(quality / 10.0)) != 0) {
            return Fail("libvorbis can't encode this rate and channel count at this quality");
        }
        std::vector<std::string> lines = qvc::OggCommentsFromTags(qvc::ReadTagBlock(record.tags, record.tagsSize));
        size_t commentBytes = 0;
        for (const std::string& line : lines) commentBytes += line.size();
        // libvorbis grows its header packet a few hundred bytes at a time,
        // which costs time by the square of the size: large tags (a big
        // picture) are left to TagLib at the end instead.
        if (commentBytes <= kLargestHeaderComments) {
            beginTags.assign(static_cast<const char*>(record.tags), record.tagsSize);
            for (const std::string& line : lines) {
                size_t equals = line.find('=');
                vorbis_comment_add_tag(&comment, line.substr(0, equals).c_str(), line.substr(equals + 1).c_str());
            }
        } else {
            beginTags = qvc::WriteTagBlock({});
        }
        vorbis_analysis_init(&dsp, &info);
        vorbis_block_init(&dsp, &block);
        std::srand(static_cast<unsigned>(std::time(nullptr)));
        ogg_stream_init(&stream, std::rand());
        started = true;
        path = qvc::Native(record.outputPath);
        file.reset(qvc::OpenOutput(record.outputPath, false));
        if (file == nullptr) return Fail("the output file can't be created");
        ogg_packet identification, commentPacket, codebooks;
        vorbis_analysis_headerout(&dsp, &comment, &identification, &commentPacket, &codebooks);
        ogg_stream_packetin(&stream, &identification);
        ogg_stream_packetin(&stream, &commentPacket);
        ogg_stream_packetin(&stream, &codebooks);
        ogg_page oggPage;
        // The audio starts on a fresh page, as the format asks.
        while (ogg_stream_flush(&stream, &oggPage) != 0) {
            if (!WritePage(oggPage)) return false;
        }
        format.acceptedTypes = QV_SAMPLES_FLOAT32;
        return true;
    }

    bool Encode(const qv_audio_block& qvBlock) {
        const auto* samples = static_cast<const float*>(qvBlock.samples);
        const size_t count = static_cast<size_t>(qvBlock.frames) * static_cast<size_t>(channels);
        reordered.assign(samples, samples + count);
        qvc::ReorderChannels(reordered.data(), qvBlock.frames, channels, false);
        float** planes = vorbis_analysis_buffer(&dsp, static_cast<int>(qvBlock.frames));
        for (uint32_t f = 0; f < qvBlock.frames; ++f) {
            for (int c = 0; c < channels; ++c) planes[c][f] = reordered[f * static_cast<size_t>(channels) + c];
        }
        vorbis_analysis_wrote(&dsp, static_cast<int>(qvBlock.frames));
        return Drain();
    }

    bool End(const qv_encoder_end_record& record) {
        if (file == nullptr) return record.aborted != 0 || Fail("the output file is not open");
        if (record.aborted != 0) {
            Release();
            return true;
        }
        vorbis_analysis_wrote(&dsp, 0);  // the end of the stream
        if (!Drain()) return false;
        ogg_page oggPage;
        while (ogg_stream_flush(&stream, &oggPage) != 0) {
            if (!WritePage(oggPage)) return false;
        }
        bool closed = CloseOutput(file);
        Release();
        if (!closed) return false;
        const char* fault =
            qvc::RewriteOggTags<TagLib::Ogg::Vorbis::File>(path, beginTags, record.tags, record.tagsSize);
        return fault == nullptr || Fail(fault);
    }
};

constexpr const char* kExtension = ".ogg";
// What "qvt plugins" shows of the options (see the top of this file).
constexpr qvc::OptionSpec kOptionList[] = {
    {"quality", qvc::OptionKind::Decimal, "5", "-1..10", "Quality (-1 to 10)", "VBR quality, decimals allowed"},
};
constexpr qvc::OptionTable kOptions{kOptionList, std::size(kOptionList), nullptr};
constexpr bool kLossless = false;
constexpr const char* kRequiredEffect = nullptr;
// At about 160 kbit/s, the usual rate of quality 5 for stereo.
uint64_t EstimatedSize(uint64_t lengthMs, const qv_stream_facts*) { return lengthMs * 160 / 8; }

}  // namespace

#include "codecs/common/encoderexports.h"
