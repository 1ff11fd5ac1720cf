// XButton: the state picture by style and state, clicks by mouse and by
// keyboard, the check type, and what it draws.
#include "toolkit/button.h"

#include <gtest/gtest.h>

#include "tests/support/toolkittest.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

class ButtonTest : public ::testing::Test {
protected:
    XWindow window;
    XButton button;
    int clicks = 0;
    bool lastLatched = false;

    void SetUp() override {
        ASSERT_TRUE(window.Create(u"Buttons", clRect::Sized(20, 20, 240, 100), kWsPopup | kWsVisible, 0, nullptr));
        Make(kButtonStyleDefault);
    }
    void TearDown() override { SaveGrabIfFailed(window.windowHandle); }
    void Make(uint32_t style) {
        clButtonOptions options;
        options.text = u"Pause";
        options.id = 77;
        options.style = style;
        ASSERT_TRUE(button.Create(window.windowHandle, options, clRect::Sized(10, 10, 100, 30)));
        button.onClick = [this](bool latched) {
            ++clicks;
            lastLatched = latched;
        };
        Pump();
    }
    void Press(uint32_t message, int32_t x = 50, int32_t y = 15) {
        WindowSend(button.controlHandle, message, message == kWmLButtonUp ? 0 : kMkLButton, clMakeLParam(x, y));
    }
};

}  // namespace

TEST_F(ButtonTest, ADisabledButtonOfStyle135DrawsNormallyAndStyle8DrawsDisabled) {
    WindowEnable(button.controlHandle, false);
    EXPECT_EQ(&button.CurrentList(), &button.normal) << "bits 0x88 of 135 are 0x80";
    button.style = 8;
    EXPECT_EQ(&button.CurrentList(), &button.disabled);
    WindowEnable(button.controlHandle, true);
    EXPECT_EQ(&button.CurrentList(), &button.normal);
}

TEST_F(ButtonTest, AClickNeedsThePressAndTheReleaseOnTheButton) {
    Press(kWmLButtonDown);
    EXPECT_EQ(&button.CurrentList(), &button.pressed);
    EXPECT_EQ(clicks, 0);
    Press(kWmLButtonUp);
    EXPECT_EQ(clicks, 1);
    // Released outside: no click.
    Press(kWmLButtonDown);
    Press(kWmLButtonUp, 500, 15);
    EXPECT_EQ(clicks, 1);
    // A disabled button takes no press.
    WindowEnable(button.controlHandle, false);
    Press(kWmLButtonDown);
    Press(kWmLButtonUp);
    EXPECT_EQ(clicks, 1);
}

TEST_F(ButtonTest, SpaceAndReturnClickOnKeyUpAndTabShowsTheFocus) {
    WindowSend(button.controlHandle, kWmKeyDown, kVkSpace, 0);
    EXPECT_EQ(clicks, 0) << "the click waits for the key-up";
    WindowSend(button.controlHandle, kWmKeyUp, kVkSpace, 0);
    EXPECT_EQ(clicks, 1);
    WindowSend(button.controlHandle, kWmKeyDown, kVkReturn, 0);
    WindowSend(button.controlHandle, kWmKeyUp, kVkReturn, 0);
    EXPECT_EQ(clicks, 2);
    EXPECT_FALSE(button.focusMayShow);
    WindowSend(button.controlHandle, kWmKeyUp, kVkTab, 0);
    EXPECT_TRUE(button.focusMayShow);
}

TEST_F(ButtonTest, ACheckTypeButtonLatchesAndReleasesAndDrawsItsState) {
    button.Destroy();
    Make(kButtonStyleDefault | kButtonStyleCheck);
    uint32_t normalFace = PixelOf(window.windowHandle, 60, 38);
    Press(kWmLButtonDown);
    Press(kWmLButtonUp, 50, 15);
    EXPECT_TRUE(lastLatched);
    EXPECT_TRUE(button.IsLatched());
    // The mouse has left: the latched picture, not the hot one.
    WindowSend(button.controlHandle, kWmMouseLeave, 0, 0);
    EXPECT_EQ(&button.CurrentList(), &button.latchedList);
    uint32_t latchedFace = PixelOf(window.windowHandle, 60, 38);
    EXPECT_FALSE(NearColor(normalFace, latchedFace, 4)) << std::hex << normalFace << " " << latchedFace;
    Press(kWmLButtonDown);
    Press(kWmLButtonUp);
    EXPECT_FALSE(lastLatched);
    EXPECT_EQ(clicks, 2);
}

TEST_F(ButtonTest, WithoutAFunctionTheParentHearsTheClick) {
    class Parent : public XWindow {
    public:
        uint32_t heard = 0;
        intptr_t OnCommand(uint32_t id, clWindowHandle, uint32_t code) override {
            if (code == kBnClicked) heard = id;
            return 0;
        }
    } parent;
    ASSERT_TRUE(parent.Create(u"Parent", clRect::Sized(0, 0, 200, 80), kWsPopup | kWsVisible, 0, nullptr));
    XButton plain;
    clButtonOptions options;
    options.text = u"OK";
    options.id = 1;
    ASSERT_TRUE(plain.Create(parent.windowHandle, options, clRect::Sized(5, 5, 80, 26)));
    WindowSend(plain.controlHandle, kWmLButtonDown, kMkLButton, clMakeLParam(10, 10));
    WindowSend(plain.controlHandle, kWmLButtonUp, 0, clMakeLParam(10, 10));
    EXPECT_EQ(parent.heard, 1u);
}
