// The Win32 back end's controls and the operations on any window.
#include <windows.h>
#include <commctrl.h>
#include <windowsx.h>

#include <vector>

#include "toolkit/controls.h"
#include "toolkit/win32/win32canvas.h"
#include "toolkit/win32/win32windows.h"
#include "toolkit/xwindow.h"

namespace {

const wchar_t* Wide(const clString& text) { return reinterpret_cast<const wchar_t*>(text.text); }

clString FromWide(const wchar_t* text, int length) {
    clString result;
    result.Assign(reinterpret_cast<const char16_t*>(text), length + 1);
    return result;
}

}  // namespace

bool IsWindowClass(HWND window, const wchar_t* name) {
    wchar_t found[64] = {};
    GetClassNameW(window, found, 63);
    return lstrcmpiW(found, name) == 0;
}

clWindowHandle CreateControl(clControlKind kind, clWindowHandle parent, uint32_t id, const clString& text,
                             const clRect& rect) {
    HWND owner = HwndOf(parent);
    if (!IsWindow(owner)) return nullptr;
    const wchar_t* className = L"STATIC";
    DWORD style = WS_CHILD | WS_VISIBLE;
    DWORD exStyle = 0;
    int height = rect.Height();
    switch (kind) {
        case kControlStatic: break;
        case kControlButton:
            className = L"BUTTON";
            style |= WS_TABSTOP | BS_PUSHBUTTON;
            break;
        case kControlCheckBox:
            className = L"BUTTON";
            style |= WS_TABSTOP | BS_AUTOCHECKBOX;
            break;
        case kControlEdit:
            className = L"EDIT";
            style = 0x50010080;
            exStyle = WS_EX_CLIENTEDGE;
            break;
        case kControlMultiLineEdit:
            className = L"EDIT";
            style = 0x50010080 | 2101316;
            exStyle = WS_EX_CLIENTEDGE;
            break;
        case kControlComboBox:
        case kControlPaintedComboBox:
        case kControlDropList:
            // The height is the open list's.
            className = L"COMBOBOX";
            style = kind == kControlDropList ? 0x50210003 : 0x50210042;
            if (kind == kControlPaintedComboBox) style |= CBS_OWNERDRAWFIXED | CBS_HASSTRINGS;
            height = XWindow::ScaleUnits(200);
            break;
        case kControlListBox:
            className = L"LISTBOX";
            style |= WS_TABSTOP | WS_VSCROLL | LBS_OWNERDRAWVARIABLE | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT;
            exStyle = WS_EX_CLIENTEDGE;
            break;
        case kControlPaintedButton:
            // Owner-drawn: the native button paints nothing of its own, not
            // even the focus rectangle it draws outside WM_PAINT.
            className = L"BUTTON";
            style |= WS_TABSTOP | BS_OWNERDRAW;
            break;
        case kControlTabs:
            className = WC_TABCONTROLW;
            style |= WS_TABSTOP | WS_CLIPSIBLINGS;
            break;
        case kControlListView:
        case kControlTreeView: {
            HWND view = CreateViewControl(kind == kControlTreeView, owner, id, rect);
            if (view == nullptr) return nullptr;
            SendMessageW(view, WM_SETFONT, reinterpret_cast<WPARAM>(FontFor(clFontSpec{})), FALSE);
            return HandleOf(view);
        }
    }
    HWND control = CreateWindowExW(exStyle, className, Wide(text), style, rect.left, rect.top, rect.Width(), height,
                                   owner, reinterpret_cast<HMENU>(static_cast<uintptr_t>(id)), ToolkitInstance(),
                                   nullptr);
    if (control == nullptr) return nullptr;
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(FontFor(clFontSpec{})), FALSE);
    return HandleOf(control);
}

void DestroyControl(clWindowHandle control) {
    if (!IsWindow(HwndOf(control))) return;
    DestroyViewImages(HwndOf(control));
    DestroyWindow(HwndOf(control));
}

void WindowSetText(clWindowHandle window, const clString& text) { SetWindowTextW(HwndOf(window), Wide(text)); }

clString WindowGetText(clWindowHandle window) {
    int length = GetWindowTextLengthW(HwndOf(window));
    std::vector<wchar_t> buffer(static_cast<size_t>(length) + 1);
    int got = GetWindowTextW(HwndOf(window), buffer.data(), length + 1);
    return FromWide(buffer.data(), got);
}

