// The Win32 back end's windows: the common window procedure of every
// XWindow, the subclass procedure of taken-over controls, message loops
// and the wake-up of the main-thread queue.
#include "toolkit/win32/win32windows.h"

#include <windows.h>
#include <shellapi.h>
#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <vector>

#include "toolkit/application.h"
#include "toolkit/backend.h"
#include "toolkit/subclassctrl.h"
#include "toolkit/win32/win32canvas.h"
#include "toolkit/xwindow.h"

namespace {

struct clLoop {
    bool ended = false;
    int32_t code = 0;
};
std::vector<clLoop*> loops;
HWND wakeWindow = nullptr;
XMainThreadSync* mainSync = nullptr;
const wchar_t kSubclassProperty[] = L"QvSubclassPrevious";

// Paints through a bitmap of the client's size, so a repaint never shows
// half a picture.
bool PaintBuffered(HWND window, HDC target, const RECT& area, bool (*paint)(HWND, HDC)) {
    int width = area.right - area.left, height = area.bottom - area.top;
    if (width <= 0 || height <= 0) return paint(window, target);
    HDC memory = CreateCompatibleDC(target);
    HBITMAP bitmap = CreateCompatibleBitmap(target, width, height);
    HGDIOBJ old = SelectObject(memory, bitmap);
    bool painted = paint(window, memory);
    if (painted) BitBlt(target, area.left, area.top, width, height, memory, 0, 0, SRCCOPY);
    SelectObject(memory, old);
    DeleteObject(bitmap);
    DeleteDC(memory);
    return painted;
}

bool PaintWindow(HWND window, HDC dc) {
    clGdiCanvas canvas(dc);
    bool useDefault = true;
    XWindow::Procedure(HandleOf(window), kWmEraseBackground, reinterpret_cast<uintptr_t>(&canvas), 0, nullptr,
                       &useDefault);
    if (useDefault) {
        RECT client;
        GetClientRect(window, &client);
        ::FillRect(dc, &client, GetSysColorBrush(COLOR_BTNFACE));
    }
    XWindow::Procedure(HandleOf(window), kWmPaint, reinterpret_cast<uintptr_t>(&canvas), 0, nullptr, &useDefault);
    return true;
}

XSubClassCtrl* SubclassOf(HWND window) {
    return reinterpret_cast<XSubClassCtrl*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

bool PaintSubclassed(HWND window, HDC dc) {
    XSubClassCtrl* object = SubclassOf(window);
    if (object == nullptr) return false;
    clGdiCanvas canvas(dc);
    uint32_t handled = 0;
    object->OnSubclassMessage(HandleOf(window), kWmPaint, reinterpret_cast<uintptr_t>(&canvas), 0, &handled);
    return handled != 0;
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    XWindow* creating = nullptr;
    switch (message) {
        case WM_CREATE:
            creating = static_cast<XWindow*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
            break;
        case WM_PAINT: {
            if (XWindow::FromHandle(HandleOf(window)) == nullptr) break;
            PAINTSTRUCT paint;
            HDC dc = BeginPaint(window, &paint);
            RECT client;
            GetClientRect(window, &client);
            PaintBuffered(window, dc, client, PaintWindow);
            EndPaint(window, &paint);
            return 0;
        }
        case WM_PRINTCLIENT:
            if (XWindow::FromHandle(HandleOf(window)) == nullptr) break;
            PaintWindow(window, reinterpret_cast<HDC>(wParam));
            return 0;
        case WM_ERASEBKGND:
            if (XWindow::FromHandle(HandleOf(window)) != nullptr) return 1;  // done inside the paint
            break;
        case WM_MEASUREITEM: {
            auto* measure = reinterpret_cast<MEASUREITEMSTRUCT*>(lParam);
            measure->itemHeight = 20;  // the list sets each row's height afterwards
            return TRUE;
        }
        case WM_DRAWITEM: {
            auto* draw = reinterpret_cast<DRAWITEMSTRUCT*>(lParam);
            if (draw->itemID == static_cast<UINT>(-1)) return TRUE;
            clGdiCanvas canvas(draw->hDC);
            clDrawItem item;
            item.controlId = draw->CtlID;
            item.itemId = static_cast<int32_t>(draw->itemID);
            item.itemState = draw->itemState;
            item.item = HandleOf(draw->hwndItem);
            item.canvas = &canvas;
            item.rect = clRect{draw->rcItem.left, draw->rcItem.top, draw->rcItem.right, draw->rcItem.bottom};
            item.itemData = draw->itemData;
            // A combo box's rows go to the combo's own subclass first.
            if (draw->CtlType == ODT_COMBOBOX) {
                if (XSubClassCtrl* object = SubclassOf(draw->hwndItem)) {
                    clDrawItem& row = item;
                    uint32_t handled = 0;
                    object->OnSubclassMessage(row.item, kWmDrawItem, wParam, reinterpret_cast<intptr_t>(&row),
                                              &handled);
                    if (handled != 0) return TRUE;
                }
                // Nobody paints it: the row's text, as the combo would.
                bool selected = (draw->itemState & ODS_SELECTED) != 0;
                canvas.FillRect(item.rect, GetSysColor(selected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
                wchar_t text[512] = {};
                SendMessageW(draw->hwndItem, CB_GETLBTEXT, draw->itemID, reinterpret_cast<LPARAM>(text));
                SetBkMode(draw->hDC, TRANSPARENT);
                SetTextColor(draw->hDC, GetSysColor(selected ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
                TextOutW(draw->hDC, draw->rcItem.left + 2, draw->rcItem.top + 1, text, lstrlenW(text));
                return TRUE;
            }
            SaveDC(draw->hDC);
            IntersectClipRect(draw->hDC, draw->rcItem.left, draw->rcItem.top, draw->rcItem.right,
                              draw->rcItem.bottom);
            bool useDefault = true;
            XWindow::Procedure(HandleOf(window), kWmDrawItem, wParam, reinterpret_cast<intptr_t>(&item), nullptr,
                               &useDefault);
            RestoreDC(draw->hDC, -1);
            return TRUE;
        }
        case WM_NOTIFY: {
            // A tab row's change reaches forms as the toolkit's kCbnSelChange,
            // as on every back end.
            auto* header = reinterpret_cast<NMHDR*>(lParam);
            if (header->code == static_cast<UINT>(TCN_SELCHANGE)) {
                bool useDefault = true;
                XWindow::Procedure(HandleOf(window), kWmCommand, clMakeWParam(header->idFrom, kCbnSelChange),
                                   reinterpret_cast<intptr_t>(header->hwndFrom), nullptr, &useDefault);
                return 0;
            }
            // Views speak the toolkit's record; no other control's
            // notification reaches the forms.
            LRESULT answer = 0;
            if (XWindow::FromHandle(HandleOf(window)) != nullptr && ViewNotify(window, header, &answer)) return answer;
            return DefWindowProcW(window, message, wParam, lParam);
        }
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLORDLG: {
            clGdiCanvas canvas(reinterpret_cast<HDC>(wParam));
            bool useDefault = true;
            LRESULT result = XWindow::Procedure(HandleOf(window), message, reinterpret_cast<uintptr_t>(&canvas),
                                                lParam, nullptr, &useDefault);
            if (!useDefault) return result;
            return DefWindowProcW(window, message, wParam, lParam);
        }
        case WM_DROPFILES: {
            // The form reads the paths while it handles the message; the
            // block is released here, whatever it did.
            bool useDefault = true;
            XWindow::Procedure(HandleOf(window), kWmDropFiles, wParam, lParam, nullptr, &useDefault);
            DragFinish(reinterpret_cast<HDROP>(wParam));
            return 0;
        }
        default:
            break;
    }
    bool useDefault = true;
    LRESULT result = XWindow::Procedure(HandleOf(window), message, wParam, lParam, creating, &useDefault);
    if (!useDefault) return result;
    return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK SubclassProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    XSubClassCtrl* object = SubclassOf(window);
    auto previous = reinterpret_cast<WNDPROC>(GetPropW(window, kSubclassProperty));
    if (object == nullptr || previous == nullptr) return DefWindowProcW(window, message, wParam, lParam);
    if (message == WM_PAINT) {
        RECT client;
        GetClientRect(window, &client);
        HDC screen = GetDC(window);
        // Painted off screen first: only what the object paints replaces
        // the control's own painting.
        HDC memory = CreateCompatibleDC(screen);
        HBITMAP bitmap = CreateCompatibleBitmap(screen, std::max<LONG>(1, client.right), std::max<LONG>(1, client.bottom));
        HGDIOBJ old = SelectObject(memory, bitmap);
        bool painted = PaintSubclassed(window, memory);
        if (painted) {
            PAINTSTRUCT paint;
            HDC dc = BeginPaint(window, &paint);
            BitBlt(dc, 0, 0, client.right, client.bottom, memory, 0, 0, SRCCOPY);
            EndPaint(window, &paint);
        }
        SelectObject(memory, old);
        DeleteObject(bitmap);
        DeleteDC(memory);
        ReleaseDC(window, screen);
        if (painted) return 0;
        return CallWindowProcW(previous, window, message, wParam, lParam);
    }
    if (message == WM_PRINTCLIENT) {
        if (PaintSubclassed(window, reinterpret_cast<HDC>(wParam))) return 0;
        return CallWindowProcW(previous, window, message, wParam, lParam);
    }
    if (message == WM_MOUSEMOVE) {
        TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, window, 0};
        TrackMouseEvent(&track);
    }
    uintptr_t w = wParam;
    clGdiCanvas* canvas = nullptr;
    if (message == WM_ERASEBKGND) {
        canvas = new clGdiCanvas(reinterpret_cast<HDC>(wParam));
        w = reinterpret_cast<uintptr_t>(canvas);
    }
    uint32_t handled = 0;
    LRESULT result = object->OnSubclassMessage(HandleOf(window), message, w, lParam, &handled);
    delete canvas;
    if (handled != 0) return result;
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous));
        RemovePropW(window, kSubclassProperty);
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        object->controlHandle = nullptr;
    }
    return CallWindowProcW(previous, window, message, wParam, lParam);
}

LRESULT CALLBACK WakeProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kWmToolkitWake) {
        if (mainSync != nullptr) mainSync->RunPending();
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

HINSTANCE ToolkitInstance() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&ToolkitInstance), &module);
    return module;
}

