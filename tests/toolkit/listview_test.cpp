// XListView: check boxes that act on the whole selection, the click that
// selects and the click that edits, the editor's keys, and the colours a
// form gives its rows.
#include "toolkit/listview.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/toolkittest.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

class RecordingList : public XListView {
public:
    std::string events;
    int32_t readOnlyColumn = -1;
    int32_t paintedRow = -1;
    bool CanEditCell(int32_t, int32_t column) override { return column != readOnlyColumn; }
    void OnCheckChanged(int32_t row, bool checked) override {
        events += "check" + std::to_string(row) + (checked ? "+ " : "- ");
    }
    void OnEndEdit(int32_t row, const clString& text) override {
        events += "end" + std::to_string(row) + "=" + clString(text).ToUtf8() + " ";
    }
    void OnEndEditCancelled(int32_t row) override { events += "cancel" + std::to_string(row) + " "; }
    void OnRightClick(int32_t row, int32_t, clPoint) override { events += "right" + std::to_string(row) + " "; }
    intptr_t OnCustomDraw(clViewNotify& record, bool& handled) override {
        if (record.row == paintedRow) {
            record.textColor = 0x000080;
            record.backColor = clRgb(0x20, 0xC0, 0x20);
        }
        handled = true;
        return 0;
    }
};

class ListViewTest : public ::testing::Test {
protected:
    XWindow form;
    RecordingList list;

    void SetUp() override {
        ASSERT_TRUE(form.Create(u"List", clRect::Sized(10, 10, 420, 260), kWsPopup | kWsVisible, 0, nullptr));
        ASSERT_TRUE(list.Create(form.windowHandle, 1031, clRect::Sized(5, 5, 400, 240), true));
        list.InsertColumn(0, u"Destination File", 200);
        list.InsertColumn(1, u"Extension", 75);
        list.InsertColumn(2, u"Size", 75, true);
        for (int i = 0; i < 4; ++i) {
            std::u16string name = u"Track " + std::u16string(1, static_cast<char16_t>(u'1' + i));
            int32_t row = list.InsertItem(-1, name.c_str());
            list.SetItemText(row, 1, u".flac");
            list.SetItemText(row, 2, u"10 KB");
            list.SetChecked(row, true);
        }
        Pump();
        list.events.clear();
    }
    void TearDown() override { SaveGrabIfFailed(form.windowHandle); }

    clPoint CellCenter(int32_t row, int32_t column) {
        clRect cell = ListViewCellRect(list.controlHandle, row, column);
        return clPoint{cell.left + cell.Width() / 2, cell.top + cell.Height() / 2};
    }
    // A press as the user makes it; the release waits in the queue, so a
    // view that tracks the mouse after a press sees it end.
    void Click(clPoint at, uint32_t flags = 0) {
        WindowPost(list.controlHandle, kWmLButtonUp, flags, clMakeLParam(at.x, at.y));
        WindowSend(list.controlHandle, kWmLButtonDown, flags | kMkLButton, clMakeLParam(at.x, at.y));
        Pump();
    }
    void ClickCheckBox(int32_t row) { Click(clPoint{8, CellCenter(row, 0).y}); }
    void Select(std::initializer_list<int32_t> rows) {
        list.SetItemState(-1, 0, kStateSelected);
        for (int32_t row : rows) list.SetItemState(row, kStateSelected, kStateSelected);
    }
    void Key(uint32_t key) {
        WindowSend(list.valueControl.editHandle, kWmKeyDown, key, 0);
        Pump();
    }
};

}  // namespace

TEST_F(ListViewTest, ACheckBoxClickTurnsTheWholeSelectionButAnUnselectedRowAlone) {
    Select({1, 2});
    ClickCheckBox(1);
    EXPECT_TRUE(list.IsChecked(0));
    EXPECT_FALSE(list.IsChecked(1));
    EXPECT_FALSE(list.IsChecked(2));
    EXPECT_TRUE(list.IsChecked(3));
    EXPECT_EQ(list.events, "check1- check2- ");
    list.events.clear();
    ClickCheckBox(3);
    EXPECT_FALSE(list.IsChecked(3));
    EXPECT_FALSE(list.IsChecked(1)) << "the selection moved to row 3 alone";
    EXPECT_EQ(list.GetSelected(), std::vector<int32_t>{3});
    EXPECT_EQ(list.events, "check3- ");
    // Space turns the selection to the opposite of its first row.
    Select({0, 1});
    WindowSend(list.controlHandle, kWmKeyDown, kVkSpace, 0);
    EXPECT_FALSE(list.IsChecked(0)) << "row 0 was checked";
    EXPECT_FALSE(list.IsChecked(1));
    WindowSend(list.controlHandle, kWmKeyDown, kVkSpace, 0);
    EXPECT_TRUE(list.IsChecked(0));
    EXPECT_TRUE(list.IsChecked(1));
}

