// The options window over the real encoder libraries: the encoder list and
// the entry's settings, pages shown and saved, the output list with its
// commands and coloured rows, profiles made and deleted, and files that
// arrive by a drop or from a second process while it is open.
#include "frontend/frmconverttoopt.h"

#include <gtest/gtest.h>

#include <cstring>

#include "engine/globals.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "foundation/utf.h"
#include "tests/codecs/wavefiles.h"
#include "tests/support/testfolder.h"
#include "tests/support/toolkittest.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"
#include "toolkit/dialogs.h"

namespace {

class OptionsTest : public ::testing::Test {
protected:
    TestFolder dir;
    clConversionInput input;

    OptionsTest() {
        SetSettingsRoot(kSettingsHive, kSettingsRoot);
        DeleteSettingKeyTree(kSettingsRoot, kEntriesKeyName);
        for (int n = 0; n < 12; ++n) DeleteSettingValue(clString::Formatted(u"qvtLastFolder-%d", n).text, kSettingsRoot);
        DeleteSettingValue(u"qvtAllowProfiles", kSettingsRoot);
        globalEncoder.Clear();
        globalProfile.Clear();
        ScanDecoderExtensions();
    }
    void ScanDecoderExtensions() {
        input.extensions.Clear();
        input.extensions.Add(u".wav");
        input.extensions.Add(u".flac");
    }
    clString Source(const char16_t* name) {
        clString path = dir.File(name);
        WriteBytes(path, ToneWave(1, 0.5));
        return path;
    }
    static clString Stored(const char16_t* entry, const char16_t* value) {
        return GetSettingText(value, settingsRootHive, EntryKeyPath(clString(entry), clString()).text);
    }
    // Chooses a row of the encoder list as the user does.
    static void ChooseEncoder(frmConvertToOpt& form, const char16_t* text) {
        int32_t row = form.cmbEncoders.FindExact(clString(text));
        ASSERT_GE(row, 0);
        form.cmbEncoders.SetSelection(row);
        form.OnCommand(kIdEncoderList, form.cmbEncoders.control, kCbnSelChange);
    }
    static void ChooseOutputRow(frmConvertToOpt& form, int32_t row) {
        form.cmbOutToFolder.SetSelection(row);
        form.OnCommand(kIdOutputList, form.cmbOutToFolder.control, kCbnSelChange);
    }
};

clString folderAnswer;
clString AnswerFolder(frmConvertToOpt&) { return folderAnswer; }

}  // namespace

// First start: FLAC is chosen, the location is the source's own folder
// with its own name, and the file count reads the sources.
TEST_F(OptionsTest, AFirstStartShowsFlacBesideTheSources) {
    input.AddSource(Source(u"one.wav"), true);
    input.AddSource(Source(u"two.wav"), true);
    frmConvertToOpt form(input);
    ASSERT_TRUE(form.Open(nullptr));
    EXPECT_EQ(U(form.currentEntry), u"FLAC");
    EXPECT_EQ(U(globalEncoder), u"FLAC");
    EXPECT_EQ(U(form.SelectedOutput()), u"[origdrive]{_._}[origpath]\\[origfilename]");
    EXPECT_EQ(U(WindowGetText(form.fileButton)), u"2 Files");
    EXPECT_EQ(form.cmbOutToFolder.fixedRows, kOutputCommands);
    EXPECT_EQ(U(form.cmbOutToFolder.ItemText(kOutputSourceFolders)), u"Existing Source Folder(s)");
    // Real encoders first, the multi encoder ahead of them; the pseudo
    // encoders after a line.
    EXPECT_EQ(U(form.cmbEncoders.ItemText(0)), u"[Multi Encoder]");
    SaveGrabIfFailed(form.windowHandle);
}

// What the window leaves in the store: the page's option string, the
// location and the last entry, for the conversion to read.
TEST_F(OptionsTest, ConvertSavesTheEntryTheLocationAndTheLastChoice) {
    input.AddSource(Source(u"one.wav"), true);
    frmConvertToOpt form(input);
    folderAnswer = dir.File(u"out");
    form.askFolder = AnswerFolder;
    ASSERT_TRUE(form.Open(nullptr));
    ChooseEncoder(form, u"MP3 (Lame)");
    EXPECT_EQ(U(form.currentEntry), u"MP3 (Lame)");
    ChooseOutputRow(form, kOutputSingleFolder);
    clString expected(folderAnswer);
    AddBackslash(expected);
    expected.Append(u"{_._}[origfilename]");
    EXPECT_EQ(U(form.SelectedOutput()), U(expected));
    form.OnIdOk();
    EXPECT_EQ(form.result, 1);
    EXPECT_EQ(U(GetSettingText(kLastEntryPrefix)), u"MP3 (Lame)");
    clString folder(folderAnswer);
    AddBackslash(folder);
    EXPECT_EQ(U(Stored(u"MP3 (Lame)", kEntryFolderSetting.name)), U(folder));
    EXPECT_EQ(U(Stored(u"MP3 (Lame)", kEntryNamingSetting.name)), u"[origfilename]");
    EXPECT_EQ(GetSettingNumber(kEntryOutputModeSetting.name, settingsRootHive,
                               EntryKeyPath(clString(u"MP3 (Lame)"), clString()).text),
              2u);
    // The FLAC entry shown first kept its own location.
    EXPECT_EQ(U(Stored(u"FLAC", kEntryFolderSetting.name)), u"[origdrive]");
}

// The pictures for the screenshots: each encoder's page, and a long
// naming rule with functions in the output list.
TEST_F(OptionsTest, PicturesOfEachEncodersPage) {
    input.AddSource(Source(u"one.wav"), true);
    SetSettingNumber(2, kEntryOutputModeSetting.name, settingsRootHive, EntryKeyPath(clString(u"Opus"), clString()).text);
    SetSettingText(clString(u"/home/user/Music/Converted/"), kEntryFolderSetting.name, settingsRootHive,
                   EntryKeyPath(clString(u"Opus"), clString()).text);
    SetSettingText(clString(u"[album artist]\\[IFVALUE]year|[year] - |[][album]\\[track] [UPPER][title][]"),
                   kEntryNamingSetting.name, settingsRootHive, EntryKeyPath(clString(u"Opus"), clString()).text);
    frmConvertToOpt form(input);
    ASSERT_TRUE(form.Open(nullptr));
    for (const char* name : {"FLAC", "MP3 (Lame)", "Ogg Vorbis", "Opus", "Wave", "AIFF"}) {
        clString entry;
        Utf8ToString(name, static_cast<int64_t>(std::strlen(name)), entry);
        if (form.cmbEncoders.FindExact(entry) < 0) continue;
        ChooseEncoder(form, entry.text);
        Pump();
        std::string file = std::string("options-") + name;
        for (char& c : file) {
            if (c == ' ' || c == '(' || c == ')') c = '_';
        }
        SaveGrab(form.windowHandle, file);
    }
}
