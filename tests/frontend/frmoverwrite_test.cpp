// The overwrite window over real files: what it counts and says, renames
// by F2, the popup's commands, "Unique Names", "Skip Existing", Cancel,
// the row colours, and the answer carried into the jobs by ExamineJobs.
#include "frontend/frmoverwrite.h"

#include <gtest/gtest.h>

#include "engine/globals.h"
#include "engine/terminalview.h"
#include "foundation/folders.h"
#include "foundation/platform/processinfo.h"
#include "frontend/conversionstage.h"
#include "foundation/pathsyntax.h"
#include "foundation/pathtext.h"
#include "tests/support/testfolder.h"
#include "tests/support/toolkittest.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"

namespace {

uint32_t menuAnswer = 0;
uint32_t AnswerMenu(const clMenu& menu, void*) {
    EXPECT_EQ(menu.Count(), 4);
    EXPECT_TRUE(menu[3].text.Equals(u"Give All Unique Filenames (Append Time & Date)"));
    return menuAnswer;
}

class OverwriteTest : public ::testing::Test {
protected:
    TestFolder dir;
    clOverwriteItems items;
    int32_t result = -1;

    // Two files that exist, and a third job that only shares the first
    // one's path.
    OverwriteTest() {
        for (const char16_t* name : {u"Song A.flac", u"Song B.flac", u"Song A.flac"}) {
            auto* item = new clOverwriteItem;
            item->outputPath = dir.File(name);
            item->newPath = item->outputPath;
            item->encoderName = u"FLAC";
            item->extension = u".flac";
            item->jobIndex = static_cast<int32_t>(items.Count());
            items.Add(item);
        }
        WriteBytes(dir.File(u"Song A.flac"), "a");
        WriteBytes(dir.File(u"Song B.flac"), "b");
        WriteBytes(dir.File(u"Other.flac"), "c");
    }
    void TearDown() override { SetMenuHandler(nullptr, nullptr); }

    clString Caption(frmOverwrite& form) { return WindowGetText(form.overwriteButton); }
    void Rename(frmOverwrite& form, int32_t row, const clString& text, uint32_t key) {
        form.list.SelectOnly(row);
        WindowSend(form.list.controlHandle, kWmKeyDown, kVkF2, 0);
        ASSERT_TRUE(form.list.valueControl.IsOpen());
        WindowSetText(form.list.valueControl.editHandle, text);
        WindowSend(form.list.valueControl.editHandle, kWmKeyDown, key, 0);
        Pump();
    }
    void Popup(frmOverwrite& form, uint32_t answer) {
        menuAnswer = answer;
        SetMenuHandler(AnswerMenu, nullptr);
        clRect cell = ListViewCellRect(form.list.controlHandle, 0, 1);
        WindowPost(form.list.controlHandle, kWmRButtonUp, 0, clMakeLParam(cell.left + 5, cell.top + 3));
        WindowSend(form.list.controlHandle, kWmRButtonDown, kMkRButton, clMakeLParam(cell.left + 5, cell.top + 3));
        Pump();
    }
};

}  // namespace

TEST_F(OverwriteTest, EveryConflictStartsCountedAndTheButtonSaysWhatWillHappen) {
    frmOverwrite form(&result, items, u"FLAC", u".flac");
    ASSERT_TRUE(form.Open(nullptr));
    Pump();
    EXPECT_TRUE(WindowGetText(form.windowHandle).Equals(u"Quillotone: Confirm File Replace"));
    ASSERT_EQ(form.list.GetItemCount(), 3) << "in batch order, the shared path too";
    EXPECT_TRUE(form.list.GetItemText(0, 0).Equals(RemoveExtension(dir.File(u"Song A.flac"))));
    EXPECT_TRUE(form.list.GetItemText(2, 1).Equals(u".flac"));
    EXPECT_TRUE(Caption(form).Equals(u"Overwrite (3)")) << Caption(form).ToUtf8();
    // Unchecking one row, then all through the popup.
    form.list.SetChecked(1, false);
    EXPECT_TRUE(Caption(form).Equals(u"Overwrite (2)"));
    form.list.SetChecked(0, false);
    EXPECT_TRUE(Caption(form).Equals(u"Overwrite (1)")) << "one file is still an overwrite";
    EXPECT_TRUE(WindowIsEnabled(form.skipButton));
    Popup(form, kMenuUncheckAll);
    EXPECT_TRUE(Caption(form).Equals(u"Convert"));
    EXPECT_FALSE(WindowIsEnabled(form.skipButton));
    Popup(form, kMenuCheckAll);
    EXPECT_TRUE(Caption(form).Equals(u"Overwrite (3)"));
    EXPECT_TRUE(WindowIsEnabled(form.skipButton));
    // A rename to a free name stops counting; to another existing file it
    // counts again; Escape keeps the text.
    Rename(form, 2, RemoveExtension(dir.File(u"Free Name.flac")), kVkReturn);
    EXPECT_TRUE(Caption(form).Equals(u"Overwrite (2)"));
    Rename(form, 2, RemoveExtension(dir.File(u"Other.flac")), kVkReturn);
    EXPECT_TRUE(Caption(form).Equals(u"Overwrite (3)"));
    Rename(form, 1, u"ignored", kVkEscape);
    EXPECT_TRUE(form.list.GetItemText(1, 0).Equals(RemoveExtension(dir.File(u"Song B.flac"))));
    // An emptied name: the new path is the extension alone.
    Rename(form, 0, u"", kVkReturn);
    form.list.SetChecked(1, false);
    WindowSend(form.windowHandle, kWmCommand, clMakeWParam(1, kBnClicked), 0);
    EXPECT_EQ(result, 1);
    EXPECT_TRUE(items[0].newPath.Equals(u".flac"));
    EXPECT_EQ(items[0].skip, 0);
    EXPECT_EQ(items[1].skip, 1);
    EXPECT_TRUE(items[1].newPath.Equals(dir.File(u"Song B.flac")));
    EXPECT_TRUE(items[2].newPath.Equals(dir.File(u"Other.flac")));
    EXPECT_TRUE(items[0].outputPath.Equals(dir.File(u"Song A.flac"))) << "never changed here";
    SaveGrabIfFailed(form.windowHandle);
}

