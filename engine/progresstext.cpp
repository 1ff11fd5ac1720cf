#include "engine/progresstext.h"

#include "foundation/format.h"

namespace {

void AppendUnit(clString& text, int64_t count, const char16_t* singular, const char16_t* plural,
                const clLocaleInfo& locale) {
    if (!text.IsEmpty()) text.Append(u" ");
    clString number = clString::Formatted(u"%lld", static_cast<long long>(count));
    LocalizeNumber(number, locale);
    text.Append(number);
    text.Append(count == 1 ? singular : plural);
}

}  // namespace

clString TimeText(int64_t seconds, bool bothUnits, const clLocaleInfo& locale) {
    if (seconds < 0) seconds = 0;
    const int64_t parts[4] = {seconds / 86400, seconds / 3600 % 24, seconds / 60 % 60, seconds % 60};
    static const char16_t* const kSingular[4] = {u" Day", u" Hour", u" Minute", u" Second"};
    static const char16_t* const kPlural[4] = {u" Days", u" Hours", u" Minutes", u" Seconds"};
    clString text;
    for (int unit = 0; unit < 4; ++unit) {
        if (parts[unit] == 0) continue;
        AppendUnit(text, parts[unit], kSingular[unit], kPlural[unit], locale);
        if (unit < 3 && (bothUnits || parts[unit] < 4)) {
            AppendUnit(text, parts[unit + 1], kSingular[unit + 1], kPlural[unit + 1], locale);
        }
        break;
    }
    return text;
}

clString TimeText(int64_t seconds, bool bothUnits) { return TimeText(seconds, bothUnits, GetLocaleInfoRecord()); }

clString SpeedText(int64_t audioMs, int64_t elapsedMs, const clLocaleInfo& locale) {
    const double elapsed = elapsedMs == 0 ? 1.0 : static_cast<double>(elapsedMs);
    const double speed = static_cast<double>(audioMs) / elapsed;
    clString text;
    if (speed <= 4.0) {
        text = FloatToText(speed, 1, true);
        LocalizeNumber(text, locale);
    } else {
        text = clString::Formatted(u"%lld", static_cast<long long>(speed + 0.5));
    }
    text.Append(u"x Encoding Speed");
    return text;
}

clString SpeedText(int64_t audioMs, int64_t elapsedMs) { return SpeedText(audioMs, elapsedMs, GetLocaleInfoRecord()); }

clString ExaminingText(int64_t examined, int64_t sources) {
    int64_t at = sources > 0 ? examined * 100 / sources / 5 : 0;
    if (at > 19) at = 19;
    if (at < 0) at = 0;
    char16_t bar[21];
    for (int i = 0; i < 20; ++i) bar[i] = i == at ? u'+' : u' ';
    bar[20] = 0;
    clString text(u"Examining Source & Overwrite Check      [");
    text.Append(bar);
    text.Append(u"]");
    return text;
}

int32_t ProgressHundredths(int64_t bytesDone, int64_t totalBytes) {
    return static_cast<int32_t>(bytesDone * 10000 / (totalBytes == 0 ? 1 : totalBytes));
}

uint32_t ElapsedMs(uint32_t now, uint32_t startTick, bool paused, uint32_t pauseStart) {
    uint32_t elapsed = now - startTick;
    if (paused) elapsed -= now - pauseStart;
    return elapsed;
}

int64_t RemainingMs(int64_t elapsedMs, int64_t bytesDone, int64_t totalBytes) {
    const double done = static_cast<double>(bytesDone) * 100.0 / static_cast<double>(totalBytes == 0 ? 1 : totalBytes);
    if (done == 0) return -1;
    int64_t remaining = static_cast<int64_t>(static_cast<double>(elapsedMs) * 100.0 / done) - elapsedMs;
    return remaining < 0 ? 0 : remaining;
}
