// What a hostile but fair user found through the real qvt on POSIX: names
// that hold a quote, a backslash, an option or bytes that are not UTF-8;
// names with a line break and pipes named like audio files; signals; a
// worker outliving its run; a library's own message; a name as long as a
// name may be; a damaged settings file. Each case failed before its fix.
#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <future>
#include <sstream>

#include "foundation/utf.h"
#include "tests/cli/faultfixture.h"

namespace {

// The parent of process `pid`, from /proc; 0 when it is gone.
int ParentOf(int pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    size_t close = text.rfind(')');
    if (close == std::string::npos) return 0;
    std::istringstream rest(text.substr(close + 2));
    std::string state;
    int parent = 0;
    rest >> state >> parent;
    return parent;
}

// True once `pid` has gone (a zombie counts as gone), within `seconds`.
bool Gone(int pid, int seconds) {
    for (int i = 0; i < seconds * 50; ++i) {
        std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
        std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
        size_t close = text.rfind(')');
        if (text.empty() || (close != std::string::npos && text.compare(close + 2, 1, "Z") == 0)) return true;
        ::usleep(20000);
    }
    return false;
}

clString Bytes(const std::string& bytes) {
    clString text;
    FileNameToString(bytes.data(), static_cast<int64_t>(bytes.size()), text);
    return text;
}

}  // namespace

// Settings of their own in `folder` for the programs a test starts, until
// the object goes.
class OwnSettings {
public:
    explicit OwnSettings(const clString& folder) {
        MakeFolders(folder);
        PlatformGetEnvironment(u"QUILLOTONE_CONFIG_DIR", previous);
        PlatformSetEnvironment(u"QUILLOTONE_CONFIG_DIR", folder.text);
    }
    ~OwnSettings() { PlatformSetEnvironment(u"QUILLOTONE_CONFIG_DIR", previous.text); }
    OwnSettings(const OwnSettings&) = delete;
    OwnSettings& operator=(const OwnSettings&) = delete;

private:
    clString previous;
};

class SafetyTest : public FaultTest {
protected:
    // qvt with a time limit: a run that hangs ends as 124.
    QvtRun Limited(std::initializer_list<clString> words) {
        clStringList arguments;
        arguments.Add(clString(u"60"));
        arguments.Add(FaultInstallPath(u"qvt"));
        for (const clString& w : words) arguments.Add(w);
        QvtRun run;
        if (!PlatformRunProcess(clString(u"/usr/bin/timeout"), arguments, dir.File(u"qvt.log"), &run.code)) {
            run.code = -2;
        }
        run.output = ReadBytes(dir.File(u"qvt.log"));
        return run;
    }
};

// Each name converts to the output of the same name, byte for byte what a
// plainly named copy gives, and nothing else appears anywhere: the names
// once ended their value in the command file early and the rest was read
// as options (another output, an effect library by path).
TEST_F(SafetyTest, NamesWithQuotesOptionsAndStrayBytesConvertWhole) {
    // Source names, and the output names the path cleaning makes of them
    // (a quote becomes ', a backslash -).
    const std::pair<std::string, std::string> names[] = {
        {"12\" Mix.wav", "12' Mix.wav"},
        {"back\\slash.wav", "back-slash.wav"},
        {"key=value -convert_to=x.wav", "key=value -convert_to=x.wav"},
        {"a\" -outfile=\"injected.wav\" -dspeffect1=\"evil=.wav", "a' -outfile='injected.wav' -dspeffect1='evil=.wav"},
        {"100% %22 done.wav", "100% %22 done.wav"},
        {"caf\xE9 latin-1.wav", "caf\xE9 latin-1.wav"},
        {"\xFF\xFE odd bytes.wav", "\xFF\xFE odd bytes.wav"},
    };
    std::string tone = ToneWave(4, 0.3);
    WriteBytes(JoinPath(src, clString(u"plain.wav")), tone);
    for (const auto& name : names) ASSERT_TRUE(WriteBytes(JoinPath(src, Bytes(name.first)), tone)) << name.first;
    // A folder's name may carry options too; its files convert as any.
    clString crafted = JoinPath(src, Bytes("d\" -outfile=\"injected.wav\" -convert_to=\""));
    MakeFolders(crafted);
    WriteBytes(JoinPath(crafted, clString(u"deep.wav")), tone);
    QvtRun run = Limited({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                          clString(u"--recursive"), src});
    EXPECT_EQ(run.code, 0) << run.output;
    std::string expected = ReadBytes(Out(u"plain.wav"));
    ASSERT_FALSE(expected.empty()) << run.output;
    for (const auto& name : names) {
        EXPECT_TRUE(ReadBytes(JoinPath(out, Bytes(name.second))) == expected) << name.first << "\n" << run.output;
    }
    EXPECT_TRUE(ReadBytes(Out(u"deep.wav")) == expected) << run.output;
    EXPECT_EQ(CountFiles(out, u".wav"), 9);
    for (const clString& folder : {dir.Path(), src, out}) {
        EXPECT_FALSE(PathExists(JoinPath(folder, clString(u"injected.wav"))));
    }
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}