bool PrintClient(HWND window, HDC dc) {
    if (XWindow::FromHandle(HandleOf(window)) != nullptr) return PaintWindow(window, dc);
    SendMessageW(window, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc), PRF_CLIENT | PRF_ERASEBKGND);
    return true;
}

bool ToolkitHasDisplay() { return true; }

bool ToolkitStartWith(XMainThreadSync* sync) {
    static bool started = false;
    if (!started) {
        INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_STANDARD_CLASSES | ICC_TAB_CLASSES | ICC_BAR_CLASSES |
                                                                 ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES};
        InitCommonControlsEx(&controls);
        WNDCLASSEXW wake{};
        wake.cbSize = sizeof(wake);
        wake.lpfnWndProc = WakeProcedure;
        wake.hInstance = ToolkitInstance();
        wake.lpszClassName = L"QvToolkitWake";
        RegisterClassExW(&wake);
        wakeWindow = CreateWindowExW(0, L"QvToolkitWake", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                     ToolkitInstance(), nullptr);
        if (wakeWindow == nullptr) return false;
        started = true;
    }
    if (sync != nullptr) {
        mainSync = sync;
        sync->SetWake([] { return PostMessageW(wakeWindow, kWmToolkitWake, 0, 0) != FALSE; });
    }
    return true;
}

