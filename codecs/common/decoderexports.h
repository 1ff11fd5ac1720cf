// The exports every decoder of this project defines alike. Included once,
// at the end of the decoder's source, after it has defined in its
// anonymous namespace:
//   struct Decoder : qvc::DecoderBase, with
//     bool Open(const qv_char* name)       false with `error` set
//     void Close()
//     int32_t Decode(qv_audio_block* block)
//     bool Rewind(uint64_t frame)
//     bool Format(qv_audio_format& format) const   false when not open
//     void Facts(qv_stream_facts& facts) const
//     std::vector<qvc::Tag> Tags() const         the file's tags
//     std::vector<qvc::Tag> Properties() const   "Audio Quality", "Encoder", ...
//   kDecodes   the {extension, description} pairs it lists
#pragma once

#include <algorithm>
#include <new>

#include "codecs/common/codecsupport.h"

namespace {

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
        if (record->index >= sizeof kDecodes / sizeof kDecodes[0]) return 0;
        record->text1 = self->text1.Set(kDecodes[record->index].extension);
        record->text2 = self->text2.Set(kDecodes[record->index].description);
        return 1;
    }
    if (qvc::KeyIs(key, "Format")) {
        auto* format = static_cast<qv_audio_format*>(const_cast<void*>(record->facts));
        *format = qv_audio_format{};
        return self->Format(*format) ? 1 : 0;
    }
    if (qvc::KeyIs(key, "Notes")) {
        if (self->notes.empty()) return 0;
        std::string lines;
        for (const std::string& note : self->notes) lines += (lines.empty() ? "" : "\n") + note;
        record->text1 = self->text1.Set(qvc::FromBytes(lines));
        return 1;
    }
    int32_t shared = qvc::AnswerShared(key, record, self->error, self->errorAnswer);
    return shared < 0 ? 0 : shared;
}

QV_EXPORT int32_t Set(uint64_t, const qv_char*, qv_query_record*) { return 0; }

QV_EXPORT int32_t Open(uint64_t handle, qv_open_record* record) {
    Decoder* self = Self(handle);
    self->error.clear();
    self->notes.clear();
    if (!self->Open(record->fileName)) return 0;
    self->Facts(record->facts);
    std::vector<qvc::Tag> tags = self->Tags();
    for (const std::u16string& gone : self->deleted) {
        tags.erase(std::remove_if(tags.begin(), tags.end(),
                                  [&gone](const qvc::Tag& tag) { return qvc::LowerTag(tag.name) == gone; }),
                   tags.end());
    }
    self->tagBlock = qvc::WriteTagBlock(tags);
    self->propertyBlock = qvc::WriteTagBlock(self->Properties());
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
