// XTabPage: the chosen tab's page fills the display area and the others
// hide; a user's change reaches the form as kCbnSelChange.
#include "toolkit/tabpage.h"

#include <gtest/gtest.h>

#include "tests/support/toolkittest.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

class TabForm : public XWindow {
public:
    XTabPage tabs;
    int changes = 0;
    intptr_t OnCommand(uint32_t, clWindowHandle control, uint32_t code) override {
        if (control == tabs.tabs && code == kCbnSelChange) {
            ++changes;
            tabs.ShowSelected();
        }
        return 0;
    }
};

}  // namespace

TEST(XTabPage, TheChosenPageFillsTheAreaAndTheOthersHide) {
    TabForm form;
    ASSERT_TRUE(form.Create(u"Tabs", clRect::Sized(10, 10, 320, 240), kWsPopup | kWsVisible, 0, nullptr));
    ASSERT_TRUE(form.tabs.Create(form.windowHandle, 9, clRect::Sized(10, 10, 300, 200)));
    XWindow general, tags;
    ASSERT_TRUE(general.Create(u"", clRect::Sized(0, 0, 10, 10), kWsChild, 0, form.windowHandle));
    ASSERT_TRUE(tags.Create(u"", clRect::Sized(0, 0, 10, 10), kWsChild, 0, form.windowHandle));
    EXPECT_EQ(form.tabs.AddPage(u"General", -1, &general), 0);
    EXPECT_EQ(form.tabs.AddPage(u"Tags", -1, &tags), 1);
    form.tabs.ShowSelected();
    Pump();
    EXPECT_TRUE(WindowIsVisible(general.windowHandle));
    EXPECT_FALSE(WindowIsVisible(tags.windowHandle));
    clRect area = TabDisplayArea(form.tabs.tabs);
    clRect page = WindowScreenRect(general.windowHandle);
    clPoint corner = WindowFromScreen(form.windowHandle, clPoint{page.left, page.top});
    EXPECT_EQ(corner.x, area.left);
    EXPECT_EQ(corner.y, area.top);
    EXPECT_EQ(page.Width(), area.Width());
    EXPECT_GT(area.top, 10) << "below the row of tabs";
    EXPECT_LE(area.bottom, 210);
    form.tabs.Select(1);
    Pump();
    EXPECT_FALSE(WindowIsVisible(general.windowHandle));
    EXPECT_TRUE(WindowIsVisible(tags.windowHandle));
    EXPECT_TRUE(ComboItemText(form.tabs.tabs, 1).Equals(u"Tags"));
    SaveGrabIfFailed(form.windowHandle);
}
