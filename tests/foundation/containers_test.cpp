#include <gtest/gtest.h>

#include "foundation/bytebuffer.h"
#include "foundation/pointerarray.h"
#include "foundation/stringlist.h"
#include "tests/support/testfolder.h"

TEST(PointerArray, GrowthRunsFromInlineStorage) {
    clPointerArray a;
    int values[300];
    for (int i = 0; i < 16; ++i) a.Add(&values[i]);
    EXPECT_EQ(a.items, a.inlineItems);
    a.Add(&values[16]);
    EXPECT_NE(a.items, a.inlineItems);
    EXPECT_EQ(a.capacity, 48);
    for (int i = 17; i < 49; ++i) a.Add(&values[i]);
    EXPECT_EQ(a.capacity, 112);
    EXPECT_EQ(a.growStep, 128);
    for (int i = 0; i < 49; ++i) EXPECT_EQ(a[i], &values[i]);
    a.Reset();
    EXPECT_EQ(a.items, a.inlineItems);
    EXPECT_EQ(a.capacity, 16);
}

TEST(PointerArray, InsertAndRemoveAtEdges) {
    clPointerArray a;
    int x = 1, y = 2, z = 3;
    a.Add(&x);
    a.InsertAt(-1, &z);
    a.InsertAt(0, &y);
    a.InsertAt(99, &x);
    ASSERT_EQ(a.count, 4);
    EXPECT_EQ(a[0], &y);
    EXPECT_EQ(a[2], &z);
    a.RemoveAt(7);
    a.RemoveAt(-1);
    EXPECT_EQ(a.count, 4);
    a.RemoveAt(0);
    EXPECT_EQ(a[0], &x);
}

TEST(StringList, SortIgnoringCaseAndManyItems) {
    clStringList list;
    const char16_t* words[] = {u"pear", u"Apple", u"banana", u"apple2", u"Cherry", u"b"};
    for (auto* w : words) list.Add(w);
    list.Sort(true);
    const char16_t* sorted[] = {u"Apple", u"apple2", u"b", u"banana", u"Cherry", u"pear"};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(U(list[i]), sorted[i]);
    clStringList many;
    for (int i = 5000; i > 0; --i) many.Add(clString::Formatted(u"%05d", (i * 7919) % 5000).text);
    many.Sort(false);
    for (int64_t i = 1; i < many.Count(); ++i) EXPECT_LE(many[i - 1].Compare(many[i]), 0);
}

TEST(StringList, FindAddAllAndTags) {
    clStringList list;
    list.Add(u"One", 11);
    list.Add(u"two", 22);
    int64_t index = -1;
    EXPECT_TRUE(list.Find(u"TWO", true, &index));
    EXPECT_EQ(index, 1);
    EXPECT_FALSE(list.Find(u"TWO", false));
    clStringList copy;
    copy.AddAll(list);
    EXPECT_EQ(copy[1].tag, 22u);
    copy.RemoveAt(5);
    copy.RemoveAt(0);
    EXPECT_EQ(U(copy[0]), u"two");
}

TEST(StringList, SplitLines_CrEndsLinesLfAloneIsText) {
    struct Case {
        const char16_t* text;
        std::vector<std::u16string> items;
    } cases[] = {
        {u"a\nb", {u"a\nb"}},
        {u"a\r\nb", {u"a", u"b"}},
        {u"a\r\n\r\nb\r\n", {u"a", u"", u"b"}},
        {u"a\r\r\n\nb", {u"a", u"", u"b"}},
        {u"", {}},
        {u"\r", {u""}},
    };
    for (const Case& c : cases) {
        clStringList list;
        list.SplitLines(clString(c.text));
        ASSERT_EQ(list.Count(), static_cast<int64_t>(c.items.size())) << clString(c.text).ToUtf8();
        for (size_t i = 0; i < c.items.size(); ++i) EXPECT_EQ(U(list[i]), c.items[i]);
    }
}

TEST(StringList, Split_ByDelimiter) {
    struct Case {
        const char16_t* text;
        const char16_t* delimiter;
        std::vector<std::u16string> items;
    } cases[] = {
        {u"a;", u";", {u"a", u""}}, {u"a;;b", u";", {u"a", u"", u"b"}},    {u"abc", u";", {u"abc"}},
        {u";a", u";", {u"", u"a"}}, {u"a--b--", u"--", {u"a", u"b", u""}}, {u"", u";", {}},
        {u"abc", u"", {}},
    };
    for (const Case& c : cases) {
        clStringList list;
        list.Split(c.text, c.delimiter);
        ASSERT_EQ(list.Count(), static_cast<int64_t>(c.items.size())) << clString(c.text).ToUtf8();
        for (size_t i = 0; i < c.items.size(); ++i) EXPECT_EQ(U(list[i]), c.items[i]);
    }
}

TEST(StringList, MultiString_RoundTripWithEmptyItems) {
    clStringList list;
    list.Add(u"first");
    list.Add(u"");
    list.Add(u"\u00e9t\u00e9");
    clByteBuffer block;
    ASSERT_TRUE(list.PackMultiString(block));
    EXPECT_EQ(block.size, (6 + 8 + 4 + 1) * 2u);
    clStringList back;
    back.UnpackMultiString(block.data, block.size);
    ASSERT_EQ(back.Count(), 3);
    EXPECT_EQ(U(back[1]), u"");
    EXPECT_EQ(U(back[2]), u"\u00e9t\u00e9");
    clStringList none;
    clByteBuffer empty;
    none.PackMultiString(empty);
    EXPECT_EQ(empty.size, 4u);
    back.UnpackMultiString("a\0b", 3);  // an odd length: the half unit is ignored
    EXPECT_EQ(back.Count(), 1);
}

TEST(ByteBuffer, ResizeExtraCursorsAndMove) {
    clByteBuffer b;
    ASSERT_TRUE(b.Resize(10, false, true, 6));
    EXPECT_EQ(b.size, 16u);
    EXPECT_EQ(b.capacity, 16u);
    b.writePos = 12;
    b.readPos = 14;
    ASSERT_TRUE(b.Resize(8, true, false, 0));
    EXPECT_EQ(b.size, 8u);
    EXPECT_EQ(b.writePos, 8u);
    EXPECT_EQ(b.readPos, 8u);
    clByteBuffer c;
    c.Assign(b);
    EXPECT_EQ(c.writePos, 8u);
    clByteBuffer d;
    d.MoveFrom(c);
    EXPECT_EQ(d.size, 8u);
    EXPECT_EQ(c.data, nullptr);
    EXPECT_EQ(c.size, 0u);
}

TEST(ByteBuffer, ImpossibleSizeFailsWithoutThrowing) {
    clByteBuffer b;
    b.Resize(4, false, true, 0);
    EXPECT_FALSE(b.Resize(UINT64_MAX - 8, true, false, 0));
    EXPECT_EQ(b.size, 0u);
    EXPECT_EQ(b.capacity, 0u);
}
