/* A plug-in built only for the tests, one source for several libraries:
 *   QV_TEST_DECODER   a decoder; QV_TEST_EXTENSIONS lists what it decodes
 *                     ("|" between entries), QV_TEST_UNLISTED answers
 *                     "Unlisted", QV_TEST_MISSING leaves out DeleteATag,
 *                     QV_TEST_DESCRIPTION names the type ("Test audio"),
 *                     QV_TEST_ENDLESS lists ".more" for every index,
 *                     QV_TEST_NULLTEXT lists ".nul" with a null description
 *   QV_TEST_ENCODER   an encoder writing ".tst" that requires an effect;
 *                     with QV_TEST_NULLTEXT it answers "Extension" with null
 *   QV_TEST_DSP       a tag effect that adds "edited" = its settings; with
 *                     QV_TEST_SLOW an audio effect that passes each block
 *                     after 20 ms, with QV_TEST_CRASH one that crashes on
 *                     the first block, with QV_TEST_FAILING one that fails
 *                     it, with QV_TEST_LATE one that holds the end of the
 *                     conversion: its settings "end|DIR" or "after|DIR"
 *                     make it write DIR/holding in EndConversion or in
 *                     AfterConversion and wait there until DIR/release
 *                     exists (10 s at most)
 * It sees nothing but the plug-in header. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "plugins/quillotone_plugin.h"

typedef struct instance {
    qv_char text[256];
    qv_char text2[256];
    unsigned char block[512];
    char holdAt[8]; /* "end" or "after" */
    char holdDir[512];
} instance;

static uint64_t make(const qv_log_record* log) {
    (void)log;
    return (uint64_t)(uintptr_t)calloc(1, sizeof(instance));
}

#if defined(QV_TEST_SLOW) || defined(QV_TEST_LATE)
/* Standard C only: busy for `ms` of processor time, which here is as
 * good as wall time. */
static void pause_ms(int ms) {
    clock_t end = clock() + (clock_t)ms * CLOCKS_PER_SEC / 1000;
    while (clock() < end) {
    }
}
#endif

static void destroy(uint64_t handle) { free((void*)(uintptr_t)handle); }

static int same(const qv_char* a, const char* b) {
    while (*a != 0 && *b != 0 && *a == (qv_char)(unsigned char)*b) {
        ++a;
        ++b;
    }
    return *a == 0 && *b == 0;
}

static void put(qv_char* out, const char* text, size_t length) {
    size_t i = 0;
    for (; i < length && i < 255; ++i) out[i] = (qv_char)(unsigned char)text[i];
    out[i] = 0;
}

static int32_t answer_common(instance* self, const qv_char* key, qv_query_record* record) {
    if (same(key, "AbiVersion")) {
        record->estimate = QV_ABI_VERSION;
        return 1;
    }
    if (same(key, "LastError")) {
        put(self->text, "nothing failed", 14);
        record->text1 = self->text;
        return 1;
    }
    return 0;
}

#ifdef QV_TEST_DECODER
#ifndef QV_TEST_DESCRIPTION
#define QV_TEST_DESCRIPTION "Test audio"
#endif
QV_EXPORT uint64_t Create(const qv_log_record* log) { return make(log); }
QV_EXPORT void Destroy(uint64_t handle) { destroy(handle); }
QV_EXPORT int32_t Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    instance* self = (instance*)(uintptr_t)handle;
    if (same(key, "Decodes")) {
#ifdef QV_TEST_ENDLESS
        put(self->text, ".more", 5);
        put(self->text2, "More", 4);
        record->text1 = self->text;
        record->text2 = self->text2;
        return 1;
#endif
#ifdef QV_TEST_NULLTEXT
        put(self->text, ".nul", 4);
        record->text1 = self->text;
        return record->index == 0;
#endif
        const char* list = QV_TEST_EXTENSIONS;
        uint32_t index = record->index;
        while (index > 0 && list != NULL) {
            list = strchr(list, '|');
            if (list != NULL) ++list;
            --index;
        }
        if (list == NULL || *list == 0) return 0;
        const char* end = strchr(list, '|');
        put(self->text, list, end != NULL ? (size_t)(end - list) : strlen(list));
        put(self->text2, QV_TEST_DESCRIPTION, strlen(QV_TEST_DESCRIPTION));
        record->text1 = self->text;
        record->text2 = self->text2;
        return 1;
    }
