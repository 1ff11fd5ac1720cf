#include "toolkit/xwindow.h"

#include "foundation/platform/thread.h"
#include "toolkit/application.h"
#include "toolkit/backend.h"
#include "toolkit/controls.h"
#include "toolkit/views.h"

namespace {
clModalHook modalHook = nullptr;
void* modalHookContext = nullptr;
}  // namespace

namespace {

// The process-wide window table; its lock also guards the class counter.
struct clWindowTable {
    clPointerArray windows;  // of XWindow, not owned
    clMutex lock;
    uint32_t classCounter = 0;
    clWindowTable() { lock.Create(nullptr); }
};

clWindowTable& Table() {
    static clWindowTable table;
    return table;
}

void RemoveFromTable(XWindow* window) {
    clWindowTable& table = Table();
    clMutexLock hold(table.lock);
    for (int64_t i = 0; i < table.windows.count; ++i) {
        if (table.windows[i] == window) {
            table.windows.RemoveAt(i);
            return;
        }
    }
}

int32_t screenDensity = -1;  // -1: not read yet

}  // namespace

XWindow::XWindow() = default;

XWindow::~XWindow() {
    DestroyWindowObject();
    if (smallIcon != nullptr) DestroyImage(smallIcon);
    if (largeIcon != nullptr) DestroyImage(largeIcon);
}

#define QV_DEFAULT_SLOT(signature) \
    intptr_t XWindow::signature {  \
        handled = 0;               \
        return 0;                  \
    }
QV_DEFAULT_SLOT(OnActivate(uint32_t, clWindowHandle))
QV_DEFAULT_SLOT(OnClose())
QV_DEFAULT_SLOT(OnContextMenu(clWindowHandle, int32_t, int32_t))
QV_DEFAULT_SLOT(OnCommand(uint32_t, clWindowHandle, uint32_t))
QV_DEFAULT_SLOT(OnCreate())
QV_DEFAULT_SLOT(OnDestroy())
QV_DEFAULT_SLOT(OnDeactivate(clWindowHandle))
QV_DEFAULT_SLOT(OnDrawItem(uint32_t, clDrawItem*))
QV_DEFAULT_SLOT(OnEraseBackground(clCanvas*))
QV_DEFAULT_SLOT(OnHide())
QV_DEFAULT_SLOT(OnKeyDown(uint32_t, intptr_t))
QV_DEFAULT_SLOT(OnKeyUp(uint32_t, intptr_t))
QV_DEFAULT_SLOT(OnChar(uint32_t, intptr_t))
QV_DEFAULT_SLOT(OnMouseDown(int32_t, int32_t, uint32_t, int32_t))
QV_DEFAULT_SLOT(OnMouseDoubleClick(int32_t, int32_t, uint32_t, int32_t))
QV_DEFAULT_SLOT(OnMouseUp(int32_t, int32_t, uint32_t, int32_t))
QV_DEFAULT_SLOT(OnMouseMove(int32_t, int32_t, uint32_t))
QV_DEFAULT_SLOT(OnMouseWheel(int32_t, int32_t, uint32_t, int32_t))
QV_DEFAULT_SLOT(OnMove(int32_t, int32_t))
QV_DEFAULT_SLOT(OnNotify(uint32_t, intptr_t))
QV_DEFAULT_SLOT(OnPaint(clCanvas*))
QV_DEFAULT_SLOT(OnShow())
QV_DEFAULT_SLOT(OnSize(uint32_t, int32_t, int32_t))
QV_DEFAULT_SLOT(OnSysCommand(uint32_t, intptr_t))
QV_DEFAULT_SLOT(OnTimer(uint64_t, uint64_t))
QV_DEFAULT_SLOT(OnCtlColorStatic(clCanvas*, clWindowHandle))
QV_DEFAULT_SLOT(OnCtlColorDialog(clCanvas*, clWindowHandle))
QV_DEFAULT_SLOT(OnIdOk())
QV_DEFAULT_SLOT(OnIdCancel())
QV_DEFAULT_SLOT(OnIdAbort())
QV_DEFAULT_SLOT(OnIdClose())
QV_DEFAULT_SLOT(OnIdHelp())
QV_DEFAULT_SLOT(OnIdIgnore())
QV_DEFAULT_SLOT(OnIdNo())
QV_DEFAULT_SLOT(OnIdRetry())
QV_DEFAULT_SLOT(OnIdYes())
#undef QV_DEFAULT_SLOT

