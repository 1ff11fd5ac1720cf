// The exports every effect of this project defines alike. Included once,
// at the end of the effect's source, after it has defined in its
// anonymous namespace:
//   struct Effect : qvc::EffectBase, with
//     bool Begin(qv_begin_record& record, const std::u16string& settings)
//         record.format is null when the front end runs the effect for its
//         tags only
//     int32_t Pass(const qv_audio_block* in, qv_audio_block* out)
//         as DSP_PassAudioBlock: in null at the end, 1 a block, 0 none
//     bool Analyse(const qv_audio_block& in)   the analysis pass
//     bool End()
//     bool After(const qv_after_record& record)
//     bool BatchEnd(const qv_batch_end_record& record)
//   kTwoPass   whether it wants an analysis pass first; or, with
//     QVC_EFFECT_TWO_PASS_BY_SETTINGS defined ahead of this file,
//     bool WantsTwoPass(const std::u16string& settings) in its place
//   kOptionSpecs (optionspec.h) with QVC_EFFECT_HAS_SPECS defined ahead of
//     this file: its settings described, for the settings page, the help
//     "qvt plugins" prints and the refusal of a bad value; or, for
//     settings that don't fit a description, kOptionHelp: their help.
// EffectBase gives the ones an effect has no use for.
#pragma once

#include <iterator>
#include <new>
#include <string>

#include "codecs/common/codecsupport.h"

namespace {

Effect* Self(uint64_t handle) { return reinterpret_cast<Effect*>(static_cast<uintptr_t>(handle)); }

}  // namespace

extern "C" {

QV_EXPORT uint64_t DSP_Create(const qv_log_record*) {
    return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(new (std::nothrow) Effect()));
}

QV_EXPORT void DSP_Destroy(uint64_t handle) { delete Self(handle); }

QV_EXPORT int32_t DSP_Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    Effect* self = Self(handle);
#ifdef QVC_EFFECT_TWO_PASS_BY_SETTINGS
    if (qvc::KeyIs(key, "TwoPass")) {
        return WantsTwoPass(record != nullptr && record->text1 != nullptr ? std::u16string(record->text1)
                                                                           : std::u16string())
                   ? 1
                   : 0;
    }
#else
    if (qvc::KeyIs(key, "TwoPass")) return kTwoPass ? 1 : 0;
#endif
    if (qvc::KeyIs(key, "Tags")) {
        if (!self->hasFinalTags) return 0;
        record->facts = self->finalTags.data();
        record->estimate = self->finalTags.size();
        return 1;
    }
    if (qvc::KeyIs(key, "BatchEndConversion")) {
        return self->BatchEnd(*reinterpret_cast<const qv_batch_end_record*>(record)) ? 1 : 0;
    }
#ifdef QVC_EFFECT_HAS_SPECS
    if (qvc::KeyIs(key, "OptionSpec")) {
        static const std::u16string spec = qvc::FromAscii(
            qvc::OptionSpecText(qvc::OptionTable{kOptionSpecs, std::size(kOptionSpecs), nullptr}).c_str());
        record->text1 = spec.c_str();
        return 1;
    }
#endif
#ifdef QVC_EFFECT_HAS_SPECS
    static const std::string help =
        qvc::OptionHelpText(qvc::OptionTable{kOptionSpecs, std::size(kOptionSpecs), nullptr});
    int32_t shared = qvc::AnswerShared(key, record, self->error, self->errorAnswer, help.c_str());
#else
    int32_t shared = qvc::AnswerShared(key, record, self->error, self->errorAnswer, kOptionHelp);
#endif
    return shared < 0 ? 0 : shared;
}

QV_EXPORT int32_t DSP_Set(uint64_t, const qv_char*, qv_query_record*) { return 0; }

// No settings page until the window toolkit exists: the settings given
// are the ones handed back.
QV_EXPORT void* DSP_ShowConfigBit(uint64_t handle, void*, int32_t, int32_t, const qv_char* settings) {
    Self(handle)->page.Set(settings != nullptr ? std::u16string(settings) : std::u16string());
    return nullptr;
}

QV_EXPORT const qv_char* DSP_RemoveConfigBit(uint64_t handle, void*) { return Self(handle)->page.Get(); }

QV_EXPORT int32_t DSP_BeginConversion(uint64_t handle, qv_begin_record* record, const qv_char* settings) {
    Effect* self = Self(handle);
    self->error.clear();
    self->hasFinalTags = false;
    std::u16string given = settings != nullptr ? std::u16string(settings) : std::u16string();
#ifdef QVC_EFFECT_HAS_SPECS
    // A value the description doesn't allow is refused by name.
    std::string refusal = qvc::CheckOptions(qvc::OptionTable{kOptionSpecs, std::size(kOptionSpecs), nullptr}, given);
    if (!refusal.empty()) return self->Fail(refusal) ? 1 : 0;
#endif
    return self->Begin(*record, given) ? 1 : 0;
}

QV_EXPORT int32_t DSP_PassAudioBlock(uint64_t handle, const qv_audio_block* in, qv_audio_block* out) {
    return Self(handle)->Pass(in, out);
}

QV_EXPORT int32_t DSP_PassNonLive(uint64_t handle, const qv_audio_block* in) {
    return in == nullptr || Self(handle)->Analyse(*in) ? 1 : 0;
}

QV_EXPORT int32_t DSP_EndConversion(uint64_t handle) { return Self(handle)->End() ? 1 : 0; }

QV_EXPORT int32_t DSP_AfterConversion(uint64_t handle, const qv_after_record* record) {
    return Self(handle)->After(*record) ? 1 : 0;
}

}  // extern "C"
