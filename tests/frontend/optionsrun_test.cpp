// The real TrackConverter with its windows, answered by a script as a user
// would answer them (QUILLOTONE_TEST_SCRIPT): files given on the command
// line open the options window, whose choices the conversion uses; and a
// batch settles an overwrite conflict in its window, ends in the errors
// window when a file failed, and converts that file again from there.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "foundation/findfiles.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "foundation/utf.h"
#include "plugins/effectstring.h"
#include "plugins/encoderentries.h"
#include "tests/codecs/wavefiles.h"
#include "tests/support/testfolder.h"

namespace {

std::string Utf8(const clString& text) { return StringToUtf8(text); }

class WindowRunTest : public ::testing::Test {
protected:
    TestFolder dir;
    clString script = dir.File(u"script.txt");
    clString out = dir.File(u"out");

    WindowRunTest() {
        // Windows are shown and asked; the script answers them.
        PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"0");
        PlatformSetEnvironment(u"QT_QPA_PLATFORM", u"offscreen");
        PlatformSetEnvironment(u"QUILLOTONE_TEST_SCRIPT", script.text);
        SetSettingsRoot(kSettingsHive, kSettingsRoot);
        DeleteSettingKeyTree(kSettingsRoot, kEntriesKeyName);
        SetSettingNumber(1, kSkipFinishSetting.name);
        DeleteSettingValue(kLastEntryPrefix, kSettingsRoot);
        MakeFolders(out);
    }
    ~WindowRunTest() override {
        PlatformSetEnvironment(u"QUILLOTONE_TEST_SCRIPT", u"");
        PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"1");
        // On Windows the store is the registry the other test programs
        // share: what the windows remembered goes.
        DeleteSettingKeyTree(kSettingsRoot, kEntriesKeyName);
        for (int n = 0; n < 12; ++n) DeleteSettingValue(clString::Formatted(u"qvtLastFolder-%d", n).text, kSettingsRoot);
        for (const char16_t* name : {kLastEntryPrefix, u"LastAccessedFolder"}) DeleteSettingValue(name, kSettingsRoot);
    }
    clString Source(const char16_t* name, int tone) {
        clString path = dir.File(name);
        WriteBytes(path, ToneWave(tone, 1.0));
        return path;
    }
    int Run(const clString& program, const clStringList& arguments) {
        int exitCode = -1;
        EXPECT_TRUE(PlatformRunProcess(program, arguments, dir.File(u"run.log"), &exitCode));
        return exitCode;
    }
    // The output location as the options window writes it.
    clString OutputText() const {
        clString folder(out);
        AddBackslash(folder);
        return JoinOutputText(folder, clString(u"[origfilename]"));
    }
    // The files in the output folder.
    int CountOutputs(const char16_t* extension) const {
        int count = 0;
        clFindFiles find(clString(u"*"), out);
        while (find.Next()) {
            if (!find.IsFolder() && GetExtension(find.fullName).EqualsNoCase(extension)) ++count;
        }
        return count;
    }
};

uint16_t BitsOf(const std::string& wave) {
    std::string fmt = FindChunk(wave, "fmt ");
    return fmt.size() >= 16 ? static_cast<uint16_t>(static_cast<unsigned char>(fmt[14]) | (fmt[15] << 8)) : 0;
}

}  // namespace

// TrackConverter with files opens the options window: the user picks an
// encoder, sets its page and a folder, presses "Convert >>", and the
// conversion uses exactly those settings.
TEST_F(WindowRunTest, FilesOnTheCommandLineOpenTheOptionsWindowWhoseChoicesConvert) {
    clStringList arguments;
    arguments.Add(Source(u"a.wav", 1));
    arguments.Add(Source(u"b.wav", 2));
    WriteBytes(script, "options: encoder Wave; option bits 24; output " + Utf8(OutputText()) + "; press 1\n");
    EXPECT_EQ(Run(ProgramPath(u"TrackConverter"), arguments), 0) << ReadBytes(dir.File(u"run.log"));
    EXPECT_EQ(ReadBytes(script), "") << "every window the script answers appeared";
    EXPECT_EQ(U(GetSettingText(kEntryOptionsSetting.name, settingsRootHive,
                               EntryKeyPath(clString(u"Wave"), clString()).text)),
              u"-bits=\"24\"");
    for (const char16_t* name : {u"a.wav", u"b.wav"}) {
        std::string wave = ReadBytes(JoinPath(out, clString(name)));
        EXPECT_EQ(BitsOf(wave), 24) << "the page's choice reached the worker";
    }
}

