// Values of the worker's command file, in a form that carries any name.
//
// The command file writes each value between double quotes, and its reader
// ends a value at the next quote. A file name may hold a quote (any byte
// but "/" and NUL on POSIX), a line break, or text that looks like the
// next option ("-outfile="), so a value is escaped on the way in: every
// `"`, every `%` and every control character (below U+0020) is written as
// `%` and two hexadecimal digits of its code unit. Everything else, lone
// surrogates included, stands as it is, so a value comes back unit for
// unit.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

clString EscapeOptionValue(const clString& value);
// The reverse, for the `length` units at `text`. False, with `value`
// empty, when a `%` is not followed by two hexadecimal digits or stands
// for NUL: such a value was not written by EscapeOptionValue.
bool UnescapeOptionValue(const char16_t* text, int32_t length, clString& value);
