// Whole batches through the real TrackConverter, ConvertWorker and
// plug-ins of the build, on audio the test makes: two encoders at once,
// naming by tags, a copy rule, the album gain at the batch's end, a broken
// source, and a cancel half way through.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <vector>

#include "engine/batchsettings.h"
#include "plugins/encoderentries.h"
#include "engine/globals.h"
#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/platform/thread.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "tests/codecs/wavefiles.h"
#include "tests/support/testfolder.h"

#ifndef _WIN32
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

// The reference tools (flac, lame, metaflac) and the lossy plug-ins exist
// on Linux only; the Windows build runs the scheduler's tests with
// scripted workers.
#ifndef _WIN32
namespace {

bool RunTool(const char16_t* program, std::initializer_list<clString> words, const clString& log) {
    clStringList arguments;
    for (const clString& w : words) arguments.Add(w);
    int code = -1;
    return PlatformRunProcess(clString(program), arguments, log, &code) && code == 0;
}

class EndToEnd : public ::testing::Test {
protected:
    TestFolder dir;
    clString temp;

    EndToEnd() {
        SetSettingsRoot(kSettingsHive, kSettingsRoot);
        temp = dir.File(u"tmp");
        MakeFolders(temp);
        // The program's scratch files go here, so the test sees every one.
        PlatformSetEnvironment(u"TMPDIR", temp.text);
        PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"1");
    }
    ~EndToEnd() override { PlatformSetEnvironment(u"TMPDIR", u"/tmp"); }

    void SetEntry(const char16_t* entry, const char16_t* name, const clString& value) {
        SetSettingText(value, name, settingsRootHive, EntryKeyPath(clString(entry), clString()).text);
    }

    clString WriteList(const std::vector<clString>& paths) {
        std::u16string text;
        for (const clString& p : paths) text += U(p) + u"\r\n";
        clString list = dir.File(u"list.txt");
        WriteBytes(list, Utf16Le(text));
        return list;
    }

    // Every file (not folder) below `folder`.
    static std::vector<std::u16string> FilesBelow(const clString& folder) {
        std::vector<std::u16string> found;
        std::error_code error;
        std::filesystem::path root(clString(folder).ToUtf8());
        for (auto it = std::filesystem::recursive_directory_iterator(root, error);
             !error && it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
            if (it->is_regular_file()) found.push_back(it->path().u16string());
        }
        return found;
    }
};

}  // namespace

TEST_F(EndToEnd, TwentyFilesToFlacAndMp3WithNamingCopyRuleAlbumGainAndABrokenSource) {
    clString src = dir.File(u"src");
    MakeFolders(src);
    std::vector<clString> sources;
    for (int i = 0; i < 18; ++i) {
        clString wav = JoinPath(src, clString::Formatted(u"t%02d.wav", i));
        WriteBytes(wav, ToneWave(i, 1.0));
        clString flac = JoinPath(src, clString::Formatted(u"t%02d.flac", i));
        ASSERT_TRUE(RunTool(
            u"/usr/bin/flac",
            {clString(u"-s"), clString(u"-f"), clString::Formatted(u"--tag=ARTIST=%s", i < 9 ? u"Alpha" : u"Beta"),
             clString::Formatted(u"--tag=TITLE=Song %02d", i), clString(u"-o"), flac, wav},
            dir.File(u"tool.log")));
        DeleteFileEx(wav);
        sources.push_back(flac);
    }
    clString mp3Source = JoinPath(src, clString(u"m.mp3"));
    clString wav = JoinPath(src, clString(u"m.wav"));
    WriteBytes(wav, ToneWave(30, 1.0));
    ASSERT_TRUE(RunTool(u"/usr/bin/lame",
                        {clString(u"--quiet"), clString(u"--ta"), clString(u"Gamma"), clString(u"--tt"),
                         clString(u"Copied"), wav, mp3Source},
                        dir.File(u"tool.log")));
    DeleteFileEx(wav);
    sources.push_back(mp3Source);
    clString broken = JoinPath(src, clString(u"broken.flac"));
    WriteBytes(broken, "fLaC" + std::string(5000, '\x55'));
    sources.push_back(broken);

    clString out = dir.File(u"out");
    clString flacOut = JoinPath(out, clString(u"flac"));
    clString mp3Out = JoinPath(out, clString(u"mp3"));
    SetEntry(
        u"[Multi Encoder]", u"qvt_CLI",
        clString::Formatted(
            u"-enc1=\"FLAC=\" -encMopt1=\"-tofolder={mqt}%s{mqt} -dynamic={mqt}[artist]\\[title]{mqt}\" "
            u"-encDSP1=\"-dspeffect1={mqt}ReplayGain={mqt} -dspeffect2={mqt}Conditional Encoding=-action={qt}0{qt} "
            u"-ext={qt}.mp3{qt}{mqt}\" "
            u"-enc2=\"MP3 (Lame)=-mode={mqt}cbr{mqt} -bitrate={mqt}128{mqt}\" "
            u"-encMopt2=\"-tofolder={mqt}%s{mqt} -dynamic={mqt}[artist]\\[title]{mqt}\"",
            flacOut.text, mp3Out.text));
    clString list = WriteList(sources);
    clString log = dir.File(u"run.log");
    clStringList arguments;
    arguments.Add(clString::Formatted(u"-list_to_conv=%s", list.text));
    arguments.Add(clString(u"-skip_ready_to_conv"));
    arguments.Add(clString(u"-select_profile=[Multi Encoder]"));
    int code = -1;
    ASSERT_TRUE(PlatformRunProcess(ProgramPath(u"TrackConverter"), arguments, log, &code));
    std::string report = ReadBytes(log);

    for (int i = 0; i < 18; ++i) {
        clString artist(i < 9 ? u"Alpha" : u"Beta");
        clString name = clString::Formatted(u"%s/Song %02d", artist.text, i);
        EXPECT_TRUE(PathExists(JoinPath(flacOut, clString(name.text, u".flac")))) << i << report;
        EXPECT_TRUE(PathExists(JoinPath(mp3Out, clString(name.text, u".mp3")))) << i;
    }
    // The MP3 source: copied byte for byte by the FLAC item's rule, and
    // converted by the MP3 item.
    // (The album gain of the batch end lands in the copy too.)
    EXPECT_GE(ReadBytes(JoinPath(flacOut, clString(u"Gamma/Copied.mp3"))).size(), ReadBytes(mp3Source).size());
    EXPECT_TRUE(PathExists(JoinPath(mp3Out, clString(u"Gamma/Copied.mp3"))));
    // The broken source fails both jobs, and the log names it.
    EXPECT_NE(report.find("broken.flac"), std::string::npos) << report;
    // The album gain reached the outputs of the FLAC batch at its end.
    ASSERT_TRUE(
        RunTool(u"/usr/bin/metaflac",
                {clString(u"--show-tag=REPLAYGAIN_ALBUM_GAIN"), JoinPath(flacOut, clString(u"Alpha/Song 00.flac"))},
                dir.File(u"tag.log")));
    EXPECT_NE(ReadBytes(dir.File(u"tag.log")).find("REPLAYGAIN_ALBUM_GAIN="), std::string::npos);
    // Nothing stays behind: no command files, no scratch folders, no
    // half-written outputs, and every source as it was.
    EXPECT_TRUE(FilesBelow(temp).empty());
    for (const auto& f : FilesBelow(out)) {
        EXPECT_EQ(f.find(u".tmp"), std::u16string::npos);
    }
    EXPECT_EQ(FilesBelow(out).size(), 38u);
}

