#include "toolkit/button.h"

#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

XButton::~XButton() { Destroy(); }

bool XButton::Create(clWindowHandle parent, const clButtonOptions& options, const clRect& rect) {
    Destroy();
    style = options.style;
    text = options.text;
    id = options.id;
    face = options.face.IsEmpty() ? clString(u"Tahoma") : options.face;
    fontSize = options.fontSize != 0 ? options.fontSize : XWindow::ScaleUnits(12);
    background = options.background;
    clWindowHandle control = CreateControl(kControlPaintedButton, parent, id, text, rect);
    if (control == nullptr) return false;
    BuildLook();
    return Attach(control);
}

void XButton::Destroy() {
    clWindowHandle control = controlHandle;
    Detach();
    if (control != nullptr) DestroyControl(control);
}

void XButton::SetText(const clString& newText) {
    text = newText;
    if (controlHandle != nullptr) WindowSetText(controlHandle, text);
    BuildLook();
    Redraw();
}

void XButton::SetLatched(bool on) {
    latched = on;
    Redraw();
}

// The program's flat look: a light face with a thin frame; blue when the
// mouse is over it, deeper blue while pressed or latched.
void XButton::BuildLook() {
    std::lock_guard<std::mutex> hold(lock);
    struct Look {
        clDrawList* list;
        uint32_t fill, pen, ink;
    };
    const Look looks[] = {
        {&normal, clRgb(0xF4, 0xF4, 0xF4), clRgb(0xAD, 0xAD, 0xAD), 0},
        {&hot, clRgb(0xE5, 0xF1, 0xFB), clRgb(0x00, 0x78, 0xD7), 0},
        {&pressed, clRgb(0xCC, 0xE4, 0xF7), clRgb(0x00, 0x55, 0x9B), 0},
        {&latchedList, clRgb(0xCC, 0xE4, 0xF7), clRgb(0x00, 0x55, 0x9B), 0},
        {&disabled, clRgb(0xF4, 0xF4, 0xF4), clRgb(0xCC, 0xCC, 0xCC), clRgb(0x83, 0x83, 0x83)},
    };
    const uint32_t full = kPackFromFarEdge;
    for (const Look& look : looks) {
        look.list->Clear();
        look.list->AddFill(0, 0, full, full, background);
        look.list->AddFramedRect(0, 0, full, full, look.fill, look.pen, 3);
        if (drawText) {
            look.list->AddText(0, 0, full, full, text, face, fontSize, look.ink, kTextEllipsis,
                               kAlignCenter | kAlignVCenter);
        }
    }
    focus.Clear();
    focus.AddFrame(clPack(3), clPack(3), clPack(-6, full), clPack(-6, full), clRgb(0x00, 0x78, 0xD7));
}

clDrawList& XButton::CurrentList() {
    bool enabled = controlHandle != nullptr && WindowIsEnabled(controlHandle);
    if (!enabled) return (style & 0x88) == 8 ? disabled : normal;
    if (state == kButtonPressed) return pressed;
    if (latched) return (style & kButtonStyleCheck) != 0 ? latchedList : pressed;
    if (state == kButtonHot && (style & kButtonStyleHot) != 0) return hot;
    return normal;
}

void XButton::Redraw() {
    if (controlHandle != nullptr) WindowInvalidate(controlHandle, nullptr);
}

void XButton::OnClick(bool latchedNow) {
    if (onClick) {
        onClick(latchedNow);
        return;
    }
    clWindowHandle parent = controlHandle != nullptr ? WindowParent(controlHandle) : nullptr;
    if (parent != nullptr) {
        WindowSend(parent, kWmCommand, clMakeWParam(id, kBnClicked), reinterpret_cast<intptr_t>(controlHandle));
    }
}

void XButton::Click() {
    if ((style & kButtonStyleCheck) != 0) latched = !latched;
    Redraw();
    OnClick(latched);
}

intptr_t XButton::OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                    uint32_t* handled) {
    *handled = 1;
    switch (message) {
        case kWmPaint: {
            auto* canvas = reinterpret_cast<clCanvas*>(wParam);
            if (canvas == nullptr) break;
            clRect client = WindowClientRect(window);
            std::lock_guard<std::mutex> hold(lock);
            clDrawList& list = CurrentList();
            list.SetCanvas(client.Width(), client.Height());
            list.Paint(*canvas, 0, 0);
            bool focused = WindowWithFocus() == window;
            if (focused && focusMayShow && (style & kButtonStyleFocus) != 0) {
                focus.SetCanvas(client.Width(), client.Height());
                focus.Paint(*canvas, 0, 0);
            }
            return 0;
        }
        case kWmEraseBackground:
            return 1;
        case kWmMouseMove:
            lastMouse = clPoint{clXOf(lParam), clYOf(lParam)};
            if (state == kButtonNormal) {
                state = kButtonHot;
                Redraw();
            }
            return 0;
        case kWmMouseLeave:
            if (state == kButtonHot) {
                state = kButtonNormal;
                Redraw();
            }
            return 0;
        case kWmLButtonDown:
        case kWmLButtonDoubleClick:
            if (!WindowIsEnabled(window)) return 0;
            state = kButtonPressed;
            WindowSetFocus(window);
            WindowCaptureMouse(window);
            Redraw();
            return 0;
        case kWmLButtonUp: {
            bool wasPressed = state == kButtonPressed;
            WindowReleaseMouse();
            clRect client = WindowClientRect(window);
            bool inside = client.Contains(clXOf(lParam), clYOf(lParam));
            state = inside ? kButtonHot : kButtonNormal;
            Redraw();
            if (wasPressed && inside) Click();
            return 0;
        }
        case kWmGetDlgCode:
            if (lParam != 0 && wParam == kVkReturn) return kDlgcWantAllKeys;
            *handled = 0;
            return 0;
        case kWmKeyDown:
            // Esc on a button is its window's cancel command, as in a dialog.
            if (wParam == kVkEscape && WindowParent(window) != nullptr) {
                WindowSend(WindowParent(window), kWmCommand, clMakeWParam(2, 0), 0);
                return 0;
            }
            if ((wParam == kVkSpace || wParam == kVkReturn) && WindowIsEnabled(window)) {
                keyDown = true;
                state = kButtonPressed;
                Redraw();
                return 0;
            }
            break;
        case kWmKeyUp:
            if (wParam == kVkTab) {
                focusMayShow = true;
                Redraw();
                break;
            }
            if ((wParam == kVkSpace || wParam == kVkReturn) && keyDown) {
                keyDown = false;
                state = kButtonNormal;
                Click();
                return 0;
            }
            break;
        case kWmSetFocus:
        case kWmKillFocus:
            Redraw();
            break;
        default:
            break;
    }
    *handled = 0;
    return 0;
}
