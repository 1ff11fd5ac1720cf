// Encoder "FLAC", on libFLAC: 4 to 32 bits as the stream has them (float
// audio is rounded to 24 bits), 1 to 8 channels. Tags become a Vorbis
// comment block (see vorbiscomments.h), "picture" tags picture blocks; the
// tags the conversion ends with are written into the finished file, over
// the padding left for them.
//
// Option string:
//   -level="0..8"   compression level, 5 when not given
//   -verify="1"     decode every frame again while encoding and fail on
//                   any difference
#include <FLAC/metadata.h>
#include <FLAC/stream_encoder.h>

#include <cstdio>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/common/vorbiscomments.h"

namespace {

constexpr uint32_t kPadding = 8192;

// A picture block from the binary of a "picture" tag; null when damaged.
FLAC__StreamMetadata* PictureFrom(const std::string& block) {
    qvc::Picture parsed;
    if (!qvc::ParsePicture(block, parsed)) return nullptr;
    FLAC__StreamMetadata* picture = FLAC__metadata_object_new(FLAC__METADATA_TYPE_PICTURE);
    if (picture == nullptr) return nullptr;
    picture->data.picture.type = static_cast<FLAC__StreamMetadata_Picture_Type>(parsed.type <= 20 ? parsed.type : 0);
    picture->data.picture.width = parsed.width;
    picture->data.picture.height = parsed.height;
    picture->data.picture.depth = parsed.depth;
    picture->data.picture.colors = parsed.colors;
    std::vector<char> mimeText(parsed.mime.begin(), parsed.mime.end());
    mimeText.push_back('\0');
    std::vector<FLAC__byte> descriptionText(parsed.description.begin(), parsed.description.end());
    descriptionText.push_back(0);
    if (!FLAC__metadata_object_picture_set_mime_type(picture, mimeText.data(), true) ||
        !FLAC__metadata_object_picture_set_description(picture, descriptionText.data(), true) ||
        !FLAC__metadata_object_picture_set_data(picture, reinterpret_cast<FLAC__byte*>(const_cast<char*>(parsed.data)),
                                                static_cast<FLAC__uint32>(parsed.size), true)) {
        FLAC__metadata_object_delete(picture);
        return nullptr;
    }
    return picture;
}

// A FLAC metadata block states its length in 24 bits.
constexpr size_t kLargestBlock = (1u << 24) - 1;

// The Vorbis comment and picture blocks for a tag block; the caller owns
// them. A tag too large for the format empties the list and names itself
// in `fault`.
std::vector<FLAC__StreamMetadata*> TagBlocks(const void* tagBlock, size_t size, std::string& fault) {
    std::vector<FLAC__StreamMetadata*> blocks;
    std::vector<qvc::Tag> tags = qvc::ReadTagBlock(tagBlock, size);
    size_t commentBytes = 0;
    std::vector<std::string> comments = qvc::CommentsFromTags(tags);
    for (const std::string& comment : comments) commentBytes += comment.size() + 4;
    if (commentBytes > kLargestBlock) {
        fault = "the tags add up to more than the 16 MB a FLAC file can hold";
        return blocks;
    }
    for (const qvc::Tag& tag : tags) {
        if (qvc::LowerTag(tag.name) == u"picture" && tag.binary.size() > kLargestBlock) {
            fault = "a picture of " + std::to_string(tag.binary.size() >> 20) +
                    " MB is larger than the 16 MB a FLAC file can hold";
            return blocks;
        }
    }
    FLAC__StreamMetadata* vorbis = FLAC__metadata_object_new(FLAC__METADATA_TYPE_VORBIS_COMMENT);
    if (vorbis == nullptr) return blocks;
    for (const std::string& comment : comments) {
        FLAC__StreamMetadata_VorbisComment_Entry entry;
        entry.length = static_cast<FLAC__uint32>(comment.size());
        entry.entry = reinterpret_cast<FLAC__byte*>(const_cast<char*>(comment.data()));
        FLAC__metadata_object_vorbiscomment_append_comment(vorbis, entry, true);
    }
    blocks.push_back(vorbis);
    for (const qvc::Tag& tag : tags) {
        if (qvc::LowerTag(tag.name) != u"picture" || tag.binary.empty()) continue;
        if (FLAC__StreamMetadata* picture = PictureFrom(tag.binary)) blocks.push_back(picture);
    }
    return blocks;
}

void DeleteBlocks(std::vector<FLAC__StreamMetadata*>& blocks) {
    for (FLAC__StreamMetadata* block : blocks) FLAC__metadata_object_delete(block);
    blocks.clear();
}

// The output file, filled a quarter megabyte at a time (a chunk still in
// the core's cache when it goes to the file). libFLAC's own file output
// writes every frame by itself and asks the file for its position after
// each one: two or three system calls per 4096 samples, a few per cent
// of the encoding. Here the position is counted instead.
class Output {
public:
    bool Open(const qv_char* name) {
        file.reset(qvc::OpenOutput(name, true));
        if (file == nullptr) return false;
        // Whole chunks go to the file; a second buffer would only copy.
        std::setvbuf(file.get(), nullptr, _IONBF, 0);
        pending.reserve(kChunk);
        position = 0;
        failed = false;
        return true;
    }

