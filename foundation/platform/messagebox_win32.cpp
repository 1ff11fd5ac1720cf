#include <windows.h>

#include "foundation/platform/messagebox.h"

int PlatformMessageBox(const clString& text, const clString& caption, uint32_t type) {
    int answer =
        MessageBoxW(nullptr, reinterpret_cast<LPCWSTR>(text.text), reinterpret_cast<LPCWSTR>(caption.text), type);
    return answer == 0 ? -1 : answer;
}
