// XToolTip: a small window of text shown when the cursor rests on a
// control or a rectangle, and gone when it leaves.
//
// Timing: the cursor must rest for `delay` ms (0: 1000) before the tip
// shows; it stays `duration` ms (0: 10000; -1: until the cursor leaves),
// fading out over its last third (at most 2500 ms) where fading is on; a
// tip that timed out shows again only after the cursor has left and come
// back. All tips are polled every 50 ms by one process-wide timer on the
// GUI thread, never from a thread of their own: windows belong to the GUI
// thread.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "toolkit/drawlist.h"
#include "toolkit/xwindow.h"

class QV_TOOLKIT_API XToolTip : public XWindow {
public:
    clDrawList content;
    clString text;
    clWindowHandle watchedControl = nullptr;
    clRect watchedRect;  // screen pixels, when no control is watched
    int32_t delay = 0;
    int32_t duration = 0;
    bool fading = true;
    uint32_t hoverStart = 0;
    bool hovering = false;
    uint32_t shownAt = 0;
    bool shownOnce = false;
    int32_t currentAlpha = 255;
    bool hideRequested = false;

    XToolTip() = default;
    ~XToolTip() override;

    // Watches a control (or, with none, a screen rectangle) from now on.
    void Activate(const clString& tipText, clWindowHandle control, const clRect& rect);
    void Deactivate();
    void RequestHide() { hideRequested = true; }
    bool IsShown() const { return windowHandle != nullptr && shown; }
    // One round of the poll, with the cursor's screen position and the time.
    void Poll(clPoint cursorAt, uint32_t now);

    intptr_t OnPaint(clCanvas* canvas) override;
    intptr_t OnEraseBackground(clCanvas* canvas) override;

    // The time from which a tip fades, counted from its showing.
    static int32_t FadeStart(int32_t duration);

private:
    bool shown = false;
    bool IsOver(clPoint cursorAt) const;
    void Show(clPoint cursorAt, uint32_t now);
    void Hide();
};