// Escape in an edit field belongs to the field's window, as in the Qt back
// end, where the field passes the key on: a window that closes on Escape
// closes from its fields too. An edit the toolkit subclasses (the list
// view's value editor) keeps the key for itself.
static bool EscapeForTheWindow(const MSG& message) {
    if (message.message != WM_KEYDOWN || message.wParam != VK_ESCAPE) return false;
    wchar_t className[16] = {};
    GetClassNameW(message.hwnd, className, 16);
    if (lstrcmpiW(className, L"Edit") != 0 || GetPropW(message.hwnd, kSubclassProperty) != nullptr) return false;
    HWND root = GetAncestor(message.hwnd, GA_ROOT);
    if (root == nullptr || root == message.hwnd || XWindow::FromHandle(HandleOf(root)) == nullptr) return false;
    SendMessageW(root, WM_KEYDOWN, message.wParam, message.lParam);
    return true;
}

static void Handle(MSG& message) {
    if (EscapeForTheWindow(message)) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

// ToolkitWatch's handles and where their message goes.
struct clWatch {
    HWND window = nullptr;
    UINT message = 0;
    HANDLE handles[MAXIMUM_WAIT_OBJECTS - 1] = {};
    DWORD count = 0;
};
static clWatch watch;

void ToolkitWatch(clWindowHandle window, const intptr_t* waitables, int32_t count, uint32_t message) {
    watch.count = 0;
    watch.window = HwndOf(window);
    watch.message = message;
    for (int32_t i = 0; i < count && watch.count < MAXIMUM_WAIT_OBJECTS - 1; ++i) {
        if (waitables[i] != -1 && waitables[i] != 0) watch.handles[watch.count++] = reinterpret_cast<HANDLE>(waitables[i]);
    }
}

// Sleeps until a message comes, a watched handle is signalled or the
// time runs out; a signalled handle ends the watch and posts its message.
static void WaitForInput(DWORD milliseconds) {
    DWORD result = MsgWaitForMultipleObjectsEx(watch.count, watch.handles, milliseconds, QS_ALLINPUT,
                                               MWMO_INPUTAVAILABLE);
    if (result < WAIT_OBJECT_0 + watch.count) {
        watch.count = 0;
        PostMessageW(watch.window, watch.message, 0, 0);
    }
}

int32_t ToolkitRunLoop() {
    clLoop loop;
    loops.push_back(&loop);
    MSG message;
    while (!loop.ended) {
        if (!PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            WaitForInput(INFINITE);
            continue;
        }
        if (message.message == WM_QUIT) break;
        Handle(message);
    }
    loops.erase(std::find(loops.begin(), loops.end(), &loop));
    return loop.code;
}

void ToolkitEndLoop(int32_t code) {
    if (loops.empty()) return;
    loops.back()->ended = true;
    loops.back()->code = code;
    PostMessageW(wakeWindow, WM_NULL, 0, 0);
}

void ToolkitProcessPending() {
    if (watch.count > 0) WaitForInput(0);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) Handle(message);
}

