// The toolkit's message vocabulary. The ids and their parameters are the
// Win32 ones, so the Win32 back end passes its messages through as they
// come; the Qt back end turns events and signals into the same messages.
// Where Win32 passes a device context or a platform record, the toolkit
// passes its own (noted below).
#pragma once

#include <cstdint>

#include "toolkit/geometry.h"

class clCanvas;

// An opaque window or control: an HWND on Win32, a widget on Qt. It
// crosses the plug-in interface as it is.
using clWindowHandle = struct clWindowHandleTag*;

constexpr uint32_t kWmCreate = 0x0001;
constexpr uint32_t kWmDestroy = 0x0002;
constexpr uint32_t kWmMove = 0x0003;
constexpr uint32_t kWmSize = 0x0005;
constexpr uint32_t kWmActivate = 0x0006;
constexpr uint32_t kWmSetFocus = 0x0007;
constexpr uint32_t kWmKillFocus = 0x0008;
constexpr uint32_t kWmEnable = 0x000A;
constexpr uint32_t kWmPaint = 0x000F;  // wParam: the clCanvas to paint on
constexpr uint32_t kWmClose = 0x0010;
constexpr uint32_t kWmEraseBackground = 0x0014;  // wParam: the clCanvas
constexpr uint32_t kWmShowWindow = 0x0018;
constexpr uint32_t kWmDrawItem = 0x002B;  // lParam: a clDrawItem
constexpr uint32_t kWmNotify = 0x004E;
constexpr uint32_t kWmContextMenu = 0x007B;
constexpr uint32_t kWmGetDlgCode = 0x0087;
constexpr uint32_t kWmKeyDown = 0x0100;
constexpr uint32_t kWmKeyUp = 0x0101;
constexpr uint32_t kWmChar = 0x0102;
constexpr uint32_t kWmInitDialog = 0x0110;
constexpr uint32_t kWmCommand = 0x0111;
constexpr uint32_t kWmSysCommand = 0x0112;
constexpr uint32_t kWmTimer = 0x0113;
constexpr uint32_t kWmVScroll = 0x0115;
constexpr uint32_t kWmCtlColorDialog = 0x0136;
constexpr uint32_t kWmCtlColorStatic = 0x0138;
constexpr uint32_t kWmMouseMove = 0x0200;
constexpr uint32_t kWmLButtonDown = 0x0201;
constexpr uint32_t kWmLButtonUp = 0x0202;
constexpr uint32_t kWmLButtonDoubleClick = 0x0203;
constexpr uint32_t kWmRButtonDown = 0x0204;
constexpr uint32_t kWmRButtonUp = 0x0205;
constexpr uint32_t kWmRButtonDoubleClick = 0x0206;
constexpr uint32_t kWmMButtonDown = 0x0207;
constexpr uint32_t kWmMButtonUp = 0x0208;
constexpr uint32_t kWmMButtonDoubleClick = 0x0209;
constexpr uint32_t kWmMouseWheel = 0x020A;
constexpr uint32_t kWmCaptureChanged = 0x0215;
constexpr uint32_t kWmMouseLeave = 0x02A3;
// Files dropped on the window: wParam for DroppedPaths (dialogs.h).
constexpr uint32_t kWmDropFiles = 0x0233;
// The toolkit's own: a posted call of XMainThreadSync; the tooltip poll.
constexpr uint32_t kWmToolkitWake = 0x8001;
// The test hook of a modal window (SetModalHook), posted as it shows.
constexpr uint32_t kWmModalHook = 0x8002;

// Notify codes of kWmCommand.
constexpr uint32_t kBnClicked = 0;
constexpr uint32_t kCbnSelChange = 1;
constexpr uint32_t kCbnEditChange = 5;
constexpr uint32_t kLbnSelChange = 1;
constexpr uint32_t kEnChange = 0x0300;

