// A FLAC stream, native or in Ogg, for the "FLAC" and "Ogg Vorbis" decoders,
// on libFLAC: 4 to 32 bits, 1 to 8 channels, delivered as left-justified
// 32-bit integers at their own depth. The stream's MD5 signature is checked at
// the end, so damaged audio fails instead of passing. Tags from the Vorbis
// comment block (see vorbiscomments.h for the names), pictures as "picture"
// tags holding the picture block. Frames in another rate or channel count than
// the header's (streams joined) are brought to the header's format. No
// options.
#pragma once

#include <FLAC/stream_decoder.h>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include "codecs/common/formatkeeper.h"
#include "codecs/common/vorbiscomments.h"

namespace qvc {

// A picture metadata block as the binary of a "picture" tag.
inline std::string FlacPictureBlock(const FLAC__StreamMetadata_Picture& picture) {
    return qvc::PictureBlock(picture.type, picture.mime_type != nullptr ? picture.mime_type : "",
                             picture.description != nullptr ? reinterpret_cast<const char*>(picture.description) : "",
                             picture.width, picture.height, picture.depth, picture.colors,
                             reinterpret_cast<const char*>(picture.data), picture.data_length);
}

struct FlacStream : qvc::DecoderBase {
    // Deleting a decoder finishes it, which closes the file it was given.
    qvc::Owned<FLAC__StreamDecoder, FLAC__stream_decoder_delete> flac;
    qvc::OwnedFile file;  // until the decoder takes it
    uint32_t rate = 0;
    uint32_t channels = 0;
    uint32_t bits = 0;
    uint64_t totalFrames = 0;
    uint64_t fileSize = 0;
    uint64_t position = 0;
    bool failed = false;
    bool ended = false;
    std::vector<std::string> comments;
    bool commentsRead = false;
    std::string vendor;
    std::vector<qvc::Tag> pictures;
    std::vector<int32_t> pending;  // decoded frames not yet handed out
    size_t pendingAt = 0;          // in samples
    std::vector<int32_t> block;
    std::vector<int32_t> changed;  // a frame in another format, interleaved
    qvc::FormatKeeper<int32_t> keeper;
    std::u16string path;  // to open again after the end, for a second pass
    bool ogg = false;     // FLAC in an Ogg container

    void Close() override {
        flac.reset();
        file.reset();
    }

    static FLAC__StreamDecoderWriteStatus OnWrite(const FLAC__StreamDecoder*, const FLAC__Frame* frame,
                                                  const FLAC__int32* const buffer[], void* client) {
        auto* self = static_cast<FlacStream*>(client);
        uint32_t count = frame->header.blocksize;
        if (frame->header.bits_per_sample != self->bits) {
            self->failed = true;
            self->error = qvc::FromAscii("the audio changes its bit depth on the way");
            return FLAC__STREAM_DECODER_WRITE_STATUS_ABORT;
        }
        const uint32_t channels = frame->header.channels;
        const uint32_t frameRate = frame->header.sample_rate;
        const int shift = 32 - static_cast<int>(self->bits);
        const bool passes = self->keeper.Passes(frameRate, static_cast<int>(channels));
        std::vector<int32_t>& into = passes ? self->pending : self->changed;
        if (!passes) into.clear();
        size_t base = into.size();
        into.resize(base + static_cast<size_t>(count) * channels);
        int32_t* out = into.data() + base;
        for (uint32_t c = 0; c < channels; ++c) {
            const FLAC__int32* in = buffer[c];
            int32_t* to = out + c;
            for (uint32_t i = 0; i < count; ++i, to += channels) {
                *to = static_cast<int32_t>(static_cast<uint32_t>(in[i]) << shift);
            }
        }
        // A frame in another rate or channel count (streams joined) is
        // brought to the stream's first format.
        if (!passes) {
            int64_t at = static_cast<int64_t>(self->position + (self->pending.size() - self->pendingAt) / self->channels);
            if (!self->keeper.Put(self->changed.data(), count, frameRate, static_cast<int>(channels), at, self->pending,
                                  self->error)) {
                self->failed = true;
                return FLAC__STREAM_DECODER_WRITE_STATUS_ABORT;
            }
        }
        return FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE;
    }

    static void OnMetadata(const FLAC__StreamDecoder*, const FLAC__StreamMetadata* metadata, void* client) {
        auto* self = static_cast<FlacStream*>(client);
        if (metadata->type == FLAC__METADATA_TYPE_STREAMINFO) {
            self->rate = metadata->data.stream_info.sample_rate;
            self->channels = metadata->data.stream_info.channels;
            self->bits = metadata->data.stream_info.bits_per_sample;
            self->totalFrames = metadata->data.stream_info.total_samples;
        } else if (metadata->type == FLAC__METADATA_TYPE_VORBIS_COMMENT && !self->commentsRead) {
            // A stream has one comment block; files that repeat it (a
            // thousand times, seen in the wild) are read by their first,
            // rather than piling every copy's values on each tag.
            self->commentsRead = true;
            const auto& vc = metadata->data.vorbis_comment;
            self->vendor.assign(reinterpret_cast<const char*>(vc.vendor_string.entry), vc.vendor_string.length);
            for (uint32_t i = 0; i < vc.num_comments; ++i) {
                self->comments.emplace_back(reinterpret_cast<const char*>(vc.comments[i].entry), vc.comments[i].length);
            }
        } else if (metadata->type == FLAC__METADATA_TYPE_PICTURE) {
            self->pictures.push_back({u"picture", u"", FlacPictureBlock(metadata->data.picture)});
        }
    }

    static void OnError(const FLAC__StreamDecoder*, FLAC__StreamDecoderErrorStatus, void* client) {
        static_cast<FlacStream*>(client)->failed = true;
    }

