// XButton: a push or check-type button whose look comes from six drawing
// lists, one per state (normal, hot, pressed, latched, disabled, focus).
// The back end's button only gives it a window and the keyboard focus;
// mouse, keys and painting are handled here, the same on both back ends.
//
// Style bits: 2 hot picture on mouse-over, 4 focus picture once the
// keyboard was used, 16 check type (a click latches and releases it),
// 0x88 == 8 disabled picture for a disabled button. The default, 135,
// has hot and focus pictures and draws a disabled button normally.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>

#include "foundation/clstring.h"
#include "toolkit/drawlist.h"
#include "toolkit/subclassctrl.h"
#include "toolkit/toolkitapi.h"

constexpr uint32_t kButtonStyleHot = 2;
constexpr uint32_t kButtonStyleFocus = 4;
constexpr uint32_t kButtonStyleCheck = 16;
constexpr uint32_t kButtonStyleDefault = 135;

struct clButtonOptions {
    clString text;
    uint32_t id = 0;
    uint32_t style = kButtonStyleDefault;
    clString face;          // empty: "Tahoma"
    int32_t fontSize = 0;   // 0: 12 units
    // What shows around the rounded corners: the parent's face.
    uint32_t background = 0xF0F0F0;
};

enum clButtonState : int32_t {
    kButtonNormal = 0,
    kButtonHot = 1,
    kButtonPressed = 2,
};

class QV_TOOLKIT_API XButton : public XSubClassCtrl {
public:
    void* group = nullptr;
    uint32_t style = kButtonStyleDefault;
    clString text;
    std::mutex lock;  // the lists, as a hover may change them
    clPoint lastMouse;
    int32_t state = kButtonNormal;
    bool latched = false;
    bool focusMayShow = false;
    bool drawText = true;
    clDrawList normal, hot, pressed, latchedList, disabled, focus;
    std::function<void(bool latchedNow)> onClick;

    XButton() = default;
    ~XButton() override;

    intptr_t OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                               uint32_t* handled) override;
    // Calls `onClick` with the latched state; without one, tells the
    // parent with kWmCommand (id, kBnClicked).
    virtual void OnClick(bool latchedNow);

    bool Create(clWindowHandle parent, const clButtonOptions& options, const clRect& rect);
    void Destroy();
    void SetText(const clString& newText);
    void SetLatched(bool on);
    bool IsLatched() const { return latched; }
    // The list a paint uses now, by state and style.
    clDrawList& CurrentList();
    void Redraw();

private:
    uint32_t id = 0;
    clString face;
    int32_t fontSize = 12;
    uint32_t background = 0xF0F0F0;
    bool keyDown = false;
    void BuildLook();
    void Click();
};
