#include <windows.h>

#include "foundation/clstring.h"
#include "foundation/platform/textcodec.h"

bool PlatformAnsiToWide(const char* bytes, int32_t count, clString& target) {
    if (bytes == nullptr || count <= 0) {
        target.Clear();
        return true;
    }
    int needed = MultiByteToWideChar(CP_ACP, 0, bytes, count, nullptr, 0);
    if (needed <= 0) {
        target.Clear();
        return false;
    }
    target.SetCapacity(needed + 1);
    int written = MultiByteToWideChar(CP_ACP, 0, bytes, count, reinterpret_cast<wchar_t*>(target.text), needed);
    if (written <= 0) {
        target.text[0] = 0;
        target.size = 1;
        return false;
    }
    target.text[written] = 0;
    target.size = written + 1;
    return true;
}

int32_t PlatformWideToAnsi(const char16_t* text, int32_t length, char* out, int32_t outRoom) {
    if (length <= 0) return 0;
    return WideCharToMultiByte(CP_ACP, 0, reinterpret_cast<const wchar_t*>(text), length, out,
                               out == nullptr ? 0 : outRoom, nullptr, nullptr);
}
