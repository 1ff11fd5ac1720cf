#include "plugins/taglist.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/testfolder.h"

namespace {

std::string U32(uint32_t v) {
    std::string s(4, '\0');
    for (int i = 0; i < 4; ++i) s[i] = static_cast<char>((v >> (8 * i)) & 0xFF);
    return s;
}

// One entry: size, name and value with their NULs, then binary bytes.
std::string Entry(const std::u16string& name, const std::u16string& value, const std::string& binary = "") {
    std::string body = Utf16Le(name) + std::string(2, '\0') + Utf16Le(value) + std::string(2, '\0') + binary;
    return U32(static_cast<uint32_t>(body.size() + 4)) + body;
}

void Load(clTagList& list, const std::string& block) { list.LoadBlock(block.data(), block.size()); }

}  // namespace

TEST(TagList, FirstOfANameWinsAndLookupsIgnoreCase) {
    clTagList list;
    list.AddTag(u"Artist", u"One\rTwo");
    list.AddTag(u"artist", u"Hidden");
    list.AddTag(u"title", u"   ");
    EXPECT_EQ(U(list.GetTagValue(u"ARTIST")), u"One\rTwo");
    EXPECT_EQ(U(FirstValue(list.GetTagValue(u"artist"))), u"One");
    EXPECT_EQ(U(list.GetTagValue(u"title")), u"   ");
    EXPECT_EQ(list.FindTag(u"album"), nullptr);
    EXPECT_EQ(U(list.GetTagValue(u"album")), u"");
    EXPECT_TRUE(list.RemoveTag(u"ARTIST"));
    EXPECT_EQ(list.Count(), 1);
    EXPECT_FALSE(list.RemoveTag(u"artist"));
}

TEST(TagList, MergeMissingNeverBeatsWhatIsThere) {
    clTagList file;
    file.AddTag(u"artist", u"From File");
    clTagList extras;
    extras.AddTag(u"ARTIST", u"Extra");
    clTagItem& picture = extras.AddTag(u"cover", u"front");
    picture.binary.Resize(3, false, true, 0);
    picture.value.tag = 9;
    file.MergeMissing(extras);
    ASSERT_EQ(file.Count(), 2);
    EXPECT_EQ(U(file.GetTagValue(u"artist")), u"From File");
    EXPECT_EQ(file[1].binary.size, 3u);
    EXPECT_EQ(file[1].value.tag, 9u);
}

TEST(TagList, NumberPartAndFirstValue) {
    EXPECT_EQ(U(NumberPart(clString(u" 5 / 15 "), false)), u"5");
    EXPECT_EQ(U(NumberPart(clString(u" 5 / 15 "), true)), u"15");
    EXPECT_EQ(U(NumberPart(clString(u"7"), true)), u"");
    EXPECT_EQ(U(NumberPart(clString(u"7"), false)), u"7");
    EXPECT_EQ(U(FirstValue(clString(u"a\rb\rc"))), u"a");
}

TEST(TagBlock, RoundTripWithNonAsciiMultiValueAndPicture) {
    clTagList list;
    list.AddTag(u"artist", u"Bj\u00f6rk\rGuest \U0001F3B5");
    list.AddTag(u"", u"");
    clTagItem& cover = list.AddTag(u"cover art (front)", u"image/jpeg");
    cover.binary.Resize(5000, false, true, 0);
    cover.binary.data[4999] = 0x7F;
    clByteBuffer block;
    ASSERT_TRUE(list.SaveBlock(block));
    EXPECT_EQ(block.size, 4u + (4 + 2 * (7 + 15)) + (4 + 2 * 2) + (4 + 2 * (18 + 11) + 5000));
    clTagList back;
    back.LoadBlock(block.data, block.size);
    ASSERT_EQ(back.Count(), 3);
    EXPECT_EQ(U(back[0].value), u"Bj\u00f6rk\rGuest \U0001F3B5");
    EXPECT_EQ(U(back[1].name), u"");
    EXPECT_EQ(back[2].binary.size, 5000u);
    EXPECT_EQ(back[2].binary.data[4999], 0x7F);
}

TEST(TagBlock, BadBlocksStopWithoutErrorKeepingWhatCameBefore) {
    std::string good = Entry(u"artist", u"A");
    struct Case {
        const char* what;
        std::string block;
        int64_t items;
    } cases[] = {
        {"three bytes", "\x01\x00\x00", 0},
        {"count zero", U32(0) + good, 0},
        {"count of 2^31", U32(0x80000000u) + good, 0},
        {"count larger than the entries", U32(5) + good, 1},
        {"negative size", U32(2) + good + U32(0xFFFFFFF0u) + "xxxx", 1},
        {"size beyond the block", U32(2) + good + U32(1000) + "xxxx", 1},
        {"size that overflows", U32(2) + good + U32(0x7FFFFFFFu) + "xxxx", 1},
        {"size too small to hold itself", U32(3) + good + U32(0) + good, 1},
        {"truncated size field", U32(2) + good + "\x10\x00", 1},
    };
    for (const Case& c : cases) {
        clTagList list;
        Load(list, c.block);
        EXPECT_EQ(list.Count(), c.items) << c.what;
    }
}

TEST(TagBlock, NameWithoutNulAndEntryEndingAfterItsName) {
    // No NUL in the entry: the name is empty and the bytes are the value.
    std::string noNul = Utf16Le(u"abc");
    clTagList a;
    Load(a, U32(1) + U32(static_cast<uint32_t>(noNul.size() + 4)) + noNul);
    ASSERT_EQ(a.Count(), 1);
    EXPECT_EQ(U(a[0].name), u"");
    EXPECT_EQ(U(a[0].value), u"abc");
    // An entry that ends right after its name is kept with an empty value,
    // and reading stops there.
    std::string nameOnly = Utf16Le(u"genre") + std::string(2, '\0');
    clTagList b;
    Load(b, U32(2) + U32(static_cast<uint32_t>(nameOnly.size() + 4)) + nameOnly + Entry(u"x", u"y"));
    ASSERT_EQ(b.Count(), 1);
    EXPECT_EQ(U(b[0].name), u"genre");
    EXPECT_EQ(U(b[0].value), u"");
}
