#include <windows.h>

#include "foundation/platform/lateload_win32.h"
#include "foundation/platform/messagebox.h"

int PlatformMessageBox(const clString& text, const clString& caption, uint32_t type) {
    static const auto messageBox = LateProc<int(WINAPI*)(HWND, LPCWSTR, LPCWSTR, UINT)>(L"user32.dll", "MessageBoxW");
    if (messageBox == nullptr) return -1;
    int answer =
        messageBox(nullptr, reinterpret_cast<LPCWSTR>(text.text), reinterpret_cast<LPCWSTR>(caption.text), type);
    return answer == 0 ? -1 : answer;
}
