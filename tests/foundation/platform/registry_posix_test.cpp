// The SQLite store under load from several processes, and a damaged file.
// Children are fresh processes (the helper), never forks of this one: an
// SQLite connection must not cross a fork.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/findfiles.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/settings.h"
#include "foundation/utf.h"
#include "tests/support/testfolder.h"

extern char** environ;

namespace {

std::string HelperPath() {
    clString path = JoinPath(GetProgramFolder(), clString(u"qv_testhelper"));
    return path.ToUtf8();
}

pid_t Start(std::vector<std::string> words, char** env = environ) {
    std::vector<char*> argv;
    for (auto& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), env) != 0) return -1;
    return pid;
}

int Wait(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string GuidText() {
    clString guid(GetProcessGuidText());
    return guid.ToUtf8();
}

std::string Key() { return "Software\\QuillotoneTests\\Load-" + std::string(GuidText()); }

}  // namespace

TEST(RegistryPosix, EightWritersAtOnceLoseNothing) {
    std::string key = Key();
    std::vector<pid_t> writers;
    for (int i = 0; i < 8; ++i) {
        writers.push_back(Start({HelperPath(), "setting-write-many", key, "500", "w" + std::to_string(i)}));
    }
    for (pid_t pid : writers) EXPECT_EQ(Wait(pid), 0);
    clString keyText;
    keyText.AssignAnsi(key.c_str());
    int found = 0;
    for (int w = 0; w < 8; ++w) {
        for (int i = 0; i < 500; ++i) {
            clString name = clString::Formatted(u"w%d-%d", w, i);
            if (SettingExists(name.text, clHiveCurrentUser, keyText.text) &&
                GetSettingNumber(name.text, clHiveCurrentUser, keyText.text) == static_cast<uint32_t>(i)) {
                ++found;
            }
        }
    }
    EXPECT_EQ(found, 4000);
    DeleteSettingKeyTree(u"Software\\QuillotoneTests", GetFileName(keyText, WindowsPathSyntax()).text);
}

TEST(RegistryPosix, FourProcessesHandOutUniqueNumbersUnderOneMutex) {
    TestFolder dir;
    std::string mutexName = "qvtest-exclusive-" + std::string(GuidText());
    std::vector<pid_t> children;
    std::vector<std::string> outputs;
    for (int i = 0; i < 4; ++i) {
        outputs.push_back(dir.File(clString::Formatted(u"numbers-%d", i).text).ToUtf8());
        children.push_back(Start({HelperPath(), "unique-counter", mutexName, "1000", outputs.back()}));
    }
    for (pid_t pid : children) EXPECT_EQ(Wait(pid), 0);
    std::set<unsigned> seen;
    size_t total = 0;
    for (const auto& file : outputs) {
        std::ifstream in(file);
        unsigned n;
        while (in >> n) {
            seen.insert(n);
            ++total;
        }
    }
    EXPECT_EQ(total, 4000u);
    EXPECT_EQ(seen.size(), 4000u);  // no number handed out twice
    EXPECT_EQ(*seen.rbegin(), GetSettingNumber(u"Unique", clHiveCurrentUser, u"Software\\QuillotoneTests\\Unique"));
    DeleteSettingKeyTree(u"Software\\QuillotoneTests", u"Unique");
}

namespace {

struct HelperRun {
    int code = -1;
    std::string errors;  // what it wrote to standard error
};

// The helper on the store in `folder`, with `more` added to its environment.
HelperRun RunHelper(const std::string& folder, std::vector<std::string> words, const std::string& more = "") {
    std::string env = "QUILLOTONE_CONFIG_DIR=" + folder;
    std::string extra = more;
    std::vector<char*> childEnv{env.data()};
    if (!extra.empty()) childEnv.push_back(extra.data());
    childEnv.push_back(nullptr);
    std::string stderrFile = folder + "stderr.txt";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 2, stderrFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    words.insert(words.begin(), HelperPath());
    std::vector<char*> argv;
    for (auto& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    HelperRun run;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), childEnv.data()) == 0) run.code = Wait(pid);
    posix_spawn_file_actions_destroy(&actions);
    std::ifstream err(stderrFile);
    std::stringstream text;
    text << err.rdbuf();
    run.errors = text.str();
    return run;
}

