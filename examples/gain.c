/* Example effect "Example Gain": changes the level by a number of
 * decibels. It shows the smallest complete audio effect: it takes float
 * samples, keeps the stream's format, and returns blocks of its own.
 *
 * Settings: "-db=N", a positive or negative number of decibels (0 when
 * absent). Samples are not clipped: the encoder decides that. */
#include <math.h>

#include "examples/exampleio.h"

#define MAX_FRAMES 65536

typedef struct effect {
    float factor;
    uint16_t channels;
    float* buffer;
    qv_char text[256];
} effect;

QV_EXPORT uint64_t DSP_Create(const qv_log_record* log) {
    (void)log;
    return (uint64_t)(uintptr_t)calloc(1, sizeof(effect));
}

QV_EXPORT void DSP_Destroy(uint64_t handle) {
    effect* self = (effect*)(uintptr_t)handle;
    free(self->buffer);
    free(self);
}

QV_EXPORT int32_t DSP_Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    (void)handle;
    if (example_key_is(key, "AbiVersion")) {
        record->estimate = QV_ABI_VERSION;
        return 1;
    }
    return 0; /* one pass, nothing to do at the end of a batch */
}

QV_EXPORT int32_t DSP_Set(uint64_t handle, const qv_char* key, qv_query_record* record) {
    (void)handle, (void)key, (void)record;
    return 0;
}

QV_EXPORT void* DSP_ShowConfigBit(uint64_t handle, void* parent, int32_t x, int32_t y, const qv_char* settings) {
    effect* self = (effect*)(uintptr_t)handle;
    (void)parent, (void)x, (void)y;
    size_t i = 0;
    for (; settings != NULL && settings[i] != 0 && i + 1 < 256; ++i) self->text[i] = settings[i];
    self->text[i] = 0;
    return NULL; /* no page: the settings are kept as given */
}

QV_EXPORT const qv_char* DSP_RemoveConfigBit(uint64_t handle, void* parent) {
    (void)parent;
    return ((effect*)(uintptr_t)handle)->text;
}

QV_EXPORT int32_t DSP_BeginConversion(uint64_t handle, qv_begin_record* record, const qv_char* settings) {
    effect* self = (effect*)(uintptr_t)handle;
    self->factor = (float)pow(10.0, example_option(settings, "db", 0.0) / 20.0);
    if (record->format == NULL) return 1; /* the front end's tag pass: tags stay as they are */
    self->channels = record->format->channels;
    record->format->acceptedTypes = QV_SAMPLES_FLOAT32;
    record->format->sampleType = QV_SAMPLES_FLOAT32;
    record->format->validBits = 32;
    if (self->channels == 0) return 0;
    free(self->buffer);
    self->buffer = (float*)malloc(sizeof(float) * MAX_FRAMES * self->channels);
    return self->buffer != NULL;
}

QV_EXPORT int32_t DSP_PassAudioBlock(uint64_t handle, const qv_audio_block* in, qv_audio_block* out) {
    effect* self = (effect*)(uintptr_t)handle;
    if (in == NULL) return 0; /* nothing held back */
    if (in->frames > MAX_FRAMES) return -1;
    const float* samples = (const float*)in->samples;
    size_t count = (size_t)in->frames * self->channels;
    for (size_t i = 0; i < count; ++i) self->buffer[i] = samples[i] * self->factor;
    *out = *in;
    out->samples = self->buffer;
    return 1;
}

QV_EXPORT int32_t DSP_PassNonLive(uint64_t handle, const qv_audio_block* in) {
    (void)handle, (void)in;
    return 1;
}

QV_EXPORT int32_t DSP_EndConversion(uint64_t handle) {
    (void)handle;
    return 1;
}

QV_EXPORT int32_t DSP_AfterConversion(uint64_t handle, const qv_after_record* record) {
    (void)handle, (void)record;
    return 1;
}
