// An effect's settings window: the page its library describes, the text
// of a library that describes none, and the settings of a library that is
// gone; whatever way it closes, the page's last state is the answer.
#include "frontend/dlgdspsettings.h"

#include <gtest/gtest.h>

#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "tests/support/testfolder.h"
#include "tests/support/toolkittest.h"
#include "toolkit/controls.h"

namespace {

void SetDepthAndEscape(XWindow& window, void*) {
    auto* dialog = dynamic_cast<dlgDSPSettings*>(&window);
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(dialog->page.IsShown()) << "Bit Depth describes its options";
    ASSERT_TRUE(dialog->page.SetValue(u"bits", clString(u"24")));
    Pump();
    SaveGrab(window.windowHandle, "dspsettings");
    // Escape: the window has no cancel, so it keeps what the page holds.
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(2, 0), 0);
}

void TypeAndClose(XWindow& window, void*) {
    auto* dialog = dynamic_cast<dlgDSPSettings*>(&window);
    ASSERT_NE(dialog, nullptr);
    ASSERT_NE(dialog->textField, nullptr) << "a library that describes no page has its settings as text";
    EXPECT_EQ(U(WindowGetText(dialog->textField)), u"-delall");
    Pump();
    SaveGrab(window.windowHandle, "dspsettings-text");
    WindowSetText(dialog->textField, clString(u"-remove=\"comment\""));
    WindowSend(window.windowHandle, kWmClose, 0, 0);
}

[[maybe_unused]] void ChooseTrackGain(XWindow& window, void*) {
    auto* dialog = dynamic_cast<dlgDSPSettings*>(&window);
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(dialog->page.IsShown()) << "ReplayGain describes its options";
    ASSERT_TRUE(dialog->page.SetValue(u"mode", clString(u"track")));
    ASSERT_TRUE(dialog->page.SetValue(u"apply", clString(u"gain")));
    EXPECT_FALSE(dialog->page.SetValue(u"apply", clString(u"louder")));
    Pump();
    SaveGrab(window.windowHandle, "dspsettings-replaygain");
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(1, 0), 0);
}

void JustClose(XWindow& window, void*) { WindowSend(window.windowHandle, kWmClose, 0, 0); }

}  // namespace

TEST(DSPSettingsWindow, ThePageOrTheTextIsTheAnswerWhicheverWayItCloses) {
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    SetModalHook(SetDepthAndEscape, nullptr);
    EXPECT_EQ(U(EditEffectSettings(nullptr, clString(u"Bit Depth"), clString(u"-bits=\"16\""))), u"-bits=\"24\"");
    SetModalHook(TypeAndClose, nullptr);
    EXPECT_EQ(U(EditEffectSettings(nullptr, clString(u"_Text Effect"), clString(u"-delall"))),
              u"-remove=\"comment\"");
#ifndef _WIN32
    // Built on Linux only, with its loudness library.
    SetModalHook(ChooseTrackGain, nullptr);
    EXPECT_EQ(U(EditEffectSettings(nullptr, clString(u"ReplayGain"), clString())), u"-mode=\"track\" -apply=\"gain\"");
#endif
    SetModalHook(JustClose, nullptr);
    EXPECT_EQ(U(EditEffectSettings(nullptr, clString(u"No Such Effect"), clString(u"-keep=\"me\""))),
              u"-keep=\"me\"")
        << "a library that is gone keeps its settings";
    SetModalHook(nullptr, nullptr);
}
