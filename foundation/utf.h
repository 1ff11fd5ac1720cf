// UTF-8 <-> UTF-16 conversion, the same on every platform.
//
// Malformed input never fails: a lone surrogate (UTF-16 side) or a byte that
// does not start or continue a valid sequence (UTF-8 side) becomes U+FFFD.
// These are the only places where text changes its encoding, apart from the
// "system code page" conversions of platform/textcodec.h.
#pragma once

#include <cstdint>
#include <string>

class clString;

// Bytes needed for the UTF-8 form of `length` units, without a terminator.
int64_t Utf8LengthOf(const char16_t* text, int32_t length);

// Writes the UTF-8 form of `length` units to `out` (room for at least
// Utf8LengthOf bytes) and returns the byte count. No terminator is written.
int64_t Utf16ToUtf8(const char16_t* text, int32_t length, char* out);

// Decodes `byteCount` bytes of UTF-8 into `target` (replacing its contents).
void Utf8ToString(const char* bytes, int64_t byteCount, clString& target);

// The UTF-8 form of a whole string, for text that leaves the program as
// bytes (a terminal, standard output).
std::string StringToUtf8(const clString& text);
