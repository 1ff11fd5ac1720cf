// Shared by the Win32 back end's files.
#pragma once

#include <windows.h>

#include "toolkit/geometry.h"
#include "toolkit/messages.h"

inline HWND HwndOf(clWindowHandle window) { return reinterpret_cast<HWND>(window); }
inline clWindowHandle HandleOf(HWND window) { return reinterpret_cast<clWindowHandle>(window); }
HINSTANCE ToolkitInstance();
// Paints a toolkit window or a subclassed control on `dc` (its client
// area at the origin): the erase and paint messages with a canvas.
// False when nothing took the paint.
bool PrintClient(HWND window, HDC dc);
// True when the window is of the class (case ignored).
bool IsWindowClass(HWND window, const wchar_t* name);
// List and tree views (win32views.cpp): making one, and a view's
// WM_NOTIFY turned into the toolkit's; false when it isn't a view's.
HWND CreateViewControl(bool tree, HWND owner, uint32_t id, const clRect& rect);
bool ViewNotify(HWND window, NMHDR* header, LRESULT* result);
void DestroyViewImages(HWND view);
