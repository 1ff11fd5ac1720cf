// The Win32 back end's process-wide services: the screen, questions,
// popup menus, the clipboard and the taskbar button.
#include <windows.h>
#include <shobjidl.h>

#include <vector>

#include "toolkit/application.h"
#include "toolkit/win32/win32windows.h"

namespace {

clMenuHandler menuHandler = nullptr;
void* menuContext = nullptr;
ITaskbarList3* taskbar = nullptr;
bool taskbarTried = false;

const wchar_t* Wide(const clString& text) { return reinterpret_cast<const wchar_t*>(text.text); }

HMENU MakeMenu(const clMenu& menu) {
    HMENU handle = CreatePopupMenu();
    for (int64_t i = 0; i < menu.Count(); ++i) {
        const clMenuItem& item = menu[i];
        UINT flags = item.enabled ? MF_ENABLED : MF_GRAYED;
        if (item.submenu != nullptr) {
            AppendMenuW(handle, flags | MF_POPUP, reinterpret_cast<UINT_PTR>(MakeMenu(*item.submenu)), Wide(item.text));
        } else if (item.text.IsEmpty()) {
            AppendMenuW(handle, MF_SEPARATOR, 0, nullptr);
        } else {
            AppendMenuW(handle, flags | MF_STRING | (item.checked ? MF_CHECKED : 0), item.id, Wide(item.text));
        }
    }
    return handle;
}

// The taskbar object, made once when first asked for; none where the
// shell offers none (older systems, Wine).
ITaskbarList3* Taskbar() {
    if (taskbarTried) return taskbar;
    taskbarTried = true;
    void* made = nullptr;
    if (SUCCEEDED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3, &made))) {
        taskbar = static_cast<ITaskbarList3*>(made);
        if (FAILED(taskbar->HrInit())) {
            taskbar->Release();
            taskbar = nullptr;
        }
    }
    return taskbar;
}

}  // namespace

clRect ToolkitWorkArea() {
    RECT area{0, 0, 1024, 768};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
    return clRect{area.left, area.top, area.right, area.bottom};
}

int32_t ToolkitScreenDpi() {
    HDC screen = GetDC(nullptr);
    int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : 96;
}

bool ToolkitForeignWindowRect(int64_t window, clRect& rect) {
    auto handle = reinterpret_cast<HWND>(static_cast<intptr_t>(window));
    RECT area{};
    if (!IsWindow(handle) || !GetWindowRect(handle, &area)) return false;
    rect = clRect{area.left, area.top, area.right, area.bottom};
    return true;
}

bool ToolkitMonitorAt(int32_t x, int32_t y) { return MonitorFromPoint(POINT{x, y}, MONITOR_DEFAULTTONULL) != nullptr; }

int32_t ToolkitMessageBox(clWindowHandle owner, const clString& text, const clString& caption, uint32_t type) {
    return MessageBoxW(HwndOf(owner), Wide(text), Wide(caption), type);
}

uint32_t clMenu::TrackPopup(clWindowHandle owner, int32_t x, int32_t y) const {
    if (menuHandler != nullptr) return menuHandler(*this, menuContext);
    HMENU handle = MakeMenu(*this);
    UINT chosen = static_cast<UINT>(
        TrackPopupMenu(handle, TPM_RETURNCMD | TPM_NONOTIFY | TPM_LEFTALIGN, x, y, 0, HwndOf(owner), nullptr));
    DestroyMenu(handle);
    return chosen;
}

void SetMenuHandler(clMenuHandler handler, void* context) {
    menuHandler = handler;
    menuContext = context;
}

bool KeyIsDown(uint32_t virtualKey) { return (GetKeyState(static_cast<int>(virtualKey)) & 0x8000) != 0; }

bool ClipboardSetText(const clString& text) {
    if (!OpenClipboard(nullptr)) return false;
    EmptyClipboard();
    size_t bytes = (static_cast<size_t>(text.Length()) + 1) * sizeof(wchar_t);
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes);
    bool done = false;
    if (memory != nullptr) {
        void* target = GlobalLock(memory);
        memcpy(target, text.text, bytes);
        GlobalUnlock(memory);
        done = SetClipboardData(CF_UNICODETEXT, memory) != nullptr;
        if (!done) GlobalFree(memory);
    }
    CloseClipboard();
    return done;
}

clString ClipboardGetText() {
    clString result;
    if (!OpenClipboard(nullptr)) return result;
    HANDLE data = GetClipboardData(CF_UNICODETEXT);
    if (data != nullptr) {
        auto* text = static_cast<const char16_t*>(GlobalLock(data));
        if (text != nullptr) result = text;
        GlobalUnlock(data);
    }
    CloseClipboard();
    return result;
}

void TaskbarSetProgress(clWindowHandle window, uint64_t done, uint64_t total) {
    if (ITaskbarList3* button = Taskbar()) button->SetProgressValue(HwndOf(window), done, total);
}

void TaskbarSetState(clWindowHandle window, int32_t state) {
    if (ITaskbarList3* button = Taskbar()) button->SetProgressState(HwndOf(window), static_cast<TBPFLAG>(state));
}
