// The value list: editors laid over the selected row one at a time, check
// and radio rows, keys, reordering by dragging, and painting through the
// form's messages.
#include "toolkit/valuelist.h"

#include <gtest/gtest.h>

#include "tests/support/toolkittest.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

// A form that hands its messages to the list first, as forms must.
class ListForm : public XWindow {
public:
    XValueList list;
    intptr_t OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                          uint32_t* handledFlag) override {
        return list.OnRawMessage(window, message, wParam, lParam, handledFlag);
    }
};

class ValueListTest : public ::testing::Test {
protected:
    ListForm form;
    XValueList& list = form.list;
    int changes = 0;

    void SetUp() override {
        ASSERT_TRUE(form.Create(u"Values", clRect::Sized(10, 10, 320, 260), kWsPopup | kWsVisible, 0, nullptr));
        ASSERT_TRUE(list.Create(form.windowHandle, 5, 5, 300, 240, true, true));
    }
    void TearDown() override { SaveGrabIfFailed(form.windowHandle); }

    int32_t Add(uint32_t kind, const char16_t* name, const char16_t* value = u"") {
        clValueRowDesc row;
        row.kind = kind;
        row.name = name;
        row.value = value;
        row.onChange = [this](XValueList*) { ++changes; };
        return list.AddRow(row);
    }
    // A press at the middle of a row's value part, or at x.
    void Click(int32_t row, int32_t x = 200) {
        clRect rect = ListRowRect(list.listHandle, row);
        int32_t y = rect.top + rect.Height() / 2;
        WindowSend(list.listHandle, kWmLButtonDown, kMkLButton, clMakeLParam(x, y));
        WindowSend(list.listHandle, kWmLButtonUp, 0, clMakeLParam(x, y));
    }
    void Drag(int32_t from, int32_t toY) {
        clRect rect = ListRowRect(list.listHandle, from);
        int32_t y = rect.top + rect.Height() / 2;
        WindowSend(list.listHandle, kWmLButtonDown, kMkLButton, clMakeLParam(50, y));
        WindowSend(list.listHandle, kWmMouseMove, kMkLButton, clMakeLParam(50, y + (toY > y ? 8 : -8)));
        WindowSend(list.listHandle, kWmMouseMove, kMkLButton, clMakeLParam(50, toY));
        WindowSend(list.listHandle, kWmLButtonUp, 0, clMakeLParam(50, toY));
    }
};

}  // namespace

TEST_F(ValueListTest, SelectingARowOpensItsEditorAndAPlainRowClosesIt) {
    Add(kRowPlain, u"Source", u"song.wav");
    Add(kRowEdit, u"Title", u"First Light");
    list.SelectRow(1);
    ASSERT_NE(list.control.editorHandle, nullptr);
    EXPECT_TRUE(WindowGetText(list.control.editorHandle).Equals(u"First Light")) << WindowGetText(list.control.editorHandle).ToUtf8() << "/" << list.Row(1)->value.ToUtf8();
    // Empty button text: the editor reaches to the right edge, less 2.
    clRect editor = WindowScreenRect(list.control.editorHandle);
    clRect client = WindowClientRect(list.listHandle);
    clPoint right = WindowFromScreen(list.listHandle, clPoint{editor.right, editor.top});
    EXPECT_EQ(right.x, client.right - 2);
    list.SelectRow(0);
    EXPECT_EQ(list.control.editorHandle, nullptr) << "a plain row has no editor";
    EXPECT_EQ(list.SelectedRow(), 0);
}

TEST_F(ValueListTest, EditsCommitAtEachChangeAndReachOnChange) {
    Add(kRowEdit, u"Title", u"First");
    list.SelectRow(0);
    ASSERT_NE(list.control.editorHandle, nullptr);
    EXPECT_EQ(changes, 0) << "filling the editor is not a change";
    WindowSetText(list.control.editorHandle, u"Second");
    Pump();
    EXPECT_GE(changes, 1);
    EXPECT_TRUE(list.Row(0)->value.Equals(u"Second"));
    EXPECT_TRUE(list.GetValue(0).Equals(u"Second"));
}

TEST_F(ValueListTest, AChoiceRowSelectsItsValueOrTheFirstItem) {
    clValueRowDesc row;
    row.kind = kRowChoice;
    row.name = u"Mode";
    row.value = u"Album";
    row.choices.Add(u"Track");
    row.choices.Add(u"Album");
    list.AddRow(row);
    row.value = u"Neither";
    list.AddRow(row);
    list.SelectRow(0);
    EXPECT_EQ(ComboGetSelection(list.control.editorHandle), 1);
    list.SelectRow(1);
    EXPECT_EQ(ComboGetSelection(list.control.editorHandle), 0);
    list.SelectRow(-1);
    EXPECT_TRUE(list.Row(1)->value.Equals(u"Track")) << "closing commits the chosen item";
}

TEST_F(ValueListTest, AddingARowWhileAnEditorIsOpenClosesTheEditor) {
    Add(kRowEdit, u"Title", u"x");
    list.SelectRow(0);
    ASSERT_NE(list.control.editorHandle, nullptr);
    Add(kRowPlain, u"More");
    EXPECT_EQ(list.control.editorHandle, nullptr);
}

