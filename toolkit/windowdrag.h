// clWindowDrag: a top window without a title bar moves by a drag on the
// part of it that stands for one (a painted heading). The window's mouse
// operations hand their events over; each answers false when the event
// isn't part of a drag, for the window to handle it otherwise.
#pragma once

#include <cstdint>

#include "toolkit/geometry.h"
#include "toolkit/toolkitapi.h"

class XWindow;

class QV_TOOLKIT_API clWindowDrag {
public:
    bool dragging = false;
    clPoint offset{};  // the pointer from the window's top left, on the screen

    // A press of the left button (`button` 0) at a point of the client area
    // inside `area` starts a drag.
    bool Down(XWindow& window, int32_t x, int32_t y, int32_t button, const clRect& area);
    bool Move(XWindow& window, int32_t x, int32_t y);
    bool Up();
};
