// The encoder list's rows over the test encoders ("1st Encoder",
// "[Multi encoder]", "qvtest_encoder", "Zeta", "[ReplayGain]"), and what
// belongs to an entry in the store: profiles and output texts.
#include "plugins/encoderentries.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/specialfolder.h"
#include "foundation/stringlist.h"
#include "tests/support/testfolder.h"

namespace {

class EncoderEntriesTest : public ::testing::Test {
protected:
    EncoderEntriesTest() {
        SetSettingsRoot(kSettingsHive, kSettingsRoot);
        DeleteSettingKeyTree(kSettingsRoot, kEntriesKeyName);
        DeleteSettingValue(u"qvtAllowProfiles", kSettingsRoot);
        DeleteSettingValue(u"HiddenEncoders", kSettingsRoot);
    }
    ~EncoderEntriesTest() override { DeleteSettingKeyTree(kSettingsRoot, kEntriesKeyName); }
    static std::vector<std::u16string> Texts(const clEncoderRows& rows) {
        std::vector<std::u16string> texts;
        for (int64_t i = 0; i < rows.Count(); ++i) texts.push_back(U(rows[i].text));
        return texts;
    }
    static void StoreProfile(const char16_t* entry) {
        SetSettingText(clString(u"-x=\"1\""), kEntryOptionsSetting.name, settingsRootHive,
                       EntryKeyPath(clString(entry), clString()).text);
    }
};

}  // namespace

// No FLAC among the test encoders and nothing chosen: row 0, and the
// choice becomes its text. One line only, ahead of the first bracketed
// name below row 0.
TEST_F(EncoderEntriesTest, RowsAreEncodersThenFetchableOnesThenCommandsAndProfiles) {
    clEncoderRows rows;
    clString selected;
    EXPECT_EQ(BuildEncoderRows(rows, selected), 0);
    EXPECT_EQ(U(selected), u"1st Encoder");
    EXPECT_EQ(Texts(rows), (std::vector<std::u16string>{u"1st Encoder", u"[Multi encoder]", u"qvtest_encoder", u"Zeta",
                                                        u"[ReplayGain]"}));
    EXPECT_TRUE(rows[1].separatorAbove) << "the multi encoder isn't in row 0, so the line goes ahead of it";
    EXPECT_FALSE(rows[4].separatorAbove);
    EXPECT_EQ(rows[2].kind, kEntryInstalled);
    selected = u"Zeta";
    EXPECT_EQ(BuildEncoderRows(rows, selected), 3);
    EXPECT_EQ(U(selected), u"Zeta");
    SetSettingText(clString(u"zeta:1ST ENCODER"), u"HiddenEncoders");
    EXPECT_EQ(BuildEncoderRows(rows, selected), 0) << "a hidden choice falls back to row 0";
    EXPECT_EQ(U(selected), u"[Multi encoder]");
    DeleteSettingValue(u"HiddenEncoders", kSettingsRoot);

    // Fetchable encoders follow in grey unless the list has them (ignoring
    // case); then the profile commands when allowed, then the stored
    // profiles, which are listed whether allowed or not, and whose encoder
    // may be hidden. One test with the rows above: the list of fetchable
    // encoders is a file of the program folder, which tests running at
    // once would share.
    WriteBytes(JoinPath(GetProgramFolder(), clString(kSmartInstallFile)),
               ".xyz\r\nNew Codec\r\nhttps://example.org/new\n.zz\nQVTEST_encoder\nhttps://example.org/zeta\r"
               ".ro\r\nA read only one\r\nhttps://example.org/ro\r\n");
    StoreProfile(u"Small \"Zeta\"");
    SetSettingText(clString(u"zeta"), u"HiddenEncoders");
    selected = u"Small \"Zeta\"";
    int64_t chosen = BuildEncoderRows(rows, selected);
    std::vector<std::u16string> texts = Texts(rows);
    ASSERT_EQ(texts.size(), 6u);
    EXPECT_EQ(texts[4], u"New Codec");
    EXPECT_EQ(rows[4].kind, kEntryNotInstalled);
    EXPECT_EQ(rows[4].color, 0xA0A0A0u);
    EXPECT_EQ(U(rows[4].downloadUrl), u"https://example.org/new");
    EXPECT_EQ(U(rows[4].extension), u".xyz");
    EXPECT_EQ(texts[5], u"Small \"Zeta\"");
    EXPECT_EQ(rows[5].kind, kEntryProfile);
    EXPECT_EQ(chosen, 5);

    SetSettingNumber(1, u"qvtAllowProfiles");
    chosen = BuildEncoderRows(rows, selected);
    texts = Texts(rows);
    ASSERT_EQ(texts.size(), 8u);
    EXPECT_TRUE(rows[4].separatorBelow);
    EXPECT_EQ(texts[5], kCreateProfileRow);
    EXPECT_EQ(rows[5].kind, kEntryCreateProfile);
    EXPECT_EQ(rows[6].kind, kEntryDeleteProfile);
    EXPECT_EQ(chosen, 7);
    DeleteSettingValue(u"HiddenEncoders", kSettingsRoot);
    DeleteFileEx(JoinPath(GetProgramFolder(), clString(kSmartInstallFile)));
}

