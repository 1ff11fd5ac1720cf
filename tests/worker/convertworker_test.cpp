// The real ConvertWorker, run as the front end runs it, in a private
// installation (<build>/tests/workerinstall) with the example Raw PCM
// decoder and encoder and a few test effects.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include "foundation/findfiles.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/fileio.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "foundation/syncobjects.h"
#include "foundation/utf.h"
#include "tests/support/testfolder.h"

namespace {

clString WorkerPath() {
    clString folder = GetProgramFolder();
    RemoveBackslashes(folder);
    clString path = JoinPath(JoinPath(folder, clString(u"workerinstall")), clString(u"ConvertWorker"));
    path.Append(PlatformExecutableSuffix());
    return path;
}

std::string Pcm16(int frames, int channels) {
    std::string bytes;
    for (int i = 0; i < frames * channels; ++i) {
        auto s = static_cast<int16_t>((int64_t{i} * 7919) % 60000 - 30000);
        bytes.push_back(static_cast<char>(s & 0xFF));
        bytes.push_back(static_cast<char>(static_cast<uint16_t>(s) >> 8));
    }
    return bytes;
}

struct Outcome {
    int exitCode = -1;
    std::u16string output;  // standard output and error, as one text
    bool Says(const std::u16string& text) const { return output.find(text) != std::u16string::npos; }
};

class Worker : public ::testing::Test {
protected:
    TestFolder dir;
    std::u16string source = dir.File(u"in \u00e9.raw16").text;
    std::u16string target = dir.File(u"out.raw16").text;

    std::u16string Options(const std::u16string& effects = u"", const std::u16string& encoder = u"Raw PCM",
                           const std::u16string& quit = u"") const {
        return u" -infile=\"" + source + u"\" -outfile=\"" + target + u"\" -convert_to=\"" + encoder +
               u"\" -evtquit=\"" + quit + u"\" -evtwatchdog=\"qvtest-watch\" -batchid=\"1\"" + effects + u" ";
    }

    Outcome Run(const std::u16string& options) const {
        clString commandFile = dir.File(u"QvT.tmp");
        EXPECT_TRUE(WriteBytes(commandFile, Utf16Le(options)));
        clStringList arguments;
        arguments.Add(clString(u"-qvcmd=", commandFile.text));
        Outcome outcome;
        clString log = dir.File(u"worker.log");
        EXPECT_TRUE(PlatformRunProcess(WorkerPath(), arguments, log, &outcome.exitCode));
        outcome.output = FromPipeText(ReadBytes(log));
        return outcome;
    }

    // Nothing but the given files in the test folder.
    int FilesBesides() const {
        int count = 0;
        clFindFiles all(clString(u"*"), dir.Path());
        while (all.Next()) {
            std::u16string name = all.found.name.text;
            if (name.find(u".qvtmp") != std::u16string::npos) ++count;
        }
        return count;
    }
};

}  // namespace

TEST_F(Worker, ConvertsThroughTheChainAndReportsInWholeLines) {
    std::string audio = Pcm16(150000, 2);  // several blocks
    ASSERT_TRUE(WriteBytes(clString(source.c_str()), audio));
    Outcome outcome = Run(Options(u" -dspeffect1=\"Example Gain=-db=0\""));
    EXPECT_EQ(outcome.exitCode, 0) << std::string(outcome.output.begin(), outcome.output.end());
    EXPECT_EQ(ReadBytes(clString(target.c_str())), audio);  // int -> float -> int at 0 dB is exact
    EXPECT_TRUE(outcome.Says(u"MSGTO: qvt: msLen: 3401\r\n"));
    EXPECT_TRUE(outcome.Says(u"MSGTO: qvt: ActionInput: " + source + u"\r\n"));
    EXPECT_TRUE(outcome.Says(u"MSGTO: qvt: PCDone: 100\r\n"));
    // Progress only rises.
    int last = -1;
    for (size_t at = outcome.output.find(u"PCDone: "); at != std::u16string::npos;
         at = outcome.output.find(u"PCDone: ", at + 1)) {
        int value = std::stoi(std::string(outcome.output.begin() + static_cast<std::ptrdiff_t>(at) + 8,
                                          outcome.output.begin() + static_cast<std::ptrdiff_t>(at) + 11));
        EXPECT_GT(value, last);
        last = value;
    }
    EXPECT_EQ(FilesBesides(), 0);
}

