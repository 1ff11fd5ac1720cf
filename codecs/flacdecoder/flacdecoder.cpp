// Decoder "FLAC", on libFLAC: native FLAC files, 4 to 32 bits, 1 to 8
// channels, delivered as left-justified 32-bit integers at their own
// depth. The stream's MD5 signature is checked at the end, so damaged audio
// fails instead of passing. Tags from the Vorbis comment block (see
// vorbiscomments.h for the names), pictures as "picture" tags holding the
// picture block. No options.
#include <FLAC/stream_decoder.h>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include "codecs/common/vorbiscomments.h"

namespace {

void PutBe32(std::string& out, uint32_t value) {
    for (int i = 3; i >= 0; --i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

// A picture metadata block as its bytes: the binary of a "picture" tag.
std::string PictureBlock(const FLAC__StreamMetadata_Picture& picture) {
    std::string out;
    PutBe32(out, picture.type);
    std::string mime = picture.mime_type != nullptr ? picture.mime_type : "";
    PutBe32(out, static_cast<uint32_t>(mime.size()));
    out += mime;
    std::string description = picture.description != nullptr ? reinterpret_cast<const char*>(picture.description) : "";
    PutBe32(out, static_cast<uint32_t>(description.size()));
    out += description;
    PutBe32(out, picture.width);
    PutBe32(out, picture.height);
    PutBe32(out, picture.depth);
    PutBe32(out, picture.colors);
    PutBe32(out, picture.data_length);
    out.append(reinterpret_cast<const char*>(picture.data), picture.data_length);
    return out;
}

struct Decoder {
    FLAC__StreamDecoder* flac = nullptr;
    FILE* file = nullptr;
    uint32_t rate = 0;
    uint32_t channels = 0;
    uint32_t bits = 0;
    uint64_t totalFrames = 0;
    uint64_t position = 0;
    bool failed = false;
    bool ended = false;
    std::vector<std::string> comments;
    std::string vendor;
    std::vector<qvc::Tag> pictures;
    std::vector<int32_t> pending;  // decoded frames not yet handed out
    size_t pendingAt = 0;          // in samples
    std::vector<int32_t> block;
    std::string tagBlock;
    std::string propertyBlock;
    std::vector<std::u16string> deleted;
    std::u16string path;  // to open again after the end, for a second pass
    qvc::Answer text1;
    qvc::Answer text2;
    std::u16string error;
    qvc::Answer errorAnswer;

    ~Decoder() { Close(); }

    void Close() {
        if (flac != nullptr) {
            // finish() also closes the FILE that init_FILE took over.
            FLAC__stream_decoder_finish(flac);
            FLAC__stream_decoder_delete(flac);
        } else if (file != nullptr) {
            std::fclose(file);
        }
        flac = nullptr;
        file = nullptr;
    }
    bool Fail(const char* why) {
        error = qvc::FromAscii(why);
        Close();
        return false;
    }

    static FLAC__StreamDecoderWriteStatus OnWrite(const FLAC__StreamDecoder*, const FLAC__Frame* frame,
                                                  const FLAC__int32* const buffer[], void* client) {
        auto* self = static_cast<Decoder*>(client);
        uint32_t count = frame->header.blocksize;
        if (frame->header.channels != self->channels || frame->header.bits_per_sample != self->bits) {
            self->failed = true;
            return FLAC__STREAM_DECODER_WRITE_STATUS_ABORT;
        }
        const int shift = 32 - static_cast<int>(self->bits);
        size_t base = self->pending.size();
        self->pending.resize(base + static_cast<size_t>(count) * self->channels);
        for (uint32_t i = 0; i < count; ++i) {
            for (uint32_t c = 0; c < self->channels; ++c) {
                self->pending[base + static_cast<size_t>(i) * self->channels + c] =
                    static_cast<int32_t>(static_cast<uint32_t>(buffer[c][i]) << shift);
            }
        }
        return FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE;
    }

    static void OnMetadata(const FLAC__StreamDecoder*, const FLAC__StreamMetadata* metadata, void* client) {
        auto* self = static_cast<Decoder*>(client);
        if (metadata->type == FLAC__METADATA_TYPE_STREAMINFO) {
            self->rate = metadata->data.stream_info.sample_rate;
            self->channels = metadata->data.stream_info.channels;
            self->bits = metadata->data.stream_info.bits_per_sample;
            self->totalFrames = metadata->data.stream_info.total_samples;
        } else if (metadata->type == FLAC__METADATA_TYPE_VORBIS_COMMENT) {
            const auto& vc = metadata->data.vorbis_comment;
            self->vendor.assign(reinterpret_cast<const char*>(vc.vendor_string.entry), vc.vendor_string.length);
            for (uint32_t i = 0; i < vc.num_comments; ++i) {
                self->comments.emplace_back(reinterpret_cast<const char*>(vc.comments[i].entry), vc.comments[i].length);
            }
        } else if (metadata->type == FLAC__METADATA_TYPE_PICTURE) {
            self->pictures.push_back({u"picture", u"", PictureBlock(metadata->data.picture)});
        }
    }

    static void OnError(const FLAC__StreamDecoder*, FLAC__StreamDecoderErrorStatus, void* client) {
        static_cast<Decoder*>(client)->failed = true;
    }

    bool Open(const qv_char* name) {
        Close();
        path = name;
        error.clear();
        comments.clear();
        pictures.clear();
        vendor.clear();
        pending.clear();
        pendingAt = 0;
        position = 0;
        failed = ended = false;
        rate = channels = bits = 0;
        file = qvc::OpenFile(name, "rb");
        if (file == nullptr) return Fail("the file can't be opened");
        flac = FLAC__stream_decoder_new();
        if (flac == nullptr) return Fail("out of memory");
        FLAC__stream_decoder_set_md5_checking(flac, true);
        FLAC__stream_decoder_set_metadata_respond(flac, FLAC__METADATA_TYPE_VORBIS_COMMENT);
        FLAC__stream_decoder_set_metadata_respond(flac, FLAC__METADATA_TYPE_PICTURE);
        FILE* handed = file;
        if (FLAC__stream_decoder_init_FILE(flac, handed, OnWrite, OnMetadata, OnError, this) !=
            FLAC__STREAM_DECODER_INIT_STATUS_OK) {
            return Fail("the file is not a FLAC file");
        }
        if (!FLAC__stream_decoder_process_until_end_of_metadata(flac) || failed || channels == 0 || rate == 0) {
            return Fail("the file is not a FLAC file, or its header is damaged");
        }
        return true;
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
            if (!FLAC__stream_decoder_process_single(flac) || failed) {
                error = qvc::FromAscii("the audio data is damaged");
                return -1;
            }
            FLAC__StreamDecoderState state = FLAC__stream_decoder_get_state(flac);
            if (state == FLAC__STREAM_DECODER_END_OF_STREAM) {
                ended = true;
                // The MD5 signature covers the whole stream.
                if (!FLAC__stream_decoder_finish(flac)) {
                    error = qvc::FromAscii("the audio does not match its MD5 signature");
                    return -1;
                }
                file = nullptr;  // closed by finish
            }
        }
        size_t available = pending.size() - pendingAt;
        if (available == 0) {
            if (totalFrames != 0 && position < totalFrames) {
                error = qvc::FromAscii("the file ends before its audio does");
                return -1;
            }
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
        if (!FLAC__stream_decoder_seek_absolute(flac, frame)) return false;
        position = frame;
        return true;
    }
};

Decoder* Self(uint64_t handle) { return reinterpret_cast<Decoder*>(static_cast<uintptr_t>(handle)); }

}  // namespace

extern "C" {

QV_EXPORT uint64_t Create(const qv_log_record*) {
    return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(new (std::nothrow) Decoder()));
}

QV_EXPORT void Close(uint64_t handle) { Self(handle)->Close(); }

QV_EXPORT void Destroy(uint64_t handle) { delete Self(handle); }

QV_EXPORT int32_t Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    Decoder* self = Self(handle);
    if (qvc::KeyIs(key, "Decodes")) {
        if (record->index != 0) return 0;
        record->text1 = self->text1.Set(".flac");
        record->text2 = self->text2.Set("FLAC");
        return 1;
    }
    if (qvc::KeyIs(key, "Format")) {
        if (self->channels == 0) return 0;
        auto* format = static_cast<qv_audio_format*>(const_cast<void*>(record->facts));
        *format = qv_audio_format{};
        format->samplesPerSecond = self->rate;
        format->channels = static_cast<uint16_t>(self->channels);
        format->validBits = static_cast<uint16_t>(self->bits);
        format->sampleType = QV_SAMPLES_INT32;
        return 1;
    }
    int32_t shared = qvc::AnswerShared(key, record, self->error, self->errorAnswer);
    return shared < 0 ? 0 : shared;
}

QV_EXPORT int32_t Set(uint64_t, const qv_char*, qv_query_record*) { return 0; }

QV_EXPORT int32_t Open(uint64_t handle, qv_open_record* record) {
    Decoder* self = Self(handle);
    if (!self->Open(record->fileName)) return 0;
    qv_stream_facts& facts = record->facts;
    facts.formatTag = 1;
    facts.channels = static_cast<uint16_t>(self->channels);
    facts.samplesPerSecond = self->rate;
    facts.bitsPerSample = static_cast<uint16_t>(self->bits);
    facts.blockAlign = static_cast<uint16_t>((self->bits + 7) / 8 * self->channels);
    facts.bytesPerSecond = self->rate * facts.blockAlign;
    facts.lengthMs = self->rate != 0 ? self->totalFrames * 1000 / self->rate : 0;
    uint64_t size = 0;
    if (FILE* probe = qvc::OpenFile(record->fileName, "rb")) {
        if (std::fseek(probe, 0, SEEK_END) == 0) size = static_cast<uint64_t>(std::max<int64_t>(0, qvc::Tell(probe)));
        std::fclose(probe);
    }
    facts.bitrate = facts.lengthMs != 0 ? static_cast<uint32_t>(size * 8000 / facts.lengthMs) : 0;
    std::vector<qvc::Tag> tags = qvc::TagsFromComments(self->comments);
    tags.insert(tags.end(), self->pictures.begin(), self->pictures.end());
    for (const std::u16string& gone : self->deleted) {
        tags.erase(std::remove_if(tags.begin(), tags.end(), [&gone](const qvc::Tag& tag) { return tag.name == gone; }),
                   tags.end());
    }
    self->tagBlock = qvc::WriteTagBlock(tags);
    std::vector<qvc::Tag> properties = {{u"Audio Quality", u"Lossless", std::string()}};
    if (!self->vendor.empty()) properties.push_back({u"Encoder", qvc::FromBytes(self->vendor), std::string()});
    self->propertyBlock = qvc::WriteTagBlock(properties);
    record->tags = self->tagBlock.data();
    record->tagsSize = static_cast<uint32_t>(self->tagBlock.size());
    record->extra = self->propertyBlock.data();
    record->extraSize = static_cast<uint32_t>(self->propertyBlock.size());
    return 1;
}

QV_EXPORT int32_t DecodeBlock(uint64_t handle, qv_audio_block* block) { return Self(handle)->Decode(block); }

QV_EXPORT int32_t SetPosition(uint64_t handle, uint64_t frame) { return Self(handle)->Rewind(frame) ? 1 : 0; }

QV_EXPORT int32_t DeleteATag(uint64_t handle, const qv_char* name) {
    Self(handle)->deleted.push_back(qvc::LowerTag(name));
    return 1;
}

}  // extern "C"
