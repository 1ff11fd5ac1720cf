#include "toolkit/tabpage.h"

#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

XTabPage::~XTabPage() {
    if (tabs != nullptr) DestroyControl(tabs);
}

bool XTabPage::Create(clWindowHandle parent, uint32_t id, const clRect& rect) {
    tabs = CreateControl(kControlTabs, parent, id, clString(), rect);
    return tabs != nullptr;
}

void XTabPage::SetImages(const clImageHandle* pictures, int32_t count, int32_t size) {
    images = pictures;
    imageCount = count;
    imageSize = size;
}

int32_t XTabPage::AddPage(const clString& title, int32_t imageIndex, XWindow* page) {
    if (tabs == nullptr) return -1;
    int32_t index = ComboAddItem(tabs, title);
    if (imageIndex >= 0 && imageIndex < imageCount) TabsSetItemImage(tabs, index, images[imageIndex], imageSize);
    pageWindows.Add(page != nullptr ? page->windowHandle : nullptr);
    pageObjects.Add(page);
    if (index == 0) ComboSetSelection(tabs, 0);
    return index;
}

int32_t XTabPage::Selected() const { return tabs != nullptr ? ComboGetSelection(tabs) : -1; }

void XTabPage::Select(int32_t index) {
    if (tabs == nullptr) return;
    ComboSetSelection(tabs, index);
    ShowSelected();
}

void XTabPage::ShowSelected() {
    if (tabs == nullptr) return;
    int32_t chosen = Selected();
    clRect area = TabDisplayArea(tabs);
    for (int64_t i = 0; i < pageWindows.count; ++i) {
        auto page = static_cast<clWindowHandle>(pageWindows[i]);
        if (page == nullptr) continue;
        if (i == chosen) {
            WindowMove(page, area);
            WindowShow(page, true);
            WindowInvalidate(page, nullptr);
        } else {
            WindowShow(page, false);
        }
    }
}