void WindowSetFont(clWindowHandle window, const clFontSpec& font) {
    SendMessageW(HwndOf(window), WM_SETFONT, reinterpret_cast<WPARAM>(FontFor(font)), TRUE);
}

void WindowEnable(clWindowHandle window, bool enable) { EnableWindow(HwndOf(window), enable ? TRUE : FALSE); }
bool WindowIsEnabled(clWindowHandle window) { return IsWindowEnabled(HwndOf(window)) != FALSE; }
void WindowShow(clWindowHandle window, bool show) { ShowWindow(HwndOf(window), show ? SW_SHOWNA : SW_HIDE); }
bool WindowIsVisible(clWindowHandle window) { return IsWindowVisible(HwndOf(window)) != FALSE; }
bool WindowIsMinimized(clWindowHandle window) {
    return IsIconic(HwndOf(window)) != FALSE || IsZoomed(HwndOf(window)) != FALSE;
}

void WindowMove(clWindowHandle window, const clRect& rect) {
    MoveWindow(HwndOf(window), rect.left, rect.top, rect.Width(), rect.Height(), TRUE);
}

clRect WindowScreenRect(clWindowHandle window) {
    RECT area{};
    GetWindowRect(HwndOf(window), &area);
    return clRect{area.left, area.top, area.right, area.bottom};
}

clRect WindowClientRect(clWindowHandle window) {
    RECT area{};
    GetClientRect(HwndOf(window), &area);
    return clRect{0, 0, area.right, area.bottom};
}

clPoint WindowFromScreen(clWindowHandle window, clPoint point) {
    POINT at{point.x, point.y};
    ScreenToClient(HwndOf(window), &at);
    return clPoint{at.x, at.y};
}

clPoint WindowToScreen(clWindowHandle window, clPoint point) {
    POINT at{point.x, point.y};
    ClientToScreen(HwndOf(window), &at);
    return clPoint{at.x, at.y};
}

clWindowHandle WindowParent(clWindowHandle window) {
    HWND handle = HwndOf(window);
    if ((GetWindowLongW(handle, GWL_STYLE) & WS_CHILD) == 0) return nullptr;
    return HandleOf(GetParent(handle));
}

uint32_t WindowId(clWindowHandle window) { return static_cast<uint32_t>(GetDlgCtrlID(HwndOf(window))); }
clWindowHandle WindowChild(clWindowHandle parent, uint32_t id) {
    return HandleOf(GetDlgItem(HwndOf(parent), static_cast<int>(id)));
}

void WindowInvalidate(clWindowHandle window, const clRect* rect) {
    if (rect == nullptr) {
        InvalidateRect(HwndOf(window), nullptr, TRUE);
        return;
    }
    RECT area{rect->left, rect->top, rect->right, rect->bottom};
    InvalidateRect(HwndOf(window), &area, TRUE);
}