TEST_F(OverwriteTest, UniqueNamesAppendOneSuffixEachTimeAndNothingIsCountedAfter) {
    frmOverwrite form(&result, items, u"FLAC", u".flac");
    ASSERT_TRUE(form.Open(nullptr));
    WindowSend(form.windowHandle, kWmCommand, clMakeWParam(kIdUniqueNames, kBnClicked), 0);
    clString once = form.list.GetItemText(0, 0);
    clString base = RemoveExtension(dir.File(u"Song A.flac"));
    ASSERT_GT(once.Length(), base.Length() + 3);
    EXPECT_EQ(once.Compare(base, base.Length()), 0);
    clString suffix = once.Mid(base.Length() + 1, once.Length());
    EXPECT_EQ(suffix.Compare(u" - ", 3), 0) << suffix.ToUtf8();
    EXPECT_EQ(suffix.FindChar(NativePathSyntax().separator), 0) << "a date's separator would make folders";
    EXPECT_TRUE(form.list.GetItemText(2, 0).Equals(once)) << "the same suffix on every row";
    EXPECT_TRUE(Caption(form).Equals(u"Convert"));
    Popup(form, kMenuUniqueNames);
    clString twice = form.list.GetItemText(0, 0);
    EXPECT_GT(twice.Length(), once.Length() + 3) << "a second suffix";
    EXPECT_EQ(twice.Compare(once, once.Length()), 0);
    SaveGrabIfFailed(form.windowHandle);
}

TEST_F(OverwriteTest, SkipExistingUnchecksTheExistingRowsCommitsAndCancelCommitsNothing) {
    {
        frmOverwrite form(&result, items, u"FLAC", u".flac");
        form.skipPauseMs = 0;
        ASSERT_TRUE(form.Open(nullptr));
        Rename(form, 2, RemoveExtension(dir.File(u"Free Name.flac")), kVkReturn);
        WindowSend(form.windowHandle, kWmCommand, clMakeWParam(kIdSkipExisting, kBnClicked), 0);
        EXPECT_EQ(result, 1);
        EXPECT_EQ(items[0].skip, 1);
        EXPECT_EQ(items[1].skip, 1);
        EXPECT_EQ(items[2].skip, 0) << "renamed to a free name: it no longer exists";
        EXPECT_TRUE(items[2].newPath.Equals(dir.File(u"Free Name.flac")));
    }
    items[2].newPath = items[2].outputPath;
    items[2].skip = 0;
    frmOverwrite form(&result, items, u"FLAC", u".flac");
    ASSERT_TRUE(form.Open(nullptr));
    Rename(form, 2, u"Renamed", kVkReturn);
    WindowSend(form.windowHandle, kWmClose, 0, 0);
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(items[2].newPath.Equals(dir.File(u"Song A.flac"))) << "the rename is lost";
}

TEST_F(OverwriteTest, RowsShowWhetherTheyOverwriteSkipOrAreFree) {
    frmOverwrite form(&result, items, u"FLAC", u".flac");
    ASSERT_TRUE(form.Open(nullptr));
    form.list.SetItemState(-1, 0, kStateSelected | kStateFocused);
    form.list.SetChecked(1, false);
    Pump();
    WindowInvalidate(form.list.controlHandle, nullptr);
    Pump();
    EXPECT_EQ(ListViewGetState(form.list.controlHandle, 0) & 3u, 0u);
    auto pixelAt = [&](int32_t row) {
        clRect cell = ListViewCellRect(form.list.controlHandle, row, 1);
        clPoint screen = WindowToScreen(form.list.controlHandle, clPoint{cell.right - 6, cell.top + cell.Height() / 2});
        clPoint at = WindowFromScreen(form.windowHandle, screen);
        return PixelOf(form.windowHandle, at.x, at.y);
    };
    EXPECT_TRUE(NearColor(pixelAt(0), 0xF6F6F6, 3)) << std::hex << pixelAt(0);
    EXPECT_FALSE(NearColor(pixelAt(1), 0xF6F6F6, 3)) << "an unchecked row keeps the window's background";
    SaveGrabIfFailed(form.windowHandle);
}

