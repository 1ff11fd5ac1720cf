// Calendar arithmetic and date and time pictures.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/platform/clock.h"

// 100-nanosecond ticks since 1601-01-01 UTC (the file-time scale) as a
// calendar time, with no conversion to local time. Tick 0 is 1601-01-01
// 00:00:00.000, a Monday.
clSystemTime TicksToSystemTime(uint64_t ticks);
// Seconds since 1970 on the file-time scale.
uint64_t UnixSecondsToTicks(int64_t seconds);

// A date picture applied as the platform's date formatter applies it:
// d dd ddd dddd, M MM MMM MMMM, y yy yyyy, text in single quotes literal
// ('' a quote). Names are English.
clString FormatDatePicture(const clSystemTime& time, const clString& picture);
// A time picture: h hh (12-hour), H HH, m mm, s ss, t tt (A/AM, P/PM),
// quotes as above.
clString FormatTimePicture(const clSystemTime& time, const clString& picture);