// A naming written in the naming editor, from a field and a menu, is the
// one the outputs get.
TEST_F(WindowRunTest, ANamingWrittenInTheEditorNamesTheOutputs) {
    clStringList arguments;
    arguments.Add(Source(u"a.wav", 1));
    clString base(out);
    WriteBytes(script, "options: encoder Wave; outputcommand Edit Dynamic Naming; press 1\n"
                       "naming: base " + Utf8(base) + "; naming [origfilename] take; insert tags Track number; press 1\n");
    EXPECT_EQ(Run(ProgramPath(u"TrackConverter"), arguments), 0) << ReadBytes(dir.File(u"run.log"));
    EXPECT_EQ(ReadBytes(script), "") << "both windows were answered";
    EXPECT_FALSE(ReadBytes(JoinPath(out, clString(u"a take.wav"))).empty())
        << "an untagged source has no track number: the item adds nothing";
    EXPECT_EQ(U(GetSettingText(kEntryNamingSetting.name, settingsRootHive,
                               EntryKeyPath(clString(u"Wave"), clString()).text)),
              u"[origfilename] take[track]");
}

// A user adds two effects in the options window and sets each on its
// page, writes a naming with the editor's menus, and converts: the outputs
// carry the effects and the names. (A Windows build without the codec
// libraries has only the signal-free effects.)
TEST_F(WindowRunTest, EffectsSetOnTheirPagesAndANamingFromTheMenusReachTheOutputs) {
    clStringList arguments;
    arguments.Add(Source(u"a.wav", 1));
    arguments.Add(Source(u"b.wav", 2));
    clString base(out);
#ifndef QV_TEST_CODEC_LIBRARIES
    // Channel Count works in floating point: the depth comes after it.
    WriteBytes(script, "options: encoder Wave; effect Channel Count; effect Bit Depth; "
                       "outputcommand Edit Dynamic Naming; press 1\n"
                       "dspsettings: option channels 1; press 1\n"
                       "dspsettings: option bits 24; press 1\n"
                       "naming: base " + Utf8(base) + "; naming [origfilename] at ; insert properties Frequency; press 1\n");
    const char16_t* extension = u".wav";
#else
    WriteBytes(script, "options: encoder FLAC; effect Resample; effect ReplayGain; "
                       "outputcommand Edit Dynamic Naming; press 1\n"
                       "dspsettings: option rate 22050; press 1\n"
                       "dspsettings: option mode track; press 1\n"
                       "naming: base " + Utf8(base) + "; naming [origfilename] at ; insert properties Frequency; press 1\n");
    const char16_t* extension = u".flac";
#endif
    EXPECT_EQ(Run(ProgramPath(u"TrackConverter"), arguments), 0) << ReadBytes(dir.File(u"run.log"));
    EXPECT_EQ(ReadBytes(script), "") << "every window the script answers appeared";
    clString stored = GetSettingText(kEntryEffectsSetting.name, settingsRootHive,
                                     EntryKeyPath(clString(extension[1] == u'w' ? u"Wave" : u"FLAC"), clString()).text);
#ifndef QV_TEST_CODEC_LIBRARIES
    EXPECT_EQ(U(stored), u"-dspeffect1=\"Channel Count=-channels={qt}1{qt}\" -dspeffect2=\"Bit Depth=-bits={qt}24{qt}\"");
#else
    EXPECT_EQ(U(stored), u"-dspeffect1=\"Resample=-rate={qt}22050{qt}\" -dspeffect2=\"ReplayGain=-mode={qt}track{qt}\"");
#endif
    for (const char16_t* name : {u"a", u"b"}) {
        // Named by the source's frequency, which the menu's item gives.
        clString file(name, u" at 44100");
        file.Append(extension);
        clString output = JoinPath(out, file);
        ASSERT_TRUE(PathExists(output)) << U(output).size();
#ifndef QV_TEST_CODEC_LIBRARIES
        std::string wave = ReadBytes(output);
        EXPECT_EQ(BitsOf(wave), 24);
        std::string fmt = FindChunk(wave, "fmt ");
        ASSERT_GE(fmt.size(), 4u);
        EXPECT_EQ(fmt[2], 1) << "one channel";
#else
        // The stream header's rate (20 bits after "fLaC", the block header
        // and the block and frame sizes) and the comments, read as bytes
        // so that the check is the same on both platforms.
        std::string flac = ReadBytes(output);
        ASSERT_GT(flac.size(), 21u);
        uint32_t rate = static_cast<uint32_t>(static_cast<uint8_t>(flac[18])) << 12 |
                        static_cast<uint32_t>(static_cast<uint8_t>(flac[19])) << 4 |
                        static_cast<uint8_t>(flac[20]) >> 4;
        EXPECT_EQ(rate, 22050u);
        EXPECT_NE(flac.find("REPLAYGAIN_TRACK_GAIN="), std::string::npos);
        EXPECT_EQ(flac.find("REPLAYGAIN_ALBUM_GAIN="), std::string::npos) << "track mode";
#endif
    }
}

