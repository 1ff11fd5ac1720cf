// Tags written through TagLib, for the encoders whose formats keep their
// tags where the audio library does not reach them: ID3v2 in MP3 files,
// and the comment packet of an Ogg file once the audio is written.
#pragma once

#include <taglib/attachedpictureframe.h>
#include <taglib/flacpicture.h>
#include <taglib/id3v2tag.h>
#include <taglib/tpropertymap.h>
#include <taglib/xiphcomment.h>

#include <string>
#include <vector>

#include "codecs/common/codecfiles.h"
#include "codecs/common/oggsupport.h"

namespace qvc {

inline TagLib::String Utf8String(const std::string& text) { return TagLib::String(text, TagLib::String::UTF8); }

inline void SplitComment(const std::string& comment, std::string& field, std::string& value) {
    size_t equals = comment.find('=');
    field = comment.substr(0, equals);
    value = equals == std::string::npos ? std::string() : comment.substr(equals + 1);
}

// Replaces every field and picture of an Ogg comment packet with `tags`.
inline void WriteXiphComment(TagLib::Ogg::XiphComment& comment, const std::vector<Tag>& tags) {
    comment.removeAllFields();
    comment.removeAllPictures();
    for (const std::string& line : CommentsFromTags(tags)) {
        std::string field, value;
        SplitComment(line, field, value);
        comment.addField(Utf8String(field), Utf8String(value), false);
    }
    for (const Tag& tag : tags) {
        Picture parsed;
        if (LowerTag(tag.name) != u"picture" || !ParsePicture(tag.binary, parsed)) continue;
        auto* picture = new TagLib::FLAC::Picture(
            TagLib::ByteVector(tag.binary.data(), static_cast<unsigned int>(tag.binary.size())));
        comment.addPicture(picture);
    }
}

// At the end of an Ogg encoding: when the tags the conversion ended with
// differ from those the stream was begun with, they replace them in the
// finished file at `path`. A text naming the fault, or null.
template <typename OggFile>
const char* RewriteOggTags(const NativeName& path, const std::string& beginTags, const void* endTags,
                           uint32_t endSize) {
    if (endTags == nullptr || std::string(static_cast<const char*>(endTags), endSize) == beginTags) return nullptr;
    OggFile ogg(path.c_str(), false);
    if (!ogg.isValid() || ogg.tag() == nullptr) return "the final tags can't be written";
    WriteXiphComment(*ogg.tag(), ReadTagBlock(endTags, endSize));
    return ogg.save() ? nullptr : "the final tags can't be written (is the disk full?)";
}

// Replaces every frame of an ID3v2 tag with `tags`. The track and disc
// numbers keep their "n/total" form, as ID3 stores them.
inline void WriteId3v2(TagLib::ID3v2::Tag& id3, const std::vector<Tag>& tags) {
    TagLib::PropertyMap properties;
    std::string trackTotal, discTotal;
    for (const std::string& line : CommentsFromTags(tags)) {
        std::string field, value;
        SplitComment(line, field, value);
        if (field == "TRACKTOTAL") {
            trackTotal = value;
        } else if (field == "DISCTOTAL") {
            discTotal = value;
        } else {
            properties[Utf8String(field)].append(Utf8String(value));
        }
    }
    const std::pair<const char*, const std::string*> totals[] = {{"TRACKNUMBER", &trackTotal},
                                                                 {"DISCNUMBER", &discTotal}};
    for (const auto& [field, total] : totals) {
        if (total->empty()) continue;
        TagLib::StringList& values = properties[field];
        if (values.isEmpty()) values.append(TagLib::String());
        values[0] = values[0] + "/" + Utf8String(*total);
    }
    for (TagLib::ID3v2::Frame* frame : TagLib::ID3v2::FrameList(id3.frameList())) id3.removeFrame(frame);
    id3.setProperties(properties);
    for (const Tag& tag : tags) {
        Picture parsed;
        if (LowerTag(tag.name) != u"picture" || !ParsePicture(tag.binary, parsed)) continue;
        auto* frame = new TagLib::ID3v2::AttachedPictureFrame();
        frame->setType(static_cast<TagLib::ID3v2::AttachedPictureFrame::Type>(parsed.type <= 20 ? parsed.type : 0));
        frame->setMimeType(Utf8String(parsed.mime));
        frame->setDescription(Utf8String(parsed.description));
        frame->setTextEncoding(TagLib::String::UTF8);
        frame->setPicture(TagLib::ByteVector(parsed.data, static_cast<unsigned int>(parsed.size)));
        id3.addFrame(frame);
    }
}

}  // namespace qvc
