// XWindow: the base of every window and form. The back end hands each of
// its window's messages to one common procedure, which finds the object
// in the process-wide window table and turns the message into the virtual
// operation below. A form overrides the operations it needs; one it
// leaves alone clears `handled`, and the back end's own handling runs.
//
// Order of a message: OnRawMessage first (a set `handled` ends it there),
// then the operation of the message. A kWmCommand with notify code 0 and
// an id of 1 to 9 calls the id's operation (OnIdOk, OnIdCancel, ...)
// first and OnCommand after it. OnPaint and OnSysCommand always leave
// `handled` clear, so the default handling still runs for them.
#pragma once

#include <cstdint>
#include <mutex>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "foundation/stringlist.h"
#include "foundation/syncobjects.h"
#include "toolkit/canvas.h"
#include "toolkit/messages.h"
#include "toolkit/toolkitapi.h"

// A value for SetPlacement that keeps the current one.
constexpr int32_t kKeepPlacement = -12345;

// A timer of a window: its id and the user value OnTimer gets.
struct clTimerRecord {
    uint64_t id = 0;
    uint64_t userValue = 0;
};

// Tests drive modal windows: the hook runs inside the window's loop, once
// it shows, for every RunModal. Null removes it.
using clModalHook = void (*)(class XWindow& window, void* context);
QV_TOOLKIT_API void SetModalHook(clModalHook hook, void* context);

class QV_TOOLKIT_API XWindow {
public:
    uint32_t handled = 0;
    clWindowHandle windowHandle = nullptr;
    bool isDialog = false;
    void* cursor = nullptr;
    clImageHandle smallIcon = nullptr;  // owned
    clImageHandle largeIcon = nullptr;  // owned
    clString className;
    clPointerArray timers;  // of clTimerRecord, owned
    clStringList timerNames;
    clTimerRecord* currentTimer = nullptr;
    // Recursive: a tick that opens a question runs a nested loop in which
    // the next tick, on the same thread, takes the lock again.
    std::recursive_mutex timerLock;

    XWindow();
    virtual ~XWindow();
    XWindow(const XWindow&) = delete;
    XWindow& operator=(const XWindow&) = delete;

    virtual intptr_t OnActivate(uint32_t state, clWindowHandle other);
    virtual intptr_t OnClose();
    virtual intptr_t OnContextMenu(clWindowHandle window, int32_t x, int32_t y);
    virtual intptr_t OnCommand(uint32_t id, clWindowHandle control, uint32_t notifyCode);
    virtual intptr_t OnCreate();
    virtual intptr_t OnDestroy();
    virtual intptr_t OnDeactivate(clWindowHandle other);
    virtual intptr_t OnDrawItem(uint32_t controlId, clDrawItem* item);
    virtual intptr_t OnEraseBackground(clCanvas* canvas);
    virtual intptr_t OnHide();
    virtual intptr_t OnKeyDown(uint32_t key, intptr_t flags);
    virtual intptr_t OnKeyUp(uint32_t key, intptr_t flags);
    virtual intptr_t OnChar(uint32_t character, intptr_t flags);
    // `button`: 0 left, 1 right, 2 middle.
    virtual intptr_t OnMouseDown(int32_t x, int32_t y, uint32_t flags, int32_t button);
    virtual intptr_t OnMouseDoubleClick(int32_t x, int32_t y, uint32_t flags, int32_t button);
    virtual intptr_t OnMouseUp(int32_t x, int32_t y, uint32_t flags, int32_t button);
    virtual intptr_t OnMouseMove(int32_t x, int32_t y, uint32_t flags);
    virtual intptr_t OnMouseWheel(int32_t x, int32_t y, uint32_t flags, int32_t delta);
    virtual intptr_t OnMove(int32_t x, int32_t y);
    virtual intptr_t OnNotify(uint32_t controlId, intptr_t header);
    virtual intptr_t OnPaint(clCanvas* canvas);
    virtual intptr_t OnShow();
    virtual intptr_t OnSize(uint32_t type, int32_t width, int32_t height);
    virtual intptr_t OnSysCommand(uint32_t command, intptr_t lParam);
    virtual intptr_t OnTimer(uint64_t id, uint64_t userValue);
    virtual intptr_t OnCtlColorStatic(clCanvas* canvas, clWindowHandle control);
    virtual intptr_t OnCtlColorDialog(clCanvas* canvas, clWindowHandle dialog);
    virtual intptr_t OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                  uint32_t* handledFlag);
    virtual intptr_t OnIdOk();
    virtual intptr_t OnIdCancel();
    virtual intptr_t OnIdAbort();
    virtual intptr_t OnIdClose();
    virtual intptr_t OnIdHelp();
    virtual intptr_t OnIdIgnore();
    virtual intptr_t OnIdNo();
    virtual intptr_t OnIdRetry();
    virtual intptr_t OnIdYes();

    // A window of a class of its own ("XWnd<n>-<tick>"); false, with no
    // handle, when none could be made. `rect` is the window's place: on
    // the screen for a top window, in the parent's client area for a child.
    bool Create(const clString& title, const clRect& rect, uint32_t style, uint32_t exStyle, clWindowHandle parent);
    // Hides the window, kills its timers, destroys it, unregisters its
    // class and takes it out of the window table.
    void DestroyWindowObject();
    // Id 0 takes one more than the highest in use. Answers the id, 0 on
    // failure. An id in use gets the new time and user value.
    uint64_t SetTimerEx(uint32_t milliseconds, uint64_t userValue, uint64_t id);
    bool KillTimerEx(uint64_t id);
    // kKeepPlacement in any argument keeps that value.
    void SetPlacement(int32_t x, int32_t y, int32_t width, int32_t height);
    // Keeps copies of both pictures for the window; the given ones are
    // destroyed.
    void SetIcons(clImageHandle small, clImageHandle large);
    void CenterOnScreen();
    void CenterOver(clWindowHandle window);
    // Shows the window and runs messages until EndModal; answers its code.
    int32_t RunModal();
    void EndModal(int32_t code);
    // True while the window runs modally and nothing has ended it.
    bool IsRunningModal() const { return modal; }

    // `value` (units of 1/96 inch) in screen pixels, truncated.
    static int32_t ScaleUnits(int32_t value);
    // The object of a handle in the window table, or null.
    static XWindow* FromHandle(clWindowHandle window);
    // The common procedure every back end calls. `creating` is the object
    // on kWmCreate. `useDefault` tells the back end to run its own
    // handling as well and answer with its result.
    static intptr_t Procedure(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                              XWindow* creating, bool* useDefault);
    // The dispatcher of this object.
    intptr_t Dispatch(uint32_t message, uintptr_t wParam, intptr_t lParam);

private:
    bool modal = false;
    int32_t modalCode = 0;
    intptr_t DispatchCommand(uintptr_t wParam, intptr_t lParam);
};