intptr_t XWindow::OnRawMessage(clWindowHandle, uint32_t, uintptr_t, intptr_t, uint32_t* handledFlag) {
    *handledFlag = 0;
    return 0;
}

bool XWindow::Create(const clString& title, const clRect& rect, uint32_t style, uint32_t exStyle,
                     clWindowHandle parent) {
    if (windowHandle != nullptr) DestroyWindowObject();
    clString name;
    {
        clWindowTable& table = Table();
        clMutexLock hold(table.lock);
        name = clString::Formatted(u"XWnd%u-%u", table.classCounter, PlatformTickCount());
        ++table.classCounter;
    }
    bool registered = false;
    for (int attempt = 0; attempt < 10 && !registered; ++attempt) {
        if (attempt > 0) name.Append(u"x");
        registered = BackendRegisterClass(name);
    }
    if (!registered) return false;
    className = name;
    BackendCreateWindow(this, className, title, rect, style, exStyle, parent);
    if (windowHandle == nullptr) {
        BackendUnregisterClass(className);
        className.Clear();
        return false;
    }
    return true;
}

void XWindow::DestroyWindowObject() {
    if (modal) EndModal(0);
    clWindowHandle window = windowHandle;
    if (window != nullptr) {
        WindowShow(window, false);
        {
            std::lock_guard<std::recursive_mutex> hold(timerLock);
            for (int64_t i = 0; i < timers.count; ++i) {
                BackendKillTimer(window, timers.At<clTimerRecord>(i)->id);
            }
        }
        BackendDestroyWindow(window);
    }
    {
        std::lock_guard<std::recursive_mutex> hold(timerLock);
        for (int64_t i = 0; i < timers.count; ++i) delete timers.At<clTimerRecord>(i);
        timers.Reset();
        timerNames.Clear();
    }
    if (!className.IsEmpty()) {
        BackendUnregisterClass(className);
        className.Clear();
    }
    RemoveFromTable(this);
    windowHandle = nullptr;
}

uint64_t XWindow::SetTimerEx(uint32_t milliseconds, uint64_t userValue, uint64_t id) {
    if (windowHandle == nullptr) return 0;
    std::lock_guard<std::recursive_mutex> hold(timerLock);
    clTimerRecord* record = nullptr;
    uint64_t highest = 0;
    for (int64_t i = 0; i < timers.count; ++i) {
        auto* existing = timers.At<clTimerRecord>(i);
        if (existing->id > highest) highest = existing->id;
        if (id != 0 && existing->id == id) record = existing;
    }
    if (id == 0) id = highest + 1;
    if (!BackendSetTimer(windowHandle, id, milliseconds)) return 0;
    if (record == nullptr) {
        record = new clTimerRecord;
        record->id = id;
        timers.Add(record);
        timerNames.Add(u"");
    }
    record->userValue = userValue;
    return id;
}

bool XWindow::KillTimerEx(uint64_t id) {
    std::lock_guard<std::recursive_mutex> hold(timerLock);
    for (int64_t i = 0; i < timers.count; ++i) {
        auto* record = timers.At<clTimerRecord>(i);
        if (record->id != id) continue;
        if (windowHandle != nullptr) BackendKillTimer(windowHandle, id);
        delete record;
        timers.RemoveAt(i);
        timerNames.RemoveAt(i);
        return true;
    }
    return false;
}

void XWindow::SetPlacement(int32_t x, int32_t y, int32_t width, int32_t height) {
    if (windowHandle == nullptr) return;
    clRect now = WindowScreenRect(windowHandle);
    if (WindowParent(windowHandle) != nullptr) {
        clPoint corner = WindowFromScreen(WindowParent(windowHandle), clPoint{now.left, now.top});
        now = clRect::Sized(corner.x, corner.y, now.Width(), now.Height());
    }
    bool move = x != kKeepPlacement || y != kKeepPlacement;
    bool resize = width != kKeepPlacement || height != kKeepPlacement;
    BackendSetPosition(windowHandle, x == kKeepPlacement ? now.left : x, y == kKeepPlacement ? now.top : y,
                       width == kKeepPlacement ? now.Width() : width,
                       height == kKeepPlacement ? now.Height() : height, move, resize);
}