std::string FileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// The one file in `folder` whose name begins with `prefix`; "" if none.
std::string FindAside(const std::string& folder, const std::string& prefix) {
    clString folderText;
    Utf8ToString(folder.data(), static_cast<int64_t>(folder.size()), folderText);
    clFindFiles find(clString(u"*"), folderText);
    std::string found;
    while (find.Next()) {
        std::string name = clString(find.found.name).ToUtf8();
        if (name.rfind(prefix, 0) == 0 && name.find("-wal") == std::string::npos) found = folder + name;
    }
    return found;
}

}  // namespace

// A file that is no database, and a database with a damaged page: the
// process says so and goes on with the defaults, the damaged file is kept
// whole under another name, never written over, and the next process
// starts a fresh store. ("Left alone" once meant every later process read
// defaults from it and saw "not there" where a value was.)
TEST(RegistryPosix, DamagedStoresAreSaidMovedAsideWholeAndStartedAfresh) {
    TestFolder dir;
    std::string folder = clString(dir.Path()).ToUtf8();
    std::string garbage(8192, 'x');
    {
        std::ofstream out(folder + "settings.db", std::ios::binary);
        out << garbage;
    }
    HelperRun first = RunHelper(folder, {"setting-checked", "Software\\X", "Value"});
    EXPECT_EQ(first.code, 200);
    EXPECT_NE(first.errors.find("the settings in '" + folder + "settings.db' are damaged"), std::string::npos)
        << first.errors;
    std::string aside = FindAside(folder, "settings.db.damaged-");
    ASSERT_FALSE(aside.empty()) << first.errors;
    EXPECT_NE(first.errors.find("it was kept as '" + aside + "'"), std::string::npos) << first.errors;
    EXPECT_EQ(FileText(aside), garbage);
    EXPECT_EQ(RunHelper(folder, {"setting-write-many", "Software\\X", "3", "v"}).code, 0);
    EXPECT_EQ(RunHelper(folder, {"setting-checked", "Software\\X", "v-2"}).code, 2);

    // A real store, then one of its pages overwritten.
    TestFolder second;
    std::string other = clString(second.Path()).ToUtf8();
    ASSERT_EQ(RunHelper(other, {"setting-write-many", "Software\\Y", "300", "value-with-a-long-name"}).code, 0);
    {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open((other + "settings.db").c_str(), &db), SQLITE_OK);
        sqlite3_exec(db, "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr);
        sqlite3_close(db);
        std::fstream file(other + "settings.db", std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(4096 * 2);
        file << std::string(4096, '\xDE');
    }
    HelperRun damaged = RunHelper(other, {"setting-checked", "Software\\Y", "value-with-a-long-name-7"});
    EXPECT_EQ(damaged.code, 200) << "a damaged page is no missing value: " << damaged.errors;
    EXPECT_FALSE(FindAside(other, "settings.db.damaged-").empty()) << damaged.errors;
}

// Another program holding the store locked (a rollback journal and an
// exclusive lock, as a database browser may) costs one wait of the busy
// timeout and then one line, not a wait without end.
TEST(RegistryPosix, AStoreLockedByAnotherProgramFailsAfterTheWaitWithALine) {
    TestFolder dir;
    std::string folder = clString(dir.Path()).ToUtf8();
    ASSERT_EQ(RunHelper(folder, {"setting-write-many", "Software\\Z", "2", "v"}).code, 0);
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open((folder + "settings.db").c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "PRAGMA journal_mode=DELETE", nullptr, nullptr, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    auto start = std::chrono::steady_clock::now();
    HelperRun run = RunHelper(folder, {"setting-checked", "Software\\Z", "v-1"}, "QUILLOTONE_SETTINGS_WAIT_MS=300");
    auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(run.code, 200);
    EXPECT_NE(run.errors.find("are locked by another program"), std::string::npos) << run.errors;
    EXPECT_LT(waited, std::chrono::seconds(5));
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    EXPECT_EQ(RunHelper(folder, {"setting-checked", "Software\\Z", "v-1"}).code, 1) << "free again";
}

TEST(RegistryPosix, EightProcessesOpeningABrandNewStoreAtOnceAllGetIt) {
    for (int round = 0; round < 5; ++round) {
        TestFolder dir;
        clString folderText(dir.Path());
        std::string env = "QUILLOTONE_CONFIG_DIR=" + std::string(folderText.ToUtf8());
        std::vector<char*> childEnv{env.data(), nullptr};
        std::vector<pid_t> writers;
        for (int i = 0; i < 8; ++i) {
            writers.push_back(
                Start({HelperPath(), "setting-write-many", "Software\\Fresh", "5", "w" + std::to_string(i)},
                      childEnv.data()));
        }
        for (pid_t pid : writers) EXPECT_EQ(Wait(pid), 0) << "round " << round;
    }
}