// Mouse flags (wParam of mouse messages).
constexpr uint32_t kMkLButton = 0x0001;
constexpr uint32_t kMkRButton = 0x0002;
constexpr uint32_t kMkShift = 0x0004;
constexpr uint32_t kMkControl = 0x0008;
constexpr uint32_t kMkMButton = 0x0010;

// Key codes (wParam of key messages).
constexpr uint32_t kVkBack = 0x08;
constexpr uint32_t kVkTab = 0x09;
constexpr uint32_t kVkReturn = 0x0D;
constexpr uint32_t kVkShift = 0x10;
constexpr uint32_t kVkControl = 0x11;
constexpr uint32_t kVkEscape = 0x1B;
constexpr uint32_t kVkSpace = 0x20;
constexpr uint32_t kVkPrior = 0x21;
constexpr uint32_t kVkNext = 0x22;
constexpr uint32_t kVkEnd = 0x23;
constexpr uint32_t kVkHome = 0x24;
constexpr uint32_t kVkLeft = 0x25;
constexpr uint32_t kVkUp = 0x26;
constexpr uint32_t kVkRight = 0x27;
constexpr uint32_t kVkDown = 0x28;
constexpr uint32_t kVkDelete = 0x2E;
constexpr uint32_t kVkF2 = 0x71;

// Answers of kWmGetDlgCode.
constexpr uint32_t kDlgcWantAllKeys = 0x0004;

// Styles of XWindow::Create.
constexpr uint32_t kWsPopup = 0x80000000u;
constexpr uint32_t kWsChild = 0x40000000u;
constexpr uint32_t kWsVisible = 0x10000000u;
constexpr uint32_t kWsDisabled = 0x08000000u;
constexpr uint32_t kWsCaption = 0x00C00000u;
constexpr uint32_t kWsBorder = 0x00800000u;
constexpr uint32_t kWsSysMenu = 0x00080000u;
constexpr uint32_t kWsThickFrame = 0x00040000u;  // sizable
constexpr uint32_t kWsMinimizeBox = 0x00020000u;
constexpr uint32_t kWsMaximizeBox = 0x00010000u;
constexpr uint32_t kWsExToolWindow = 0x00000080u;
constexpr uint32_t kWsExTopmost = 0x00000008u;
constexpr uint32_t kWsExAppWindow = 0x00040000u;

// Packing as Win32 does it.
constexpr uintptr_t clMakeWParam(uint32_t low, uint32_t high) {
    return static_cast<uintptr_t>((low & 0xFFFF) | ((high & 0xFFFF) << 16));
}
constexpr intptr_t clMakeLParam(int32_t low, int32_t high) {
    return static_cast<intptr_t>(static_cast<int32_t>((static_cast<uint32_t>(low) & 0xFFFF) |
                                                      ((static_cast<uint32_t>(high) & 0xFFFF) << 16)));
}
constexpr uint32_t clLowWord(uintptr_t value) { return static_cast<uint32_t>(value & 0xFFFF); }
constexpr uint32_t clHighWord(uintptr_t value) { return static_cast<uint32_t>((value >> 16) & 0xFFFF); }
// Signed coordinates out of a mouse lParam.
constexpr int32_t clXOf(intptr_t lParam) { return static_cast<int16_t>(lParam & 0xFFFF); }
constexpr int32_t clYOf(intptr_t lParam) { return static_cast<int16_t>((lParam >> 16) & 0xFFFF); }

// Item states of clDrawItem.
constexpr uint32_t kOdsSelected = 0x0001;
constexpr uint32_t kOdsFocus = 0x0010;

// kWmDrawItem's record: an owner-drawn list row, painted on `canvas`.
struct clDrawItem {
    uint32_t controlId = 0;
    int32_t itemId = -1;
    uint32_t itemState = 0;
    clWindowHandle item = nullptr;
    clCanvas* canvas = nullptr;
    clRect rect;
    uint64_t itemData = 0;
};
