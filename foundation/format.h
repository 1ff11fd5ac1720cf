// Formatted text beyond clString's own members.
//
// clString::Format / FormatArgs take the ordinary path (clWidePrint with a
// room that grows 1000, 5000, 25000, ... characters) and fall back to the
// narrow in-house formatter FormatOwn when the text would need a room of
// 104857600 characters or more. FormatOwn understands only %s %c %d %i %u
// %x %X %f %%, width, precision, `0` and `+`; it gives an empty result for a
// conversion cut off by the end of the format or a second `.`.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

// The value with `decimals` digits behind the point, rounded half up on the
// magnitude. "NAN" for not-a-number, "NaN" for magnitudes of 1e100 and more.
// The point is always `.`; locale is applied by LocalizeNumber.
clString FloatToText(double value, int32_t decimals, bool keepZeros);
