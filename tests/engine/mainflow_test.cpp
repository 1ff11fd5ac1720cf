#include "engine/mainflow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "engine/conversioninput.h"
#include "engine/globals.h"
#include "foundation/bytebuffer.h"
#include "foundation/folders.h"
#include "foundation/settings.h"
#include "naming/sourcefacts.h"
#include "plugins/sourcefile.h"
#include "tests/support/testfolder.h"

namespace {

// Records every stage the flow reaches, in order.
struct Recorder {
    std::vector<std::u16string> trail;
    bool handOverTakes = false;
    bool proceed = true;
    std::u16string lastEncoder = u"FLAC";
    std::vector<std::u16string> dialogFiles;
    size_t extrasBytes = 0;

    clMainFlowStages Stages() {
        clMainFlowStages s;
        s.addDecoderExtensions = [this](clConversionInput& in) {
            trail.push_back(u"extensions");
            in.extensions.Add(u".flac");
        };
        s.handOverToOpenWindow = [this](const clString& f) {
            trail.push_back(u"handover " + U(f));
            return handOverTakes;
        };
        s.readLastEncoder = [this](const clString& name) {
            trail.push_back(u"setting " + U(name));
            return clString(lastEncoder.c_str());
        };
        s.loadNamingExtras = [this](const clByteBuffer& b) {
            trail.push_back(u"extras");
            extrasBytes = b.size;
        };
        s.signalGotFiles = [this](const clString& e) { trail.push_back(u"event " + U(e)); };
        s.runOpenFileDialog = [this](clConversionInput& in) {
            trail.push_back(u"dialog");
            for (auto& f : dialogFiles) in.sources.Add(new clSourceFile(clString(f.c_str())));
        };
        s.runOptionsWindow = [this](clConversionInput&) {
            trail.push_back(u"options");
            return proceed;
        };
        s.runConversionWindow = [this](clConversionInput& in) {
            trail.push_back(u"convert " + std::u16string(clString(static_cast<int64_t>(in.sources.count)).text));
        };
        s.startProgram = [this](const clString& p) {
            trail.push_back(u"start " + U(p));
            return true;
        };
        s.showMessage = [this](const clString& t) { trail.push_back(u"message " + U(t)); };
        return s;
    }
};

void ResetGlobals() {
    globalEncoder.Clear();
    globalProfile.Clear();
    globalSkipOptions = false;
    globalNamingExtrasBlock.Free();
}

std::vector<std::u16string> RunFlow(Recorder& r, const std::u16string& line, clConversionInput* keep = nullptr) {
    ResetGlobals();
    clConversionInput local;
    RunMainFlow(clString(line.c_str()), keep != nullptr ? *keep : local, r.Stages());
    return r.trail;
}

}  // namespace

TEST(MainFlow, NoArgumentsGoesToTheDialogAndEndsWhenNothingChosen) {
    Recorder r;
    EXPECT_EQ(RunFlow(r, u"\"TrackConverter\""),
              (std::vector<std::u16string>{u"extensions", u"setting qvtLastCodec", u"dialog"}));
    EXPECT_EQ(U(globalEncoder), u"FLAC");
}

TEST(MainFlow, DialogFilesGoThroughOptionsThenConversion) {
    Recorder r;
    r.dialogFiles = {u"/m/a.flac"};
    EXPECT_EQ(RunFlow(r, u"\"TrackConverter\""), (std::vector<std::u16string>{u"extensions", u"setting qvtLastCodec",
                                                                              u"dialog", u"options", u"convert 1"}));
    Recorder cancelled;
    cancelled.dialogFiles = {u"/m/a.flac"};
    cancelled.proceed = false;
    EXPECT_EQ(RunFlow(cancelled, u"\"TrackConverter\"").back(), u"options");
}

TEST(MainFlow, ListFileWithSkipAndProfileOptions) {
    TestFolder dir;
    clString list = dir.File(u"list file.txt");
    WriteBytes(list, Utf16Le(u"b.flac\r\na.flac\r\nc.txt\r\n"));
    Recorder r;
    clConversionInput input;
    std::u16string line = u"\"TC\" -list_to_conv=\"" + U(list) +
                          u"\" -skip_ready_to_conv -select_profile=\"Best {profileqt}FLAC{profileqt}\" "
                          u"-additionalprofile=qvt -signal_event_got_files=evt1 -centeronwnd=4242 -unknown=1";
    auto trail = RunFlow(r, line, &input);
    EXPECT_EQ(trail, (std::vector<std::u16string>{u"extensions", u"event evt1", u"convert 2"}));
    EXPECT_EQ(U(globalEncoder), u"Best \"FLAC\"");
    EXPECT_EQ(U(globalProfile), u"qvt");
    EXPECT_TRUE(globalSkipOptions);
    EXPECT_EQ(input.centerOnWindow, 4242);
    EXPECT_EQ(U(input.Source(0).path), u"a.flac");
    EXPECT_EQ(input.excludedFiles.Count(), 1);
    EXPECT_FALSE(PathExists(list));
}

