/* Example decoder "Raw PCM": headerless 16-bit little-endian stereo at
 * 44.1 kHz, in files named *.raw16. It shows the smallest complete
 * decoder: the lookup keys, Open with stream facts and a tag block, and
 * decoding into the chain's 32-bit integer format. */
#include "examples/exampleio.h"

#define FRAMES_PER_BLOCK 4096

typedef struct decoder {
    FILE* file;
    uint64_t position;
    int32_t samples[FRAMES_PER_BLOCK * 2];
    qv_char text[64];
    qv_char description[64];
    qv_char error[128];
} decoder;

QV_EXPORT uint64_t Create(const qv_log_record* log) {
    (void)log;
    return (uint64_t)(uintptr_t)calloc(1, sizeof(decoder));
}

QV_EXPORT void Close(uint64_t handle) {
    decoder* self = (decoder*)(uintptr_t)handle;
    if (self->file != NULL) fclose(self->file);
    self->file = NULL;
}

QV_EXPORT void Destroy(uint64_t handle) {
    Close(handle);
    free((void*)(uintptr_t)handle);
}

QV_EXPORT int32_t Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    decoder* self = (decoder*)(uintptr_t)handle;
    if (example_key_is(key, "Decodes")) {
        if (record->index != 0) return 0;
        record->text1 = example_text(self->text, 64, ".raw16");
        record->text2 = example_text(self->description, 64, "Raw PCM");
        return 1;
    }
    if (example_key_is(key, "Format")) {
        qv_audio_format* format = (qv_audio_format*)record->facts;
        format->samplesPerSecond = 44100;
        format->channels = 2;
        format->validBits = 16;
        format->sampleType = QV_SAMPLES_INT32;
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
    return 0;
}

QV_EXPORT int32_t Set(uint64_t handle, const qv_char* key, qv_query_record* record) {
    /* Integers are all this decoder gives; the worker converts if needed. */
    (void)handle, (void)key, (void)record;
    return 0;
}

QV_EXPORT int32_t Open(uint64_t handle, qv_open_record* record) {
    decoder* self = (decoder*)(uintptr_t)handle;
    Close(handle);
    self->file = example_open(record->fileName, "rb");
    if (self->file == NULL) {
        example_text(self->error, 128, "the file can't be opened");
        return 0;
    }
    fseek(self->file, 0, SEEK_END);
    long bytes = ftell(self->file);
    fseek(self->file, 0, SEEK_SET);
    self->position = 0;
    qv_stream_facts* facts = &record->facts;
    facts->formatTag = 1; /* PCM */
    facts->channels = 2;
    facts->samplesPerSecond = 44100;
    facts->bitsPerSample = 16;
    facts->blockAlign = 4;
    facts->bytesPerSecond = 44100 * 4;
    facts->bitrate = 44100 * 32;
    facts->lengthMs = bytes > 0 ? (uint64_t)bytes / 4 * 1000 / 44100 : 0;
    /* A raw file has no tags. */
    record->tags = NULL;
    record->tagsSize = 0;
    return 1;
}

QV_EXPORT int32_t DecodeBlock(uint64_t handle, qv_audio_block* block) {
    decoder* self = (decoder*)(uintptr_t)handle;
    if (self->file == NULL) return -1;
    unsigned char bytes[FRAMES_PER_BLOCK * 4];
    size_t frames = fread(bytes, 4, FRAMES_PER_BLOCK, self->file);
    if (frames == 0) return ferror(self->file) ? -1 : 0;
    for (size_t i = 0; i < frames * 2; ++i) {
        int16_t sample = (int16_t)(uint16_t)(bytes[2 * i] | (bytes[2 * i + 1] << 8));
        self->samples[i] = (int32_t)((uint32_t)(int32_t)sample << 16); /* left-justified */
    }
    block->samples = self->samples;
    block->frames = (uint32_t)frames;
    block->position = self->position;
    self->position += frames;
    block->flags = frames < FRAMES_PER_BLOCK ? QV_BLOCK_LAST : 0;
    return 1;
}

QV_EXPORT int32_t SetPosition(uint64_t handle, uint64_t frame) {
    decoder* self = (decoder*)(uintptr_t)handle;
    if (self->file == NULL || fseek(self->file, (long)(frame * 4), SEEK_SET) != 0) return 0;
    self->position = frame;
    return 1;
}

QV_EXPORT int32_t DeleteATag(uint64_t handle, const qv_char* name) {
    (void)handle, (void)name;
    return 1; /* no tags to leave out */
}
