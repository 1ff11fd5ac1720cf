/* Example encoder "Raw PCM": writes headerless 16-bit little-endian PCM
 * (*.raw16) in the stream's own rate and channel count. It shows the
 * smallest complete encoder: the front end's keys, and a conversion from
 * ENC_BeginConversion to ENC_EndConversion.
 *
 * Option string: none; every text is accepted and ignored. Deeper sources
 * are rounded to 16 bits, so the encoder does not call itself lossless. */
#include <math.h>

#include "examples/exampleio.h"

typedef struct encoder {
    FILE* file;
    uint32_t type;
    uint16_t channels;
    qv_char text[64];
    qv_char error[128];
} encoder;

QV_EXPORT uint64_t ENC_Create(const qv_log_record* log) {
    (void)log;
    return (uint64_t)(uintptr_t)calloc(1, sizeof(encoder));
}

QV_EXPORT void ENC_Destroy(uint64_t handle) {
    encoder* self = (encoder*)(uintptr_t)handle;
    if (self->file != NULL) fclose(self->file);
    free(self);
}

QV_EXPORT int32_t ENC_Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    encoder* self = (encoder*)(uintptr_t)handle;
    if (example_key_is(key, "Extension")) {
        record->text1 = example_text(self->text, 64, ".raw16");
        return 1;
    }
    if (example_key_is(key, "GetEstimatedFileSize")) {
        const qv_stream_facts* facts = (const qv_stream_facts*)record->facts;
        if (facts == NULL) return 0;
        record->estimate = record->lengthMs * facts->samplesPerSecond / 1000 * facts->channels * 2;
        return 1;
    }
    if (example_key_is(key, "LastError")) {
        record->text1 = self->error;
        return self->error[0] != 0;
    }
    if (example_key_is(key, "AbiVersion")) {
        record->estimate = QV_ABI_VERSION;
        return 1;
    }
    return 0; /* "IsLossless", "NoMultiCPU", "RequiresDSP": no */
}

QV_EXPORT int32_t ENC_Set(uint64_t handle, const qv_char* key, qv_query_record* record) {
    (void)handle, (void)key, (void)record;
    return 0;
}

/* No settings, so no page. */
QV_EXPORT void* ENC_ShowConfigBit(uint64_t handle, void* parent, int32_t x, int32_t y, const qv_char* options) {
    (void)handle, (void)parent, (void)x, (void)y, (void)options;
    return NULL;
}

QV_EXPORT const qv_char* ENC_RemoveConfigBit(uint64_t handle, void* parent) {
    (void)parent;
    encoder* self = (encoder*)(uintptr_t)handle;
    self->text[0] = 0;
    return self->text;
}

QV_EXPORT int32_t ENC_BeginConversion(uint64_t handle, qv_encoder_begin_record* record) {
    encoder* self = (encoder*)(uintptr_t)handle;
    self->file = example_open(record->outputPath, "wb");
    if (self->file == NULL) {
        example_text(self->error, 128, "the output can't be created");
        return 0;
    }
    record->format->acceptedTypes = QV_SAMPLES_INT32 | QV_SAMPLES_FLOAT32;
    self->type = record->format->sampleType;
    self->channels = record->format->channels;
    return 1;
}

static int16_t to16(double value) {
    double scaled = floor(value * 32768.0 + 0.5);
    if (scaled > 32767.0) return 32767;
    if (scaled < -32768.0) return -32768;
    return (int16_t)scaled;
}

QV_EXPORT int32_t ENC_EncodeBlock(uint64_t handle, const qv_audio_block* block) {
    encoder* self = (encoder*)(uintptr_t)handle;
    size_t count = (size_t)block->frames * self->channels;
    for (size_t i = 0; i < count; ++i) {
        double value = self->type == QV_SAMPLES_FLOAT32 ? ((const float*)block->samples)[i]
                                                        : ((const int32_t*)block->samples)[i] / 2147483648.0;
        int16_t sample = to16(value);
        unsigned char bytes[2] = {(unsigned char)(sample & 0xFF), (unsigned char)((uint16_t)sample >> 8)};
        if (fwrite(bytes, 1, 2, self->file) != 2) {
            example_text(self->error, 128, "the disk is full");
            return 0;
        }
    }
    return 1;
}

QV_EXPORT int32_t ENC_EndConversion(uint64_t handle, const qv_encoder_end_record* record) {
    encoder* self = (encoder*)(uintptr_t)handle;
    (void)record; /* a raw file keeps no tags; an aborted file is deleted by the worker */
    int ok = self->file != NULL && fclose(self->file) == 0;
    self->file = NULL;
    return ok;
}
