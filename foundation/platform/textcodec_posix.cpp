#include "foundation/clstring.h"
#include "foundation/platform/textcodec.h"

bool PlatformAnsiToWide(const char* bytes, int32_t count, clString& target) {
    if (bytes == nullptr || count <= 0) {
        target.Clear();
        return true;
    }
    target.SetCapacity(count + 1);
    for (int32_t i = 0; i < count; ++i) target.text[i] = static_cast<unsigned char>(bytes[i]);
    target.text[count] = 0;
    target.size = count + 1;
    return true;
}

int32_t PlatformWideToAnsi(const char16_t* text, int32_t length, char* out, int32_t outRoom) {
    if (out == nullptr) return length;
    int32_t n = length < outRoom ? length : outRoom;
    for (int32_t i = 0; i < n; ++i) out[i] = text[i] <= 0xFF ? static_cast<char>(text[i]) : '?';
    return n;
}