void WindowUpdate(clWindowHandle window) { UpdateWindow(HwndOf(window)); }
void WindowBringToTop(clWindowHandle window) {
    SetWindowPos(HwndOf(window), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void WindowSetFocus(clWindowHandle window) { SetFocus(HwndOf(window)); }

void WindowPlaceAfter(clWindowHandle window, clWindowHandle previous) {
    // The tab order of child windows is their z-order.
    SetWindowPos(HwndOf(window), HwndOf(previous), 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

clWindowHandle WindowNextInTabOrder(clWindowHandle window) {
    HWND handle = HwndOf(window);
    return HandleOf(GetNextDlgTabItem(GetAncestor(handle, GA_ROOT), handle, FALSE));
}

void WindowFocusNext(clWindowHandle window) {
    HWND next = HwndOf(WindowNextInTabOrder(window));
    if (next != nullptr) SetFocus(next);
}

clWindowHandle WindowAtPoint(clPoint point) { return HandleOf(WindowFromPoint(POINT{point.x, point.y})); }

void WindowSetOpacity(clWindowHandle window, int32_t alpha) {
    HWND handle = HwndOf(window);
    SetWindowLongW(handle, GWL_EXSTYLE, GetWindowLongW(handle, GWL_EXSTYLE) | WS_EX_LAYERED);
    SetLayeredWindowAttributes(handle, 0, static_cast<BYTE>(alpha < 0 ? 0 : alpha > 255 ? 255 : alpha), LWA_ALPHA);
}

clRect TabDisplayArea(clWindowHandle tabs) {
    HWND handle = HwndOf(tabs);
    RECT area{};
    GetWindowRect(handle, &area);
    MapWindowPoints(nullptr, GetParent(handle), reinterpret_cast<POINT*>(&area), 2);
    SendMessageW(handle, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&area));
    return clRect{area.left, area.top, area.right, area.bottom};
}
clWindowHandle WindowWithFocus() { return HandleOf(GetFocus()); }
void WindowCaptureMouse(clWindowHandle window) { SetCapture(HwndOf(window)); }
void WindowReleaseMouse() { ReleaseCapture(); }

clPoint CursorPosition() {
    POINT at{};
    GetCursorPos(&at);
    return clPoint{at.x, at.y};
}

intptr_t WindowSend(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
    return SendMessageW(HwndOf(window), message, wParam, lParam);
}

void WindowPost(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
    PostMessageW(HwndOf(window), message, wParam, lParam);
}

namespace {

// Draws a window and, behind it, each visible child, at their places
// relative to `root`: PrintWindow would leave the children out.
void PrintTree(HWND window, HWND root, HDC dc) {
    // The window grabbed draws as it would show; of its children, those
    // that are shown.
    if (window != root && (GetWindowLongW(window, GWL_STYLE) & WS_VISIBLE) == 0) return;
    // Places are taken from the root's client corner: a frame isn't drawn.
    POINT corner{0, 0};
    ClientToScreen(root, &corner);
    RECT rootRect{corner.x, corner.y, corner.x, corner.y};
    RECT windowRect;
    GetWindowRect(window, &windowRect);
    POINT client{0, 0};
    ClientToScreen(window, &client);
    RECT clientRect;
    GetClientRect(window, &clientRect);
    int saved = SaveDC(dc);
    if ((GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_CLIENTEDGE) != 0) {
        RECT edge{windowRect.left - rootRect.left, windowRect.top - rootRect.top, windowRect.right - rootRect.left,
                  windowRect.bottom - rootRect.top};
        DrawEdge(dc, &edge, EDGE_SUNKEN, BF_RECT);
    }
    RestoreDC(dc, saved);
    // Each window prints on a bitmap of its own with the origin at its
    // corner: controls take the rectangles they are given as device
    // coordinates, so a moved origin would clip their painting away.
    int x = client.x - rootRect.left, y = client.y - rootRect.top;
    if (clientRect.right > 0 && clientRect.bottom > 0) {
        HDC own = CreateCompatibleDC(dc);
        HBITMAP bitmap = CreateCompatibleBitmap(dc, clientRect.right, clientRect.bottom);
        HGDIOBJ old = SelectObject(own, bitmap);
        // What a control leaves unpainted shows its parent, as on screen.
        BitBlt(own, 0, 0, clientRect.right, clientRect.bottom, dc, x, y, SRCCOPY);
        PrintClient(window, own);
        BitBlt(dc, x, y, clientRect.right, clientRect.bottom, own, 0, 0, SRCCOPY);
        SelectObject(own, old);
        DeleteObject(bitmap);
        DeleteDC(own);
    }
    // Children in their painting order: the bottom of the z-order first.
    std::vector<HWND> children;
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        children.push_back(child);
    }
    for (auto child = children.rbegin(); child != children.rend(); ++child) PrintTree(*child, root, dc);
}

}  // namespace

clImageHandle WindowGrab(clWindowHandle window) {
    // The client area, as Qt grabs it: a frame is the window manager's.
    HWND handle = HwndOf(window);
    RECT area;
    if (!GetClientRect(handle, &area) || area.right <= area.left || area.bottom <= area.top) return nullptr;
    clImageHandle image = CreateImage(area.right - area.left, area.bottom - area.top);
    clWinImage* picture = WinImageOf(image);
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, picture->bitmap);
    PrintTree(handle, handle, dc);
    GdiFlush();
    SelectObject(dc, old);
    DeleteDC(dc);
    return image;
}

void WindowSetIcon(clWindowHandle window, clImageHandle icon) {
    clWinImage* picture = WinImageOf(icon);
    if (picture == nullptr) return;
    ICONINFO info{};
    info.fIcon = TRUE;
    info.hbmColor = picture->bitmap;
    info.hbmMask = CreateBitmap(picture->width, picture->height, 1, 1, nullptr);
    HICON made = CreateIconIndirect(&info);
    DeleteObject(info.hbmMask);
    if (made == nullptr) return;
    SendMessageW(HwndOf(window), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(made));
    SendMessageW(HwndOf(window), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(made));
}

void EditSetSelection(clWindowHandle edit, int32_t start, int32_t end) {
    HWND handle = HwndOf(edit);
    if (IsWindowClass(handle, L"COMBOBOX")) {
        SendMessageW(handle, CB_SETEDITSEL, 0, MAKELPARAM(start, end));
        return;
    }
    SendMessageW(handle, EM_SETSEL, static_cast<WPARAM>(start), end);
}

void EditGetSelection(clWindowHandle edit, int32_t& start, int32_t& end) {
    DWORD from = 0, to = 0;
    HWND handle = HwndOf(edit);
    if (IsWindowClass(handle, L"COMBOBOX")) {
        SendMessageW(handle, CB_GETEDITSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
    } else {
        SendMessageW(handle, EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
    }
    start = static_cast<int32_t>(from);
    end = static_cast<int32_t>(to);
}

void EditReplaceSelection(clWindowHandle edit, const clString& text) {
    SendMessageW(HwndOf(edit), EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(Wide(text)));
}

int32_t ComboAddItem(clWindowHandle combo, const clString& text) {
    HWND handle = HwndOf(combo);
    if (IsWindowClass(handle, WC_TABCONTROLW)) {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<wchar_t*>(Wide(text));
        int count = static_cast<int>(SendMessageW(handle, TCM_GETITEMCOUNT, 0, 0));
        return static_cast<int32_t>(SendMessageW(handle, TCM_INSERTITEMW, count, reinterpret_cast<LPARAM>(&item)));
    }
    return static_cast<int32_t>(SendMessageW(handle, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(text))));
}

void TabsSetItemImage(clWindowHandle tabs, int32_t index, clImageHandle image, int32_t size) {
    HWND handle = HwndOf(tabs);
    if (image == nullptr) return;
    // One image list per tab row, grown a picture at a time; it goes with
    // the window.
    auto list = reinterpret_cast<HIMAGELIST>(SendMessageW(handle, TCM_GETIMAGELIST, 0, 0));
    if (list == nullptr) {
        list = ImageList_Create(size, size, ILC_COLOR32, 4, 4);
        SendMessageW(handle, TCM_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(list));
    }
    clImageHandle scaled = CreateImage(size, size);
    if (clCanvas* canvas = CanvasOnImage(scaled)) {
        canvas->Image(image, clRect{0, 0, size, size});
        delete canvas;
    }
    int picture = ImageList_Add(list, WinImageOf(scaled)->bitmap, nullptr);
    DestroyImage(scaled);
    TCITEMW item{};
    item.mask = TCIF_IMAGE;
    item.iImage = picture;
    SendMessageW(handle, TCM_SETITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
}

void CheckBoxSet(clWindowHandle box, bool checked) {
    SendMessageW(HwndOf(box), BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

bool CheckBoxIsChecked(clWindowHandle box) { return SendMessageW(HwndOf(box), BM_GETCHECK, 0, 0) == BST_CHECKED; }

int32_t ComboInsertItem(clWindowHandle combo, int32_t index, const clString& text) {
    return static_cast<int32_t>(
        SendMessageW(HwndOf(combo), CB_INSERTSTRING, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(Wide(text))));
}

void ComboDeleteItem(clWindowHandle combo, int32_t index) {
    SendMessageW(HwndOf(combo), CB_DELETESTRING, static_cast<WPARAM>(index), 0);
}

void ComboClear(clWindowHandle combo) { SendMessageW(HwndOf(combo), CB_RESETCONTENT, 0, 0); }

int32_t ComboCount(clWindowHandle combo) {
    HWND handle = HwndOf(combo);
    if (IsWindowClass(handle, WC_TABCONTROLW)) return static_cast<int32_t>(SendMessageW(handle, TCM_GETITEMCOUNT, 0, 0));
    return static_cast<int32_t>(SendMessageW(handle, CB_GETCOUNT, 0, 0));
}

clString ComboItemText(clWindowHandle combo, int32_t index) {
    HWND handle = HwndOf(combo);
    wchar_t buffer[512] = {};
    if (IsWindowClass(handle, WC_TABCONTROLW)) {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = buffer;
        item.cchTextMax = 511;
        SendMessageW(handle, TCM_GETITEMW, index, reinterpret_cast<LPARAM>(&item));
        return FromWide(buffer, lstrlenW(buffer));
    }
    LRESULT length = SendMessageW(handle, CB_GETLBTEXTLEN, index, 0);
    if (length == CB_ERR) return clString();
    std::vector<wchar_t> text(static_cast<size_t>(length) + 1);
    SendMessageW(handle, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(text.data()));
    return FromWide(text.data(), static_cast<int>(length));
}

int32_t ComboGetSelection(clWindowHandle combo) {
    HWND handle = HwndOf(combo);
    if (IsWindowClass(handle, WC_TABCONTROLW)) return static_cast<int32_t>(SendMessageW(handle, TCM_GETCURSEL, 0, 0));
    return static_cast<int32_t>(SendMessageW(handle, CB_GETCURSEL, 0, 0));
}

void ComboSetSelection(clWindowHandle combo, int32_t index) {
    HWND handle = HwndOf(combo);
    SendMessageW(handle, IsWindowClass(handle, WC_TABCONTROLW) ? TCM_SETCURSEL : CB_SETCURSEL, index, 0);
}

clWindowHandle ComboEdit(clWindowHandle combo) {
    COMBOBOXINFO info{};
    info.cbSize = sizeof(info);
    if (!GetComboBoxInfo(HwndOf(combo), &info)) return nullptr;
    return HandleOf(info.hwndItem);
}

int32_t ListInsertRow(clWindowHandle list, int32_t index, uint64_t itemData) {
    return static_cast<int32_t>(
        SendMessageW(HwndOf(list), LB_INSERTSTRING, static_cast<WPARAM>(index), static_cast<LPARAM>(itemData)));
}

void ListDeleteRow(clWindowHandle list, int32_t index) { SendMessageW(HwndOf(list), LB_DELETESTRING, index, 0); }
void ListClear(clWindowHandle list) { SendMessageW(HwndOf(list), LB_RESETCONTENT, 0, 0); }
int32_t ListCount(clWindowHandle list) {
    return static_cast<int32_t>(SendMessageW(HwndOf(list), LB_GETCOUNT, 0, 0));
}
void ListSetRowHeight(clWindowHandle list, int32_t index, int32_t height) {
    SendMessageW(HwndOf(list), LB_SETITEMHEIGHT, index, height);
    InvalidateRect(HwndOf(list), nullptr, TRUE);
}
int32_t ListRowHeight(clWindowHandle list, int32_t index) {
    return static_cast<int32_t>(SendMessageW(HwndOf(list), LB_GETITEMHEIGHT, index, 0));
}
int32_t ListGetSelection(clWindowHandle list) {
    return static_cast<int32_t>(SendMessageW(HwndOf(list), LB_GETCURSEL, 0, 0));
}
void ListSetSelection(clWindowHandle list, int32_t index) { SendMessageW(HwndOf(list), LB_SETCURSEL, index, 0); }
int32_t ListTopIndex(clWindowHandle list) {
    return static_cast<int32_t>(SendMessageW(HwndOf(list), LB_GETTOPINDEX, 0, 0));
}
void ListSetTopIndex(clWindowHandle list, int32_t index) { SendMessageW(HwndOf(list), LB_SETTOPINDEX, index, 0); }

clRect ListRowRect(clWindowHandle list, int32_t index) {
    RECT area{};
    if (SendMessageW(HwndOf(list), LB_GETITEMRECT, index, reinterpret_cast<LPARAM>(&area)) == LB_ERR) return clRect{};
    return clRect{area.left, area.top, area.right, area.bottom};
}

int32_t ListRowAt(clWindowHandle list, int32_t x, int32_t y) {
    // Not LB_ITEMFROMPOINT: it answers the nearest row for a point below
    // the last; the row rectangles tell exactly.
    int32_t count = ListCount(list);
    for (int32_t i = ListTopIndex(list); i < count; ++i) {
        clRect row = ListRowRect(list, i);
        if (y < row.top) break;
        if (row.Contains(x < row.left ? row.left : x, y)) return i;
    }
    return -1;
}

uint64_t ListRowData(clWindowHandle list, int32_t index) {
    return static_cast<uint64_t>(SendMessageW(HwndOf(list), LB_GETITEMDATA, index, 0));
}
void ListSetRowData(clWindowHandle list, int32_t index, uint64_t itemData) {
    SendMessageW(HwndOf(list), LB_SETITEMDATA, index, static_cast<LPARAM>(itemData));
}
void InvalidateListRow(clWindowHandle list, int32_t index) {
    RECT area{};
    if (SendMessageW(HwndOf(list), LB_GETITEMRECT, index, reinterpret_cast<LPARAM>(&area)) != LB_ERR) {
        InvalidateRect(HwndOf(list), &area, TRUE);
    }
}