TEST_F(ListViewTest, TheFirstClickSelectsTheSecondEditsAndModeOneKeepsToTheFirstColumn) {
    list.editMode = 1;
    Click(CellCenter(2, 0));
    EXPECT_FALSE(list.valueControl.IsOpen()) << "the first click only selects";
    EXPECT_EQ(list.GetSelected(), std::vector<int32_t>{2});
    Click(CellCenter(2, 1));
    EXPECT_FALSE(list.valueControl.IsOpen()) << "mode 1 edits the first column only";
    Click(CellCenter(2, 0), kMkShift);
    EXPECT_FALSE(list.valueControl.IsOpen()) << "a shift-click extends the selection";
    Select({2});
    Click(CellCenter(2, 0));
    ASSERT_TRUE(list.valueControl.IsOpen());
    EXPECT_TRUE(WindowGetText(list.valueControl.editHandle).Equals(u"Track 3"));
    int32_t start = -1, end = -1;
    EditGetSelection(list.valueControl.editHandle, start, end);
    EXPECT_EQ(start, 0);
    EXPECT_EQ(end, 7) << "the whole text selected";
    // Return commits and goes on to the next row; in the last row it ends.
    WindowSetText(list.valueControl.editHandle, u"Renamed");
    Key(kVkReturn);
    EXPECT_TRUE(list.GetItemText(2, 0).Equals(u"Renamed"));
    ASSERT_TRUE(list.valueControl.IsOpen());
    EXPECT_EQ(list.valueControl.row, 3);
    EXPECT_EQ(list.GetSelected(), std::vector<int32_t>{3});
    Key(kVkReturn);
    EXPECT_FALSE(list.valueControl.IsOpen()) << "no row after the last";
    EXPECT_EQ(list.events, "end2=Renamed end3=Track 4 ");
}

TEST_F(ListViewTest, EscapeKeepsTheOldTextAndModeTwoWalksTheEditableColumns) {
    list.editMode = 2;
    list.readOnlyColumn = 1;
    ASSERT_TRUE(list.valueControl.Open(0, 0));
    WindowSetText(list.valueControl.editHandle, u"Changed");
    Key(kVkEscape);
    EXPECT_FALSE(list.valueControl.IsOpen());
    EXPECT_TRUE(list.GetItemText(0, 0).Equals(u"Track 1"));
    EXPECT_EQ(list.events, "cancel0 ");
    list.SelectOnly(0);
    ASSERT_TRUE(list.valueControl.Open(0, 0));
    Key(kVkReturn);
    ASSERT_TRUE(list.valueControl.IsOpen());
    EXPECT_EQ(list.valueControl.row, 0);
    EXPECT_EQ(list.valueControl.column, 2) << "column 1 can't be edited";
    Key(kVkReturn);
    EXPECT_EQ(list.valueControl.row, 1) << "past the last column: the next row";
    EXPECT_EQ(list.valueControl.column, 0);
    Key(kVkDown);
    EXPECT_EQ(list.valueControl.row, 2);
    Key(kVkUp);
    Key(kVkUp);
    EXPECT_EQ(list.valueControl.row, 0);
    Key(kVkUp);
    EXPECT_EQ(list.valueControl.row, 0) << "no row above the first";
    list.valueControl.Commit();
}

TEST_F(ListViewTest, F2EditsTheFirstColumnOfTheSelectedRow) {
    WindowSend(list.controlHandle, kWmKeyDown, kVkF2, 0);
    EXPECT_FALSE(list.valueControl.IsOpen()) << "label editing is off";
    list.labelEditing = true;
    list.SelectOnly(1);
    WindowSend(list.controlHandle, kWmKeyDown, kVkF2, 0);
    ASSERT_TRUE(list.valueControl.IsOpen());
    EXPECT_EQ(list.valueControl.column, 0);
    WindowSetText(list.valueControl.editHandle, u"New Name");
    Key(kVkReturn);
    EXPECT_FALSE(list.valueControl.IsOpen()) << "edit mode 0: nothing follows";
    EXPECT_TRUE(list.GetItemText(1, 0).Equals(u"New Name"));
    EXPECT_EQ(list.events, "end1=New Name ");
}

TEST_F(ListViewTest, RightClickColumnWidthsAndRowColours) {
    clPoint at = CellCenter(2, 1);
    WindowPost(list.controlHandle, kWmRButtonUp, 0, clMakeLParam(at.x, at.y));
    WindowSend(list.controlHandle, kWmRButtonDown, kMkRButton, clMakeLParam(at.x, at.y));
    Pump();
    EXPECT_NE(list.events.find("right2"), std::string::npos) << list.events;
    list.SetColumnWidth(1, -2);
    EXPECT_GE(ListViewColumnWidth(list.controlHandle, 1), 50) << "as wide as its heading";
    EXPECT_LT(ListViewColumnWidth(list.controlHandle, 1), 150);
    list.SetItemState(-1, 0, kStateSelected);
    list.paintedRow = 1;
    WindowInvalidate(list.controlHandle, nullptr);
    Pump();
    clRect cell = ListViewCellRect(list.controlHandle, 1, 2);
    clPoint corner = WindowToScreen(list.controlHandle, clPoint{cell.left + 3, cell.top + 2});
    clPoint inForm = WindowFromScreen(form.windowHandle, corner);
    EXPECT_TRUE(NearColor(PixelOf(form.windowHandle, inForm.x, inForm.y), clRgb(0x20, 0xC0, 0x20)))
        << std::hex << PixelOf(form.windowHandle, inForm.x, inForm.y);
    clRect other = ListViewCellRect(list.controlHandle, 0, 2);
    corner = WindowToScreen(list.controlHandle, clPoint{other.left + 3, other.top + 2});
    inForm = WindowFromScreen(form.windowHandle, corner);
    EXPECT_FALSE(NearColor(PixelOf(form.windowHandle, inForm.x, inForm.y), clRgb(0x20, 0xC0, 0x20)));
}