    bool Write(const FLAC__byte* bytes, size_t size) {
        if (pending.size() + size > kChunk && !Flush()) return false;
        pending.insert(pending.end(), bytes, bytes + size);
        position += size;
        return true;
    }

    // libFLAC goes back only at the end, to complete the stream header.
    bool Seek(uint64_t offset) {
        if (!Flush() || !qvc::Seek(file.get(), offset)) return false;
        position = offset;
        return true;
    }

    uint64_t Tell() const { return position; }

    // Everything written and the file closed; false if any of it failed.
    bool Close() {
        if (file == nullptr) return false;
        bool written = Flush();
        return std::fclose(file.release()) == 0 && written;
    }

    // Without a word: the output of an abandoned conversion is removed.
    void Abandon() {
        pending.clear();
        file.reset();
    }

    static FLAC__StreamEncoderWriteStatus OnWrite(const FLAC__StreamEncoder*, const FLAC__byte buffer[], size_t bytes,
                                                  uint32_t, uint32_t, void* self) {
        return static_cast<Output*>(self)->Write(buffer, bytes) ? FLAC__STREAM_ENCODER_WRITE_STATUS_OK
                                                                : FLAC__STREAM_ENCODER_WRITE_STATUS_FATAL_ERROR;
    }
    static FLAC__StreamEncoderSeekStatus OnSeek(const FLAC__StreamEncoder*, FLAC__uint64 offset, void* self) {
        return static_cast<Output*>(self)->Seek(offset) ? FLAC__STREAM_ENCODER_SEEK_STATUS_OK
                                                        : FLAC__STREAM_ENCODER_SEEK_STATUS_ERROR;
    }
    static FLAC__StreamEncoderTellStatus OnTell(const FLAC__StreamEncoder*, FLAC__uint64* offset, void* self) {
        *offset = static_cast<Output*>(self)->Tell();
        return FLAC__STREAM_ENCODER_TELL_STATUS_OK;
    }

private:
    static constexpr size_t kChunk = size_t{1} << 18;

    bool Flush() {
        if (failed) return false;
        if (!pending.empty() && std::fwrite(pending.data(), 1, pending.size(), file.get()) != pending.size()) {
            failed = true;
        }
        pending.clear();
        return !failed;
    }

    qvc::OwnedFile file;
    std::vector<FLAC__byte> pending;
    uint64_t position = 0;
    bool failed = false;
};

struct Encoder : qvc::EncoderBase {
    // Deleting an encoder finishes it first.
    qvc::Owned<FLAC__StreamEncoder, FLAC__stream_encoder_delete> flac;
    std::vector<FLAC__StreamMetadata*> metadata;  // the encoder reads them until it is finished
    Output output;
    std::string path;
    std::string firstTags;  // the tag block the file was begun with
    uint32_t channels = 0;
    uint32_t bits = 16;
    std::vector<FLAC__int32> buffer;

    ~Encoder() override { Release(); }
    void Release() override {
        flac.reset();
        output.Abandon();
        DeleteBlocks(metadata);
    }

