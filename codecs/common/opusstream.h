// An Opus stream, for the "Opus" decoder and Opus in .ogg, on libopusfile:
// 32-bit float at 48 kHz (the rate Opus always decodes at) in WAVE channel
// order. The pre-skip of the header and the end trimming of the last granule
// position are honoured, so a file made from N samples at 48 kHz decodes to N
// samples. Tags from the comments (see vorbiscomments.h), pictures from
// METADATA_BLOCK_PICTURE. A chained file whose links change the channel count
// is refused when the change is reached. No options.
#pragma once

#include <opusfile.h>

#include <string>
#include <vector>

#include "codecs/common/oggsupport.h"

namespace qvc {


struct OpusStream : qvc::LossyDecoderBase {
    qvc::Owned<OggOpusFile, op_free> opus;
    std::vector<float> block;

    void Close() override {
        opus.reset();
        channels = 0;
    }

    bool Open(const qv_char* name) {
        Close();
        position = 0;
        int rc = 0;
        opus.reset(op_open_file(qvc::FileName(name).c_str(), &rc));
        if (opus == nullptr) {
            return Fail(rc == OP_EFAULT || rc == OP_EREAD ? "the file can't be read"
                        : rc == OP_ENOTFORMAT             ? "the file is not an Opus file"
                                                          : "the Opus headers are damaged");
        }
        const OpusHead* head = op_head(opus.get(), -1);
        if (head == nullptr || head->channel_count < 1 || head->channel_count > 8) {
            return Fail("the stream has a channel count that can't be played");
        }
        formatTag = 0x704F;  // Opus
        rate = 48000;
        channels = head->channel_count;
        ogg_int64_t total = op_pcm_total(opus.get(), -1);
        frames = total > 0 ? total : 0;
        bitrate = op_bitrate(opus.get(), -1);
        qvc::TakeOggComments(op_tags(opus.get(), -1), *this);
        return true;
    }

    int32_t Decode(qv_audio_block* out) {
        if (opus == nullptr) return -1;
        block.resize(5760 * static_cast<size_t>(channels));  // 120 ms, the longest packet
        int link = 0;
        int got = 0;
        do {
            got = op_read_float(opus.get(), block.data(), static_cast<int>(block.size()), &link);
        } while (got == OP_HOLE);  // a gap in the pages: the audio goes on after it
        if (got < 0) {
            error = u"the stream is damaged";
            return -1;
        }
        if (got == 0) return 0;
        if (op_channel_count(opus.get(), link) != channels) {
            error = u"a chained stream changes its channel count";
            return -1;
        }
        qvc::ReorderChannels(block.data(), static_cast<size_t>(got), channels, true);
        return HandOut(block, got, out);
    }

    bool Rewind(uint64_t frame) {
        if (opus == nullptr || op_pcm_seek(opus.get(), static_cast<ogg_int64_t>(frame)) != 0) return false;
        position = static_cast<int64_t>(frame);
        return true;
    }
};

}  // namespace qvc
