// Durations, byte counts and numbers as text for users, in the regional
// format of the current user (read once per process).
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

struct clLocaleInfo {
    bool leadingZero = true;
    int32_t negativeFormat = 1;
    bool indianGrouping = false;
    char16_t negativeSign[6] = u"-";
    char16_t positiveSign[6] = u"";
    char16_t thousandSeparator[6] = u"";
    char16_t decimalSeparator[6] = u".";
    char16_t timeSeparator[6] = u":";
};

// Read on first use; it never changes afterwards.
const clLocaleInfo& GetLocaleInfoRecord();

// Modes: 0 words with millisecond detail, 1 M:SS or H:MM:SS, 2 HH:MM:SS,
// 3 HH:MM:SS.mmm, 4 words without millisecond detail; others give "".
clString FormatDuration(int64_t milliseconds, uint32_t mode);
clString FormatDuration(int64_t milliseconds, uint32_t mode, const clLocaleInfo& info);
// TB, GB, MB with two decimals, KB rounded up from just above a whole
// number, else bytes; with `forceKB` every size in KB.
clString FormatSize(int64_t bytes, bool forceKB);
clString FormatSize(int64_t bytes, bool forceKB, const clLocaleInfo& info);
// Grouping, decimal separator and sign style for a decimal text.
void LocalizeNumber(clString& number);
void LocalizeNumber(clString& number, const clLocaleInfo& info);
