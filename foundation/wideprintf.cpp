#include "foundation/wideprintf.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

struct Output {
    char16_t* buffer;
    size_t count;
    size_t written;
    bool overflow;

    void Put(char16_t c) {
        if (written < count) {
            buffer[written] = c;
        } else {
            overflow = true;
        }
        ++written;
    }
};

struct Spec {
    bool left = false;
    bool plus = false;
    bool blank = false;
    bool alternate = false;
    bool zero = false;
    int width = 0;
    int precision = -1;
    int lengthBits = 32;
};

void PutPadded(Output& out, const Spec& spec, const char16_t* body, size_t bodyLength, const char16_t* prefix,
               bool zeroPadAllowed) {
    size_t prefixLength = 0;
    while (prefix[prefixLength] != 0) ++prefixLength;
    size_t total = bodyLength + prefixLength;
    size_t pad = spec.width > 0 && static_cast<size_t>(spec.width) > total ? spec.width - total : 0;
    bool zeroPad = spec.zero && !spec.left && zeroPadAllowed;
    if (!spec.left && !zeroPad)
        for (size_t i = 0; i < pad; ++i) out.Put(u' ');
    for (size_t i = 0; i < prefixLength; ++i) out.Put(prefix[i]);
    if (zeroPad)
        for (size_t i = 0; i < pad; ++i) out.Put(u'0');
    for (size_t i = 0; i < bodyLength; ++i) out.Put(body[i]);
    if (spec.left)
        for (size_t i = 0; i < pad; ++i) out.Put(u' ');
}

void PutInteger(Output& out, const Spec& spec, uint64_t magnitude, bool negative, unsigned base, bool upper,
                char conversion) {
    char16_t digits[72];
    size_t n = 0;
    const char* set = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    while (magnitude != 0) {
        digits[n++] = static_cast<char16_t>(set[magnitude % base]);
        magnitude /= base;
    }
    size_t minimumDigits = spec.precision >= 0 ? static_cast<size_t>(spec.precision) : 1;
    if (minimumDigits > 64) minimumDigits = 64;
    while (n < minimumDigits) digits[n++] = u'0';
    if (conversion == 'o' && spec.alternate && (n == 0 || digits[n - 1] != u'0')) digits[n++] = u'0';
    char16_t body[72];
    for (size_t i = 0; i < n; ++i) body[i] = digits[n - 1 - i];
    char16_t prefix[3] = {0, 0, 0};
    if (conversion == 'd' || conversion == 'i') {
        if (negative) {
            prefix[0] = u'-';
        } else if (spec.plus) {
            prefix[0] = u'+';
        } else if (spec.blank) {
            prefix[0] = u' ';
        }
    } else if ((conversion == 'x' || conversion == 'X') && spec.alternate && n > 0 && !(n == 1 && body[0] == u'0')) {
        prefix[0] = u'0';
        prefix[1] = static_cast<char16_t>(conversion);
    }
    PutPadded(out, spec, body, n, prefix, spec.precision < 0);
}

void PutFloat(Output& out, const Spec& spec, double value, char conversion) {
    // The C library formats the number; only its digits cross over.
    char format[16];
    size_t f = 0;
    format[f++] = '%';
    if (spec.alternate) format[f++] = '#';
    format[f++] = '.';
    format[f++] = '*';
    format[f++] = conversion;
    format[f] = 0;
    char narrow[512];
    int precision = spec.precision >= 0 ? (spec.precision > 300 ? 300 : spec.precision) : 6;
    // The format is built from a fixed set of characters above.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    int n = std::snprintf(narrow, sizeof narrow, format, precision, value < 0 ? -value : value);
#pragma GCC diagnostic pop
    if (n < 0) n = 0;
    if (static_cast<size_t>(n) >= sizeof narrow) n = sizeof narrow - 1;
    char16_t body[512];
    for (int i = 0; i < n; ++i) body[i] = static_cast<unsigned char>(narrow[i]);
    char16_t prefix[2] = {0, 0};
    if (std::signbit(value)) {
        prefix[0] = u'-';
    } else if (spec.plus) {
        prefix[0] = u'+';
    } else if (spec.blank) {
        prefix[0] = u' ';
    }
    bool finite = value == value && value - value == 0;
    PutPadded(out, spec, body, static_cast<size_t>(n), prefix, finite);
}

}  // namespace