    bool Open(const qv_char* name) {
        Close();
        path = name;
        comments.clear();
        pictures.clear();
        commentsRead = false;
        vendor.clear();
        pending.clear();
        pendingAt = 0;
        position = 0;
        failed = ended = false;
        rate = channels = bits = 0;
        file.reset(qvc::OpenFile(name, "rb"));
        if (file == nullptr) return Fail("the file can't be opened");
        if (std::fseek(file.get(), 0, SEEK_END) == 0) {
            fileSize = static_cast<uint64_t>(std::max<int64_t>(0, qvc::Tell(file.get())));
        }
        std::rewind(file.get());
        flac.reset(FLAC__stream_decoder_new());
        if (flac == nullptr) return Fail("out of memory");
        FLAC__stream_decoder_set_md5_checking(flac.get(), true);
        FLAC__stream_decoder_set_metadata_respond(flac.get(), FLAC__METADATA_TYPE_VORBIS_COMMENT);
        FLAC__stream_decoder_set_metadata_respond(flac.get(), FLAC__METADATA_TYPE_PICTURE);
        auto init = ogg ? FLAC__stream_decoder_init_ogg_FILE : FLAC__stream_decoder_init_FILE;
        if (init(flac.get(), file.release(), OnWrite, OnMetadata, OnError, this) != FLAC__STREAM_DECODER_INIT_STATUS_OK) {
            return Fail("the file is not a FLAC file");
        }
        if (!FLAC__stream_decoder_process_until_end_of_metadata(flac.get()) || failed || channels == 0 || rate == 0) {
            return Fail("the file is not a FLAC file, or its header is damaged");
        }
        keeper.Start(rate, static_cast<int>(channels), static_cast<int>(bits));
        return true;
    }

    bool Format(qv_audio_format& format) const {
        if (channels == 0) return false;
        format.samplesPerSecond = rate;
        format.channels = static_cast<uint16_t>(channels);
        format.validBits = static_cast<uint16_t>(bits);
        format.sampleType = QV_SAMPLES_INT32;
        return true;
    }

    void Facts(qv_stream_facts& facts) const {
        facts.formatTag = 1;
        facts.channels = static_cast<uint16_t>(channels);
        facts.samplesPerSecond = rate;
        facts.bitsPerSample = static_cast<uint16_t>(bits);
        facts.blockAlign = static_cast<uint16_t>((bits + 7) / 8 * channels);
        facts.bytesPerSecond = rate * facts.blockAlign;
        facts.lengthMs = rate != 0 ? totalFrames * 1000 / rate : 0;
        facts.bitrate = facts.lengthMs != 0 ? static_cast<uint32_t>(fileSize * 8000 / facts.lengthMs) : 0;
    }

    std::vector<qvc::Tag> Tags() const {
        std::vector<qvc::Tag> tags = qvc::TagsFromComments(comments);
        tags.insert(tags.end(), pictures.begin(), pictures.end());
        return tags;
    }

    std::vector<qvc::Tag> Properties() const {
        std::vector<qvc::Tag> properties = {{u"Audio Quality", u"Lossless", std::string()}};
        if (!vendor.empty()) properties.push_back({u"Encoder", qvc::FromBytes(vendor), std::string()});
        return properties;
    }

    // Decodes frames until one block is ready or the stream ends.
    int32_t Decode(qv_audio_block* out) {
        if (flac == nullptr) return -1;
        const size_t want = 16384 * static_cast<size_t>(channels);
        while (pending.size() - pendingAt < want && !ended) {
            if (pendingAt > 0) {
                pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(pendingAt));
                pendingAt = 0;
            }
            if (!FLAC__stream_decoder_process_single(flac.get()) || failed) {
                if (error.empty()) error = qvc::FromAscii("the audio data is damaged");
                return -1;
            }
            FLAC__StreamDecoderState state = FLAC__stream_decoder_get_state(flac.get());
            if (state == FLAC__STREAM_DECODER_END_OF_STREAM) {
                ended = true;
                if (!keeper.Finish(pending, error)) return -1;
                // The MD5 signature covers the whole stream.
                if (!FLAC__stream_decoder_finish(flac.get())) {
                    error = qvc::FromAscii("the audio does not match its MD5 signature");
                    return -1;
                }
            }
        }
        size_t available = pending.size() - pendingAt;
        if (available == 0) {
            // The header's count is of the first format's frames.
            if (totalFrames != 0 && position < totalFrames && keeper.Changes().empty()) {
                error = qvc::FromAscii("the file ends before its audio does");
                return -1;
            }
            notes = keeper.Changes();
            return 0;
        }
        size_t samples = std::min(available, want);
        block.assign(pending.begin() + static_cast<std::ptrdiff_t>(pendingAt),
                     pending.begin() + static_cast<std::ptrdiff_t>(pendingAt + samples));
        pendingAt += samples;
        out->samples = block.data();
        out->frames = static_cast<uint32_t>(samples / channels);
        out->position = position;
        position += out->frames;
        out->flags = ended && pendingAt == pending.size() ? QV_BLOCK_LAST : 0;
        return 1;
    }

    bool Rewind(uint64_t frame) {
        // At the end the decoder was finished for its checksum: open again.
        if (ended && !Open(std::u16string(path).c_str())) return false;
        if (flac == nullptr) return false;
        pending.clear();
        pendingAt = 0;
        if (!FLAC__stream_decoder_seek_absolute(flac.get(), frame)) return false;
        keeper.Start(rate, static_cast<int>(channels), static_cast<int>(bits));
        position = frame;
        return true;
    }
};

}  // namespace qvc
