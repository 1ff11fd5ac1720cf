// The user's regional values by their names under the Windows key
// "Control Panel\International" (sThousand, sDecimal, iNegNumber, ...).
// Windows reads that key. POSIX has no such values and answers with the
// built-in defaults: "," for sThousand and nothing for the rest.
#pragma once

#include "foundation/clstring.h"

bool PlatformGetRegionalValue(const char16_t* name, clString& value);