// Every failure is one plain line naming the file and the cause; no output
// and no temporary file remain, and an old output stays as it was.
TEST_F(Worker, FailuresAreNamedAndLeaveNothingBehind) {
    ASSERT_TRUE(WriteBytes(clString(target.c_str()), "old output"));
    Outcome missing = Run(Options());
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.Says(u"Unable to open source file '" + source + u"'\r\n"));

    ASSERT_TRUE(WriteBytes(clString(source.c_str()), Pcm16(1000, 2)));
    Outcome encoder = Run(Options(u"", u"No Such Encoder"));
    EXPECT_EQ(encoder.exitCode, 1);
    EXPECT_TRUE(encoder.Says(u"Unknown encoder 'No Such Encoder'\r\n"));

    Outcome effect = Run(Options(u" -dspeffect1=\"Nothing=x\""));
    EXPECT_TRUE(effect.Says(u"Unknown effect 'Nothing'\r\n"));

    Outcome failing = Run(Options(u" -dspeffect1=\"Test failing=\""));
    EXPECT_EQ(failing.exitCode, 1);
    EXPECT_TRUE(failing.Says(u"Error in effect 'Test failing' on '" + source + u"' at 00:00: nothing failed\r\n"));

    EXPECT_EQ(FilesBesides(), 0);

    Outcome crash = Run(Options(u" -dspeffect1=\"Test crash=\""));
    EXPECT_NE(crash.exitCode, 0);
    EXPECT_TRUE(crash.Says(u"ConvertWorker crashed while converting '" + source + u"'\r\n"));
    EXPECT_EQ(ReadBytes(clString(target.c_str())), "old output");
    // Windows can't delete a file that the crashed encoder still holds
    // open, so there the temporary file of a crash may remain.
    if (!PlatformUsesWindowsPaths()) {
        EXPECT_EQ(FilesBesides(), 0);
    }
}

TEST_F(Worker, AnOutputFolderThatCantBeWrittenIsNamed) {
    ASSERT_TRUE(WriteBytes(clString(source.c_str()), Pcm16(1000, 2)));
    // Missing folders are made; one below a plain file can't be.
    ASSERT_TRUE(WriteBytes(dir.File(u"plain file"), "x"));
    target = dir.File(u"plain file").text;
    target += NativePathSyntax().separator;
    target += u"out.raw16";
    Outcome outcome = Run(Options());
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.Says(u"Unable to create output file '" + target + u"': '" + dir.File(u"plain file").text +
                             u"' is a file, not a folder\r\n"))
        << std::string(outcome.output.begin(), outcome.output.end());
}

// A disk that fills up half way (a file-size limit stands in for it): the
// write fails with a line, and neither the output nor a temporary remains.
TEST_F(Worker, AFullDiskFailsTheJobAndLeavesTheOldOutput) {
    if (PlatformUsesWindowsPaths()) GTEST_SKIP() << "a file-size limit needs a POSIX shell";
    ASSERT_TRUE(WriteBytes(clString(source.c_str()), Pcm16(200000, 2)));
    ASSERT_TRUE(WriteBytes(clString(target.c_str()), "old output"));
    clString commandFile = dir.File(u"QvT.tmp");
    ASSERT_TRUE(WriteBytes(commandFile, Utf16Le(Options())));
    clString worker(WorkerPath());
    std::string script = "ulimit -f 200; exec \"" + std::string(worker.ToUtf8()) + "\" -qvcmd=\"" +
                         std::string(commandFile.ToUtf8()) + "\"";
    clStringList arguments;
    arguments.Add(u"-c");
    clString scriptText;
    Utf8ToString(script.c_str(), static_cast<int64_t>(script.size()), scriptText);
    arguments.Add(scriptText);
    int exitCode = -1;
    ASSERT_TRUE(PlatformRunProcess(clString(u"/bin/sh"), arguments, dir.File(u"worker.log"), &exitCode));
    std::u16string log = FromPipeText(ReadBytes(dir.File(u"worker.log")));
    EXPECT_EQ(exitCode, 1);
    EXPECT_NE(log.find(u"Error encoding '" + target + u"'"), std::u16string::npos)
        << std::string(log.begin(), log.end());
    EXPECT_EQ(ReadBytes(clString(target.c_str())), "old output");
    EXPECT_EQ(FilesBesides(), 0);
}

TEST_F(Worker, CancelStopsWithinAFractionOfASecondAndLeavesNothing) {
    ASSERT_TRUE(WriteBytes(clString(source.c_str()), Pcm16(65536 * 200, 1)));  // 200 blocks, 20 ms each
    std::u16string name = u"qvtest-cancel-" + std::u16string(dir.File(u"").text).substr(0, 0) +
                          std::u16string(clString::Formatted(u"%d", static_cast<int>(std::rand())).text);
    XEvent cancel;
    ASSERT_TRUE(cancel.Create(name.c_str()));
    std::thread trigger([&cancel] {
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        cancel.Set();
    });
    auto start = std::chrono::steady_clock::now();
    Outcome outcome = Run(Options(u" -dspeffect1=\"Test slow=\"", u"Raw PCM", name));
    auto took = std::chrono::steady_clock::now() - start;
    trigger.join();
    EXPECT_EQ(outcome.exitCode, 3) << std::string(outcome.output.begin(), outcome.output.end());
    EXPECT_LT(took, std::chrono::milliseconds(3000));  // 200 blocks would take 4 s
    EXPECT_FALSE(outcome.Says(u"Error"));
    EXPECT_TRUE(ReadBytes(clString(target.c_str())).empty());
    EXPECT_EQ(FilesBesides(), 0);
}

