// A printf for char16_t text, the same on every platform.
//
// It is the "ordinary path" of clString::Format. Windows has _vsnwprintf,
// but its %s means different things in different C runtimes and POSIX has
// no 16-bit wchar_t at all, so one implementation serves both and gives the
// same text everywhere. The contract is the legacy one Format relies on:
// at most `count` units are written; the result is the number of units
// written, and a terminator follows only if it is below `count`; when the
// text does not fit the result is -1.
//
// Conversions: d i u x X o c s p f F e E g G %, flags - + blank # 0, width
// and precision (also *), length modifiers h l ll I64 z j t (ll, I64, j, z
// and t read 64 bits). %s takes a char16_t pointer (null prints "(null)"),
// %S a char pointer to 8-bit text (each byte one unit), %c a char16_t.
#pragma once

#include <cstdarg>
#include <cstddef>

int clWidePrint(char16_t* buffer, size_t count, const char16_t* format, va_list args);