TEST(MainFlow, ProfileChoosesTheLastEncoderSetting) {
    TestFolder dir;
    clString list = dir.File(u"l.txt");
    WriteBytes(list, Utf16Le(u"a.flac"));
    Recorder r;
    auto trail = RunFlow(r, u"\"TC\" -list_to_conv=" + U(list) + u" -additionalprofile=Work");
    EXPECT_EQ(trail[1], u"setting qvtLastCodecWork");
    EXPECT_EQ(trail.back(), u"convert 1");
}

TEST(MainFlow, HandOverTakesTheFilesAndThisProcessEnds) {
    TestFolder dir;
    clString list = dir.File(u"l.txt");
    WriteBytes(list, Utf16Le(u"a.flac"));
    Recorder r;
    r.handOverTakes = true;
    auto trail = RunFlow(r, u"\"TC\" -list_to_conv=" + U(list));
    EXPECT_EQ(trail.back(), u"handover " + U(list));
    EXPECT_TRUE(PathExists(list));  // the receiving window reads it
}

// A hand-over is offered only for a bare list, or a list with a window to
// centre on; any other option keeps the files in this process.
TEST(MainFlow, HandOverIsOfferedOnlyForABareList) {
    TestFolder dir;
    clString list = dir.File(u"l.txt");
    struct Case {
        std::u16string options;
        bool offered;
    } cases[] = {
        {u"", true},
        {u" -centeronwnd=4242", true},
        {u" -centeronwnd=0", false},
        {u" -skip_ready_to_conv", false},
        {u" -signal_event_got_files=e", false},
        {u" -centeronwnd=4242 -additionalprofile=Work", false},
    };
    for (const Case& c : cases) {
        WriteBytes(list, Utf16Le(u"a.flac"));
        Recorder r;
        r.handOverTakes = true;
        auto trail = RunFlow(r, u"\"TC\" -list_to_conv=" + U(list) + c.options);
        bool offered = std::find(trail.begin(), trail.end(), u"handover " + U(list)) != trail.end();
        EXPECT_EQ(offered, c.offered) << clString(c.options.c_str()).ToUtf8();
        EXPECT_EQ(trail.back() == u"convert 1", !c.offered) << clString(c.options.c_str()).ToUtf8();
    }
}

TEST(MainFlow, UnknownCommandLinesAndTheirMessages) {
    struct Case {
        std::u16string line;
        std::vector<std::u16string> tail;
    } cases[] = {
        {u"\"TC\" -skip_ready_to_conv", {u"message Unknown Command Line: '-skip_ready_to_conv'"}},
        {u"\"TC\" -list_to_conv=\"\"", {u"message Unknown Command Line: '-list_to_conv=\"\"'"}},
        {u"\"TC\" <Config>", {u"message Unknown Command Line: '<Config>'"}},
        {u"\"TC\"  hello  world ", {u"message Unknown Command Line: 'hello  world'"}},
        {u"\"TC\" <install>",
         {u"message The codec installed is not compatible with the newer Quillotone (R12 and above)",
          u"message Unknown Command Line: '<install>'"}},
    };
    for (const Case& c : cases) {
        Recorder r;
        auto trail = RunFlow(r, c.line);
        std::vector<std::u16string> tail(trail.end() - static_cast<long>(c.tail.size()), trail.end());
        EXPECT_EQ(tail, c.tail) << clString(c.line.c_str()).ToUtf8();
        EXPECT_EQ(trail.size(), 1 + c.tail.size());
    }
}

TEST(MainFlow, ConfigStartsTheSiblingTool) {
    Recorder r;
    auto trail = RunFlow(r, u"\"TC\" <config>");
    ASSERT_EQ(trail.size(), 2u);
    EXPECT_EQ(trail[1].substr(0, 6), u"start ");
    EXPECT_NE(trail[1].find(u"QvConfig"), std::u16string::npos);
}

