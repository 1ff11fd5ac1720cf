/* "Fault Injection": an effect built only for the fault tests of the real
 * programs. It passes audio through unchanged and misbehaves as its
 * settings say, "key=value" pairs separated by ';':
 *   pid=PATH    on the first block, writes the worker's process id to
 *               PATH (whole, by a rename), so a test knows the job is
 *               mid-file and whom to signal
 *   hold=MS     sleeps MS milliseconds before passing each block
 *   flood=MB    on the first block, writes MB megabytes of text lines,
 *               half to standard output and half to standard error
 *   exit=N      ends the worker with exit code N as the effect begins,
 *               before any output exists and without a word
 *   library=1   on the first block, writes a line of UTF-8 to standard
 *               error itself, as a codec library does
 *   trace=DIR   writes DIR/<pid>.span with the milliseconds of the first
 *               block and of the end, so a test sees which workers ran at
 *               once
 *   failonce=PATH  fails the conversion as the effect begins unless PATH
 *               exists, and makes it: the first file fails, a second
 *               try of it converts
 * It sees the plug-in header and the C library, nothing of the program. */
#ifndef _WIN32
#define _POSIX_C_SOURCE 200809L
#endif
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <process.h>
#include <windows.h>
#define fault_getpid _getpid
static void fault_sleep(int ms) { Sleep((DWORD)ms); }
static long long fault_now_ms(void) { return (long long)GetTickCount64(); }
#else
#include <fcntl.h>
#include <time.h>
#include <unistd.h>
#define fault_getpid getpid
static void fault_sleep(int ms) {
    struct timespec wait = {ms / 1000, (long)(ms % 1000) * 1000000L};
    nanosleep(&wait, NULL);
}
static long long fault_now_ms(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (long long)now.tv_sec * 1000 + now.tv_nsec / 1000000;
}
#endif

#include "plugins/quillotone_plugin.h"

typedef struct fault {
    char pidFile[1024];
    char traceDir[1024];
    char failOnce[1024];
    long long firstBlockMs;
    int holdMs;
    int floodMb;
    int exitCode;
    int library;
    int started;
} fault;

static int key_is(const qv_char* key, const char* name) {
    while (*key != 0 && *name != 0 && *key == (qv_char)(unsigned char)*name) ++key, ++name;
    return *key == 0 && *name == 0;
}

/* The settings come as UTF-16; the tests give ASCII paths only. */
static void parse(fault* self, const qv_char* settings) {
    char text[2048];
    size_t n = 0;
    while (settings != NULL && settings[n] != 0 && n + 1 < sizeof text) {
        text[n] = (char)settings[n];
        ++n;
    }
    text[n] = 0;
    for (char* item = strtok(text, ";"); item != NULL; item = strtok(NULL, ";")) {
        char* value = strchr(item, '=');
        if (value == NULL) continue;
        *value++ = 0;
        if (strcmp(item, "pid") == 0 && strlen(value) < sizeof self->pidFile) strcpy(self->pidFile, value);
        if (strcmp(item, "hold") == 0) self->holdMs = atoi(value);
        if (strcmp(item, "flood") == 0) self->floodMb = atoi(value);
        if (strcmp(item, "exit") == 0) self->exitCode = atoi(value) + 1;
        if (strcmp(item, "library") == 0) self->library = atoi(value);
        if (strcmp(item, "trace") == 0 && strlen(value) < sizeof self->traceDir) strcpy(self->traceDir, value);
        if (strcmp(item, "failonce") == 0 && strlen(value) < sizeof self->failOnce) strcpy(self->failOnce, value);
    }
}

static void write_pid(const fault* self) {
    char partial[1100];
    snprintf(partial, sizeof partial, "%s.part", self->pidFile);
    FILE* file = fopen(partial, "w");
    if (file == NULL) return;
    fprintf(file, "%d\n", (int)fault_getpid());
    fclose(file);
    remove(self->pidFile);
    rename(partial, self->pidFile);
}

/* Lines ending in CR LF in the worker's pipe text (UTF-16LE on Windows,
 * UTF-8 elsewhere), as a chatty worker would write them. */