namespace {

int hookCalls = 0;
// The user renames the first file, leaves the second out and confirms.
void RenameOneSkipOneAndConfirm(XWindow& window, void*) {
    ++hookCalls;
    auto* form = dynamic_cast<frmOverwrite*>(&window);
    ASSERT_NE(form, nullptr);
    form->list.SelectOnly(0);
    WindowSend(form->list.controlHandle, kWmKeyDown, kVkF2, 0);
    ASSERT_TRUE(form->list.valueControl.IsOpen());
    clString renamed = form->list.GetItemText(0, 0);
    renamed.Append(u" kept");
    WindowSetText(form->list.valueControl.editHandle, renamed);
    WindowSend(form->list.valueControl.editHandle, kWmKeyDown, kVkReturn, 0);
    form->list.SetChecked(1, false);
    WindowSend(form->windowHandle, kWmCommand, clMakeWParam(1, kBnClicked), 0);
}

void CancelTheWindow(XWindow& window, void*) {
    ++hookCalls;
    WindowSend(window.windowHandle, kWmCommand, clMakeWParam(2, kBnClicked), 0);
}

}  // namespace

// The conversion window's question: in "ask" mode the overwrite window
// settles each file; "always" asks nothing; told to ask nobody, existing
// files are kept.
TEST_F(OverwriteTest, TheConversionWindowAsksThroughTheOverwriteWindowInAskModeOnly) {
    clString before;
    bool hadFlag = PlatformGetEnvironment(u"QUILLOTONE_NONINTERACTIVE", before);
    PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"0");
    int32_t savedMode = globalOverwriteMode;
    globalOverwriteMode = kOverwriteAsk;
    hookCalls = 0;
    SetModalHook(RenameOneSkipOneAndConfirm, nullptr);
    EXPECT_TRUE(WindowServices().askOverwrite(items));
    EXPECT_EQ(hookCalls, 1);
    EXPECT_TRUE(items[0].newPath.Equals(clString(RemoveExtension(dir.File(u"Song A.flac")).text, u" kept.flac")));
    EXPECT_EQ(items[0].skip, 0);
    EXPECT_EQ(items[1].skip, 1);
    SetModalHook(CancelTheWindow, nullptr);
    EXPECT_FALSE(WindowServices().askOverwrite(items)) << "Cancel ends the batch";
    EXPECT_EQ(hookCalls, 2);
    globalOverwriteMode = kOverwriteAlways;
    items[1].skip = 0;
    EXPECT_TRUE(WindowServices().askOverwrite(items));
    EXPECT_EQ(hookCalls, 2) << "nothing asked";
    EXPECT_EQ(items[1].skip, 0);
    globalOverwriteMode = kOverwriteAsk;
    PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"1");
    EXPECT_TRUE(WindowServices().askOverwrite(items));
    EXPECT_EQ(hookCalls, 2);
    EXPECT_EQ(items[0].skip, 1) << "existing files are kept";
    SetModalHook(nullptr, nullptr);
    globalOverwriteMode = savedMode;
    PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", hadFlag ? before.text : u"");
}

// The picture of the window for the screenshots: 200 conflicts with long
// Unicode names, one renamed free, a few left out.
TEST(OverwritePicture, TwoHundredRowsWithLongUnicodeNames) {
    TestFolder dir;
    clOverwriteItems many;
    for (int i = 0; i < 200; ++i) {
        auto* item = new clOverwriteItem;
        item->outputPath = dir.File(clString::Formatted(
            u"Ludwig van Beethoven - Symphonie Nr. %d in c-Moll \u201EAllegro con brio\u201C %03d.flac", i % 9 + 1, i).text);
        item->newPath = item->outputPath;
        item->encoderName = u"FLAC";
        item->extension = u".flac";
        item->jobIndex = i;
        many.Add(item);
        if (i != 3) WriteBytes(item->outputPath, "x");
    }
    int32_t result = 0;
    frmOverwrite form(&result, many, u"FLAC", u".flac");
    ASSERT_TRUE(form.Open(nullptr));
    form.list.SetChecked(1, false);
    form.list.SetChecked(5, false);
    form.CountOverwrites(3, form.list.GetItemText(3, 0));
    form.list.SelectOnly(2);
    Pump();
    EXPECT_TRUE(WindowGetText(form.overwriteButton).Equals(u"Overwrite (197)"));
    SaveGrab(form.windowHandle, "overwrite");
}
