// XDropList: completion from the items as the user types, and Return and
// leaving the field.
#include "toolkit/droplist.h"

#include <gtest/gtest.h>

#include "tests/support/toolkittest.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

class DropListTest : public ::testing::Test {
protected:
    XWindow form;
    XDropList list;

    void SetUp() override {
        ASSERT_TRUE(form.Create(u"Drop", clRect::Sized(10, 10, 300, 120), kWsPopup | kWsVisible, 0, nullptr));
        ASSERT_TRUE(list.Create(form.windowHandle, 5, clRect::Sized(10, 10, 200, 24)));
        list.AddItem(u"Ogg Vorbis");
        list.AddItem(u"Abbey Road");
        list.AddItem(u"Abbey");
        Pump();
    }
    void TearDown() override { SaveGrabIfFailed(form.windowHandle); }
    // Types `text` with the caret at its end, then the key-up of its last key.
    void Type(const char16_t* text, uint32_t key) {
        WindowSetText(list.edit, text);
        int32_t length = clString(text).Length();
        EditSetSelection(list.edit, length, length);
        WindowSend(list.edit, kWmKeyUp, key, 0);
    }
    void Selection(int32_t& start, int32_t& end) { EditGetSelection(list.edit, start, end); }
};

}  // namespace

TEST_F(DropListTest, TypingCompletesFromTheFirstItemThatStartsSoIgnoringCase) {
    Type(u"ab", 'B');
    EXPECT_TRUE(WindowGetText(list.edit).Equals(u"Abbey Road")) << WindowGetText(list.edit).ToUtf8();
    int32_t start = 0, end = 0;
    Selection(start, end);
    EXPECT_EQ(start, 2);
    EXPECT_EQ(end, 10) << "what completion added is selected";
    Type(u"abbey r", kVkSpace);  // a blank completes too
    EXPECT_TRUE(WindowGetText(list.edit).Equals(u"Abbey Road"));
    Type(u"zz", 'Z');
    EXPECT_TRUE(WindowGetText(list.edit).Equals(u"zz")) << "no item: the text stays";
    Type(u"ab", kVkLeft);
    EXPECT_TRUE(WindowGetText(list.edit).Equals(u"ab")) << "other keys don't complete";
}

TEST_F(DropListTest, ReturnAcceptsACompletionAndLeavingDropsOneNotAccepted) {
    Type(u"og", 'G');
    WindowSend(list.edit, kWmKeyDown, kVkReturn, 0);
    int32_t start = 0, end = 0;
    Selection(start, end);
    EXPECT_EQ(start, end) << "accepted: the selection collapsed";
    EXPECT_FALSE(list.autoCompletePending);
    EXPECT_TRUE(WindowGetText(list.edit).Equals(u"Ogg Vorbis"));
    // A Return with nothing to accept waits for its key-up to move on.
    WindowSend(list.edit, kWmKeyDown, kVkReturn, 0);
    EXPECT_TRUE(list.autoCompletePending);
    WindowSend(list.edit, kWmKeyUp, kVkReturn, 0);
    EXPECT_FALSE(list.autoCompletePending);
    // A completion not accepted is dropped when the field loses the focus.
    Type(u"ab", 'B');
    WindowSend(list.edit, kWmKillFocus, 0, 0);
    // The item's text had replaced the field, so what stays is its start.
    EXPECT_TRUE(WindowGetText(list.edit).Equals(u"Ab")) << WindowGetText(list.edit).ToUtf8();
}

// Rows with coloured runs: each run stands behind the one before, in its
// colour; a selected row has the selection behind it. The combo asks its
// own handling to paint a row, as its list does.
TEST_F(DropListTest, RowsPaintTheirRunsOneBehindTheOtherInTheirColours) {
    int32_t item = list.AddItem(u"FLAC -8");
    list.AddRun(item, u"WWWW", 0x0000FF);  // red
    list.AddRun(item, u"WWWW", 0xFF0000);  // blue
    clImageHandle image = CreateImage(200, 20);
    clCanvas* canvas = CanvasOnImage(image);
    clDrawItem row;
    row.itemId = item;
    row.item = list.control;
    row.canvas = canvas;
    row.rect = clRect{0, 0, 200, 20};
    EXPECT_NE(WindowSend(list.control, kWmDrawItem, 5, reinterpret_cast<intptr_t>(&row)), 0);
    clFontSpec font;
    font.height = 13;
    canvas->SetFont(font);
    int32_t runWidth = canvas->MeasureText(clString(u"WWWW")).width;
    delete canvas;
    auto inks = [&](int32_t from, int32_t to, uint32_t color) {
        for (int32_t x = from; x < to; ++x) {
            for (int32_t y = 0; y < 20; ++y) {
                if (NearColor(ImagePixel(image, x, y), color, 60)) return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(inks(2, 2 + runWidth, 0x0000FF));
    EXPECT_FALSE(inks(2, 2 + runWidth, 0xFF0000));
    EXPECT_TRUE(inks(2 + runWidth, 2 + 2 * runWidth, 0xFF0000));
    EXPECT_TRUE(NearColor(ImagePixel(image, 190, 10), 0xFFFFFF, 2)) << "an unselected row is white";
    row.itemState = kOdsSelected;
    canvas = CanvasOnImage(image);
    row.canvas = canvas;
    WindowSend(list.control, kWmDrawItem, 5, reinterpret_cast<intptr_t>(&row));
    delete canvas;
    EXPECT_TRUE(NearColor(ImagePixel(image, 190, 10), list.selectionColor, 2));
    DestroyImage(image);
}