int clWidePrint(char16_t* buffer, size_t count, const char16_t* format, va_list args) {
    Output out{buffer, count, 0, false};
    if (format == nullptr) format = u"";
    for (const char16_t* p = format; *p != 0; ++p) {
        if (*p != u'%') {
            out.Put(*p);
            continue;
        }
        ++p;
        Spec spec;
        for (;; ++p) {
            if (*p == u'-')
                spec.left = true;
            else if (*p == u'+')
                spec.plus = true;
            else if (*p == u' ')
                spec.blank = true;
            else if (*p == u'#')
                spec.alternate = true;
            else if (*p == u'0')
                spec.zero = true;
            else
                break;
        }
        if (*p == u'*') {
            spec.width = va_arg(args, int);
            if (spec.width < 0) {
                spec.left = true;
                spec.width = -spec.width;
            }
            ++p;
        } else {
            while (*p >= u'0' && *p <= u'9') spec.width = spec.width * 10 + (*p++ - u'0');
        }
        if (*p == u'.') {
            ++p;
            spec.precision = 0;
            if (*p == u'*') {
                spec.precision = va_arg(args, int);
                ++p;
            } else {
                while (*p >= u'0' && *p <= u'9') spec.precision = spec.precision * 10 + (*p++ - u'0');
            }
        }
        for (;;) {
            if (*p == u'h')
                ++p;
            else if (*p == u'l') {
                if (p[1] == u'l') {
                    spec.lengthBits = 64;
                    ++p;
                }
                ++p;
            } else if (*p == u'I' && p[1] == u'6' && p[2] == u'4') {
                spec.lengthBits = 64;
                p += 3;
            } else if (*p == u'z' || *p == u'j' || *p == u't') {
                spec.lengthBits = 64;
                ++p;
            } else
                break;
        }
        char conversion = *p < 128 ? static_cast<char>(*p) : '?';
        switch (conversion) {
            case 'd':
            case 'i': {
                int64_t v = spec.lengthBits == 64 ? va_arg(args, long long) : va_arg(args, int);
                uint64_t magnitude = v < 0 ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
                PutInteger(out, spec, magnitude, v < 0, 10, false, conversion);
                break;
            }
            case 'u':
            case 'x':
            case 'X':
            case 'o': {
                uint64_t v = spec.lengthBits == 64 ? va_arg(args, unsigned long long) : va_arg(args, unsigned);
                unsigned base = conversion == 'u' ? 10 : (conversion == 'o' ? 8 : 16);
                PutInteger(out, spec, v, false, base, conversion == 'X', conversion);
                break;
            }
            case 'p': {
                auto v = reinterpret_cast<uintptr_t>(va_arg(args, void*));
                Spec pointerSpec = spec;
                pointerSpec.precision = 16;
                PutInteger(out, pointerSpec, v, false, 16, true, 'p');
                break;
            }
            case 'c': {
                char16_t c = static_cast<char16_t>(va_arg(args, int));
                PutPadded(out, spec, &c, 1, u"", false);
                break;
            }
            case 's': {
                const char16_t* s = va_arg(args, const char16_t*);
                if (s == nullptr) s = u"(null)";
                size_t n = 0;
                while (s[n] != 0 && (spec.precision < 0 || n < static_cast<size_t>(spec.precision))) ++n;
                PutPadded(out, spec, s, n, u"", false);
                break;
            }
            case 'S': {
                const char* s = va_arg(args, const char*);
                if (s == nullptr) s = "(null)";
                size_t n = 0;
                while (s[n] != 0 && (spec.precision < 0 || n < static_cast<size_t>(spec.precision))) ++n;
                Spec padSpec = spec;
                size_t pad = spec.width > 0 && static_cast<size_t>(spec.width) > n ? spec.width - n : 0;
                if (!padSpec.left)
                    for (size_t i = 0; i < pad; ++i) out.Put(u' ');
                for (size_t i = 0; i < n; ++i) out.Put(static_cast<unsigned char>(s[i]));
                if (padSpec.left)
                    for (size_t i = 0; i < pad; ++i) out.Put(u' ');
                break;
            }
            case 'f':
            case 'F':
            case 'e':
            case 'E':
            case 'g':
            case 'G': PutFloat(out, spec, va_arg(args, double), conversion); break;
            case '%': out.Put(u'%'); break;
            default:
                // An unknown conversion is copied as it stands; a format that
                // ends inside a conversion ends the output there.
                if (*p == 0) {
                    --p;
                } else {
                    out.Put(u'%');
                    out.Put(*p);
                }
                break;
        }
    }
    if (out.overflow || out.written > count) return -1;
    if (out.written < count) buffer[out.written] = 0;
    return static_cast<int>(out.written);
}
