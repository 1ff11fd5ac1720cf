// XTabPage: a row of tabs over pages, one page window per tab. The form
// calls ShowSelected when the tab row tells it of a change (kWmCommand
// with kCbnSelChange from `tabs`).
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "toolkit/canvas.h"
#include "toolkit/messages.h"
#include "toolkit/toolkitapi.h"

class XWindow;

class QV_TOOLKIT_API XTabPage {
public:
    clWindowHandle tabs = nullptr;
    clPointerArray pageWindows;  // the page's handle, by tab index
    clPointerArray pageObjects;  // the page's XWindow, by tab index; not owned
    const clImageHandle* images = nullptr;  // the pictures AddPage's index picks from; not owned
    int32_t imageCount = 0;
    int32_t imageSize = 16;

    XTabPage() = default;
    ~XTabPage();
    XTabPage(const XTabPage&) = delete;
    XTabPage& operator=(const XTabPage&) = delete;

    bool Create(clWindowHandle parent, uint32_t id, const clRect& rect);
    // The pictures for the tabs, kept by the caller for the tabs' life.
    void SetImages(const clImageHandle* pictures, int32_t count, int32_t size);
    // A tab for a page made by the caller (a child of the same parent);
    // image index -1 for none. Answers the tab's index.
    int32_t AddPage(const clString& title, int32_t imageIndex, XWindow* page);
    // Fits the chosen page into the tabs' display area, shows it, hides
    // the others and repaints it.
    void ShowSelected();
    int32_t Selected() const;
    void Select(int32_t index);
};