TEST_F(ValueListTest, CheckRowsToggleAndRadioRowsKeepOneChosenPerGroup) {
    int32_t check = Add(kRowCheck, u"Verify");
    int32_t a = Add(kRowRadio, u"Track gain", u"3");
    int32_t b = Add(kRowRadio, u"Album gain", u"-3");
    int32_t other = Add(kRowRadio, u"Other group", u"-4");
    // On the box: toggles at once.
    Click(check, 10);
    EXPECT_TRUE(list.GetChecked(check));
    EXPECT_TRUE(list.Row(check)->value.Equals(u"1"));
    // Far from the box on a row not yet selected: only selects.
    Click(a, 200);
    EXPECT_FALSE(list.GetChecked(a));
    // The selected row without a button: anywhere counts.
    Click(a, 200);
    EXPECT_TRUE(list.Row(a)->value.Equals(u"-3"));
    EXPECT_TRUE(list.Row(b)->value.Equals(u"3"));
    EXPECT_TRUE(list.Row(other)->value.Equals(u"-4")) << "another group is left alone";
    // Space on the selected check row toggles it back.
    list.SelectRow(check);
    WindowSend(list.listHandle, kWmKeyDown, kVkSpace, 0);
    EXPECT_FALSE(list.GetChecked(check));
    EXPECT_GE(changes, 3);
}

TEST_F(ValueListTest, ReadOnlyRowsIgnoreClicks) {
    clValueRowDesc row;
    row.kind = kRowCheck;
    row.name = u"Locked";
    row.readOnly = true;
    list.AddRow(row);
    Click(0, 10);
    EXPECT_FALSE(list.GetChecked(0));
}

TEST_F(ValueListTest, KeysMoveTheSelection) {
    for (int i = 0; i < 30; ++i) Add(kRowPlain, u"Row");
    list.SelectRow(0);
    WindowSend(list.listHandle, kWmKeyDown, kVkDown, 0);
    EXPECT_EQ(list.SelectedRow(), 1);
    WindowSend(list.listHandle, kWmKeyDown, kVkEnd, 0);
    EXPECT_EQ(list.SelectedRow(), 29);
    WindowSend(list.listHandle, kWmKeyDown, kVkUp, 0);
    EXPECT_EQ(list.SelectedRow(), 28);
    WindowSend(list.listHandle, kWmKeyDown, kVkHome, 0);
    EXPECT_EQ(list.SelectedRow(), 0);
    WindowSend(list.listHandle, kWmKeyDown, kVkNext, 0);
    int32_t page = list.SelectedRow();
    EXPECT_GT(page, 1);
    EXPECT_LT(page, 29);
    WindowSend(list.listHandle, kWmKeyDown, kVkPrior, 0);
    EXPECT_EQ(list.SelectedRow(), 0);
}

TEST_F(ValueListTest, RowsMoveByDraggingButNotAboveAHeadingAtTheTop) {
    Add(kRowHeading, u"Effects");
    Add(kRowPlain, u"Resample");
    Add(kRowPlain, u"Volume Normalize");
    Add(kRowPlain, u"ReplayGain");
    // ReplayGain onto the upper half of Resample: it goes before it.
    clRect resample = ListRowRect(list.listHandle, 1);
    Drag(3, resample.top + 2);
    EXPECT_TRUE(list.rowNames[1].Equals(u"ReplayGain"));
    EXPECT_TRUE(list.Row(2)->name.Equals(u"Resample"));
    EXPECT_EQ(list.SelectedRow(), 1);
    // Dropped on itself: nothing changes.
    clRect self = ListRowRect(list.listHandle, 2);
    Drag(2, self.top + self.Height() / 2 + 1);
    EXPECT_TRUE(list.rowNames[2].Equals(u"Resample"));
    // Above the heading: not a place to drop.
    clRect heading = ListRowRect(list.listHandle, 0);
    Drag(2, heading.top + 1);
    EXPECT_TRUE(list.rowNames[0].Equals(u"Effects"));
    EXPECT_TRUE(list.rowNames[2].Equals(u"Resample"));
    // The heading itself doesn't move.
    Drag(0, ListRowRect(list.listHandle, 3).bottom - 2);
    EXPECT_TRUE(list.rowNames[0].Equals(u"Effects"));
    // Below the last row: the end.
    Drag(1, ListRowRect(list.listHandle, 3).bottom + 20);
    EXPECT_TRUE(list.rowNames[3].Equals(u"ReplayGain"));
}

TEST_F(ValueListTest, RowsPaintThroughTheFormWithTheSelectionColour) {
    Add(kRowPlain, u"First", u"one");
    Add(kRowLink, u"Second", u"a link");
    list.SelectRow(1);
    clRect row = ListRowRect(list.listHandle, 1);
    clPoint inForm = WindowFromScreen(form.windowHandle, WindowToScreen(list.listHandle, clPoint{4, row.top + 4}));
    uint32_t selected = PixelOf(form.windowHandle, inForm.x + 2, inForm.y);
    EXPECT_TRUE(NearColor(selected, list.selectionColor, 6)) << std::hex << selected;
    clRect first = ListRowRect(list.listHandle, 0);
    clPoint firstInForm =
        WindowFromScreen(form.windowHandle, WindowToScreen(list.listHandle, clPoint{4, first.top + 4}));
    EXPECT_TRUE(NearColor(PixelOf(form.windowHandle, firstInForm.x + 2, firstInForm.y), list.background, 6));
}
