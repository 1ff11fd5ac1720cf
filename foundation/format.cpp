#include "foundation/format.h"

#include <cmath>

#include "foundation/wideprintf.h"

namespace {
constexpr int32_t kFirstRoom = 1000;
constexpr int32_t kRoomLimit = 0x6400000;  // 104857600 characters
}  // namespace

clString clString::Formatted(const char16_t* format, ...) {
    clString result;
    va_list args;
    va_start(args, format);
    result.FormatArgs(format, args);
    va_end(args);
    return result;
}

void clString::Format(const char16_t* format, ...) {
    va_list args;
    va_start(args, format);
    FormatArgs(format, args);
    va_end(args);
}

void clString::FormatArgs(const char16_t* format, va_list args) {
    // The result is built in a scratch string and assigned at the end, so an
    // argument may be this string's own text.
    for (int32_t room = kFirstRoom;; room *= 5) {
        if (room >= kRoomLimit) {
            va_list copy;
            va_copy(copy, args);
            FormatOwn(format, copy);
            va_end(copy);
            return;
        }
        clString scratch;
        scratch.SetCapacity(room);
        va_list copy;
        va_copy(copy, args);
        int result = clWidePrint(scratch.text, static_cast<size_t>(room - 1), format, copy);
        va_end(copy);
        if (result < 0 || result > room - 1) continue;
        scratch.text[result] = 0;
        scratch.size = result + 1;
        Assign(scratch.text);
        return;
    }
}

void clString::FormatOwn(const char16_t* format, va_list args) {
    clString source(format);
    clString built;
    int32_t position = 1;
    for (;;) {
        int32_t percent = source.FindChar(u'%', position);
        if (percent == 0) {
            built.AppendGrowing(source.Mid(position, source.Length()));
            *this = static_cast<clString&&>(built);
            return;
        }
        built.AppendGrowing(source.Mid(position, percent - 1));
        int32_t precision = 6;
        int32_t width = 0;
        char16_t pad = u' ';
        bool plus = false;
        bool precisionMode = false;
        int32_t i = percent + 1;
        for (;; ++i) {
            char16_t c = source.CharAt(i);
            if (c == 0) {
                Clear();
                return;
            }
            if (c == u'+') {
                plus = true;
            } else if (c == u'.') {
                if (precisionMode) {
                    Clear();
                    return;
                }
                precisionMode = true;
                precision = 0;
            } else if (c >= u'0' && c <= u'9' && precisionMode) {
                precision = precision * 10 + (c - u'0');
            } else if (c == u'0' && width == 0) {
                pad = u'0';
            } else if (c >= u'0' && c <= u'9') {
                width = width * 10 + (c - u'0');
            } else if (c == u'%') {
                built.AppendGrowing(u"%");
                break;
            } else if (c == u's') {
                built.AppendGrowing(va_arg(args, const char16_t*));
                break;
            } else if (c == u'c') {
                char16_t ch = static_cast<char16_t>(va_arg(args, int) & 0xFFFF);
                char16_t one[2] = {ch, 0};
                built.AppendGrowing(one);
                break;
            } else if (c == u'd' || c == u'i') {
                int64_t value = va_arg(args, int);
                const char16_t* sign = value < 0 ? u"-" : (plus ? u"+" : nullptr);
                clString digits(value < 0 ? -value : value);
                int32_t w = width;
                if (sign != nullptr && w > 0) --w;
                clString padding;
                if (w > digits.Length()) {
                    padding.SetLength(w - digits.Length());
                    for (int32_t k = 0; k < padding.Length(); ++k) padding.text[k] = pad;
                }
                if (pad == u'0') {
                    built.AppendGrowing(sign);
                    built.AppendGrowing(padding);
                } else {
                    built.AppendGrowing(padding);
                    built.AppendGrowing(sign);
                }
                built.AppendGrowing(digits);
                break;
            } else if (c == u'u' || c == u'x' || c == u'X') {
                unsigned value = va_arg(args, unsigned);
                clString digits;
                if (c == u'u') {
                    digits.FromUInt64(value);
                } else {
                    digits.FromHex(value);
                    if (c == u'x') digits = digits.Lower();
                }
                for (int32_t k = digits.Length(); k < width; ++k) built.AppendGrowing(pad == u'0' ? u"0" : u" ");
                built.AppendGrowing(digits);
                break;
            } else if (c == u'f') {
                double value = va_arg(args, double);
                if (plus && value > 0.0) built.AppendGrowing(u"+");
                built.AppendGrowing(FloatToText(value, precision, true));
                break;
            }
            // Any other character (length modifiers, `-`, `#`, blank) is skipped.
        }
        position = i + 1;
    }
}

clString FloatToText(double value, int32_t decimals, bool keepZeros) {
    if (std::isnan(value)) return clString(u"NAN");
    clString result;
    if (value < 0.0) {
        result.Append(u"-");
        value = -value;
    }
    double sum = value + 0.5 * std::pow(10.0, -static_cast<double>(decimals));
    double integerPart = std::floor(sum);
    double fraction = sum - integerPart;
    if (integerPart > 0.0) {
        double exponent = std::floor(std::log10(integerPart));
        if (!(exponent < 100.0)) return clString(u"NaN");
        int zeros = 0;
        if (exponent > 16.0) {
            zeros = static_cast<int>(exponent) - 16;
            integerPart /= std::pow(10.0, zeros);
        }
        clString digits;
        digits.FromUInt64(static_cast<uint64_t>(std::floor(integerPart)));
        result.Append(digits);
        for (int k = 0; k < zeros; ++k) result.Append(u"0");
    } else {
        result.Append(u"0");
    }
    if (decimals > 0) {
        // A 64-bit scale holds 19 digits; more decimals than that are not
        // representable and are cut to 18.
        int32_t places = decimals > 18 ? 18 : decimals;
        uint64_t scale = 1;
        for (int32_t k = 0; k < places; ++k) scale *= 10;
        uint64_t sumDigits = static_cast<uint64_t>(std::floor(static_cast<double>(scale) * fraction)) + scale;
        if (!keepZeros) {
            while (sumDigits % 10 == 0) sumDigits /= 10;
        }
        clString digits;
        digits.FromUInt64(sumDigits);
        if (digits.Length() > 1) {
            digits.text[0] = u'.';
            result.Append(digits);
        }
    }
    return result;
}