void ToolkitProcessFor(uint32_t milliseconds) {
    DWORD start = GetTickCount();
    for (;;) {
        ToolkitProcessPending();
        DWORD spent = GetTickCount() - start;
        if (spent >= milliseconds) break;
        WaitForInput(milliseconds - spent);
    }
}

bool BackendRegisterClass(const clString& className) {
    WNDCLASSEXW record{};
    record.cbSize = sizeof(record);  // 80
    record.style = CS_OWNDC | CS_DBLCLKS;  // 40
    record.lpfnWndProc = WindowProcedure;
    record.hInstance = ToolkitInstance();
    record.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
    record.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    record.lpszClassName = reinterpret_cast<const wchar_t*>(className.text);
    return RegisterClassExW(&record) != 0;
}

void BackendUnregisterClass(const clString& className) {
    UnregisterClassW(reinterpret_cast<const wchar_t*>(className.text), ToolkitInstance());
}

clWindowHandle BackendCreateWindow(XWindow* owner, const clString& className, const clString& title,
                                   const clRect& rect, uint32_t style, uint32_t exStyle, clWindowHandle parent) {
    HWND window = CreateWindowExW(exStyle, reinterpret_cast<const wchar_t*>(className.text),
                                  reinterpret_cast<const wchar_t*>(title.text), style, rect.left, rect.top,
                                  rect.Width(), rect.Height(), HwndOf(parent), nullptr, ToolkitInstance(), owner);
    return HandleOf(window);
}

void BackendDestroyWindow(clWindowHandle window) {
    if (IsWindow(HwndOf(window))) DestroyWindow(HwndOf(window));
}

bool BackendSetTimer(clWindowHandle window, uint64_t id, uint32_t milliseconds) {
    return SetTimer(HwndOf(window), static_cast<UINT_PTR>(id), milliseconds, nullptr) != 0;
}

void BackendKillTimer(clWindowHandle window, uint64_t id) { KillTimer(HwndOf(window), static_cast<UINT_PTR>(id)); }

void BackendSetPosition(clWindowHandle window, int32_t x, int32_t y, int32_t width, int32_t height, bool move,
                        bool resize) {
    UINT flags = SWP_NOZORDER | SWP_NOACTIVATE | (move ? 0 : SWP_NOMOVE) | (resize ? 0 : SWP_NOSIZE);
    SetWindowPos(HwndOf(window), nullptr, x, y, width, height, flags);
}

intptr_t BackendDefaultHandling(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
    return DefWindowProcW(HwndOf(window), message, wParam, lParam);
}

bool BackendAttachSubclass(clWindowHandle control, XSubClassCtrl* object) {
    HWND window = HwndOf(control);
    if (!IsWindow(window)) return false;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(object));
    auto previous = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(SubclassProcedure)));
    SetPropW(window, kSubclassProperty, reinterpret_cast<HANDLE>(previous));
    object->previousProcedure = reinterpret_cast<void*>(previous);
    return true;
}

void BackendDetachSubclass(clWindowHandle control, XSubClassCtrl*) {
    HWND window = HwndOf(control);
    if (!IsWindow(window)) return;
    auto previous = reinterpret_cast<WNDPROC>(GetPropW(window, kSubclassProperty));
    if (previous != nullptr) SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous));
    RemovePropW(window, kSubclassProperty);
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
}

intptr_t BackendCallPrevious(XSubClassCtrl* object, clWindowHandle control, uint32_t message, uintptr_t wParam,
                             intptr_t lParam) {
    auto previous = reinterpret_cast<WNDPROC>(object->previousProcedure);
    if (previous == nullptr) return 0;
    return CallWindowProcW(previous, HwndOf(control), message, wParam, lParam);
}
