#include "foundation/settings.h"

#include <gtest/gtest.h>

#include <set>

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "tests/support/testfolder.h"

namespace {

// Each test works below a key of its own, removed afterwards.
class Settings : public ::testing::Test {
protected:
    clString root;
    void SetUp() override {
        root = clString::Formatted(u"Software\\QuillotoneTests\\%S-%s",
                                   ::testing::UnitTest::GetInstance()->current_test_info()->name(),
                                   GetProcessGuidText().text);
        SetSettingsRoot(clHiveCurrentUser, root.text);
    }
    void TearDown() override {
        DeleteSettingKeyTree(u"Software\\QuillotoneTests", GetFileName(root, WindowsPathSyntax()).text);
    }
    clString Sub(const char16_t* name) { return clString(clString(root.text, u"\\").text, name); }
};

}  // namespace

TEST_F(Settings, NumbersAndTextsRoundTripAndMissingValuesAreDefaults) {
    EXPECT_EQ(GetSettingNumber(u"Missing"), 0u);
    EXPECT_EQ(U(GetSettingText(u"Missing")), u"");
    EXPECT_FALSE(SettingExists(u"Missing"));
    EXPECT_TRUE(SetSettingNumber(0xFFFFFFFFu, u"Big"));
    EXPECT_EQ(GetSettingNumber(u"Big"), 0xFFFFFFFFu);
    EXPECT_TRUE(SetSettingText(clString(u"Caf\u00e9 \U0001F3B5"), u"Text"));
    EXPECT_EQ(U(GetSettingText(u"Text")), u"Caf\u00e9 \U0001F3B5");
    EXPECT_TRUE(SettingExists(u"Text"));
    EXPECT_TRUE(SetSettingText(clString(), u"Empty"));
    EXPECT_TRUE(SettingExists(u"Empty"));
    EXPECT_EQ(U(GetSettingText(u"Empty")), u"");
}

TEST_F(Settings, WrongTypesReadAsDefaults) {
    SetSettingText(clString(u"12"), u"TextValue");
    EXPECT_EQ(GetSettingNumber(u"TextValue"), 0u);
    SetSettingNumber(12, u"NumberValue");
    EXPECT_EQ(U(GetSettingText(u"NumberValue")), u"");
    SetSettingData(u"%PATH%", 14, clRegExpandSz, u"Expand");
    EXPECT_EQ(U(GetSettingText(u"Expand")), u"%PATH%");  // never expanded
    unsigned char eight[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    SetSettingData(eight, 8, clRegBinary, u"Eight");
    unsigned char out[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    EXPECT_TRUE(GetSetting64(u"Eight", out));
    EXPECT_EQ(out[7], 8);
    EXPECT_FALSE(GetSetting64(u"NumberValue", out));
    EXPECT_EQ(out[0], 0);
}

TEST_F(Settings, TextWithEmbeddedTerminatorReadsToIt) {
    const char16_t text[] = u"ab\0cd";
    SetSettingData(text, sizeof text, clRegSz, u"Cut");
    EXPECT_EQ(U(GetSettingText(u"Cut")), u"ab");
}

TEST_F(Settings, KeysAndNamesIgnoreCaseAndMayHoldBlanksAndQuotes) {
    clString key = Sub(u"Profile \"Best\" FLAC");
    SetSettingNumber(5, u"Level", 0, key.text);
    clString upper = key.Upper();
    EXPECT_EQ(GetSettingNumber(u"LEVEL", 0, upper.text), 5u);
    SetSettingNumber(6, u"level", 0, key.text);
    EXPECT_EQ(GetSettingNumber(u"Level", 0, key.text), 6u);
    // A given key path replaces the root, and hive 0 is the root hive.
    EXPECT_EQ(GetSettingNumber(u"Level"), 0u);
}

TEST_F(Settings, EnumerateAndDeleteTrees) {
    SetSettingNumber(1, u"v", 0, Sub(u"qvtCodec\\FLAC").text);
    SetSettingNumber(1, u"v", 0, Sub(u"qvtCodec\\MP3 (Lame)\\Deep").text);
    GetSettingNumber(u"v", 0, Sub(u"qvtCodec\\Read Only Made").text);  // opening creates the key
    clStringList names;
    ASSERT_TRUE(EnumSettingKeys(Sub(u"qvtCodec").text, names));
    ASSERT_EQ(names.Count(), 3);
    EXPECT_EQ(U(names[0]), u"FLAC");
    EXPECT_EQ(U(names[1]), u"MP3 (Lame)");
    DeleteSettingKeyTree(Sub(u"qvtCodec").text, u"");
    DeleteSettingKeyTree(Sub(u"qvtCodec").text, nullptr);
    EnumSettingKeys(Sub(u"qvtCodec").text, names);
    EXPECT_EQ(names.Count(), 3);
    DeleteSettingKeyTree(Sub(u"qvtCodec").text, u"mp3 (lame)");
    EnumSettingKeys(Sub(u"qvtCodec").text, names);
    EXPECT_EQ(names.Count(), 2);
    EXPECT_EQ(GetSettingNumber(u"v", 0, Sub(u"qvtCodec\\MP3 (Lame)\\Deep").text), 0u);
    DeleteSettingKeyTree(root.text, u"qvtCodec");
    EnumSettingKeys(root.text, names);
    EXPECT_EQ(names.Count(), 0);
}

TEST_F(Settings, ValuesAreListedAndDeletedOneByOne) {
    clString key = Sub(u"Values");
    SetSettingNumber(3, u"Count", 0, key.text);
    SetSettingText(clString(u"x"), u"Name", 0, key.text);
    SetSettingNumber(1, u"v", 0, Sub(u"Values\\Below").text);  // a sub-key is no value
    clStringList names;
    ASSERT_TRUE(EnumSettingValues(key.text, names));
    ASSERT_EQ(names.Count(), 2);
    // The store's order is its own: as a set.
    std::set<std::u16string> seen = {U(names[0]), U(names[1])};
    EXPECT_EQ(seen, (std::set<std::u16string>{u"Count", u"Name"}));
    EXPECT_TRUE(DeleteSettingValue(u"count", key.text)) << "names ignore case";
    EXPECT_FALSE(DeleteSettingValue(u"Count", key.text)) << "gone already";
    EXPECT_FALSE(SettingExists(u"Count", 0, key.text));
    EXPECT_EQ(U(GetSettingText(u"Name", 0, key.text)), u"x");
    EnumSettingValues(key.text, names);
    ASSERT_EQ(names.Count(), 1);
    EXPECT_EQ(GetSettingNumber(u"v", 0, Sub(u"Values\\Below").text), 1u);
}

TEST_F(Settings, AWriteIsSeenByTheNextReadOfAnotherProcess) {
    clString program = JoinPath(GetProgramFolder(), clString(u"qv_testhelper"));
    program.Append(PlatformExecutableSuffix());
    TestFolder dir;
    for (uint32_t value : {7u, 42u, 0u}) {
        SetSettingNumber(value, u"Shared");
        clStringList args;
        args.Add(u"setting-get");
        args.Add(root);
        args.Add(u"Shared");
        int code = -1;
        ASSERT_TRUE(PlatformRunProcess(program, args, dir.File(u"out.txt"), &code));
        EXPECT_EQ(code, static_cast<int>(value));
    }
}
