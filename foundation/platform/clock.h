// Wall-clock time and the user's date picture.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

// A calendar time in the field order of the Windows SYSTEMTIME record.
struct clSystemTime {
    uint16_t year = 0;
    uint16_t month = 0;
    uint16_t dayOfWeek = 0;  // 0 is Sunday
    uint16_t day = 0;
    uint16_t hour = 0;
    uint16_t minute = 0;
    uint16_t second = 0;
    uint16_t milliseconds = 0;
};

// The present local time.
clSystemTime PlatformGetLocalTime();
// The user's short date picture ("M/d/yyyy" and the like). Windows asks the
// locale; POSIX has no such setting and answers the built-in default,
// "M/d/yyyy". False (and the default) when the locale gives nothing.
bool PlatformGetShortDatePicture(clString& picture);
