#include "foundation/datetime.h"

namespace {

const char16_t* const kDays[] = {u"Sunday", u"Monday", u"Tuesday", u"Wednesday", u"Thursday", u"Friday", u"Saturday"};
const char16_t* const kMonths[] = {u"January", u"February", u"March",     u"April",   u"May",      u"June",
                                   u"July",    u"August",   u"September", u"October", u"November", u"December"};

clString Number(int64_t value, int32_t digits) {
    clString text;
    text.FromInt64(value);
    while (text.Length() < digits) text.Insert(u"0", 1);
    return text;
}

// Applies a picture: `field` gives the text of a run of one letter, or
// false when the letter is no field (it is then copied as it stands).
template <class Field>
clString ApplyPicture(const clString& picture, Field field) {
    clString out;
    int32_t length = picture.Length();
    for (int32_t i = 1; i <= length;) {
        char16_t c = picture.CharAt(i);
        if (c == u'\'') {
            ++i;
            while (i <= length) {
                if (picture.CharAt(i) == u'\'') {
                    if (picture.CharAt(i + 1) != u'\'') break;
                    ++i;
                }
                char16_t one[2] = {picture.CharAt(i), 0};
                out.AppendGrowing(one);
                ++i;
            }
            ++i;
            continue;
        }
        int32_t run = 1;
        while (picture.CharAt(i + run) == c) ++run;
        clString text;
        if (field(c, run, text)) {
            out.AppendGrowing(text);
        } else {
            out.AppendGrowing(picture.Mid(i, i + run - 1));
        }
        i += run;
    }
    return out;
}

}  // namespace

clSystemTime TicksToSystemTime(uint64_t ticks) {
    clSystemTime time;
    uint64_t milliseconds = ticks / 10000;
    uint64_t days = milliseconds / 86400000;
    uint64_t inDay = milliseconds % 86400000;
    time.milliseconds = static_cast<uint16_t>(inDay % 1000);
    time.second = static_cast<uint16_t>(inDay / 1000 % 60);
    time.minute = static_cast<uint16_t>(inDay / 60000 % 60);
    time.hour = static_cast<uint16_t>(inDay / 3600000);
    time.dayOfWeek = static_cast<uint16_t>((days + 1) % 7);  // 1601-01-01 was a Monday
    // Civil date from days since 1601-01-01 (a 400-year cycle start).
    int64_t z = static_cast<int64_t>(days);
    int64_t era = z / 146097;
    int64_t dayOfEra = z % 146097;
    int64_t year = 1601 + era * 400;
    auto leap = [](int64_t y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; };
    for (;;) {
        int64_t length = leap(year) ? 366 : 365;
        if (dayOfEra < length) break;
        dayOfEra -= length;
        ++year;
    }
    static const int kMonthDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int month = 0;
    for (;; ++month) {
        int64_t length = kMonthDays[month] + (month == 1 && leap(year) ? 1 : 0);
        if (dayOfEra < length) break;
        dayOfEra -= length;
    }
    time.year = static_cast<uint16_t>(year);
    time.month = static_cast<uint16_t>(month + 1);
    time.day = static_cast<uint16_t>(dayOfEra + 1);
    return time;
}

uint64_t UnixSecondsToTicks(int64_t seconds) {
    int64_t since1601 = seconds + 11644473600LL;
    return since1601 < 0 ? 0 : static_cast<uint64_t>(since1601) * 10000000ULL;
}

clString FormatDatePicture(const clSystemTime& time, const clString& picture) {
    return ApplyPicture(picture, [&](char16_t c, int32_t run, clString& text) {
        if (c == u'd') {
            if (run <= 2)
                text = Number(time.day, run);
            else
                text = run == 3 ? clString(kDays[time.dayOfWeek % 7]).Mid(1, 3) : clString(kDays[time.dayOfWeek % 7]);
        } else if (c == u'M') {
            const char16_t* name = kMonths[(time.month + 11) % 12];
            if (run <= 2)
                text = Number(time.month, run);
            else
                text = run == 3 ? clString(name).Mid(1, 3) : clString(name);
        } else if (c == u'y') {
            text = run <= 2 ? Number(time.year % 100, run) : Number(time.year, 4);
        } else if (c == u'g') {
            text = u"A.D.";
        } else {
            return false;
        }
        return true;
    });
}

clString FormatTimePicture(const clSystemTime& time, const clString& picture) {
    return ApplyPicture(picture, [&](char16_t c, int32_t run, clString& text) {
        int32_t digits = run >= 2 ? 2 : 1;
        if (c == u'h') {
            int hour = time.hour % 12;
            text = Number(hour == 0 ? 12 : hour, digits);
        } else if (c == u'H') {
            text = Number(time.hour, digits);
        } else if (c == u'm') {
            text = Number(time.minute, digits);
        } else if (c == u's') {
            text = Number(time.second, digits);
        } else if (c == u't') {
            text = time.hour < 12 ? u"AM" : u"PM";
            if (run == 1) text.SetLength(1);
        } else {
            return false;
        }
        return true;
    });
}