// A cancel that comes at the very end, while the effects finish (their
// EndConversion) or after the encoder closed (AfterConversion, just ahead
// of the rename), still leaves no output and no temporary file.
TEST_F(Worker, ACancelAtTheVeryEndLeavesNothing) {
    ASSERT_TRUE(WriteBytes(clString(source.c_str()), Pcm16(5000, 2)));
    ASSERT_TRUE(WriteBytes(clString(target.c_str()), "old output"));
    for (const char* where : {"end", "after"}) {
        clString hold = dir.File(clString::Formatted(u"hold-%d", static_cast<int>(std::strlen(where))).text);
        ASSERT_TRUE(MakeFolders(hold));
        std::u16string name = u"qvtest-late-" + std::u16string(clString(std::rand()).text);
        XEvent cancel;
        ASSERT_TRUE(cancel.Create(name.c_str()));
        std::u16string setting = std::u16string(where, where + std::strlen(where)) + u"|" + std::u16string(hold.text);
        std::thread trigger([&] {
            // When the effect holds, the audio is all written.
            for (int i = 0; i < 1000 && !PathExists(JoinPath(hold, clString(u"holding"))); ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
            cancel.Set();
            // The worker looks at the event every 50 ms.
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            WriteBytes(JoinPath(hold, clString(u"release")), "");
        });
        Outcome outcome = Run(Options(u" -dspeffect1=\"Test late=" + setting + u"\"", u"Raw PCM", name));
        trigger.join();
        EXPECT_TRUE(PathExists(JoinPath(hold, clString(u"holding")))) << where;
        EXPECT_EQ(outcome.exitCode, 3) << where << ": " << std::string(outcome.output.begin(), outcome.output.end());
        EXPECT_FALSE(outcome.Says(u"OutputReady")) << where;
        EXPECT_EQ(ReadBytes(clString(target.c_str())), "old output") << where;
        EXPECT_EQ(FilesBesides(), 0) << where;
    }
}

TEST(WorkerHelp, ExplainsTheCommandFile) {
    TestFolder dir;
    clStringList arguments;
    arguments.Add(u"--help");
    int exitCode = -1;
    ASSERT_TRUE(PlatformRunProcess(WorkerPath(), arguments, dir.File(u"help.txt"), &exitCode));
    EXPECT_EQ(exitCode, 0);
    EXPECT_NE(ReadBytes(dir.File(u"help.txt")).find("-qvcmd=\"FILE\""), std::string::npos);
}

// An output never replaces its own source, whatever the overwrite choice:
// by its own name, or through a second name of the same file.
TEST_F(Worker, TheSourceIsNeverReplacedByItsOwnOutput) {
    std::string audio = Pcm16(20000, 2);
    ASSERT_TRUE(WriteBytes(clString(source.c_str()), audio));
    target = source;
    Outcome same = Run(Options(u" -dspeffect1=\"Example Gain=-db=-6\""));
    EXPECT_EQ(same.exitCode, 1);
    EXPECT_TRUE(same.Says(u"Unable to create output file '" + source +
                          u"': it is the source file itself, which is never replaced; choose another folder or naming"))
        << std::string(same.output.begin(), same.output.end());
    EXPECT_FALSE(same.Says(u"OutputReady"));
    EXPECT_EQ(ReadBytes(clString(source.c_str())), audio);
    EXPECT_EQ(FilesBesides(), 0);
}

// The temporary name is short and fixed: an output name as long as a name
// may be still converts, and one longer than that is called too long.
TEST_F(Worker, LongOutputNamesConvertAndTooLongOnesSaySo) {
    std::string audio = Pcm16(5000, 2);
    ASSERT_TRUE(WriteBytes(clString(source.c_str()), audio));
    target = dir.File((std::u16string(248, u'n') + u".raw16").c_str()).text;  // 254 units and bytes
    Outcome longest = Run(Options());
    EXPECT_EQ(longest.exitCode, 0) << std::string(longest.output.begin(), longest.output.end());
    EXPECT_TRUE(longest.Says(u"MSGTO: qvt: OutputReady: 1\r\n"));
    EXPECT_EQ(ReadBytes(clString(target.c_str())), audio);
    if (!PlatformUsesWindowsPaths()) {
        target = dir.File((std::u16string(300, u'n') + u".raw16").c_str()).text;
        Outcome tooLong = Run(Options());
        EXPECT_EQ(tooLong.exitCode, 1);
        EXPECT_TRUE(tooLong.Says(u"Unable to put the output in place as '" + target +
                                 u"': the name is too long for the file system\r\n"))
            << std::string(tooLong.output.begin(), tooLong.output.end());
    }
    EXPECT_EQ(FilesBesides(), 0);
}
