#include "foundation/localeformat.h"

#include "foundation/format.h"
#include "foundation/platform/locale.h"

namespace {

void CopyField(const char16_t* name, char16_t (&field)[6]) {
    clString value;
    if (!PlatformGetRegionalValue(name, value)) return;
    int32_t n = value.Length() < 5 ? value.Length() : 5;
    for (int32_t i = 0; i < n; ++i) field[i] = value.text[i];
    field[n] = 0;
}

clLocaleInfo ReadLocaleInfo() {
    clLocaleInfo info;
    clString value;
    if (PlatformGetRegionalValue(u"iLZero", value)) info.leadingZero = value.CharAt(1) != u'0';
    if (PlatformGetRegionalValue(u"iNegNumber", value)) info.negativeFormat = static_cast<int32_t>(value.ToInt64());
    if (PlatformGetRegionalValue(u"sGrouping", value)) info.indianGrouping = value.Equals(u"3;2;0");
    CopyField(u"sNegativeSign", info.negativeSign);
    CopyField(u"sPositiveSign", info.positiveSign);
    CopyField(u"sThousand", info.thousandSeparator);
    CopyField(u"sDecimal", info.decimalSeparator);
    CopyField(u"sTime", info.timeSeparator);
    return info;
}

clString Unit(int64_t value, const char16_t* singular, const char16_t* plural) {
    clString text(value);
    text.Append(value == 1 ? singular : plural);
    return text;
}

clString Padded(int64_t value, int32_t digits) {
    clString text(value);
    while (text.Length() < digits) text.Insert(u"0", 1);
    return text;
}

clString Words(int64_t hours, int64_t minutes, int64_t seconds, int64_t millis, uint32_t mode,
               const clLocaleInfo& info) {
    clString text;
    if (hours != 0) {
        text = Unit(hours, u" hour", u" hours");
        if (minutes != 0) {
            text.Append(u" ");
            text.Append(Unit(minutes, u" minute", u" minutes"));
        }
    } else if (minutes != 0) {
        text = Unit(minutes, u" minute", u" minutes");
        if (seconds != 0) {
            text.Append(u" ");
            text.Append(Unit(seconds, u" second", u" seconds"));
        }
    } else if (seconds != 0) {
        if (mode == 0 && millis != 0) {
            text = FloatToText(static_cast<double>(seconds) + static_cast<double>(millis) / 1000.0, 1, false);
            LocalizeNumber(text, info);
            text.Append(u" seconds");
        } else {
            text = Unit(seconds, u" second", u" seconds");
        }
    } else if (millis != 0) {
        text = mode == 0 ? Unit(millis, u" mili-second", u" mili-seconds") : clString(u"0");
    } else {
        text = u"0";
    }
    return text;
}

}  // namespace

const clLocaleInfo& GetLocaleInfoRecord() {
    static const clLocaleInfo info = ReadLocaleInfo();
    return info;
}

clString FormatDuration(int64_t milliseconds, uint32_t mode) {
    return FormatDuration(milliseconds, mode, GetLocaleInfoRecord());
}

clString FormatDuration(int64_t milliseconds, uint32_t mode, const clLocaleInfo& info) {
    int64_t hours = milliseconds / 3600000;
    int64_t rest = milliseconds % 3600000;
    int64_t minutes = rest / 60000;
    rest %= 60000;
    int64_t seconds = rest / 1000;
    int64_t millis = rest % 1000;
    const char16_t* separator = info.timeSeparator;
    clString text;
    switch (mode) {
        case 0:
        case 4: return Words(hours, minutes, seconds, millis, mode, info);
        case 1:
            if (hours != 0) {
                text = clString(hours);
                text.Append(separator);
                text.Append(Padded(minutes, 2));
            } else {
                text = clString(minutes);
            }
            text.Append(separator);
            text.Append(Padded(seconds, 2));
            return text;
        case 2:
        case 3:
            text = Padded(hours, 2);
            text.Append(separator);
            text.Append(Padded(minutes, 2));
            text.Append(separator);
            text.Append(Padded(seconds, 2));
            if (mode == 3) {
                text.Append(info.decimalSeparator);
                text.Append(Padded(millis, 3));
            }
            return text;
        default: return text;
    }
}

clString FormatSize(int64_t bytes, bool forceKB) { return FormatSize(bytes, forceKB, GetLocaleInfoRecord()); }

clString FormatSize(int64_t bytes, bool forceKB, const clLocaleInfo& info) {
    double value = static_cast<double>(bytes);
    struct Row {
        double scale;
        const char16_t* unit;
    };
    static const Row kRows[] = {{1099511627776.0, u" TB"}, {1073741824.0, u" GB"}, {1048576.0, u" MB"}};
    clString text;
    if (!forceKB) {
        for (const Row& row : kRows) {
            if (static_cast<int64_t>(value / row.scale) == 0) continue;
            text = FloatToText(value / row.scale, 2, false);
            LocalizeNumber(text, info);
            text.Append(row.unit);
            return text;
        }
    }
    if (forceKB || static_cast<int64_t>(value / 1024.0) != 0) {
        text = clString(static_cast<int64_t>(value / 1024.0 + 0.99));
        LocalizeNumber(text, info);
        text.Append(u" KB");
        return text;
    }
    text = clString(bytes);
    text.Append(bytes == 1 ? u" byte" : u" bytes");
    return text;
}

void LocalizeNumber(clString& number) { LocalizeNumber(number, GetLocaleInfoRecord()); }

void LocalizeNumber(clString& number, const clLocaleInfo& info) {
    int32_t dot = number.FindChar(u'.');
    int32_t end = dot != 0 ? dot - 1 : number.Length();
    int32_t group = 3;
    int32_t count = 0;
    for (int32_t p = end; p >= 1; --p) {
        char16_t c = number.CharAt(p);
        if (c < u'0' || c > u'9') continue;
        ++count;
        // The separator goes in front of this digit, unless it would stand
        // at the very front or behind a minus sign.
        if (count == group && p > 1 && number.CharAt(p - 1) != u'-') {
            number.Insert(info.thousandSeparator, p);
            count = 0;
            if (info.indianGrouping) group = 2;
        }
    }
    dot = number.FindChar(u'.');
    if (dot != 0) {
        number.Delete(dot, dot);
        number.Insert(info.decimalSeparator, dot);
    }
    if (number.CharAt(1) == u'-') {
        number.Delete(1, 1);
        switch (info.negativeFormat) {
            case 0:
                number.Insert(u"(", 1);
                number.Append(u")");
                break;
            case 2:
                number.Insert(u" ", 1);
                number.Insert(info.negativeSign, 1);
                break;
            case 3: number.Append(info.negativeSign); break;
            case 4:
                number.Append(u" ");
                number.Append(info.negativeSign);
                break;
            default: number.Insert(info.negativeSign, 1); break;
        }
    } else if (!number.IsEmpty()) {
        number.Insert(info.positiveSign, 1);
    }
}