#ifdef QV_TEST_UNLISTED
    if (same(key, "Unlisted")) return 1;
#endif
    return answer_common(self, key, record);
}
QV_EXPORT int32_t Set(uint64_t handle, const qv_char* key, qv_query_record* record) {
    (void)handle, (void)key, (void)record;
    return 0;
}
QV_EXPORT int32_t Open(uint64_t handle, qv_open_record* record) {
    instance* self = (instance*)(uintptr_t)handle;
    record->facts.channels = 2;
    record->facts.samplesPerSecond = 44100;
    record->facts.bitsPerSample = 16;
    record->facts.lengthMs = 1000;
    /* One tag, "title" = "T". */
    static const unsigned char tags[] = {1,   0, 0,   0, 20,  0, 0, 0, 't', 0, 'i', 0,
                                         't', 0, 'l', 0, 'e', 0, 0, 0, 'T', 0, 0,   0};
    memcpy(self->block, tags, sizeof tags);
    record->tags = self->block;
    record->tagsSize = sizeof tags;
    return 1;
}
QV_EXPORT void Close(uint64_t handle) { (void)handle; }
QV_EXPORT int32_t DecodeBlock(uint64_t handle, qv_audio_block* block) {
    (void)handle, (void)block;
    return 0;
}
QV_EXPORT int32_t SetPosition(uint64_t handle, uint64_t frame) {
    (void)handle, (void)frame;
    return 1;
}
#ifndef QV_TEST_MISSING
QV_EXPORT int32_t DeleteATag(uint64_t handle, const qv_char* name) {
    (void)handle, (void)name;
    return 0;
}
#endif
#endif

#ifdef QV_TEST_ENCODER
QV_EXPORT uint64_t ENC_Create(const qv_log_record* log) { return make(log); }
QV_EXPORT void ENC_Destroy(uint64_t handle) { destroy(handle); }
QV_EXPORT int32_t ENC_Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    instance* self = (instance*)(uintptr_t)handle;
    if (same(key, "Extension")) {
#ifndef QV_TEST_NULLTEXT
        put(self->text, ".tst", 4);
        record->text1 = self->text;
#endif
        return 1;
    }
    if (same(key, "RequiresDSP")) {
        put(self->text2, "Bit Depth=-bits=16", 18);
        record->text2 = self->text2;
        return 1;
    }
    return answer_common(self, key, record);
}
QV_EXPORT int32_t ENC_Set(uint64_t handle, const qv_char* key, qv_query_record* record) {
    (void)handle, (void)key, (void)record;
    return 0;
}
QV_EXPORT void* ENC_ShowConfigBit(uint64_t handle, void* parent, int32_t x, int32_t y, const qv_char* options) {
    (void)handle, (void)parent, (void)x, (void)y, (void)options;
    return NULL;
}
QV_EXPORT const qv_char* ENC_RemoveConfigBit(uint64_t handle, void* parent) {
    (void)parent;
    return ((instance*)(uintptr_t)handle)->text;
}
QV_EXPORT int32_t ENC_BeginConversion(uint64_t handle, qv_encoder_begin_record* record) {
    (void)handle, (void)record;
    return 1;
}
QV_EXPORT int32_t ENC_EndConversion(uint64_t handle, const qv_encoder_end_record* record) {
    (void)handle, (void)record;
    return 1;
}
QV_EXPORT int32_t ENC_EncodeBlock(uint64_t handle, const qv_audio_block* block) {
    (void)handle, (void)block;
    return 1;
}
#endif