TEST(MainFlow, NamingExtrasReadWholeOrIgnored) {
    TestFolder dir;
    clString extras = dir.File(u"extras.bin");
    WriteBytes(extras, std::string(300, '\x01'));
    Recorder r;
    RunFlow(r, u"\"TC\" -dynamic_naming_extras=\"" + U(extras) + u"\"");
    EXPECT_EQ(r.extrasBytes, 300u);
    EXPECT_EQ(globalNamingExtrasBlock.size, 300u);
    Recorder empty;
    WriteBytes(extras, "");
    RunFlow(empty, u"\"TC\" -dynamic_naming_extras=\"" + U(extras) + u"\"");
    EXPECT_EQ(empty.extrasBytes, 0u);
    Recorder missing;
    RunFlow(missing, u"\"TC\" -dynamic_naming_extras=\"" + U(dir.File(u"nope")) + u"\"");
    EXPECT_EQ(missing.extrasBytes, 0u);
}

TEST(MainFlow, FirstStartSeedsFourValuesOnlyOnce) {
    const char16_t* tagging = u"Software\\Harrowmere\\Quillotone\\Tagging";
    const char16_t* profiles = u"Software\\Harrowmere\\Quillotone\\DiscRipper\\Profiles";
    DeleteSettingKeyTree(u"Software\\Harrowmere\\Quillotone", u"Tagging");
    DeleteSettingKeyTree(profiles, u"(default)");
    SetSettingNumber(0, u"qvtProfFreqConversion", clHiveCurrentUser, u"Software\\Harrowmere\\Quillotone");
    SeedFirstStartSettings();
    EXPECT_EQ(GetSettingNumber(u"Mp3TagDefault", clHiveCurrentUser, tagging), 3u);
    EXPECT_EQ(GetSettingNumber(u"Mp3ID3v2UnicodeEncode", clHiveCurrentUser, tagging), 1u);
    EXPECT_EQ(GetSettingNumber(u"AlbumArtFolderJPG", clHiveCurrentUser,
                               u"Software\\Harrowmere\\Quillotone\\DiscRipper\\Profiles\\(default)"),
              1u);
    EXPECT_EQ(GetSettingNumber(u"qvtProfFreqConversion", clHiveCurrentUser, u"Software\\Harrowmere\\Quillotone"), 1u);
    // Once "Mp3TagDefault" can be read, nothing is touched again.
    SetSettingNumber(7, u"Mp3TagDefault", clHiveCurrentUser, tagging);
    SetSettingNumber(0, u"Mp3ID3v2UnicodeEncode", clHiveCurrentUser, tagging);
    SeedFirstStartSettings();
    EXPECT_EQ(GetSettingNumber(u"Mp3TagDefault", clHiveCurrentUser, tagging), 7u);
    EXPECT_EQ(GetSettingNumber(u"Mp3ID3v2UnicodeEncode", clHiveCurrentUser, tagging), 0u);
}

TEST(MainFlow, AcceptedExtensionsComeFromTheDecoderLibraries) {
    clConversionInput input;
    AddDecoderExtensions(input);
    EXPECT_TRUE(input.extensions.Find(u".aaa", false));
    EXPECT_TRUE(input.extensions.Find(u".bbb", true));
    // An "Unlisted" decoder's files are not taken from a drop or a folder.
    EXPECT_FALSE(input.extensions.Find(u".hid", true));
    input.AddSource(clString(u"/m/x.BBB"), false);
    input.AddSource(clString(u"/m/x.hid"), false);
    EXPECT_EQ(input.sources.count, 1);
    EXPECT_EQ(input.excludedFiles.Count(), 1);
}

TEST(MainFlow, NamingExtrasBecomeTheExtrasTagList) {
    clTagList extras;
    extras.AddTag(u"[sub]", u"A\\B");
    clByteBuffer block;
    ASSERT_TRUE(extras.SaveBlock(block));
    LoadNamingExtras(block);
    EXPECT_EQ(U(globalNamingExtras.GetTagValue(u"[sub]")), u"A\\B");
    globalNamingExtras.Clear();
}

// The overwrite mode and the console flag only pass through to the
// conversion; each spelling lands on its mode, anything else asks.
TEST(MainFlow, OverwriteModeAndConsolePassThrough) {
    struct Case {
        const char16_t* option;
        int32_t mode;
    } cases[] = {{u" -overwrite=always", 2},
                 {u" -overwrite=SKIP", 1},
                 {u" -overwrite=ask", 0},
                 {u" -overwrite=maybe", 0},
                 {u"", 0}};
    for (const Case& c : cases) {
        globalOverwriteMode = 99;
        globalConsole = false;
        if (c.option[0] == 0) globalOverwriteMode = 0;
        clConversionInput input;
        Recorder r;
        std::u16string line = u"\"TC\" -skip_ready_to_conv -console" + std::u16string(c.option);
        HandleCommandLine(clString(line.c_str()), input, r.Stages());
        EXPECT_EQ(globalOverwriteMode, c.mode) << std::string(line.begin(), line.end());
        EXPECT_TRUE(globalConsole);
    }
    globalConsole = false;
    globalOverwriteMode = 0;
}
