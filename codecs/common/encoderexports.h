// The exports every encoder of this project defines alike. Included once,
// at the end of the encoder's source, after it has defined in its
// anonymous namespace:
//   struct Encoder  with Begin (which also fills in acceptedTypes and the
//                   depth it wants), Encode and End, a destructor that
//                   closes what is open, and `text1`, `text2`, `page`, `error`
//                   and `errorAnswer`
//   kExtension      the extension its files get
//   kLossless       whether it keeps every sample
//   EstimatedSize   the expected size of a file of that length and facts
//   kOptions        what its option string takes (optionspec.h), for its
//                   settings page and "qvt plugins"
//   kRequiredEffect the effect ("Name=settings") its format needs ahead of
//                   it, or null
// and, if its outputs don't go to the window's output location, defined
// QVC_NO_OUTPUT_LOCATION.
#pragma once

#include <new>

#include "codecs/common/codecsupport.h"

namespace {

Encoder* Self(uint64_t handle) { return reinterpret_cast<Encoder*>(static_cast<uintptr_t>(handle)); }

}  // namespace

extern "C" {

QV_EXPORT uint64_t ENC_Create(const qv_log_record*) {
    return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(new (std::nothrow) Encoder()));
}

QV_EXPORT void ENC_Destroy(uint64_t handle) { delete Self(handle); }

QV_EXPORT int32_t ENC_Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    Encoder* self = Self(handle);
    if (qvc::KeyIs(key, "Extension")) {
        record->text1 = self->text1.Set(kExtension);
        return 1;
    }
    if (qvc::KeyIs(key, "IsLossless")) {
        record->estimate = kLossless ? 1 : 0;
        return kLossless ? 1 : 0;
    }
    if (qvc::KeyIs(key, "NoMultiCPU")) {
        // Every encoder of this project runs one file per process, so any
        // number of them may run at once.
        return 0;
    }
#ifdef QVC_NO_OUTPUT_LOCATION
    // The outputs go where the library's own settings say, so the window's
    // output location has nothing to decide.
    if (qvc::KeyIs(key, "DisableConvertToFolder")) return 1;
#endif
    if (qvc::KeyIs(key, "RequiresDSP")) {
        if (kRequiredEffect == nullptr) return 0;
        record->text2 = self->text2.Set(kRequiredEffect);
        return 1;
    }
    if (qvc::KeyIs(key, "GetEstimatedFileSize")) {
        record->estimate = EstimatedSize(record->lengthMs, static_cast<const qv_stream_facts*>(record->facts));
        return 1;
    }
    if (qvc::KeyIs(key, "OptionSpec")) {
        if (kOptions.freeHelp != nullptr) return 0;
        static const std::u16string spec = qvc::FromAscii(qvc::OptionSpecText(kOptions).c_str());
        record->text1 = spec.c_str();
        return 1;
    }
    static const std::string help = qvc::OptionHelpText(kOptions);
    int32_t shared = qvc::AnswerShared(key, record, self->error, self->errorAnswer, help.c_str());
    return shared < 0 ? 0 : shared;
}

QV_EXPORT int32_t ENC_Set(uint64_t, const qv_char*, qv_query_record*) { return 0; }

// The program builds the settings page from the description ("OptionSpec"):
// the library keeps the option string it is given and hands it back.
QV_EXPORT void* ENC_ShowConfigBit(uint64_t handle, void*, int32_t, int32_t, const qv_char* options) {
    Self(handle)->page.Set(options != nullptr ? std::u16string(options) : std::u16string());
    return nullptr;
}

QV_EXPORT const qv_char* ENC_RemoveConfigBit(uint64_t handle, void*) { return Self(handle)->page.Get(); }

QV_EXPORT int32_t ENC_BeginConversion(uint64_t handle, qv_encoder_begin_record* record) {
    // A value the description doesn't allow is refused by name before
    // anything is made of it.
    std::string refusal = qvc::CheckOptions(kOptions, record->optionString != nullptr ? record->optionString : u"");
    if (!refusal.empty()) return Self(handle)->Fail(refusal) ? 1 : 0;
    return Self(handle)->Begin(*record) ? 1 : 0;
}

QV_EXPORT int32_t ENC_EncodeBlock(uint64_t handle, const qv_audio_block* block) {
    return Self(handle)->Encode(*block) ? 1 : 0;
}

QV_EXPORT int32_t ENC_EndConversion(uint64_t handle, const qv_encoder_end_record* record) {
    return Self(handle)->End(*record) ? 1 : 0;
}

}  // extern "C"