#ifdef QV_TEST_DSP
QV_EXPORT uint64_t DSP_Create(const qv_log_record* log) { return make(log); }
QV_EXPORT void DSP_Destroy(uint64_t handle) { destroy(handle); }
QV_EXPORT int32_t DSP_Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    return answer_common((instance*)(uintptr_t)handle, key, record);
}
QV_EXPORT int32_t DSP_Set(uint64_t handle, const qv_char* key, qv_query_record* record) {
    (void)handle, (void)key, (void)record;
    return 0;
}
QV_EXPORT void* DSP_ShowConfigBit(uint64_t handle, void* parent, int32_t x, int32_t y, const qv_char* settings) {
    (void)handle, (void)parent, (void)x, (void)y, (void)settings;
    return NULL;
}
QV_EXPORT const qv_char* DSP_RemoveConfigBit(uint64_t handle, void* parent) {
    (void)parent;
    return ((instance*)(uintptr_t)handle)->text;
}
/* Appends "edited" = the settings to the tag block it is given. */
QV_EXPORT int32_t DSP_BeginConversion(uint64_t handle, qv_begin_record* record, const qv_char* settings) {
    instance* self = (instance*)(uintptr_t)handle;
#ifdef QV_TEST_LATE
    /* "end|DIR" or "after|DIR", ASCII. */
    {
        size_t i = 0, o = 0;
        for (; settings[i] != 0 && settings[i] != '|' && o + 1 < sizeof self->holdAt; ++i)
            self->holdAt[o++] = (char)settings[i];
        self->holdAt[o] = 0;
        if (settings[i] == '|') ++i;
        for (o = 0; settings[i] != 0 && o + 1 < sizeof self->holdDir; ++i) self->holdDir[o++] = (char)settings[i];
        self->holdDir[o] = 0;
    }
#endif
#if defined(QV_TEST_SLOW) || defined(QV_TEST_CRASH) || defined(QV_TEST_FAILING) || defined(QV_TEST_LATE)
    (void)self, (void)record, (void)settings;
    return 1;
#endif
    uint32_t size = record->tagsSize;
    if (size < 4 || size > 256 || record->tags == NULL) return 0;
    memcpy(self->block, record->tags, size);
    uint32_t count = (uint32_t)self->block[0] | ((uint32_t)self->block[1] << 8);
    size_t settingsLength = 0;
    while (settings[settingsLength] != 0 && settingsLength < 64) ++settingsLength;
    static const qv_char name[] = {'e', 'd', 'i', 't', 'e', 'd', 0};
    uint32_t entry = (uint32_t)(4 + sizeof name + 2 * (settingsLength + 1));
    unsigned char* p = self->block + size;
    p[0] = (unsigned char)entry, p[1] = (unsigned char)(entry >> 8), p[2] = 0, p[3] = 0;
    memcpy(p + 4, name, sizeof name);
    for (size_t i = 0; i <= settingsLength; ++i) {
        qv_char c = i < settingsLength ? settings[i] : 0;
        p[4 + sizeof name + 2 * i] = (unsigned char)c;
        p[4 + sizeof name + 2 * i + 1] = (unsigned char)(c >> 8);
    }
    ++count;
    self->block[0] = (unsigned char)count, self->block[1] = (unsigned char)(count >> 8);
    record->tags = self->block;
    record->tagsSize = size + entry;
    return 1;
}
#ifdef QV_TEST_LATE
/* Says it holds, then waits for the test to let it go. */
static void hold(const instance* self, const char* where) {
    char path[600];
    if (strcmp(self->holdAt, where) != 0) return;
    snprintf(path, sizeof path, "%s/holding", self->holdDir);
    FILE* file = fopen(path, "w");
    if (file != NULL) fclose(file);
    snprintf(path, sizeof path, "%s/release", self->holdDir);
    for (int waited = 0; waited < 10000; waited += 10) {
        FILE* release = fopen(path, "r");
        if (release != NULL) {
            fclose(release);
            return;
        }
        pause_ms(10);
    }
}
#endif
QV_EXPORT int32_t DSP_EndConversion(uint64_t handle) {
#ifdef QV_TEST_LATE
    hold((const instance*)(uintptr_t)handle, "end");
#endif
    (void)handle;
    return 1;
}
QV_EXPORT int32_t DSP_PassAudioBlock(uint64_t handle, const qv_audio_block* in, qv_audio_block* out) {
    (void)handle;
    if (in == NULL) return 0;
#ifdef QV_TEST_SLOW
    pause_ms(20);
#endif
#ifdef QV_TEST_CRASH
    {
        volatile int* volatile nowhere = NULL;
        *nowhere = 1;
    }
#endif
#ifdef QV_TEST_FAILING
    return -1;
#endif
    *out = *in;
    return 1;
}
QV_EXPORT int32_t DSP_PassNonLive(uint64_t handle, const qv_audio_block* in) {
    (void)handle, (void)in;
    return 1;
}
QV_EXPORT int32_t DSP_AfterConversion(uint64_t handle, const qv_after_record* record) {
#ifdef QV_TEST_LATE
    hold((const instance*)(uintptr_t)handle, "after");
#endif
    (void)handle, (void)record;
    return 1;
}
#endif
