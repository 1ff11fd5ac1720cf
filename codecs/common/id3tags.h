// Tags read through TagLib: a property map by the program's tag names, and
// the pictures of an ID3v2 tag as "picture" tags. For the decoders of
// formats whose tags are ID3: MP3, and the "id3 " chunk of WAVE and AIFF.
#pragma once

#include <taglib/attachedpictureframe.h>
#include <taglib/id3v2tag.h>
#include <taglib/tpropertymap.h>

#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"
#include "codecs/common/vorbiscomments.h"

namespace qvc {

// TagLib's property names are the comment field names.
inline std::vector<Tag> TagsFromProperties(const TagLib::PropertyMap& properties) {
    std::vector<std::string> comments;
    for (const auto& [key, values] : properties) {
        for (const TagLib::String& value : values) comments.push_back(key.to8Bit(true) + "=" + value.to8Bit(true));
    }
    return TagsFromComments(comments);
}

// An ID3v2 picture as the binary of a "picture" tag (ID3 states no size).
inline void AddId3Pictures(TagLib::ID3v2::Tag& id3, std::vector<Tag>& tags) {
    for (TagLib::ID3v2::Frame* frame : id3.frameList("APIC")) {
        auto* picture = dynamic_cast<TagLib::ID3v2::AttachedPictureFrame*>(frame);
        if (picture == nullptr) continue;
        TagLib::ByteVector data = picture->picture();
        tags.push_back({u"picture", u"",
                        PictureBlock(static_cast<uint32_t>(picture->type()), picture->mimeType().to8Bit(true),
                                     picture->description().to8Bit(true), 0, 0, 0, 0, data.data(), data.size())});
    }
}

}  // namespace qvc