// A name with a line break once reached the list file as two names, and
// the second, another file, was converted; a pipe named "x.wav" hung the
// run at "Examining Source". Each is refused with a line naming it, the
// rest converts, and the run says not everything did.
TEST_F(SafetyTest, LineBreaksAndPipesAreRefusedWithALineAndNothingElseConverts) {
    // A folder "x\n" whose tree repeats the victim's absolute path: the
    // name's second line is then the victim's own path.
    clString victim = Source(u"victim.wav", 0.3, 1);
    clString crafted = JoinPath(src, clString(u"x\n"));
    crafted.Append(victim);
    ASSERT_TRUE(MakeFolders(GetFolderPart(crafted)));
    ASSERT_TRUE(WriteBytes(crafted, ToneWave(2, 0.3)));
    QvtRun named =
        Limited({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out, crafted});
    EXPECT_EQ(named.code, 1) << named.output;
    EXPECT_TRUE(Contains(named.output, "its name holds a line break")) << named.output;
    EXPECT_TRUE(Contains(named.output, "x\\n")) << named.output;
    EXPECT_FALSE(PathExists(Out(u"victim.wav"))) << "another file was converted";

    clString pipe = JoinPath(src, clString(u"pipe.wav"));
    ASSERT_EQ(::mkfifo(pipe.ToUtf8(), 0600), 0);
    QvtRun direct =
        Limited({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out, pipe});
    EXPECT_EQ(direct.code, 1) << direct.output;
    EXPECT_TRUE(Contains(direct.output, "skipping '")) << direct.output;
    EXPECT_TRUE(Contains(direct.output, "not a regular file")) << direct.output;

    QvtRun folder =
        Limited({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out, src});
    EXPECT_EQ(folder.code, 1) << folder.output;
    EXPECT_TRUE(PathExists(Out(u"victim.wav"))) << "the rest converts: " << folder.output;
    EXPECT_FALSE(PathExists(Out(u"pipe.wav")));
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}

// SIGTERM and SIGHUP to qvt once went unheard: the batch ran to its end
// with exit 0. Now the run stops at once, leaves nothing half-written,
// and ends with 128 + the signal.
TEST_F(SafetyTest, TermAndHangUpCancelTheRunCleanly) {
    Source(u"long.wav", 20.0);
    Source(u"next.wav", 5.0, 1);
    for (int signal : {SIGTERM, SIGHUP}) {
        DeleteFileEx(pidFile);
        std::future<QvtRun> qvt = std::async(std::launch::async, [&] {
            return Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                        clString(u"--cores"), clString(u"1"), clString(u"--overwrite"), clString(u"always"),
                        clString(u"--effect"), Fault(20), src});
        });
        int worker = WaitForWorker(qvt);
        ASSERT_NE(worker, 0) << qvt.get().output;
        int trackConverter = ParentOf(worker);
        int program = ParentOf(trackConverter);
        ASSERT_NE(program, 0);
        ASSERT_EQ(::kill(program, signal), 0);
        QvtRun run = qvt.get();
        EXPECT_EQ(run.code, 128 + signal) << run.output;
        EXPECT_TRUE(Gone(worker, 5));
        EXPECT_FALSE(PathExists(Out(u"long.wav")));
        EXPECT_FALSE(PathExists(Out(u"next.wav"))) << "no file starts after the signal";
        EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
    }
}

// A worker whose program is gone (killed where nothing can clean up)
// stops and removes its temporary file; it used to run on to the end.
TEST_F(SafetyTest, AWorkerStopsWhenItsProgramIsKilled) {
    Source(u"long.wav", 20.0);
    std::future<QvtRun> qvt = std::async(std::launch::async, [&] {
        return Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                    clString(u"--effect"), Fault(20), src});
    });
    int worker = WaitForWorker(qvt);
    ASSERT_NE(worker, 0) << qvt.get().output;
    ASSERT_EQ(::kill(ParentOf(worker), SIGKILL), 0);
    qvt.get();
    EXPECT_TRUE(Gone(worker, 5));
    EXPECT_FALSE(PathExists(Out(u"long.wav")));
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}

