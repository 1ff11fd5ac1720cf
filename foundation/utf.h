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

// File names as bytes (POSIX) and as text, one mapping for every place that
// touches a file: the platform layer, qvt, and (in the same form) the codec
// plug-ins. A name is read as UTF-8, and each byte that is not part of a
// valid sequence becomes the lone surrogate U+DC80-U+DCFF; the way back
// gives that byte again. So a name the system lists, in any encoding,
// names the same file when it is used. Any other lone surrogate (a damaged
// tag, a pair cut in half) becomes U+FFFD on the way to bytes, the same
// bytes wherever the name is made, so a file is never reserved under one
// name and written under another.
void FileNameToString(const char* bytes, int64_t byteCount, clString& target);
std::string StringToFileName(const char16_t* text, int32_t length);
// True for a unit that stands for a byte of a name that is not UTF-8.
inline bool IsEscapedNameByte(char16_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }
// Replaces every lone surrogate with U+FFFD; with `keepNameBytes`, those
// that stand for bytes of a file name stay. Answers whether anything
// changed.
bool ReplaceLoneSurrogates(clString& text, bool keepNameBytes);
