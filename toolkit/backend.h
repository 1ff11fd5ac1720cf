// What the common toolkit code needs of a back end: window classes,
// windows, timers and subclassing. Each back end defines these; nothing
// outside the toolkit calls them.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "toolkit/geometry.h"
#include "toolkit/messages.h"

class XWindow;
class XSubClassCtrl;

// False when the name is taken.
bool BackendRegisterClass(const clString& className);
void BackendUnregisterClass(const clString& className);
// Makes the window and sends kWmCreate through XWindow::Procedure with
// `owner` before it answers.
clWindowHandle BackendCreateWindow(XWindow* owner, const clString& className, const clString& title,
                                   const clRect& rect, uint32_t style, uint32_t exStyle, clWindowHandle parent);
void BackendDestroyWindow(clWindowHandle window);
bool BackendSetTimer(clWindowHandle window, uint64_t id, uint32_t milliseconds);
void BackendKillTimer(clWindowHandle window, uint64_t id);
void BackendSetPosition(clWindowHandle window, int32_t x, int32_t y, int32_t width, int32_t height, bool move,
                        bool resize);
// The back end's own handling of a message it routed.
intptr_t BackendDefaultHandling(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam);
// Routes the control's messages to the object; undone by Detach.
bool BackendAttachSubclass(clWindowHandle control, XSubClassCtrl* object);
void BackendDetachSubclass(clWindowHandle control, XSubClassCtrl* object);
// The control's own handling, as it was before the subclass.
intptr_t BackendCallPrevious(XSubClassCtrl* object, clWindowHandle control, uint32_t message, uintptr_t wParam,
                             intptr_t lParam);