// What a codec library writes to standard error is UTF-8; it reached the
// log as other characters when the pipe was read as UTF-16.
TEST_F(SafetyTest, ALibrarysOwnMessageReadsAsItsWords) {
    Source(u"chatty.wav", 0.3);
    QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out,
                      clString(u"--effect"), clString(u"Fault Injection=library=1"), src});
    EXPECT_EQ(run.code, 1) << run.output;
    EXPECT_TRUE(Contains(run.output, "libsomething: d\xC3\xA9j\xC3\xA0 vu \xE2\x9C\x93 \xE6\x9D\xB1\xE4\xBA\xAC"))
        << run.output;
}

// A name of 250 bytes once always failed, as the temporary name pushed it
// past 255, and the message blamed the folder.
TEST_F(SafetyTest, ANameAsLongAsANameMayBeConverts) {
    std::u16string name = std::u16string(246, u'n') + u".wav";
    Source(name.c_str(), 0.3);
    QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out, src});
    EXPECT_EQ(run.code, 0) << run.output;
    EXPECT_TRUE(PathExists(Out(name.c_str())));
    EXPECT_EQ(CountFiles(out, u".qvtmp"), 0);
}

// A damaged settings file once read as "no value there" and an empty list
// with exit 0; now the run says it is damaged, fails, and keeps the file.
TEST_F(SafetyTest, DamagedSettingsAreSaidAndKept) {
    clString settings = dir.File(u"settings");
    QvtRun get, list;
    {
        OwnSettings own(settings);
        clString file = JoinPath(settings, clString(u"settings.db"));
        WriteBytes(file, std::string(4096, 'x'));
        get = Qvt({clString(u"settings"), clString(u"get"), clString(u"X"), clString(u"Y")});
        WriteBytes(file, std::string(4096, 'x'));
        list = Qvt({clString(u"profile"), clString(u"list")});
    }
    EXPECT_EQ(get.code, 1) << get.output;
    EXPECT_TRUE(Contains(get.output, "are damaged")) << get.output;
    EXPECT_FALSE(Contains(get.output, "no value")) << get.output;
    EXPECT_EQ(list.code, 1) << list.output;
    EXPECT_EQ(CountFiles(settings, u"settings.db.damaged-"), 2);
}

// Settings that another program holds locked (a rollback journal with an
// exclusive lock, as a database browser leaves them) once blocked even
// "settings get" without end; now the wait ends and says why.
TEST_F(SafetyTest, SettingsLockedByAnotherProgramAreSaidAfterTheWait) {
    clString settings = dir.File(u"locked");
    OwnSettings own(settings);
    PlatformSetEnvironment(u"QUILLOTONE_SETTINGS_WAIT_MS", u"500");
    QvtRun set = Qvt({clString(u"settings"), clString(u"set"), clString(u"X"), clString(u"Y"), clString(u"z")});
    sqlite3* db = nullptr;
    std::string file = std::string(settings.ToUtf8()) + "/settings.db";
    bool locked = sqlite3_open(file.c_str(), &db) == SQLITE_OK &&
                  sqlite3_exec(db, "PRAGMA journal_mode=DELETE", nullptr, nullptr, nullptr) == SQLITE_OK &&
                  sqlite3_exec(db, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr) == SQLITE_OK;
    QvtRun get = Limited({clString(u"settings"), clString(u"get"), clString(u"X"), clString(u"Y")});
    QvtRun list = Limited({clString(u"profile"), clString(u"list")});
    sqlite3_close(db);
    QvtRun again = Qvt({clString(u"settings"), clString(u"get"), clString(u"X"), clString(u"Y")});
    PlatformSetEnvironment(u"QUILLOTONE_SETTINGS_WAIT_MS", u"");
    ASSERT_EQ(set.code, 0) << set.output;
    ASSERT_TRUE(locked);
    EXPECT_EQ(get.code, 1) << get.output;
    EXPECT_TRUE(Contains(get.output, "are locked by another program")) << get.output;
    EXPECT_FALSE(Contains(get.output, "no value")) << get.output;
    EXPECT_EQ(list.code, 1) << list.output;
    EXPECT_EQ(again.code, 0) << again.output;
    EXPECT_TRUE(Contains(again.output, "z")) << again.output;
}
