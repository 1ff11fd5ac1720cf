// The options window over the real encoder libraries: the encoder list and
// the entry's settings, pages shown and saved, the output list with its
// commands and coloured rows, profiles made and deleted, and files that
// arrive by a drop or from a second process while it is open.
#include "frontend/frmconverttoopt.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "engine/globals.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "foundation/utf.h"
#include "foundation/messagebox.h"
#include "foundation/platform/processinfo.h"
#include "frontend/dlgmultiitem.h"
#include "frontend/frmnewprofile.h"
#include "plugins/effectstring.h"
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
        ForgetChoices();
        globalEncoder.Clear();
        globalProfile.Clear();
        ScanDecoderExtensions();
    }
    // What the window remembers. On Windows the store is the registry the
    // other test programs share, so it goes again at the end.
    ~OptionsTest() override { ForgetChoices(); }
    static void ForgetChoices() {
        DeleteSettingKeyTree(kSettingsRoot, kEntriesKeyName);
        for (int n = 0; n < 12; ++n) DeleteSettingValue(clString::Formatted(u"qvtLastFolder-%d", n).text, kSettingsRoot);
        for (const char16_t* name : {u"qvtAllowProfiles", kLastEntryPrefix, u"LastAccessedFolder"}) {
            DeleteSettingValue(name, kSettingsRoot);
        }
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

// First start: FLAC where it is installed, else the first row; the
// location is the source's own folder with its own name, and the file
// count reads the sources.
TEST_F(OptionsTest, AFirstStartShowsFlacOrTheFirstRowBesideTheSources) {
    input.AddSource(Source(u"one.wav"), true);
    input.AddSource(Source(u"two.wav"), true);
    frmConvertToOpt form(input);
    ASSERT_TRUE(form.Open(nullptr));
    clString expected = form.cmbEncoders.FindExact(clString(u"FLAC")) >= 0 ? clString(u"FLAC") : form.cmbEncoders.ItemText(0);
    EXPECT_EQ(U(form.currentEntry), U(expected));
    EXPECT_EQ(U(globalEncoder), U(expected));
    EXPECT_EQ(U(form.SelectedOutput()), u"[origdrive]{_._}[origpath]\\[origfilename]");
    EXPECT_EQ(U(WindowGetText(form.fileButton)), u"2 Files");
    EXPECT_EQ(form.cmbOutToFolder.fixedRows, kOutputCommands);
    EXPECT_EQ(U(form.cmbOutToFolder.ItemText(kOutputSourceFolders)), u"Existing Source Folder(s)");
    EXPECT_EQ(U(form.cmbEncoders.ItemText(0)), u"[Multi Encoder]") << "the multi encoder heads the real encoders";
    EXPECT_EQ(U(WindowGetText(form.windowHandle)), u"Quillotone Track Converter");
    SaveGrabIfFailed(form.windowHandle);
    // A distributor's first line of OEM.txt (UTF-16) follows the name.
    clString oem = JoinPath(GetProgramFolder(), clString(u"OEM.txt"));
    WriteBytes(oem, "\xFF\xFE" + Utf16Le(u"Acme Edition\r\nsecond line\r\n"));
    frmConvertToOpt branded(input);
    ASSERT_TRUE(branded.Open(nullptr));
    DeleteFileEx(oem);
    EXPECT_EQ(U(WindowGetText(branded.windowHandle)), u"Quillotone Track Converter: Acme Edition");
}

// What the window leaves in the store: the page's option string, the
// location and the last entry, for the conversion to read; the entry left
// keeps its own location.
TEST_F(OptionsTest, ConvertSavesThePageTheLocationAndTheLastChoice) {
    input.AddSource(Source(u"one.wav"), true);
    frmConvertToOpt form(input);
    folderAnswer = dir.File(u"out");
    form.askFolder = AnswerFolder;
    ASSERT_TRUE(form.Open(nullptr));
    clString first = form.currentEntry;
    ChooseEncoder(form, u"AIFF");
    EXPECT_EQ(U(form.currentEntry), u"AIFF");
    clWindowHandle bits = form.settingsPage.ControlOf(u"bits");
    ASSERT_NE(bits, nullptr);
    EXPECT_EQ(U(ComboItemText(bits, ComboGetSelection(bits))), u"Same as the source");
    ComboSetSelection(bits, 3);  // 24-bit
    ChooseOutputRow(form, kOutputSingleFolder);
    clString folder(folderAnswer);
    AddBackslash(folder);
    EXPECT_EQ(U(form.SelectedOutput()), U(folder) + u"{_._}[origfilename]");
    form.OnIdOk();
    EXPECT_EQ(form.result, 1);
    EXPECT_EQ(U(GetSettingText(kLastEntryPrefix)), u"AIFF");
    EXPECT_EQ(U(Stored(u"AIFF", kEntryOptionsSetting.name)), u"-bits=\"24\"");
    EXPECT_EQ(U(Stored(u"AIFF", kEntryFolderSetting.name)), U(folder));
    EXPECT_EQ(U(Stored(u"AIFF", kEntryNamingSetting.name)), u"[origfilename]");
    EXPECT_EQ(GetSettingNumber(kEntryOutputModeSetting.name, settingsRootHive,
                               EntryKeyPath(clString(u"AIFF"), clString()).text),
              2u);
    EXPECT_EQ(U(Stored(first.text, kEntryFolderSetting.name)), u"[origdrive]");
    // The remembered rows: every folder row but the one selected.
    EXPECT_FALSE(GetSettingText(u"qvtLastFolder-0").IsEmpty());
    for (int n = 0; n < 12; ++n) {
        EXPECT_FALSE(GetSettingText(clString::Formatted(u"qvtLastFolder-%d", n).text).Equals(form.SelectedOutput()));
    }
}

// A page shows the stored string, keeps what it doesn't know, and is
// rebuilt only when another entry is chosen; the sentinel reads it
// without taking it down.
TEST_F(OptionsTest, APageRestoresItsStringAndIsRebuiltOnlyForAnotherEntry) {
    SetSettingText(clString(u"-bits=\"16\" -custom=\"a\""), kEntryOptionsSetting.name, settingsRootHive,
                   EntryKeyPath(clString(u"Wave"), clString()).text);
    globalEncoder = u"Wave";
    frmConvertToOpt form(input);
    ASSERT_TRUE(form.Open(nullptr));
    ASSERT_EQ(U(form.currentEntry), u"Wave");
    clWindowHandle bits = form.settingsPage.ControlOf(u"bits");
    ASSERT_NE(bits, nullptr);
    EXPECT_EQ(U(ComboItemText(bits, ComboGetSelection(bits))), u"16-bit integer");
    EXPECT_EQ(U(form.PageOptions()), u"-bits=\"16\" -custom=\"a\"");
    ComboSetSelection(bits, 5);  // float
    ChooseEncoder(form, u"Wave");
    EXPECT_EQ(form.settingsPage.ControlOf(u"bits"), bits) << "the entry on show is left alone";
    EXPECT_EQ(U(form.PageOptions()), u"-bits=\"float\" -custom=\"a\"");
    ChooseEncoder(form, u"AIFF");
    EXPECT_EQ(U(Stored(u"Wave", kEntryOptionsSetting.name)), u"-bits=\"float\" -custom=\"a\"");
    ChooseEncoder(form, u"Wave");
    bits = form.settingsPage.ControlOf(u"bits");
    EXPECT_EQ(U(ComboItemText(bits, ComboGetSelection(bits))), u"32-bit float");
    // The tab order runs from the file count into the page.
    EXPECT_EQ(WindowNextInTabOrder(form.fileButton), bits);
    // "X" leaves without saving.
    ComboSetSelection(bits, 1);
    form.OnCommand(kIdCloseCorner, form.closeCorner, kBnClicked);
    form.OnTimer(1, 0);
    EXPECT_EQ(form.result, 0);
    form.DestroyWindowObject();
    EXPECT_EQ(U(Stored(u"Wave", kEntryOptionsSetting.name)), u"-bits=\"float\" -custom=\"a\"");
}

namespace {

int questions = 0;
int AnswerYes(const clString&, const clString&, uint32_t) {
    ++questions;
    return clIdYes;
}
// The user types a label in the new profile window and confirms.
void TypeSmallAndConfirm(XWindow& window, void*) {
    auto* form = dynamic_cast<frmNewProfile*>(&window);
    ASSERT_NE(form, nullptr);
    EXPECT_FALSE(WindowIsEnabled(form->okButton)) << "the placeholder can't be accepted";
    WindowSetText(form->label, clString(u"Small"));
    form->OnCommand(kIdProfileLabel, form->label, kEnChange);
    EXPECT_TRUE(WindowIsEnabled(form->okButton));
    form->OnIdOk();
}

}  // namespace

TEST_F(OptionsTest, AProfileIsMadeFromTheEntryOnShowAndDeletedWithItsKey) {
    SetSettingNumber(1, u"qvtAllowProfiles");
    globalEncoder = u"Wave";
    frmConvertToOpt form(input);
    ASSERT_TRUE(form.Open(nullptr));
    SetModalHook(TypeSmallAndConfirm, nullptr);
    ChooseEncoder(form, kCreateProfileRow);
    SetModalHook(nullptr, nullptr);
    EXPECT_EQ(U(form.currentEntry), u"Small \"Wave\"");
    EXPECT_EQ(U(globalEncoder), u"Small \"Wave\"");
    ASSERT_NE(form.settingsPage.ControlOf(u"bits"), nullptr) << "a profile shows its encoder's page";

    SetMessageBoxHandler(AnswerYes);
    questions = 0;
    ChooseEncoder(form, u"Wave");
    ChooseEncoder(form, kDeleteProfileRow);
    EXPECT_EQ(questions, 0) << "only a profile can be deleted";
    EXPECT_EQ(U(form.currentEntry), u"Wave");
    ChooseEncoder(form, u"Small \"Wave\"");
    ChooseEncoder(form, kDeleteProfileRow);
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(form.cmbEncoders.FindExact(clString(u"Small \"Wave\"")), -1);
    EXPECT_EQ(form.cmbEncoders.GetSelection(), 0);
    clStringList profiles;
    ListProfiles(profiles);
    EXPECT_EQ(profiles.Count(), 0) << "the deleted key isn't brought back by a save";
    form.OnIdCancel();
    ListProfiles(profiles);
    EXPECT_EQ(profiles.Count(), 0);
    SetMessageBoxHandler(nullptr);
}

TEST_F(OptionsTest, TheNewProfileWindowRefusesATakenNameIgnoringCase) {
    clStringList existing;
    existing.Add(u"Small \"Wave\"");
    frmNewProfile form(clString(u"Wave"), existing);
    ASSERT_TRUE(form.Open(nullptr));
    EXPECT_EQ(U(WindowGetText(WindowChild(form.windowHandle, kIdProfileEncoder))), u"'Wave'");
    SetMessageBoxHandler(AnswerYes);
    questions = 0;
    WindowSetText(form.label, clString(u"SMALL"));
    form.OnCommand(kIdProfileLabel, form.label, kEnChange);
    form.OnIdOk();
    EXPECT_EQ(questions, 1);
    EXPECT_TRUE(form.result.IsEmpty());
    WindowSetText(form.label, clString(u"<type profile name> 2"));
    form.OnCommand(kIdProfileLabel, form.label, kEnChange);
    form.OnIdOk();
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(U(form.result), u"<type profile name> 2 \"Wave\"");
    SetMessageBoxHandler(nullptr);
}

// The output list: a command row leads to its dialog and back to a real
// row; a text is listed once; rows show their friendly view in colour.
TEST_F(OptionsTest, OutputCommandsEndOnARealRowAndRowsAreListedOnce) {
    frmConvertToOpt form(input);
    folderAnswer.Clear();
    form.askFolder = AnswerFolder;
    ASSERT_TRUE(form.Open(nullptr));
    clString before = form.SelectedOutput();
    ChooseOutputRow(form, kOutputPreservePath);
    EXPECT_EQ(U(form.SelectedOutput()), U(before)) << "a cancelled dialog selects the row before";
    int32_t rows = form.cmbOutToFolder.Count();
    ChooseOutputRow(form, kOutputSourceFolders);
    ChooseOutputRow(form, kOutputSourceFolders);
    EXPECT_EQ(form.cmbOutToFolder.Count(), rows) << "that row was there already";
    EXPECT_EQ(U(form.SelectedOutput()), kSourceFoldersOutput);
    form.askNaming = [](frmConvertToOpt&, const clString&) { return clString(u"[origdrive]{_._}[artist]\\[UPPER][title][]"); };
    ChooseOutputRow(form, kOutputEditNaming);
    EXPECT_EQ(form.cmbOutToFolder.Count(), rows + 1);
    int32_t row = form.cmbOutToFolder.GetSelection();
    EXPECT_EQ(row, form.cmbOutToFolder.fixedRows) << "a new row comes first behind the commands";
    // Its runs: blue items, green functions, black between.
    clDrawList& list = form.cmbOutToFolder.Item(row)->drawList;
    std::u16string shown;
    std::vector<uint32_t> colours;
    for (uint32_t order = 0; order < list.nextOrder; ++order) {
        clDrawElement* run = list.Element(order);
        if (run == nullptr || run->kind != kDrawText) continue;
        shown += std::u16string(run->text.text);
        colours.push_back(run->colors[0]);
    }
    EXPECT_EQ(shown, u"Source Drive:\\Artist\\[UPPER]Title[]");
    EXPECT_EQ(colours, (std::vector<uint32_t>{0x780000, 0x780000, 0, 0x007800, 0x780000, 0x007800}));
    EXPECT_EQ(U(WindowGetText(form.cmbOutToFolder.control)), u"Source Drive:\\Artist\\[UPPER]Title[]");
}

// Files arrive while the window is open: dropped (folders searched, other
// files left out without a word) and from a second TrackConverter.
TEST_F(OptionsTest, DroppedFilesAndFoldersAndAHandOverFromAnotherProcessCount) {
    input.AddSource(Source(u"one.wav"), true);
    frmConvertToOpt form(input);
    ASSERT_TRUE(form.Open(nullptr));
    clString album = dir.File(u"album");
    clString cd2 = JoinPath(album, clString(u"cd2"));
    MakeFolders(cd2);
    MakeFolders(dir.File(u"empty"));
    WriteBytes(dir.File(u"notes.txt"), "text");
    clStringList paths;
    paths.Add(Source(u"two.wav"));
    paths.Add(dir.File(u"notes.txt"));
    paths.Add(dir.File(u"empty"));
    WriteBytes(JoinPath(album, clString(u"a.wav")), ToneWave(1, 0.5));
    WriteBytes(JoinPath(cd2, clString(u"b.wav")), ToneWave(2, 0.5));
    paths.Add(album);
    paths.Add(dir.File(u"one.wav"));  // already there
    SimulateDrop(form.windowHandle, paths);
    EXPECT_EQ(U(WindowGetText(form.fileButton)), u"4 Files");
    EXPECT_EQ(input.excludedFiles.Count(), 0) << "a dropped non-audio file is dropped without a word";

    clString list = dir.File(u"more.txt");
    WriteBytes(list, Utf16Le(U(Source(u"three.wav")) + u"\r\n" + U(dir.File(u"two.wav")) + u"\r\n"));
    clStringList arguments;
    arguments.Add(clString(u"-list_to_conv=", list.text));
    int exitCode = -1;
    ASSERT_TRUE(PlatformRunProcess(ProgramPath(u"TrackConverter"), arguments, dir.File(u"second.log"), &exitCode));
    EXPECT_EQ(exitCode, 0);
    EXPECT_TRUE(PathExists(list)) << "the sender's list stays";
    form.OnTimer(1, 0);
    EXPECT_EQ(U(WindowGetText(form.fileButton)), u"5 Files") << "the duplicate is dropped";
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
    clEffectList effects;
    effects.Add(clString(u"Resample"), clString(u"-rate=\"48000\""));
    effects.Add(clString(u"ReplayGain"), clString(u"-mode=\"album\""));
    SetSettingText(BuildStoredEffectText(effects), kEntryEffectsSetting.name, settingsRootHive,
                   EntryKeyPath(clString(u"Opus"), clString()).text);
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

namespace {

void GrabItemAndCancel(XWindow& window, void*) {
    Pump();
    SaveGrab(window.windowHandle, "options-multi-item");
    window.OnIdCancel();
}

}  // namespace

// The pictures of "[Multi Encoder]": its page with two items, and the
// window in which one of them is edited.
TEST_F(OptionsTest, PicturesOfTheMultiEncoder) {
    input.AddSource(Source(u"one.wav"), true);
    clMultiEncoderItems items;
    auto* wave = new clMultiEncoderItem;
    wave->encoderName = clString(u"Wave");
    wave->encoderOptions = clString(u"-bits=\"24\"");
    wave->folder = clString(u"/home/user/Music/Masters/");
    wave->namingRule = clString(u"[artist]\\[album]\\[track] [title]");
    clEffectList effects;
    effects.Add(clString(u"Resample"), clString(u"-rate=\"96000\""));
    effects.Add(clString(u"Volume Normalize"), clString(u"-target=\"-18\""));
    wave->dspEffects = BuildStoredEffectText(effects);
    items.Add(wave);
    auto* aiff = new clMultiEncoderItem;
    aiff->encoderName = clString(u"AIFF");
    aiff->folder = clString(u"/home/user/Music/For the car/");
    aiff->namingRule = clString(u"[origfilename]");
    items.Add(aiff);
    SetSettingText(BuildMultiItems(items), kEntryOptionsSetting.name, settingsRootHive,
                   EntryKeyPath(clString(u"[Multi Encoder]"), clString()).text);
    frmConvertToOpt form(input);
    ASSERT_TRUE(form.Open(nullptr));
    ChooseEncoder(form, u"[Multi Encoder]");
    ASSERT_EQ(form.multiPage.items.Count(), 2);
    form.multiPage.list.SelectRow(0);
    Pump();
    SaveGrab(form.windowHandle, "options-multi");
    SetModalHook(GrabItemAndCancel, nullptr);
    form.OnCommand(kIdMultiEdit, form.multiPage.editButton, kBnClicked);
    SetModalHook(nullptr, nullptr);
}

namespace {

clString waveFolder;
// The user adds a Wave item at 24 bits into its own folder, named after
// the source file alone.
void AddWaveItem(XWindow& window, void*) {
    auto* dialog = dynamic_cast<dlgMultiItem*>(&window);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(U(WindowGetText(dialog->namingField)), u"[origpath]\\[origfilename]") << "a new item's default";
    EXPECT_FALSE(WindowGetText(dialog->folderField).IsEmpty());
    ASSERT_TRUE(dialog->ChooseEncoder(clString(u"Wave")));
    ASSERT_TRUE(dialog->settingsPage.SetValue(u"bits", clString(u"24")));
    WindowSetText(dialog->folderField, waveFolder);
    WindowSetText(dialog->namingField, clString(u"[origfilename]"));
    dialog->OnIdOk();
}
void AddAiffItem(XWindow& window, void*) {
    auto* dialog = dynamic_cast<dlgMultiItem*>(&window);
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(dialog->ChooseEncoder(clString(u"AIFF")));
    dialog->OnIdOk();
}
// Editing the Wave item: its own settings come back with its own encoder,
// another encoder starts from its defaults; then the user cancels.
void LookAndCancel(XWindow& window, void*) {
    auto* dialog = dynamic_cast<dlgMultiItem*>(&window);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(U(dialog->PageOptions()), u"-bits=\"24\"");
    ASSERT_TRUE(dialog->ChooseEncoder(clString(u"AIFF")));
    EXPECT_EQ(U(dialog->PageOptions()), u"") << "AIFF at its defaults, not Wave's choice";
    ASSERT_TRUE(dialog->ChooseEncoder(clString(u"Wave")));
    EXPECT_EQ(U(dialog->PageOptions()), u"-bits=\"24\"");
    WindowSetText(dialog->namingField, clString(u"changed"));
    dialog->OnIdCancel();
}

}  // namespace

// "[Multi Encoder]": items added, ordered, edited and removed on its page,
// and its option string is what a run reads back item for item.
TEST_F(OptionsTest, TheMultiEncodersItemsAreEditedOnItsPageAndStoredForTheRun) {
    globalEncoder = u"[Multi Encoder]";
    waveFolder = dir.File(u"wave out");
    frmConvertToOpt form(input);
    ASSERT_TRUE(form.Open(nullptr));
    ASSERT_TRUE(form.multiPage.IsShown());
    EXPECT_FALSE(form.settingsPage.IsShown());
    clMultiEncoderPage& page = form.multiPage;
    ASSERT_EQ(page.list.RowCount(), 1);
    EXPECT_EQ(U(page.list.Row(0)->name), u"<no encoders yet: press Add>");
    EXPECT_FALSE(WindowIsEnabled(page.editButton));
    EXPECT_EQ(U(form.effectList.Row(0)->name), u"<set DSP effects on each multi-encoder settings page>");
    EXPECT_FALSE(WindowIsEnabled(form.cmbOutToFolder.control)) << "each item has an output of its own";
    EXPECT_EQ(WindowNextInTabOrder(form.fileButton), page.list.listHandle) << "the tab order runs into the page";

    SetModalHook(AddWaveItem, nullptr);
    form.OnCommand(kIdMultiAdd, page.addButton, kBnClicked);
    SetModalHook(AddAiffItem, nullptr);
    form.OnCommand(kIdMultiAdd, page.addButton, kBnClicked);
    SetModalHook(nullptr, nullptr);
    ASSERT_EQ(page.items.Count(), 2);
    EXPECT_EQ(U(page.list.Row(0)->name), u"1. Wave");
    EXPECT_EQ(U(page.list.Row(1)->name), u"2. AIFF");
    EXPECT_NE(U(page.list.Row(0)->value).find(u"wave out"), std::u16string::npos) << "the row shows where it goes";
    EXPECT_TRUE(WindowIsEnabled(page.editButton));

    // Dragging AIFF above Wave changes the order and the numbers.
    clRect second = ListRowRect(page.list.listHandle, 1);
    clRect first = ListRowRect(page.list.listHandle, 0);
    int32_t y = second.top + second.Height() / 2;
    WindowSend(page.list.listHandle, kWmLButtonDown, kMkLButton, clMakeLParam(50, y));
    WindowSend(page.list.listHandle, kWmMouseMove, kMkLButton, clMakeLParam(50, y - 8));
    WindowSend(page.list.listHandle, kWmMouseMove, kMkLButton, clMakeLParam(50, first.top + 2));
    WindowSend(page.list.listHandle, kWmLButtonUp, 0, clMakeLParam(50, first.top + 2));
    EXPECT_EQ(U(page.items[0].encoderName), u"AIFF");
    EXPECT_EQ(U(page.list.Row(0)->name), u"1. AIFF");
    EXPECT_EQ(U(page.list.Row(1)->name), u"2. Wave");
    SaveGrabIfFailed(form.windowHandle);

    page.list.SelectRow(1);
    SetModalHook(LookAndCancel, nullptr);
    form.OnCommand(kIdMultiEdit, page.editButton, kBnClicked);
    SetModalHook(nullptr, nullptr);
    EXPECT_EQ(U(page.items[1].namingRule), u"[origfilename]") << "a cancelled edit changes nothing";
    page.list.SelectRow(0);
    form.OnCommand(kIdMultiRemove, page.removeButton, kBnClicked);
    ASSERT_EQ(page.items.Count(), 1);
    EXPECT_EQ(U(page.list.Row(0)->name), u"1. Wave");

    form.OnIdOk();
    clString stored = Stored(u"[Multi Encoder]", kEntryOptionsSetting.name);
    clMultiEncoderItems items;
    ParseMultiItems(stored, items);
    ASSERT_EQ(items.Count(), 1) << U(stored).size();
    EXPECT_EQ(U(items[0].encoderName), u"Wave");
    EXPECT_EQ(U(items[0].encoderOptions), u"-bits=\"24\"");
    EXPECT_EQ(U(items[0].folder), U(waveFolder));
    EXPECT_EQ(U(items[0].namingRule), u"[origfilename]");
    EXPECT_TRUE(Stored(u"[Multi Encoder]", kEntryEffectsSetting.name).IsEmpty());

    frmConvertToOpt again(input);
    ASSERT_TRUE(again.Open(nullptr));
    ASSERT_EQ(again.multiPage.list.RowCount(), 1);
    EXPECT_EQ(U(again.multiPage.list.Row(0)->name), u"1. Wave");
}

namespace {

// The "Add" menu answers with the entry of this text, in the menu or its
// "Add DSP Effect" submenu; the states of the entries are kept.
const char16_t* menuChoice = nullptr;
std::vector<std::u16string> disabledEntries;
uint32_t ChooseMenuText(const clMenu& menu, void*) {
    disabledEntries.clear();
    uint32_t chosen = 0;
    for (int64_t i = 0; i < menu.Count(); ++i) {
        if (!menu[i].enabled) disabledEntries.push_back(U(menu[i].text));
        if (menu[i].text.Equals(menuChoice)) chosen = menu[i].id;
        if (clMenu* sub = menu[i].submenu) {
            for (int64_t j = 0; j < sub->Count(); ++j) {
                if ((*sub)[j].text.Equals(menuChoice)) chosen = (*sub)[j].id;
                EXPECT_NE((*sub)[j].text.CharAt(1), u'_') << "a library of the program's own is never offered";
            }
        }
    }
    return chosen;
}
// The settings window's answer: each effect gets its own made-up settings.
clString AnswerSettings(const clString& name, const clString& settings) {
    if (name.Equals(u"Bit Depth")) return clString(u"-bits=\"24\"");
    if (name.Equals(u"Channel Count")) return settings.IsEmpty() ? clString(u"-channels=\"1\"") : clString(u"-channels=\"2\"");
    return clString(u"-set=\"genre=Test \"quoted\"\"");
}
clString effectFile;
clString SavePath() { return effectFile; }

}  // namespace

// The effect chain of the entry: added from the menu at the selected row,
// set on its settings window, removed, saved to a file, cleared, loaded
// again, and stored with the entry for the run.
TEST_F(OptionsTest, EffectsAreAddedSetOrderedSavedAndLoaded) {
    input.AddSource(Source(u"one.wav"), true);
    frmConvertToOpt form(input);
    ASSERT_TRUE(form.Open(nullptr));
    ChooseEncoder(form, u"Wave");
    clEffectChain& chain = form.effects;
    chain.editSettings = AnswerSettings;
    effectFile = dir.File(u"chain.dspeffect");
    chain.askSavePath = SavePath;
    chain.askLoadPath = SavePath;
    SetMenuHandler(ChooseMenuText, nullptr);
    auto menu = [&](const char16_t* text) {
        menuChoice = text;
        form.OnCommand(kIdAddEffect, form.addButton, kBnClicked);
    };

    menu(u"none: look at the states");
    EXPECT_EQ(disabledEntries, (std::vector<std::u16string>{u"Remove Selected", u"Clear All", u"Save"}));
    menu(u"Bit Depth");
    menu(u"ID Tag Processing");
    ASSERT_EQ(form.effectList.RowCount(), 2);
    form.effectList.SelectRow(0);
    menu(u"Channel Count");  // the selected row isn't the last: it goes in there
    ASSERT_EQ(form.effectList.RowCount(), 3);
    EXPECT_EQ(U(form.effectList.Row(0)->name), u"Channel Count");
    EXPECT_EQ(U(form.effectList.Row(1)->name), u"Bit Depth");
    EXPECT_EQ(U(form.effectList.Row(2)->name), u"ID Tag Processing");
    EXPECT_EQ(form.effectList.SelectedRow(), 0);
    EXPECT_EQ(U(form.effectList.Row(1)->buttonText), u"Settings");

    form.effectList.SelectRow(0);
    chain.OpenSettings(0);
    EXPECT_EQ(U(form.effectList.Row(0)->value), u"-channels=\"2\"") << "the settings window's answer is kept";
    clString stored = chain.Stored();
    EXPECT_EQ(U(stored), u"-dspeffect1=\"Channel Count=-channels={qt}2{qt}\" -dspeffect2=\"Bit Depth=-bits={qt}24{qt}\" "
                         u"-dspeffect3=\"ID Tag Processing=-set={qt}genre=Test {qt}quoted{qt}{qt}\"");

    menu(u"Save");
    std::string bytes = ReadBytes(effectFile);
    ASSERT_EQ(bytes.size(), static_cast<size_t>(stored.Length()) * 2) << "UTF-16, no mark, no line end";
    EXPECT_EQ(bytes.substr(0, 4), std::string("-\0d\0", 4));

    form.effectList.SelectRow(2);
    menu(u"Remove Selected");
    EXPECT_EQ(form.effectList.RowCount(), 2);
    EXPECT_EQ(form.effectList.SelectedRow(), -1) << "the last row gone, nothing is selected";
    SetMessageBoxHandler([](const clString& text, const clString&, uint32_t) {
        EXPECT_EQ(U(text), u"Clear All?");
        return clIdYes;
    });
    menu(u"Clear All");
    SetMessageBoxHandler(nullptr);
    EXPECT_EQ(form.effectList.RowCount(), 0);

    menu(u"Load");
    EXPECT_EQ(U(chain.Stored()), U(stored)) << "saved and loaded, the same effects in the same order";
    // A file that starts with a byte-order mark loads as well.
    WriteBytes(effectFile, std::string("\xFF\xFE", 2) + bytes);
    form.effectList.Clear();
    menu(u"Load");
    EXPECT_EQ(U(chain.Stored()), U(stored));
    SetMenuHandler(nullptr, nullptr);

    form.OnIdOk();
    EXPECT_EQ(U(Stored(u"Wave", kEntryEffectsSetting.name)), U(stored)) << "the chain is stored with the entry";
}
