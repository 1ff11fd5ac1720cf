// The toolkit's process-wide side: starting it, the message loop, the
// screen, and the small services every form uses (questions, popup menus,
// the clipboard). Each back end implements it.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/mainthreadsync.h"
#include "foundation/pointerarray.h"
#include "foundation/stringlist.h"
#include "toolkit/geometry.h"
#include "toolkit/messages.h"
#include "toolkit/toolkitapi.h"

// True when windows can be shown: on Windows always; on Linux when a
// display is named (DISPLAY, WAYLAND_DISPLAY) or Qt is told a platform
// (QT_QPA_PLATFORM, as the tests' "offscreen").
QV_TOOLKIT_API bool ToolkitHasDisplay();
// Starts the toolkit on the calling thread, which becomes the GUI thread
// (once per process; later calls do nothing). `sync` is the caller's
// main-thread queue: its posts wake the message loop. False when no window
// can be made.
QV_TOOLKIT_API bool ToolkitStartWith(XMainThreadSync* sync);
inline bool ToolkitStart() { return ToolkitStartWith(&XMainThreadSync::Instance()); }
// Runs the message loop until ToolkitEndLoop; nested loops are allowed.
QV_TOOLKIT_API int32_t ToolkitRunLoop();
QV_TOOLKIT_API void ToolkitEndLoop(int32_t code);
// Handles what is waiting, without blocking; for tests and long work.
QV_TOOLKIT_API void ToolkitProcessPending();
// Handles messages for `milliseconds`, for tests that let timers run.
QV_TOOLKIT_API void ToolkitProcessFor(uint32_t milliseconds);

// Watches waitables (what PlatformWorkerWaitable and PlatformWakeWaitable
// give) for a window: once one of them is ready, the watch ends and
// `message` is posted to the window. One watch for the whole program: a
// new one replaces the last; a count of 0 ends it. The loops above keep
// it; a loop of the system's own (a window being dragged on Windows) may
// not look at it until it ends. Windows watches the first 63 only: what
// lies beyond waits for the caller's own timer.
QV_TOOLKIT_API void ToolkitWatch(clWindowHandle window, const intptr_t* waitables, int32_t count, uint32_t message);

// The desktop's working area, in screen pixels.
QV_TOOLKIT_API clRect ToolkitWorkArea();
// Horizontal pixels per inch of the screen.
QV_TOOLKIT_API int32_t ToolkitScreenDpi();
// The screen rectangle of another program's window, by the number it
// gave on the command line; false when there is no such window (always
// on Linux, where windows of other programs can't be looked up).
QV_TOOLKIT_API bool ToolkitForeignWindowRect(int64_t window, clRect& rect);
// True when a monitor shows the point.
QV_TOOLKIT_API bool ToolkitMonitorAt(int32_t x, int32_t y);

// A modal question with the buttons of `type` (clMb*); the button id.
QV_TOOLKIT_API int32_t ToolkitMessageBox(clWindowHandle owner, const clString& text, const clString& caption,
                                         uint32_t type);

// A popup menu: entries with ids, separators, check marks, disabled
// entries and submenus. TrackPopup answers the chosen id, 0 for none.
struct QV_TOOLKIT_API clMenuItem {
    clString text;  // empty: a separator
    uint32_t id = 0;
    bool checked = false;
    bool enabled = true;
    class clMenu* submenu = nullptr;  // owned
};

class QV_TOOLKIT_API clMenu {
public:
    clPointerArray items;  // of clMenuItem, owned

    clMenu() = default;
    ~clMenu();
    clMenu(const clMenu&) = delete;
    clMenu& operator=(const clMenu&) = delete;

    clMenuItem& Add(const clString& text, uint32_t id, bool checked = false, bool enabled = true);
    void AddSeparator();
    // Takes ownership of the submenu.
    clMenuItem& AddSubmenu(const clString& text, clMenu* submenu);
    int64_t Count() const { return items.count; }
    clMenuItem& operator[](int64_t index) const { return *items.At<clMenuItem>(index); }
    // The entry with this id, in this menu or its submenus; null if none.
    clMenuItem* Find(uint32_t id) const;
    // Shows the menu at a screen point and answers the chosen id (0: none).
    uint32_t TrackPopup(clWindowHandle owner, int32_t x, int32_t y) const;
};
// Tests answer menus without showing them: the handler gets the menu and
// answers the id. Null restores the real menu.
using clMenuHandler = uint32_t (*)(const clMenu& menu, void* context);
QV_TOOLKIT_API void SetMenuHandler(clMenuHandler handler, void* context);

// True while a key (kVkShift, kVkControl, ...) is held down.
QV_TOOLKIT_API bool KeyIsDown(uint32_t virtualKey);

QV_TOOLKIT_API bool ClipboardSetText(const clString& text);
QV_TOOLKIT_API clString ClipboardGetText();

// Windows' taskbar button state; nothing on Linux.
enum clTaskbarState : int32_t {
    kTaskbarNone = 0,
    kTaskbarIndeterminate = 1,
    kTaskbarNormal = 2,
    kTaskbarError = 4,
    kTaskbarPaused = 8,
};
QV_TOOLKIT_API void TaskbarSetProgress(clWindowHandle window, uint64_t done, uint64_t total);
QV_TOOLKIT_API void TaskbarSetState(clWindowHandle window, int32_t state);
