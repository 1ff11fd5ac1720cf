// The real qvt, as a user or a script runs it: conversions with the
// in-house Wave and AIFF encoders (so the same test runs on both
// platforms), exit codes, one-line errors, names, profiles and settings.
#include <gtest/gtest.h>

#include "tests/cli/qvtrun.h"
#include "tests/codecs/wavefiles.h"

namespace {

class QvtTest : public ::testing::Test {
protected:
    TestFolder dir;
    clString src = dir.File(u"src");

    QvtTest() {
        PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"1");
        MakeFolders(JoinPath(src, clString(u"inner")));
        for (int i = 0; i < 3; ++i) {
            WriteBytes(JoinPath(src, clString::Formatted(u"tone %d.wav", i)), ToneWave(i, 0.5));
        }
        WriteBytes(JoinPath(src, clString(u"notes.txt")), "not audio");
        WriteBytes(JoinPath(src, clString(u"inner/deep.wav")), ToneWave(5, 0.5));
    }

    QvtRun Qvt(std::initializer_list<clString> words) {
        return RunProgram(ProgramPath(u"qvt"), words, dir.File(u"qvt.log"));
    }
    clString Out(const char16_t* name) { return JoinPath(dir.File(u"out"), clString(name)); }
};

}  // namespace

TEST_F(QvtTest, ConvertsAFolderWithTwoEncodersAtOnceAndSkipsWhatExists) {
    QvtRun run =
        Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--to"), clString(u"AIFF"),
             clString(u"--folder"), dir.File(u"out"), clString(u"--naming"), clString(u"[origfilename] copy"), src});
    ASSERT_EQ(run.code, 0) << run.output;
    for (const char16_t* name : {u"tone 0 copy.wav", u"tone 2 copy.wav", u"tone 1 copy.aiff"}) {
        EXPECT_TRUE(PathExists(Out(name))) << clString(name).ToUtf8() << run.output;
    }
    EXPECT_FALSE(PathExists(Out(u"deep copy.wav"))) << "a folder is walked only with --recursive";
    EXPECT_NE(run.output.find("Converted 6 Files"), std::string::npos) << run.output;

    // Again: every output exists, and without a terminal nothing is
    // overwritten without consent.
    WriteBytes(Out(u"tone 0 copy.wav"), "mine");
    run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), dir.File(u"out"),
               clString(u"--naming"), clString(u"[origfilename] copy"), clString(u"--recursive"), src});
    EXPECT_EQ(run.code, 0) << run.output;
    EXPECT_EQ(ReadBytes(Out(u"tone 0 copy.wav")), "mine");
    EXPECT_TRUE(PathExists(Out(u"deep copy.wav")));
    EXPECT_NE(run.output.find("Skipping 3 files that exist already."), std::string::npos) << run.output;

    run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), dir.File(u"out"),
               clString(u"--naming"), clString(u"[origfilename] copy"), clString(u"--overwrite"), clString(u"always"),
               JoinPath(src, clString(u"tone 0.wav"))});
    EXPECT_EQ(run.code, 0) << run.output;
    EXPECT_NE(ReadBytes(Out(u"tone 0 copy.wav")), "mine");
}

TEST_F(QvtTest, AFailedFileGivesExitCodeOneAndItsLog) {
    clString broken = JoinPath(src, clString(u"broken.wav"));
    WriteBytes(broken, "RIFF\x10\x00\x00\x00WAVEjunkjunk");
    QvtRun run =
        Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), dir.File(u"out"), src});
    EXPECT_EQ(run.code, 1) << run.output;
    EXPECT_NE(run.output.find("Quillotone: Conversion Errors"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("broken.wav"), std::string::npos);
    EXPECT_TRUE(PathExists(Out(u"tone 1.wav"))) << "the batch goes on";
    EXPECT_FALSE(PathExists(Out(u"broken.wav")));
}

