#include "foundation/utf.h"

#include "foundation/clstring.h"

namespace {

// Reads one code point from UTF-16 at index i; advances i.
uint32_t NextCodePoint(const char16_t* text, int32_t length, int32_t& i) {
    uint32_t unit = text[i++];
    if (unit >= 0xD800 && unit <= 0xDBFF) {
        if (i < length && text[i] >= 0xDC00 && text[i] <= 0xDFFF) {
            uint32_t low = text[i++];
            return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        }
        return 0xFFFD;
    }
    if (unit >= 0xDC00 && unit <= 0xDFFF) return 0xFFFD;
    return unit;
}

int EncodedSize(uint32_t cp) {
    if (cp < 0x80) return 1;
    if (cp < 0x800) return 2;
    if (cp < 0x10000) return 3;
    return 4;
}

}  // namespace

int64_t Utf8LengthOf(const char16_t* text, int32_t length) {
    int64_t total = 0;
    for (int32_t i = 0; i < length;) total += EncodedSize(NextCodePoint(text, length, i));
    return total;
}

int64_t Utf16ToUtf8(const char16_t* text, int32_t length, char* out) {
    auto* o = reinterpret_cast<unsigned char*>(out);
    int64_t n = 0;
    for (int32_t i = 0; i < length;) {
        uint32_t cp = NextCodePoint(text, length, i);
        if (cp < 0x80) {
            o[n++] = static_cast<unsigned char>(cp);
        } else if (cp < 0x800) {
            o[n++] = static_cast<unsigned char>(0xC0 | (cp >> 6));
            o[n++] = static_cast<unsigned char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            o[n++] = static_cast<unsigned char>(0xE0 | (cp >> 12));
            o[n++] = static_cast<unsigned char>(0x80 | ((cp >> 6) & 0x3F));
            o[n++] = static_cast<unsigned char>(0x80 | (cp & 0x3F));
        } else {
            o[n++] = static_cast<unsigned char>(0xF0 | (cp >> 18));
            o[n++] = static_cast<unsigned char>(0x80 | ((cp >> 12) & 0x3F));
            o[n++] = static_cast<unsigned char>(0x80 | ((cp >> 6) & 0x3F));
            o[n++] = static_cast<unsigned char>(0x80 | (cp & 0x3F));
        }
    }
    return n;
}

namespace {

// Decodes UTF-8; a byte outside a valid sequence becomes U+FFFD, or with
// `escapeBytes` the surrogate U+DC00 + byte.
void DecodeUtf8(const char* bytes, int64_t byteCount, clString& target, bool escapeBytes) {
    if (bytes == nullptr || byteCount <= 0) {
        target.Clear();
        return;
    }
    const auto* b = reinterpret_cast<const unsigned char*>(bytes);
    // Every byte gives at most one unit, every 4-byte sequence two: the
    // byte count plus one is always enough room.
    int64_t room = byteCount + 1;
    if (room > INT32_MAX) room = INT32_MAX;
    target.SetCapacity(static_cast<int32_t>(room));
    char16_t* out = target.text;
    int64_t n = 0;
    int64_t i = 0;
    while (i < byteCount && n < room - 1) {
        uint32_t c = b[i];
        int need = 0;
        uint32_t cp = 0;
        uint32_t minimum = 0;
        if (c < 0x80) {
            out[n++] = static_cast<char16_t>(c);
            ++i;
            continue;
        } else if (c >= 0xC2 && c <= 0xDF) {
            need = 1;
            cp = c & 0x1F;
            minimum = 0x80;
        } else if (c >= 0xE0 && c <= 0xEF) {
            need = 2;
            cp = c & 0x0F;
            minimum = 0x800;
        } else if (c >= 0xF0 && c <= 0xF4) {
            need = 3;
            cp = c & 0x07;
            minimum = 0x10000;
        } else {
            out[n++] = escapeBytes ? static_cast<char16_t>(0xDC00 + c) : char16_t{0xFFFD};
            ++i;
            continue;
        }
        int k = 1;
        for (; k <= need; ++k) {
            if (i + k >= byteCount || (b[i + k] & 0xC0) != 0x80) break;
            cp = (cp << 6) | (b[i + k] & 0x3F);
        }
        if (k <= need || cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
            out[n++] = escapeBytes ? static_cast<char16_t>(0xDC00 + c) : char16_t{0xFFFD};
            ++i;  // resynchronise on the next byte
            continue;
        }
        i += need + 1;
        if (cp >= 0x10000) {
            if (n + 2 > room - 1) break;
            cp -= 0x10000;
            out[n++] = static_cast<char16_t>(0xD800 + (cp >> 10));
            out[n++] = static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        } else {
            out[n++] = static_cast<char16_t>(cp);
        }
    }
    out[n] = 0;
    target.size = static_cast<int32_t>(n + 1);
}

}  // namespace

void Utf8ToString(const char* bytes, int64_t byteCount, clString& target) {
    DecodeUtf8(bytes, byteCount, target, false);
}

void FileNameToString(const char* bytes, int64_t byteCount, clString& target) {
    DecodeUtf8(bytes, byteCount, target, true);
}

std::string StringToUtf8(const clString& text) {
    int32_t length = text.Length();
    std::string bytes(static_cast<size_t>(Utf8LengthOf(text.text, length)), '\0');
    Utf16ToUtf8(text.text, length, bytes.data());
    return bytes;
}

std::string StringToFileName(const char16_t* text, int32_t length) {
    std::string bytes;
    bytes.reserve(static_cast<size_t>(length > 0 ? length : 0) * 3);
    for (int32_t i = 0; i < length;) {
        char16_t unit = text[i];
        bool paired =
            unit >= 0xD800 && unit <= 0xDBFF && i + 1 < length && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
        if (!paired && IsEscapedNameByte(unit)) {
            bytes.push_back(static_cast<char>(unit - 0xDC00));
            ++i;
            continue;
        }
        int32_t units = paired ? 2 : 1;
        char encoded[4];
        int64_t n = Utf16ToUtf8(text + i, units, encoded);
        bytes.append(encoded, static_cast<size_t>(n));
        i += units;
    }
    return bytes;
}

bool ReplaceLoneSurrogates(clString& text, bool keepNameBytes) {
    bool changed = false;
    int32_t length = text.Length();
    for (int32_t i = 0; i < length; ++i) {
        char16_t unit = text.text[i];
        if (unit < 0xD800 || unit > 0xDFFF) continue;
        if (unit <= 0xDBFF && i + 1 < length && text.text[i + 1] >= 0xDC00 && text.text[i + 1] <= 0xDFFF) {
            ++i;  // a pair
            continue;
        }
        if (keepNameBytes && IsEscapedNameByte(unit)) continue;
        text.text[i] = 0xFFFD;
        changed = true;
    }
    return changed;
}