    bool Begin(qv_encoder_begin_record& record) {
        qv_audio_format& format = *record.format;
        channels = format.channels;
        if (channels == 0 || channels > 8) return Fail("FLAC takes 1 to 8 channels");
        bits = format.sampleType == QV_SAMPLES_INT32 ? format.validBits : 24;
        if (bits < 4 || bits > 32) return Fail("FLAC takes 4 to 32 bits");
        if (format.samplesPerSecond == 0 || format.samplesPerSecond > 1048575) {
            return Fail("FLAC takes rates up to 1,048,575 Hz");
        }
        std::u16string options = record.optionString != nullptr ? record.optionString : u"";
        std::u16string levelText = qvc::Option(options, u"level");
        int level = levelText.empty() ? 5 : std::atoi(qvc::ToUtf8(levelText).c_str());
        if (level < 0 || level > 8) return Fail("-level takes 0 to 8");
        bool verify = qvc::Option(options, u"verify") == u"1";
        flac.reset(FLAC__stream_encoder_new());
        if (flac == nullptr) return Fail("out of memory");
        FLAC__stream_encoder_set_channels(flac.get(), channels);
        FLAC__stream_encoder_set_bits_per_sample(flac.get(), bits);
        FLAC__stream_encoder_set_sample_rate(flac.get(), format.samplesPerSecond);
        FLAC__stream_encoder_set_compression_level(flac.get(), static_cast<uint32_t>(level));
        FLAC__stream_encoder_set_verify(flac.get(), verify);
        // The streamable subset names only 8, 12, 16, 20, 24 and 32 bits and
        // the usual rates in its frame headers. Anything else (a 7-bit
        // WAV, an odd rate) is still FLAC, with the depth and rate kept in
        // the stream header, which every decoder reads.
        bool subsetDepth = bits == 8 || bits == 12 || bits == 16 || bits == 20 || bits == 24 || bits == 32;
        if (!subsetDepth || !FLAC__format_sample_rate_is_subset(format.samplesPerSecond)) {
            FLAC__stream_encoder_set_streamable_subset(flac.get(), false);
        }
        if (record.totalFrames != 0) FLAC__stream_encoder_set_total_samples_estimate(flac.get(), record.totalFrames);
        std::string fault;
        metadata = TagBlocks(record.tags, record.tagsSize, fault);
        firstTags.assign(record.tags != nullptr ? static_cast<const char*>(record.tags) : "",
                         record.tags != nullptr ? record.tagsSize : 0);
        if (!fault.empty()) {
            error = qvc::FromBytes(fault);
            Release();
            return false;
        }
        FLAC__StreamMetadata* padding = FLAC__metadata_object_new(FLAC__METADATA_TYPE_PADDING);
        if (padding != nullptr) {
            padding->length = kPadding;
            metadata.push_back(padding);
        }
        FLAC__stream_encoder_set_metadata(flac.get(), metadata.data(), static_cast<uint32_t>(metadata.size()));
        path = qvc::FileName(record.outputPath);
        if (!output.Open(record.outputPath)) return Fail("the output file can't be created");
        FLAC__StreamEncoderInitStatus status = FLAC__stream_encoder_init_stream(
            flac.get(), Output::OnWrite, Output::OnSeek, Output::OnTell, nullptr, &output);
        if (status != FLAC__STREAM_ENCODER_INIT_STATUS_OK) {
            if (status == FLAC__STREAM_ENCODER_INIT_STATUS_ENCODER_ERROR &&
                FLAC__stream_encoder_get_state(flac.get()) == FLAC__STREAM_ENCODER_CLIENT_ERROR) {
                return Fail("the output file can't be written (is the disk full?)");
            }
            return Fail((std::string("libFLAC refuses these settings: ") + FLAC__StreamEncoderInitStatusString[status])
                            .c_str());
        }
        format.acceptedTypes = QV_SAMPLES_INT32;
        format.validBits = static_cast<uint16_t>(bits);
        return true;
    }

    bool Encode(const qv_audio_block& block) {
        // Right-justified for libFLAC and split into one run per channel in
        // the same pass: handed over interleaved, libFLAC would split them
        // once more, sample by sample.
        const size_t frames = block.frames;
        buffer.resize(frames * channels);
        const auto* in = static_cast<const int32_t*>(block.samples);
        const int shift = 32 - static_cast<int>(bits);
        FLAC__int32* runs[8];
        for (uint32_t c = 0; c < channels; ++c) runs[c] = buffer.data() + c * frames;
        if (channels == 2) {
            FLAC__int32* left = runs[0];
            FLAC__int32* right = runs[1];
            for (size_t i = 0; i < frames; ++i) {
                left[i] = in[2 * i] >> shift;
                right[i] = in[2 * i + 1] >> shift;
            }
        } else {
            for (size_t i = 0; i < frames; ++i, in += channels) {
                for (uint32_t c = 0; c < channels; ++c) runs[c][i] = in[c] >> shift;
            }
        }
        if (!FLAC__stream_encoder_process(flac.get(), runs, block.frames)) {
            FLAC__StreamEncoderState state = FLAC__stream_encoder_get_state(flac.get());
            return Fail(state == FLAC__STREAM_ENCODER_VERIFY_MISMATCH_IN_AUDIO_DATA
                            ? "verification found a difference in the encoded audio"
                            : "the output file can't be written (is the disk full?)");
        }
        return true;
    }

