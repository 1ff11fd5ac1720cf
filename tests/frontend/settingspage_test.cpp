// A settings page built from an option description: each kind of field
// shows the stored value, gives it back unchanged, and turns what the user
// chooses or types into the option string; a value out of range gives way
// to the one before.
#include "frontend/settingspage.h"

#include <gtest/gtest.h>

#include "tests/support/testfolder.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

const char16_t* const kSpec =
    u"level|integer|5|0..8|Level|l\n"
    u"bitrate|integer|192|8..320|Bitrate|b\n"
    u"quality|decimal|5|-1..10|Quality|q\n"
    u"verify|flag|||Verify|v\n"
    u"mode|choice|vbr|vbr=Variable,cbr=Constant|Mode|m\n";

class SettingsPageTest : public ::testing::Test {
protected:
    XWindow host;
    clSettingsPage page;

    SettingsPageTest() {
        host.Create(u"Page", clRect::Sized(10, 10, 420, 200), kWsPopup | kWsVisible, 0, nullptr);
        ParseOptionSpec(clString(kSpec), page.fields);
    }
    ~SettingsPageTest() override {
        page.Remove();
        host.DestroyWindowObject();
    }
    std::u16string Shown(const char16_t* name) {
        clWindowHandle control = page.ControlOf(name);
        int32_t row = ComboGetSelection(control);
        return U(row >= 0 ? ComboItemText(control, row) : WindowGetText(control));
    }
};

}  // namespace

TEST_F(SettingsPageTest, EachKindShowsTheStoredValueAndGivesTheStringBack) {
    const clString stored(u"-level=\"7\" -bitrate=\"256\" -quality=\"2.5\" -verify=\"1\" -mode=\"cbr\" -extra=\"x\"");
    page.Show(host.windowHandle, 0, 0, 400, stored);
    EXPECT_EQ(Shown(u"level"), u"7");
    EXPECT_EQ(U(WindowGetText(page.ControlOf(u"bitrate"))), u"256");
    EXPECT_EQ(U(WindowGetText(page.ControlOf(u"quality"))), u"2.5");
    EXPECT_TRUE(CheckBoxIsChecked(page.ControlOf(u"verify")));
    EXPECT_EQ(Shown(u"mode"), u"Constant");
    EXPECT_EQ(U(page.Options()), U(stored));
}

TEST_F(SettingsPageTest, ChoicesAndTypingMakeTheStringAndBadValuesKeepTheOneBefore) {
    page.Show(host.windowHandle, 0, 0, 400, clString());
    EXPECT_EQ(Shown(u"level"), u"5 (default)");
    EXPECT_EQ(U(page.Options()), u"") << "defaults are left out";
    ComboSetSelection(page.ControlOf(u"level"), 0);
    WindowSetText(page.ControlOf(u"bitrate"), clString(u" 320 "));
    CheckBoxSet(page.ControlOf(u"verify"), true);
    EXPECT_EQ(U(page.Options()), u"-level=\"0\" -bitrate=\"320\" -verify=\"1\"");
    WindowSetText(page.ControlOf(u"bitrate"), clString(u"321"));
    WindowSetText(page.ControlOf(u"quality"), clString(u"abc"));
    EXPECT_EQ(U(page.Options()), u"-level=\"0\" -bitrate=\"320\" -verify=\"1\"");
    EXPECT_TRUE(page.SetValue(u"LEVEL", clString(u"8")));
    EXPECT_FALSE(page.SetValue(u"level", clString(u"9")));
    EXPECT_FALSE(page.SetValue(u"mode", clString(u"abr")));
    EXPECT_TRUE(page.SetValue(u"mode", clString(u"cbr")));
    EXPECT_EQ(U(page.Options()), u"-level=\"8\" -bitrate=\"320\" -verify=\"1\" -mode=\"cbr\"");
    page.Remove();
    EXPECT_EQ(page.ControlOf(u"level"), nullptr);
}
