// The ID3 tag in a WAVE "id3 " or AIFF "ID3 " chunk, read through TagLib
// behind a plain C call. On Linux it is a library of its own,
// "Wave/id3.so" beside the Wave decoder, which loads it only for a file
// that has such a chunk: TagLib and the shared C++ runtime it brings cost
// a worker more to load than the conversion of a short file. On Windows
// it is built into the decoder.
#pragma once

#include <cstddef>

extern "C" {

// Called once for each tag found: the tag's name and value (UTF-16, not
// terminated) and, for a picture, its block (else empty).
typedef void (*qvc_wave_id3_add)(void* context, const char16_t* name, size_t nameLength, const char16_t* value,
                                 size_t valueLength, const char* binary, size_t binaryLength);

// Reads the ID3v2 tag of the file `name` (UTF-16, terminated), a WAVE
// file, or an AIFF file when `aiff` is nonzero. 1 when the file has such a
// tag (its tags went to `add`), 0 when it has none or can't be read.
typedef int (*qvc_read_wave_id3_fn)(const char16_t* name, int aiff, qvc_wave_id3_add add, void* context);

#define QVC_READ_WAVE_ID3 "qvc_read_wave_id3"

#if defined(QVC_WAVE_ID3_LIBRARY) && !defined(_WIN32)
__attribute__((visibility("default")))
#endif
int qvc_read_wave_id3(const char16_t* name, int aiff, qvc_wave_id3_add add, void* context);
}