    // The final tags over the ones written at the start, in the padding.
    bool RewriteTags(const void* tagBlock, size_t size) {
        FLAC__Metadata_Chain* chain = FLAC__metadata_chain_new();
        if (chain == nullptr) return false;
        bool ok = FLAC__metadata_chain_read(chain, path.c_str());
        if (ok) {
            FLAC__Metadata_Iterator* it = FLAC__metadata_iterator_new();
            FLAC__metadata_iterator_init(it, chain);
            do {
                FLAC__MetadataType type = FLAC__metadata_iterator_get_block_type(it);
                if (type == FLAC__METADATA_TYPE_VORBIS_COMMENT || type == FLAC__METADATA_TYPE_PICTURE) {
                    FLAC__metadata_iterator_delete_block(it, true);
                }
            } while (FLAC__metadata_iterator_next(it));
            std::string fault;
            std::vector<FLAC__StreamMetadata*> blocks = TagBlocks(tagBlock, size, fault);
            if (!fault.empty()) {
                error = qvc::FromBytes(fault);
                ok = false;
            }
            FLAC__metadata_iterator_init(it, chain);  // behind STREAMINFO
            for (FLAC__StreamMetadata* block : blocks) {
                if (ok && FLAC__metadata_iterator_insert_block_after(it, block)) continue;
                FLAC__metadata_object_delete(block);
                ok = false;
            }
            FLAC__metadata_iterator_delete(it);
            FLAC__metadata_chain_sort_padding(chain);
            ok = ok && FLAC__metadata_chain_write(chain, true, false);
        }
        FLAC__metadata_chain_delete(chain);
        return ok;
    }

    bool End(const qv_encoder_end_record& record) {
        if (flac == nullptr) return record.aborted != 0 || Fail("the output file is not open");
        bool finished = FLAC__stream_encoder_finish(flac.get()) != 0;
        FLAC__StreamEncoderState state = FLAC__stream_encoder_get_state(flac.get());
        finished = output.Close() && finished;
        Release();
        if (record.aborted != 0) return true;
        if (!finished) {
            return Fail(state == FLAC__STREAM_ENCODER_VERIFY_MISMATCH_IN_AUDIO_DATA
                            ? "verification found a difference in the encoded audio"
                            : "the output file can't be finished (is the disk full?)");
        }
        error.clear();
        // Tags the file already has need no second writing: that would
        // open and read the file again for nothing.
        bool sameTags = record.tags != nullptr &&
                        std::string_view(static_cast<const char*>(record.tags), record.tagsSize) == firstTags;
        if (record.tags != nullptr && !sameTags && !RewriteTags(record.tags, record.tagsSize)) {
            return !error.empty() ? false : Fail("the final tags can't be written");
        }
        return true;
    }
};

constexpr const char* kExtension = ".flac";
// What "qvt plugins" shows of the options (see the top of this file).
constexpr qvc::OptionSpec kOptionList[] = {
    {"level", qvc::OptionKind::Integer, "5", "0..8", "Compression level", "compression level, 0 fastest, 8 smallest"},
    {"verify", qvc::OptionKind::Flag, "", "", "Verify while encoding",
     "decode every frame again while encoding and fail on any difference"},
};
constexpr qvc::OptionTable kOptions{kOptionList, std::size(kOptionList), nullptr};
constexpr bool kLossless = true;
constexpr const char* kRequiredEffect = nullptr;
// About 58 % of the PCM size for music at the usual levels.
uint64_t EstimatedSize(uint64_t lengthMs, const qv_stream_facts* facts) {
    uint64_t perSecond = facts != nullptr ? facts->bytesPerSecond : 0;
    return lengthMs * perSecond / 1000 * 58 / 100 + kPadding;
}

}  // namespace

#include "codecs/common/encoderexports.h"