// Without files the open dialog asks first; its files go on to the options
// window and the folder is remembered.
TEST_F(WindowRunTest, WithoutFilesTheOpenDialogAsksFirst) {
    clString a = Source(u"a.wav", 1);
    WriteBytes(script, "files: " + Utf8(a) + "\noptions: encoder Wave; output " + Utf8(OutputText()) + "; press 1\n");
    clStringList none;
    EXPECT_EQ(Run(ProgramPath(u"TrackConverter"), none), 0) << ReadBytes(dir.File(u"run.log"));
    EXPECT_EQ(ReadBytes(script), "");
    EXPECT_FALSE(ReadBytes(JoinPath(out, clString(u"a.wav"))).empty());
    EXPECT_EQ(U(GetSettingText(u"LastAccessedFolder")), U(dir.Path()));
    // A cancelled dialog ends the program without a window.
    WriteBytes(script, "");
    EXPECT_EQ(Run(ProgramPath(u"TrackConverter"), none), 0);
    EXPECT_EQ(ReadBytes(script), "") << "no window appeared";
}

#if !defined(_WIN32)
// The same with a lossy encoder and a quality from its page: the best
// quality makes a bigger file than the smallest does.
TEST_F(WindowRunTest, TheMp3QualityChosenOnThePageIsTheOneEncoded) {
    clStringList arguments;
    arguments.Add(Source(u"a.wav", 1));
    WriteBytes(script, "options: encoder MP3 (Lame); option quality 0; output " + Utf8(OutputText()) + "; press 1\n");
    EXPECT_EQ(Run(ProgramPath(u"TrackConverter"), arguments), 0) << ReadBytes(dir.File(u"run.log"));
    EXPECT_EQ(ReadBytes(script), "");
    size_t best = ReadBytes(JoinPath(out, clString(u"a.mp3"))).size();
    clStringList qvt;
    for (const char16_t* word : {u"convert", u"--to", u"MP3 (Lame)", u"--options", u"-quality=\"9\"", u"--folder"}) {
        qvt.Add(word);
    }
    qvt.Add(dir.File(u"small"));
    qvt.Add(dir.File(u"a.wav"));
    EXPECT_EQ(Run(ProgramPath(u"qvt"), qvt), 0);
    size_t smallest = ReadBytes(JoinPath(dir.File(u"small"), clString(u"a.mp3"))).size();
    EXPECT_GT(best, smallest + smallest / 4) << best << " " << smallest;
}
#endif

// A batch started on the desktop: the existing output is settled in the
// overwrite window (a name of its own), the file fails once, the errors
// window offers it again, and the re-convert's own options window
// converts it.
TEST_F(WindowRunTest, AnOverwriteIsSettledAndAFailedFileIsConvertedAgainFromTheErrorsWindow) {
    // The fault tests' installation, with the "Fault Injection" effect.
    clString installed = JoinPath(JoinPath(JoinPath(GetProgramFolder(), clString(u"..")), clString(u"tests")),
                                  clString(u"faultinstall"));
    clString program = JoinPath(installed, clString(u"TrackConverter"));
    program.Append(PlatformExecutableSuffix());
    ASSERT_TRUE(PathExists(program));
    clString source = Source(u"song.wav", 3);
    clString existing = JoinPath(out, clString(u"song.wav"));
    WriteBytes(existing, "not to be lost");
    clString key = EntryKeyPath(clString(u"Wave"), clString());
    SaveEntryOutput(key, OutputText());
    clEffectList effects;
    effects.Add(clString(u"Fault Injection"), clString(u"failonce=", dir.File(u"failed-once").text));
    SetSettingText(BuildStoredEffectText(effects), kEntryEffectsSetting.name, settingsRootHive, key.text);
    clString list = dir.File(u"list.txt");
    WriteBytes(list, Utf16Le(U(source) + u"\r\n"));
    WriteBytes(script,
               "overwrite: press 4; press 1\n"
               "errors: press 1041\n"
               "options: press 1\n"
               "overwrite: press 4; press 1\n");
    clStringList arguments;
    arguments.Add(clString(u"-list_to_conv=", list.text));
    arguments.Add(u"-skip_ready_to_conv");
    arguments.Add(u"-select_profile=Wave");
    Run(program, arguments);
    // The re-convert runs on by itself: its output is the sign it ended.
    for (int i = 0; i < 600 && CountOutputs(u".wav") < 2; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    for (int i = 0; i < 100 && !ReadBytes(script).empty(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(ReadBytes(script), "") << "every window the script answers appeared";
    EXPECT_TRUE(PathExists(dir.File(u"failed-once"))) << "the first try failed";
    EXPECT_EQ(ReadBytes(existing), "not to be lost");
    EXPECT_EQ(CountOutputs(u".wav"), 2) << "the file converted on its second try, under a name of its own";
}