TEST_F(EndToEnd, CancelHalfWayLeavesNoPartialOutputsAndNoScratch) {
    clString src = dir.File(u"src");
    MakeFolders(src);
    std::vector<clString> sources;
    for (int i = 0; i < 12; ++i) {
        clString wav = JoinPath(src, clString::Formatted(u"long%02d.wav", i));
        WriteBytes(wav, ToneWave(i, 40.0));
        sources.push_back(wav);
    }
    clString out = dir.File(u"out");
    SetEntry(u"MP3 (Lame)", u"QVTUserFolder", clString());
    SetSettingNumber(1, u"QVTUserFolder", settingsRootHive, EntryKeyPath(clString(u"MP3 (Lame)"), clString()).text);
    SetEntry(u"MP3 (Lame)", u"QVTUserFolderStr", out);
    SetEntry(u"MP3 (Lame)", u"QVTDSPEffects", clString(u"-dspeffect1=\"ReplayGain=\""));
    // Constant bitrate, so a whole output has a known size.
    SetEntry(u"MP3 (Lame)", u"qvt_CLI", clString(u"-mode=\"cbr\" -bitrate=\"128\""));
    clString list = WriteList(sources);
    clString program = ProgramPath(u"TrackConverter");
    pid_t pid = fork();
    if (pid == 0) {
        int fd = ::open(clString(dir.File(u"run.log")).ToUtf8(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(fd, 1);
        ::dup2(fd, 2);
        std::string listOption = std::string("-list_to_conv=") + clString(list).ToUtf8();
        std::string programText = clString(program).ToUtf8();
        ::execl(programText.c_str(), programText.c_str(), listOption.c_str(), "-skip_ready_to_conv",
                "-select_profile=MP3 (Lame)", static_cast<char*>(nullptr));
        _exit(127);
    }
    ASSERT_GT(pid, 0);
    // Half way: some outputs done, others being written.
    for (int i = 0; i < 600 && FilesBelow(out).size() < 4; ++i) PlatformSleep(50);
    ::kill(pid, SIGINT);
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status));
    std::vector<std::u16string> written = FilesBelow(out);
    EXPECT_GE(written.size(), 1u);
    EXPECT_LT(written.size(), 12u) << "the cancel came too late to test anything";
    // Every output that exists is whole: the worker removes what it had
    // begun. A whole 40 s MP3 at 128 kbit/s has some 640 kB.
    for (const auto& f : written) {
        EXPECT_EQ(f.find(u".tmp"), std::u16string::npos);
        EXPECT_GT(clFile::GetFileSize64(clString(f.c_str())), 600000u) << std::string(clString(f.c_str()).ToUtf8());
    }
    EXPECT_TRUE(FilesBelow(temp).empty());
}
#endif
