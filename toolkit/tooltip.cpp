#include "toolkit/tooltip.h"

#include <algorithm>
#include <vector>

#include "foundation/platform/thread.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"

namespace {

constexpr int32_t kDefaultDelay = 1000;
constexpr int32_t kDefaultDuration = 10000;

// The one poll of every active tip: a hidden window's 50 ms timer.
class clToolTipPoller : public XWindow {
public:
    std::vector<XToolTip*> active;
    intptr_t OnTimer(uint64_t, uint64_t) override {
        clPoint pointer = CursorPosition();
        uint32_t now = PlatformTickCount();
        for (XToolTip* tip : std::vector<XToolTip*>(active)) tip->Poll(pointer, now);
        return 0;
    }
};

clToolTipPoller& Poller() {
    static clToolTipPoller poller;
    return poller;
}

}  // namespace

XToolTip::~XToolTip() { Deactivate(); }

int32_t XToolTip::FadeStart(int32_t effectiveDuration) {
    int32_t fade = std::min(effectiveDuration / 3, 2500);
    return effectiveDuration - fade;
}

void XToolTip::Activate(const clString& tipText, clWindowHandle control, const clRect& rect) {
    text = tipText;
    watchedControl = control;
    watchedRect = rect;
    content.Clear();
    content.AddFramedRect(0, 0, kPackFromFarEdge, kPackFromFarEdge, 0xE1FFFF, 0x767676, 0);
    content.AddText(clPack(6), clPack(4), 0, 0, text, clString(), XWindow::ScaleUnits(12), 0x000000, kTextMultiLine);
    clToolTipPoller& poller = Poller();
    if (std::find(poller.active.begin(), poller.active.end(), this) == poller.active.end()) {
        poller.active.push_back(this);
    }
    if (poller.windowHandle == nullptr) {
        poller.Create(u"", clRect::Sized(0, 0, 1, 1), kWsPopup, kWsExToolWindow, nullptr);
        poller.SetTimerEx(50, 0, 1);
    }
}

void XToolTip::Deactivate() {
    Hide();
    clToolTipPoller& poller = Poller();
    poller.active.erase(std::remove(poller.active.begin(), poller.active.end(), this), poller.active.end());
    // The poll stops with the last tip.
    if (poller.active.empty() && poller.windowHandle != nullptr) poller.DestroyWindowObject();
}

bool XToolTip::IsOver(clPoint pointer) const {
    if (watchedControl != nullptr) return WindowAtPoint(pointer) == watchedControl;
    return watchedRect.Contains(pointer.x, pointer.y);
}

void XToolTip::Show(clPoint pointer, uint32_t now) {
    if (windowHandle == nullptr) {
        clImageHandle measureImage = CreateImage(4, 4);
        clCanvas* measure = CanvasOnImage(measureImage);
        content.SetCanvas(0, 0);
        content.Paint(*measure, -10000, -10000);  // works out the extent
        int32_t width = content.width + 12, height = content.height + 8;
        delete measure;
        DestroyImage(measureImage);
        Create(u"", clRect::Sized(pointer.x + 12, pointer.y + 20, width, height), kWsPopup,
               kWsExTopmost | kWsExToolWindow, nullptr);
    }
    if (windowHandle == nullptr) return;
    currentAlpha = 255;
    WindowSetOpacity(windowHandle, 255);
    WindowShow(windowHandle, true);
    shown = true;
    shownAt = now;
}

void XToolTip::Hide() {
    if (windowHandle != nullptr) DestroyWindowObject();
    shown = false;
}

void XToolTip::Poll(clPoint pointer, uint32_t now) {
    if (hideRequested) {
        hideRequested = false;
        Hide();
    }
    bool over = IsOver(pointer);
    if (!over) {
        hovering = false;
        shownOnce = false;
    }
    int32_t effective = duration == 0 ? kDefaultDuration : duration;
    if (shown) {
        int32_t elapsed = static_cast<int32_t>(now - shownAt);
        if (!over) {
            Hide();
        } else if (duration != -1 && elapsed > effective) {
            Hide();
            shownOnce = true;
        } else if (duration != -1 && fading && elapsed > FadeStart(effective)) {
            int32_t fade = effective - FadeStart(effective);
            currentAlpha = std::max(0, 255 - (elapsed - FadeStart(effective)) * 255 / std::max(1, fade));
            WindowSetOpacity(windowHandle, currentAlpha);
        }
        return;
    }
    if (!over || shownOnce) return;
    if (!hovering) {
        hovering = true;
        hoverStart = now;
    }
    int32_t wait = delay == 0 ? kDefaultDelay : delay;
    if (static_cast<int32_t>(now - hoverStart) >= wait) Show(pointer, now);
}

intptr_t XToolTip::OnPaint(clCanvas* canvas) {
    if (canvas == nullptr) return 0;
    clRect client = WindowClientRect(windowHandle);
    content.SetCanvas(client.Width(), client.Height());
    content.Paint(*canvas, 0, 0);
    return 0;
}

intptr_t XToolTip::OnEraseBackground(clCanvas*) { return 1; }
