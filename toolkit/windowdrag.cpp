#include "toolkit/windowdrag.h"

#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

bool clWindowDrag::Down(XWindow& window, int32_t x, int32_t y, int32_t button, const clRect& area) {
    if (button != 0 || !area.Contains(x, y)) return false;
    clRect now = WindowScreenRect(window.windowHandle);
    clPoint pointer = WindowToScreen(window.windowHandle, clPoint{x, y});
    offset = clPoint{pointer.x - now.left, pointer.y - now.top};
    dragging = true;
    WindowCaptureMouse(window.windowHandle);
    return true;
}

bool clWindowDrag::Move(XWindow& window, int32_t x, int32_t y) {
    if (!dragging) return false;
    clPoint pointer = WindowToScreen(window.windowHandle, clPoint{x, y});
    window.SetPlacement(pointer.x - offset.x, pointer.y - offset.y, kKeepPlacement, kKeepPlacement);
    return true;
}

bool clWindowDrag::Up() {
    if (!dragging) return false;
    dragging = false;
    WindowReleaseMouse();
    return true;
}
