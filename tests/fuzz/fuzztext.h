// Turns fuzz input into UTF-16 text: byte pairs, little-endian, with the
// NUL unit replaced so that the text is never cut short.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/clstring.h"

inline clString FuzzText(const uint8_t* data, size_t size, char16_t nulReplacement) {
    clString text;
    size_t units = size / 2;
    text.SetCapacity(static_cast<int32_t>(units + 1));
    for (size_t i = 0; i < units; ++i) {
        char16_t u = static_cast<char16_t>(data[2 * i] | (data[2 * i + 1] << 8));
        text.text[i] = u == 0 ? nulReplacement : u;
    }
    text.text[units] = 0;
    text.size = static_cast<int32_t>(units + 1);
    return text;
}