TEST_F(QvtTest, BadInputIsOneLineAndExitCodeTwo) {
    struct Case {
        std::initializer_list<clString> words;
        const char* message;
    } cases[] = {
        {{clString(u"convert"), clString(u"--to"), clString(u"Nope"), src}, "qvt: unknown encoder 'Nope'"},
        {{clString(u"convert"), clString(u"--effect"), clString(u"Reverb=x"), src}, "qvt: unknown effect 'Reverb'"},
        {{clString(u"convert"), dir.File(u"missing")}, "qvt: cannot read '"},
        {{clString(u"convert"), JoinPath(src, clString(u"inner/none"))}, "qvt: cannot read '"},
        {{clString(u"convert"), dir.File(u"out-none")}, "qvt: cannot read '"},
        {{clString(u"convert"), clString(u"--naming"), clString(u"[artist]\\\\[title]"), src},
         "qvt: the naming rule '[artist]\\\\[title]' leaves a folder name empty"},
        {{clString(u"convert"), clString(u"--naming"), clString(u"[artist]/"), src}, "leaves the file name empty"},
        {{clString(u"convert"), clString(u"--cores"), clString(u"0"), src}, "qvt: --cores takes a number"},
        {{clString(u"convert"), clString(u"--cores"), clString(u"3x"), src}, "qvt: --cores takes a number"},
        // Options are checked against what each library describes, before
        // anything starts.
        {{clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--options"),
          clString(u"-bits=\"12\""), src},
         "qvt: --options of Wave: -bits takes 8|16|24|32|float, not '12'"},
        {{clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--options"),
          clString(u"-bitz=\"16\""), src},
         "qvt: --options of Wave has no option -bitz (it takes -bits)"},
        {{clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--effect"),
          clString(u"Bit Depth=-bits=\"16x\""), src},
         "qvt: --effect Bit Depth: -bits takes 8|16|24|32, not '16x'"},
        {{clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--effect"),
          clString(u"Bit Depth=-bits={qt}16x{qt}"), src},
         "qvt: --effect Bit Depth: -bits takes 8|16|24|32, not '16x'"},
        {{clString(u"convert"), clString(u"--overwrite"), clString(u"maybe"), src}, "qvt: --overwrite takes"},
        {{clString(u"convert"), clString(u"--bogus"), src}, "qvt: unknown option '--bogus'"},
        {{clString(u"convert")}, "qvt: no files or folders given"},
        {{clString(u"frobnicate")}, "qvt: unknown command 'frobnicate'"},
    };
    for (const Case& c : cases) {
        QvtRun run = Qvt(c.words);
        EXPECT_EQ(run.code, 2) << run.output;
        EXPECT_NE(run.output.find(c.message), std::string::npos) << run.output;
        EXPECT_EQ(run.output.find('\n'), run.output.size() - 1) << "one line: " << run.output;
    }
    // A folder without audio files is an empty selection.
    MakeFolders(dir.File(u"empty"));
    QvtRun run = Qvt({clString(u"convert"), dir.File(u"empty")});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.output, "qvt: no audio files found in the paths given\n");
    // Audio only further down: the hint.
    clString deeper = JoinPath(dir.File(u"nested"), clString(u"deeper"));
    MakeFolders(deeper);
    WriteBytes(JoinPath(deeper, clString(u"a.wav")), ToneWave(1, 0.2));
    run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), dir.File(u"nested")});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.output,
              "qvt: no audio files found in the paths given, but folders below them hold some: add --recursive\n");
}

TEST_F(QvtTest, HelpNamesProfilesAndSettings) {
    for (const char16_t* command : {u"convert", u"plugins", u"name", u"settings", u"profile"}) {
        QvtRun run = Qvt({clString(command), clString(u"--help")});
        EXPECT_EQ(run.code, 0);
        EXPECT_EQ(run.output.rfind("Usage: qvt ", 0), 0u) << run.output;
        // "help COMMAND" says the same.
        QvtRun help = Qvt({clString(u"help"), clString(command)});
        EXPECT_EQ(help.code, 0);
        EXPECT_EQ(help.output, run.output);
    }
    QvtRun unknown = Qvt({clString(u"help"), clString(u"nope")});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_EQ(unknown.output, "qvt: unknown command 'nope' (see qvt --help)\n");
    for (const char16_t* flag : {u"--version", u"-V"}) {
        QvtRun version = Qvt({clString(flag)});
        EXPECT_EQ(version.code, 0);
        EXPECT_EQ(version.output.rfind("qvt (Quillotone Track Converter) ", 0), 0u) << version.output;
        EXPECT_EQ(version.output.back(), '\n');
    }
    // Each encoder and effect with what its options take.
    QvtRun run = Qvt({clString(u"plugins")});
    EXPECT_NE(run.output.find("  Wave                         .wav\n      -bits=\"8|16|24|32|float\""),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("  Bit Depth\n      -bits=\"8|16|24|32\""), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("Effects:"), std::string::npos);

    run = Qvt({clString(u"name"), clString(u"--to"), clString(u"AIFF"), clString(u"--folder"), dir.File(u"out"),
               clString(u"[origfilename] (x)"), JoinPath(src, clString(u"tone 1.wav"))});
    EXPECT_EQ(run.code, 0);
    std::string expected = std::string(JoinPath(src, clString(u"tone 1.wav")).ToUtf8()) + " -> " +
                           std::string(Out(u"tone 1 (x).aiff").ToUtf8()) + "\n";
    EXPECT_EQ(run.output, expected);

    // Without --folder, beside the source, as convert puts it.
    run = Qvt({clString(u"name"), clString(u"--to"), clString(u"AIFF"), clString(u"[origfilename] (x)"),
               JoinPath(src, clString(u"tone 1.wav"))});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.output, std::string(JoinPath(src, clString(u"tone 1.wav")).ToUtf8()) + " -> " +
                              std::string(JoinPath(src, clString(u"tone 1 (x).aiff")).ToUtf8()) + "\n");

    run = Qvt({clString(u"profile"), clString(u"create"), clString(u"Small"), clString(u"--to"), clString(u"Wave")});
    EXPECT_EQ(run.output, "Small \"Wave\"\n");
    run = Qvt({clString(u"profile"), clString(u"list")});
    EXPECT_NE(run.output.find("Small \"Wave\"\n"), std::string::npos) << run.output;
    // A quote can't pass a Windows command line; the substitute can.
    run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Small {profileqt}Wave{profileqt}"),
               clString(u"--folder"), dir.File(u"out"), JoinPath(src, clString(u"tone 2.wav"))});
    EXPECT_EQ(run.code, 0) << run.output;
    EXPECT_TRUE(PathExists(Out(u"tone 2.wav")));
    Qvt({clString(u"profile"), clString(u"delete"), clString(u"Small {profileqt}Wave{profileqt}")});
    run = Qvt({clString(u"profile"), clString(u"list")});
    EXPECT_EQ(run.output.find("Small"), std::string::npos) << run.output;

    EXPECT_EQ(Qvt({clString(u"settings"), clString(u"set"), clString(u"Test"), clString(u"Count"), clString(u"7"),
                   clString(u"--number")})
                  .code,
              0);
    run = Qvt({clString(u"settings"), clString(u"get"), clString(u"Test"), clString(u"Count")});
    EXPECT_EQ(run.output, "7\n");
    Qvt({clString(u"settings"), clString(u"set"), clString(u"Test\\Inner"), clString(u"Name"), clString(u"a b")});
    run = Qvt({clString(u"settings"), clString(u"list"), clString(u"Test")});
    EXPECT_EQ(run.output, "Inner\\\nCount = 7\n");
    EXPECT_EQ(Qvt({clString(u"settings"), clString(u"delete"), clString(u"Test\\Inner"), clString(u"Name")}).code, 0);
    run = Qvt({clString(u"settings"), clString(u"delete"), clString(u"Test\\Inner"), clString(u"Name")});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.output, "qvt: no value 'Name' there\n");
    Qvt({clString(u"settings"), clString(u"delete"), clString(u"Test")});
    run = Qvt({clString(u"settings"), clString(u"get"), clString(u"Test"), clString(u"Count")});
    EXPECT_EQ(run.code, 1);
}