void XWindow::SetIcons(clImageHandle small, clImageHandle large) {
    if (smallIcon != nullptr) DestroyImage(smallIcon);
    if (largeIcon != nullptr) DestroyImage(largeIcon);
    smallIcon = small;
    largeIcon = large;
    if (windowHandle != nullptr) WindowSetIcon(windowHandle, large != nullptr ? large : small);
}

void XWindow::CenterOnScreen() {
    if (windowHandle == nullptr) return;
    clRect area = ToolkitWorkArea();
    clRect now = WindowScreenRect(windowHandle);
    SetPlacement(area.left + (area.Width() - now.Width()) / 2, area.top + (area.Height() - now.Height()) / 2,
                 kKeepPlacement, kKeepPlacement);
}

void XWindow::CenterOver(clWindowHandle window) {
    if (windowHandle == nullptr || window == nullptr) return;
    clRect over = WindowScreenRect(window);
    clRect now = WindowScreenRect(windowHandle);
    SetPlacement(over.left + (over.Width() - now.Width()) / 2, over.top + (over.Height() - now.Height()) / 2,
                 kKeepPlacement, kKeepPlacement);
}

void SetModalHook(clModalHook hook, void* context) {
    modalHook = hook;
    modalHookContext = context;
}

int32_t XWindow::RunModal() {
    if (windowHandle == nullptr) return -1;
    WindowShow(windowHandle, true);
    modal = true;
    modalCode = 0;
    if (modalHook != nullptr) WindowPost(windowHandle, kWmModalHook, 0, 0);
    int32_t code = ToolkitRunLoop();
    modal = false;
    return modalCode != 0 ? modalCode : code;
}

void XWindow::EndModal(int32_t code) {
    if (!modal) return;
    modal = false;
    modalCode = code;
    ToolkitEndLoop(code);
}

int32_t XWindow::ScaleUnits(int32_t value) {
    if (screenDensity == -1) screenDensity = ToolkitScreenDpi();
    return static_cast<int32_t>(static_cast<int64_t>(value) * screenDensity / 96);
}

XWindow* XWindow::FromHandle(clWindowHandle window) {
    if (window == nullptr) return nullptr;
    clWindowTable& table = Table();
    clMutexLock hold(table.lock);
    for (int64_t i = 0; i < table.windows.count; ++i) {
        auto* object = table.windows.At<XWindow>(i);
        if (object->windowHandle == window) return object;
    }
    return nullptr;
}

intptr_t XWindow::Procedure(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                            XWindow* creating, bool* useDefault) {
    *useDefault = true;
    if ((message == kWmCreate || message == kWmInitDialog) && creating != nullptr) {
        creating->windowHandle = window;
        creating->isDialog = message == kWmInitDialog;
        clWindowTable& table = Table();
        clMutexLock hold(table.lock);
        table.windows.Add(creating);
    }
    XWindow* object = FromHandle(window);
    if (object == nullptr) return 0;
    if (message == kWmModalHook) {
        *useDefault = false;
        if (modalHook != nullptr) modalHook(*object, modalHookContext);
        return 0;
    }
    intptr_t result = object->Dispatch(message, wParam, lParam);
    *useDefault = object->handled == 0;
    if (message == kWmNotify && *useDefault && lParam != 0) {
        // What the form leaves alone goes back to the view it came from,
        // whose object turns it into its own operations.
        auto* record = reinterpret_cast<clViewNotify*>(lParam);
        *useDefault = false;
        return WindowSend(record->from, kWmReflectNotify, wParam, lParam);
    }
    if (message == kWmDestroy) {
        // The window is gone whatever the form did: the object is inert
        // from here on, and its class name free.
        RemoveFromTable(object);
        object->windowHandle = nullptr;
    }
    return result;
}

intptr_t XWindow::DispatchCommand(uintptr_t wParam, intptr_t lParam) {
    uint32_t id = clLowWord(wParam);
    uint32_t code = clHighWord(wParam);
    auto control = reinterpret_cast<clWindowHandle>(lParam);
    if (code == 0 && id >= 1 && id <= 9) {
        switch (id) {
            case 1: OnIdOk(); break;
            case 2: OnIdCancel(); break;
            case 3: OnIdAbort(); break;
            case 4: OnIdRetry(); break;
            case 5: OnIdIgnore(); break;
            case 6: OnIdYes(); break;
            case 7: OnIdNo(); break;
            case 8: OnIdClose(); break;
            case 9: OnIdHelp(); break;
            default: break;
        }
        if (windowHandle == nullptr) return 0;
        handled = 1;
    }
    return OnCommand(id, control, code);
}

