// XTreeView: items under items with their values and icons, walking the
// roots, expanding all of them, and the notifications a form gets.
#include "toolkit/treeview.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/toolkittest.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

class RecordingTree : public XTreeView {
public:
    std::string events;
    void OnSelChanged(const clTreeItem& item, const clTreeItem&) override {
        events += std::string("sel=") + clString(TreeItemText(item)).ToUtf8() + " ";
    }
    void OnRightClick(clPoint) override { events += "right "; }
    void OnItemExpanded(const clTreeItem& item, bool expanded) override {
        events += std::string(expanded ? "open=" : "shut=") + clString(TreeItemText(item)).ToUtf8() + " ";
    }
};

}  // namespace

TEST(XTreeView, ItemsNestWalkInOrderAndExpandAll) {
    XWindow form;
    ASSERT_TRUE(form.Create(u"Tree", clRect::Sized(10, 10, 400, 300), kWsPopup | kWsVisible, 0, nullptr));
    RecordingTree tree;
    ASSERT_TRUE(tree.Create(form.windowHandle, 1034, clRect::Sized(5, 5, 380, 280)));
    clImageHandle icons[3] = {CreateImage(16, 16), CreateImage(16, 16), CreateImage(16, 16)};
    TreeSetImages(tree.controlHandle, icons, 3, 16);
    for (clImageHandle icon : icons) DestroyImage(icon);
    clTreeItem first = tree.InsertItem(u"Error converting to FLAC, 'a.wav'", 0, 0, clTreeItem{}, 7);
    clTreeItem second = tree.InsertItem(u"Error converting to FLAC, 'b.wav'", 0, 0, clTreeItem{}, 8);
    tree.InsertItem(u"line one", 2, 2, first, 0);
    tree.InsertItem(u"", 2, 2, first, 0);
    tree.InsertItem(u"line of b", 2, 2, second, 0);
    EXPECT_EQ(TreeCount(tree.controlHandle), 5);
    clTreeItem root = TreeFirstChild(tree.controlHandle, clTreeItem{});
    ASSERT_TRUE(root.IsValid());
    EXPECT_EQ(TreeItemValue(root), 7u);
    EXPECT_EQ(TreeItemImage(root), 0);
    clTreeItem child = TreeFirstChild(tree.controlHandle, root);
    EXPECT_TRUE(TreeItemText(child).Equals(u"line one"));
    EXPECT_TRUE(TreeItemText(TreeNextSibling(child)).IsEmpty());
    EXPECT_FALSE(TreeNextSibling(TreeNextSibling(child)).IsValid());
    clTreeItem next = TreeNextSibling(root);
    EXPECT_EQ(TreeItemValue(next), 8u);
    EXPECT_FALSE(TreeNextSibling(next).IsValid());
    EXPECT_FALSE(TreeIsExpanded(root));
    tree.ExpandAll(true);
    EXPECT_TRUE(TreeIsExpanded(root));
    EXPECT_TRUE(TreeIsExpanded(next));
    EXPECT_NE(tree.events.find("open=Error converting to FLAC, 'b.wav'"), std::string::npos) << tree.events;
    EXPECT_FALSE(TreeItemRect(TreeFirstChild(tree.controlHandle, next)).IsEmpty()) << "shown once expanded";
    tree.ExpandAll(false);
    EXPECT_FALSE(TreeIsExpanded(root));
    EXPECT_TRUE(TreeItemRect(TreeFirstChild(tree.controlHandle, next)).IsEmpty());
    tree.events.clear();
    TreeSelect(next);
    EXPECT_EQ(tree.events, "sel=Error converting to FLAC, 'b.wav' ");
    EXPECT_EQ(TreeItemValue(TreeSelected(tree.controlHandle)), 8u);
    clRect place = TreeItemRect(root);
    clPoint at{place.left + 20, place.top + place.Height() / 2};
    EXPECT_EQ(TreeItemValue(TreeHitTest(tree.controlHandle, at)), 7u);
    WindowPost(tree.controlHandle, kWmRButtonUp, 0, clMakeLParam(at.x, at.y));
    WindowSend(tree.controlHandle, kWmRButtonDown, kMkRButton, clMakeLParam(at.x, at.y));
    Pump();
    EXPECT_NE(tree.events.find("right"), std::string::npos) << tree.events;
    tree.DeleteAll();
    EXPECT_EQ(TreeCount(tree.controlHandle), 0);
    SaveGrabIfFailed(form.windowHandle);
}
