// Conversions between wide text and the system's 8-bit code page.
//
// Windows: the ANSI code page (MultiByteToWideChar / WideCharToMultiByte
// with code page 0). POSIX has no ANSI code page; there the "system code
// page" is Latin-1, one byte for one unit U+0000-U+00FF, because it is the
// only 8-bit mapping that gives every byte back unchanged: the line reader
// turns bytes into units one at a time and back again before decoding UTF-8,
// and with Latin-1 that round trip loses nothing. Units above U+00FF become
// '?' on the way to bytes.
#pragma once

#include <cstdint>

class clString;

// Replaces `target` with the wide form of `count` bytes. False (and an empty
// target) when the platform refuses the conversion.
bool PlatformAnsiToWide(const char* bytes, int32_t count, clString& target);

// Writes the 8-bit form of `length` units to `out` (room `outRoom` bytes) and
// returns the bytes written; with `out` null, returns the bytes needed.
int32_t PlatformWideToAnsi(const char16_t* text, int32_t length, char* out, int32_t outRoom);