intptr_t XWindow::Dispatch(uint32_t message, uintptr_t wParam, intptr_t lParam) {
    handled = 0;
    if (windowHandle == nullptr) return 0;
    intptr_t result = OnRawMessage(windowHandle, message, wParam, lParam, &handled);
    if (handled != 0) return result;
    handled = 1;
    auto canvas = reinterpret_cast<clCanvas*>(wParam);
    int32_t x = clXOf(lParam), y = clYOf(lParam);
    auto flags = static_cast<uint32_t>(wParam);
    switch (message) {
        case kWmActivate:
            if (clLowWord(wParam) != 0) return OnActivate(clLowWord(wParam), reinterpret_cast<clWindowHandle>(lParam));
            return OnDeactivate(reinterpret_cast<clWindowHandle>(lParam));
        case kWmClose: return OnClose();
        case kWmContextMenu: return OnContextMenu(reinterpret_cast<clWindowHandle>(wParam), x, y);
        case kWmCommand: return DispatchCommand(wParam, lParam);
        case kWmCreate:
        case kWmInitDialog: return OnCreate();
        case kWmDestroy: return OnDestroy();
        case kWmDrawItem: return OnDrawItem(static_cast<uint32_t>(wParam), reinterpret_cast<clDrawItem*>(lParam));
        case kWmEraseBackground: return OnEraseBackground(canvas);
        case kWmShowWindow: return wParam != 0 ? OnShow() : OnHide();
        case kWmKeyDown: return OnKeyDown(static_cast<uint32_t>(wParam), lParam);
        case kWmKeyUp: return OnKeyUp(static_cast<uint32_t>(wParam), lParam);
        case kWmChar: return OnChar(static_cast<uint32_t>(wParam), lParam);
        case kWmLButtonDown: return OnMouseDown(x, y, flags, 0);
        case kWmRButtonDown: return OnMouseDown(x, y, flags, 1);
        case kWmMButtonDown: return OnMouseDown(x, y, flags, 2);
        case kWmLButtonDoubleClick: return OnMouseDoubleClick(x, y, flags, 0);
        case kWmRButtonDoubleClick: return OnMouseDoubleClick(x, y, flags, 1);
        case kWmMButtonDoubleClick: return OnMouseDoubleClick(x, y, flags, 2);
        case kWmLButtonUp: return OnMouseUp(x, y, flags, 0);
        case kWmRButtonUp: return OnMouseUp(x, y, flags, 1);
        case kWmMButtonUp: return OnMouseUp(x, y, flags, 2);
        case kWmMouseMove: return OnMouseMove(x, y, flags);
        case kWmMouseWheel:
            return OnMouseWheel(x, y, clLowWord(wParam), static_cast<int16_t>(clHighWord(wParam)));
        case kWmMove: return OnMove(x, y);
        case kWmNotify: return OnNotify(static_cast<uint32_t>(wParam), lParam);
        case kWmPaint: {
            intptr_t painted = OnPaint(canvas);
            handled = 0;
            return painted;
        }
        case kWmSize: return OnSize(static_cast<uint32_t>(wParam), clLowWord(lParam), clHighWord(lParam));
        case kWmSysCommand: {
            intptr_t done = OnSysCommand(static_cast<uint32_t>(wParam) & 0xFFF0, lParam);
            handled = 0;
            return done;
        }
        case kWmTimer: {
            std::lock_guard<std::recursive_mutex> hold(timerLock);
            uint64_t userValue = 0;
            currentTimer = nullptr;
            for (int64_t i = 0; i < timers.count; ++i) {
                auto* record = timers.At<clTimerRecord>(i);
                if (record->id == wParam) {
                    currentTimer = record;
                    userValue = record->userValue;
                }
            }
            return OnTimer(wParam, userValue);
        }
        case kWmCtlColorStatic:
            return OnCtlColorStatic(canvas, reinterpret_cast<clWindowHandle>(lParam));
        case kWmCtlColorDialog:
            return OnCtlColorDialog(canvas, reinterpret_cast<clWindowHandle>(lParam));
        default:
            handled = 0;
            return 0;
    }
}
