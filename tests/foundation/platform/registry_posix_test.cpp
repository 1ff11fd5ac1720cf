// The SQLite store under load from several processes, and a damaged file.
// Children are fresh processes (the helper), never forks of this one: an
// SQLite connection must not cross a fork.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/settings.h"
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

TEST(RegistryPosix, DamagedStoreGivesDefaultsNamesTheFileAndIsLeftAlone) {
    TestFolder dir;
    clString folderText(dir.Path());
    std::string folder = folderText.ToUtf8();
    std::string garbage(8192, 'x');
    {
        std::ofstream out(folder + "settings.db", std::ios::binary);
        out << garbage;
    }
    std::string env = "QUILLOTONE_CONFIG_DIR=" + folder;
    std::vector<char*> childEnv{env.data(), nullptr};
    std::string stderrFile = folder + "stderr.txt";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 2, stderrFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<std::string> words{HelperPath(), "setting-get", "Software\\X", "Value"};
    std::vector<char*> argv;
    for (auto& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    ASSERT_EQ(posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), childEnv.data()), 0);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(Wait(pid), 0);  // the default
    std::ifstream err(stderrFile);
    std::stringstream message;
    message << err.rdbuf();
    EXPECT_NE(message.str().find(folder + "settings.db"), std::string::npos) << message.str();
    std::ifstream db(folder + "settings.db", std::ios::binary);
    std::stringstream after;
    after << db.rdbuf();
    EXPECT_EQ(after.str(), garbage);
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
