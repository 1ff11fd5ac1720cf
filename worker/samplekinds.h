// Moving audio between the two sample kinds of the wire: signed 32-bit
// left-justified integers and 32-bit float (full scale +-1.0).
#pragma once

#include <cstddef>
#include <cstdint>

// Exact for every depth up to 24 bits.
void IntToFloat(const int32_t* in, float* out, size_t count);
// Rounded to `validBits` (8..32) and clipped, never dithered; the bits
// below the depth are zero.
void FloatToInt(const float* in, int32_t* out, size_t count, int validBits);
