// Vorbis comments (FLAC, Ogg Vorbis, Opus) and the program's tag names.
// Known fields map to the tag vocabulary; any other field keeps its name,
// lower case, so that nothing is lost on the way through. Several fields of
// one name become one tag with the values joined by CR; "n/total" track
// and disc numbers become TRACKNUMBER/TRACKTOTAL and back. Pictures travel
// as tags named "picture" whose binary data is a FLAC picture block.
#pragma once

#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

namespace qvc {

struct CommentName {
    const char* field;  // upper case
    const char16_t* tag;
};

inline const std::vector<CommentName>& CommentNames() {
    static const std::vector<CommentName> names = {{"ARTIST", u"artist"},
                                                   {"ALBUM", u"album"},
                                                   {"ALBUMARTIST", u"album artist"},
                                                   {"ALBUM ARTIST", u"album artist"},
                                                   {"COMPOSER", u"composer"},
                                                   {"CONDUCTOR", u"conductor"},
                                                   {"TITLE", u"title"},
                                                   {"GENRE", u"genre"},
                                                   {"DATE", u"year"},
                                                   {"BAND", u"band"},  // written so; ENSEMBLE read too
                                                   {"ENSEMBLE", u"band"},
                                                   {"RATING", u"rating"},
                                                   {"BPM", u"tempo"},
                                                   {"LABEL", u"label"},
                                                   {"ISRC", u"isrc"},
                                                   {"UPC", u"upc"},
                                                   {"COMPILATION", u"compilation"},
                                                   {"MOOD", u"mood"},
                                                   {"STYLE", u"style"},
                                                   {"COPYRIGHT", u"copyright"},
                                                   {"SUBTITLE", u"subtitle"},
                                                   {"ORCHESTRA", u"orchestra"},
                                                   {"SOLOISTS", u"soloists"},
                                                   {"INSTRUMENT", u"instrument"},
                                                   {"PERIOD", u"period"},
                                                   {"CHORUS", u"chorus"},
                                                   {"CATALOGNUMBER", u"catalog #"},
                                                   {"WORK", u"work"},
                                                   {"MOVEMENTNAME", u"movement name"},
                                                   {"MOVEMENTTOTAL", u"movement count"},
                                                   {"MOVEMENT", u"movement number"},
                                                   {"TITLESORT", u"title sort"},
                                                   {"ARTISTSORT", u"artist sort"},
                                                   {"ALBUMARTISTSORT", u"album artist sort"},
                                                   {"ALBUMSORT", u"album sort"},
                                                   {"SOLOISTSSORT", u"soloists sort"},
                                                   {"COMPOSERSORT", u"composer sort"},
                                                   {"CONDUCTORSORT", u"conductor sort"},
                                                   {"COMMENT", u"comment"},
                                                   {"LYRICS", u"lyrics"}};
    return names;
}

inline std::string Upper(std::string text) {
    for (char& c : text) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
    }
    return text;
}

// Adds `value` to the tag `name`, joining a second value with CR.
inline void AddValue(std::vector<Tag>& tags, const std::u16string& name, const std::u16string& value) {
    for (Tag& tag : tags) {
        if (tag.name == name) {
            tag.value += u'\r';
            tag.value += value;
            return;
        }
    }
    tags.push_back({name, value, std::string()});
}

// "NAME=value" comments (UTF-8) to tags; pictures are added by the caller.
inline std::vector<Tag> TagsFromComments(const std::vector<std::string>& comments) {
    std::vector<Tag> tags;
    std::u16string trackTotal, discTotal;
    for (const std::string& comment : comments) {
        size_t equals = comment.find('=');
        if (equals == std::string::npos || equals == 0) continue;
        std::string field = Upper(comment.substr(0, equals));
        std::u16string value = FromBytes(comment.substr(equals + 1));
        if (field == "TRACKNUMBER") {
            AddValue(tags, u"track", value);
        } else if (field == "DISCNUMBER") {
            AddValue(tags, u"disc", value);
        } else if (field == "TRACKTOTAL" || field == "TOTALTRACKS") {
            trackTotal = value;
        } else if (field == "DISCTOTAL" || field == "TOTALDISCS") {
            discTotal = value;
        } else if (field == "METADATA_BLOCK_PICTURE") {
            continue;  // base64 pictures in Ogg: the caller decodes them
        } else {
            std::u16string name = LowerTag(FromBytes(field));
            for (const CommentName& known : CommentNames()) {
                if (field == known.field) name = known.tag;
            }
            AddValue(tags, name, value);
        }
    }
    for (Tag& tag : tags) {
        const std::u16string& total = tag.name == u"track" ? trackTotal : tag.name == u"disc" ? discTotal : u"";
        if (!total.empty() && tag.value.find(u'/') == std::u16string::npos) tag.value += u"/" + total;
    }
    return tags;
}

// Tags to "NAME=value" comments (UTF-8); binary tags are left to the caller.
inline std::vector<std::string> CommentsFromTags(const std::vector<Tag>& tags) {
    std::vector<std::string> comments;
    for (const Tag& tag : tags) {
        if (!tag.binary.empty() || tag.value.empty()) continue;
        std::u16string name = LowerTag(tag.name);
        std::vector<std::u16string> values;
        for (size_t start = 0;;) {
            size_t cr = tag.value.find(u'\r', start);
            values.push_back(tag.value.substr(start, cr == std::u16string::npos ? std::u16string::npos : cr - start));
            if (cr == std::u16string::npos) break;
            start = cr + 1;
        }
        if (name == u"track" || name == u"disc") {
            std::u16string first = values.front();
            size_t slash = first.find(u'/');
            std::string number = ToUtf8(first.substr(0, slash));
            std::string prefix = name == u"track" ? "TRACK" : "DISC";
            if (!number.empty()) comments.push_back(prefix + "NUMBER=" + number);
            if (slash != std::u16string::npos && slash + 1 < first.size()) {
                comments.push_back(prefix + "TOTAL=" + ToUtf8(first.substr(slash + 1)));
            }
            continue;
        }
        std::string field;
        for (const CommentName& known : CommentNames()) {
            if (name == known.tag) {
                field = known.field;
                break;
            }
        }
        if (field.empty()) {
            // Field names are printable ASCII without '='.
            for (char16_t c : name) {
                if (c >= 0x20 && c <= 0x7D && c != u'=') field.push_back(static_cast<char>(c));
            }
            field = Upper(field);
            if (field.empty()) continue;
        }
        for (const std::u16string& value : values) comments.push_back(field + "=" + ToUtf8(value));
    }
    return comments;
}

}  // namespace qvc
