// The real TrackConverter and ConvertWorker with the conversion window:
// a list converted in the window, which closes by itself at the end; and
// -console keeping the terminal view.
#include <gtest/gtest.h>

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "tests/codecs/wavefiles.h"
#include "tests/support/testfolder.h"

namespace {

struct RunResult {
    int exitCode = -1;
    std::string output;
};

RunResult ConvertWith(const TestFolder& dir, const char16_t* extraOption) {
    PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"1");
    // Headless windows: Qt's offscreen platform (Wine has its null driver).
    PlatformSetEnvironment(u"QT_QPA_PLATFORM", u"offscreen");
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    SetSettingNumber(1, kSkipFinishSetting.name);
    clString list = dir.File(u"list.txt");
    std::u16string lines;
    for (int i = 0; i < 3; ++i) {
        clString source = dir.File(clString::Formatted(u"tone %d.wav", i).text);
        WriteBytes(source, ToneWave(i, 1.5));
        lines += std::u16string(source.text) + u"\r\n";
    }
    WriteBytes(list, Utf16Le(lines));
    clStringList args;
    args.Add(clString(u"-list_to_conv=", list.text));
    args.Add(u"-skip_ready_to_conv");
    args.Add(u"-select_profile=AIFF");
    if (extraOption != nullptr) args.Add(extraOption);
    RunResult run;
    clString output = dir.File(u"output.txt");
    EXPECT_TRUE(PlatformRunProcess(ProgramPath(u"TrackConverter"), args, output, &run.exitCode));
    run.output = ReadBytes(output);
    return run;
}

// Each source got its output beside it, with the audio in it.
void ExpectConverted(const TestFolder& dir) {
    for (int i = 0; i < 3; ++i) {
        std::string out = ReadBytes(dir.File(clString::Formatted(u"tone %d.aiff", i).text));
        EXPECT_EQ(out.compare(0, 4, "FORM"), 0) << i;
        EXPECT_GT(out.size(), FindChunk(ToneWave(i, 1.5), "data").size()) << i;
    }
}

}  // namespace

TEST(ConversionWindowRun, TheWindowConvertsTheListAndClosesByItself) {
    TestFolder dir;
    RunResult run = ConvertWith(dir, nullptr);
    EXPECT_EQ(run.exitCode, 0);
    ExpectConverted(dir);
    EXPECT_EQ(run.output.find("Converting File"), std::string::npos) << "no terminal view: " << run.output;
    EXPECT_EQ(run.output.find("Error"), std::string::npos) << run.output;
}

TEST(ConversionWindowRun, ConsoleKeepsTheTerminalView) {
    TestFolder dir;
    RunResult run = ConvertWith(dir, u"-console");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.output.find("Converted 3 Files to AIFF"), std::string::npos) << run.output;
    ExpectConverted(dir);
}
