#include "foundation/optionvalue.h"

namespace {

constexpr char16_t kHexDigits[] = u"0123456789ABCDEF";

int HexValue(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    return -1;
}

bool NeedsEscape(char16_t c) { return c == u'"' || c == u'%' || c < 0x20; }

}  // namespace

clString EscapeOptionValue(const clString& value) {
    int32_t length = value.Length();
    int32_t escaped = 0;
    for (int32_t i = 0; i < length; ++i) escaped += NeedsEscape(value.text[i]) ? 1 : 0;
    if (escaped == 0) return value;
    clString out;
    out.SetCapacity(length + 2 * escaped + 1);
    int32_t n = 0;
    for (int32_t i = 0; i < length; ++i) {
        char16_t c = value.text[i];
        if (NeedsEscape(c)) {
            out.text[n++] = u'%';
            out.text[n++] = kHexDigits[c >> 4];
            out.text[n++] = kHexDigits[c & 0x0F];
        } else {
            out.text[n++] = c;
        }
    }
    out.text[n] = 0;
    out.size = n + 1;
    return out;
}

bool UnescapeOptionValue(const char16_t* text, int32_t length, clString& value) {
    value.Clear();
    if (text == nullptr || length <= 0) return true;
    clString out;
    out.SetCapacity(length + 1);
    int32_t n = 0;
    for (int32_t i = 0; i < length; ++i) {
        char16_t c = text[i];
        if (c == u'%') {
            int high = i + 2 < length ? HexValue(text[i + 1]) : -1;
            int low = high >= 0 ? HexValue(text[i + 2]) : -1;
            // A NUL would end the value early wherever it is used as text.
            if (low < 0 || high * 16 + low == 0) return false;
            c = static_cast<char16_t>(high * 16 + low);
            i += 2;
        }
        out.text[n++] = c;
    }
    out.text[n] = 0;
    out.size = n + 1;
    value = static_cast<clString&&>(out);
    return true;
}
