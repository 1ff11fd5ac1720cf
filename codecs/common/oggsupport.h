// What the Ogg codecs (Vorbis, Opus) share: their channel order, which
// differs from the WAVE order the rest of the program uses from three
// channels on, and pictures, which Ogg files carry as base64 picture blocks
// in METADATA_BLOCK_PICTURE comments.
#pragma once

#include <string>
#include <vector>

#include "codecs/common/vorbiscomments.h"

namespace qvc {

// For `channels` 1 to 8: the Ogg channel that WAVE channel i comes from.
// WAVE and Ogg agree on mono, stereo and quadraphonic.
inline const int* OggToWaveOrder(int channels) {
    static const int kOrders[9][8] = {{0},
                                      {0},
                                      {0, 1},
                                      {0, 2, 1},                  // L C R          -> L R C
                                      {0, 1, 2, 3},               // quad
                                      {0, 2, 1, 3, 4},            // L C R BL BR    -> L R C BL BR
                                      {0, 2, 1, 5, 3, 4},         // L C R BL BR LFE -> L R C LFE BL BR
                                      {0, 2, 1, 6, 5, 3, 4},      // L C R SL SR BC LFE -> L R C LFE BC SL SR
                                      {0, 2, 1, 7, 5, 6, 3, 4}};  // L C R SL SR BL BR LFE -> L R C LFE BL BR SL SR
    return kOrders[channels >= 1 && channels <= 8 ? channels : 0];
}

// Reorders interleaved frames from one order to the other in place:
// `fromOgg` true reads Ogg order and leaves WAVE order, false the reverse.
template <typename Sample>
void ReorderChannels(Sample* samples, size_t frames, int channels, bool fromOgg) {
    if (channels < 3 || channels > 8 || channels == 4) return;
    const int* order = OggToWaveOrder(channels);
    Sample frame[8];
    for (size_t f = 0; f < frames; ++f) {
        Sample* at = samples + f * static_cast<size_t>(channels);
        for (int c = 0; c < channels; ++c) frame[c] = at[c];
        for (int c = 0; c < channels; ++c) {
            if (fromOgg) {
                at[c] = frame[order[c]];
            } else {
                at[order[c]] = frame[c];
            }
        }
    }
}

inline std::string Base64Decode(const std::string& text) {
    std::string out;
    uint32_t bits = 0;
    int count = 0;
    for (char c : text) {
        int value = c >= 'A' && c <= 'Z'   ? c - 'A'
                    : c >= 'a' && c <= 'z' ? c - 'a' + 26
                    : c >= '0' && c <= '9' ? c - '0' + 52
                    : c == '+'             ? 62
                    : c == '/'             ? 63
                                           : -1;
        if (value < 0) continue;  // padding and line breaks
        bits = (bits << 6) | static_cast<uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            out.push_back(static_cast<char>((bits >> count) & 0xFF));
        }
    }
    return out;
}

inline std::string Base64Encode(const std::string& data) {
    static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((data.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 2 < data.size(); i += 3) {
        uint32_t v = (static_cast<uint32_t>(static_cast<unsigned char>(data[i])) << 16) |
                     (static_cast<uint32_t>(static_cast<unsigned char>(data[i + 1])) << 8) |
                     static_cast<unsigned char>(data[i + 2]);
        for (int k = 3; k >= 0; --k) out.push_back(kDigits[(v >> (6 * k)) & 0x3F]);
    }
    if (i < data.size()) {
        uint32_t v = static_cast<uint32_t>(static_cast<unsigned char>(data[i])) << 16;
        if (i + 1 < data.size()) v |= static_cast<uint32_t>(static_cast<unsigned char>(data[i + 1])) << 8;
        out.push_back(kDigits[(v >> 18) & 0x3F]);
        out.push_back(kDigits[(v >> 12) & 0x3F]);
        out.push_back(i + 1 < data.size() ? kDigits[(v >> 6) & 0x3F] : '=');
        out.push_back('=');
    }
    return out;
}

// The tags of an Ogg stream's comments, pictures included.
inline std::vector<Tag> TagsFromOggComments(const std::vector<std::string>& comments) {
    std::vector<Tag> tags = TagsFromComments(comments);
    static const char kPictureField[] = "METADATA_BLOCK_PICTURE=";
    for (const std::string& comment : comments) {
        if (comment.size() <= sizeof kPictureField - 1) continue;
        if (Upper(comment.substr(0, sizeof kPictureField - 1)) != kPictureField) continue;
        std::string block = Base64Decode(comment.substr(sizeof kPictureField - 1));
        Picture picture;
        if (ParsePicture(block, picture)) tags.push_back({u"picture", u"", block});
    }
    return tags;
}

// The comments for an Ogg stream's tags, pictures included.
inline std::vector<std::string> OggCommentsFromTags(const std::vector<Tag>& tags) {
    std::vector<std::string> comments = CommentsFromTags(tags);
    for (const Tag& tag : tags) {
        Picture picture;
        if (LowerTag(tag.name) == u"picture" && ParsePicture(tag.binary, picture)) {
            comments.push_back("METADATA_BLOCK_PICTURE=" + Base64Encode(tag.binary));
        }
    }
    return comments;
}

// Takes an Ogg stream's comment header (a vorbis_comment or an OpusTags:
// the two libraries lay it out alike) into a decoder's tags, encoder name
// and encoder settings. The encoding tools name themselves and their
// options in comments, which win over the library's vendor string.
template <typename Comments>
void TakeOggComments(const Comments* header, LossyDecoderBase& decoder) {
    std::vector<std::string> comments;
    decoder.encoder.clear();
    decoder.encoderSettings.clear();
    if (header != nullptr) {
        if (header->vendor != nullptr) decoder.encoder = FromBytes(header->vendor);
        for (int i = 0; i < header->comments; ++i) {
            comments.emplace_back(header->user_comments[i], static_cast<size_t>(header->comment_lengths[i]));
        }
    }
    decoder.tags = TagsFromOggComments(comments);
    for (const Tag& tag : decoder.tags) {
        if (tag.name == u"encoder") decoder.encoder = tag.value;
        if (tag.name == u"encoder_options") decoder.encoderSettings = tag.value;
    }
}

}  // namespace qvc
