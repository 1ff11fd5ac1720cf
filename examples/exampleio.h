/* Small helpers the example plug-ins share: opening a file by its UTF-16
 * name, and answering the keys every plug-in answers. Plain C, nothing but
 * the plug-in header and the C library. */
#ifndef QV_EXAMPLE_IO_H
#define QV_EXAMPLE_IO_H

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "plugins/quillotone_plugin.h"

#ifdef _WIN32
#include <wchar.h>
static inline FILE* example_open(const qv_char* name, const char* mode) {
    wchar_t wideMode[4] = {0};
    for (int i = 0; i < 3 && mode[i] != 0; ++i) wideMode[i] = (wchar_t)mode[i];
    return _wfopen((const wchar_t*)name, wideMode);
}
#else
/* The file system takes bytes: UTF-8 for a pair or a plain unit, the byte
 * itself for a lone U+DC80-U+DCFF (the program's form of a name that is
 * not UTF-8), and U+FFFD for any other lone surrogate, as the program does
 * for every file it touches. */
static inline FILE* example_open(const qv_char* name, const char* mode) {
    size_t length = 0;
    while (name[length] != 0) ++length;
    char* utf8 = (char*)malloc(length * 3 + 1);
    if (utf8 == NULL) return NULL;
    size_t out = 0;
    for (size_t i = 0; i < length; ++i) {
        uint32_t c = name[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < length && name[i + 1] >= 0xDC00 && name[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (name[++i] - 0xDC00u);
        } else if (c >= 0xDC80 && c <= 0xDCFF) {
            utf8[out++] = (char)(c - 0xDC00);
            continue;
        } else if (c >= 0xD800 && c < 0xE000) {
            c = 0xFFFD;
        }
        if (c < 0x80) {
            utf8[out++] = (char)c;
        } else if (c < 0x800) {
            utf8[out++] = (char)(0xC0 | (c >> 6));
            utf8[out++] = (char)(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            utf8[out++] = (char)(0xE0 | (c >> 12));
            utf8[out++] = (char)(0x80 | ((c >> 6) & 0x3F));
            utf8[out++] = (char)(0x80 | (c & 0x3F));
        } else {
            utf8[out++] = (char)(0xF0 | (c >> 18));
            utf8[out++] = (char)(0x80 | ((c >> 12) & 0x3F));
            utf8[out++] = (char)(0x80 | ((c >> 6) & 0x3F));
            utf8[out++] = (char)(0x80 | (c & 0x3F));
        }
    }
    utf8[out] = 0;
    FILE* file = fopen(utf8, mode);
    free(utf8);
    return file;
}
#endif

static inline int example_key_is(const qv_char* key, const char* name) {
    while (*key != 0 && *name != 0 && *key == (qv_char)(unsigned char)*name) ++key, ++name;
    return *key == 0 && *name == 0;
}

/* ASCII text into a plug-in owned UTF-16 buffer of `size` units. */
static inline const qv_char* example_text(qv_char* buffer, size_t size, const char* text) {
    size_t i = 0;
    for (; i + 1 < size && text[i] != 0; ++i) buffer[i] = (qv_char)(unsigned char)text[i];
    buffer[i] = 0;
    return buffer;
}

/* Reads "-name=number" from an option string; `fallback` when absent. */
static inline double example_option(const qv_char* options, const char* name, double fallback) {
    char ascii[256];
    size_t n = 0;
    for (; options != NULL && options[n] != 0 && n + 1 < sizeof ascii; ++n) {
        ascii[n] = options[n] < 128 ? (char)options[n] : '?';
    }
    ascii[n] = 0;
    char pattern[64];
    snprintf(pattern, sizeof pattern, "-%s=", name);
    const char* at = strstr(ascii, pattern);
    return at != NULL ? atof(at + strlen(pattern)) : fallback;
}

#endif