static void flood(FILE* stream, long bytes) {
    static const char line[] = "flood flood flood flood flood flood flood flood flood flood\r\n";
#ifdef _WIN32
    /* The C library's text mode would put a CR before every LF byte and
     * split the UTF-16 characters; the worker writes its bytes as they are. */
    _setmode(_fileno(stream), _O_BINARY);
    char wide[2 * (sizeof line - 1)];
    for (size_t i = 0; i < sizeof line - 1; ++i) wide[2 * i] = line[i], wide[2 * i + 1] = 0;
    for (long written = 0; written < bytes; written += (long)sizeof wide) fwrite(wide, 1, sizeof wide, stream);
#else
    for (long written = 0; written < bytes; written += (long)sizeof line - 1) fwrite(line, 1, sizeof line - 1, stream);
#endif
    fflush(stream);
}

QV_EXPORT uint64_t DSP_Create(const qv_log_record* log) {
    (void)log;
    return (uint64_t)(uintptr_t)calloc(1, sizeof(fault));
}
QV_EXPORT void DSP_Destroy(uint64_t handle) { free((void*)(uintptr_t)handle); }
QV_EXPORT int32_t DSP_Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    (void)handle;
    if (key_is(key, "AbiVersion")) {
        record->estimate = QV_ABI_VERSION;
        return 1;
    }
    return 0;
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
    (void)handle, (void)parent;
    return NULL;
}
QV_EXPORT int32_t DSP_BeginConversion(uint64_t handle, qv_begin_record* record, const qv_char* settings) {
    (void)record;
    fault* self = (fault*)(uintptr_t)handle;
    parse(self, settings);
    if (self->exitCode > 0) _Exit(self->exitCode - 1);
    if (self->failOnce[0] != 0) {
        /* Made exclusively: of workers that begin at once, one fails. The
         * C library's "wx" isn't known to every runtime. */
#ifdef _WIN32
        int marker = _open(self->failOnce, _O_CREAT | _O_EXCL | _O_WRONLY, _S_IREAD | _S_IWRITE);
        if (marker >= 0) {
            _close(marker);
            return 0;
        }
#else
        int marker = open(self->failOnce, O_CREAT | O_EXCL | O_WRONLY, 0644);
        if (marker >= 0) {
            close(marker);
            return 0;
        }
#endif
    }
    return 1;
}
QV_EXPORT int32_t DSP_PassAudioBlock(uint64_t handle, const qv_audio_block* in, qv_audio_block* out) {
    fault* self = (fault*)(uintptr_t)handle;
    if (in == NULL) return 0;
    if (!self->started) {
        self->started = 1;
        if (self->floodMb > 0) {
            long half = (long)self->floodMb * 1024L * 512L;
            flood(stdout, half);
            flood(stderr, half);
        }
        if (self->library) {
            fputs("libsomething: d\xC3\xA9j\xC3\xA0 vu \xE2\x9C\x93 \xE6\x9D\xB1\xE4\xBA\xAC\n", stderr);
            fflush(stderr);
        }
        if (self->pidFile[0] != 0) write_pid(self);
        self->firstBlockMs = fault_now_ms();
    }
    if (self->holdMs > 0) fault_sleep(self->holdMs);
    *out = *in;
    return 1;
}
QV_EXPORT int32_t DSP_PassNonLive(uint64_t handle, const qv_audio_block* in) {
    (void)handle, (void)in;
    return 1;
}
QV_EXPORT int32_t DSP_EndConversion(uint64_t handle) {
    fault* self = (fault*)(uintptr_t)handle;
    if (self->traceDir[0] != 0 && self->started) {
        char path[1200];
        snprintf(path, sizeof path, "%s/%d.span", self->traceDir, (int)fault_getpid());
        FILE* file = fopen(path, "w");
        if (file != NULL) {
            fprintf(file, "%lld %lld\n", self->firstBlockMs, fault_now_ms());
            fclose(file);
        }
    }
    return 1;
}
QV_EXPORT int32_t DSP_AfterConversion(uint64_t handle, const qv_after_record* record) {
    (void)handle, (void)record;
    return 1;
}