TEST_F(EncoderEntriesTest, ProfilesAreNamedByLabelAndEncoderAndTakenIgnoringCase) {
    clString entry = ProfileEntryText(clString(u"Small"), clString(u"Zeta"));
    EXPECT_EQ(U(entry), u"Small \"Zeta\"");
    EXPECT_TRUE(IsProfileEntry(entry));
    EXPECT_FALSE(IsProfileEntry(clString(u"Zeta")));
    StoreProfile(entry.text);
    SetSettingText(clString(u"x"), kEntryOptionsSetting.name, settingsRootHive,
                   EntryKeyPath(entry, clString(u"qvt")).text);
    StoreProfile(u"Zeta");
    clStringList profiles;
    ListProfiles(profiles);
    ASSERT_EQ(profiles.Count(), 1);
    EXPECT_TRUE(ProfileNameTaken(clString(u"SMALL \"zeta\""), profiles));
    EXPECT_FALSE(ProfileNameTaken(clString(u"Small \"Other\""), profiles)) << "one label for two encoders is allowed";
    EXPECT_FALSE(DeleteProfile(clString(u"Zeta"))) << "a plain encoder is no profile";
    EXPECT_TRUE(DeleteProfile(entry));
    ListProfiles(profiles);
    EXPECT_EQ(profiles.Count(), 0);
    EXPECT_FALSE(SettingExists(kEntryOptionsSetting.name, settingsRootHive, EntryKeyPath(entry, clString(u"qvt")).text))
        << "the additional profile below it went too";
}

// An output text is the folder, the marker and the naming; a text with the
// marker twice loses its naming.
TEST_F(EncoderEntriesTest, OutputTextsSplitAtTheMarkerAndSaveTheirMode) {
    clString folder, naming;
    SplitOutputText(clString(u"/music/{_._}[artist]\\[title]"), folder, naming);
    EXPECT_EQ(U(folder), u"/music/");
    EXPECT_EQ(U(naming), u"[artist]\\[title]");
    SplitOutputText(clString(u"/a/{_._}b{_._}c"), folder, naming);
    EXPECT_EQ(U(folder), u"/a/");
    EXPECT_EQ(U(naming), u"");
    EXPECT_EQ(U(JoinOutputText(clString(u"[origdrive]"), clString(u"[origfilename]"))), u"[origdrive]{_._}[origfilename]");

    clString key = EntryKeyPath(clString(u"Zeta"), clString());
    EXPECT_EQ(U(EntryOutputText(key)), u"[origdrive]{_._}[origpath]\\[origfilename]") << "nothing stored";
    TestFolder dir;
    const std::u16string out = U(dir.Path());
    ASSERT_TRUE(SaveEntryOutput(key, clString((out + u"{_._}[title]").c_str())));
    EXPECT_EQ(GetSettingNumber(kEntryOutputModeSetting.name, settingsRootHive, key.text), 2u);
    EXPECT_EQ(U(EntryOutputText(key)), out + u"{_._}[title]");
    ASSERT_TRUE(SaveEntryOutput(key, dir.Path()));
    EXPECT_EQ(GetSettingNumber(kEntryOutputModeSetting.name, settingsRootHive, key.text), 1u);
    // A folder without a naming keeps the source's path below it.
    EXPECT_EQ(U(EntryOutputText(key)), out + u"{_._}[origpath]\\[origfilename]");
}
