// Crash capture on the real TrackConverter: a crash on purpose leaves a
// record under the crashes folder and starts the program again, whose
// report window the test script answers; and the record's name when one
// of the same process id is there already.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "crash/crashhandler.h"
#include "foundation/findfiles.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "foundation/utf.h"
#include "tests/support/testfolder.h"

namespace {


TEST(CrashRecordName, TakesTheNextFreeNumberBehindTheProcessId) {
    TestFolder dir;
    clString folder = dir.Path();
    EXPECT_EQ(U(GetFileName(ChooseCrashDumpName(folder, 1234))), u"crash-1234.dmp");
    WriteBytes(dir.File(u"crash-1234.dmp"), "x");
    EXPECT_EQ(U(GetFileName(ChooseCrashDumpName(folder, 1234))), u"crash-1234-1.dmp");
    WriteBytes(dir.File(u"crash-1234-1.dmp"), "x");
    EXPECT_EQ(U(GetFileName(ChooseCrashDumpName(folder, 1234))), u"crash-1234-2.dmp");
    EXPECT_EQ(U(GetFileName(ChooseCrashDumpName(folder, 99))), u"crash-99.dmp") << "another id starts afresh";
}

class CrashRunTest : public ::testing::Test {
protected:
    TestFolder dir;
    clString script = dir.File(u"script.txt");
    clString crashes;
    clStringList before;

    CrashRunTest() {
        PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"0");
        PlatformSetEnvironment(u"QT_QPA_PLATFORM", u"offscreen");
        PlatformSetEnvironment(u"QUILLOTONE_TEST_SCRIPT", script.text);
#if !defined(_WIN32)
        // The records land in the test's own application data folder.
        PlatformSetEnvironment(u"XDG_DATA_HOME", dir.File(u"data").text);
#endif
        crashes = CrashBaseFolder();
        AddBackslash(crashes);
        crashes.Append(u"crashes");
        Records(before);
    }
    ~CrashRunTest() override {
        PlatformSetEnvironment(u"QUILLOTONE_TEST_SCRIPT", u"");
        PlatformSetEnvironment(u"QUILLOTONE_TEST_CRASH", u"");
        PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"1");
        // Under Wine the folder is the prefix's, shared: only this test's
        // records go.
        clStringList now;
        Records(now);
        for (int64_t i = 0; i < now.Count(); ++i) {
            if (!before.Find(now[i].text, false)) DeleteFileEx(JoinPath(crashes, now[i]));
        }
    }
    void Records(clStringList& names) const {
        names.Clear();
        clFindFiles find(clString(u"crash-*.dmp"), crashes);
        while (find.Next()) names.Add(GetFileName(find.fullName));
    }
    // The records this test made.
    void NewRecords(clStringList& fresh) const {
        clStringList now;
        Records(now);
        fresh.Clear();
        for (int64_t i = 0; i < now.Count(); ++i) {
            if (!before.Find(now[i].text, false)) fresh.Add(now[i]);
        }
    }
    int Run(const clStringList& arguments) {
        int exitCode = -1;
        EXPECT_TRUE(PlatformRunProcess(ProgramPath(u"TrackConverter"), arguments, dir.File(u"run.log"), &exitCode));
        return exitCode;
    }
    // The relaunched program runs on its own: its report window has
    // answered once its script line is used up.
    bool ScriptUsedUp() const {
        for (int i = 0; i < 600; ++i) {
            if (ReadBytes(script).empty()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return false;
    }
    void CrashAndReport(const char16_t* kind) {
        WriteBytes(script, "crashreport: press 1\n");
        PlatformSetEnvironment(u"QUILLOTONE_TEST_CRASH", kind);
        clStringList arguments;
        arguments.Add(dir.File(u"a.wav"));
        EXPECT_EQ(Run(arguments), 0) << "a crash ends quietly";
        EXPECT_TRUE(ScriptUsedUp()) << "the second instance showed the report";
        clStringList fresh;
        NewRecords(fresh);
        ASSERT_EQ(fresh.Count(), 1);
        EXPECT_EQ(fresh[0].Compare(u"crash-", 6), 0);
        std::string record = ReadBytes(JoinPath(crashes, fresh[0]));
#if defined(_WIN32)
        EXPECT_EQ(record.substr(0, 4), "MDMP") << "a minidump";
#else
        EXPECT_EQ(record.rfind("Quillotone Track Converter crash record\n", 0), 0u) << record;
        EXPECT_NE(record.find("signal: 11 SIGSEGV"), std::string::npos) << record;
        EXPECT_NE(record.find("backtrace:\n"), std::string::npos) << record;
#if defined(__x86_64__)
        EXPECT_NE(record.find("\nRSP 0x"), std::string::npos) << record;
#endif
#endif
    }
};

}  // namespace

TEST_F(CrashRunTest, AFaultLeavesARecordAndTheReportShows) { CrashAndReport(u"fault"); }

TEST_F(CrashRunTest, AStackOverflowStillLeavesARecord) { CrashAndReport(u"stack"); }

// The report instance: the switch in any case shows the record's report;
// a record that is gone ends the program at once, without a window.
TEST_F(CrashRunTest, TheReportInstanceShowsOnlyARecordThatExists) {
    MakeFolders(crashes);
    clString record = JoinPath(crashes, clString(u"crash-1-test.dmp"));
    WriteBytes(record, "record");
    WriteBytes(script, "crashreport: press 1\n");
    clStringList arguments;
    arguments.Add(clString(u"-CRASHED"));
    arguments.Add(clString(u"crash-1-test.dmp"));
    EXPECT_EQ(Run(arguments), 0) << ReadBytes(dir.File(u"run.log"));
    EXPECT_EQ(ReadBytes(script), "") << "the report showed";
    DeleteFileEx(record);

    WriteBytes(script, "crashreport: press 1\n");
    EXPECT_EQ(Run(arguments), 0);
    EXPECT_EQ(ReadBytes(script), "crashreport: press 1\n") << "no window for a record that is gone";
}