// A tag over 1024 bytes (twice the characters of name and value) is out of
// the naming language's reach, so that a batch never holds cover art in
// memory: a title of 1,000 characters names the file by its source name,
// one of 60 by itself. Either way the output keeps the whole title.
TEST_F(QvtTest, ATitleOverTheTagLimitNamesByTheFileAndStaysInTheTags) {
    const std::string longTitle(1000, 'L');
    const std::string shortTitle(60, 'S');
    std::string tone = ToneWave(1, 0.2);
    std::string format = FindChunk(tone, "fmt ");
    std::string data = FindChunk(tone, "data");
    for (const std::string* title : {&longTitle, &shortTitle}) {
        std::string list = "INFO" + Chunk("INAM", *title + '\0');
        clString name = dir.File(title == &longTitle ? u"long.wav" : u"short.wav");
        ASSERT_TRUE(WriteBytes(name, Riff(format, data, Chunk("LIST", list))));
        QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"),
                          dir.File(u"out"), clString(u"--naming"), clString(u"[title]"), name});
        ASSERT_EQ(run.code, 0) << run.output;
    }
    std::string named = ReadBytes(Out(u"long.wav"));
    EXPECT_NE(FindChunk(named, "LIST").find(longTitle), std::string::npos);
    clString shortName = Out((std::u16string(60, u'S') + u".wav").c_str());
    EXPECT_NE(FindChunk(ReadBytes(shortName), "LIST").find(shortTitle), std::string::npos);
}

#ifdef QV_TEST_CODEC_LIBRARIES
// ReplayGain's album mode: each file leaves its measurement in the batch's
// folder and the batch's end writes one album gain into every output, on
// both platforms (the folder and its listing are each platform's own).
TEST_F(QvtTest, AnAlbumGetsOneAlbumGainAtTheBatchEnd) {
    QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"FLAC"), clString(u"--folder"),
                      dir.File(u"out"), clString(u"--effect"), clString(u"ReplayGain=-mode=album"), src});
    ASSERT_EQ(run.code, 0) << run.output;
    std::string album;
    for (const char16_t* name : {u"tone 0.flac", u"tone 1.flac", u"tone 2.flac"}) {
        std::string flac = ReadBytes(Out(name));
        size_t at = flac.find("REPLAYGAIN_ALBUM_GAIN=");
        ASSERT_NE(at, std::string::npos) << clString(name).ToUtf8() << run.output;
        std::string value = flac.substr(at, flac.find(" dB", at) - at);
        if (album.empty()) album = value;
        EXPECT_EQ(value, album) << "one gain for the album";
        EXPECT_NE(flac.find("REPLAYGAIN_TRACK_GAIN="), std::string::npos);
    }
}
#endif
