// One item of the multi encoder in its own window: what it shows of an
// item, what it refuses, and an item whose encoder is no longer there.
#include "frontend/dlgmultiitem.h"

#include <gtest/gtest.h>

#include "foundation/messagebox.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "tests/support/testfolder.h"
#include "tests/support/toolkittest.h"
#include "toolkit/controls.h"

namespace {

int warnings = 0;
int CountWarning(const clString&, const clString&, uint32_t) {
    ++warnings;
    return clIdOk;
}
clString AnswerFolder(dlgMultiItem&) { return clString(u"/chosen/folder"); }

clMultiEncoderItem Item(const char16_t* encoder, const char16_t* options) {
    clMultiEncoderItem item;
    item.encoderName = encoder;
    item.encoderOptions = options;
    item.folder = u"/out";
    item.namingRule = u"[origfilename]";
    item.dspEffects = u"-dspeffect1=\"Volume Normalize=-target={qt}-18{qt}\"";
    return item;
}

class MultiItemTest : public ::testing::Test {
protected:
    MultiItemTest() { SetSettingsRoot(kSettingsHive, kSettingsRoot); }
};

}  // namespace

// A double quote can't be nested in the item's text: the window says so
// and stays; the item changes only on an accepted OK, effects untouched.
TEST_F(MultiItemTest, AQuoteInTheNamingIsRefusedAndTheItemKeepsItsEffects) {
    dlgMultiItem dialog(Item(u"Wave", u"-bits=\"8\""));
    dialog.askFolder = AnswerFolder;
    ASSERT_TRUE(dialog.Open(nullptr, clString(u"Quillotone: Encoder 1")));
    ASSERT_NE(dialog.settingsPage.ControlOf(u"bits"), nullptr);
    EXPECT_EQ(U(dialog.PageOptions()), u"-bits=\"8\"");
    ASSERT_EQ(dialog.effectList.RowCount(), 1);
    EXPECT_EQ(U(dialog.effectList.Row(0)->name), u"Volume Normalize");
    dialog.OnCommand(kIdItemBrowse, dialog.browseButton, kBnClicked);
    EXPECT_EQ(U(WindowGetText(dialog.folderField)), u"/chosen/folder");

    SetMessageBoxHandler(CountWarning);
    warnings = 0;
    WindowSetText(dialog.namingField, clString(u"[title] \"live\""));
    dialog.OnIdOk();
    EXPECT_EQ(warnings, 1);
    EXPECT_EQ(U(dialog.item.namingRule), u"[origfilename]") << "refused: the item is as it was";
    EXPECT_EQ(U(dialog.item.folder), u"/out");
    WindowSetText(dialog.namingField, clString(u"  [title] live "));
    dialog.OnIdOk();
    SetMessageBoxHandler(nullptr);
    EXPECT_EQ(warnings, 1);
    EXPECT_EQ(U(dialog.item.namingRule), u"[title] live") << "blanks at the ends go";
    EXPECT_EQ(U(dialog.item.folder), u"/chosen/folder");
    EXPECT_EQ(U(dialog.item.dspEffects), u"-dspeffect1=\"Volume Normalize=-target={qt}-18{qt}\"");
    SaveGrabIfFailed(dialog.windowHandle);
}

// An item whose encoder isn't installed keeps its name, listed last, and
// its option string as text, since nothing describes it any more.
TEST_F(MultiItemTest, AnItemOfAMissingEncoderKeepsItsNameAndOptionsAsText) {
    dlgMultiItem dialog(Item(u"Gone Encoder", u"-x=\"1\""));
    ASSERT_TRUE(dialog.Open(nullptr, clString(u"Quillotone: Encoder 2")));
    EXPECT_FALSE(dialog.encoders.Find(u"[Multi Encoder]", true)) << "pseudo-encoders aren't items";
    ASSERT_TRUE(dialog.encoders.Find(u"Wave", false));
    int32_t chosen = ComboGetSelection(dialog.encoderList);
    EXPECT_EQ(chosen, ComboCount(dialog.encoderList) - 1);
    EXPECT_EQ(U(ComboItemText(dialog.encoderList, chosen)), u"Gone Encoder");
    ASSERT_NE(dialog.optionsField, nullptr);
    EXPECT_FALSE(dialog.settingsPage.IsShown());
    WindowSetText(dialog.optionsField, clString(u"-x=\"2\""));
    dialog.OnIdOk();
    EXPECT_EQ(U(dialog.item.encoderName), u"Gone Encoder");
    EXPECT_EQ(U(dialog.item.encoderOptions), u"-x=\"2\"");
    // Another encoder's page takes the field's place.
    dlgMultiItem other(Item(u"Gone Encoder", u""));
    ASSERT_TRUE(other.Open(nullptr, clString(u"Quillotone: Encoder 3")));
    ASSERT_TRUE(other.ChooseEncoder(clString(u"Wave")));
    EXPECT_EQ(other.optionsField, nullptr);
    EXPECT_NE(other.settingsPage.ControlOf(u"bits"), nullptr);
}
