// What the conversion shows while it runs: times in words, the speed of
// the whole batch, the examining bar, and the progress numbers behind
// them. The locale comes in, so the texts can be tested in any regional
// format.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/localeformat.h"

// A duration in words, by its largest unit that isn't 0: "17 Seconds",
// "1 Minute 30 Seconds", "4 Hours". The next smaller unit follows (even
// when 0) if `bothUnits` is set or the largest is below 4. 0 gives "".
clString TimeText(int64_t seconds, bool bothUnits, const clLocaleInfo& locale);
clString TimeText(int64_t seconds, bool bothUnits);

// Audio time over real time for all slots together: one decimal up to 4
// ("2.5x Encoding Speed"), whole numbers above ("17x Encoding Speed").
clString SpeedText(int64_t audioMs, int64_t elapsedMs, const clLocaleInfo& locale);
clString SpeedText(int64_t audioMs, int64_t elapsedMs);

// The status line while sources are examined: a "+" that walks 20 places
// as the count grows.
clString ExaminingText(int64_t examined, int64_t sources);

// Overall progress in hundredths of a percent (a total of 0 counts as 1).
int32_t ProgressHundredths(int64_t bytesDone, int64_t totalBytes);

// Milliseconds of conversion so far: the time since the start, less the
// time of a pause that is still on (ended pauses move the start).
uint32_t ElapsedMs(uint32_t now, uint32_t startTick, bool paused, uint32_t pauseStart);

// The time left at the pace so far; -1 while nothing is done.
int64_t RemainingMs(int64_t elapsedMs, int64_t bytesDone, int64_t totalBytes);
