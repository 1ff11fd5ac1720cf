// Shared by the Win32 back end's files.
#pragma once

#include <windows.h>

#include "toolkit/messages.h"

inline HWND HwndOf(clWindowHandle window) { return reinterpret_cast<HWND>(window); }
inline clWindowHandle HandleOf(HWND window) { return reinterpret_cast<clWindowHandle>(window); }
HINSTANCE ToolkitInstance();
// Paints a toolkit window or a subclassed control on `dc` (its client
// area at the origin): the erase and paint messages with a canvas.
// False when nothing took the paint.
bool PrintClient(HWND window, HDC dc);
